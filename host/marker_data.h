#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/genotype_table.h"
#include "host/input_file.h"
#include "host/shared_array.h"

namespace host {

// Place in a pair array of markers i and j, both from 1 and different: (2,1), (3,1), (3,2), (4,1), ...
inline std::size_t PairPlace(int32_t i, int32_t j) {
  const auto low = static_cast<std::size_t>(i < j ? i : j), high = static_cast<std::size_t>(i < j ? j : i);
  return (high - 1) * (high - 2) / 2 + low - 1;
}

// Pair tables by PairPlace. A frequency above 0.5 tells of repulsion.
struct PairTables {
  SharedArray<float> rec, lod, distance;
};

// What the check of a MAP, CDM or PLM file hands back. Marker arrays are reached by the marker's running
// number, from 1.
struct MapData {
  TableKind kind = TableKind::Map;
  int32_t numMarkers = 0, populationType = 0, mappingFunction = 0, markerSpaceType = 0, populationSize = 0;
  std::vector<std::string> names;
  SharedArray<int32_t> anchor, countX, category;
  std::vector<SharedArray<int32_t>> counts;  // lines of each genotype, in the order of GenotypesOf
  SharedArray<float> chi, segregationP;
  SharedArray<float> rec, lod, distance;  // by PairPlace; of a clonal cross those of both parents together
  SharedArray<float> linkLod;             // PLM: by PairPlace, what may link a pair; see independence.h
  SharedArray<float> crossovers;          // MAP: by PairPlace
  std::array<PairTables, 2> parents;      // CDM: parent AB, parent CD
  SharedArray<int32_t> phase;  // CDM: by PairPlace, 1 to 4: coupling in both, repulsion in CD, in AB, in both

  // The LOD by which pairs are linked into groups.
  std::span<const float> LinkLods() const { return linkLod.size() > 0 ? linkLod.view() : lod.view(); }
  const std::string& Name(int32_t marker) const { return names[static_cast<std::size_t>(marker - 1)]; }
  int32_t Anchor(int32_t marker) const { return anchor[static_cast<std::size_t>(marker - 1)]; }
  int32_t Missing(int32_t marker) const { return countX[static_cast<std::size_t>(marker - 1)]; }
  int32_t Category(int32_t marker) const { return category[static_cast<std::size_t>(marker - 1)]; }
  // Share of lines without a genotype, 0 to 1.
  double MissingShare(int32_t marker) const {
    return populationSize > 0 ? static_cast<double>(Missing(marker)) / populationSize : 0.0;
  }
  bool Tested(int32_t marker) const {
    return Missing(marker) < populationSize && !std::isnan(SegregationP(marker));
  }
  float SegregationP(int32_t marker) const { return segregationP[static_cast<std::size_t>(marker - 1)]; }
};

// MAP, CDM and PLM have a kind.
std::optional<TableKind> MarkerKindOf(std::string_view module);
// The genotypes that MapData counts, as files have them, the missing one left out.
std::span<const std::string_view> GenotypesOf(TableKind kind);
// "F2", "clonal F1", "8PDH"; "unknown" for a number that is none.
std::string_view PopulationWords(TableKind kind, int64_t type);
// The marker's category as files have it: "A=B" of a clonal cross, "AABB" of several parents; "" for MAP.
std::string CategoryText(const MapData& data, int32_t marker);

// What CHECKERRORBIN hands back.
struct BinData {
  int32_t numMarkers = 0;
  std::vector<std::string> names;
  SharedArray<int32_t> anchor;
  SharedArray<float> missingPercent;
};

struct LoadResult {
  bool good = false;
  std::vector<std::string> log;  // the library's own lines
};

// Pre-read, allocation and check of a file, each export in a child process. A file that is wrong comes back
// in the result; memory that is not there and everything else throws Failure Other. `quiet` keeps the size
// note and the progress line away from standard error.
LoadResult LoadMarkers(const InputFile& file, TableKind kind, bool quiet, MapData& data);
LoadResult LoadBin(const InputFile& file, int32_t moduleCode, BinData& data);

// Names as the library hands them out: one int32 per character, the running number of the name fastest,
// `width` characters blank-padded, which are cut.
std::vector<std::string> NarrowedNames(std::span<const int32_t> wide, std::size_t count, std::size_t width);

// Bytes that a check of a file needs: the numbers of a pair, a byte a genotype, and the file itself.
double MapBytes(TableKind kind, int32_t markers, double fileBytes, double cells);
// Bytes that the machine can give now; the smaller of free memory and the limit of the control group.
double AvailableBytes();

}  // namespace host
