#include "host/line_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>

namespace host {
namespace {

// What a character is for the reader; all but blanks, commas and slashes go on a word.
enum Kind : unsigned char { kPlain, kDigit, kQuote, kBlank, kComma, kSlash };
constexpr std::array<Kind, 256> kCharKinds = [] {
  std::array<Kind, 256> kinds{};
  for (unsigned char c = '0'; c <= '9'; ++c) kinds[c] = kDigit;
  kinds['\''] = kinds['"'] = kQuote;
  kinds[' '] = kinds['\t'] = kBlank;
  kinds[','] = kComma;
  kinds['/'] = kSlash;
  return kinds;
}();

Kind CharKindOf(char c) { return kCharKinds[static_cast<unsigned char>(c)]; }
bool Ends(char c) { return CharKindOf(c) >= kBlank; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The text in quotes at `at`, which moves behind it.
std::string_view TakeQuotedWord(std::string_view line, std::size_t& at, LineWords& into) {
  const char quote = line[at++];
  const std::size_t begin = at;
  for (bool doubled = false;; at += 2, doubled = true) {
    at = line.find(quote, at);
    if (at == std::string_view::npos) {
      into.openQuote = true;
      at = line.size();
      return line.substr(begin);
    }
    if (at + 1 < line.size() && line[at + 1] == quote) continue;
    const std::string_view inside = line.substr(begin, at - begin);
    ++at;
    into.malformed = at < line.size() && !Ends(line[at]);
    if (!doubled) return inside.empty() ? std::string_view("") : inside;
    std::string& text = into.unquoted.emplace_back();
    for (std::size_t k = 0; k < inside.size(); ++k) {
      text += inside[k];
      if (inside[k] == quote) ++k;
    }
    return text;
  }
}

std::string_view TakePlain(std::string_view line, std::size_t& at) {
  const std::size_t begin = at;
  while (at < line.size() && !Ends(line[at])) ++at;
  return line.substr(begin, at - begin);
}

// r* or r*value; `count` is r, 0 where it is none, and `at` stands behind the star.
bool TakeRepeat(std::string_view line, std::size_t& at, int& count) {
  std::size_t star = at;
  while (star < line.size() && IsDigit(line[star])) ++star;
  if (star == line.size() || line[star] != '*') return false;
  if (std::from_chars(line.data() + at, line.data() + star, count).ec != std::errc{}) count = 0;
  at = star + 1;
  return true;
}

void TakeWord(std::string_view line, std::size_t& at, std::size_t most, LineWords& into) {
  int count = 1;
  const bool repeats = IsDigit(line[at]) && TakeRepeat(line, at, count);
  if (repeats && into.words.empty()) into.firstRepeats = true;
  into.malformed = count < 1;
  if (into.malformed) return;
  std::string_view word;
  if (!repeats || (at < line.size() && !Ends(line[at]))) {
    const bool quoted = line[at] == '\'' || line[at] == '"';
    word = quoted ? TakeQuotedWord(line, at, into) : TakePlain(line, at);
  }
  const std::size_t room = most - std::min(most, into.words.size());
  into.words.insert(into.words.end(), std::min(room, static_cast<std::size_t>(count)), word);
}

}  // namespace

void Clear(LineWords& words) {
  words.words.clear();
  words.unquoted.clear();
  words.slash = words.openQuote = words.malformed = words.firstRepeats = false;
}

void AddWords(std::string_view line, std::size_t most, LineWords& into) {
  bool valueTaken = false;  // a comma now belongs to the value before it
  for (std::size_t at = 0; at < line.size() && into.words.size() < most && into.Whole();) {
    switch (CharKindOf(line[at])) {
      case kBlank:
        ++at;
        break;
      case kComma:
        ++at;
        if (!valueTaken) into.words.emplace_back();
        valueTaken = false;
        break;
      case kSlash:
        into.slash = true;
        break;
      case kPlain:
        valueTaken = true;
        into.words.push_back(TakePlain(line, at));
        break;
      case kDigit:
      case kQuote:
        valueTaken = true;
        TakeWord(line, at, most, into);
        break;
    }
  }
}

}  // namespace host
