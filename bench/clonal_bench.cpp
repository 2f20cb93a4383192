// Pair tables of the clonal F1 and the double cross: the library beside the plain loop, one process, one
// input, answers compared to the bit first. clonal_bench [LEVEL]: 0 to 3 forces an instruction set.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

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

double Since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void RunCase(const char* name, int32_t population, recombination::Level level) {
  reference::ParentsPlan plan;
  plan.population = population;
  plan.markers = 1000;
  plan.missing = 0.05;
  const reference::ParentsCross cross = reference::SimulateClonal(plan);
  const recombination::Genotypes data = {
      population, 1, plan.lines, plan.markers, cross.category.data(), cross.genotype.data()};
  const auto n = static_cast<size_t>(plan.markers), pairs = n * (n - 1) / 2;
  Tables plain(pairs), fast(pairs);
  const auto generator = stats::SaveGenerator();
  auto start = std::chrono::steady_clock::now();
  reference::ClonalPairsPlain(data, plain.Places());
  const double plainSeconds = Since(start);
  double fastSeconds = 1e30;
  for (int k = 0; k < 5; ++k) {
    stats::RestoreGenerator(generator);
    start = std::chrono::steady_clock::now();
    recombination::ComputeClonalPairs(data, fast.Places(), level);
    fastSeconds = std::min(fastSeconds, Since(start));
  }
  if (!Same(plain, fast)) {
    std::fprintf(stderr, "%s: the answers differ\n", name);
    std::abort();
  }
  std::printf("%-14s %5d x %4d  plain %8.1f ns/pair  library %6.1f ns/pair  ratio %6.1f\n", name,
              plan.markers, plan.lines, plainSeconds / static_cast<double>(pairs) * 1e9,
              fastSeconds / static_cast<double>(pairs) * 1e9, plainSeconds / fastSeconds);
}

}  // namespace

int main(int argc, char** argv) {
  const recombination::Level level =
      argc > 1 ? static_cast<recombination::Level>(std::strtol(argv[1], nullptr, 10))
               : recombination::BestLevel();
  RunCase("clonal F1", 1, level);
  RunCase("double cross", 2, level);
}
