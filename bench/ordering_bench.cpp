// Ordering of one linkage group: the library beside the plain transcription, same table, orders compared.
//   ordering_bench           150, 200 and 500 markers
//   ordering_bench --large   1,000 and 2,000 as well (the plain runs take minutes)

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string_view>
#include <vector>

#include "ordering/driver.h"
#include "tests/reference/distance_tables.h"
#include "tests/reference/ordering_plain.h"

namespace {

using reference::TableKind;

struct KindRow {
  const char* name;
  TableKind kind;
  bool common;  // as users have them; the others show how far the odd kinds fall off
};
constexpr KindRow kKinds[] = {
    {"DH, 1-2 cM", TableKind::DoubledHaploid, true},
    {"F2, 1-2 cM", TableKind::F2, true},
    {"DH, 150 cM", TableKind::DenseDoubledHaploid, true},
    {"F2, 150 cM", TableKind::DenseF2, true},
    {"uniform", TableKind::Uniform, false},
    {"integers 0-3", TableKind::Integers, false},
};

double Seconds(void (*order)(std::int32_t, const float*, std::int32_t*, const std::int32_t*), std::int32_t n,
               const std::vector<float>& table, std::vector<std::int32_t>& result) {
  const auto start = std::chrono::steady_clock::now();
  order(n, table.data(), result.data(), nullptr);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void Compare(std::int32_t n, const KindRow& row) {
  std::mt19937 random(static_cast<std::uint32_t>(n));
  const std::vector<float> table = reference::MakeTable(row.kind, n, random);
  std::vector<std::int32_t> fast(static_cast<std::size_t>(n)), plain(fast);
  const double plainTime = Seconds(reference::NnTwoOpt, n, table, plain);
  double fastTime = Seconds(ordering::NnTwoOpt, n, table, fast);
  if (fast != plain) {
    std::fprintf(stderr, "ordering_bench: different orders, n %d, %s\n", n, row.name);
    std::abort();
  }
  for (int again = 0; again < 4; ++again) {
    fastTime = std::min(fastTime, Seconds(ordering::NnTwoOpt, n, table, fast));
  }
  std::printf("%6d  %-12s  plain %10.1f ms  library %8.2f ms  ratio %8.1f\n", n, row.name, 1e3 * plainTime,
              1e3 * fastTime, plainTime / fastTime);
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::int32_t> sizes = {150, 200, 500};
  if (argc > 1 && std::string_view(argv[1]) == "--large") sizes.insert(sizes.end(), {1000, 2000});
  for (const std::int32_t n : sizes) {
    for (const KindRow& row : kKinds) {
      if (row.common || n <= 200) Compare(n, row);
    }
  }
}
