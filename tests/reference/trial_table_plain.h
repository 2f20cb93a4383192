#pragma once

// The cells, means and effects of a trial as the definition tells them.

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/reference/trial_plain.h"

namespace reference {

using Names = std::vector<std::string>;

inline bool IsMissing(float x) { return std::isnan(x) || std::fabs(9999.0F + x) < 1e-6F; }

struct Cell {
  std::vector<std::size_t> blockId;
  std::vector<float> value;
  float mean = -100, effect = -100;
};
struct Trait {
  std::string name;
  std::size_t G = 0, E = 0, totalBlocks = 0;
  std::vector<std::size_t> gIndex, eIndex;
  std::vector<std::vector<std::size_t>> blockIndex;
  std::vector<std::vector<Cell>> cell;  // [e][g]
  float most = 0, least = 0, grand = 0;
  std::vector<float> gMean, gEff, eMean, eEff, bMean, bEff, errorMs, errorDf, blue;
};
struct Table {
  Names environments, genotypes;
  std::vector<Names> blocks;
  std::vector<Trait> traits;
};

Table MakeTable(const Trial& trial);

}  // namespace reference
