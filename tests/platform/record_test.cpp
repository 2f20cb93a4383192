#include "platform/record.h"

#include <gtest/gtest.h>

#include <limits>

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
      {Record(Edits("A4,1X,I4,F8.2"), {"a"}), "   a"},
      {Record(Edits("3A2"), {"a"}), " a"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.record, c.expected);
  }
}

TEST(RecordDeathTest, AValueMustSuitItsCode) {
  EXPECT_EXIT(Record(Edits("I8"), {1.0F}), testing::ExitedWithCode(1), "does not suit");
}

}  // namespace
}  // namespace platform
