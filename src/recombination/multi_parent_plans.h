#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "recombination/multi_parent_lanes.h"

namespace recombination {

inline constexpr size_t kMostParents = 8;

// The allele classes of a marker's parental pattern, in order of their first parent.
struct Pattern {
  int32_t digits = 0;
  size_t classes = 0;
  std::array<uint8_t, kMostParents> classOf{}, first{};  // of a parent; of a class
};
Pattern PatternOf(int32_t digits, size_t parents);

// How the classes of a pair of patterns mix kinds. Mixes of more than one cell come first, then the classes of
// one cell, each in descending order of their cells, first kind first.
struct Plan {
  bool informative = false;  // some classes differ in frequency
  size_t mixes = 0;          // of more than one cell
  size_t all = 0;            // with those of one cell
  float uniform = 0;
  uint32_t single = 0;
  uint32_t model = 0;  // from 1, the same for the same mixes; 0 beyond the limits of remembering
  std::array<std::array<float, kParentKinds>, kMostMixes / 2> cells{};
  std::array<uint8_t, kParentKinds> kind{};     // of the classes of one cell
  std::array<uint8_t, kMostMixes> classes{};    // x * slots + y, those of one mix together
  std::array<uint8_t, kMostMixes + 1> begin{};  // where those of each mix begin
};

// What the making of plans keeps: numbers of the models met, by the cells of their mixes; places of keys by
// their hash, each with the number of the plan that it belongs to in the high bits.
struct PlanMaker {
  std::map<std::vector<uint32_t>, uint32_t> models;
  std::array<uint32_t, 256> found{};
  uint32_t plans = 0;
};
inline constexpr size_t kMostRemembered = 4;  // mixes of a table that is remembered

// slots: distance of two classes of the first pattern in a table of counts.
void MakePlan(int32_t population, const Pattern& first, const Pattern& second, size_t slots, PlanMaker& maker,
              Plan& plan);

}  // namespace recombination
