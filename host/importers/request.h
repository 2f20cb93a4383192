#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/genotype_table.h"

namespace importers {

enum class Direction { Told, Rows, Columns };  // where a table has its markers; Told: by its own heading

// What the user asked for.
struct Request {
  host::TableKind kind = host::TableKind::Map;
  int32_t population = 0;  // 0: as the file says, refused when it does not
  int32_t mappingFunction = 1;
  std::vector<std::string> parents;  // names of samples, in the order P1, P2 or A, B, C, D, ...
  std::vector<std::string> missing;  // further codes for a missing genotype
  bool anchors = false;              // chromosomes become anchor groups
  bool passOnly = false;             // VCF: sites with FILTER PASS or "." only
  Direction markers = Direction::Told;
};

}  // namespace importers
