#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "command_runner.h"
#include "frame/exports.h"

namespace {

constexpr const char* kExtensions[] = {".aov", ".egv", ".frq", ".qqp", ".coe", ".pca", ".pcp"};

// The library's own files of a table that already has its layout.
void CallLibrary(const Sandbox& sandbox, const std::string& name, int32_t rows, int32_t columns) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(sandbox.folder);
  const auto length = static_cast<int32_t>(name.size());
  const int32_t classes = 10;
  int32_t status = -1;
  TOOLANOVA(&length, name.data(), &rows, &columns, &classes, &status);
  std::filesystem::current_path(before);
  ASSERT_EQ(status, 0);
}

nlohmann::json RunJson(const Sandbox& sandbox, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "trial");
  arguments.insert(arguments.end(), {"--json", "--quiet"});
  const CommandResult result = RunCommand(sandbox, arguments);
  EXPECT_EQ(result.code, 0) << result.err;
  return nlohmann::json::parse(result.out, nullptr, false);
}

void ExpectSameFiles(const Sandbox& sandbox, const std::string& one, const std::string& other) {
  for (const char* extension : kExtensions) {
    const std::string text = sandbox.Read(one + extension);
    EXPECT_TRUE(!text.empty() || extension == std::string_view(".pcp")) << one << extension;
    EXPECT_EQ(text, sandbox.Read(other + extension)) << one << " and " << other << extension;
  }
}

struct Plot {
  std::string environment, genotype, block, yield, height;
};

// Three environments, four genotypes, two blocks; sums that nobody can guess.
std::vector<Plot> Plots() {
  std::vector<Plot> plots;
  for (int k = 0; k < 24; ++k) {
    const int g = k % 4, b = k / 4 % 2, e = k / 8;
    const double yield = 20 + 3 * e - 2.5 * g + b + std::fmod(k * 7.31, 2.0);
    plots.push_back({"E" + std::to_string(e), "line " + std::to_string(g), std::to_string(b + 1),
                     std::to_string(yield).substr(0, 6), std::to_string(100 + k * k % 17)});
  }
  return plots;
}

std::string Table(const std::vector<Plot>& plots, const std::string& heading, const std::string& parted,
                  const std::string& end, char quote) {
  const std::string q(quote == 0 ? 0 : 1, quote);
  std::string text = heading + end;
  for (const Plot& plot : plots) {
    text += q + plot.environment + q + parted + q + plot.genotype + q + parted + plot.block + parted +
            plot.yield + parted + plot.height + end;
  }
  return text;
}

TEST(Trial, FilesAreTheLibrarysOwn) {
  const Sandbox sandbox;
  for (const auto& [name, rows, columns] :
       {std::tuple("barley", 120, 4), {"oats", 72, 4}, {"wheat2", 224, 6}}) {
    std::filesystem::copy_file(std::filesystem::path(EXAMPLES_DIR) / "trials" / (std::string(name) + ".txt"),
                               sandbox.folder / (std::string(name) + ".txt"));
    CallLibrary(sandbox, std::string(name) + ".txt", rows, columns);
    RunJson(sandbox, {std::string(name) + ".txt", "-o", std::string("own_") + name});
    ExpectSameFiles(sandbox, name, std::string("own_") + name);
  }
}

