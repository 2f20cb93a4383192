#include "tests/reference/multi_parent_em.h"

#include <cmath>
#include <cstddef>
#include <map>
#include <vector>

namespace reference {
namespace {

// A line's pair of parents i, j at the two markers: its probability in a gamete of the cross of so many
// parents, the meioses that tell of recombination, and the recombinant ones.
struct Descent {
  double probability = 1;
  int meioses = 0, recombinant = 0;
};
Descent Gamete(int parents, int i, int j, double r) {
  if (parents == 1) return {};
  const int half = parents / 2;
  if (i / half != j / half) return {r / 2 / half / half, 1, 1};
  Descent below = Gamete(half, i % half, j % half, r);
  return {(1 - r) / 2 * below.probability, below.meioses + 1, below.recombinant};
}

// Inbred lines by selfing, for r of one meiosis.
double InbredProbability(int parents, int i, int j, double r) {
  const double f = 1 + 2 * r;
  if (parents == 4) return i == j ? (1 - r) / (4 * f) : r / (4 * f);
  if (i == j) return (1 - r) * (1 - r) / (8 * f);
  return i / 2 == j / 2 ? r * (1 - r) / (8 * f) : r / (16 * f);
}

struct Expected {
  double lines = 0, meioses = 0, recombinant = 0, same = 0, sisters = 0;
};
Expected ExpectedAt(const ParentsPair& pair, const std::map<std::pair<char, char>, int>& seen, double r) {
  const int parents = pair.population <= 2 ? 4 : 8;
  std::map<std::pair<char, char>, Expected> classes;
  std::vector<char> allele[2];
  int32_t rest[2] = {pair.firstPattern, pair.secondPattern};
  for (std::size_t m = 0; m < 2; ++m) {
    for (int k = 0; k < parents; ++k, rest[m] /= 10) {
      allele[m].insert(allele[m].begin(), static_cast<char>('A' + rest[m] % 10 - 1));
    }
  }
  for (int i = 0; i < parents; ++i) {
    for (int j = 0; j < parents; ++j) {
      Descent d = Gamete(parents, i, j, r);
      if (pair.population % 2 == 0) d.probability = InbredProbability(parents, i, j, r);
      Expected& sum =
          classes[{allele[0][static_cast<std::size_t>(i)], allele[1][static_cast<std::size_t>(j)]}];
      sum.lines += d.probability;
      sum.meioses += d.probability * d.meioses;
      sum.recombinant += d.probability * d.recombinant;
      if (i == j) sum.same += d.probability;
      if (i != j && i / 2 == j / 2) sum.sisters += d.probability;
    }
  }
  Expected all;
  for (const auto& [letters, count] : seen) {
    const Expected& in = classes.at(letters);
    const double weight = count / in.lines;
    all.lines += count;
    all.meioses += weight * in.meioses;
    all.recombinant += weight * in.recombinant;
    all.same += weight * in.same;
    all.sisters += weight * in.sisters;
  }
  return all;
}

// Nothing times the logarithm of 0 is nothing.
double Term(double count, double p) { return count == 0 ? 0 : count * std::log10(p); }

}  // namespace

ParentsEstimate EstimateParents(const ParentsPair& pair, int steps, double settled) {
  std::map<std::pair<char, char>, int> seen;
  for (std::size_t line = 0; line < pair.first.size(); ++line) {
    if (pair.first[line] != 'X' && pair.second[line] != 'X') ++seen[{pair.first[line], pair.second[line]}];
  }
  ParentsEstimate x;
  if (pair.population == 2) x.rec = 0.25 / 2 / (1 - 0.25);  // 1/4 as the share of a line's recombination
  for (int k = 0; k < steps && x.change > settled; ++k) {
    const Expected e = ExpectedAt(pair, seen, x.rec);
    const double n = e.lines, other = n - e.same;
    double next;
    if (pair.population == 2) {
      const double p = 2 * other / (3 * n);
      next = p / 2 / (1 - p);
      x.lod = Term(e.same, 2 - 3 * p) + Term(other, p) + n * std::log10(2.0);
    } else if (pair.population == 4) {
      const double b = e.sisters + 2 * other;  // the root of other/r - b/(1 - r) - 2n/(1 + 2r)
      const double square = 2 * (n - b) - 2 * other, linear = other - b - 2 * n;
      next = square == 0 ? -other / linear
                         : (-linear - std::sqrt(linear * linear - 4 * square * other)) / (2 * square);
      x.lod = Term(other, next) + Term(b, 1 - next) - n * std::log10(2 * next + 1) +
              (other + b + n) * std::log10(2.0);
    } else {
      next = e.recombinant / e.meioses;
      x.lod =
          Term(e.recombinant, next) + Term(e.meioses - e.recombinant, 1 - next) + e.meioses * std::log10(2.0);
    }
    const double before = pair.population == 2 ? 2 * x.rec / (1 + 2 * x.rec) : x.rec;  // the share of a line
    x.change = std::fabs((pair.population == 2 ? 2 * next / (1 + 2 * next) : next) - before);
    x.rec = next;
  }
  return x;
}

}  // namespace reference
