#pragma once

#include <string_view>

namespace reference {

// Two markers of a clonal F1 or a double cross, a letter a line each.
struct ClonalPair {
  int firstCategory, secondCategory;
  std::string_view first, second;
};

// Estimates in double precision from the gametes of the cross: every line's hidden alleles are weighed by
// their probability, and recombinants counted, until nothing changes.

// Each parent's own frequency, above 0.5 in repulsion.
void ParentFrequencies(const ClonalPair& pair, double rec[2]);

// One frequency for both parents; in repulsion where flipped.
double PooledFrequency(const ClonalPair& pair, bool flipAB, bool flipCD, double start);

// Common logarithm of the likelihood over that of free recombination.
double ClonalLodScore(const ClonalPair& pair, double recAB, double recCD);

}  // namespace reference
