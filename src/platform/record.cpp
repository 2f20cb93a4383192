#include "platform/record.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "platform/fatal.h"

namespace platform {
namespace {

// A number's digits in its field: blanks ahead, or asterisks where they do not fit.
void AppendRightAligned(std::string& record, int width, std::string_view digits) {
  const auto columns = static_cast<std::size_t>(width);
  if (digits.size() > columns) {
    record.append(columns, '*');
  } else {
    record.append(columns - digits.size(), ' ').append(digits);
  }
}

void AppendNotFinite(std::string& record, int width, float value) {
  const bool isNaN = std::isnan(value);
  AppendRightAligned(record, width, isNaN ? "NaN" : value > 0 ? "Infinity" : "-Infinity");
}

constexpr double kWhole = 0x1p52;  // whole numbers below are exact; adding it rounds to one

// The common case, at several times the speed: a float times a power of ten up to 10^9 is exact in a double,
// and rounding that to the nearest whole number, ties to even, is what the decimal form asks for. False when
// it is not the common case.
bool AppendSmallReal(std::string& record, int width, int decimals, float value) {
  static constexpr double kPowers[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
  if (decimals < 1 || decimals > 9) {
    return false;
  }
  const double scaled = static_cast<double>(std::fabs(value)) * kPowers[decimals];
  if (!(scaled < 1e15)) {
    return false;
  }
  auto left = static_cast<uint64_t>(scaled + kWhole - kWhole);
  char digits[32];
  char* const end = digits + sizeof digits;
  char* p = end;
  for (int place = 0; place < decimals; ++place) {
    *--p = static_cast<char>('0' + left % 10);
    left /= 10;
  }
  *--p = '.';
  do {
    *--p = static_cast<char>('0' + left % 10);
    left /= 10;
  } while (left > 0);
  if (std::signbit(value)) {
    *--p = '-';
  }
  AppendRightAligned(record, width, {p, static_cast<std::size_t>(end - p)});
  return true;
}

constexpr std::array<char, 200> kPairs = [] {  // "000102" to "99"
  std::array<char, 200> pairs{};
  for (std::size_t k = 0; k < 100; ++k) {
    pairs[2 * k] = static_cast<char>('0' + k / 10);
    pairs[2 * k + 1] = static_cast<char>('0' + k % 10);
  }
  return pairs;
}();
void PutPair(char* place, std::size_t pair) { std::memcpy(place, kPairs.data() + 2 * pair, 2); }

constexpr int kPlainDecimals = 4, kPlainWidth = 10;  // a sign, four digits, the point, four decimals

// The same at twice that speed for values below 10,000 with four decimals, into a field of blanks of at least
// kPlainWidth that ends at `end`.
bool PutFourDecimals(char* end, float value) {
  const double scaled = static_cast<double>(std::fabs(value)) * 1e4;
  if (!(scaled < 99999999.0)) {
    return false;
  }
  const auto left = static_cast<uint32_t>(static_cast<int32_t>(scaled + kWhole - kWhole));
  const uint32_t whole = left / 10000, part = left % 10000;
  PutPair(end - 2, part % 100);
  PutPair(end - 4, part / 100);
  end[-5] = '.';
  PutPair(end - 7, whole % 100);
  PutPair(end - 9, whole / 100);
  // Without a branch, which would be guessed wrongly at every other number: a zero becomes a blank when its
  // bit of 16 goes, and so does every leading one but that before the point.
  constexpr char kBit = '0' ^ ' ';
  const int zeros = (whole < 1000 ? 1 : 0) + (whole < 100 ? 1 : 0) + (whole < 10 ? 1 : 0);
  for (int k = 0; k < 3; ++k) {
    end[k - 9] = static_cast<char>(end[k - 9] ^ (k < zeros ? kBit : 0));
  }
  end[zeros - 10] = std::signbit(value) ? '-' : ' ';
  return true;
}

void AppendValue(std::string& record, const Edit& edit, const Value& value) {
  if (edit.code == 'A' && std::holds_alternative<std::string_view>(value)) {
    AppendText(record, edit.width, std::get<std::string_view>(value));
  } else if (edit.code == 'I' && std::holds_alternative<int32_t>(value)) {
    AppendInteger(record, edit.width, std::get<int32_t>(value));
  } else if (edit.code == 'F' && std::holds_alternative<float>(value)) {
    AppendReal(record, edit.width, edit.decimals, std::get<float>(value));
  } else if (edit.code == 'E' && std::holds_alternative<float>(value)) {
    AppendExponent(record, edit.width, edit.decimals, edit.exponent, std::get<float>(value));
  } else {
    Fatal("a value does not suit its edit code");
  }
}

}  // namespace

void AppendText(std::string& record, int width, std::string_view text) {
  const std::size_t columns = width == 0 ? text.size() : static_cast<std::size_t>(width);
  if (text.size() < columns) {
    record.append(columns - text.size(), ' ');
  }
  record.append(text.substr(0, columns));
}

void AppendInteger(std::string& record, int width, int32_t value) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  AppendRightAligned(record, width, {digits, static_cast<std::size_t>(end - digits)});
}

void AppendReal(std::string& record, int width, int decimals, float value) {
  if (!std::isfinite(value)) {
    AppendNotFinite(record, width, value);
  } else if (!AppendSmallReal(record, width, decimals, value)) {
    char digits[80];  // 39 places before the point at most
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals).ptr;
    AppendRightAligned(record, width, {digits, static_cast<std::size_t>(end - digits)});
  }
}

