// Public trials, all balanced: the analysis against textbook formulas in double, and against R where it was
// asked.

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <map>
#include <sstream>

#include "tests/trial/trial_run.h"

namespace {

using support::Records;

struct Plots {
  std::vector<std::string> environment, genotype, block;
  std::vector<double> value;  // of the first trait
  int32_t columns = 0;
};

Plots ReadExample(const std::string& name) {
  std::istringstream text(support::ReadFile(SOURCE_DIR "/examples/trials/" + name));
  std::string line;
  std::getline(text, line);
  std::istringstream title(line);
  Plots plots;
  for (std::string word; title >> word;) {
    ++plots.columns;
  }
  while (std::getline(text, line)) {
    std::istringstream row(line);
    std::string key[3];
    for (std::string& word : key) {
      row >> std::quoted(word);
    }
    double value = 0;
    row >> value;
    plots.environment.push_back(key[0]);
    plots.genotype.push_back(key[1]);
    plots.block.push_back(key[2]);
    plots.value.push_back(value);
  }
  return plots;
}

// Sum of squares of the classes' means about the mean of all, weighted by the plots.
double Between(const std::vector<double>& values, const std::vector<std::string>& classes) {
  std::map<std::string, std::pair<double, double>> sums;
  double sum = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    sums[classes[i]].first += values[i];
    sums[classes[i]].second += 1;
    sum += values[i];
  }
  double squares = 0;
  for (const auto& [name, one] : sums) {
    squares += one.second * std::pow(one.first / one.second - sum / static_cast<double>(values.size()), 2);
  }
  return squares;
}
double Corrected(const std::vector<double>& values) {
  std::vector<std::string> each;
  for (std::size_t i = 0; i < values.size(); ++i) {
    each.push_back(std::to_string(i));
  }
  return Between(values, each);
}
double Classes(const std::vector<std::string>& classes) {
  std::map<std::string, int> seen;
  for (const std::string& one : classes) {
    seen[one] = 1;
  }
  return static_cast<double>(seen.size());
}
std::vector<std::string> Crossed(const std::vector<std::string>& one, const std::vector<std::string>& other) {
  std::vector<std::string> both;
  for (std::size_t i = 0; i < one.size(); ++i) {
    both.push_back(one[i] + "|" + other[i]);
  }
  return both;
}

// The numbers of the record that begins so, "DF SS MS F Pr>F EstimatedVar".
std::vector<double> Figures(const std::string& file, const std::string& begin) {
  const std::vector<std::string> records = Records(file, begin);
  EXPECT_EQ(records.size(), 1U) << begin;
  std::vector<double> figures;
  std::istringstream text(records.empty() ? "" : records[0].substr(begin.size()));
  for (double figure = 0; text >> figure;) {
    figures.push_back(figure);
  }
  figures.resize(6);
  return figures;
}
void ExpectNear(double shown, double exact, const std::string& what) {
  EXPECT_NEAR(shown, exact, 1e-4 + 3e-5 * std::fabs(exact)) << what;
}

class Textbook : public testing::TestWithParam<std::pair<std::string, std::string>> {};

