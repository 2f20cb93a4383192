#include "recombination/map_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace recombination;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(RecFromDistance, TableOfCases) {
  const struct {
    int32_t function;
    float distance, rec;
  } cases[] = {
      {1, 0, 0},
      {2, 0, 0},
      {3, 0, 0},
      {3, 60, 0.5f},
      {3, 50, 0.5f},
      {3, 20, 0.2f},
      {1, 999, 0.5f},
      {2, 1000, 0.5f},
      {1, -1, 0},
      {2, kNan, 0.5f},
      {4, 30, 0},
      {0, 998, 0},
      {4, 999, 0.5f},
      {4, 998.9f, 0},
      {1, 998.9f, 0.5f},
      {1, 25, 0.2310585786f},
      {2, 50, 0.3160602794f},
  };
  for (const auto& one : cases) {
    EXPECT_NEAR(RecFromDistance(one.function, one.distance), one.rec, 6e-8)
        << one.function << " " << one.distance;
  }
}

TEST(DistanceFromRec, TableOfCases) {
  const struct {
    int32_t function;
    float rec, distance;
  } cases[] = {
      {1, 0.5f, 1000},
      {2, 0.5f, 1000},
      {3, 0.5f, 1000},
      {4, 0.5f, 1000},
      {3, 0.49999999f, 1000},
      {1, 1.5f, 1000},
      {1, -0.1f, 1000},
      {1, kNan, 1000},
      {4, 0.2f, 0},
      {1, 1, 0},
      {2, 0, 0},
      {3, 0.25f, 25},
      {3, 0.75f, 25},
      {1, 0.2f, 21.18244650f},
      {2, 0.2f, 25.54128119f},
  };
  for (const auto& one : cases) {
    EXPECT_NEAR(DistanceFromRec(one.function, one.rec), one.distance, 3e-6) << one.function << " " << one.rec;
  }
  EXPECT_FALSE(std::signbit(DistanceFromRec(kHaldane, 0)));
  // The nearest frequencies to one half that are linked still have a distance.
  EXPECT_LT(DistanceFromRec(kKosambi, std::nextafter(0.5f, 0.0f)), 999.0f);
}

TEST(MapFunctions, GoThereAndBack) {
  for (const int32_t function : {1, 2, 3}) {
    for (float rec = 0.001f; rec < 0.49f; rec += 0.0037f) {
      EXPECT_NEAR(RecFromDistance(function, DistanceFromRec(function, rec)), rec, 2e-7) << function;
      EXPECT_NEAR(DistanceFromRec(function, 1 - rec), DistanceFromRec(function, rec), 2e-3) << function;
    }
  }
}

TEST(QuadraticRecRoot, TableOfCases) {
  const struct {
    const char* rule;
    float a, b, c, root;
  } cases[] = {
      {"nothing left", 0, 0, 5, 0.5f},
      {"linear, below the range", 0, 2, 1, -0.5f},
      {"linear, above the range", 0, 1, -3, 3},
      {"complex", 1, 0, 1, 0.5f},
      {"smaller of two", 1, -0.3f, 0.02f, 0.1f},
      {"root 0", 1, -1, 0, 0},
      {"both above", 1, -3, 2, 0.5f},
      {"both below", 1, 3, 2, 0.5f},
      {"one negative, one in range", 1, 0, -0.04f, 0.2f},
      {"double root at 0.5", 4, -4, 1, 0.5f},
      {"not a number", kNan, 1, 1, 0.5f},
  };
  for (const auto& one : cases)
    EXPECT_NEAR(QuadraticRecRoot(one.a, one.b, one.c), one.root, 1e-7) << one.rule;
}

TEST(LogLikelihood, GuardsOnTheProbabilityAlone) {
  const float counts[5] = {7, 2, 3, 4, 0}, probabilities[5] = {0, 0.1f, 0.01f, -1, 0.5f};
  EXPECT_EQ(LogLikelihood(0, counts, probabilities), 0);
  EXPECT_EQ(LogLikelihood(-2, counts, probabilities), 0);
  EXPECT_EQ(LogLikelihood(1, counts, probabilities), 0);
  EXPECT_NEAR(LogLikelihood(5, counts, probabilities), -8, 1e-6);
}

}  // namespace
