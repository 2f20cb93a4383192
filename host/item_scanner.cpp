#include "host/item_scanner.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace host {
namespace {

constexpr std::size_t kJudged = 128;  // a line is judged by its first 128 characters
constexpr std::string_view kEnds = " \t,/";

enum class Item { Value, Null, Slash, Malformed, End };

// One row at work.
struct RowScan {
  ItemScanner& scanner;
  std::string_view line{};
  std::size_t at = 0, itemLine = 0;
  bool valueTaken = false, repeatsNull = false, quoted = false;
  int repeats = 0;
  std::string_view word{};
  std::string quotedText{};

  bool NextLine() {
    if (scanner.next == scanner.lines.size()) return false;
    line = scanner.lines[scanner.next++];
    at = 0;
    return true;
  }
};

Item TakeQuoted(RowScan& scan) {
  const char quote = scan.line[scan.at++];
  scan.quotedText.clear();
  for (;;) {
    const std::size_t end = scan.line.find(quote, scan.at);
    scan.quotedText += scan.line.substr(scan.at, end == std::string_view::npos ? end : end - scan.at);
    if (end == std::string_view::npos) {
      if (!scan.NextLine()) return Item::End;
      continue;
    }
    scan.at = end + 1;
    if (scan.at == scan.line.size() || scan.line[scan.at] != quote) break;
    scan.quotedText += quote;
    ++scan.at;
  }
  scan.word = scan.quotedText;
  const bool parted = scan.at == scan.line.size() || kEnds.find(scan.line[scan.at]) != std::string_view::npos;
  return parted ? Item::Value : Item::Malformed;
}

Item TakeValue(RowScan& scan) {
  scan.quoted = scan.line[scan.at] == '\'' || scan.line[scan.at] == '"';
  if (scan.quoted) return TakeQuoted(scan);
  const std::size_t end = std::min(scan.line.find_first_of(kEnds, scan.at), scan.line.size());
  scan.word = scan.line.substr(scan.at, end - scan.at);
  scan.at = end;
  return Item::Value;
}

// A word that begins with a digit may be r*value or r*.
Item TakeWord(RowScan& scan) {
  const std::size_t star = std::min(scan.line.find_first_not_of("0123456789", scan.at), scan.line.size());
  if (star == scan.at || star == scan.line.size() || scan.line[star] != '*') return TakeValue(scan);
  int count = 0;
  const auto [end, error] = std::from_chars(scan.line.data() + scan.at, scan.line.data() + star, count);
  if (error != std::errc{} || count < 1) return Item::Malformed;
  scan.at = star + 1;
  scan.repeats = count - 1;
  scan.repeatsNull = scan.at == scan.line.size() || kEnds.find(scan.line[scan.at]) != std::string_view::npos;
  return scan.repeatsNull ? Item::Null : TakeValue(scan);
}

Item NextItem(RowScan& scan) {
  if (scan.repeats > 0) {
    --scan.repeats;
    return scan.repeatsNull ? Item::Null : Item::Value;
  }
  for (;;) {
    if (scan.at == scan.line.size()) {
      if (!scan.NextLine()) return Item::End;
      continue;
    }
    const char c = scan.line[scan.at];
    scan.itemLine = scan.scanner.next;
    if (c == ' ' || c == '\t') {
      ++scan.at;
    } else if (c == ',') {
      ++scan.at;
      if (!scan.valueTaken) return Item::Null;
      scan.valueTaken = false;
    } else if (c == '/') {
      return Item::Slash;
    } else {
      scan.valueTaken = true;
      return TakeWord(scan);
    }
  }
}

}  // namespace

RowRead TakeRow(ItemScanner& scanner, std::size_t count, std::vector<Word>& kept) {
  RowScan scan{scanner};
  if (!scan.NextLine()) return {0, false, true};
  RowRead read{count == 0 ? scanner.next : 0, true, false};
  for (std::size_t k = 0; k < count; ++k) {
    const Item item = NextItem(scan);
    if (item == Item::End) return {read.line, false, true};
    if (k == 0) read.line = scan.itemLine;
    if (item == Item::Malformed) return {read.line, false, false};
    if (item == Item::Slash) break;
    if (item == Item::Value && k < kept.size()) kept[k] = {std::string(scan.word), scan.quoted};
  }
  return read;
}

bool ToData(ItemScanner& scanner) {
  for (; scanner.next < scanner.lines.size(); ++scanner.next) {
    const std::string_view judged = scanner.lines[scanner.next].substr(0, kJudged);
    if (judged.find_first_not_of(' ') != std::string_view::npos && !judged.starts_with('!')) return true;
  }
  return false;
}

}  // namespace host
