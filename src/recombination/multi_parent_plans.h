#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "recombination/multi_parent_lanes.h"

namespace recombination {

inline constexpr size_t kMostParents = 8;

// The allele classes of a marker's parental pattern, in order of their first parent.
struct Pattern {
  size_t classes = 0;
  std::array<uint8_t, kMostParents> first{}, parents{};  // of a class; the latter a bit a parent
};
Pattern PatternOf(int32_t digits, size_t parents);

// All mixes of kinds that two sets of parents of a population can make, by number: first those that the
// iteration splits, in descending order of their cells, first kind first; then several cells of the last kind;
// then one cell, by kind.
inline constexpr size_t kMixWords = 8;  // a bit a number
using MixBits = std::array<uint64_t, kMixWords>;
struct MixTable {
  size_t several = 0, single = 0;              // where the second and the third begin
  MixBits open{};                              // the first
  std::array<uint8_t, kParentKinds> kindOf{};  // of the single cells
  std::array<uint8_t, 16> kinds{};             // of each set of them, a bit a kind
  std::vector<MixCells> cells;
  std::vector<float> frequency;  // of a class where the iteration starts
  // The cells of two sets of half the parents, by kind a byte; numbers by the hash of such cells.
  std::array<std::array<uint32_t, 16>, 16> half{};
  std::vector<uint32_t> keys;
  std::vector<uint16_t> numbers;
  std::array<float, kMostParents * kMostParents + 1> uniform{};  // frequency of each of so many classes alike
};
MixTable MixTableOf(int32_t population);

// The numbers of the cells of two sets of parents looked up before, at first * 256 + second; 0xffff: not yet.
using KnownNumbers = std::vector<uint16_t>;
inline constexpr uint16_t kUnknownNumber = 0xffff;

// What the classes of one pattern make with each set of parents: the numbers that occur, and where the lines
// of each class are added up. Mixes whose lines the iteration does not ask for have places of their own from
// kMixPlaces on, so that additions do not wait for each other.
inline constexpr size_t kMixPlaces = kMixWords * 64;
struct PatternMixes {
  std::array<uint8_t, 256> made{};
  std::array<MixBits, 256> occur;
  std::array<std::array<uint16_t, kMostParents>, 256> number, place;  // by class
};
// Makes sure that a set of parents is made.
void MakeMixes(const MixTable& table, const Pattern& first, uint8_t parents, KnownNumbers& known,
               PatternMixes& mixes);

// The models met, from 1, each by the numbers of its mixes and the count of its classes.
struct Models {
  std::vector<MixModel> model{MixModel{}};
  std::unordered_map<uint64_t, uint16_t> known;
};
inline constexpr size_t kMostModels = 65535;

// How a pair of patterns with few mixes shows them.
struct Plan {
  uint16_t model = 0;
  std::array<uint8_t, kMostParents * kMostParents> shift{};  // 16 x mix of the class x * kMostParents + y
};

// The numbers that occur among the classes of two patterns; the sets of the second are made.
void NumbersOf(const Pattern& second, const PatternMixes& mixes, MixBits& bits);
bool Few(const MixBits& bits);  // kMostPlanned at most
// The mixes of several cells of the last kind, a bit each, and the single ones.
uint64_t SeveralOf(const MixTable& table, const MixBits& bits);
uint32_t SingleOf(const MixTable& table, const MixBits& bits);
// Whether some class is not as frequent as the others where the iteration starts.
bool Informative(const MixTable& table, const MixBits& bits, float uniform);

// For patterns whose classes make kMostPlanned mixes at most, while there is room for a model.
Plan PlanOf(const MixTable& table, const Pattern& first, const Pattern& second, const PatternMixes& mixes,
            const MixBits& bits, Models& models);

}  // namespace recombination
