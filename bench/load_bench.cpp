// The load of a MAP file of 20,000 markers x 500 lines against splitting the same bytes at blanks. The counts
// are compared first: the splitter must find as many tokens as the file has values.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "platform/unit.h"
#include "project/loader.h"
#include "project/store.h"

namespace {

constexpr int kMarkers = 20000, kLines = 500;

const std::string& Text() {
  static const std::string text = [] {
    std::mt19937 random(1);
    std::string file = "7\n1\n1\n" + std::to_string(kMarkers) + "\n" + std::to_string(kLines) + "\n";
    std::string anchors;
    for (int m = 0; m < kMarkers; ++m) {
      file += "marker" + std::to_string(m);
      for (int line = 0; line < kLines; ++line) {
        file += ' ';
        file += "AHBX"[random() % 4];
      }
      file += '\n';
      anchors += "marker" + std::to_string(m) + " 0\n";
    }
    return file + anchors;
  }();
  return text;
}

std::size_t Split(const std::string& text) {
  std::size_t tokens = 0;
  unsigned sum = 0;
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    while (p < end && (*p == ' ' || *p == '\n')) {
      ++p;
    }
    const char* const begin = p;
    while (p < end && *p != ' ' && *p != '\n') {
      ++p;
    }
    if (p > begin) {
      ++tokens;
      sum += static_cast<unsigned char>(*begin);
    }
  }
  benchmark::DoNotOptimize(sum);
  return tokens;
}

void PlainSplit(benchmark::State& state) {
  if (Split(Text()) != 5U + std::size_t{kMarkers} * (kLines + 3)) {
    std::fputs("the splitter misses tokens\n", stderr);
    std::abort();
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(Split(Text()));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(Text().size()));
}

void Load(benchmark::State& state) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  const std::string file = folder / "tessarmont_load_bench.map";
  std::ofstream(file, std::ios::binary) << Text();
  platform::OpenUnit(project::kLogUnit, (folder / "tessarmont_load_bench.log").string(),
                     platform::OpenStatus::Replace);
  for (auto _ : state) {
    int32_t status = 0;
    project::LoadModule(project::Module::Map, project::kMapCode, file, status);
    if (status != 0 ||
        project::GenotypesAt(project::Store(project::Module::Map), kMarkers).size() != kLines) {
      std::fputs("the load went wrong\n", stderr);
      std::abort();
    }
    project::ReleaseStore(project::Module::Map);
  }
  platform::CloseUnit(project::kLogUnit);
  std::filesystem::remove(file);
  std::filesystem::remove(folder / "tessarmont_load_bench.log");
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(Text().size()));
}

BENCHMARK(PlainSplit)->Unit(benchmark::kMillisecond);
BENCHMARK(Load)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
