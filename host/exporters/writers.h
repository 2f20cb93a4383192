#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/exporters/formats.h"
#include "host/genotype_table.h"
#include "host/map_tables.h"

namespace exporters {

// A file's text, and what of the map is in it.
struct Exported {
  std::string text;
  std::size_t groups = 0, markers = 0;
  std::vector<std::string> leftOut;  // linked markers that the format cannot place
  std::vector<std::string> renamed;  // markers whose names changed, as they were
};

// `genotypes` of the same cross, for formats that take them, else null. Failure InputWrong when a marker of the
// map has no genotypes, when a marker's name cannot be told from another's in the format, or when nothing of the
// map would be in the file.
Exported Export(Format format, const host::MapTableFile& map, const host::GenotypeTable* genotypes);

}  // namespace exporters
