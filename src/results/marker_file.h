#pragma once

// The project file that a finished map was built from, as the result writers read it: five header fields,
// then category, name and genotypes of each marker, as they stand and without a check.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "project/genotype_rules.h"
#include "project/store.h"

namespace results {

struct MarkerRecord {
  std::array<char, project::kCategoryWidth> category = project::Blank<decltype(category)>();
  project::NameText name = project::Blank<project::NameText>();
  std::string genotypes;  // of equal width, one behind the other
};

struct MarkerFile {
  project::ProjectHeader Header;
  std::vector<MarkerRecord> markers;  // the rows that could be read whole
};

// Reads the file from its first record on; each result step does so anew. Nothing is reported: reading stops
// at the first field or row that cannot be read, and the file is closed. Genotypes are cut to `width`.
MarkerFile ReadMarkerFile(std::string_view fileName, std::size_t width);

// Marker m, from 1; blank and without genotypes when the file has no such row.
const MarkerRecord& RowAt(const MarkerFile& file, int32_t m);
std::string_view NameOf(const MarkerFile& file, int32_t m);

std::string_view CategoryOf(const MarkerFile& file, int32_t m);

}  // namespace results
