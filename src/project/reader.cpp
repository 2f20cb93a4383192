#include "project/reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "platform/unit.h"

namespace project {
namespace {

constexpr std::size_t kJudged = 128;  // characters of a record that NextDataRecord looks at

// Process-wide: the record judged last. It is never cleared, also not between two files.
std::string& RecordBuffer() {
  static std::string buffer;
  return buffer;
}

enum CharacterClass : uint8_t { kOrdinary, kBlank, kComma, kSlash, kDigit, kQuote };

constexpr std::array<uint8_t, 256> kClasses = [] {
  std::array<uint8_t, 256> classes{};
  classes[' '] = classes['\t'] = kBlank;
  classes[','] = kComma;
  classes['/'] = kSlash;
  classes['\''] = classes['"'] = kQuote;
  for (char c = '0'; c <= '9'; ++c) {
    classes[static_cast<uint8_t>(c)] = kDigit;
  }
  return classes;
}();

constexpr std::array<bool, 256> kPlain = [] {
  std::array<bool, 256> plain{};
  for (std::size_t c = 0; c < plain.size(); ++c) {
    plain[c] = kClasses[c] == kOrdinary || kClasses[c] == kDigit;
  }
  return plain;
}();

uint8_t ClassOf(char c) { return kClasses[static_cast<uint8_t>(c)]; }
bool EndsToken(char c) {
  const uint8_t kind = ClassOf(c);
  return kind == kBlank || kind == kComma || kind == kSlash;
}

// One token read at work.
struct TokenReader {
  enum class Outcome { Value, Null, Slash, Failure };

  int32_t unit;
  bool inMemory = false;  // the record at hand is all there is
  std::string_view record;
  std::size_t at = 0;
  bool valueTaken = false;  // a comma now belongs to the value before it
  int32_t repeats = 0;      // how often the token at hand is still to be given
  bool repeatsNull = false;
  bool quoted = false;  // the token at hand came in quotes
  std::string_view token;
  std::string quotedText;

  explicit TokenReader(int32_t unitToRead) : unit(unitToRead) {}

  bool NextRecord() {
    at = 0;
    return !inMemory && platform::ReadRecord(unit, record);
  }

  // The next token, null or slash; the rows of a table are read here one token at a time.
  Outcome Next() {
    if (repeats > 0) {
      --repeats;
      return repeatsNull ? Outcome::Null : Outcome::Value;
    }
    for (;;) {
      if (at >= record.size()) {
        if (!NextRecord()) {
          return Outcome::Failure;
        }
        continue;
      }
      switch (ClassOf(record[at])) {
        case kBlank:
          ++at;
          break;
        case kComma:
          ++at;
          if (!valueTaken) {
            return Outcome::Null;
          }
          valueTaken = false;
          break;
        case kSlash:
          return Outcome::Slash;
        case kDigit:
          valueTaken = true;
          return TakeRepeat();
        default:
          valueTaken = true;
          return TakeValue();
      }
    }
  }

  // The plain cells of a row at a stretch: texts of one or two characters parted by blanks, without anything
  // that means something to the list. Returns how many places it filled; the caller goes on from there.
  std::size_t TakePlainCells(char* place, std::size_t most) {
    if (repeats > 0) {
      return 0;
    }
    std::size_t taken = 0;
    const char* p = record.data() + at;
    const char* const end = record.data() + record.size();
    while (taken < most) {
      const char* q = p;
      while (q < end && *q == ' ') {
        ++q;
      }
      const auto left = static_cast<std::size_t>(end - q);
      if (left == 0 || !kPlain[static_cast<uint8_t>(q[0])]) {
        break;
      }
      const bool one = left == 1 || q[1] == ' ';
      const bool two =
          !one && kPlain[static_cast<uint8_t>(q[1])] && q[1] != '*' && (left == 2 || q[2] == ' ');
      if (!one && !two) {
        break;
      }
      place[2 * taken] = q[0];
      place[2 * taken + 1] = one ? ' ' : q[1];
      ++taken;
      p = q + (one ? 1 : 2);
    }
    at = static_cast<std::size_t>(p - record.data());
    valueTaken = valueTaken || taken > 0;
    return taken;
  }

