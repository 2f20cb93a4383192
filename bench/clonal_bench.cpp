// Pairs of the clonal F1 and the double cross, equal to the bit.
#include <array>
#include <vector>

#include "bench/side_by_side.h"
#include "stats/generator.h"
#include "tests/reference/clonal_plain.h"
#include "tests/reference/multi_parent_simulated.h"

namespace {

struct Tables {
  explicit Tables(size_t pairs) : phase(pairs, 9) { real.fill(std::vector<float>(pairs)); }
  recombination::ClonalPairResults Places() {
    return {{real[0].data(), real[1].data(), real[2].data()},
            {real[3].data(), real[4].data(), real[5].data()},
            {real[6].data(), real[7].data(), real[8].data()},
            phase.data()};
  }
  std::array<std::vector<float>, 9> real;
  std::vector<int32_t> phase;
};

// All bits, every not-a-number alike.
bool Same(const Tables& a, const Tables& b) {
  for (size_t k = 0; k < a.real.size(); ++k) {
    for (size_t p = 0; p < a.phase.size(); ++p) {
      const float x = a.real[k][p], y = b.real[k][p];
      if (x != y && (x == x || y == y)) return false;
    }
  }
  return a.phase == b.phase;
}

struct Row {
  int32_t population, markers;
};
struct Work {
  explicit Work(const Row& row) : plain(Pairs(row)), fast(Pairs(row)) {
    reference::ParentsPlan plan;
    plan.population = row.population;
    plan.markers = row.markers;
    plan.missing = 0.05;
    cross = reference::SimulateClonal(plan);
    data = {row.population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()};
  }
  static size_t Pairs(const Row& row) {
    const auto n = static_cast<size_t>(row.markers);
    return n * (n - 1) / 2;
  }
  void Plain() {
    stats::RestoreGenerator(generator);
    reference::ClonalPairsPlain(data, plain.Places());
  }
  void Library() {
    stats::RestoreGenerator(generator);
    recombination::ComputeClonalPairs(data, fast.Places(), recombination::BestLevel());
  }
  bool Same() const { return ::Same(plain, fast); }

  reference::ParentsCross cross;
  recombination::Genotypes data;
  decltype(stats::SaveGenerator()) generator = stats::SaveGenerator();
  Tables plain, fast;
};

}  // namespace

int main(int argc, char** argv) {
  for (const int32_t markers : {500, 1000}) {
    const std::string size = ": " + std::to_string(markers);
    bench::Add<Work>("pairs, clonal F1" + size, Row{1, markers}, markers, {30, 60});
  }
  for (const int32_t markers : {500, 1000}) {
    const std::string size = ": " + std::to_string(markers);
    bench::Add<Work>("pairs, double cross" + size, Row{2, markers}, markers, {30, 60});
  }
  return bench::Run(argc, argv);
}
