// The checks of clonal, double-cross, four- and eight-parent files as a host meets them.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "frame/exports.h"
#include "platform/unit.h"
#include "recombination/clonal_tables.h"
#include "recombination/multi_parent_tables.h"
#include "tests/support/scratch.h"
#include "tests/support/untouched.h"

namespace {

using support::kUntouched;
using support::kUntouchedReal;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

// Arrays as the host lays them out, in the order of the arguments.
struct ClonalOutcome {
  int32_t status = 0;
  std::string console;
  std::array<int32_t, 4> scalars{kUntouched, kUntouched, kUntouched, kUntouched};
  std::vector<int32_t> names, phase;
  std::array<std::vector<int32_t>, 14> integers;  // counts, then anchors and category
  std::array<std::vector<float>, 11> reals;       // chi, p, pair arrays

  // One element more than the markers, or the pairs, need.
  explicit ClonalOutcome(int32_t n = 3)
      : names(35 * static_cast<size_t>(n), kUntouched),
        phase(static_cast<size_t>(n * (n - 1) / 2) + 1, kUntouched) {
    integers.fill(std::vector<int32_t>(static_cast<size_t>(n) + 1, kUntouched));
    reals.fill(std::vector<float>(std::max(phase.size(), static_cast<size_t>(n) + 1), kUntouchedReal));
  }
};

ClonalOutcome CheckCdm(const std::string& name, int32_t n = 3) {
  ClonalOutcome o(n);
  auto& c = o.integers;
  auto& r = o.reals;
  const auto length = static_cast<int32_t>(name.size());
  CaptureStdout();
  CHECKERRORCDM(&length, name.data(), &n, &o.status, &o.scalars[0], &o.scalars[1], &o.scalars[2],
                &o.scalars[3], o.names.data(), c[12].data(), c[0].data(), c[1].data(), c[2].data(),
                c[3].data(), c[4].data(), c[5].data(), c[6].data(), c[7].data(), c[8].data(), c[9].data(),
                c[10].data(), c[11].data(), r[0].data(), r[1].data(), c[13].data(), r[2].data(), r[3].data(),
                r[4].data(), r[5].data(), r[6].data(), r[7].data(), r[8].data(), r[9].data(), r[10].data(),
                o.phase.data());
  o.console = GetCapturedStdout();
  return o;
}

ClonalOutcome CheckPlm(const std::string& name) {
  ClonalOutcome o;
  auto& c = o.integers;
  auto& r = o.reals;
  const auto length = static_cast<int32_t>(name.size());
  const int32_t n = 3;
  CaptureStdout();
  CHECKERRORPLM(&length, name.data(), &n, &o.status, &o.scalars[0], &o.scalars[1], &o.scalars[2],
                &o.scalars[3], o.names.data(), c[12].data(), c[0].data(), c[1].data(), c[2].data(),
                c[3].data(), c[4].data(), c[5].data(), c[6].data(), c[7].data(), c[8].data(), r[0].data(),
                r[1].data(), c[13].data(), r[2].data(), r[3].data(), r[4].data());
  o.console = GetCapturedStdout();
  return o;
}

std::vector<int32_t> Elements(const std::array<std::vector<int32_t>, 14>& arrays, size_t element,
                              size_t count) {
  std::vector<int32_t> row;
  for (size_t k = 0; k < count; ++k) row.push_back(arrays[k][element]);
  return row;
}

const std::string kCdm =
    "1\n2\n1\n3\n5\n"
    "ABCD M1 AC AD BC BD AC\nABCD M2 AC AD BC BD BC\nA=B M3 XC XD XC XX XX\n"
    "M1 0\nM2 2\nM3 1\n";
const std::string kPlm =
    "1\n1\n2\n3\n5\n"
    "ABCD M1 A B C D A\nABCD M2 A B C D B\nAACC M3 A A C C X\n"
    "M1 0\nM2 2\nM3 1\n";

TEST(CheckErrorCdm, HandsOutMarkersPairsAndPhases) {
  const ScratchFolder folder;
  WriteFile("in.cdm", kCdm);
  const ClonalOutcome o = CheckCdm("in.cdm");
  EXPECT_EQ(o.status, 0) << ReadFile("CDM.log");
  EXPECT_EQ(o.console, " in.cdm read successfully!\n  DLL CheckErrrorCDM run successfully!\n");
  EXPECT_EQ(ReadFile("CDM.log"), "in.cdm read successfully!\n  DLL CheckErrrorCDM run successfully!\n");
  EXPECT_EQ(o.scalars, (std::array<int32_t, 4>{1, 2, 1, 5}));
  EXPECT_EQ(o.integers[12], (std::vector<int32_t>{0, 2, 1, kUntouched}));
  EXPECT_EQ(o.integers[13], (std::vector<int32_t>{1, 1, 2, kUntouched}));
  EXPECT_EQ(Elements(o.integers, 0, 12), (std::vector<int32_t>{2, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Elements(o.integers, 2, 12), (std::vector<int32_t>{0, 0, 0, 0, 2, 1, 0, 0, 0, 0, 0, 2}));
  EXPECT_NEAR(o.reals[0][0], 0.6F, 1e-6F);
  EXPECT_NEAR(o.reals[2][0], 0.2F, 1e-6F) << "the AB parent of M2 and M1";
  EXPECT_EQ(o.reals[3][0], 0.0F) << "the CD parent";
  EXPECT_NEAR(o.reals[4][0], 0.1F, 1e-6F);
  EXPECT_EQ(o.reals[8][1], 1000.0F) << "M3 tells nothing of the AB parent";
  EXPECT_EQ(o.phase, (std::vector<int32_t>{1, 1, 1, kUntouched}));
  for (const auto& real : o.reals) EXPECT_EQ(real[3], kUntouchedReal);
  EXPECT_FALSE(platform::IsConnected(100));
}

TEST(CheckErrorPlm, HandsOutMarkersAndPairs) {
  const ScratchFolder folder;
  WriteFile("in.plm", kPlm);
  const ClonalOutcome o = CheckPlm("in.plm");
  EXPECT_EQ(o.status, 0) << ReadFile("PLM.log");
  EXPECT_EQ(o.console, " in.plm read successfully!\n  DLL CheckErrrorPLM run successfully!\n");
  EXPECT_EQ(ReadFile("PLM.log"), "in.plm read successfully!\n  DLL CheckErrrorPLM run successfully!\n");
  EXPECT_EQ(o.scalars, (std::array<int32_t, 4>{1, 1, 2, 5}));
  EXPECT_EQ(o.integers[13], (std::vector<int32_t>{1234, 1234, 1133, kUntouched}));
  EXPECT_EQ(Elements(o.integers, 2, 9), (std::vector<int32_t>{2, 0, 2, 0, 0, 0, 0, 0, 1}));
  EXPECT_NEAR(o.reals[2][0], 0.1F, 1e-6F) << "one sister in five lines: one crossover in ten meioses";
  EXPECT_GT(o.reals[3][0], 0.0F);
  EXPECT_EQ(o.reals[2][3], kUntouchedReal);
}

// The arrays are those of the pairs in this order, and no two alike.
template <size_t kArrays>
void ExpectInOrder(const ClonalOutcome& o, size_t first,
                   const std::array<std::vector<float>, kArrays>& expected) {
  for (size_t k = 0; k < kArrays; ++k) {
    EXPECT_TRUE(std::equal(expected[k].begin(), expected[k].end(), o.reals[first + k].begin())) << k;
    for (size_t other = 0; other < k; ++other) EXPECT_NE(expected[k], expected[other]) << k << ' ' << other;
  }
}

TEST(CheckErrorCdm, EveryArgumentHasItsOwnArray) {
  const ScratchFolder folder;
  WriteFile("in.cdm",
            "1\n3\n2\n4\n11\n"
            "ABCD M1 AC AC AC AC AD AD AD BC BC BD XX\nA=B M2 XC XC XC XC XD XC XD XC XC XD XX\n"
            "C=D M3 AX AX AX BX AX AX BX BX BX AX XX\nAB=CD M4 AA AA AA AB AB AB BB AB AB BB AA\n"
            "M1 0\nM2 0\nM3 0\nM4 0\n");
  const ClonalOutcome o = CheckCdm("in.cdm", 4);
  EXPECT_EQ(o.scalars, (std::array<int32_t, 4>{1, 3, 2, 11}));
  EXPECT_EQ(Elements(o.integers, 0, 12), (std::vector<int32_t>{4, 3, 2, 1, 0, 0, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(Elements(o.integers, 1, 12), (std::vector<int32_t>{0, 0, 0, 0, 7, 3, 0, 0, 0, 0, 0, 1}));
  EXPECT_EQ(Elements(o.integers, 2, 12), (std::vector<int32_t>{0, 0, 0, 0, 0, 0, 6, 4, 0, 0, 0, 1}));
  EXPECT_EQ(Elements(o.integers, 3, 12), (std::vector<int32_t>{0, 0, 0, 0, 0, 0, 0, 0, 4, 5, 2, 0}));
  const int32_t category[] = {1, 2, 3, 4};
  std::array<std::vector<float>, 9> real;
  real.fill(std::vector<float>(6));
  std::vector<int32_t> phase(6);
  recombination::ComputeClonalPairs({1, 3, 11, 4, category, "AAAABBBCCDXEEEEFEFEEFXGGGHGGHHHGXIIIJJJKJJKI"},
                                    {{real[0].data(), real[1].data(), real[2].data()},
                                     {real[3].data(), real[4].data(), real[5].data()},
                                     {real[6].data(), real[7].data(), real[8].data()},
                                     phase.data()});
  ExpectInOrder(o, 2, real);
  EXPECT_TRUE(std::equal(phase.begin(), phase.end(), o.phase.begin()));
}

TEST(CheckErrorPlm, EveryArgumentHasItsOwnArray) {
  const ScratchFolder folder;
  const std::string first = "AAAAAAAABBBBBBBCCCCCCDDDDDEEEEFFFGGHX",
                    second = "AAAAAABAABBBBBBCCCCCCDDDCDEEEEFFFGGHH",
                    third = "AAAABBAABBBBBBBCCCCHHDDDDDEEEEFFFGGHH";
  std::string text = "3\n1\n2\n3\n37\n";
  int marker = 0;
  for (const std::string& letters : {first, second, third}) {
    text += "ABCDEFGH M" + std::to_string(++marker);
    for (const char letter : letters) text.append(1, ' ').append(1, letter);
    text += '\n';
  }
  WriteFile("in.plm", text + "M1 0\nM2 0\nM3 0\n");
  const ClonalOutcome o = CheckPlm("in.plm");
  EXPECT_EQ(o.status, 0) << ReadFile("PLM.log");
  EXPECT_EQ(o.scalars, (std::array<int32_t, 4>{3, 1, 2, 37}));
  EXPECT_EQ(Elements(o.integers, 0, 9), (std::vector<int32_t>{8, 7, 6, 5, 4, 3, 2, 1, 1}));
  EXPECT_EQ(o.reals[0][0], 11.0F) << "four of each are expected: whole individuals";
  const int32_t pattern[] = {12345678, 12345678, 12345678};
  std::array<std::vector<float>, 3> real;
  real.fill(std::vector<float>(3));
  const std::string letters = first + second + third;
  recombination::ComputeMultiParentPairs({3, 1, 37, 3, pattern, letters.data()},
                                         {real[0].data(), real[1].data(), real[2].data()});
  ExpectInOrder(o, 2, real);
}

TEST(CheckErrorCdmAndPlm, ARefusedFileTouchesNothing) {
  const ScratchFolder folder;
  WriteFile("bad", "7\n");
  for (const bool clonal : {true, false}) {
    const ClonalOutcome o = clonal ? CheckCdm("bad") : CheckPlm("bad");
    EXPECT_EQ(o.status, 100);
    const std::string code = clonal ? "CDM" : "PLM";
    EXPECT_EQ(o.console, " --Error found. Please check " + code + ".log for details!\n");
    const ClonalOutcome untouched;
    EXPECT_EQ(o.scalars, untouched.scalars);
    EXPECT_EQ(o.names, untouched.names);
    EXPECT_EQ(o.integers, untouched.integers);
    EXPECT_EQ(o.reals, untouched.reals);
    EXPECT_EQ(o.phase, untouched.phase);
  }
}

}  // namespace
