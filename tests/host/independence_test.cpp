#include "host/independence.h"

#include <gtest/gtest.h>

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/normal.hpp>

namespace {

// Lines with the letters of two markers, "AB" for A at the first and B at the second, each so many times.
struct Cell {
  std::string letters;
  int count;
};

float LinkLod(const std::vector<Cell>& cells, float pairLod) {
  host::GenotypeTable table;
  table.kind = host::TableKind::Plm;
  table.markers = {"m1", "m2"};
  for (std::size_t m = 0; m < 2; ++m) {
    for (const Cell& cell : cells) {
      const uint8_t code = host::CellOf(table.kind, cell.letters.substr(m, 1));
      table.cells.insert(table.cells.end(), static_cast<std::size_t>(cell.count), code);
    }
  }
  table.lines = table.cells.size() / 2;
  host::MapData data;
  data.kind = table.kind;
  data.lod = host::SharedArray<float>(1);
  data.lod[0] = pairLod;
  host::AddLinkLods(table, data);
  EXPECT_EQ(data.LinkLods()[0], data.linkLod[0]);
  return data.linkLod[0];
}

// Twice the sum of count * ln(count / expected).
double Statistic(const std::vector<Cell>& cells) {
  std::map<char, double> first, second;
  double total = 0, sum = 0;
  for (const Cell& cell : cells) {
    first[cell.letters[0]] += cell.count;
    second[cell.letters[1]] += cell.count;
    total += cell.count;
  }
  for (const Cell& cell : cells) {
    const double expected = first[cell.letters[0]] * second[cell.letters[1]] / total;
    if (cell.count > 0) sum += cell.count * std::log(cell.count / expected);
  }
  return 2 * sum;
}

TEST(Independence, SmallerOfTheTwoLods) {
  const std::vector<Cell> dependent{{"AA", 60}, {"AC", 11}, {"CA", 9}, {"CC", 70}};
  const auto own = static_cast<float>(Statistic(dependent) / (2 * std::log(10.0)));
  EXPECT_GT(own, 10);
  EXPECT_NEAR(LinkLod(dependent, 100), own, 1e-4);
  EXPECT_EQ(LinkLod(dependent, 2.5F), 2.5F);
  // Lines without one of the genotypes do not count.
  std::vector<Cell> missing = dependent;
  missing.insert(missing.end(), {{"AX", 40}, {"XC", 30}, {"XX", 7}});
  EXPECT_NEAR(LinkLod(missing, 100), own, 1e-4);
  EXPECT_NEAR(LinkLod({{"AA", 40}, {"AB", 20}, {"BA", 20}, {"BB", 10}}, 100), 0, 1e-5) << "independent";
  EXPECT_EQ(LinkLod({{"AA", 40}, {"AX", 20}, {"XB", 20}}, 100), 0) << "one letter at the lines in common";
  EXPECT_EQ(LinkLod({{"AX", 40}, {"XB", 20}}, 100), 0) << "no line in common";
}

// Many degrees of freedom count for less: the normal deviate of the same upper tail, squared.
TEST(Independence, DegreesOfFreedomAreFolded) {
  std::vector<Cell> cells;
  const std::string letters = "ABCDEFGH";
  for (char a : letters) {
    for (char b : letters) cells.push_back({std::string{a, b}, a == b ? 12 : 3});
  }
  const double chi = Statistic(cells);
  const double tail = boost::math::cdf(boost::math::complement(boost::math::chi_squared(49), chi));
  const double deviate = boost::math::quantile(boost::math::complement(boost::math::normal(), tail));
  const double wanted = deviate * deviate / (2 * std::log(10.0));
  EXPECT_GT(wanted, 0.5);
  EXPECT_LT(wanted, chi / (2 * std::log(10.0)) / 3);
  EXPECT_NEAR(LinkLod(cells, 100), wanted, 0.03 * wanted);
}

}  // namespace
