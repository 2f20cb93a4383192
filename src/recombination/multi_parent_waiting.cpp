#include "recombination/multi_parent_waiting.h"

#include <algorithm>
#include <span>

#include "recombination/multi_parent_lanes.h"

namespace recombination {
namespace {

constexpr size_t kBatch = 4096;                  // pairs of one number of mixes estimated together
constexpr size_t kMostQueued = size_t{1} << 14;  // mixes of these pairs
constexpr size_t kMostCopies = size_t{1} << 15;  // pairs that wait for the answer of an equal one
constexpr size_t kFirstSlots = size_t{1} << 13, kMostSlots = size_t{1} << 21;
constexpr uint64_t kPlaces = (uint64_t{1} << kPlaceBits) - 1;
constexpr size_t kMostPlannedPairs = size_t{1} << 14;

void Estimate(const Waiting& waiting, MultiParentLaneJob job) {
  job.population = waiting.data.population;
  job.mappingFunction = waiting.data.mappingFunction;
  job.cells = waiting.table.cells.data();
  job.several = job.cells + waiting.table.several;
  job.models = waiting.models.model.data();
  job.rec = waiting.results.rec;
  job.lod = waiting.results.lod;
  job.distance = waiting.results.distance;
  switch (waiting.level) {
#if defined(__x86_64__)
    case Level::Avx512:
      return EstimateMultiParentAvx512(job);
    case Level::Avx2:
      return EstimateMultiParentAvx2(job);
#endif
    default:
      return EstimateMultiParentPortable(job);
  }
}

void Flush(Waiting& waiting, size_t mixes) {
  PairQueue& queue = waiting.queues[mixes];
  if (queue.count == 0) return;
  MultiParentLaneJob job{};
  job.mixes = mixes;
  job.pairs = queue.pairs.data();
  job.mix = queue.mixes.data();
  job.count = queue.count;
  Estimate(waiting, job);
  queue.count = 0;
}

// The pairs with a model, those of each model together.
void FlushPlanned(Waiting& waiting) {
  if (waiting.plannedCount == 0) return;
  const std::vector<MixModel>& models = waiting.models.model;
  std::vector<size_t> begin(models.size());
  const std::span planned(waiting.planned.data(), waiting.plannedCount);
  for (const PlannedPair& pair : planned) ++begin[pair.place >> kPlaceBits];
  std::array<size_t, kMostPlanned + 2> ends{};
  size_t end = 0;
  for (size_t mixes = 0; mixes <= kMostPlanned; ++mixes) {
    for (size_t m = 1; m < models.size(); ++m) {
      if (models[m].mixes != mixes) continue;
      const size_t count = begin[m];
      begin[m] = end;
      end += count;
    }
    ends[mixes + 1] = end;
  }
  waiting.sorted.resize(kMostPlannedPairs);
  for (const PlannedPair& pair : planned) waiting.sorted[begin[pair.place >> kPlaceBits]++] = pair;
  waiting.plannedCount = 0;
  for (size_t mixes = 0; mixes <= kMostPlanned; ++mixes) {
    if (ends[mixes] == ends[mixes + 1]) continue;
    MultiParentLaneJob job{};
    job.mixes = mixes;
    job.planned = waiting.sorted.data() + ends[mixes];
    job.count = ends[mixes + 1] - ends[mixes];
    Estimate(waiting, job);
  }
}

size_t HashOf(const PlannedPair& pair) {
  const uint64_t model = pair.place >> kPlaceBits;
  const uint64_t mixed = (pair.counts ^ model * 0x9e3779b97f4a7c15ULL) * 0xd6e8feb86659fd93ULL;
  return mixed ^ mixed >> 32;
}

// The slot of a table, or the free one that it would take.
size_t SlotOf(const KnownTables& known, size_t hash, const PlannedPair& pair) {
  const size_t mask = known.slots.size() - 1;
  size_t at = hash & mask;
  while (known.slots[at].place != 0 &&
         (known.slots[at].counts != pair.counts || (known.slots[at].place ^ pair.place) >> kPlaceBits != 0)) {
    at = (at + 1) & mask;
  }
  return at;
}

// Room for more tables: grows, and forgets all at the limit.
void MakeRoom(KnownTables& known, size_t more) {
  if (known.slots.empty()) known.slots.assign(kFirstSlots, PlannedPair{});
  while ((known.used + more) * 3 > known.slots.size() * 2) {
    known.used = 0;
    if (known.slots.size() >= kMostSlots) {
      std::fill(known.slots.begin(), known.slots.end(), PlannedPair{});
      return;
    }
    std::vector<PlannedPair> old(known.slots.size() * 2);
    old.swap(known.slots);
    for (const PlannedPair& one : old) {
      if (one.place == 0) continue;
      known.slots[SlotOf(known, HashOf(one), one)] = one;
      ++known.used;
    }
  }
}

void Enqueue(Waiting& waiting, uint64_t counts, uint64_t place) {
  if (waiting.planned.empty()) waiting.planned.resize(kMostPlannedPairs);
  PlannedPair& pair = waiting.planned[waiting.plannedCount++];
  pair.counts = counts;  // a word each, as they come in registers
  pair.place = place;
  if (waiting.plannedCount == kMostPlannedPairs) FlushPlanned(waiting);
}

// The first with its table waits for the lanes, others for its answer.
void TakeStaged(Waiting& waiting) {
  for (size_t k = 0; k < waiting.staged; ++k) {
    const PlannedPair& pair = waiting.stage[k].pair;
    PlannedPair& slot = waiting.known.slots[SlotOf(waiting.known, waiting.stage[k].slot, pair)];
    if (slot.place != 0) {
      waiting.copies.push_back({pair.place & kPlaces, slot.place & kPlaces});
      continue;
    }
    slot = pair;
    ++waiting.known.used;
    Enqueue(waiting, pair.counts, pair.place);
  }
  waiting.staged = 0;
  MakeRoom(waiting.known, kStage);
}

// All that wait, but those staged.
void FlushAll(Waiting& waiting) {
  FlushPlanned(waiting);
  for (size_t mixes = 0; mixes < waiting.queues.size(); ++mixes) Flush(waiting, mixes);
  const MultiParentPairResults& out = waiting.results;
  for (const Copy& copy : waiting.copies) {
    out.rec[copy.to] = out.rec[copy.from];
    out.lod[copy.to] = out.lod[copy.from];
    out.distance[copy.to] = out.distance[copy.from];
  }
  waiting.copies.clear();
}

}  // namespace

Waiting WaitingFor(const Genotypes& data, const MultiParentPairResults& results, Level level) {
  constexpr std::array<size_t, 4> kRemember = {4, 4, 3, 2};
  Waiting waiting = {data, results, level, MixTableOf(data.population),
                     kRemember[static_cast<size_t>(data.population) - 1]};
  MakeRoom(waiting.known, kStage);
  return waiting;
}

QueuedPair NextPair(Waiting& waiting, size_t mixes) {
  PairQueue& queue = waiting.queues[mixes];
  if (queue.pairs.empty()) {
    const size_t room = std::min(kBatch, kMostQueued / std::max<size_t>(mixes, 1));
    queue.pairs.resize(room);
    queue.mixes.resize(room * mixes);
  }
  return {queue.pairs[queue.count], queue.mixes.data() + queue.count * mixes};
}

void Added(Waiting& waiting, size_t mixes) {
  PairQueue& queue = waiting.queues[mixes];
  if (++queue.count == queue.pairs.size()) Flush(waiting, mixes);
}

void TakePlanned(Waiting& waiting, size_t model, uint64_t counts, size_t place) {
  if (counts == 0) return;  // no line in common
  const PlannedPair pair = {counts, uint64_t{model} << kPlaceBits | place};
  if (waiting.models.model[model].all > waiting.remember) return Enqueue(waiting, counts, pair.place);
  const size_t hash = HashOf(pair);
  __builtin_prefetch(&waiting.known.slots[hash & (waiting.known.slots.size() - 1)]);
  waiting.stage[waiting.staged++] = {pair, hash};
  if (waiting.staged < kStage) return;
  TakeStaged(waiting);
  if (waiting.copies.size() + kStage > kMostCopies) FlushAll(waiting);
}

void GiveAll(Waiting& waiting) {
  TakeStaged(waiting);
  FlushAll(waiting);
}

}  // namespace recombination