// The same plots however they are written give the same bytes.
TEST(Trial, TablesOfEveryForm) {
  const Sandbox sandbox;
  const std::vector<Plot> plots = Plots();
  const std::string heading = "env gen block yield height";
  sandbox.Write("blank.txt", Table(plots, heading, " ", "\n", '\''));
  std::vector<Plot> commas = plots;
  for (Plot& plot : commas) plot.yield.replace(plot.yield.find('.'), 1, ",");
  std::vector<Plot> plus = plots;
  for (Plot& plot : plus) plot.yield = "+" + plot.yield + "e0";
  const std::pair<std::string, std::string> forms[] = {
      {"tabs", Table(plots, "env\tgen\tblock\tyield\theight", "\t", "\r\n", 0)},
      {"commas", "\xef\xbb\xbf\n" + Table(plus, "env,gen,\"block\",yield,height,,", ", ", "\r", '"')},
      {"semicolons", Table(commas, "env;gen;block;yield;height", ";", "\n\n", 0)},
      {"tabs and decimal commas", Table(commas, "env\tgen\tblock\tyield\theight", "\t", "\r\n", 0)},
      {"rownames", Table(plots, heading, " ", "\n", '"')}};
  RunJson(sandbox, {"blank.txt", "--no-report"});
  for (const auto& [name, text] : forms) {
    std::string rows = text;
    if (name == "rownames") {
      std::string numbered;
      std::size_t line = 0;
      for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
        const std::string row = text.substr(at, text.find('\n', at) + 1 - at);
        numbered += (line == 0 ? "" : "\"" + std::to_string(line) + "\" ") + row;
        ++line;
      }
      rows = numbered;
    }
    sandbox.Write(name + ".csv", rows);
    RunJson(sandbox, {name + ".csv", "--no-report"});
    ExpectSameFiles(sandbox, "blank", name);
  }
}

TEST(Trial, ColumnsByNameAndNamesThatNeedCare) {
  const Sandbox sandbox;
  std::string text = "plot,note,Yield t/ha,entry,my rep,site\n";
  const char* const names[] = {"5*red", "O'Brien \"x\"", "a/b, c", "!first"};
  for (int k = 0; k < 16; ++k) {
    std::string name;
    for (const char* c = names[k % 4]; *c != 0; ++c) name += *c == '"' ? "\"\"" : std::string(1, *c);
    text += std::to_string(k) + ",seen," + std::to_string(10 + k % 4 + k % 3) + ",\"" + name + "\"," +
            std::to_string(k / 4 % 2) + (k < 8 ? ",north\n" : ",south\n");
  }
  sandbox.Write("t.csv", text);
  const CommandResult unsure = RunCommand(sandbox, {"trial", "t.csv"});
  EXPECT_EQ(unsure.code, 1);
  EXPECT_NE(unsure.err.find("Name it with --block COLUMN, or say --block none; the columns are plot, note,"),
            std::string::npos)
      << unsure.err;
  const CommandResult none = RunCommand(sandbox, {"trial", "t.csv", "--block", "none", "--gen", "none"});
  EXPECT_EQ(none.code, 1);
  EXPECT_NE(none.err.find("--gen: there is no column \"none\""), std::string::npos) << none.err;
  const nlohmann::json json = RunJson(sandbox, {"t.csv", "--block", "MY REP"});
  EXPECT_EQ(json["columns"]["genotype"], "entry");
  EXPECT_EQ(json["columns"]["environment"], "site");
  ASSERT_EQ(json["traits"].size(), 2U);  // the number of the plot, too, unless --traits names others
  const nlohmann::json chosen = RunJson(sandbox, {"t.csv", "--block", "my rep", "--traits", "Yield t/ha"});
  ASSERT_EQ(chosen["traits"].size(), 1U);
  std::set<std::string> told;
  for (const auto& entry : chosen["traits"][0]["genotypes_ranked"]) told.insert(entry["genotype"]);
  EXPECT_EQ(told, std::set<std::string>(std::begin(names), std::end(names)));
  const nlohmann::json whole =
      RunJson(sandbox, {"t.csv", "--block", "none", "--env", "none", "--traits", "Yield t/ha"});
  EXPECT_EQ(whole["environments"].size(), 1U);
  EXPECT_TRUE(std::filesystem::exists(sandbox.folder / "t.report.html"));
  // Headings that nobody knows are not taken in silence, nor are commas in numbers.
  sandbox.Write("fremd.csv", "Ort;Sorte;Wdh;Ertrag\nKöln;a;1;1,5\nKöln;b;1;2\nKöln;a;2;2\nKöln;b;2;4\n");
  const CommandResult taken = RunCommand(sandbox, {"trial", "fremd.csv"});
  EXPECT_NE(taken.err.find("first three columns are taken"), std::string::npos) << taken.err;
  EXPECT_NE(taken.err.find("\"Ertrag\": commas in numbers"), std::string::npos) << taken.err;
  EXPECT_NE(taken.out.find("\n  K\xc3\xb6ln                     "), std::string::npos) << taken.out;
}

