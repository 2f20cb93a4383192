#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "host/file_walk.h"

namespace host {

// A row of a section, from 1, that a report speaks of.
struct RowPlace {
  Section section;
  std::size_t row;
};

// The header field of a report's first line; none for reports of other things.
std::optional<Field> FieldOfReport(std::string_view report, const FileLayout& layout,
                                   std::string_view module);

// The rows that a report speaks of, by its first line and one of its detail lines (empty for a report
// without). The rows need not be there: the file may end before them.
std::vector<RowPlace> PlacesOfReport(std::string_view report, std::string_view detail,
                                     const FileLayout& layout);

// Whether the first line of a report speaks of rows of one place each detail line.
bool HasDetails(std::string_view report);

}  // namespace host
