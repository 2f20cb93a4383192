#pragma once

#include "recombination/multi_parent_tables.h"

namespace reference {

// The pair loop written out: every pair counted line by line, its cells put in classes anew, and iterated
// from the start.
void MultiParentPairsPlain(const recombination::Genotypes& data,
                           const recombination::MultiParentPairResults& results);

}  // namespace reference