// Textbook formulas in double beside the summary's figures.
TEST(Trial, FiguresOfABalancedTrial) {
  const Sandbox sandbox;
  const std::vector<Plot> plots = Plots();
  sandbox.Write("t.txt", Table(plots, "env gen block yield height", " ", "\n", '"'));
  const nlohmann::json trait = RunJson(sandbox, {"t.txt"})["traits"][0];
  double sum = 0;
  std::map<std::string, double> environments, cells, blocks;
  for (const Plot& plot : plots) {
    const double y = std::stod(plot.yield);
    sum += y;
    environments[plot.environment] += y / 8;
    cells[plot.environment + plot.genotype] += y / 2;
    blocks[plot.environment + plot.block] += y / 4;
  }
  double error = 0;
  for (const Plot& plot : plots) {
    const double rest = std::stod(plot.yield) - cells[plot.environment + plot.genotype] -
                        blocks[plot.environment + plot.block] + environments[plot.environment];
    error += rest * rest;
  }
  const nlohmann::json& combined = trait["analyses"].back();
  ASSERT_TRUE(combined["combined"]);
  EXPECT_NEAR(trait["mean"].get<double>(), sum / 24, 1e-5);
  EXPECT_NEAR(combined["cv_percent"].get<double>(), 100 * std::sqrt(error / 9) / (sum / 24), 1e-2);
  EXPECT_EQ(trait["analyses"].size(), 4U);
  EXPECT_EQ(trait["ranked_by"], "prediction");
  EXPECT_EQ(trait["genotypes_ranked"][0]["genotype"], "line 0");
  EXPECT_FALSE(combined["bartlett"]["p"].is_null());
  EXPECT_EQ(trait["analyses"][2]["where"], "E2");

  const std::string page = sandbox.Read("t.report.html");
  for (const char* words : {"height", "line 3", "AMMI", "Block/Env", "t.qqp"}) {
    EXPECT_NE(page.find(words), std::string::npos) << words;
  }
  RunJson(sandbox, {"t.txt"});
  EXPECT_EQ(sandbox.Read("t.report.html"), page);
}

// A plot without any value is left out, so that the mark of missing values never enters a mean.
TEST(Trial, MissingPlots) {
  const Sandbox sandbox;
  std::vector<Plot> plots = Plots(), present;
  const char* const marks[] = {"NA", "n/a", "", ".", "*", "-9999.00"};
  for (std::size_t k = 0; k < plots.size(); ++k) {
    const bool missing =
        k % 8 == 1 || k % 8 == 6;  // of each environment, which keeps an error degree of freedom
    if (!missing) present.push_back(plots[k]);
    if (missing) plots[k].yield = marks[k / 8 * 2 + k % 2];
  }
  const std::string heading = "env;gen;block;yield;height";
  sandbox.Write("all.csv", Table(plots, heading, ";", "\n", 0));
  sandbox.Write("present.csv", Table(present, heading, ";", "\n", 0));
  RunJson(sandbox, {"present.csv", "--traits", "yield"});
  const nlohmann::json alone = RunJson(sandbox, {"all.csv", "--traits", "yield", "-o", "alone"})["traits"][0];
  ExpectSameFiles(sandbox, "present", "alone");
  EXPECT_EQ(alone["missing"], 6);
  // Beside another trait the rows stay, and the user is told what that does.
  const CommandResult both = RunCommand(sandbox, {"trial", "all.csv"});
  EXPECT_EQ(both.code, 0);
  EXPECT_NE(both.err.find("yield: 6 missing plots beside other traits"), std::string::npos) << both.err;
  EXPECT_NE(both.out.find("  all environments      off by the missing plots"), std::string::npos) << both.out;
  for (Plot& plot : plots)
    plot.yield = plot.yield.empty() || plot.yield.find_first_of("0123456789") != 0 ? "-9999" : plot.yield;
  sandbox.Write("mark.txt", Table(plots, "env gen block yield height", " ", "\n", '"'));
  CallLibrary(sandbox, "mark.txt", 24, 5);
  ExpectSameFiles(sandbox, "mark", "all");
  RunJson(sandbox, {"all.csv", "--each-trait"});
  ExpectSameFiles(sandbox, "all.yield", "present");
  EXPECT_TRUE(std::filesystem::exists(sandbox.folder / "all.height.aov"));
}

