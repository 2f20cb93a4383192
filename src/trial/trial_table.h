#pragma once

// The table of one trial analysis: the plots sorted into cells, and the means and effects of every trait.
//
// A position of a trait (g, e, from 1) counts the genotypes and environments that have data for the trait; an
// index (GenotypeIndex, EnvironmentIndex) is the place in the table's own lists.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "trial/names.h"

namespace trial {

// Two marks that are never merged. A missing plot is -9999 in the file: it stays out of all cells, means and
// effects, but counts in the largest, smallest and grand mean. -100 in a derived table says that there is no
// value; a plot of -100 is an ordinary one, but those three skip it.
constexpr float kNoValue = -100.0F;
inline bool IsMissing(float x) { return std::isnan(x) || std::fabs(9999.0F + x) < 1e-6F; }

struct TrialTrait {
  int32_t NumGenotypes = 0;
  int32_t NumEnvironments = 0;
  std::vector<int32_t> GenotypeIndex;
  std::vector<int32_t> EnvironmentIndex;
  std::vector<int32_t> BlockBegin;  // NumEnvironments + 1: where an environment's blocks begin in BlockIndex
  std::vector<int32_t> BlockIndex;  // positions in the environment's list of the blocks with data
  std::vector<int32_t> CellBegin;   // where a cell's plots begin, cells by environment, then genotype
  std::vector<int32_t> BlockId;     // of each plot: position of its block in the environment's whole list
  std::vector<float> Value;         // of each plot; within a cell in the order of the rows
  float MaxValue = 0;
  float MinValue = 0;
  float GrandMean = 0;
  std::vector<float> GenotypeMean, GenotypeEffect;
  std::vector<float> EnvironmentMean, EnvironmentEffect;
  std::vector<float> BlockMean, BlockEffect;  // running through the environments
  std::vector<float> CellMean, CellEffect;    // in the order of the cells
  std::vector<float> ErrorMS, ErrorDF;        // by environment; 0 without error degrees of freedom
  std::vector<float> PredictionBLUE;          // by genotype; empty unless the combined analysis ran
};

struct TrialEnvironment {
  std::vector<Name> BlockName;  // each once, in order of appearance, with data or without
};

struct TrialTable {
  int32_t NumTraits = 0;
  int32_t NumEnvironments = 0;
  int32_t NumGenotypes = 0;
  std::vector<Name> TraitName, EnvironmentName, GenotypeName;
  std::vector<TrialEnvironment> Environment;
  std::vector<TrialTrait> Trait;
};

// One-based places in the lists.
template <class List>
auto& ItemAt(List& list, int32_t place) {
  return list[static_cast<std::size_t>(place) - 1];
}
inline std::size_t CellPlace(const TrialTrait& trait, int32_t g, int32_t e) {
  return (static_cast<std::size_t>(e) - 1) * static_cast<std::size_t>(trait.NumGenotypes) +
         static_cast<std::size_t>(g) - 1;
}
inline int32_t CountAt(const TrialTrait& trait, int32_t g, int32_t e) {
  const std::size_t cell = CellPlace(trait, g, e);
  return trait.CellBegin[cell + 1] - trait.CellBegin[cell];
}
inline float CellMeanAt(const TrialTrait& trait, int32_t g, int32_t e) {
  return trait.CellMean[CellPlace(trait, g, e)];
}
inline float CellEffectAt(const TrialTrait& trait, int32_t g, int32_t e) {
  return trait.CellEffect[CellPlace(trait, g, e)];
}
template <class T>
std::span<const T> OfCell(const TrialTrait& trait, const std::vector<T>& plots, int32_t g, int32_t e) {
  return std::span(plots).subspan(static_cast<std::size_t>(trait.CellBegin[CellPlace(trait, g, e)]),
                                  static_cast<std::size_t>(CountAt(trait, g, e)));
}
// All plots of an environment, genotype by genotype.
template <class T>
std::span<const T> OfEnvironment(const TrialTrait& trait, const std::vector<T>& plots, int32_t e) {
  const std::size_t first = CellPlace(trait, 1, e);
  const auto begin = static_cast<std::size_t>(trait.CellBegin[first]);
  const auto end =
      static_cast<std::size_t>(trait.CellBegin[first + static_cast<std::size_t>(trait.NumGenotypes)]);
  return std::span(plots).subspan(begin, end - begin);
}
inline int32_t NumBlocks(const TrialTrait& trait, int32_t e) {
  return trait.BlockBegin[static_cast<std::size_t>(e)] - ItemAt(trait.BlockBegin, e);
}
inline int32_t TotalBlocks(const TrialTrait& trait) { return static_cast<int32_t>(trait.BlockIndex.size()); }

// What stands in BlockMean or BlockEffect for a plot's block: the entry behind the environment's first by
// BlockId. Where a block without data comes before, that is another block's, or another environment's, and 0
// past the last: required as it stands.
inline float OfBlock(const TrialTrait& trait, const std::vector<float>& blocks, int32_t e, int32_t blockId) {
  const auto place =
      static_cast<std::size_t>(ItemAt(trait.BlockBegin, e)) + static_cast<std::size_t>(blockId) - 1;
  return place < blocks.size() ? blocks[place] : 0.0F;
}

// Reads numRows rows of numColumns columns: environment, genotype, block, traits. Tells the log and gives
// false when the table cannot be read. Counts that the caller merely claims take no memory.
bool ReadTrialTable(int32_t logUnit, int32_t numRows, int32_t numColumns, std::string_view path,
                    TrialTable& table);

// The rows as read: positions in the table's lists, and the values of each trait.
struct PlotRows {
  std::vector<int32_t> environment, genotype, block;
  std::vector<std::vector<float>> values;
};

// Cells, means and effects of all traits.
std::vector<TrialTrait> MakeTraits(const TrialTable& table, const PlotRows& rows);

}  // namespace trial
