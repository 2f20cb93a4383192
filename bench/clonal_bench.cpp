// Pairs of the clonal F1 and the double cross, equal to the bit.
#include <vector>

#include "bench/side_by_side.h"
#include "stats/generator.h"
#include "tests/reference/clonal_plain.h"
#include "tests/reference/multi_parent_simulated.h"

namespace {

bool Same(const reference::ClonalResults& a, const reference::ClonalResults& b) {
  for (size_t k = 0; k < a.real.size(); ++k) {
    if (!bench::SameBits(a.real[k], b.real[k])) return false;
  }
  return a.phase == b.phase;
}

struct Row {
  int32_t population, markers;
};
struct Work {
  explicit Work(const Row& row) : plain(row.markers), fast(row.markers) {
    reference::ParentsPlan plan;
    plan.population = row.population;
    plan.markers = row.markers;
    plan.missing = 0.05;
    cross = reference::SimulateClonal(plan);
    data = {row.population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()};
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
  reference::ClonalResults plain, fast;
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