TEST_P(Textbook, CombinedAnalysisAndBartlett) {
  const support::ScratchFolder folder;
  const auto& [name, trait] = GetParam();
  const Plots p = ReadExample(name);
  const auto n = static_cast<double>(p.value.size());
  ASSERT_EQ(support::Analyse(support::ReadFile(SOURCE_DIR "/examples/trials/" + std::string(name)),
                             static_cast<int32_t>(p.value.size()), p.columns),
            "good");
  const std::string keys = std::string(trait) + " CombinedANOVA ";
  const double G = Classes(p.genotype), E = Classes(p.environment);
  const double environment = Between(p.value, p.environment), genotype = Between(p.value, p.genotype);
  const double blocks = Between(p.value, Crossed(p.environment, p.block)) - environment;
  const double cells = Between(p.value, Crossed(p.environment, p.genotype)) - environment - genotype;
  const double blockDf = Classes(Crossed(p.environment, p.block)) - E;
  const double errorDf = n - 1 - blockDf - (G - 1) - (E - 1) - (G - 1) * (E - 1);
  const double error = Corrected(p.value) - environment - genotype - blocks - cells,
               errorMs = error / errorDf;
  const struct {
    const char* source;
    double df, ss, plots;
  } rows[] = {{"Block/Env", blockDf, blocks, G},
              {"Genotype", G - 1, genotype, n / G},
              {"Environment", E - 1, environment, n / E},
              {"GE_interaction", (G - 1) * (E - 1), cells, n / E / G}};
  double component[4] = {};
  for (int k = 0; k < 4; ++k) {
    const auto& row = rows[k];
    const std::vector<double> shown = Figures("t.aov", keys + row.source);
    component[k] = std::max((row.ss / row.df - errorMs) / row.plots, 0.0);
    ExpectNear(shown[0], row.df, row.source);
    ExpectNear(shown[1], row.ss, row.source);
    ExpectNear(shown[2], row.ss / row.df, row.source);
    ExpectNear(shown[3], row.ss / row.df / errorMs, row.source);
    ExpectNear(shown[5], component[k], row.source);
  }
  ExpectNear(Figures("t.aov", keys + "Error")[1], error, "error");
  ExpectNear(Figures("t.aov", keys + "Total")[1], Corrected(p.value),
             "the corrected total, as the data are balanced");
  ExpectNear(Figures("t.aov", keys + "H^2_per_mean")[0],
             component[1] / (component[1] + component[3] / E + errorMs / (n / G)), "heritability");

  // Bartlett's test of the environments' own analyses.
  double logs = 0, sum = 0, k = 0;
  const double d = errorDf / E;
  for (const std::string& record : Records("t.aov", std::string(trait) + " ")) {
    const std::size_t at = record.find(" Error ");
    if (at != std::string::npos && record.find("CombinedANOVA") == std::string::npos) {
      double df = 0, ss = 0;
      std::istringstream(record.substr(at + 7)) >> df >> ss;
      EXPECT_EQ(df, d);
      logs += d * std::log(ss / d);
      sum += ss;
      k += 1;
    }
  }
  EXPECT_EQ(k, E);
  ExpectNear(sum, error, "the environments' errors add up");
  const double bartlett =
      (k * d * std::log(sum / (k * d)) - logs) / (1 + (k / d - 1 / (k * d)) / (3 * (k - 1)));
  EXPECT_NEAR(Figures("t.aov", std::string(trait) + " Homogeneity BartlettTest")[0], bartlett, 1e-3);
}

INSTANTIATE_TEST_SUITE_P(Trials, Textbook,
                         testing::Values(std::pair("barley.txt", "yield"), std::pair("oats.txt", "Y")));

// R, aov(yield ~ Block + variety): 1809.1 (3), 2387.5 (55, F 0.8755), 8181.1 (165).
TEST(OneEnvironment, WheatInOneEnvironment) {
  const support::ScratchFolder folder;
  ASSERT_EQ(support::Analyse(support::ReadFile(SOURCE_DIR "/examples/trials/wheat2.txt"), 224, 6), "good");
  const std::vector<double> block = Figures("t.aov", "yield Alliance Block");
  const std::vector<double> variety = Figures("t.aov", "yield Alliance Genotype");
  const std::vector<double> error = Figures("t.aov", "yield Alliance Error");
  EXPECT_EQ(block[0], 3);
  EXPECT_NEAR(block[1], 1809.1, 0.06);
  EXPECT_EQ(variety[0], 55);
  EXPECT_NEAR(variety[1], 2387.5, 0.06);
  EXPECT_NEAR(variety[3], 0.8755, 6e-5);
  EXPECT_EQ(error[0], 165);
  EXPECT_NEAR(error[1], 8181.1, 0.06);
  EXPECT_EQ(Figures("t.aov", "yield Alliance H^2_per_mean")[0], 0) << "varieties differ less than plots do";
}

}  // namespace
