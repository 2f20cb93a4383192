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
  bool Same() const {
    for (size_t k = 0; k < plain.size(); ++k) {
      if (!bench::SameBits(plain[k], fast[k])) return false;
    }
    return true;
  }
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

constexpr bench::Bar kBar = {30, 100};
constexpr bench::Bar kHardBar = {0, 30};  // nearly every pair of patterns is met once
struct Kind {
  const char* name;
  int32_t population;
  double biallelic;
  bench::Bar bar;
};
constexpr Kind kKinds[] = {{"4PDH", 1, 1, kBar},
                           {"4PRIL", 2, 1, kBar},
                           {"8PDH", 3, 1, kBar},
                           {"8PRIL", 4, 1, kBar},
                           {"4PDH more alleles", 1, 0.3, kHardBar},
                           {"4PRIL more alleles", 2, 0.3, kHardBar},
                           {"8PDH more alleles", 3, 0.3, kHardBar},
                           {"8PRIL more alleles", 4, 0.3, kHardBar}};

}  // namespace

int main(int argc, char** argv) {
  for (const Kind& kind : kKinds) {
    const std::string name = std::string("pairs, ") + kind.name;
    for (const int32_t markers : {500, 1000}) {
      bench::Add<Merged>(name + ", merged: " + std::to_string(markers),
                         Row{kind.population, markers, kind.biallelic}, markers, kind.bar);
    }
    bench::Add<Cells>(name + ", cells: 300", Row{kind.population, 300, kind.biallelic}, 300, kind.bar);
  }
  return bench::Run(argc, argv);
}
