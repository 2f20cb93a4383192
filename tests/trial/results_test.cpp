// The result files on small trials worked by hand: what looks odd in them and is required.

#include <gtest/gtest.h>

#include <sstream>

#include "tests/trial/trial_run.h"
#include "trial/correlations.h"
#include "trial/trial_table.h"

namespace trial {
namespace {

using support::Analyse;
using support::ReadFile;
using support::Records;
using support::ScratchFolder;

std::string One(const std::string& file, const std::string& begin) {
  const std::vector<std::string> found = Records(file, begin);
  EXPECT_EQ(found.size(), 1U) << begin << "\n" << ReadFile(file);
  return found.empty() ? "" : found[0];
}

// Two environments of two genotypes, two blocks; B lacks the last plot in F.
constexpr const char* kSmall =
    "Env Gen Block y\nE A 1 1\nE B 1 2\nE A 2 4\nE B 2 9\nF A 1 2\nF B 1 7\nF A 2 1\nF B 2 5\nF A 3 3\nF B 3 "
    "-9999\n";

TEST(Anova, RecordsStandLetterForLetter) {
  const ScratchFolder folder;
  ASSERT_EQ(Analyse(kSmall, 10, 4), "good");
  const std::string aov = ReadFile("t.aov");
  const std::string keys = std::string(19, ' ') + "y" + std::string(19, ' ') + "E";
  // Means 2.5 and 5.5 of the genotypes, 1.5 and 6.5 of the blocks, 4 of all; residuals 1, -1, -1, 1. The
  // second LSD is that of 0.995 as a float.
  const std::string first =
      "           TraitName     EnvironmentName          Source              DF              SS              "
      "MS"
      "         F-value            Pr>F\n" +
      keys +
      "           Model          2.0000         34.0000         17.0000          4.2500     0.3244E+000\n" +
      keys + "           Error          1.0000          4.0000          4.0000\n" + keys +
      "           Total          3.0000         38.0000\n" + keys + "     R-square(%)         89.4737\n" +
      keys +
      "          Source              DF              SS              MS         F-value            Pr>F    "
      "EstimatedVar\n" +
      keys +
      "           Block          1.0000         25.0000         25.0000          6.2500     0.2422E+000      "
      "   10.5000\n" +
      keys +
      "        Genotype          1.0000          9.0000          9.0000          2.2500     0.3743E+000      "
      "    2.5000\n" +
      keys + "       LSD(0.05)         25.4124\n" + keys + "       LSD(0.01)        127.3136\n" + keys +
      "    H^2_per_plot          0.3846\n" + keys + "    H^2_per_mean          0.5556\n";
  EXPECT_EQ(aov.substr(0, first.size()), first);
  EXPECT_EQ(Records("t.aov", "y F Genotype").size(), 1U);
  EXPECT_EQ(Records("t.aov", "y CombinedANOVA Block/Env 3.0000").size(), 1U);
  EXPECT_EQ(Records("t.aov", "y Homogeneity BartlettTest").size(), 1U);
  // Unbalanced: the total is the sum of the parts and not the deviations from the mean (23.2).
  EXPECT_NE(One("t.aov", "y F Total"), "y F Total 4.0000 23.2000");
}

TEST(Anova, DegreesOfFreedomCountTheGenotypesOfTheTrait) {
  const ScratchFolder folder;
  const std::string plots = "E A 1 1\nE B 1 2\nE A 2 4\nE B 2 9\nE A 3 5\nE B 3 5\n";
  ASSERT_EQ(Analyse("e g b y\n" + plots, 6, 4), "good");
  EXPECT_EQ(Records("t.aov", "y E Error 2.0000").size(), 1U);
  // C grows elsewhere only, where two plots leave no error: E loses a degree of freedom, F has no record.
  ASSERT_EQ(Analyse("e g b y\n" + plots + "F C 1 1\nF C 1 2\n", 8, 4), "good");
  EXPECT_EQ(Records("t.aov", "y E Error 1.0000").size(), 1U);
  EXPECT_TRUE(Records("t.aov", "y F").empty());
}

TEST(Anova, OneBlockPerfectDataAndNegativeComponents) {
  const ScratchFolder folder;
  // One block: no record of it, and 0/0 as its component counts as 0.
  ASSERT_EQ(Analyse("e g b y\nE A 1 1\nE A 1 3\nE B 1 5\nE B 1 8\n", 4, 4), "good");
  EXPECT_EQ(Records("t.aov", "y E Block").size(), 0U);
  EXPECT_EQ(One("t.aov", "y E Genotype"), "y E Genotype 1.0000 20.2500 20.2500 6.2308 0.1299E+000 8.5000");
  // No error: an infinite F with a p-value of 0, and 0/0 that stays what it is.
  ASSERT_EQ(Analyse("e g b y\nE A 1 1\nE A 2 1\nE B 1 2\nE B 2 2\n", 4, 4), "good");
  EXPECT_EQ(One("t.aov", "y E Genotype"), "y E Genotype 1.0000 1.0000 1.0000 Infinity 0.0000E+000 0.5000");
  EXPECT_EQ(One("t.aov", "y E Block"), "y E Block 1.0000 0.0000 0.0000 NaN NaN 0.0000");
  // Squares beyond a float: infinite mean squares, whose difference is not a number and counts as 0.
  ASSERT_EQ(Analyse("e g b y\nE A 1 1e25\nE A 1 9e25\nE B 1 2e25\nE B 1 3e25\n", 4, 4), "good");
  EXPECT_EQ(One("t.aov", "y E Genotype"), "y E Genotype 1.0000 Infinity Infinity NaN NaN 0.0000");
  EXPECT_EQ(One("t.aov", "y E H^2_per_plot"), "y E H^2_per_plot 0.0000");
  // Genotypes that differ less than plots do.
  ASSERT_EQ(Analyse("e g b y\nE A 1 1\nE A 1 9\nE B 1 2\nE B 1 8.5\n", 4, 4), "good");
  EXPECT_EQ(One("t.aov", "y E H^2_per_plot"), "y E H^2_per_plot 0.0000");
}

// The block of BlockId 3 is looked up behind the first of E: block 1 of F. And F's own lies past the last: 0.
TEST(Anova, BlockMeansAreLookedUpByBlockId) {
  const ScratchFolder folder;
  std::string text = "e g b y\n";
  for (const char* environment : {"E", "F"}) {
    for (const char* plot :
         {" A 1 1\n", " B 1 2\n", " A 2 -9999\n", " B 2 -9999\n", " A 3 4\n", " B 3 6\n"}) {
      text += environment + std::string(plot);
    }
  }
  ASSERT_EQ(Analyse(text, 12, 4), "good");
  // E: mean 3.25; block means 1.5 and, for BlockId 3, F's 1.5: SS 4 * 1.75^2. F: 2 * 1.75^2 + 2 * 3.25^2.
  EXPECT_EQ(One("t.aov", "y E Block").substr(0, 24), "y E Block 1.0000 12.2500");
  EXPECT_EQ(One("t.aov", "y F Block").substr(0, 24), "y F Block 1.0000 27.2500");
}

TEST(Means, ColumnsBetweenTheFirstTwoGenotypesAreNotFilled) {
  const ScratchFolder folder;
  const struct {
    const char* rule;
    std::string present, expected;
  } cases[] = {
      {"all", "ABCD", "1.0000 2.0000 3.0000 4.0000"},
      {"a gap behind the first shifts what follows", "AD", "1.0000 4.0000"},
      {"gaps ahead and behind are filled", "BC", "-100.0000 2.0000 3.0000 -100.0000"},
      {"a gap behind the second is filled", "ABD", "1.0000 2.0000 -100.0000 4.0000"},
      {"a single one has nothing behind it", "B", "-100.0000 2.0000"},
      {"no data, no values", "", ""},
  };
  for (const auto& one : cases) {
    std::string text = "e g b full y\n";
    for (int pass = 0; pass < 2; ++pass) {
      for (const char g : std::string("ABCD")) {
        const bool present = one.present.find(g) != std::string::npos;
        text += std::string("E ") + g + " 1 " + std::to_string(g - 'A' + pass) +
                (present ? " " + std::to_string(g - 'A' + 1) : " -9999") + "\n";
      }
    }
    const std::string all = std::string(1, ' ') + one.expected;
    support::InChild([&] {  // a trait of one value ends in the frequency tables, behind the means
      Analyse(text, 8, 5);
      return 0;
    });
    const std::string record = One("t.egv", "y SimpleMean");
    EXPECT_EQ(record, "y SimpleMean" + (one.expected.empty() ? "" : all)) << one.rule;
  }
}

// The empty cell of B in F counts as -100, in the simple mean and in the prediction.
TEST(Means, EmptyCellsPullDown) {
  const ScratchFolder folder;
  ASSERT_EQ(Analyse("e g b y\nE A 1 1\nE B 1 2\nE A 2 4\nE B 2 9\nF A 1 2\nF A 2 4\nF A 3 1.5\n", 7, 4),
            "good");
  EXPECT_EQ(One("t.egv", "y E"), "y E 2.5000 5.5000");
  EXPECT_EQ(One("t.egv", "y F"), "y F 2.5000 -100.0000");
  EXPECT_EQ(One("t.egv", "y SimpleMean"), "y SimpleMean 2.5000 -47.2500");
  EXPECT_TRUE(Records("t.egv", "y PredictionBLUE").empty()) << "no error degrees of freedom, no prediction";
  ASSERT_EQ(
      Analyse("e g b y\nE A 1 1\nE B 1 2\nE A 2 4\nE B 2 9\nF A 1 2\nF A 1 4\nF A 1 3\nF A 1 5\n", 8, 4),
      "good");
  const std::string prediction = One("t.egv", "y PredictionBLUE");
  EXPECT_LT(std::stof(prediction.substr(prediction.rfind(' '))), -50) << prediction;
}

TEST(Frequencies, BothBoundsMoveUpAndNamesComeFromThePlaceInTheList) {
  const ScratchFolder folder;
  // Values 0 to 8 in 5 classes: d = 1, bounds 1 and 9, inner width 8/3.
  ASSERT_EQ(Analyse("e g b y\nE A x 0\nE B x 1\nE A z 2\nE B z 8\n", 4, 4, 5), "good");
  EXPECT_EQ(Records("t.frq", "y E x MiddlePoint")[0],
            "y E x MiddlePoint -0.3333 2.3333 5.0000 7.6667 10.3333");
  EXPECT_EQ(Records("t.frq", "y E x Counts")[0], "y E x Counts 2.0000 0.0000 0.0000 0.0000 0.0000");
  EXPECT_EQ(Records("t.frq", "y E z Counts")[0], "y E z Counts 0.0000 1.0000 0.0000 1.0000 0.0000");
  EXPECT_EQ(Records("t.frq", "y E PredictionBLUE Counts")[0],
            "y E PredictionBLUE Counts 1.0000 0.0000 1.0000 0.0000 0.0000");
  // The trait lacks E, so F's blocks bear E's names, and the third none.
  ASSERT_EQ(Analyse("e g b y\nE A x -9999\nE B y -9999\nF A p 1\nF B q 2\nF A r 3\nF B p 4\n", 6, 4), "good");
  EXPECT_EQ(Records("t.frq", "y F x Counts").size(), 1U);
  EXPECT_EQ(Records("t.frq", "y F y Counts").size(), 1U);
  EXPECT_EQ(Records("t.frq", "y F Counts").size(), 1U);
}

TEST(Quantiles, ColumnsKeepTheOrderOfTheCells) {
  const ScratchFolder folder;
  ASSERT_EQ(Analyse("e g b y\nE A 1 4\nE A 2 3\nE B 1 5\nE B 2 6\n", 4, 4), "good");
  EXPECT_EQ(One("t.qqp", "y E Observed"), "y E Observed 0.5000 -0.5000 -0.5000 0.5000");
  // Ranks 3, 1, 1, 3 of 4; s = sqrt(1/3).
  EXPECT_EQ(One("t.qqp", "y E Quantile"), "y E Quantile 0.1840 -0.6642 -0.6642 0.1840");
}

TEST(Correlations, SelectionAndAlignmentGoByPlace) {
  const ScratchFolder folder;
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FLOAT_EQ(PearsonR(std::vector<float>{1, 2, 4, nan}, std::vector<float>{2, 4, 8, 1}), 1);
  EXPECT_TRUE(std::isnan(PearsonR(std::vector<float>{-9999, 1}, std::vector<float>{1, nan})));
  EXPECT_LT(PearsonR(std::vector<float>{1, 2, -100}, std::vector<float>{1, 2, 200}), -0.9F)
      << "-100 is a value";
  // z lacks genotype A: in E the genotypes at place 1 differ (A and B), so there is no correlation there, nor
  // in F, where those at place 2 do.
  std::string text = "e g b y z w\n";
  for (int k = 0; k < 16; ++k) {
    const int g = k % 4, e = k / 4 % 2;
    text += std::string(e == 0 ? "E " : "F ") + static_cast<char>('A' + g) + " 1 " +
            std::to_string(k * k % 7) + " " + (g == 0 ? "-9999" : std::to_string(k * 5 % 11)) + " " +
            std::to_string(k * 3 % 8) + "\n";
  }
  ASSERT_EQ(Analyse(text, 16, 6), "good");
  EXPECT_EQ(Records("t.coe", "1 2 ")[0], "1 2 NaN 1.0000");
  EXPECT_EQ(One("t.coe", "1 3 ").substr(4, 11), "0.8748 NaN ") << "w and y agree in their genotypes";
  EXPECT_EQ(Records("t.coe", "2 2 ")[0], "2 2 NaN 1.0000");
}

// The genotypes at the environments' places agree, so the lists are compared by place: A B C of y with A C D
// of z.
TEST(Correlations, ListsOfUnequalLength) {
  const ScratchFolder folder;
  const auto text = [](const char* traits, bool longerFirst) {
    std::string rows = std::string("e g b ") + traits + "\n";
    const int whole[] = {1, 2, 4, 8}, part[] = {3, -9999, 1, 9};
    for (int k = 0; k < 8; ++k) {
      const int first = longerFirst ? whole[k % 4] : part[k % 4],
                second = longerFirst ? part[k % 4] : whole[k % 4];
      rows += std::string("E ") + "ABCD"[k % 4] + " 1 " + std::to_string(first) + " " +
              std::to_string(second) + "\n";
    }
    return rows;
  };
  // Row 2 compares the second trait with the first: 3 1 9 with 1 2 4 reaches no further than both.
  ASSERT_EQ(Analyse(text("y z", true), 8, 5), "good");
  EXPECT_EQ(Records("t.coe", "1 2 ")[0], "1 2 0.8386 1.0000");
  // 1 2 4 8 with 3 1 9 and nothing: no value.
  ASSERT_EQ(Analyse(text("z y", false), 8, 5), "good");
  EXPECT_EQ(Records("t.coe", "1 2 ")[0], "1 2 NaN 1.0000");
}

TEST(Biplots, RebuildTheCellMeans) {
  const ScratchFolder folder;
  ASSERT_EQ(Analyse(kSmall, 9, 4), "good");
  for (const char* model : {"y GGE ", "y AMMI "}) {
    EXPECT_EQ(One("t.pcp", std::string(model) + "A"), std::string(model) + "A 2.5000 2.0000 2.5000 2.0000");
    EXPECT_EQ(One("t.pcp", std::string(model) + "B"), std::string(model) + "B 5.5000 6.0000 5.5000 6.0000");
    EXPECT_EQ(Records("t.pca", model).size(), 5U);
  }
}

// Grand mean and effects are all -9999 or 9999; so is the interaction of A in E, which therefore counts for
// nothing.
TEST(Biplots, AnEffectOfTheMarkForMissingIsLeftOut) {
  const ScratchFolder folder;
  ASSERT_EQ(Analyse("e g b y\nE A 1 -39996\nE B 1 0\nF A 1 0\nF B 1 0\n", 4, 4), "good");
  for (const char* model : {"y GGE A", "y AMMI A"}) {
    const std::string record = One("t.pcp", model);
    EXPECT_TRUE(record.starts_with(model + std::string(" -29997.0000 0.0000 "))) << record;
  }
}

TEST(Results, RecordsOfAnyLengthAreWrittenWhole) {
  const ScratchFolder folder;
  std::string text = "e g b y\n";
  for (int k = 0; k < 12000; ++k) {
    text += "E" + std::to_string(k % 2) + " G" + std::to_string(k % 3) + " 1 " + std::to_string(k * 7 % 11) +
            "\n";
  }
  ASSERT_EQ(Analyse(text, 12000, 4, 10050), "good");
  EXPECT_EQ(ReadFile("t.qqp").find('\n', 60) - ReadFile("t.qqp").find('\n') - 1, 52U + 12U * 6000U);
  EXPECT_EQ(ReadFile("t.frq").find('\n', 70) - ReadFile("t.frq").find('\n') - 1, 80U + 12U * 10050U);
  text = "e g b y\n";
  for (int k = 0; k < 720; ++k) {
    text += "E" + std::to_string(k % 120) + " G" + std::to_string(k % 3) + " 1 " +
            std::to_string(k * 7 % 11) + "\n";
    text += "E" + std::to_string(k % 120) + " H" + std::to_string(k % 7 % 2) + " 1 " +
            std::to_string(k % 13) + "\n";
  }
  ASSERT_EQ(Analyse(text, 1440, 4), "good");
  const std::string coe = ReadFile("t.coe");
  EXPECT_EQ(coe.size() - coe.rfind('\n', coe.size() - 2) - 2, 12U + 10U * 120U);
  EXPECT_EQ(ReadFile("t.pcp").find('\n'), 52U + 12U * 240U);
}

TEST(Results, KernelsEndTheProcessWithTheirWords) {
  const ScratchFolder folder;
  const struct {
    const char* rule;
    std::string text;
    int32_t rows, classes;
    const char* words;
  } cases[] = {
      {"fewer than three classes", kSmall, 10, 2,
       "ERROR 5 from OWFRQ.  K = 2.  Since IOPT = 1, there must be"},
      {"a constant trait", "e g b y\nE A 1 2\nE B 1 2\nE A 2 2\n", 3, 3,
       "ERROR 5 from OWFRQ.  XLO = 2 and XHI = 2."},
      {"only plots of -100", "e g b y\nE A 1 -100\nE B 1 -100\n", 2, 3, "ERROR 5 from OWFRQ.  XLO = "},
      {"an environment with one plot", "e g b y\nE A 1 2\nE B 1 3\nF A 1 5\n", 3, 3,
       "ERROR 5 from RANKS.  NOBS = 1."},
      {"one environment with error degrees of freedom",
       "e g b y\nE A 1 1\nE B 1 2\nE A 1 4\nE B 1 9\nE A 1 2\nF A 1 1\nF B 1 3\n", 7, 3,
       "ERROR 5 from CHIDF.  The number of degrees of freedom of the distribution, DF = 0, must be"},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(support::InChild([&] {
                Analyse(one.text, one.rows, 4, one.classes);
                return 0;
              }),
              1)
        << one.rule;
    EXPECT_NE(ReadFile("stderr.txt").find(one.words), std::string::npos)
        << one.rule << ReadFile("stderr.txt");
  }
  // Without anything to tally, the number of classes is never looked at.
  EXPECT_EQ(Analyse("e g b y\nE A 1 -9999\n", 1, 4, -7), "good");
}

}  // namespace
}  // namespace trial
