// The check of marker names: the library's index against comparing each name with all before it. The pairs
// found are compared first.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "project/name_index.h"
#include "tests/reference/names_plain.h"

namespace {

std::vector<std::string> Names(int64_t count) {
  std::vector<std::string> names;
  for (int64_t k = 0; k < count; ++k) {
    std::string name = "chr" + std::to_string(k % 10) + "_" + std::to_string(k == count - 1 ? 5 : k);
    names.push_back(name.append(35 - name.size(), ' '));  // the last is the sixth once more, or nearly
  }
  return names;
}

using Pairs = std::vector<std::pair<int32_t, int32_t>>;

Pairs ByIndex(const std::vector<std::string>& names) {
  Pairs pairs;
  project::NameIndex index;
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (const int32_t earlier : project::AddName(index, names[i])) {
      pairs.emplace_back(earlier, static_cast<int32_t>(i) + 1);
    }
  }
  return pairs;
}

Pairs Plain(const std::vector<std::string>& names) {
  return reference::EqualNames({names.begin(), names.end()});
}

void Index(benchmark::State& state) {
  const std::vector<std::string> names = Names(state.range(0));
  for (auto _ : state) {
    benchmark::DoNotOptimize(ByIndex(names));
  }
}

void PlainCheck(benchmark::State& state) {
  const std::vector<std::string> names = Names(state.range(0));
  if (ByIndex(names) != Plain(names)) {
    std::fputs("the answers differ\n", stderr);
    std::abort();
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(Plain(names));
  }
}

BENCHMARK(Index)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(PlainCheck)->Arg(5000)->Arg(50000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
