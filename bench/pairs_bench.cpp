// Pairs of a mapping population. TESSARMONT_LEVEL=0 to 3 forces an instruction set.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "bench/side_by_side.h"
#include "recombination/pair_tables.h"
#include "tests/reference/pair_tables_plain.h"
#include "tests/reference/simulated_cross.h"

namespace {

struct Row {
  const char* name;
  int32_t population, lines, markers;
  double missing, dominant;
  bench::Bar bar;
};
constexpr bench::Bar kTwoClass = {60, 120}, kTwoClassLong = {100, 200}, kOther = {25, 45};
constexpr Row kRows[] = {
    {"F2", 7, 200, 500, 0.05, 0, {40, 70}},
    {"F2", 7, 200, 1000, 0.05, 0, {40, 70}},
    {"F2", 7, 200, 2000, 0.05, 0, {40, 70}},
    {"F2 500 lines", 7, 500, 2000, 0.05, 0, {80, 130}},
    {"F2 complete", 7, 200, 2000, 0, 0, {40, 70}},
    {"F2 half dominant or recessive", 7, 200, 2000, 0.05, 0.5, kOther},
    {"backcross", 1, 200, 500, 0.05, 0, kTwoClass},
    {"backcross", 1, 200, 1000, 0.05, 0, kTwoClass},
    {"backcross", 1, 200, 2000, 0.05, 0, kTwoClass},
    {"DH", 3, 200, 2000, 0.05, 0, kTwoClass},
    {"DH 500 lines", 3, 500, 2000, 0.05, 0, kTwoClassLong},
    {"DH complete", 3, 200, 2000, 0, 0, kTwoClass},
    {"inbred lines", 4, 200, 2000, 0.05, 0, kTwoClass},
    {"BC1 inbred lines", 5, 200, 2000, 0.05, 0, kTwoClass},
    {"BC2 DH", 19, 200, 2000, 0.05, 0, kTwoClass},
    {"F3", 8, 200, 2000, 0.05, 0, kOther},
    {"F3 half dominant or recessive", 8, 200, 2000, 0.05, 0.5, kOther},
    {"BC1F2", 13, 200, 2000, 0.05, 0, kOther},
    {"BC2F2", 16, 200, 2000, 0.05, 0, kOther},
    {"BC1F2 half dominant or recessive", 13, 200, 2000, 0.05, 0.5, kOther},
    {"BC2F2 half dominant or recessive", 15, 200, 2000, 0.05, 0.5, kOther},
};

recombination::Level ChosenLevel() {
  const char* level = std::getenv("TESSARMONT_LEVEL");
  return level == nullptr ? recombination::BestLevel()
                          : static_cast<recombination::Level>(std::strtol(level, nullptr, 10));
}

struct Tables {
  explicit Tables(size_t pairs) : values(4 * pairs) {}
  recombination::PairResults Places() {
    const size_t pairs = values.size() / 4;
    return {values.data(), values.data() + pairs, values.data() + 2 * pairs, values.data() + 3 * pairs};
  }
  std::vector<float> values;
};

size_t Pairs(const Row& row) {
  const auto n = static_cast<size_t>(row.markers);
  return n * (n - 1) / 2;
}

struct Work {
  explicit Work(const Row& row) : plain(Pairs(row)), fast(Pairs(row)) {
    reference::CrossPlan plan;
    plan.population = row.population;
    plan.lines = row.lines;
    plan.markers = row.markers;
    plan.missing = row.missing;
    plan.dominant = row.dominant;
    cross = reference::SimulateCross(plan);
    data = {row.population, 1, row.lines, row.markers, cross.category.data(), cross.genotype.data()};
  }
  void Plain() { reference::PairTablesPlain(data, plain.Places()); }
  void Library() { recombination::ComputePairTables(data, fast.Places(), ChosenLevel()); }
  bool Same() const {
    return std::memcmp(plain.values.data(), fast.values.data(), plain.values.size() * sizeof(float)) == 0;
  }

  reference::Cross cross;
  recombination::Genotypes data;
  Tables plain, fast;
};

}  // namespace

int main(int argc, char** argv) {
  for (const Row& row : kRows) {
    bench::Add<Work>(std::string("pairs, ") + row.name + ": " + std::to_string(row.markers) + " x " +
                         std::to_string(row.lines),
                     row, row.markers, row.bar);
  }
  return bench::Run(argc, argv);
}