// Genotypes of poor environments must not fall behind for it, nor for the cells that they lack.
TEST(Trial, RankingOfUnbalancedGenotypes) {
  const Sandbox sandbox;
  std::string text = "env,gen,rep,y\n";
  for (int r = 1; r <= 3; ++r) {
    for (const char* g : {"a", "b", "c"}) {
      const double jitter = 0.1 * r * (g[0] - 'a');
      if (g[0] != 'a')
        text += std::string("rich,") + g + "," + std::to_string(r) + "," +
                std::to_string(50 + (g[0] == 'b') + jitter) + "\n";
      text += std::string("poor,") + g + "," + std::to_string(r) + "," +
              std::to_string(10 + (g[0] == 'a') * 4 + jitter) + "\n";
      text += std::string("fair,") + g + "," + std::to_string(r) + "," +
              std::to_string(30 + (g[0] == 'a') * 4 - jitter) + "\n";
    }
  }
  sandbox.Write("t.csv", text);
  const nlohmann::json json = RunJson(sandbox, {"t.csv"});
  const nlohmann::json& trait = json["traits"][0];
  EXPECT_EQ(trait["ranked_by"], "adjusted mean");
  EXPECT_EQ(trait["genotypes_ranked"][0]["genotype"], "a");
  EXPECT_EQ(trait["empty_cells"], 1);
  EXPECT_NE(json["warnings"].dump().find("count them as -100"), std::string::npos);
}

TEST(Trial, RowsThatStandTwiceAreToldOf) {
  const std::string rows =
      "a,w1,c1,1,5,7\na,w1,c2,2,4,8\na,w1,c3,3,4,9\nb,w1,c1,1,6,9\nb,w1,c2,2,3,6\nb,w1,c3,3,5,5\n"
      "a,w2,c1,1,5,7\na,w2,c2,2,5,\na,w2,c3,3,3,6\nb,w2,c1,1,4,6\nb,w2,c2,2,6,5\nb,w2,c3,3,2,9\n";
  const struct {
    const char *added, *words;
    std::vector<std::string> arguments;
  } cases[] = {
      {"a,w1,c1,1,5,7\n", "1 row repeats an earlier row, values and all (a in block 1 at w1)", {}},
      {"a,w2,c2,2,5,NA\na,w2,c2,2,5,\nb,w2,c1,1,4,6\n",
       "3 rows repeat an earlier row, values and all (a in block 2 at w2, a in block 2 at w2, b in block 1 "
       "at w2)",
       {}},
      {"a,w1,c1,2,5,7\na,w1,c1,1,5,8\n", nullptr, {}},                     // block, a value
      {"a,w1,c1,1,,\na,w1,c1,1,,\n", nullptr, {}},                         // nothing measured
      {"a,w1,c1,1,5,7\n", nullptr, {"--block", "none", "--traits", "y"}},  // may come by chance
      {"a,w1,c1,1,5,7\n", "(a at w1)", {"--block", "none", "--traits", "y,z"}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.added);
    const Sandbox sandbox;
    sandbox.Write("t.csv", "gen,env,col,rep,y,z\n" + rows + test.added);
    std::vector<std::string> arguments = {"t.csv", "--no-report"};
    arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
    const std::string warnings = RunJson(sandbox, arguments)["warnings"].dump();
    if (test.words == nullptr) {
      EXPECT_EQ(warnings.find("an earlier row"), std::string::npos) << warnings;
    } else {
      EXPECT_NE(warnings.find(test.words), std::string::npos) << warnings;
    }
  }
}

