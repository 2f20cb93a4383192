#include "platform/record.h"

#include <charconv>
#include <cmath>

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

void AppendValue(std::string& record, const Edit& edit, const Value& value) {
  if (edit.code == 'A' && std::holds_alternative<std::string_view>(value)) {
    AppendText(record, edit.width, std::get<std::string_view>(value));
  } else if (edit.code == 'I' && std::holds_alternative<int32_t>(value)) {
    AppendInteger(record, edit.width, std::get<int32_t>(value));
  } else if (edit.code == 'F' && std::holds_alternative<float>(value)) {
    AppendReal(record, edit.width, edit.decimals, std::get<float>(value));
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
  if (std::isnan(value)) {
    AppendRightAligned(record, width, "NaN");
  } else if (std::isinf(value)) {
    AppendRightAligned(record, width, value > 0 ? "Infinity" : "-Infinity");
  } else {
    char digits[80];  // 39 places before the point at most
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals).ptr;
    AppendRightAligned(record, width, {digits, static_cast<std::size_t>(end - digits)});
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
  return record;
}

}  // namespace platform
