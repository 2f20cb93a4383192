#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace exporters {

// Where a marker was found on a sequence.
struct SourcePlace {
  std::string_view chromosome;
  std::string_view position;  // digits, in bases
};

// From a name CHROM_POS or CHROM:POS, the last mark of the two deciding ("scaffold_12_3456" stands on
// scaffold_12); none for other names. The views are into `name`.
std::optional<SourcePlace> SourceOf(std::string_view name);

}  // namespace exporters
