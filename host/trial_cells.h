#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Walks through a table with one row a line. Cells are parted by tabs, semicolons, commas or, where the
// heading has none of these, by blanks; they come without blanks around them and without quotes.
struct CellReader {
  std::string_view rest;                // what is not read yet
  char separator = ' ';                 // '\t', ';', ',' or ' ' for runs of blanks
  std::size_t line = 0;                 // of the row read last, from 1
  std::vector<std::string_view> cells;  // of that row; they live until the next
  std::deque<std::string> unquoted;     // cells of that row that had doubled quotes
};

// Passes over a byte order mark and learns the separator from the first line that is not blank.
CellReader OpenCells(std::string_view text);

// The next row that is not blank; false at the end. Failure InputWrong where a quote is not closed.
bool NextRow(CellReader& reader);

// "commas"
std::string_view SeparatorName(char separator);

}  // namespace host
