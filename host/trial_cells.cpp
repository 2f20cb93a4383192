#include "host/trial_cells.h"

#include <algorithm>

#include "host/exit_code.h"

namespace host {
namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";  // of byte order
constexpr std::string_view kBlanks = " \t";

struct SeparatorRow {
  char separator;
  std::string_view name;
};
constexpr SeparatorRow kSeparators[] = {{'\t', "tabs"}, {';', "semicolons"}, {',', "commas"}};  // first wins

std::string_view TakeLine(std::string_view& rest) {
  const std::size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end);
  if (rest.starts_with("\r\n")) rest.remove_prefix(1);
  if (!rest.empty()) rest.remove_prefix(1);
  return line;
}

bool OpensQuote(char c, char separator) { return c == '"' || (separator == ' ' && c == '\''); }

// Blanks that part nothing: a tab does where it is the separator.
std::size_t SkipBlanks(std::string_view line, std::size_t at, char separator) {
  while (at < line.size() && line[at] != separator && kBlanks.find(line[at]) != std::string_view::npos) ++at;
  while (separator == ' ' && at < line.size() && kBlanks.find(line[at]) != std::string_view::npos) ++at;
  return at;
}

[[noreturn]] void FailAt(const CellReader& reader, const std::string& why) {
  throw Failure{ExitCode::InputWrong, "line " + std::to_string(reader.line) + ": " + why};
}

// A cell in quotes, two of which stand for one; gives the place behind the closing one.
std::size_t TakeQuotedCell(CellReader& reader, std::string_view line, std::size_t at) {
  const char quote = line[at];
  const std::size_t begin = ++at;
  std::string* text = nullptr;
  for (std::size_t from = begin;;) {
    const std::size_t end = line.find(quote, at);
    if (end == std::string_view::npos) FailAt(reader, std::string("a quote ") + quote + " is not closed");
    const bool doubled = end + 1 < line.size() && line[end + 1] == quote;
    if (doubled && text == nullptr) text = &reader.unquoted.emplace_back();
    if (text != nullptr) text->append(line.substr(from, end - from + (doubled ? 1 : 0)));
    at = from = end + (doubled ? 2 : 1);
    if (doubled) continue;
    reader.cells.push_back(text != nullptr ? std::string_view(*text) : line.substr(begin, end - begin));
    return at;
  }
}

void SplitLine(CellReader& reader, std::string_view line) {
  const char separator = reader.separator;
  std::size_t at = SkipBlanks(line, 0, separator);
  while (true) {
    if (at < line.size() && OpensQuote(line[at], separator)) {
      at = TakeQuotedCell(reader, line, at);
      const std::size_t behind = SkipBlanks(line, at, separator);
      const bool parted =
          behind == line.size() || line[behind] == separator || (separator == ' ' && behind > at);
      if (!parted) FailAt(reader, "text follows a closing quote");
      at = behind;
    } else {
      const std::string_view ends = separator == ' ' ? kBlanks : std::string_view(&separator, 1);
      const std::size_t end = std::min(line.find_first_of(ends, at), line.size());
      std::string_view cell = line.substr(at, end - at);
      while (!cell.empty() && kBlanks.find(cell.back()) != std::string_view::npos) cell.remove_suffix(1);
      reader.cells.push_back(cell);
      at = end;
    }
    if (separator != ' ') {
      if (at == line.size()) return;
      ++at;  // over the separator
    }
    at = SkipBlanks(line, at, separator);
    if (separator == ' ' && at == line.size()) return;
  }
}

char SeparatorOf(std::string_view heading) {
  for (const SeparatorRow& row : kSeparators) {
    bool quoted = false;
    for (const char c : heading) {
      quoted ^= c == '"';
      if (c == row.separator && !quoted) return row.separator;
    }
  }
  return ' ';
}

}  // namespace

CellReader OpenCells(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  CellReader reader;
  reader.rest = text;
  std::string_view line;
  while (!text.empty() && line.find_first_not_of(kBlanks) == std::string_view::npos) line = TakeLine(text);
  reader.separator = SeparatorOf(line);
  return reader;
}

bool NextRow(CellReader& reader) {
  reader.cells.clear();
  reader.unquoted.clear();
  while (!reader.rest.empty()) {
    const std::string_view line = TakeLine(reader.rest);
    ++reader.line;
    if (line.find_first_not_of(kBlanks) == std::string_view::npos) continue;
    SplitLine(reader, line);
    return true;
  }
  return false;
}

std::string_view SeparatorName(char separator) {
  for (const SeparatorRow& row : kSeparators) {
    if (row.separator == separator) return row.name;
  }
  return "blanks";
}

}  // namespace host
