// Pairs of four and eight parents. "Merged": the plain loop over cells merged as the library merges them, equal to
// the bit. "Cells": the plain loop over single cells, which rounds differently and where the iteration is slow can
// stop a step earlier or later; fewer than one in a thousand may have another frequency.
#include <array>
#include <cmath>
#include <vector>

#include "bench/side_by_side.h"
#include "tests/reference/multi_parent_cells.h"
#include "tests/reference/multi_parent_plain.h"
#include "tests/reference/multi_parent_simulated.h"

namespace {

using Tables = std::array<std::vector<float>, 3>;

recombination::MultiParentPairResults Places(Tables& tables) {
  return {tables[0].data(), tables[1].data(), tables[2].data()};
}

// All bits, every not-a-number alike.
bool Same(const Tables& a, const Tables& b) {
  for (size_t k = 0; k < a.size(); ++k) {
    for (size_t p = 0; p < a[k].size(); ++p) {
      const float x = a[k][p], y = b[k][p];
      if (x != y && (x == x || y == y)) return false;
    }
  }
  return true;
}

struct Row {
  int32_t population, markers;
  double biallelic;  // share of the markers with two alleles
};
struct Input {
  explicit Input(const Row& row) {
    reference::ParentsPlan plan;
    plan.population = row.population;
    plan.markers = row.markers;
    plan.missing = 0.05;
    plan.biallelic = row.biallelic;
    cross = reference::SimulateMultiParent(plan);
    data = {row.population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()};
    const auto n = static_cast<size_t>(plan.markers);
    plain.fill(std::vector<float>(n * (n - 1) / 2));
    fast = plain;
  }
  void Library() { recombination::ComputeMultiParentPairs(data, Places(fast), recombination::BestLevel()); }

  reference::ParentsCross cross;
  recombination::Genotypes data;
  Tables plain, fast;
};
struct Merged : Input {
  using Input::Input;
  void Plain() { reference::MultiParentPairsPlain(data, Places(plain)); }
  bool Same() const { return ::Same(plain, fast); }
};
struct Cells : Input {
  using Input::Input;
  void Plain() { reference::MultiParentPairsByCells(data, Places(plain)); }
  bool Same() const {
    size_t unlike = 0;
    for (size_t p = 0; p < fast[0].size(); ++p)
      unlike += std::fabs(plain[0][p] - fast[0][p]) <= 1e-3f ? 0 : 1;
    return unlike * 1000 <= fast[0].size();
  }
};

struct Kind {
  const char* name;
  int32_t population;
  double biallelic;
};
constexpr Kind kKinds[] = {{"4PDH", 1, 1},
                           {"4PRIL", 2, 1},
                           {"8PDH", 3, 1},
                           {"8PRIL", 4, 1},
                           {"4PDH more alleles", 1, 0.3},
                           {"4PRIL more alleles", 2, 0.3},
                           {"8PDH more alleles", 3, 0.3},
                           {"8PRIL more alleles", 4, 0.3}};

}  // namespace

int main(int argc, char** argv) {
  constexpr bench::Bar kBar = {30, 100};
  for (const Kind& kind : kKinds) {
    const std::string name = std::string("pairs, ") + kind.name;
    for (const int32_t markers : {500, 1000}) {
      bench::Add<Merged>(name + ", merged: " + std::to_string(markers),
                         Row{kind.population, markers, kind.biallelic}, markers, kBar);
    }
    bench::Add<Cells>(name + ", cells: 300", Row{kind.population, 300, kind.biallelic}, 300, kBar);
  }
  return bench::Run(argc, argv);
}
