// `check` of files with a linkage map, and `gs`.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <regex>

#include "command_runner.h"

namespace {

// The examples of docs/formats.md by their extension; the first of a kind.
std::map<std::string, std::string> Examples() {
  std::ifstream file(std::filesystem::path(EXAMPLES_DIR) / "../docs/formats.md");
  const std::string document{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::regex fence("\n```([a-z]+)\n([^`]*)```\n");
  std::map<std::string, std::string> examples;
  for (std::sregex_iterator block(document.begin(), document.end(), fence), end; block != end; ++block) {
    examples.emplace((*block)[1], (*block)[2]);
  }
  return examples;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::size_t LineOf(const std::string& text, const std::string& words) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(text.find(words));
  return static_cast<std::size_t>(std::count(text.begin(), end, '\n')) + 1;
}

TEST(TraitCheck, TellsWhatAGoodFileHolds) {
  const Sandbox sandbox;
  const struct {
    const char* kind;
    const char* words;
  } cases[] = {
      {"bip",
       "good BIP file, 1 chromosome, 2 markers x 4 lines, 2 traits (height, yield), population 4 (RIL)"},
      {"met", "good MET file, 1 chromosome, 1 marker x 4 lines, 2 environments (spring, autumn)"},
      {"nam", "good NAM file, 1 chromosome, 1 marker x 5 lines, 2 families, 1 trait (yield)"},
      {"csl", "good CSL file, 2 markers x 4 lines, 1 trait, 1 environment, 2 replications, mapping"},
      {"sdl", "good SDL file, 2 chromosomes, 3 markers x 4 lines, population 7 (F2)"},
      {"cdq", "good CDQ file, 1 chromosome, 2 markers x 4 lines, 1 trait (yield), population 1 (clonal F1)"},
      {"plq", "good PLQ file, 1 chromosome, 1 marker x 4 lines, 1 trait (yield), population 4 (8PRIL)"},
      {"cmp", "good CMP file, 2 maps, 5 markers over all"},
  };
  const auto examples = Examples();
  for (const auto& test : cases) {
    SCOPED_TRACE(test.kind);
    const std::string name = std::string("in.") + test.kind;
    sandbox.Write(name, examples.at(test.kind));
    const CommandResult result = RunCommand(sandbox, {"check", name});
    EXPECT_EQ(result.code, 0) << result.out << result.err;
    EXPECT_NE(result.out.find(test.words), std::string::npos) << result.out;
  }
}

// One fault planted in an example: the report is the library's, the line is that of the fault.
TEST(TraitCheck, TellsTheLineOfAFault) {
  const Sandbox sandbox;
  const struct {
    const char* kind;
    std::string good, bad;
    const char* report;
    std::string at;  // first words of the line told
  } cases[] = {
      {"bip", "3.9 3.5", "NaN 3.5", "the value 'NaN' of 'yield' is not a number", "yield"},
      {"bip", "m2 1 6.3", "m2 2 6.3", "does not match", "m2 2 6.3"},
      {"met", "m1 A B", "m1 A Q", "Illegal Markertype", "m1 A Q"},
      {"nam", "b73xoh43 2", "b73xoh43 0", "family size out of range", "b73xoh43"},
      {"csl", "4.0 3.7", "4.0 high", "cannot read trait values", "yield_r2"},
      {"sdl", "m2 1 6.3", "m2 1 -6.3", "wrong order", "m1 1 0.0"},
      {"cdq", "AC AD BC", "AC AA BC", "illeagal marker in input file", "ABCD"},
      {"plq", "lg1 1", "lg1 0", "Number of Markers out of range", "lg1"},
  };
  const auto examples = Examples();
  for (const auto& test : cases) {
    SCOPED_TRACE(test.bad);
    const std::string name = std::string("in.") + test.kind;
    const std::string text = Replaced(examples.at(test.kind), test.good, test.bad);
    sandbox.Write(name, text);
    const CommandResult result = RunCommand(sandbox, {"check", "--json", name});
    EXPECT_EQ(result.code, 1) << result.out << result.err;
    const auto fault = nlohmann::json::parse(result.out)["files"][0]["faults"][0];
    EXPECT_NE(fault["report"][0].get<std::string>().find(test.report), std::string::npos) << fault;
    EXPECT_EQ(fault["lines"][0], LineOf(text, test.at)) << fault;
  }
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
}

TEST(Gs, TellsTraitsWarningsAndFaults) {
  const Sandbox sandbox;
  const std::string text = Examples().at("gs");
  const struct {
    const char* rule;
    std::string good, bad;
    int code;
    const char* words;  // on either stream
    std::vector<std::size_t> lines;
  } cases[] = {
      {"good", "m1", "m1", 0, "training population 3, breeding population 2, 1 trait\n  yield\n", {}},
      {"no trait", "1\n!Training m", "0\n!Training m", 1, "cannot read MarkerType!", {}},
      {"names differ", "m1 1 1", "mx 1 1", 0, "in the training population and \"mx\"", {10, 15}},
      {"training", "m2 2 2 0", "m2 2 x 0", 1, "cannot read MarkerType!", {11}},
      {"breeding", "m2 0 2", "m2 0 x", 1, "cannot read MarkerType!", {16}},
      {"phenotype", "3.9", "abc", 1, "cannot read PhenoType!", {13}},
      {"count",
       "!Breeding population size\n2",
       "!Breeding population size\ntwo",
       1,
       "for breeding population",
       {6}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.rule);
    sandbox.Write("in.gs", Replaced(text, test.good, test.bad));
    const CommandResult result = RunCommand(sandbox, {"gs", "in.gs"});
    EXPECT_EQ(result.code, test.code);
    EXPECT_NE((result.out + result.err).find(test.words), std::string::npos) << result.out << result.err;
    const CommandResult told = RunCommand(sandbox, {"gs", "in.gs", "--json"});
    EXPECT_EQ(told.code, test.code);
    const auto json = nlohmann::json::parse(told.out);
    EXPECT_EQ(json["good"], test.code == 0);
    const auto& list = json[test.code == 0 ? "warnings" : "faults"];
    if (!test.lines.empty()) {
      ASSERT_EQ(list.size(), 1U);
      EXPECT_EQ(list[0]["lines"], nlohmann::json(test.lines));
    }
  }
  EXPECT_EQ(sandbox.Names(), std::vector<std::string>{"in.gs"}) << "a file was left behind";
}

}  // namespace
