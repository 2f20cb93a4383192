// The trial analysis: the library against the plain transcription at 20,000 plots, and at 1,000,000 plots (500
// genotypes, 50 environments, 4 blocks, 3 traits) the whole and its stages beside the time that reading the
// bytes and converting the numbers alone takes.

#include <benchmark/benchmark.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "bench/side_by_side.h"
#include "platform/unit.h"
#include "tests/reference/trial_plain.h"
#include "trial/analysis.h"
#include "trial/anova.h"
#include "trial/biplots.h"
#include "trial/combined_anova.h"
#include "trial/correlations.h"
#include "trial/frequency_tables.h"
#include "trial/means.h"
#include "trial/names.h"
#include "trial/quantile_tables.h"
#include "trial/trial_table.h"

namespace {

constexpr int32_t kLog = 2004;
constexpr int32_t kOut = 1001;
constexpr int32_t kColumns = 6;
constexpr int32_t kClasses = 10;
constexpr int32_t kLarge = 1000000;
constexpr const char* kLargeTable = "large.txt";
constexpr const char* kExtensions[] = {".aov", ".egv", ".frq", ".qqp", ".coe", ".pca", ".pcp"};

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

void Analyse(const std::string& table, int32_t plots) {
  platform::OpenUnit(kLog, "ANOVA.log", platform::OpenStatus::Replace);
  trial::RunTrialAnalysis(kLog, plots, kColumns, kClasses, table);
  platform::CloseUnit(kLog);
}

// Against the plain transcription, whose table is in memory already.
struct Transcription {
  explicit Transcription(int32_t count) : plots(count), input(WriteTable("small.txt", count)) {}
  void Plain() { plain = reference::AnalyseTrialPlain(input, kClasses); }
  void Library() { Analyse("small.txt", plots); }
  bool Same() const {
    for (std::size_t f = 0; f < std::size(kExtensions); ++f) {
      if (plain.text[f] != ReadFile(std::string("small") + kExtensions[f])) return false;
    }
    return true;
  }

  int32_t plots;
  reference::Trial input;
  reference::TrialFiles plain;
};

// The yardstick: the file's bytes in memory and its three million numbers converted, with names stepped over.
float BytesAndNumbers() {
  std::string text(std::filesystem::file_size(kLargeTable), ' ');
  std::ifstream(kLargeTable, std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size()));
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
  return sum;
}

enum class Stage { Whole, Reading, Anova, Means, Frequencies, Quantiles, Correlations, Biplots };
struct StageRow {
  Stage stage;
  const char* name;
  const char* extension;  // of the file that it writes; the biplots' other one is not compared
  bench::Bar bar;
};
constexpr StageRow kStages[] = {
    {Stage::Whole, "whole", "", {1.0 / 12, 1.0 / 3}},   {Stage::Reading, "reading", "", {1.0 / 5, 0}},
    {Stage::Anova, "analyses of variance", ".aov", {}}, {Stage::Means, "means", ".egv", {}},
    {Stage::Frequencies, "frequencies", ".frq", {}},    {Stage::Quantiles, "quantiles", ".qqp", {1.0 / 6, 0}},
    {Stage::Correlations, "correlations", ".coe", {}},  {Stage::Biplots, "biplots", ".pca", {}},
};

void ReadLarge(trial::TrialTable& table) {
  platform::OpenUnit(kLog, "ANOVA.log", platform::OpenStatus::Replace);
  trial::ReadTrialTable(kLog, kLarge, kColumns, kLargeTable, table);
  platform::CloseUnit(kLog);
}

void RunAnova(trial::TrialTable& table) {
  for (std::size_t t = 0; t < table.Trait.size(); ++t) {
    const std::string_view name = trial::Text(table.TraitName[t]);
    trial::AnalyseEnvironments(table, kOut, name, table.Trait[t]);
    trial::CombinedAnova(kOut, name, table.Trait[t]);
  }
}

void RunStage(Stage stage, trial::TrialTable& table) {
  switch (stage) {
    case Stage::Whole:
      Analyse(kLargeTable, kLarge);
      return;
    case Stage::Reading: {
      trial::TrialTable read;
      ReadLarge(read);
      std::swap(table, read);
      return;
    }
    case Stage::Anova:
      return RunAnova(table);
    case Stage::Means:
      return trial::WriteMeansAndPredictions(kOut, table);
    case Stage::Frequencies:
      return trial::FrequencyTables(kOut, kClasses, table);
    case Stage::Quantiles:
      return trial::QuantileTables(kOut, table);
    case Stage::Correlations:
      return trial::CorrelationTables(kOut, table);
    case Stage::Biplots:
      return trial::BiplotAnalysis(kOut, kOut + 1, table);
  }
}

// A stage writes the very file that the whole writes.
struct LargeStage {
  explicit LargeStage(const StageRow& which) : row(which) {
    if (!std::filesystem::exists(kLargeTable)) {
      WriteTable(kLargeTable, kLarge);
      Analyse(kLargeTable, kLarge);
    }
    if (row.stage != Stage::Whole) {
      ReadLarge(table);
      platform::OpenUnit(kOut, "stage.out", platform::OpenStatus::Replace);
      RunAnova(table);  // means and frequencies show its predictions
      platform::CloseUnit(kOut);
    }
  }
  void Plain() { sum = BytesAndNumbers(); }
  void Prepare() {
    for (const char* extension : kExtensions) {
      if (row.stage == Stage::Whole) std::filesystem::remove(std::string("large") + extension);
    }
    std::filesystem::remove("stage.out");
    std::filesystem::remove("stage.pcp");
  }
  void Library() {
    platform::OpenUnit(kOut, "stage.out", platform::OpenStatus::Replace);
    if (row.stage == Stage::Whole) platform::CloseUnit(kOut);
    if (row.stage == Stage::Biplots) {
      platform::OpenUnit(kOut + 1, "stage.pcp", platform::OpenStatus::Replace);
    }
    RunStage(row.stage, table);
    platform::CloseUnit(kOut);
    platform::CloseUnit(kOut + 1);
  }
  bool Same() const {
    if (!std::isfinite(sum) || sum <= 0) return false;
    if (row.stage == Stage::Whole)
      return std::filesystem::file_size("large.qqp") > std::size_t{12} * 2 * 3 * kLarge;
    if (row.stage == Stage::Reading) return table.Trait.size() == 3 && table.Trait[2].Value.size() == kLarge;
    return ReadFile("stage.out") == ReadFile(std::string("large") + row.extension);
  }

  StageRow row;
  trial::TrialTable table;
  float sum = 0;
};

}  // namespace

int main(int argc, char** argv) {
  std::string folder = (std::filesystem::temp_directory_path() / "tessarmont-bench-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) {
    return EXIT_FAILURE;
  }
  std::filesystem::current_path(folder);
  bench::Add<Transcription>("trial: 20000 plots", int32_t{20000}, 20000, {50, 50});
  for (const StageRow& row : kStages) {
    bench::Add<LargeStage>(std::string("trial over reading and converting 1000000 plots: ") + row.name, row,
                           0, row.bar);
  }
  const int result = bench::Run(argc, argv);
  std::filesystem::current_path("/");
  std::filesystem::remove_all(folder);
  return result;
}
