#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace recombination {

// Pairs of parents: one parent, sisters of one F1, of one half of eight parents, others.
inline constexpr size_t kParentKinds = 4;
// Distinct mixes of kinds that the classes of a pair of markers can have: far fewer than its 64 cells.
inline constexpr size_t kMostMixes = 64;

// Classes of cells that the data cannot tell apart, by how many cells of each kind they are made of.
struct MixModel {
  size_t mixes = 0;
  float uniform = 0;  // the frequency of each class if all were alike
  std::array<std::array<float, kParentKinds>, kMostMixes> cells{};
};

// One pair of markers: its model, the lines seen of each mix, where the answer goes.
struct MultiParentPair {
  const MixModel* model = nullptr;
  const float* counts = nullptr;
  size_t place = 0;
};

// Many pairs of one population whose models have the same number of mixes and that have lines in common.
struct MultiParentLaneJob {
  int32_t population, mappingFunction;
  size_t mixes;
  const MultiParentPair* pairs;
  size_t count;
  float *rec, *lod, *distance;  // at the place of each pair
};

// One routine an instruction set, the same results from each.
void EstimateMultiParentPortable(const MultiParentLaneJob& job);
#if defined(__x86_64__)
void EstimateMultiParentAvx2(const MultiParentLaneJob& job);
void EstimateMultiParentAvx512(const MultiParentLaneJob& job);
#endif

}  // namespace recombination
