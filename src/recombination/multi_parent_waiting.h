#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "recombination/multi_parent_plans.h"
#include "recombination/multi_parent_tables.h"

// Pairs on their way to an answer: those that wait for the lanes, and those that wait for the answer of an
// equal pair.
namespace recombination {

inline constexpr int32_t kMostKeyed = 65535;  // lines whose counts fit 16 bits of a key

// Pairs with the same number of mixes. Room for all is made with the first.
struct PairQueue {
  std::vector<MultiParentPair> pairs;
  std::vector<Mix> mixes;
  size_t count = 0;
};

// Tables met before, each with the place where the first pair that had it finds its answer. Place 0: free.
struct KnownTables {
  std::vector<PlannedPair> slots;
  size_t used = 0;
};
struct Copy {
  size_t to, from;
};
// A pair about to be looked for among the known tables.
struct Staged {
  PlannedPair pair;
  size_t slot;
};
inline constexpr size_t kStage = 32;  // looked for together, so that memory answers in time

struct Waiting {
  const Genotypes& data;
  const MultiParentPairResults& results;
  Level level;
  MixTable table;
  size_t remember;  // tables of up to so many mixes
  Models models{};
  std::vector<PlannedPair> planned{}, sorted{};  // pairs that wait, as they came and by model
  size_t plannedCount = 0;
  std::array<PairQueue, kMostMixes / 2 + 1> queues{};
  KnownTables known{};
  std::vector<Copy> copies{};
  std::array<Staged, kStage> stage{};
  size_t staged = 0;
};

Waiting WaitingFor(const Genotypes& data, const MultiParentPairResults& results, Level level);

// The next free place for a pair of so many mixes, and its mixes; Added once both are filled.
struct QueuedPair {
  MultiParentPair& pair;
  Mix* mix;
};
QueuedPair NextPair(Waiting& waiting, size_t mixes);
void Added(Waiting& waiting, size_t mixes);

// A pair with a model.
void TakePlanned(Waiting& waiting, size_t model, uint64_t counts, size_t place);

// Every pair taken gets its answer.
void GiveAll(Waiting& waiting);

}  // namespace recombination
