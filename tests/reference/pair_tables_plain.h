#pragma once

#include "recombination/pair_tables.h"

namespace reference {

// The pair loop written out: letters counted byte by byte, every pair estimated anew.
void PairTablesPlain(const recombination::Genotypes& data, const recombination::PairResults& results);

}  // namespace reference
