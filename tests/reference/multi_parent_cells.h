#pragma once

#include "recombination/multi_parent_tables.h"

namespace reference {

// The pair loop with every cell of the table a term of its own: 16 or 64 divisions an iteration, and sums over
// cells instead of kinds of cells. Rounds differently from the merged loop, so that slow pairs stop elsewhere.
void MultiParentPairsByCells(const recombination::Genotypes& data,
                             const recombination::MultiParentPairResults& results);

}  // namespace reference
