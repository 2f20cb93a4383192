#include "recombination/multi_parent_tables.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "recombination/map_functions.h"
#include "recombination/multi_parent_counts.h"
#include "recombination/multi_parent_lanes.h"
#include "recombination/multi_parent_plans.h"

namespace recombination {
namespace {

constexpr size_t kWordBits = 64;
constexpr size_t kBatch = 4096;                  // pairs of one number of mixes estimated together
constexpr size_t kMostQueued = size_t{1} << 14;  // mixes of these pairs
constexpr size_t kMostCopies = size_t{1} << 15;  // pairs that wait for the answer of an equal one
constexpr size_t kStage = 32;                    // pairs looked for together, so that memory answers in time
constexpr int32_t kMostKeyed = 65535;            // lines whose counts fit 16 bits of a key
constexpr size_t kFirstSlots = size_t{1} << 13, kMostSlots = size_t{1} << 21;
constexpr uint64_t kPlaceBits = (uint64_t{1} << 48) - 1;

// Pairs that wait for the lanes. Room for all is made with the first.
struct Queue {
  std::vector<MultiParentPair> pairs;
  std::vector<Mix> mixes;
  size_t count = 0;
};

// A table met before: the counts of its mixes, 16 bits each; its model in the 16 high bits of the place where
// the first pair that had it finds its answer. 0: free.
struct Known {
  uint64_t counts, place;
};
struct KnownTables {
  std::vector<Known> slots;
  size_t used = 0;
};
struct Copy {
  size_t to, from;
};
// A pair about to be looked for among the known tables.
struct Staged {
  const Plan* plan;
  size_t place, slot;
  uint64_t counts;
};

struct Loop {
  const Genotypes& data;
  const MultiParentPairResults& results;
  Level level;
  size_t parents, words = 0;
  std::vector<Pattern> patterns;
  std::vector<size_t> patternOf;  // of each marker
  std::vector<uint64_t> bits;     // word w of class c of marker m at (m * words + w) * parents + c
  size_t remember = 0;            // tables of up to so many mixes
  PlanMaker maker;
  KnownTables known;
  std::vector<Copy> copies;
  std::array<Staged, kStage> stage;
  size_t staged = 0;
  std::array<Queue, kMostMixes / 2 + 1> queues;
};

void FindPatterns(Loop& loop) {
  std::map<int32_t, size_t> met;
  for (int32_t m = 0; m < loop.data.numMarkers; ++m) {
    const int32_t digits = loop.data.category[m];
    const auto [at, added] = met.try_emplace(digits, loop.patterns.size());
    if (added) loop.patterns.push_back(PatternOf(digits, loop.parents));
    loop.patternOf.push_back(at->second);
  }
}

void FillPlanes(Loop& loop) {
  const auto lines = static_cast<size_t>(std::max(loop.data.populationSize, 0));
  loop.words = (lines + kWordBits - 1) / kWordBits;
  loop.bits.assign(loop.patternOf.size() * loop.words * loop.parents, 0);
  for (size_t m = 0; m < loop.patternOf.size(); ++m) {
    const Pattern& pattern = loop.patterns[loop.patternOf[m]];
    std::array<size_t, 256> classOf{};  // from 1
    for (size_t c = 0; c < pattern.classes; ++c) classOf[size_t{'A'} + pattern.first[c]] = c + 1;
    uint64_t* words = loop.bits.data() + m * loop.words * loop.parents;
    for (size_t line = 0; line < lines; ++line) {
      const size_t c = classOf[static_cast<unsigned char>(loop.data.genotype[m * lines + line])];
      if (c == 0) continue;
      words[line / kWordBits * loop.parents + c - 1] |= uint64_t{1} << line % kWordBits;
    }
  }
}

void Flush(Loop& loop, size_t mixes) {
  Queue& queue = loop.queues[mixes];
  if (queue.count == 0) return;
  const MultiParentLaneJob job = {loop.data.population, loop.data.mappingFunction, mixes,
                                  queue.pairs.data(),   queue.mixes.data(),        queue.count,
                                  loop.results.rec,     loop.results.lod,          loop.results.distance};
  switch (loop.level) {
#if defined(__x86_64__)
    case Level::Avx512:
      EstimateMultiParentAvx512(job);
      break;
    case Level::Avx2:
      EstimateMultiParentAvx2(job);
      break;
#endif
    default:
      EstimateMultiParentPortable(job);
  }
  queue.count = 0;
}

void FlushAll(Loop& loop) {
  for (size_t mixes = 0; mixes < loop.queues.size(); ++mixes) Flush(loop, mixes);
  const MultiParentPairResults& out = loop.results;
  for (const Copy& copy : loop.copies) {
    out.rec[copy.to] = out.rec[copy.from];
    out.lod[copy.to] = out.lod[copy.from];
    out.distance[copy.to] = out.distance[copy.from];
  }
  loop.copies.clear();
}

size_t HashOf(uint64_t counts, uint64_t model) {
  const uint64_t mixed = (counts ^ model * 0x9e3779b97f4a7c15ULL) * 0xd6e8feb86659fd93ULL;
  return mixed ^ mixed >> 32;
}

// The slot of a table, or the free one that it would take.
size_t SlotOf(const KnownTables& known, size_t hash, uint64_t counts, uint64_t model) {
  const size_t mask = known.slots.size() - 1;
  size_t at = hash & mask;
  while (known.slots[at].place != 0 &&
         (known.slots[at].counts != counts || known.slots[at].place >> 48 != model)) {
    at = (at + 1) & mask;
  }
  return at;
}

// Room for more tables: grows, and forgets all at the limit.
void MakeRoom(KnownTables& known, size_t more) {
  if (known.slots.empty()) known.slots.assign(kFirstSlots, Known{});
  while ((known.used + more) * 3 > known.slots.size() * 2) {
    known.used = 0;
    if (known.slots.size() >= kMostSlots) {
      std::fill(known.slots.begin(), known.slots.end(), Known{});
      return;
    }
    std::vector<Known> old(known.slots.size() * 2);
    old.swap(known.slots);
    for (const Known& one : old) {
      if (one.place == 0) continue;
      const uint64_t model = one.place >> 48;
      known.slots[SlotOf(known, HashOf(one.counts, model), one.counts, model)] = one;
      ++known.used;
    }
  }
}

using MixCounts = std::array<uint32_t, kMostMixes>;

void Enqueue(Loop& loop, const Plan& plan, const MixCounts& counts, size_t place) {
  Queue& queue = loop.queues[plan.mixes];
  if (queue.pairs.empty()) {
    const size_t room = std::min(kBatch, kMostQueued / std::max<size_t>(plan.mixes, 1));
    queue.pairs.resize(room);
    queue.mixes.resize(room * plan.mixes);
  }
  MultiParentPair& pair = queue.pairs[queue.count];
  Mix* mix = queue.mixes.data() + queue.count * plan.mixes;
  uint32_t lines = 0;
  for (size_t m = 0; m < plan.mixes; ++m) {
    mix[m] = {plan.cells[m], static_cast<float>(static_cast<int32_t>(counts[m]))};
    lines += counts[m];
  }
  pair.known = {};
  for (size_t m = plan.mixes; m < plan.all; ++m) {
    pair.known[plan.kind[m - plan.mixes]] = static_cast<float>(static_cast<int32_t>(counts[m]));
    lines += counts[m];
  }
  pair.lines = static_cast<float>(static_cast<int32_t>(lines));
  pair.uniform = plan.uniform;
  pair.single = plan.single;
  pair.place = place;
  if (++queue.count == queue.pairs.size()) Flush(loop, plan.mixes);
}

// Staged pairs: the first with its table waits for the lanes, others for its answer.
void TakeStaged(Loop& loop) {
  for (size_t k = 0; k < loop.staged; ++k) {
    const Staged& pair = loop.stage[k];
    const Plan& plan = *pair.plan;
    Known& slot = loop.known.slots[SlotOf(loop.known, pair.slot, pair.counts, plan.model)];
    if (slot.place != 0) {
      loop.copies.push_back({pair.place, slot.place & kPlaceBits});
      continue;
    }
    slot = {pair.counts, uint64_t{plan.model} << 48 | pair.place};
    ++loop.known.used;
    MixCounts counts;
    for (size_t m = 0; m < plan.all; ++m) counts[m] = pair.counts >> 16 * m & 0xffff;
    Enqueue(loop, plan, counts, pair.place);
  }
  loop.staged = 0;
  if (loop.copies.size() + kStage > kMostCopies) FlushAll(loop);
  MakeRoom(loop.known, kStage);
}

void Stage(Loop& loop, const Plan& plan, const MixCounts& counts, size_t place) {
  uint64_t key = 0;
  for (size_t m = 0; m < plan.all; ++m) key |= uint64_t{counts[m]} << 16 * m;
  if (key == 0) return;  // no line in common
  const size_t hash = HashOf(key, plan.model);
  __builtin_prefetch(&loop.known.slots[hash & (loop.known.slots.size() - 1)]);
  loop.stage[loop.staged++] = {&plan, place, hash, key};
  if (loop.staged == kStage) TakeStaged(loop);
}

// A pair without information, or without lines, is answered at once; others wait for the lanes.
void TakePair(Loop& loop, size_t i, size_t j, const Plan& plan, size_t place) {
  loop.results.rec[place] = 0.5f;
  loop.results.lod[place] = 0;
  loop.results.distance[place] = kUnlinkedDistance;
  if (!plan.informative) return;
  const Pattern &first = loop.patterns[loop.patternOf[i]], &second = loop.patterns[loop.patternOf[j]];
  const size_t step = loop.words * loop.parents;
  std::array<uint32_t, kMostParents * kMostParents> counts;
  CountClasses(loop.level,
               {loop.bits.data() + i * step, loop.bits.data() + j * step, first.classes, second.classes,
                loop.words, loop.parents},
               counts.data());
  MixCounts mixed;
  uint32_t some = 0;
  for (size_t m = 0; m < plan.all; ++m) {
    uint32_t count = 0;
    for (size_t c = plan.begin[m]; c < plan.begin[m + 1]; ++c) count += counts[plan.classes[c]];
    mixed[m] = count;
    some |= count;
  }
  if (plan.model != 0 && plan.all <= loop.remember) return Stage(loop, plan, mixed, place);
  if (some != 0) Enqueue(loop, plan, mixed, place);
}

// The rows of one pattern after the other, so that a plan is made once for a pair of patterns.
void TakeRows(Loop& loop) {
  std::vector<std::vector<size_t>> rows(loop.patterns.size());
  for (size_t i = 0; i < loop.patternOf.size(); ++i) rows[loop.patternOf[i]].push_back(i);
  std::vector<Plan> plans(loop.patterns.size());
  std::vector<size_t> madeFor(loop.patterns.size(), loop.patterns.size());
  for (size_t a = 0; a < loop.patterns.size(); ++a) {
    for (const size_t i : rows[a]) {
      for (size_t j = 0; j < i; ++j) {
        const size_t b = loop.patternOf[j];
        if (madeFor[b] != a) {
          MakePlan(loop.data.population, loop.patterns[a], loop.patterns[b], loop.parents, loop.maker,
                   plans[b]);
          madeFor[b] = a;
        }
        TakePair(loop, i, j, plans[b], i * (i - 1) / 2 + j);
      }
    }
    TakeStaged(loop);  // the plans are made over for the next pattern
  }
}

}  // namespace

void ComputeMultiParentPairs(const Genotypes& data, const MultiParentPairResults& results, Level level) {
  const auto markers = static_cast<size_t>(std::max(data.numMarkers, 0));
  if (data.population < 1 || data.population > 4) {
    for (size_t p = 0; markers > 1 && p < markers * (markers - 1) / 2; ++p) {
      results.distance[p] = DistanceFromRec(data.mappingFunction, results.rec[p]);
    }
    return;
  }
  const auto loop = std::make_unique<Loop>(Loop{data,
                                                results,
                                                level,
                                                data.population <= 2 ? size_t{4} : kMostParents,
                                                0,
                                                {},
                                                {},
                                                {},
                                                0,
                                                {},
                                                {},
                                                {},
                                                {},
                                                0,
                                                {}});
  if (data.populationSize <= kMostKeyed)
    loop->remember = std::array<size_t, 4>{4, 4, 3, 2}[static_cast<size_t>(data.population) - 1];
  MakeRoom(loop->known, kStage);
  FindPatterns(*loop);
  FillPlanes(*loop);
  TakeRows(*loop);
  FlushAll(*loop);
}

void ComputeMultiParentPairs(const Genotypes& data, const MultiParentPairResults& results) {
  ComputeMultiParentPairs(data, results, BestLevel());
}

}  // namespace recombination
