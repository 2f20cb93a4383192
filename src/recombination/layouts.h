#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

// What two markers of a selfing population show, as tables: which cells belong together, and how a table is
// flipped into the other linkage phase.
namespace recombination {

// The distinct cells of a co-dominant table: 0, 1, 2, 4, 5, 8; cells 3, 6 and 7 equal 1, 2 and 5.
inline constexpr size_t kCurves = 6;

constexpr bool SelfingPopulation(int32_t population) {
  return population == 7 || population == 8 || (population >= 13 && population <= 16);
}
// F2 and F3 cannot tell the two parents apart: cells 8, 5 and 7 equal cells 0, 1 and 3.
constexpr bool Symmetric(int32_t population) { return population == 7 || population == 8; }

// What a pair of marker classes shows of the nine cells: classes of one frequency, with the table's cells
// whose counts belong to it and how often each curve goes into the frequency. The margins of a table do not
// depend on r, so a class changes with r as one curve does, or against it: sums of derivatives would cancel.
struct Shown {
  uint32_t cells;  // bit k for cell k
  std::array<int, kCurves> weight;
  size_t curve;  // whose derivatives are the class's
  bool against;  // with the other sign
};
struct Layout {
  int32_t code;    // with 121, 101 and 1012 read as 112, 110 and 1210
  bool symmetric;  // of F2 and F3, where a row of its own exists
  size_t count;
  std::array<Shown, 6> shown;
};

constexpr uint32_t Bits(std::initializer_list<int> cells) {
  uint32_t bits = 0;
  for (const int cell : cells) bits |= 1U << cell;
  return bits;
}

// Class A of a dominant marker is added into index 1, class B of a recessive one too.
inline constexpr size_t kLayouts = 8;
inline constexpr std::array<Layout, kLayouts> kLayout = {{
    {11,
     true,
     4,
     {{{Bits({0, 8}), {1}, 0, false},
       {Bits({1, 3, 5, 7}), {0, 1}, 1, false},
       {Bits({2, 6}), {0, 0, 1}, 2, false},
       {Bits({4}), {0, 0, 0, 1}, 3, false}}}},
    {11,
     false,
     6,
     {{{Bits({0}), {1}, 0, false},
       {Bits({1, 3}), {0, 1}, 1, false},
       {Bits({2, 6}), {0, 0, 1}, 2, false},
       {Bits({4}), {0, 0, 0, 1}, 3, false},
       {Bits({5, 7}), {0, 0, 0, 0, 1}, 4, false},
       {Bits({8}), {0, 0, 0, 0, 0, 1}, 5, false}}}},
    {112,
     false,
     6,
     {{{Bits({1}), {1, 1}, 2, true},
       {Bits({2}), {0, 0, 1}, 2, false},
       {Bits({4}), {0, 1, 0, 1}, 4, true},
       {Bits({5}), {0, 0, 0, 0, 1}, 4, false},
       {Bits({7}), {0, 0, 1, 0, 1}, 5, true},
       {Bits({8}), {0, 0, 0, 0, 0, 1}, 5, false}}}},
    {110,
     false,
     6,
     {{{Bits({0}), {1}, 0, false},
       {Bits({1}), {0, 1, 1}, 0, true},
       {Bits({3}), {0, 1}, 1, false},
       {Bits({4}), {0, 0, 0, 1, 1}, 1, true},
       {Bits({6}), {0, 0, 1}, 2, false},
       {Bits({7}), {0, 0, 0, 0, 1, 1}, 2, true}}}},
    {1212,
     false,
     3,
     {{{Bits({4}), {1, 2, 0, 1}, 5, false},
       {Bits({5, 7}), {0, 0, 1, 0, 1}, 5, true},
       {Bits({8}), {0, 0, 0, 0, 0, 1}, 5, false}}}},
    {1210,
     true,
     3,
     {{{Bits({3, 7}), {1, 1}, 2, true},
       {Bits({4}), {0, 1, 1, 1, 1}, 2, false},
       {Bits({6}), {0, 0, 1}, 2, false}}}},
    {1210,
     false,
     4,
     {{{Bits({3}), {1, 1}, 2, true},
       {Bits({4}), {0, 1, 1, 1, 1}, 2, false},
       {Bits({6}), {0, 0, 1}, 2, false},
       {Bits({7}), {0, 0, 0, 0, 1, 1}, 2, true}}}},
    {1010,
     false,
     3,
     {{{Bits({0}), {1}, 0, false},
       {Bits({1, 3}), {0, 1, 1}, 0, true},
       {Bits({4}), {0, 0, 0, 1, 2, 1}, 0, false}}}},
}};
inline constexpr size_t kNoLayout = kLayouts;

// The code that the models know a pair code under, after the transposition of the table.
constexpr int32_t ModelCode(int32_t pairCode) {
  switch (pairCode) {
    case 121:
      return 112;
    case 101:
      return 110;
    case 1012:
      return 1210;
    default:
      return pairCode;
  }
}

constexpr size_t LayoutOf(int32_t population, int32_t pairCode) {
  for (size_t k = 0; k < kLayouts; ++k) {
    if (kLayout[k].code == ModelCode(pairCode) && (!kLayout[k].symmetric || Symmetric(population))) return k;
  }
  return kNoLayout;
}

// One marker's alleles exchanged: where the cells of the flipped table come from, and its code.
struct Flip {
  int32_t code;
  std::array<size_t, 9> from;
};
inline constexpr std::array<size_t, 9> kRows = {6, 7, 8, 3, 4, 5, 0, 1, 2},
                                       kColumns = {2, 1, 0, 5, 4, 3, 8, 7, 6};
constexpr Flip FlipOf(int32_t code) {
  switch (code) {
    case 1212:
      return {1210, kColumns};
    case 1210:
    case 1012:
      return {1212, kColumns};
    case 1010:
      return {1210, kRows};
    default:
      return {code, kRows};
  }
}

// Common logarithms of a layout's frequencies at 0.5, for a selfing population.
const float* HalfLogs(int32_t population, size_t layout);

}  // namespace recombination