  // A token that begins with a digit may be r*value or r*.
  Outcome TakeRepeat() {
    const std::size_t begin = at;
    std::size_t star = at;
    while (star < record.size() && ClassOf(record[star]) == kDigit) {
      ++star;
    }
    if (star >= record.size() || record[star] != '*') {
      return TakeValue();
    }
    int32_t count = 0;
    if (!ParseInteger(record.substr(begin, star - begin), count) || count < 1) {
      return Outcome::Failure;
    }
    at = star + 1;
    repeats = count - 1;
    repeatsNull = at >= record.size() || EndsToken(record[at]);
    return repeatsNull ? Outcome::Null : TakeValue();
  }

  Outcome TakeValue() {
    quoted = ClassOf(record[at]) == kQuote;
    if (quoted) {
      return TakeQuoted() ? Outcome::Value : Outcome::Failure;
    }
    const std::size_t begin = at;
    while (at < record.size() && !EndsToken(record[at])) {
      ++at;
    }
    token = record.substr(begin, at - begin);
    return Outcome::Value;
  }

  // A quoted text may run on over line ends; two quotes stand for one.
  bool TakeQuoted() {
    const char quote = record[at++];
    quotedText.clear();
    for (;;) {
      const std::size_t end = record.find(quote, at);
      quotedText.append(record.substr(at, end == std::string_view::npos ? end : end - at));
      if (end == std::string_view::npos) {
        if (!NextRecord()) {
          return false;
        }
        continue;
      }
      at = end + 1;
      if (at < record.size() && record[at] == quote) {
        quotedText += quote;
        ++at;
        continue;
      }
      token = quotedText;
      return at >= record.size() || EndsToken(record[at]);
    }
  }
};

void PutText(char* place, std::size_t width, std::string_view token) {
  const std::size_t length = std::min(width, token.size());
  std::copy_n(token.data(), length, place);
  std::fill_n(place + length, width - length, ' ');
}

// Places `token` as the k-th text of `cells` (k from 0); a null gives blanks where nothing stood before.
void PutCell(std::string& cells, std::size_t width, std::size_t k, bool isNull, std::string_view token) {
  const std::size_t begin = k * width;
  if (begin == cells.size()) {
    cells.append(isNull ? std::string_view() : token.substr(0, width));
    cells.append(begin + width - cells.size(), ' ');
  } else if (!isNull) {
    PutText(cells.data() + begin, width, token);
  }
}

// The k-th value of a growing table (k from 0).
template <class T>
T& Place(const Item& item, std::size_t k) {
  auto& values = *static_cast<std::vector<T>*>(item.place);
  if (k == values.size()) {
    values.push_back(0);
  }
  return values[k];
}

void PutNull(const Item& item, std::size_t k) {
  if (item.kind == Item::Kind::Integers) {
    Place<int32_t>(item, k);
  } else if (item.kind == Item::Kind::Reals) {
    Place<float>(item, k);
  } else if (item.kind == Item::Kind::Cells) {
    PutCell(*static_cast<std::string*>(item.place), item.width, k, true, {});
  }
}

bool PutItem(const Item& item, std::size_t k, const TokenReader& reader) {
  switch (item.kind) {
    case Item::Kind::Integer:
      return !reader.quoted && ParseInteger(reader.token, *static_cast<int32_t*>(item.place));
    case Item::Kind::Real:
      return !reader.quoted && ParseReal(reader.token, *static_cast<float*>(item.place));
    case Item::Kind::Text:
      PutText(static_cast<char*>(item.place), item.width, reader.token);
      return true;
    case Item::Kind::Integers:
      return !reader.quoted && ParseInteger(reader.token, Place<int32_t>(item, k));
    case Item::Kind::Reals:
      return !reader.quoted && ParseReal(reader.token, Place<float>(item, k));
    case Item::Kind::Cells:
      PutCell(*static_cast<std::string*>(item.place), item.width, k, false, reader.token);
      return true;
  }
  return false;
}

// What a decimal form beyond the range of a 32-bit real rounds to. The place of the first digit that counts
// tells whether it is huge or tiny; what lies between is within the range of a double.
float OutOfRange(std::string_view digits) {
  double wide = 0;
  if (std::from_chars(digits.data(), digits.data() + digits.size(), wide).ec == std::errc()) {
    return static_cast<float>(wide);
  }
  const std::size_t e = std::min(digits.find_first_of("eE"), digits.size());
  const bool tinyExponent = e + 1 < digits.size() && digits[e + 1] == '-';
  const std::size_t point = std::min(digits.find('.'), e);
  const bool fraction = digits.substr(0, point).find_first_not_of('0') == std::string_view::npos;
  const bool tiny = e < digits.size() ? tinyExponent : fraction;
  return tiny ? 0.0F : std::numeric_limits<float>::infinity();
}

}  // namespace

void NextDataRecord(int32_t unit) {
  std::string& buffer = RecordBuffer();
  for (bool atEnd = false;;) {
    std::string_view record;
    if (platform::ReadRecord(unit, record)) {
      buffer = record.substr(0, kJudged);
    } else {
      platform::StepBack(unit);
      atEnd = true;
    }
    const bool blank = buffer.find_first_not_of(' ') == std::string::npos;
    if (!blank && buffer[0] != '!') {
      platform::StepBack(unit);
      return;
    }
    if (atEnd) {
      return;
    }
  }
}

Item IntegerItem(int32_t& value) { return {Item::Kind::Integer, &value, 1, 0}; }
Item TextItem(char* text, std::size_t width) { return {Item::Kind::Text, text, 1, width}; }
Item RealItem(float& value) { return {Item::Kind::Real, &value, 1, 0}; }
Item IntegerItems(std::vector<int32_t>& values, std::size_t count) {
  return {Item::Kind::Integers, &values, count, 0};
}
Item RealItems(std::vector<float>& values, std::size_t count) {
  return {Item::Kind::Reals, &values, count, 0};
}
Item CellItems(std::string& cells, std::size_t width, std::size_t count) {
  return {Item::Kind::Cells, &cells, count, width};
}

int32_t ReadTokens(int32_t unit, std::initializer_list<Item> items) {
  TokenReader reader(unit);
  if (!reader.NextRecord()) {
    return -1;
  }
  for (const Item& item : items) {
    for (std::size_t k = 0; k < item.count; ++k) {
      if (item.kind == Item::Kind::Cells && item.width == 2) {
        std::string& cells = *static_cast<std::string*>(item.place);
        const std::size_t standing = std::min(item.count, cells.size() / 2);  // from the row before
        k += k < standing ? reader.TakePlainCells(cells.data() + 2 * k, standing - k) : 0;
        if (k == item.count) {
          break;
        }
      }
      switch (reader.Next()) {
        case TokenReader::Outcome::Value:
          if (!PutItem(item, k, reader)) {
            return -1;
          }
          break;
        case TokenReader::Outcome::Null:
          PutNull(item, k);
          break;
        case TokenReader::Outcome::Slash:
          return 0;
        case TokenReader::Outcome::Failure:
          return -1;
      }
    }
  }
  return 0;
}

bool ReadRealFrom(std::string_view text, float& value) {
  TokenReader reader(0);
  reader.inMemory = true;
  reader.record = text;
  switch (reader.Next()) {
    case TokenReader::Outcome::Value:
      return !reader.quoted && ParseReal(reader.token, value);
    case TokenReader::Outcome::Null:
    case TokenReader::Outcome::Slash:
      return true;
    case TokenReader::Outcome::Failure:
      return false;
  }
  return false;
}

bool ParseInteger(std::string_view token, int32_t& value) {
  const bool plus = !token.empty() && token.front() == '+';
  const char* begin = token.data() + (plus ? 1 : 0);
  const char* end = token.data() + token.size();
  if (plus && begin != end && *begin == '-') {
    return false;
  }
  int32_t parsed = 0;
  const auto result = std::from_chars(begin, end, parsed);
  if (result.ec != std::errc() || result.ptr != end) {
    return false;
  }
  value = parsed;
  return true;
}

bool ParseReal(std::string_view token, float& value) {
  std::string_view digits = token;
  const bool negative = !digits.empty() && digits.front() == '-';
  if (negative || (!digits.empty() && digits.front() == '+')) {
    digits.remove_prefix(1);
  }
  if (digits.empty() || (ClassOf(digits.front()) != kDigit && digits.front() != '.')) {
    return false;  // also "nan" and "inf", which are no decimal forms
  }
  float parsed = 0;
  auto result = std::from_chars(digits.data(), digits.data() + digits.size(), parsed);
  std::string withE;
  if (result.ptr != digits.data() + digits.size() && (*result.ptr == 'd' || *result.ptr == 'D')) {
    withE = digits;
    withE[static_cast<std::size_t>(result.ptr - digits.data())] = 'e';
    digits = withE;
    result = std::from_chars(digits.data(), digits.data() + digits.size(), parsed);
  }
  if (result.ec == std::errc::invalid_argument || result.ptr != digits.data() + digits.size()) {
    return false;
  }
  if (result.ec == std::errc::result_out_of_range) {
    parsed = OutOfRange(digits);
  }
  value = negative ? -parsed : parsed;
  return true;
}

}  // namespace project
