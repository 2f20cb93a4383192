#pragma once

// The library beside the plain transcription, on one input and in one process. A case is a type with a
// constructor from its row (which makes the input), Plain(), Library() and Same(), which compares what the two
// left behind; answers that differ end the program before anything is told.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace bench {

// The ratio, plain over library, that a case has to reach, and the one that it is meant to. For a case whose
// plain side is a lower bound of the work (the bare splitting of a file), 1 / ratio is what counts.
struct Bar {
  double must = 0, aim = 0;
};

// Every not-a-number is like another.
inline bool SameBits(const std::vector<float>& a, const std::vector<float>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](float x, float y) {
    return std::bit_cast<uint32_t>(x) == std::bit_cast<uint32_t>(y) || (std::isnan(x) && std::isnan(y));
  });
}

template <class F>
double Seconds(F body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// One run of the library. What a case has to do before each, such as to remove results of the run before, is not timed.
template <class Work>
double LibrarySeconds(Work& work) {
  if constexpr (requires { work.Prepare(); }) work.Prepare();
  return Seconds([&] { work.Library(); });
}

template <class Work>
double PlainSeconds(Work& work) {
  constexpr int kRuns = 5;
  constexpr double kLong = 0.5;
  double least = std::numeric_limits<double>::max(), all = 0;
  for (int run = 0; run < kRuns && all < kLong; ++run) {
    const double once = Seconds([&] { work.Plain(); });
    least = std::min(least, once);
    all += once;
  }
  return least;
}

// The fastest of five runs, but a plain side that takes long runs once. `size` is what the work grows with: cases
// of one stage (the name up to its first colon) show the exponent between neighbours.
template <class Work, class Row>
void Add(const std::string& name, const Row& row, double size, Bar bar) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [name, row, size, bar](benchmark::State& state) {
                                 Work work(row);
                                 const double plain = PlainSeconds(work);
                                 double library = LibrarySeconds(work);
                                 if (!work.Same()) {
                                   std::fprintf(stderr, "%s: the answers differ\n", name.c_str());
                                   std::abort();
                                 }
                                 for (auto unused : state) {
                                   (void)unused;
                                   const double once = LibrarySeconds(work);
                                   state.SetIterationTime(once);
                                   library = std::min(library, once);
                                 }
                                 state.counters["ratio"] = plain / library;
                                 state.counters["library_s"] = library;
                                 state.counters["size"] = size;
                                 state.counters["must"] = bar.must;
                                 state.counters["aim"] = bar.aim;
                               })
      ->UseManualTime()
      ->Iterations(4)
      ->Unit(benchmark::kMillisecond);
}

// The end of every benchmark's main(), behind its Add() lines.
inline int Run(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace bench
