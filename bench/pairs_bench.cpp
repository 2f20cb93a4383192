// Pair tables: the library beside the plain loop, one process, one input, answers compared to the bit first.
// pairs_bench [all | NAME] [LEVEL]: the standard crosses, every kind, or those whose name starts with NAME;
// LEVEL 0 to 3 forces an instruction set.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "recombination/pair_tables.h"
#include "tests/reference/pair_tables_plain.h"
#include "tests/reference/simulated_cross.h"

namespace {

using recombination::Level;

struct Case {
  const char* name;
  int32_t population, lines, markers;
  double missing, dominant;
  bool standard;
};
constexpr Case kCases[] = {
    {"F2", 7, 200, 500, 0.05, 0, true},
    {"F2", 7, 200, 2000, 0.05, 0, true},
    {"backcross", 1, 200, 500, 0.05, 0, true},
    {"backcross", 1, 200, 2000, 0.05, 0, true},
    {"DH", 3, 200, 500, 0.05, 0, true},
    {"DH", 3, 200, 2000, 0.05, 0, true},
    {"F2 complete", 7, 200, 2000, 0, 0, false},
    {"DH complete", 3, 200, 2000, 0, 0, false},
    {"inbred lines", 4, 200, 2000, 0.05, 0, false},
    {"BC1 inbred", 5, 200, 2000, 0.05, 0, false},
    {"BC2 DH", 19, 200, 2000, 0.05, 0, false},
    {"DH", 3, 500, 2000, 0.05, 0, false},
    {"F2", 7, 500, 2000, 0.05, 0, false},
    {"F2 half dom/rec", 7, 200, 2000, 0.05, 0.5, false},
    {"F3", 8, 200, 2000, 0.05, 0, false},
    {"F3 half dom/rec", 8, 200, 2000, 0.05, 0.5, false},
    {"P1BC1F2", 13, 200, 2000, 0.05, 0, false},
    {"P2BC2F2", 16, 200, 2000, 0.05, 0, false},
    {"P1BC1F2 dom/rec", 13, 200, 2000, 0.05, 0.5, false},
    {"P1BC2F2 dom/rec", 15, 200, 2000, 0.05, 0.5, false},
};

struct Tables {
  explicit Tables(size_t pairs) : rec(pairs), lod(pairs), crossovers(pairs), distance(pairs) {}
  recombination::PairResults Places() { return {rec.data(), lod.data(), crossovers.data(), distance.data()}; }
  std::vector<float> rec, lod, crossovers, distance;
};

bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

template <class F>
double Seconds(int repeats, F body) {
  double best = 1e30;
  for (int k = 0; k < repeats; ++k) {
    const auto start = std::chrono::steady_clock::now();
    body();
    best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

void RunCase(const Case& one, Level level) {
  reference::CrossPlan plan;
  plan.population = one.population;
  plan.lines = one.lines;
  plan.markers = one.markers;
  plan.missing = one.missing;
  plan.dominant = one.dominant;
  const reference::Cross cross = reference::SimulateCross(plan);
  const recombination::Genotypes data = {
      one.population, 1, one.lines, one.markers, cross.category.data(), cross.genotype.data()};
  const auto n = static_cast<size_t>(one.markers), pairs = n * (n - 1) / 2;
  Tables plain(pairs), fast(pairs);
  const double plainSeconds = Seconds(1, [&] { reference::PairTablesPlain(data, plain.Places()); });
  const double fastSeconds =
      Seconds(5, [&] { recombination::ComputePairTables(data, fast.Places(), level); });
  if (!SameBits(plain.rec, fast.rec) || !SameBits(plain.lod, fast.lod) ||
      !SameBits(plain.crossovers, fast.crossovers) || !SameBits(plain.distance, fast.distance)) {
    std::fprintf(stderr, "%s: the answers differ\n", one.name);
    std::abort();
  }
  std::printf("%-16s %5d x %4d  plain %8.1f ns/pair  library %6.1f ns/pair  ratio %6.1f\n", one.name,
              one.markers, one.lines, plainSeconds / static_cast<double>(pairs) * 1e9,
              fastSeconds / static_cast<double>(pairs) * 1e9, plainSeconds / fastSeconds);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  std::string_view kind = "standard";
  Level level = recombination::BestLevel();
  for (int k = 1; k < argc; ++k) {
    if (argv[k][0] >= '0' && argv[k][0] <= '9') {
      level = static_cast<Level>(std::strtol(argv[k], nullptr, 10));
    } else {
      kind = argv[k];
    }
  }
  for (const Case& one : kCases) {
    const bool named = std::string_view(one.name).starts_with(kind);
    if (kind == "standard" ? one.standard : kind == "all" || named) RunCase(one, level);
  }
}
