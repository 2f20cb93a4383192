#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/importers/text_source.h"

namespace importers {

// A table of texts, all rows of one width.
struct Sheet {
  std::string path;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::size_t> lines;  // of each row in the file; of each column when the table was turned
  bool turned = false;

  std::size_t Width() const { return rows.empty() ? 0 : rows.front().size(); }
  std::size_t LineOf(std::size_t row, std::size_t column) const { return lines[turned ? column : row]; }
};

// The separator of a line: tab, semicolon or comma, whichever it has most of, else blanks.
char SeparatorOf(std::string_view line);
// Fields of a line without the blanks around them; a field may be in double quotes, a doubled one stands for one.
// A separator of blanks counts once however long it is.
std::vector<std::string> Fields(std::string_view line, char separator);

// The lines from `first` (from 0) on that hold anything. Empty fields behind the first row's last one are
// dropped. Where `namesMayLackHeading`, a heading that is one field short has none for the first column. Failure
// InputWrong where a row is shorter or longer than the first.
Sheet ReadSheet(const TextFile& file, std::size_t first = 0, bool namesMayLackHeading = false);
// Rows for columns.
Sheet Turned(Sheet sheet);

}  // namespace importers
