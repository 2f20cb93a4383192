#include "recombination/multi_parent_tables.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "recombination/map_functions.h"
#include "recombination/multi_parent_counts.h"
#include "recombination/multi_parent_plans.h"
#include "recombination/multi_parent_waiting.h"

namespace recombination {
namespace {

constexpr size_t kWordBits = 64;

// How the pairs of a pair of patterns are counted and estimated.
enum class Way : uint8_t { Unknown, Nothing, Planned, Mixed };

struct Loop {
  Waiting waiting;
  size_t parents;
  bool keyed;  // the counts of a plan fit its key
  size_t words = 0;
  std::vector<Pattern> patterns{};
  std::vector<size_t> patternOf{};  // of each marker
  std::vector<uint64_t> bits{};     // word w of class c of marker m at (m * words + w) * parents + c
  // The markers by the number of their classes, in their order, so that loops over classes run alike for long.
  // The planes of those of two again, kAbreast markers abreast.
  std::array<std::vector<size_t>, kMostParents + 1> markers{};
  std::vector<uint64_t> twoBits{};
  KnownNumbers numbers{};
  // Of the pattern whose rows are taken, with each other pattern:
  PatternMixes mixes{};
  std::vector<Way> way{};
  std::vector<Plan> plans{};
  std::vector<float> halves{}, unlinked{};  // a row of pairs without information
  std::array<uint32_t, kMixPlaces + kMostParents>
      lines{};  // by place of a mix, 0 between pairs below kMixPlaces
};

void FindPatterns(const Genotypes& data, Loop& loop) {
  std::map<int32_t, size_t> met;
  for (int32_t m = 0; m < data.numMarkers; ++m) {
    const int32_t digits = data.category[m];
    const auto [at, added] = met.try_emplace(digits, loop.patterns.size());
    if (added) loop.patterns.push_back(PatternOf(digits, loop.parents));
    loop.patternOf.push_back(at->second);
    loop.markers[loop.patterns[at->second].classes].push_back(static_cast<size_t>(m));
  }
}

void FillPlanes(const Genotypes& data, Loop& loop) {
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  loop.words = (lines + kWordBits - 1) / kWordBits;
  loop.bits.assign(loop.patternOf.size() * loop.words * loop.parents, 0);
  for (size_t m = 0; m < loop.patternOf.size(); ++m) {
    const Pattern& pattern = loop.patterns[loop.patternOf[m]];
    std::array<size_t, 256> classOf{};  // from 1
    for (size_t c = 0; c < pattern.classes; ++c) classOf[size_t{'A'} + pattern.first[c]] = c + 1;
    uint64_t* words = loop.bits.data() + m * loop.words * loop.parents;
    for (size_t line = 0; line < lines; ++line) {
      const size_t c = classOf[static_cast<unsigned char>(data.genotype[m * lines + line])];
      if (c == 0) continue;
      words[line / kWordBits * loop.parents + c - 1] |= uint64_t{1} << line % kWordBits;
    }
  }
  const std::vector<size_t>& two = loop.markers[2];
  loop.twoBits.assign((two.size() + kAbreast - 1) / kAbreast * loop.words * 2 * kAbreast, 0);
  for (size_t k = 0; k < two.size(); ++k) {
    for (size_t w = 0; w < loop.words; ++w) {
      for (size_t c = 0; c < 2; ++c) {
        loop.twoBits[((k / kAbreast * loop.words + w) * 2 + c) * kAbreast + k % kAbreast] =
            loop.bits[(two[k] * loop.words + w) * loop.parents + c];
      }
    }
  }
}

// The way of a pattern with the one whose rows are taken, and the mixes that they make.
void MakeWay(Loop& loop, const Pattern& first, size_t b, MixBits& bits) {
  const Pattern& second = loop.patterns[b];
  const MixTable& table = loop.waiting.table;
  for (size_t y = 0; y < second.classes; ++y)
    MakeMixes(table, first, second.parents[y], loop.numbers, loop.mixes);
  NumbersOf(second, loop.mixes, bits);
  loop.way[b] = Way::Mixed;
  if (!Informative(table, bits, table.uniform[first.classes * second.classes])) {
    loop.way[b] = Way::Nothing;
  } else if (loop.keyed && Few(bits) && loop.waiting.models.model.size() < kMostModels) {
    loop.plans[b] = PlanOf(table, first, second, loop.mixes, bits, loop.waiting.models);
    loop.way[b] = Way::Planned;
  }
}

using ClassCounts = std::array<uint32_t, kMostParents * kMostParents>;

// The mixes that are split, in order, with their lines, which are cleared.
size_t TakeOpen(const MixTable& table, const MixBits& bits, uint32_t* lines, Mix* mix) {
  size_t mixes = 0;
  for (size_t w = 0; w < kMixWords; ++w) {
    for (uint64_t left = bits[w] & table.open[w]; left != 0; left &= left - 1) {
      const size_t number = w * 64 + static_cast<size_t>(std::countr_zero(left));
      mix[mixes++] = {static_cast<uint32_t>(number), static_cast<float>(static_cast<int32_t>(lines[number]))};
      lines[number] = 0;
    }
  }
  return mixes;
}

// A pair with many mixes, or with more lines than a plan's counts hold.
void TakeMixed(Loop& loop, const Pattern& first, const Pattern& second, const MixBits& bits,
               const ClassCounts& counts, size_t place) {
  const MixTable& table = loop.waiting.table;
  uint32_t lines = 0;
  for (size_t y = 0; y < second.classes; ++y) {
    const auto& places = loop.mixes.place[second.parents[y]];
    for (size_t x = 0; x < first.classes; ++x) {
      const uint32_t count = counts[x * loop.parents + y];
      lines += count;
      loop.lines[places[x]] += count;
    }
  }
  std::array<Mix, kMostMixes> mix;
  const size_t mixes = TakeOpen(table, bits, loop.lines.data(), mix.data());
  const auto [pair, to] = NextPair(loop.waiting, mixes);
  for (size_t m = 0; m < mixes; ++m) to[m] = mix[m];
  pair.known = {};
  for (size_t number = table.single; number + 1 < table.cells.size(); ++number) {
    pair.known[table.kindOf[number - table.single]] =
        static_cast<float>(static_cast<int32_t>(loop.lines[number]));
    loop.lines[number] = 0;
  }
  pair.lines = static_cast<float>(static_cast<int32_t>(lines));
  pair.uniform = table.uniform[first.classes * second.classes];
  pair.single = SingleOf(table, bits);
  pair.several = SeveralOf(table, bits);
  pair.place = place;
  if (lines != 0) Added(loop.waiting, mixes);
}

void TakePair(Loop& loop, size_t i, size_t j, size_t place) {
  const size_t b = loop.patternOf[j];
  if (loop.way[b] == Way::Nothing) return;
  const Pattern &first = loop.patterns[loop.patternOf[i]], &second = loop.patterns[b];
  MixBits bits;
  if (loop.way[b] == Way::Unknown) {
    MakeWay(loop, first, b, bits);
    if (loop.way[b] == Way::Nothing) return;
  } else if (loop.way[b] == Way::Mixed) {
    NumbersOf(second, loop.mixes, bits);
  }
  const size_t step = loop.words * loop.parents;
  ClassCounts counts;
  CountClasses(loop.waiting.level,
               {loop.bits.data() + i * step, loop.bits.data() + j * step, first.classes, second.classes,
                loop.words, loop.parents},
               counts.data());
  if (loop.way[b] == Way::Mixed) {
    return TakeMixed(loop, first, second, bits, counts, place);
  }
  const Plan& plan = loop.plans[b];
  uint64_t key = 0;
  for (size_t x = 0; x < first.classes; ++x) {
    for (size_t y = 0; y < second.classes; ++y) {
      key += uint64_t{counts[x * loop.parents + y]} << plan.shift[x * kMostParents + y];
    }
  }
  TakePlanned(loop.waiting, plan.model, key, place);
}

// The pairs of a marker of two classes with all such before it.
void TakeTwos(Loop& loop, size_t i, size_t row) {
  const Pattern& first = loop.patterns[loop.patternOf[i]];
  const std::vector<size_t>& two = loop.markers[2];
  TwoClassCounts counts;
  for (size_t k = 0; k < two.size() && two[k] < i; ++k) {
    if (k % kAbreast == 0) {
      CountTwoClasses(loop.waiting.level,
                      {loop.bits.data() + i * loop.words * loop.parents,
                       loop.twoBits.data() + k * loop.words * 2, loop.words, loop.parents},
                      counts);
    }
    const size_t j = two[k], b = loop.patternOf[j];
    if (loop.way[b] == Way::Unknown) {
      MixBits bits;
      MakeWay(loop, first, b, bits);
    }
    if (loop.way[b] == Way::Mixed) TakePair(loop, i, j, row + j);
    if (loop.way[b] != Way::Planned) continue;
    const Plan& plan = loop.plans[b];
    const uint64_t key = (uint64_t{counts[0][k % kAbreast]} << plan.shift[0]) +
                         (uint64_t{counts[1][k % kAbreast]} << plan.shift[1]) +
                         (uint64_t{counts[2][k % kAbreast]} << plan.shift[kMostParents]) +
                         (uint64_t{counts[3][k % kAbreast]} << plan.shift[kMostParents + 1]);
    TakePlanned(loop.waiting, plan.model, key, row + j);
  }
}

// The pairs of a marker with those before it. Pairs without information, or without lines, keep what all have
// at first.
void TakeRow(Loop& loop, size_t i) {
  const size_t row = i * (i - 1) / 2;
  const MultiParentPairResults& out = loop.waiting.results;
  std::memcpy(out.rec + row, loop.halves.data(), i * sizeof(float));
  std::memset(out.lod + row, 0, i * sizeof(float));
  std::memcpy(out.distance + row, loop.unlinked.data(), i * sizeof(float));
  const size_t classes = loop.patterns[loop.patternOf[i]].classes;
  if (classes < 2) return;
  const bool abreast = classes == 2 && loop.keyed;
  if (abreast) TakeTwos(loop, i, row);
  for (size_t c = abreast ? 3 : 2; c < loop.markers.size(); ++c) {
    for (const size_t j : loop.markers[c]) {
      if (j >= i) break;
      TakePair(loop, i, j, row + j);
    }
  }
}

// The rows of one pattern after the other, so that what depends on the patterns is made once for each pair.
void TakeRows(Loop& loop) {
  std::vector<std::vector<size_t>> rows(loop.patterns.size());
  for (size_t i = 1; i < loop.patternOf.size(); ++i) rows[loop.patternOf[i]].push_back(i);
  loop.plans.resize(loop.patterns.size());
  loop.numbers.assign(size_t{1} << 2 * kMostParents, kUnknownNumber);
  loop.halves.assign(loop.patternOf.size(), 0.5f);
  loop.unlinked.assign(loop.patternOf.size(), kUnlinkedDistance);
  for (const std::vector<size_t>& of : rows) {
    loop.mixes.made.fill(0);
    loop.way.assign(loop.patterns.size(), Way::Unknown);
    for (const size_t i : of) TakeRow(loop, i);
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
  const size_t parents = data.population <= k4PRIL ? kMostParents / 2 : kMostParents;
  const auto loop = std::make_unique<Loop>(
      Loop{WaitingFor(data, results, level), parents, data.populationSize <= kMostKeyed});
  FindPatterns(data, *loop);
  FillPlanes(data, *loop);
  TakeRows(*loop);
  GiveAll(loop->waiting);
}

void ComputeMultiParentPairs(const Genotypes& data, const MultiParentPairResults& results) {
  ComputeMultiParentPairs(data, results, BestLevel());
}

}  // namespace recombination
