#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace recombination {

enum : int32_t { k4PDH = 1, k4PRIL = 2, k8PDH = 3, k8PRIL = 4 };

// Pairs of parents: one parent, sisters of one F1, of one half of eight parents, others. Kinds that are
// equally frequent in a population count as the last of them.
inline constexpr size_t kParentKinds = 4;
// Mixes of kinds that the classes of a pair of markers can have: far fewer than its 64 cells.
inline constexpr size_t kMostMixes = 64;

using MixCells = std::array<float, kParentKinds>;  // cells of each kind

// Classes of cells that the data cannot tell apart, of two cells or more, made of the same number of cells of
// each kind; the lines seen in all of them together.
struct Mix {
  uint32_t number;  // its cells
  float count;
};

// One pair of markers with lines in common.
struct MultiParentPair {
  std::array<float, kParentKinds> known;  // lines in classes of one cell, by kind
  float lines;                            // seen at both markers
  float uniform;                          // the frequency of each class if all were alike
  uint32_t single;                        // kinds with a class of one cell, a bit each
  uint64_t several;  // mixes of the last kind alone, a bit each, that are not among the mixes
  size_t place;      // where the answer goes
};

// How a pair with few mixes shows them: first those that are split, each of counts of 16 bits of a pair.
inline constexpr size_t kMostPlanned = 4;
struct MixModel {
  size_t mixes, all;
  std::array<uint16_t, kMostPlanned> number;
  std::array<uint8_t, kMostPlanned> kind;  // of those of one cell; of the others kParentKinds
  float uniform;                           // this and the next two as above
  uint32_t single;
  uint64_t several;
};
struct PlannedPair {
  uint64_t counts, place;  // the number of the model in the 16 high bits of the place
};
inline constexpr size_t kPlaceBits = 48;

// Many pairs of one population with the same number of mixes, all with a model, or none. Pairs that come out without information, or
// that do not settle, are left as they were: the caller sets them to 0.5, 0 and 1000 before.
struct MultiParentLaneJob {
  int32_t population, mappingFunction;
  size_t mixes;
  const MixCells* cells;    // by number
  const MixCells* several;  // of the bits of several
  const MultiParentPair* pairs;
  const Mix* mix;  // of pair k from mix[k * mixes] on
  const PlannedPair* planned;
  const MixModel* models;
  size_t count;
  float *rec, *lod, *distance;
};

// One routine an instruction set, the same results from each.
void EstimateMultiParentPortable(const MultiParentLaneJob& job);
#if defined(__x86_64__)
void EstimateMultiParentAvx2(const MultiParentLaneJob& job);
void EstimateMultiParentAvx512(const MultiParentLaneJob& job);
#endif

}  // namespace recombination
