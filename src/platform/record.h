#pragma once

// A record of text as its edit list tells it: "I10,2X,A" is an integer in ten columns, two blanks, a text.
//   A      text as long as it is
//   Aw     text right-aligned in w columns, its first w characters if longer
//   Iw     integer, right-aligned
//   Fw.d   real with d decimals, right-aligned
//   Ew.dEe real as 0.dddd and an exponent of e digits, right-aligned
//   nX     n blanks
// A number in front repeats: 3F16.4. A number too wide for its field gives asterisks. A not-a-number prints
// "NaN", an infinity "Infinity" or "-Infinity" where the field holds it. A record ends behind its last value.

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace platform {

struct Edit {
  char code = 0;     // A, I, F, E or X
  int width = 0;     // columns; 0 for a text as long as it is; the number of blanks for X
  int decimals = 0;  // F and E
  int repeat = 1;
  int exponent = 0;  // digits of it, E
};

struct EditList {
  std::array<Edit, 16> edits{};
  std::size_t count = 0;
};

using Value = std::variant<int32_t, float, std::string_view>;

// Reads an edit list; one that is malformed does not compile.
consteval EditList Edits(std::string_view text) {
  EditList list;
  std::size_t at = 0;
  const auto number = [&](int otherwise) {
    int value = 0;
    const std::size_t begin = at;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
      value = 10 * value + (text[at++] - '0');
    }
    return at == begin ? otherwise : value;
  };
  while (at < text.size()) {
    Edit edit;
    edit.repeat = number(1);
    edit.code = at < text.size() ? text[at++] : '?';
    if (edit.code == 'X') {
      edit.width = edit.repeat;
      edit.repeat = 1;
    } else if (edit.code == 'A' || edit.code == 'I' || edit.code == 'F' || edit.code == 'E') {
      edit.width = number(0);
      if (edit.code == 'F' || edit.code == 'E') {
        if (at >= text.size() || text[at++] != '.') {
          throw "a real field is written Fw.d or Ew.dEe";
        }
        edit.decimals = number(0);
      }
      if (edit.code == 'E') {
        if (at >= text.size() || text[at++] != 'E' || edit.decimals == 0) {
          throw "an exponent field is written Ew.dEe";
        }
        edit.exponent = number(0);
      }
      if (edit.code != 'A' && edit.width == 0) {
        throw "a number needs a width";
      }
    } else {
      throw "unknown edit code";
    }
    if (at < text.size() && text[at++] != ',') {
      throw "edits are parted by commas";
    }
    list.edits[list.count++] = edit;
  }
  return list;
}

// Appends one field to a record.
void AppendText(std::string& record, int width, std::string_view text);
void AppendInteger(std::string& record, int width, int32_t value);
void AppendReal(std::string& record, int width, int decimals, float value);
void AppendReals(std::string& record, int width, int decimals, std::span<const float> values);
void AppendExponent(std::string& record, int width, int decimals, int exponent, float value);

// The record of a list and its values, in order; ends behind the last value. A value that does not suit its code, or has
// none, is a fault of the program and fatal.
std::string Record(const EditList& list, std::initializer_list<Value> values);

}  // namespace platform
