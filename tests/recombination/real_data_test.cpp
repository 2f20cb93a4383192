#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "recombination/pair_tables.h"

// Real crosses beside the two-point tables of an independent program (an EM iteration, its own tolerance).
namespace {

using namespace recombination;

struct RealCross {
  int32_t population = 0, markers = 0, lines = 0;
  std::vector<char> genotype;
  std::vector<int32_t> category;
};

std::vector<std::string> Words(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

// Five header values, then one row a marker; single letters throughout, and no H in inbred lines.
RealCross ReadCross(const std::string& path) {
  std::ifstream file(path);
  std::vector<int32_t> header;
  RealCross cross;
  for (std::string line; std::getline(file, line);) {
    if (header.size() == 5 && cross.category.size() == static_cast<size_t>(cross.markers)) break;
    const auto words = Words(line);
    if (words.empty() || words[0][0] == '!') continue;
    if (header.size() < 5) {
      header.push_back(std::stoi(words[0]));
      if (header.size() == 5) cross = {header[0], header[3], header[4], {}, {}};
      continue;
    }
    cross.category.push_back(1);
    for (size_t k = 1; k <= static_cast<size_t>(cross.lines); ++k) {
      const char letter = words.at(k).at(0);
      if (letter == 'D') cross.category.back() = 12;
      if (letter == 'R') cross.category.back() = 10;
      cross.genotype.push_back(letter);
    }
  }
  return cross;
}

// The other program gives the share of unlike homozygotes in inbred lines, R = 2r / (1 + 2r).
float RecOfInbredShare(float share) {
  return share <= 0.5f ? 0.5f * share / (1 - share) : 1 - 0.5f * (1 - share) / share;
}

struct RealCase {
  const char* name;
  int32_t population, markers, lines;
  bool inbred;
  float recTolerance;  // closed forms: the printed digits; F2: the other program stops its iteration early
};

TEST(RealData, PairTablesAgreeWithAnIndependentProgram) {
  constexpr float kLodTolerance = 4e-5f;  // single-precision sums of likelihoods of up to 75
  for (const RealCase& one : {RealCase{"hyper", 1, 170, 250, false, 2e-7f},
                              {"listeria", 7, 130, 120, false, 5e-6f},
                              {"multitrait", 4, 117, 162, true, 5e-7f}}) {
    const std::string stem = std::string(SOURCE_DIR "/examples/") + one.name;
    const RealCross cross = ReadCross(stem + ".map");
    ASSERT_EQ(cross.population, one.population) << stem;
    ASSERT_EQ(cross.category.size(), static_cast<size_t>(one.markers)) << stem;
    ASSERT_EQ(cross.lines, one.lines) << stem;
    const auto pairs = static_cast<size_t>(one.markers * (one.markers - 1) / 2);
    std::vector<float> rec(pairs), lod(pairs), crossovers(pairs), distance(pairs);
    ComputePairTables(
        {cross.population, 1, cross.lines, cross.markers, cross.category.data(), cross.genotype.data()},
        {rec.data(), lod.data(), crossovers.data(), distance.data()});
    std::ifstream other(stem + ".rf.tsv");
    std::string line;
    std::getline(other, line);  // heading
    for (size_t p = 0; p < pairs; ++p) {
      ASSERT_TRUE(std::getline(other, line)) << stem << " pair " << p;
      const auto words = Words(line);
      if (words.at(0) == "NA") {  // no line was typed at both markers
        EXPECT_EQ(rec[p], 0.5f) << stem << " pair " << p;
        EXPECT_EQ(lod[p], 0) << stem << " pair " << p;
        EXPECT_EQ(distance[p], 1000) << stem << " pair " << p;
        continue;
      }
      const float theirs = std::strtof(words[0].c_str(), nullptr);
      EXPECT_NEAR(rec[p], one.inbred ? RecOfInbredShare(theirs) : theirs, one.recTolerance)
          << stem << " pair " << p;
      if (words.at(1) == "NaN") {  // all lines alike, or none: 0 log 0 there, a bit a line here
        EXPECT_TRUE(rec[p] == 0 || rec[p] == 1) << stem << " pair " << p;
        EXPECT_NEAR(lod[p] / std::log10(2.0f), std::round(lod[p] / std::log10(2.0f)), 1e-5f)
            << stem << " pair " << p;
        continue;
      }
      EXPECT_NEAR(lod[p], std::strtof(words[1].c_str(), nullptr), kLodTolerance) << stem << " pair " << p;
    }
    EXPECT_FALSE(std::getline(other, line)) << stem;
  }
}

}  // namespace
