#include "platform/record.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace platform {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(Record, FieldsStandRightAlignedOrGiveAsterisks) {
  struct Case {
    std::string record, expected;
  };
  const Case cases[] = {
      {Record(Edits("A"), {"as long  "}), "as long  "},
      {Record(Edits("A4,A2"), {"ab", "cde"}), "  abcd"},
      {Record(Edits("I10,2X,A"), {7, "!x"}), "         7  !x"},
      {Record(Edits("A,2I8"), {"v = ", -12, 2147483647}), "v =      -12********"},
      {Record(Edits("2I3"), {-99, -100}), "-99***"},
      {Record(Edits("F12.4"), {0.5F}), "      0.5000"},
      {Record(Edits("F8.2"), {-0.5F}), "   -0.50"},
      {Record(Edits("F8.2"), {99999.99F}), "99999.99"},
      {Record(Edits("F8.2"), {999999.9F}), "********"},
      {Record(Edits("2F10.4"), {0.1F, 16777216.0F}), "    0.1000**********"},
      {Record(Edits("F8.2,F9.2,F7.2"), {kInfinity, -kInfinity, kInfinity}), "Infinity-Infinity*******"},
      {Record(Edits("F8.2,F8.2,F2.0"), {-kInfinity, kNaN, kNaN}), "********     NaN**"},
      {Record(Edits("E16.4E3"), {0.00123F}), "     0.1230E-002"},
      {Record(Edits("2E12.4E3"), {-1.0F, 0.99996F}), "-0.1000E+001 0.1000E+001"},
      {Record(Edits("E12.4E3,E9.1E2"), {0.0F, 1e-45F}), " 0.0000E+000  0.1E-44"},
      {Record(Edits("E8.4E3,E9.2E1,E6.2E1"), {1.0F, 1e12F, 3.0F}), "***********************"},
      {Record(Edits("E10.4E3,E8.2E2,E9.2E2"), {kNaN, kInfinity, -kInfinity}), "       NaNInfinity-Infinity"},
      {Record(Edits("A4,1X,I4,F8.2"), {"a"}), "   a"},
      {Record(Edits("3A2"), {"a"}), " a"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.record, c.expected);
  }
}

// Ties, carries, signs and sizes: every real prints as the exact decimal form rounds.
TEST(Record, RealsAreTheRoundedDecimalForm) {
  std::mt19937 random(11);
  char expected[80];
  for (int k = 0; k < 200000; ++k) {
    const auto bits = static_cast<uint32_t>(random());
    const float any = std::bit_cast<float>(bits);
    const float value =
        k % 3 == 0 ? any
                   : static_cast<float>(static_cast<int32_t>(bits) % 1000003) / (k % 3 == 1 ? 32.0F : 7.0F);
    if (!std::isfinite(value)) {
      continue;
    }
    const int decimals = k % 7;
    std::snprintf(expected, sizeof expected, "%60.*f", decimals, static_cast<double>(value));
    std::string record;
    AppendReal(record, 60, decimals, value);
    ASSERT_EQ(record, expected);
  }
}

// Fields written at a stretch are the fields written one by one.
TEST(Record, ManyRealsAreAsEachOfThem) {
  std::mt19937 random(12);
  std::vector<float> values{0.0F,     -0.0F,    9999.9999F, -9999.9999F, 10000,  99999.9F, 0.00005F,
                            0.99995F, 9.99995F, kNaN,       kInfinity,   -1e30F, 1e-44F};
  for (int k = 0; k < 100000; ++k) {
    const auto whole = static_cast<int32_t>(static_cast<uint32_t>(random()) % 2000001) - 1000000;
    values.push_back(static_cast<float>(whole) / static_cast<float>(1 << k % 21));
  }
  for (const auto& [width, decimals] : {std::pair(12, 4), {10, 4}, {16, 4}, {9, 4}, {12, 3}}) {
    std::string each = "names", all = "names";
    for (const float value : values) {
      AppendReal(each, width, decimals, value);
    }
    AppendReals(all, width, decimals, values);
    EXPECT_TRUE(all == each) << width << " columns, " << decimals << " decimals";
  }
}

TEST(RecordDeathTest, AValueMustSuitItsCode) {
  EXPECT_EXIT(Record(Edits("I8"), {1.0F}), testing::ExitedWithCode(1), "does not suit");
  EXPECT_EXIT(Record(Edits("I8"), {1, 2}), testing::ExitedWithCode(1), "more values than edit codes");
}

}  // namespace
}  // namespace platform
