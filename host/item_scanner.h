#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// A word as it was read; a quoted one is never a number.
struct Word {
  std::string text;
  bool quoted = false;
};

// Reads rows of a project file: words parted by blanks, tabs or commas, over as many lines as they need.
// Quotes, repeats (3*A), nulls (,, and 3*) and the slash that ends a row mean what they mean in such files.
struct ItemScanner {
  std::vector<std::string_view> lines;
  std::size_t next = 0;  // the line that the next row begins on, from 0
};

struct RowRead {
  std::size_t line = 0;   // of the first word, from 1; 0 when there is none
  bool complete = false;  // false: the file ended or a word was malformed
  bool ended = false;     // the file ended
};

// Takes a row of `count` words and puts its first words into `kept`, where a null leaves what was there. The
// rest of the last line is dropped.
RowRead TakeRow(ItemScanner& scanner, std::size_t count, std::vector<Word>& kept);

// Skips remarks and blank lines; false at the end of the file.
bool ToData(ItemScanner& scanner);

}  // namespace host
