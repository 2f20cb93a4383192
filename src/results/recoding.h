#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "results/marker_file.h"

namespace results {

// A marker as the engine of known haplotypes takes it: alleles named after the haplotype that they lie on.
struct RecodedMarker {
  std::string_view category;  // 8 characters
  std::string genotypes;
};

// Recodes a marker whose phases in the two parents are 1, -1 or 0. With -1 the parent's two alleles change
// their names; a marker with the same alleles in both parents changes its category when its phases differ.
RecodedMarker Recode(const MarkerRecord& marker, int32_t populationType, int32_t phaseAB, int32_t phaseCD);

}  // namespace results
