#include "recombination/multi_parent_tables.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "recombination/map_functions.h"
#include "recombination/multi_parent_lanes.h"
#include "recombination/pair_counts.h"

namespace recombination {
namespace {

constexpr size_t kWordBits = 64, kMostParents = 8;
constexpr size_t kBatch = 256;                  // pairs of one number of mixes estimated together
constexpr size_t kMostPlans = size_t{1} << 14;  // kept for the whole call; beyond, for one row

// The allele classes of a pattern, in order of their first parent.
struct Pattern {
  int32_t digits = 0;
  size_t classes = 0;
  std::array<size_t, kMostParents> classOf{}, first{};  // of a parent; of a class
};

// How the classes of two patterns mix.
struct Plan {
  MixModel model;
  std::array<uint8_t, kMostParents * kMostParents> mixOf{};  // class x, y of the two at x * classes + y
  size_t row = 0;                                            // marker that it was made for
};

// Pairs that wait for the lanes.
struct Queue {
  std::vector<MultiParentPair> pairs;
  std::vector<float> counts;
};

struct Loop {
  const Genotypes& data;
  const MultiParentPairResults& results;
  Level level;
  size_t parents = 0, words = 0;
  std::vector<Pattern> patterns;
  std::vector<size_t> patternOf;  // of each marker
  std::vector<size_t> begin;      // of each marker's words in bits: a plane a class, of its first parent
  std::vector<uint64_t> bits;
  std::vector<Plan> plans;
  bool keepPlans = false;
  std::array<Queue, kMostMixes + 1> queues;
};

Pattern PatternOf(int32_t digits, size_t parents) {
  Pattern pattern;
  pattern.digits = digits;
  const auto count = static_cast<int32_t>(parents);
  for (size_t k = 0; k < parents; ++k) {
    size_t earlier = 0;
    while (AlleleAt(digits, count, static_cast<int32_t>(earlier)) !=
           AlleleAt(digits, count, static_cast<int32_t>(k))) {
      ++earlier;
    }
    if (earlier == k) pattern.first[pattern.classes++] = k;
    pattern.classOf[k] = earlier == k ? pattern.classes - 1 : pattern.classOf[earlier];
  }
  return pattern;
}

size_t KindOf(size_t parents, size_t i, size_t j) {
  if (i == j) return 0;
  if (i / 2 == j / 2) return 1;
  return parents == 8 && i / 4 == j / 4 ? 2 : 3;
}

void MakePlan(size_t parents, const Pattern& first, const Pattern& second, Plan& plan) {
  std::array<std::array<float, kParentKinds>, kMostParents * kMostParents> all{};
  for (size_t i = 0; i < parents; ++i) {
    for (size_t j = 0; j < parents; ++j) {
      all[first.classOf[i] * second.classes + second.classOf[j]][KindOf(parents, i, j)] += 1;
    }
  }
  const size_t classes = first.classes * second.classes;
  MixModel& model = plan.model;
  model.mixes = 0;
  model.uniform = 1.0f / static_cast<float>(classes);
  for (size_t c = 0; c < classes; ++c) {
    const auto end = model.cells.begin() + static_cast<std::ptrdiff_t>(model.mixes);
    const auto at = std::find(model.cells.begin(), end, all[c]);
    plan.mixOf[c] = static_cast<uint8_t>(at - model.cells.begin());
    if (at == end) model.cells[model.mixes++] = all[c];
  }
}

Plan& PlanOf(Loop& loop, size_t i, size_t j) {
  const size_t a = loop.patternOf[i], b = loop.patternOf[j], count = loop.patterns.size();
  Plan& plan = loop.plans[loop.keepPlans ? a * count + b : b];
  if (plan.row == 0 || (!loop.keepPlans && plan.row != i)) {
    MakePlan(loop.parents, loop.patterns[a], loop.patterns[b], plan);
    plan.row = i;
  }
  return plan;
}

void FindPatterns(Loop& loop) {
  for (int32_t m = 0; m < loop.data.numMarkers; ++m) {
    const int32_t digits = loop.data.category[m];
    size_t at = 0;
    while (at < loop.patterns.size() && loop.patterns[at].digits != digits) ++at;
    if (at == loop.patterns.size()) loop.patterns.push_back(PatternOf(digits, loop.parents));
    loop.patternOf.push_back(at);
  }
  const size_t count = loop.patterns.size();
  loop.keepPlans = count * count <= kMostPlans;
  loop.plans.resize(loop.keepPlans ? count * count : count);
}

void FillPlanes(Loop& loop) {
  const auto lines = static_cast<size_t>(std::max(loop.data.populationSize, 0));
  loop.words = (lines + kWordBits - 1) / kWordBits;
  size_t size = 0;
  for (const size_t pattern : loop.patternOf) {
    loop.begin.push_back(size);
    size += loop.patterns[pattern].classes * loop.words;
  }
  loop.bits.assign(size, 0);
  for (size_t m = 0; m < loop.patternOf.size(); ++m) {
    const Pattern& pattern = loop.patterns[loop.patternOf[m]];
    std::array<size_t, 256> planeOf{};  // from 1
    for (size_t c = 0; c < pattern.classes; ++c) planeOf[size_t{'A'} + pattern.first[c]] = c + 1;
    for (size_t line = 0; line < lines; ++line) {
      const size_t plane = planeOf[static_cast<unsigned char>(loop.data.genotype[m * lines + line])];
      if (plane == 0) continue;
      loop.bits[loop.begin[m] + (plane - 1) * loop.words + line / kWordBits] |= uint64_t{1}
                                                                                << line % kWordBits;
    }
  }
}

// Lines that share each of the classes of two markers.
struct Classes {
  const uint64_t *first, *second;
  size_t firstCount, secondCount, words;
};
template <class F>
inline __attribute__((always_inline)) void CountWith(const Classes& c, uint32_t* counts, F bitsIn) {
  for (size_t x = 0; x < c.firstCount; ++x) {
    for (size_t y = 0; y < c.secondCount; ++y) {
      uint32_t count = 0;
      for (size_t w = 0; w < c.words; ++w)
        count += bitsIn(c.first[x * c.words + w] & c.second[y * c.words + w]);
      *counts++ = count;
    }
  }
}
void CountPortable(const Classes& c, uint32_t* counts) {
  CountWith(c, counts, [](uint64_t word) { return static_cast<uint32_t>(std::popcount(word)); });
}
#if defined(__x86_64__)
__attribute__((target("popcnt"))) void CountPopcnt(const Classes& c, uint32_t* counts) {
  for (size_t x = 0; x < c.firstCount; ++x) {
    for (size_t y = 0; y < c.secondCount; ++y) {
      int64_t count = 0;
      for (size_t w = 0; w < c.words; ++w) {
        count += __builtin_popcountll(c.first[x * c.words + w] & c.second[y * c.words + w]);
      }
      *counts++ = static_cast<uint32_t>(count);
    }
  }
}
#endif
void CountClasses(Level level, const Classes& c, uint32_t* counts) {
#if defined(__x86_64__)
  if (level >= Level::Popcnt) return CountPopcnt(c, counts);
#endif
  static_cast<void>(level);
  CountPortable(c, counts);
}

void Flush(Loop& loop, size_t mixes) {
  Queue& queue = loop.queues[mixes];
  if (queue.pairs.empty()) return;
  for (size_t k = 0; k < queue.pairs.size(); ++k) queue.pairs[k].counts = queue.counts.data() + k * mixes;
  const MultiParentLaneJob job = {loop.data.population, loop.data.mappingFunction, mixes,
                                  queue.pairs.data(),   queue.pairs.size(),        loop.results.rec,
                                  loop.results.lod,     loop.results.distance};
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
  queue.pairs.clear();
  queue.counts.clear();
}

// A pair without information, or without lines, is answered at once; others wait for the lanes.
void TakePair(Loop& loop, size_t i, size_t j, size_t place) {
  const Pattern &first = loop.patterns[loop.patternOf[i]], &second = loop.patterns[loop.patternOf[j]];
  loop.results.rec[place] = 0.5f;
  loop.results.lod[place] = 0;
  loop.results.distance[place] = kUnlinkedDistance;
  if (first.classes < 2 || second.classes < 2) return;
  std::array<uint32_t, kMostParents * kMostParents> counts;
  CountClasses(loop.level,
               {loop.bits.data() + loop.begin[i], loop.bits.data() + loop.begin[j], first.classes,
                second.classes, loop.words},
               counts.data());
  const Plan& plan = PlanOf(loop, i, j);
  std::array<uint32_t, kMostMixes> mixed{};
  uint32_t total = 0;
  for (size_t c = 0; c < first.classes * second.classes; ++c) {
    mixed[plan.mixOf[c]] += counts[c];
    total += counts[c];
  }
  if (total == 0) return;
  const size_t mixes = plan.model.mixes;
  Queue& queue = loop.queues[mixes];
  queue.pairs.push_back({&plan.model, nullptr, place});
  for (size_t m = 0; m < mixes; ++m) queue.counts.push_back(static_cast<float>(mixed[m]));
  if (queue.pairs.size() == kBatch) Flush(loop, mixes);
}

void FlushAll(Loop& loop) {
  for (size_t mixes = 1; mixes <= kMostMixes; ++mixes) Flush(loop, mixes);
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
  Loop loop{data, results, level, data.population <= 2 ? size_t{4} : kMostParents, 0, {}, {}, {}, {},
            {},   false,   {}};
  FindPatterns(loop);
  FillPlanes(loop);
  size_t place = 0;
  for (size_t i = 1; i < markers; ++i) {
    for (size_t j = 0; j < i; ++j) TakePair(loop, i, j, place++);
    if (!loop.keepPlans) FlushAll(loop);  // the plans are made over for the next row
  }
  FlushAll(loop);
}

void ComputeMultiParentPairs(const Genotypes& data, const MultiParentPairResults& results) {
  ComputeMultiParentPairs(data, results, BestLevel());
}

}  // namespace recombination