struct WrongTable {
  std::string name, text;
  std::vector<std::string> arguments;
  int code;
  std::string words;
};

TEST(Trial, WrongTablesAreToldAndLeaveNothing) {
  const std::string four = "e g b y\nA g1 1 1\nA g1 2 2\nA g2 1 4\nA g2 2 3\n";
  const std::string h = "e,g,b,y\n";
  const WrongTable cases[] = {
      {"missing file", "", {}, 3, "there is no such file"},
      {"two classes", four, {"--classes", "2"}, 1, "take 3 to 10000 classes"},
      {"too many classes", four, {"--classes", "2000000000"}, 1, "take 3 to 10000 classes"},
      {"no such option", four, {"--blocks", "b"}, 2, "--blocks"},
      {"stem", four, {"-o", "nowhere/x"}, 3, "there is no folder nowhere"},
      {"blank file", "\n \n", {}, 1, "the file is blank"},
      {"heading only", h, {}, 1, "no row of a plot"},
      {"one word", "yield\n1\n", {}, 1, "one word only: yield"},
      {"no trait", "e g b\n1 2 3\n", {}, 1, "no column for a trait"},
      {"text only", "e;g;b;y\nA;g1;1;low\nA;g2;1;high\n", {}, 1, "no column has numbers"},
      {"two headings alike", "e,g,b,y,y\nA,a,1,2,3\n", {}, 1, "two columns have the heading \"y\""},
      {"no such trait",
       h + "A,a,1,2\n",
       {"--traits", "z"},
       1,
       "there is no column \"z\"; the columns are e, g, b, y"},
      {"key as trait", h + "A,a,1,2\n", {"--traits", "b"}, 1, "\"b\" is the environment, genotype or block"},
      {"one column twice",
       h + "A,a,1,2\n",
       {"--env", "e", "--gen", "e", "--block", "b"},
       1,
       "cannot be both environment and genotype"},
      {"short rows",
       h + "A,a,1,2\nA,a\n\nB,a,1,2,3\nA,a,2,5\n",
       {},
       1,
       "2 rows cannot be used (cells parted by commas):\n  line 3: 2 cells under 4 headings\n  line 5: 5 "
       "cells"},
      {"no genotype", h + "A,,1,2\n", {}, 1, "line 2: no genotype in column \"g\""},
      {"no block", h + "A,a,NA,2\n", {}, 1, "line 2: no block in column \"b\""},
      {"open quote", h + "A,\"a,1,2\n", {}, 1, "line 2: a quote \" is not closed"},
      {"text behind quote", h + "A,\"a\"b,1,2\n", {}, 1, "line 2: text follows a closing quote"},
      {"names cut alike",
       h + "A,abcdefghijklmnopqrst1,1,2\nA,abcdefghijklmnopqrst2,1,2\n",
       {},
       1,
       "\"abcdefghijklmnopqrst1\" and \"abcdefghijklmnopqrst2\" cannot be told apart"},
      {"no number",
       h + "A,a,1,2\nA,a,2,2x\nA,b,1,0x1\nA,b,2,3\n",
       {},
       1,
       "y: \"2x\" in line 3 is no number of the analysis (up to 1e15), and 1 more"},
      {"too large", h + "A,a,1,2\nA,a,2,1e16\nA,b,1,1\nA,b,2,3\n", {}, 1, "\"1e16\" in line 3"},
      {"infinite", h + "A,a,1,2\nA,a,2,inf\nA,b,1,1\nA,b,2,3\n", {}, 1, "\"inf\" in line 3"},
      {"constant", h + "A,a,1,7\nA,a,2,7\nA,b,1,NA\nA,b,2,7\n", {}, 1, "y: every plot has the same value, 7"},
      {"no values", h + "A,a,1,NA\nA,a,2,.\n", {}, 1, "y: no plot has a value"},
      {"lone plot",
       h + "A,a,1,1\nA,a,2,2\nB,a,1,5\nB,a,2,NA\n",
       {},
       1,
       "one plot only has a value in 1 environment (B), and two are needed"},
      {"one replicated environment",
       h + "A,a,1,1\nA,b,1,2\nA,a,2,2\nA,b,2,4\nB,a,1,5\nB,b,1,7\n",
       {},
       1,
       "of its 2 environments only A has error degrees of freedom"},
      {"gzip", "\x1f\x8b\x08 and so on", {}, 1, "gzip"},
      {"bad trait left",
       "e,g,b,y,z\nA,a,1,1,1\nA,b,1,2,1\nA,a,2,4,1\nA,b,2,3,1\n",
       {},
       1,
       "--skip-bad-traits leaves such traits out"},
      {"all traits bad", h + "A,a,1,7\nA,a,2,7\n", {"--skip-bad-traits"}, 1, "no trait is left"}};
  for (const WrongTable& wrong : cases) {
    SCOPED_TRACE(wrong.name);
    const Sandbox sandbox;
    if (wrong.code != 3 || !wrong.text.empty()) sandbox.Write("t.csv", wrong.text);
    const std::vector<std::string> before = sandbox.Names();
    std::vector<std::string> arguments = wrong.arguments;
    arguments.insert(arguments.begin(), {"trial", "t.csv"});
    const CommandResult result = RunCommand(sandbox, arguments);
    EXPECT_EQ(result.code, wrong.code) << result.out << result.err;
    EXPECT_NE(result.err.find(wrong.words), std::string::npos) << result.err;
    EXPECT_EQ(sandbox.Names(), before);
    EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
  }
}

