#pragma once

// The reader under all project files: it finds the next line that holds data and takes tokens from there.

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace project {

// Positions the unit on the next data record: not blank, and without "!" in column 1, judged by its first 128
// characters. At the end of the file the last record judged decides, so a file that ends behind a data record
// is positioned on that record again: the token read that follows tells that something is amiss.
void NextDataRecord(int32_t unit);

// What a token read fills: one value, or several in a row. A null value keeps what the place holds.
struct Item {
  enum class Kind { Integer, Real, Text, Integers, Reals, Cells };
  Kind kind;
  void* place;
  std::size_t count;
  std::size_t width;  // characters of a text; longer tokens are cut, shorter ones padded with blanks
};
Item IntegerItem(int32_t& value);
Item RealItem(float& value);
Item TextItem(char* text, std::size_t width);
// Tables that grow with the tokens met, so that a count that the file merely claims takes no memory: a place
// never reached is not in them. A null where nothing stood before is 0, or blank.
Item IntegerItems(std::vector<int32_t>& values, std::size_t count);
Item RealItems(std::vector<float>& values, std::size_t count);
Item CellItems(std::string& cells, std::size_t width, std::size_t count);

// Takes the items from the record that the unit is positioned on and as many behind it as are needed; what
// stands behind the last value in its record is dropped. Blanks, tabs, commas and line ends part the tokens;
// two commas give a null value, r*value and r* repeat, a slash ends the read, quotes hold blanks. 0 on
// success.
int32_t ReadTokens(int32_t unit, std::initializer_list<Item> items);

// A token read of one real from a text in memory: a null or a slash keeps the value. False where the text has
// no token, or none that is a number.
bool ReadRealFrom(std::string_view text, float& value);

// One token as a number; false when it is none. An integer must fit 32 bits.
bool ParseInteger(std::string_view token, int32_t& value);
bool ParseReal(std::string_view token, float& value);

}  // namespace project
