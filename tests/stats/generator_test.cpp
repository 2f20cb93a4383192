#include "stats/generator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "stats/machine.h"

namespace {

const stats::GeneratorState kAtStart = stats::SaveGenerator();  // of the process, before any test draws

// The two streams with 64-bit products, as independent of the 32-bit steps.
TEST(Generator, DrawsTheCombinedSequence) {
  stats::RestoreGenerator({2147483562, 2147483398});
  std::int64_t first = 2147483562, second = 2147483398;
  double sum = 0;
  for (int draw = 0; draw < 20000; ++draw) {
    first = first * 40014 % 2147483563;
    second = second * 40692 % 2147483399;
    const std::int64_t z = first - second < 1 ? first - second + 2147483562 : first - second;
    const float expected = static_cast<float>(static_cast<double>(z) * 4.656613e-10);
    const float drawn = stats::UniformDraw();
    ASSERT_EQ(drawn, expected) << draw;
    ASSERT_GT(drawn, 0);
    sum += static_cast<double>(drawn);
  }
  EXPECT_NEAR(sum / 20000, 0.5, 0.01);
  EXPECT_EQ(kAtStart.first, 2147483562);
  EXPECT_EQ(kAtStart.second, 2147483398);
  // The states whose next step is 1 in both streams: their difference of 0 counts as the largest.
  stats::RestoreGenerator({2082061899, 1481316021});
  EXPECT_EQ(stats::UniformDraw(), 1);
}

TEST(Generator, SavedStateComesBack) {
  const stats::GeneratorState saved = stats::SaveGenerator();
  const float next = stats::UniformDraw();
  stats::SeedGeneratorFromClock();
  const stats::GeneratorState seeded = stats::SaveGenerator();
  EXPECT_GE(seeded.first, 1);
  EXPECT_GE(seeded.second, 1);
  stats::RestoreGenerator(saved);
  EXPECT_EQ(stats::UniformDraw(), next);
}

TEST(Generator, SamplesAscendingAndEvenly) {
  std::vector<int> hits(6);
  for (int round = 0; round < 6000; ++round) {
    std::int32_t index[2];
    ASSERT_TRUE(stats::RNSRI(2, 5, index));
    ASSERT_LT(index[0], index[1]);
    for (const std::int32_t i : index) ++hits.at(static_cast<std::size_t>(i));
  }
  EXPECT_EQ(hits[0], 0);
  for (int i = 1; i <= 5; ++i) EXPECT_NEAR(hits[static_cast<std::size_t>(i)], 2400, 200);
}

TEST(Generator, AFullSampleTakesEveryIndexWithoutADraw) {
  const stats::GeneratorState saved = stats::SaveGenerator();
  std::vector<std::int32_t> index(100);
  ASSERT_TRUE(stats::RNSRI(100, 100, index.data()));
  for (std::int32_t i = 1; i <= 100; ++i) ASSERT_EQ(index[static_cast<std::size_t>(i) - 1], i);
  EXPECT_EQ(stats::SaveGenerator().first, saved.first);
  testing::internal::CaptureStderr();
  EXPECT_FALSE(stats::RNSRI(0, 0, nullptr));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            " *** TERMINAL ERROR 5 from RNSRI.  The sample size requested, NSAMP, is 0 and the population "
            "size, NPOP, "
            "is 0.  NSAMP and NPOP both must be positive, and NSAMP must be less than or equal to NPOP.\n");
}

TEST(Machine, Constants) {
  EXPECT_EQ(stats::AMACH(1), 1.17549435e-38F);
  EXPECT_EQ(stats::AMACH(2), 3.40282347e+38F);
  EXPECT_EQ(stats::AMACH(3), std::ldexp(1.0F, -24));
  EXPECT_EQ(stats::AMACH(4), std::ldexp(1.0F, -23));
  EXPECT_EQ(stats::AMACH(5), std::log10(2.0F));
  EXPECT_TRUE(std::isnan(stats::AMACH(6)));
  EXPECT_EQ(stats::AMACH(7), HUGE_VALF);
  EXPECT_EQ(stats::AMACH(8), -HUGE_VALF);
  EXPECT_EXIT(stats::AMACH(9), testing::ExitedWithCode(1), "between 1 and 8 inclusive. N = 9");
}

}  // namespace
