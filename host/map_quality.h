#pragma once

#include <string>
#include <vector>

#include "host/genotype_table.h"
#include "host/linkage_map.h"
#include "host/lod_sweep.h"
#include "host/marker_data.h"

namespace host {

inline constexpr std::size_t kFewLines = 30;

// What a reader of a map should look at again: neighbours that fewer than kFewLines lines compare (or half of the
// lines where there are fewer than twice as many), groups that are much longer by all markers than by every second
// one, as genotyping errors make them, and markers that no group takes.
std::vector<std::string> QualityWarnings(const MapData& data, const LinkageMap& map,
                                         const GenotypeTable& table);

// What speaks for another population than the one that the file names: genotypes that it cannot have, above one in
// ten, and distorted segregation (p < 0.01) at most of ten markers or more.
void DoubtGenotypes(const GenotypeTable& table, std::vector<std::string>& warnings);
void DoubtSegregation(const MapData& data, std::vector<std::string>& warnings);

// Says where a higher cut parts groups that chance may have joined: more of them, and steadily.
void DoubtCut(const std::vector<SweepRow>& sweep, float lod, int32_t minGroup,
              std::vector<std::string>& warnings);

// The sum of the distances between neighbours over that between markers two apart, 1 for places without errors; of
// the inner places, and 0 for a group with fewer than ten or with gaps.
double Inflation(const MapData& data, const LinkageGroup& group);

}  // namespace host
