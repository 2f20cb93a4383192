// The trial analysis: the library against the plain transcription at 20,000 plots, whose files are compared
// first, and the library's stages at 1,000,000 plots (500 genotypes, 50 environments, 4 blocks, 3 traits)
// beside the time that reading the bytes and converting the numbers alone takes.

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "platform/unit.h"
#include "tests/reference/trial_plain.h"
#include "trial/analysis.h"
#include "trial/anova.h"
#include "trial/biplots.h"
#include "trial/combined_anova.h"
#include "trial/correlations.h"
#include "trial/frequency_tables.h"
#include "trial/means.h"
#include "trial/quantile_tables.h"
#include "trial/trial_table.h"

namespace {

constexpr int32_t kLog = 2004;
constexpr int32_t kOut = 1001;
constexpr int32_t kColumns = 6;
constexpr int32_t kClasses = 10;
constexpr int32_t kLarge = 1000000;
constexpr int32_t kSmall = 20000;

// A table of so many plots in the current folder; the values keep what the text says.
reference::Trial WriteTable(const std::string& name, int32_t plots) {
  std::mt19937 random(1);
  std::normal_distribution<double> normal;
  reference::Trial trial{{"yield", "height", "protein"}, {}};
  std::string text = "Environment Genotype Block yield height protein\n";
  for (int32_t k = 0; k < plots; ++k) {
    const int32_t g = k % 500, e = k / 500 % 50, b = k / 25000 % 4;
    reference::Plot plot{"Site_" + std::to_string(e), "Line_" + std::to_string(g), std::to_string(b), {}};
    text += plot.environment + " " + plot.genotype + " " + plot.block;
    for (int t = 0; t < 3; ++t) {
      char digits[32];
      std::snprintf(digits, sizeof digits, "%.2f", 60 + 5 * normal(random) + g % 17 + e % 7 * (t + 1));
      text += std::string(" ") + digits;
      plot.values.push_back(std::strtof(digits, nullptr));
    }
    text += "\n";
    trial.plots.push_back(plot);
  }
  std::ofstream(name, std::ios::binary) << text;
  return trial;
}

std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void OpenLog() { platform::OpenUnit(kLog, "ANOVA.log", platform::OpenStatus::Replace); }

const std::string& LargeTable() {
  static const std::string name = [] {
    WriteTable("large.txt", kLarge);
    return std::string("large.txt");
  }();
  return name;
}

const trial::TrialTable& Large() {
  static const trial::TrialTable table = [] {
    trial::TrialTable read;
    OpenLog();
    trial::ReadTrialTable(kLog, kLarge, kColumns, LargeTable(), read);
    platform::CloseUnit(kLog);
    return read;
  }();
  return table;
}

void SmallLibrary(benchmark::State& state) {
  WriteTable("small.txt", kSmall);
  for (auto _ : state) {
    OpenLog();
    trial::RunTrialAnalysis(kLog, kSmall, kColumns, kClasses, "small.txt");
    platform::CloseUnit(kLog);
  }
}
BENCHMARK(SmallLibrary)->Unit(benchmark::kMillisecond);

void SmallPlain(benchmark::State& state) {
  const reference::Trial input = WriteTable("small.txt", kSmall);
  OpenLog();
  trial::RunTrialAnalysis(kLog, kSmall, kColumns, kClasses, "small.txt");
  platform::CloseUnit(kLog);
  const char* const extensions[] = {".aov", ".egv", ".frq", ".qqp", ".coe", ".pca", ".pcp"};
  for (auto _ : state) {
    const reference::TrialFiles plain = reference::AnalyseTrialPlain(input, kClasses);
    for (int f = 0; f < 7; ++f) {
      if (plain.text[f] != ReadFile(std::string("small") + extensions[f])) {
        std::fprintf(stderr, "the answers differ: %s\n", extensions[f]);
        std::abort();
      }
    }
  }
}
BENCHMARK(SmallPlain)->Unit(benchmark::kMillisecond)->Iterations(1);

// The yardstick: the file's bytes in memory and its three million numbers converted, with names stepped over.
void LargeBytesAndNumbers(benchmark::State& state) {
  const std::string& name = LargeTable();
  for (auto _ : state) {
    std::string text(std::filesystem::file_size(name), ' ');
    std::ifstream(name, std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size()));
    float sum = 0;
    const char* p = text.data() + text.find('\n') + 1;
    const char* const end = text.data() + text.size();
    while (p < end) {
      for (int column = 0; column < kColumns; ++column) {
        float value = 0;
        const char* q = p;
        if (column < 3) {
          while (*q != ' ') {
            ++q;
          }
        } else {
          q = std::from_chars(p, end, value).ptr;
        }
        sum += value;
        p = q + 1;
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(LargeBytesAndNumbers)->Unit(benchmark::kMillisecond);

void LargeRead(benchmark::State& state) {
  const std::string& name = LargeTable();
  for (auto _ : state) {
    trial::TrialTable table;
    OpenLog();
    trial::ReadTrialTable(kLog, kLarge, kColumns, name, table);
    platform::CloseUnit(kLog);
    benchmark::DoNotOptimize(table.Trait.data());
  }
}
BENCHMARK(LargeRead)->Unit(benchmark::kMillisecond);

enum Stage : int64_t { kAnova, kMeans, kFrequencies, kQuantiles, kCorrelations, kBiplots };

void RunStage(Stage stage, trial::TrialTable& table) {
  switch (stage) {
    case kAnova:
      for (trial::TrialTrait& trait : table.Trait) {
        trial::AnalyseEnvironments(table, kOut, "trait", trait);
        trial::CombinedAnova(kOut, "trait", trait);
      }
      break;
    case kMeans:
      trial::WriteMeansAndPredictions(kOut, table);
      break;
    case kFrequencies:
      trial::FrequencyTables(kOut, kClasses, table);
      break;
    case kQuantiles:
      trial::QuantileTables(kOut, table);
      break;
    case kCorrelations:
      trial::CorrelationTables(kOut, table);
      break;
    case kBiplots:
      trial::BiplotAnalysis(kOut, kOut, table);
      break;
  }
}

void LargeStage(benchmark::State& state) {
  const char* const labels[] = {"analyses of variance", "means",  "frequencies", "quantiles",
                                "correlations",         "biplots"};
  trial::TrialTable table = Large();
  for (auto _ : state) {
    platform::OpenUnit(kOut, "stage.out", platform::OpenStatus::Replace);
    RunStage(static_cast<Stage>(state.range(0)), table);
    platform::CloseUnit(kOut);
  }
  state.SetLabel(labels[state.range(0)]);
}
BENCHMARK(LargeStage)->DenseRange(kAnova, kBiplots)->Unit(benchmark::kMillisecond);

void LargeWhole(benchmark::State& state) {
  const std::string& name = LargeTable();
  for (auto _ : state) {
    OpenLog();
    trial::RunTrialAnalysis(kLog, kLarge, kColumns, kClasses, name);
    platform::CloseUnit(kLog);
  }
}
BENCHMARK(LargeWhole)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  std::string folder = (std::filesystem::temp_directory_path() / "tessarmont-bench-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) {
    return EXIT_FAILURE;
  }
  std::filesystem::current_path(folder);
  benchmark::RunSpecifiedBenchmarks();
  std::filesystem::current_path("/");
  std::filesystem::remove_all(folder);
}