// What the command takes for wrong really ends the library, and what it lets pass does not.
TEST(Trial, SkippedTraitsAndTheEdgeOfWhatIsGood) {
  const Sandbox sandbox;
  EXPECT_NE(RunCommand(sandbox, {"trial", "--help"}).out.find("tessarmont trial examples/trials/wheat2.txt"),
            std::string::npos);
  sandbox.Write("t.csv",
                "e,g,b,same,good,word,thin\nA,a,1,1,1,x,1\nA,b,1,1,2,3,2\nA,a,2,1,4,x,2\nA,b,2,1,3,5,3\n"
                "B,a,1,1,1,x,1\nB,b,1,1,3,3,\nB,a,2,1,4,x,\nB,b,2,1,6,5,\n");
  const nlohmann::json json = RunJson(sandbox, {"t.csv", "--skip-bad-traits"});
  std::vector<std::string> left;
  for (const auto& fault : json["left_out"]) left.push_back(fault["trait"]);
  std::sort(left.begin(), left.end());
  EXPECT_EQ(left, (std::vector<std::string>{"same", "thin", "word"}));
  ASSERT_EQ(json["traits"].size(), 1U);
  EXPECT_EQ(json["traits"][0]["name"], "good");

  // No environment has error degrees of freedom; two plots each; values that differ in the last bit; UTF-8.
  sandbox.Write(
      "edge.csv",
      "e,g,b,y\nA,a,1,1\nA,b,1,1.0000001\nB,a,1,1\nB,Kraj\xc3\xb3wka \xc5\x9bwi\xc4\x99tokrzyska,1,1\n");
  const CommandResult edge = RunCommand(sandbox, {"trial", "edge.csv"});
  EXPECT_EQ(edge.code, 0) << edge.err;
  EXPECT_NE(edge.err.find("no error degrees of freedom in environment A and 1 more"), std::string::npos)
      << edge.err;
  EXPECT_NE(edge.err.find("as \"Kraj\xc3\xb3wka \xc5\x9bwi\xc4\x99tok\""), std::string::npos) << edge.err;
}

TEST(Trial, AFullDiskLeavesNoResult) {
  const Sandbox sandbox;
  sandbox.Write("t.txt", Table(Plots(), "env gen block yield height", " ", "\n", '"'));
  const std::vector<std::string> before = sandbox.Names();
  const CommandResult full = RunCommand(sandbox, {"trial", "t.txt"}, 3000);
  EXPECT_EQ(full.code, 3) << full.out << full.err;
  EXPECT_EQ(sandbox.Names(), before);
}

}  // namespace
