#pragma once

#include "recombination/clonal_tables.h"

namespace reference {

// The pair loop written out: letters counted one by one, every pair estimated anew. Draws like the library.
void ClonalPairsPlain(const recombination::Genotypes& data, const recombination::ClonalPairResults& results);

}  // namespace reference
