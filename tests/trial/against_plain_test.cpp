// The seven files, byte for byte, against the plain transcription, on random trials of every kind.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/reference/trial_plain.h"
#include "tests/trial/trial_run.h"

namespace {

using reference::Plot;
using reference::Trial;

struct Kind {
  const char* name;
  int environments, genotypes, blocks, traits, plots;
  int missing, emptyCell,
      lonely;  // per cent: missing values, cells left out, environments that a trait lacks
  float scale;
};
constexpr Kind kKinds[] = {
    {"balanced", 3, 4, 3, 1, 0, 0, 0, 0, 1.0F},
    {"one environment", 1, 6, 3, 2, 0, 10, 10, 0, 1.0F},
    {"missing plots", 4, 5, 4, 2, 0, 25, 0, 0, 1.0F},
    {"empty cells", 5, 8, 3, 3, 0, 10, 30, 0, 1.0F},
    {"skipped environments", 6, 6, 3, 3, 0, 10, 10, 40, 1.0F},
    {"blocks at random", 4, 5, 6, 2, 80, 30, 0, 20, 1.0F},
    {"more environments than genotypes", 12, 3, 2, 4, 0, 5, 5, 20, 1.0F},
    {"one genotype", 3, 1, 3, 2, 40, 10, 0, 20, 1.0F},
    {"one block", 3, 4, 1, 2, 60, 10, 0, 20, 1.0F},
    {"one genotype in one block", 3, 1, 1, 2, 20, 10, 0, 0, 1.0F},
    {"one cell", 1, 1, 1, 2, 8, 10, 0, 0, 1.0F},
    {"huge values", 3, 5, 3, 2, 0, 10, 0, 0, 1e19F},
    {"squares of which every digit is written", 4, 5, 3, 2, 0, 10, 5, 10, 1e3F},
    {"tiny values", 3, 5, 3, 2, 0, 10, 0, 0, 1e-25F},
};

Trial Random(const Kind& kind, std::mt19937& random) {
  const auto below = [&random](int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
  };
  Trial trial;
  for (int t = 0; t < kind.traits; ++t) {
    trial.traits.push_back("Trait" + std::to_string(t));
  }
  std::vector<bool> lacks;
  for (int k = 0; k < kind.traits * kind.environments; ++k) {
    lacks.push_back(below(100) < kind.lonely);
  }
  const auto add = [&](int e, int g, int b) {
    Plot plot{"Env" + std::to_string(e), "Genotype_no_" + std::to_string(g), "B" + std::to_string(b), {}};
    for (int t = 0; t < kind.traits; ++t) {
      const bool none =
          below(100) < kind.missing || lacks[static_cast<std::size_t>(t * kind.environments + e)];
      const float value = static_cast<float>(below(40) + 3 * g + e) * 0.37F * kind.scale;
      plot.values.push_back(none ? -9999.0F : below(60) == 0 ? -100.0F : value);
    }
    trial.plots.push_back(plot);
  };
  for (int k = 0; k < kind.plots; ++k) {
    add(below(kind.environments), below(kind.genotypes), below(kind.blocks));
  }
  for (int e = 0; e < kind.environments && kind.plots == 0; ++e) {
    for (int g = 0; g < kind.genotypes; ++g) {
      for (int b = 0; b < kind.blocks && below(100) >= kind.emptyCell; ++b) {
        add(e, g, b);
      }
    }
  }
  std::shuffle(trial.plots.begin(), trial.plots.end(), random);
  return trial;
}

std::string TextOf(const Trial& trial) {
  std::string text = "Env Gen Block";
  for (const std::string& name : trial.traits) {
    text += " " + name;
  }
  text += "\n";
  for (const Plot& plot : trial.plots) {
    text += plot.environment + "\t" + plot.genotype + " , " + plot.block;
    for (const float value : plot.values) {
      char digits[40];
      std::snprintf(digits, sizeof digits, " %.9g", static_cast<double>(value));
      text += digits;
    }
    text += "\n";
  }
  return text;
}

// 0 equal, 2 different; a kernel's terminal message ends the child with 1 before it comes to that.
int Compare(const Trial& trial, int classes) {
  const std::string log = support::Analyse(TextOf(trial), static_cast<int32_t>(trial.plots.size()),
                                           static_cast<int32_t>(trial.traits.size()) + 3, classes);
  const reference::TrialFiles plain = reference::AnalyseTrialPlain(trial, classes);
  for (std::size_t f = 0; f < 7; ++f) {
    if (log != "good" || support::ReadFile("t" + std::string(support::kExtensions[f])) != plain.text[f]) {
      support::WriteFile("plain.txt", plain.text[f]);
      std::fprintf(stderr, "%s differs: %s\n", support::kExtensions[f].data(), log.c_str());
      return 2;
    }
  }
  return 0;
}

TEST(Trials, AreAnalysedAsThePlainTranscriptionDoes) {
  const support::ScratchFolder folder;
  for (const Kind& kind : kKinds) {
    int compared = 0;
    for (unsigned seed = 1; seed <= 15; ++seed) {
      std::mt19937 random(seed);
      const Trial trial = Random(kind, random);
      const int classes = 3 + static_cast<int>(random() % 9);
      const int code = support::InChild([&] { return Compare(trial, classes); });
      ASSERT_TRUE(code == 0 || code == 1)
          << kind.name << " " << seed << " " << support::ReadFile("stderr.txt");
      compared += code == 0 ? 1 : 0;
    }
    EXPECT_GE(compared, 8) << kind.name << ": too few that reach the end";
  }
}

}  // namespace
