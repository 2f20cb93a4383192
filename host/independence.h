#pragma once

#include "host/genotype_table.h"
#include "host/marker_data.h"

namespace host {

// How strongly the genotypes of two markers depend on each other, on the scale of a LOD: the likelihood ratio
// statistic of their table of counts against independence (over the lines typed at both), its degrees of
// freedom folded to one, over 2 ln 10.
//
// The LOD of a pair of multi-parent markers counts parents of origin as if they had been seen. Where markers
// share few alleles it can be large for two that are not linked, so that it must not link them alone. Fills
// data.linkLod with the smaller of the pair's LOD and this one. `table` has the markers of `data`.
void AddLinkLods(const GenotypeTable& table, MapData& data);

}  // namespace host