void AppendReals(std::string& record, int width, int decimals, std::span<const float> values) {
  const auto columns = static_cast<std::size_t>(width);
  const bool plain = decimals == kPlainDecimals && width >= kPlainWidth;
  std::size_t end = record.size();
  record.resize(end + columns * values.size(), ' ');
  std::string field;
  for (const float value : values) {
    end += columns;
    if (!plain || !PutFourDecimals(record.data() + end, value)) {
      field.clear();
      AppendReal(field, width, decimals, value);
      std::memcpy(record.data() + end - columns, field.data(), columns);
    }
  }
}

void AppendExponent(std::string& record, int width, int decimals, int exponent, float value) {
  if (!std::isfinite(value)) {
    AppendNotFinite(record, width, value);
    return;
  }
  char shown[80];  // d.ddde-xx, one digit before the point; ours has none there and an exponent higher by one
  const auto format = std::chars_format::scientific;
  const auto end = std::to_chars(shown, shown + sizeof shown, std::fabs(value), format, decimals - 1).ptr;
  const std::string_view text(shown, static_cast<std::size_t>(end - shown));
  const std::size_t mark = text.find('e');
  std::string digits = std::signbit(value) ? "-0." : "0.";
  digits += text[0];
  digits += text.substr(0, mark).substr(text[1] == '.' ? 2 : 1);
  int power = 0;
  std::from_chars(text.data() + mark + 2, end, power);
  power = (text[mark + 1] == '-' ? -power : power) + (value == 0 ? 0 : 1);
  const std::string places = std::to_string(std::abs(power));
  const auto room = static_cast<std::size_t>(exponent);
  digits += power < 0 ? "E-" : "E+";
  digits.append(room - std::min(room, places.size()), '0').append(places);
  if (places.size() > room) {
    record.append(static_cast<std::size_t>(width), '*');
  } else {
    AppendRightAligned(record, width, digits);
  }
}

std::string Record(const EditList& list, std::initializer_list<Value> values) {
  std::string record;
  auto value = values.begin();
  for (std::size_t e = 0; e < list.count; ++e) {
    const Edit& edit = list.edits[e];
    if (value == values.end()) {
      break;
    }
    if (edit.code == 'X') {
      record.append(static_cast<std::size_t>(edit.width), ' ');
      continue;
    }
    for (int r = 0; r < edit.repeat && value != values.end(); ++r) {
      AppendValue(record, edit, *value++);
    }
  }
  if (value != values.end()) {
    Fatal("a record has more values than edit codes");
  }
  return record;
}

}  // namespace platform
