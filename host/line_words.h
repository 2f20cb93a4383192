#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The words of one line as the reader of project files parts them: blanks, tabs, commas; quotes; repeats.
struct LineWords {
  std::vector<std::string_view> words;  // without quotes, repeats written out; a null has no data()
  bool slash = false;                   // a slash ended the row; what stands behind it is not in `words`
  bool openQuote = false;               // a quote that this line does not close ended it
  bool malformed = false;               // a word that no reader takes ended it: 'a'b, 0*A
  bool firstRepeats = false;            // the first word stood in a repeat
  std::deque<std::string> unquoted;     // texts of words with a doubled quote

  bool Whole() const { return !slash && !openQuote && !malformed; }
  bool IsNull(std::size_t k) const { return words[k].data() == nullptr; }
};

void Clear(LineWords& words);
// Adds the words of `line`, which must outlive them, up to `most` in all.
void AddWords(std::string_view line, std::size_t most, LineWords& into);

}  // namespace host
