// Ordering by nearest neighbour and two-opt, on tables as estimated from simulated crosses of 200 lines and on odd
// ones. The plain side of the largest takes minutes: --benchmark_filter=-2000 leaves it out.
#include <random>
#include <vector>

#include "bench/side_by_side.h"
#include "ordering/driver.h"
#include "tests/reference/distance_tables.h"
#include "tests/reference/ordering_plain.h"

namespace {

using reference::TableKind;

struct Kind {
  const char* name;
  TableKind kind;
  int32_t largest;
};
constexpr Kind kKinds[] = {
    {"DH, 1-2 cM", TableKind::DoubledHaploid, 2000},
    {"F2, 1-2 cM", TableKind::F2, 2000},
    {"DH, 150 cM", TableKind::DenseDoubledHaploid, 2000},
    {"F2, 150 cM", TableKind::DenseF2, 2000},
    {"uniform", TableKind::Uniform, 200},
    {"integers 0-3", TableKind::Integers, 200},
};
struct Size {
  int32_t markers;
  bench::Bar bar;
};
constexpr Size kSizes[] = {
    {150, {100, 100}}, {200, {30, 100}}, {500, {40, 100}}, {1000, {60, 200}}, {2000, {80, 300}}};

struct Row {
  TableKind kind;
  int32_t n;
};
struct Work {
  explicit Work(const Row& row)
      : n(row.n), plain(static_cast<size_t>(row.n)), fast(static_cast<size_t>(row.n)) {
    std::mt19937 random(static_cast<std::uint32_t>(n));
    table = reference::MakeTable(row.kind, n, random);
  }
  void Plain() { reference::NnTwoOpt(n, table.data(), plain.data(), nullptr); }
  void Library() { ordering::NnTwoOpt(n, table.data(), fast.data(), nullptr); }
  bool Same() const { return plain == fast; }

  int32_t n;
  std::vector<float> table;
  std::vector<int32_t> plain, fast;
};

}  // namespace

int main(int argc, char** argv) {
  for (const Kind& kind : kKinds) {
    for (const Size& size : kSizes) {
      if (size.markers > kind.largest) continue;
      bench::Add<Work>(std::string("ordering, ") + kind.name + ": " + std::to_string(size.markers),
                       Row{kind.kind, size.markers}, size.markers, size.bar);
    }
  }
  return bench::Run(argc, argv);
}
