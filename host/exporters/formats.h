#pragma once

#include <string_view>

namespace exporters {

enum class Format { Tsv, Rqtl, JoinMap, AllMaps, Plink, Json };

// The formats by the word of the command line. `units` are those of the positions in the file.
struct FormatRow {
  Format format;
  std::string_view word, units, what;
  bool genotypes = false;  // takes the project file too
  bool places = false;     // takes only markers whose names tell a place
};
inline constexpr FormatRow kFormats[] = {
    {Format::Tsv, "tsv", "cM", "a table: group, marker, cM, order, chromosome"},
    {Format::Rqtl, "rqtl", "cM", "R/qtl csv with the genotypes, a row a line", true},
    {Format::JoinMap, "joinmap", "cM", "JoinMap .map, which charting programs read"},
    {Format::AllMaps, "allmaps", "cM", "ALLMAPS csv: places on scaffolds beside the map", false, true},
    {Format::Plink, "plink", "Morgans", "PLINK .map"},
    {Format::Json, "json", "cM", "groups with their markers, for programs"},
};

inline const FormatRow* FormatOf(std::string_view word) {
  for (const FormatRow& row : kFormats) {
    if (row.word == word) return &row;
  }
  return nullptr;
}

}  // namespace exporters
