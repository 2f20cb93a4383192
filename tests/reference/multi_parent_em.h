#pragma once

#include <cstdint>
#include <string_view>

namespace reference {

// Two markers of a population of four or eight parents, a letter a line each.
struct ParentsPair {
  int32_t population, firstPattern, secondPattern;
  std::string_view first, second;
};

// What the iteration has come to.
struct ParentsEstimate {
  double rec = 0.25;  // not limited; of 4PRIL that of one meiosis
  double lod = 0;
  double change = 1;  // of the last step
};

// The estimate in double precision from the meioses of the cross, single pair of parents by single pair of
// parents, until a step changes no more than settled, or for that many steps. 8PRIL with the counts that the
// library has there.
ParentsEstimate EstimateParents(const ParentsPair& pair, int steps, double settled);

}  // namespace reference
