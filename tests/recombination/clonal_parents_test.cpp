#include "recombination/clonal_parents.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <memory>
#include <random>

#include "recombination/map_functions.h"
#include "recombination/pair_index.h"

namespace {

using namespace recombination;

struct OneRun {
  std::array<std::array<int32_t, kClonalRun>, 3> counts{};  // seen, lines, changed
  std::array<std::array<float, kClonalRun>, 4> out{};       // frequency, LOD, distance, folded
};

void Resolve(ParentTables& tables, OneRun& run, size_t count) {
  ResolveParent(tables, {run.counts[0].data(), run.counts[1].data(), run.counts[2].data(), count,
                         run.out[0].data(), run.out[1].data(), run.out[2].data(), run.out[3].data()});
}

// Counts of one parent; now and then no line that both markers show, or none that tells.
void Draw(std::mt19937& draw, int32_t lines, size_t count, OneRun& run) {
  run = OneRun{};
  for (size_t k = 0; k < count; ++k) {
    const auto upTo = [&draw](int32_t most) {
      return static_cast<int32_t>(draw() % (static_cast<uint32_t>(most) + 1));
    };
    const int32_t seen = draw() % 9 == 0 ? 0 : lines - upTo(lines / 8);
    const int32_t told = draw() % 9 == 0 ? 0 : seen - upTo(seen / 3);
    run.counts[0][k] = seen;
    run.counts[1][k] = told;
    run.counts[2][k] = draw() % 5 == 0 ? told : upTo(told);
  }
}

void ExpectSame(const OneRun& a, const OneRun& b, size_t count, int32_t lines) {
  for (size_t field = 0; field < 4; ++field) {
    for (size_t k = 0; k < count; ++k) {
      const float x = a.out[field][k], y = b.out[field][k];
      ASSERT_TRUE(x == y || (std::isnan(x) && std::isnan(y)))
          << "lines " << lines << " field " << field << " pair " << k << ": " << x << ' ' << y;
    }
  }
}

// Remembered or not, at every level: rows of a table in more than one batch, the largest table, and none.
TEST(ClonalParents, AreTheSameRememberedAndNot) {
  std::mt19937 draw(12);
  const auto plain = std::make_unique<OneRun>(), kept = std::make_unique<OneRun>();
  for (const int32_t lines : {1, 2, 40, 200, 1023, 1024, 1025, 1446, 1447}) {
    for (int32_t level = 0; level <= static_cast<int32_t>(BestLevel()); ++level) {
      constexpr int64_t kMany = 1'000'000'000;
      ParentTables remembered = OpenParents(static_cast<Level>(level), kKosambi, lines, kMany),
                   none = OpenParents(Level::Portable, kKosambi, lines, 0);
      EXPECT_EQ(remembered.known.empty(), lines == 1447);
      EXPECT_TRUE(none.known.empty());
      for (const size_t count : {size_t{1}, size_t{5}, size_t{64}, kClonalRun}) {
        Draw(draw, lines, count, *plain);
        *kept = *plain;
        Resolve(none, *plain, count);
        Resolve(remembered, *kept, count);
        ExpectSame(*plain, *kept, count, lines);
        Resolve(remembered, *kept, count);
        ExpectSame(*plain, *kept, count, lines);
      }
    }
  }
}

TEST(ClonalParents, TableOfCases) {
  const struct {
    int32_t seen, lines, changed;
    float rec, lod, distance, folded;
  } cases[] = {
      {10, 10, 2, 0.2f, 0.8371f, 20, 0.2f},
      {10, 10, 9, 0.9f, 1.59848f, 10, 0.1f},
      {4, 4, 2, 0.5f, 0, 1000, 0.5f},
      {0, 0, 0, 0.5f, 0, 1000, 0.5f},
      {7, 0, 0, std::nanf(""), 0, 1000, std::nanf("")},
  };
  for (const int64_t pairs : {int64_t{0}, PairCount(1000)}) {
    ParentTables tables = OpenParents(Level::Portable, kMorgan, 10, pairs);
    const auto run = std::make_unique<OneRun>();
    for (const auto& c : cases) {
      run->counts[0][0] = c.seen;
      run->counts[1][0] = c.lines;
      run->counts[2][0] = c.changed;
      Resolve(tables, *run, 1);
      const float expected[4] = {c.rec, c.lod, c.distance, c.folded};
      for (size_t field = 0; field < 4; ++field) {
        const float x = run->out[field][0];
        EXPECT_TRUE(std::isnan(expected[field]) ? std::isnan(x) : std::fabs(x - expected[field]) < 1e-4f)
            << c.changed << " of " << c.lines << " field " << field << ": " << x;
      }
    }
  }
}

}  // namespace
