#include "host/importers/sheet.h"

#include <algorithm>
#include <utility>

#include "host/text.h"

namespace importers {
namespace {

// A field that begins with a quote: up to the quote that closes it, then on to the separator.
std::size_t TakeQuoted(std::string_view line, std::size_t at, char separator, std::string& field) {
  for (++at; at < line.size(); ++at) {
    if (line[at] != '"') {
      field += line[at];
    } else if (at + 1 < line.size() && line[at + 1] == '"') {
      field += '"';
      ++at;
    } else {
      break;
    }
  }
  return std::min(line.find(separator, std::min(at + 1, line.size())), line.size());
}

std::vector<std::string> BlankFields(std::string_view line) {
  std::vector<std::string> fields;
  for (std::string_view word : host::BlankParted(line)) fields.emplace_back(word);
  return fields;
}

void FitRow(const Sheet& sheet, std::vector<std::string>& row, std::size_t line) {
  const std::size_t width = sheet.Width();
  while (row.size() > width && row.back().empty()) row.pop_back();
  if (row.size() == width) return;
  ThrowAt(sheet.path, line,
          "the row has " + host::Counted(static_cast<int64_t>(row.size()), "field") + ", the first row has " +
              std::to_string(width));
}

}  // namespace

char SeparatorOf(std::string_view line) {
  char best = ' ';
  std::ptrdiff_t most = 0;
  for (const char candidate : {'\t', ';', ','}) {
    const std::ptrdiff_t count = std::count(line.begin(), line.end(), candidate);
    if (count > most) {
      most = count;
      best = candidate;
    }
  }
  return best;
}

std::vector<std::string> Fields(std::string_view line, char separator) {
  if (separator == ' ') return BlankFields(line);
  std::vector<std::string> fields;
  for (std::size_t at = 0;; ++at) {
    const std::size_t begin = std::min(line.find_first_not_of(' ', at), line.size());
    std::string field;
    if (begin < line.size() && line[begin] == '"') {
      at = TakeQuoted(line, begin, separator, field);
    } else {
      const std::size_t end = std::min(line.find(separator, at), line.size());
      field = host::Trimmed(line.substr(at, end - at));
      at = end;
    }
    fields.push_back(std::move(field));
    if (at >= line.size()) return fields;
  }
}

Sheet ReadSheet(const TextFile& file, std::size_t first, bool namesMayLackHeading) {
  Sheet sheet{file.path, {}, {}, false};
  char separator = '\0';
  for (std::size_t at = first; at < file.lines.size(); ++at) {
    const std::string& line = file.lines[at];
    if (host::Trimmed(line).empty()) continue;
    if (separator == '\0') separator = SeparatorOf(line);
    std::vector<std::string> row = Fields(line, separator);
    if (sheet.rows.empty()) {
      while (row.size() > 1 && row.back().empty()) row.pop_back();
    } else {
      // What a spreadsheet leaves of rows that were cleared.
      if (std::all_of(row.begin(), row.end(), [](const std::string& field) { return field.empty(); }))
        continue;
      const bool lacks = sheet.rows.size() == 1 && row.size() == sheet.Width() + 1 && !row.back().empty();
      if (namesMayLackHeading && lacks) sheet.rows[0].insert(sheet.rows[0].begin(), "");
      FitRow(sheet, row, at + 1);
    }
    sheet.rows.push_back(std::move(row));
    sheet.lines.push_back(at + 1);
  }
  return sheet;
}

Sheet Turned(Sheet sheet) {
  Sheet turned{std::move(sheet.path), {}, std::move(sheet.lines), !sheet.turned};
  turned.rows.resize(sheet.Width());
  for (std::size_t c = 0; c < turned.rows.size(); ++c) {
    for (std::vector<std::string>& row : sheet.rows) turned.rows[c].push_back(std::move(row[c]));
  }
  return turned;
}

}  // namespace importers
