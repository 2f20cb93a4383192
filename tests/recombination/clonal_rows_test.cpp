#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "recombination/clonal_tables.h"
#include "tests/recombination/clonal_compare.h"
#include "tests/reference/multi_parent_simulated.h"

namespace {

using namespace recombination;
using tests::ExpectSameOnEveryLevel;

struct Cross {
  int32_t population, lines;
  std::vector<int32_t> category;
  std::vector<char> genotype;

  void Expect(const std::string& what) const {
    ExpectSameOnEveryLevel(
        {population, 1, lines, static_cast<int32_t>(category.size()), category.data(), genotype.data()},
        what);
  }
};

// Letters of the category's own, so that every table has lines, and a share of the lines left out.
void AddMarker(Cross& cross, std::mt19937& draw, int32_t category, unsigned missing) {
  static const std::string kLetters[] = {"?", "ABCD", "EF", "GH", "IJJK", "IJJK"};
  const std::string& letters = kLetters[category >= 1 && category <= 5 ? category : 0];
  const size_t before = cross.genotype.size();
  const auto lines = static_cast<size_t>(cross.lines);
  for (size_t line = 0; line < lines; ++line) {
    const bool linked = before >= lines && category == cross.category.back() && draw() % 8 != 0;
    char letter = linked ? cross.genotype[before - lines + line] : letters[draw() % letters.size()];
    if (draw() % 100 < missing || (linked && letter == 'X')) letter = 'X';
    cross.genotype.push_back(letter);
  }
  cross.category.push_back(category);
}

// Rows of more markers than are taken together, where draws go on from part to part; a category that is alone in
// whole blocks, one that begins late, one that ends early, and what is none.
TEST(ClonalRows, OfManyMarkersEqualThePlainLoop) {
  for (const int32_t population : {1, 2}) {
    std::mt19937 draw(31);
    Cross cross{population, 3, {}, {}};
    for (int32_t m = 0; m < 2100; ++m) {
      const int32_t any = static_cast<int32_t>(draw() % 6);
      const int32_t category = m < 40 ? 4 : m < 70 ? 1 + m % 2 : m < 1000 ? (any == 3 ? 7 : any) : any + 1;
      AddMarker(cross, draw, m >= 1500 && category == 2 ? 3 : category, 20);
    }
    cross.Expect("many markers");
  }
}

// Rows that end at every place of a block.
TEST(ClonalRows, OfEveryLengthEqualThePlainLoop) {
  for (int32_t markers = 2; markers <= 35; ++markers) {
    std::mt19937 draw(static_cast<unsigned>(markers));
    Cross cross{markers % 2 + 1, 20, {}, {}};
    for (int32_t m = 0; m < markers; ++m) {
      AddMarker(cross, draw, 1 + static_cast<int32_t>(draw() % 5), markers % 3 == 0 ? 90 : 10);
    }
    cross.Expect("markers " + std::to_string(markers));
  }
}

// One to 23 words of lines.
TEST(ClonalRows, OfAnyNumberOfLinesEqualThePlainLoop) {
  for (const int32_t lines : {60, 190, 250, 256, 257, 320, 400, 513, 1023, 1024, 1100, 1446, 1447}) {
    std::mt19937 draw(static_cast<unsigned>(lines));
    Cross cross{lines % 2 + 1, lines, {}, {}};
    for (int32_t m = 0; m < 24; ++m) AddMarker(cross, draw, 1 + m / 2 % 5, m % 5 == 0 ? 97 : 3);
    cross.Expect("lines " + std::to_string(lines));
  }
}

// So many pairs that what a parent comes to is remembered.
TEST(ClonalRows, OfRememberedParentsEqualThePlainLoop) {
  for (const int32_t population : {1, 2}) {
    std::mt19937 draw(77);
    Cross cross{population, 100, {}, {}};
    for (int32_t m = 0; m < 150; ++m) {
      AddMarker(cross, draw, 1 + m / 2 % (population == 1 ? 4 : 5), m % 7 == 0 ? 97 : 5);
    }
    cross.Expect("remembered parents");
  }
}

// Near 0.5 the difference of two large sums may come out below 0.
TEST(ClonalRows, OfLodsThatRoundBelowZeroEqualThePlainLoop) {
  Cross cross{2, 14952, {}, {}};
  for (int32_t m = 0; m < 24; ++m) {
    const auto ones = static_cast<size_t>(m == 0 ? 0 : 7465 + m), lines = static_cast<size_t>(cross.lines);
    cross.category.push_back(2);
    cross.genotype.insert(cross.genotype.end(), ones, 'E');
    cross.genotype.insert(cross.genotype.end(), lines - ones, 'F');
  }
  cross.Expect("near 0.5");
}

}  // namespace
