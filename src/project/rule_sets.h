#pragma once

// A module code selects the rules of the readers: which population types the header may name and which rules
// the marker-type rows follow. A row each; a code without a row has no rules.

#include <array>
#include <cstdint>

namespace project {

enum class MarkerRules { None, BiParental, ClosedLines, NestedFamilies, Clonal, MultiParent };

struct RuleSet {
  int32_t moduleCode;
  MarkerRules markers;
  uint32_t populations;  // accepted types as bits 1 to 20; 0 accepts every value
};

constexpr uint32_t PopulationBit(int type) { return 1U << type; }
constexpr uint32_t PopulationsUpTo(int last) { return (2U << last) - 2U; }

inline constexpr uint32_t kSelfingPopulations = PopulationBit(7) | PopulationBit(8) | PopulationBit(13) |
                                                PopulationBit(14) | PopulationBit(15) | PopulationBit(16);

inline constexpr int32_t kHeaderOnlyCode = 10;  // a pre-read of the header, without rules
inline constexpr int32_t kClonalCode = 20;
inline constexpr int32_t kMultiParentCode = 30;
inline constexpr int32_t kMapCode = 102;
inline constexpr int32_t kConsensusCode = 103;  // several maps in one file, which share markers

inline constexpr std::array<RuleSet, 9> kRuleSets = {{
    {kClonalCode, MarkerRules::Clonal, PopulationsUpTo(2)},
    {kMultiParentCode, MarkerRules::MultiParent, PopulationsUpTo(4)},
    {101, MarkerRules::BiParental, PopulationsUpTo(20)},
    {kMapCode, MarkerRules::BiParental, PopulationsUpTo(20)},
    {104, MarkerRules::BiParental, PopulationsUpTo(20)},
    {105, MarkerRules::BiParental, PopulationsUpTo(20)},
    {106, MarkerRules::BiParental, PopulationsUpTo(20)},
    {107, MarkerRules::ClosedLines, 0},
    {108, MarkerRules::NestedFamilies, PopulationsUpTo(20) & ~kSelfingPopulations},
}};

constexpr RuleSet RulesOf(int32_t moduleCode) {
  for (const RuleSet& rules : kRuleSets) {
    if (rules.moduleCode == moduleCode) {
      return rules;
    }
  }
  return {moduleCode, MarkerRules::None, 0};
}

}  // namespace project
