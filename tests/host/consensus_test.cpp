#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>

#include "command_runner.h"
#include "host/map_tables.h"
#include "host/order_agreement.h"

namespace host {
namespace {

// Five markers on the first map, four of them and a new one on the second, which runs the other way.
const std::string kReversed =
    "2\n1\n2\nnorth 5\nsouth 5\na 1 0\nb 1 10\nc 1 20\nd 1 30\ne 1 40\n"
    "e 2 0\nx 2 5\nd 2 10\nb 2 30\na 2 40\n";

TEST(Orders, AgreePairByPair) {
  const struct {
    const char* rule;
    std::vector<double> a, b;
    int64_t alike, opposite, conflicts;
    std::optional<double> tau;
  } cases[] = {
      {"same", {1, 2, 3}, {0, 5, 9}, 3, 0, 0, 1.0},
      {"turned", {1, 2, 3}, {9, 5, 0}, 0, 3, 0, -1.0},
      {"one pair swapped", {1, 2, 3, 4}, {1, 3, 2, 4}, 5, 1, 1, 4.0 / 6},
      {"turned, one pair swapped", {1, 2, 3, 4}, {4, 2, 3, 1}, 1, 5, 1, -4.0 / 6},
      {"a tie on one side", {1, 2, 3}, {0, 0, 1}, 2, 0, 0, 2 / std::sqrt(6.0)},
      {"all at one place", {1, 2}, {3, 3}, 0, 0, 0, std::nullopt},
      {"one marker", {1}, {3}, 0, 0, 0, std::nullopt},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.rule);
    const OrderAgreement agreement = CompareOrders(test.a, test.b);
    EXPECT_EQ(agreement.alike, test.alike);
    EXPECT_EQ(agreement.opposite, test.opposite);
    EXPECT_EQ(agreement.Conflicts(), test.conflicts);
    ASSERT_EQ(agreement.tau.has_value(), test.tau.has_value());
    EXPECT_NEAR(agreement.tau.value_or(9), test.tau.value_or(9), 1e-12);
  }
}

TEST(Consensus, JoinsMapsAndTellsWhereTheyDiffer) {
  const Sandbox sandbox;
  sandbox.Write("both.cmp", kReversed);
  const CommandResult result = RunCommand(sandbox, {"consensus", "both.cmp"});
  ASSERT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(sandbox.Names(),
            (std::vector<std::string>{"both.cmp", "both.cmp.log", "both.consensus.tsv", "both.report.html"}));
  EXPECT_EQ(sandbox.Read("both.consensus.tsv"),
            "marker\tplace\tposition\tnorth_place\tnorth_position\tsouth_place\tsouth_position\n"
            "a\t1\t0.0000\t1\t0.0000\t5\t40.0000\n"
            "b\t2\t10.0000\t2\t10.0000\t4\t30.0000\n"
            "c\t3\t20.0000\t3\t20.0000\t\t\n"
            "d\t4\t30.0000\t4\t30.0000\t3\t10.0000\n"
            "x\t5\t35.0000\t\t\t2\t5.0000\n"
            "e\t6\t40.0000\t5\t40.0000\t1\t0.0000\n");
  EXPECT_NE(result.out.find("tau -1.0000, reversed"), std::string::npos) << result.out;
  EXPECT_EQ(result.out.find("conflict"), std::string::npos) << "a map that runs the other way is no conflict";
  EXPECT_NE(sandbox.Read("both.cmp.log").find(" AnchorOrder    MarkerID  AnchorInfo    Position"),
            std::string::npos);
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
}

TEST(Consensus, RefusesAndWarns) {
  const Sandbox sandbox;
  sandbox.Write("apart.cmp", "2\n1\n2\nn 1\ns 1\na 1 0\nb 2 0\n");
  sandbox.Write("falls.cmp", "2\n1\n1\nn 2\na 1 5\nb 1 0\n");
  sandbox.Write("odd.tsv", "group\tname\nLG1\ta\n");
  sandbox.Write("word.tsv", "group\tmarker\tposition\nLG1\ta\tx\n");
  sandbox.Write("twice.tsv", "group\tmarker\tposition\nLG1\ta\t0\nLG2\ta\t0\n");
  sandbox.Write("one.map.tsv", "group\tmarker\tposition\nLG1\ta\t0\nLG1\tb\t5\n");
  sandbox.Write("other.map.tsv", "group\tmarker\tposition\nLG1\ty\t0\nLG1\tz\t5\n");
  const auto before = sandbox.Names();
  const struct {
    std::vector<std::string> arguments;
    int code;
    const char* words;
  } cases[] = {
      {{}, 2, "either FILE or --build"},
      {{"apart.cmp", "--build", "one.map.tsv"}, 2, "either FILE or --build"},
      {{"one.map.tsv"}, 2, "map tables are given with --build"},
      {{"apart.cmp"}, 1, "No common markers are found on all maps!"},
      {{"falls.cmp"}, 1, "falls.cmp, line 5 and line 6"},
      {{"missing.cmp"}, 3, "there is no such file"},
      {{"apart.cmp", "-o", "missing/x"}, 3, "there is no folder missing"},
      {{"--build", "odd.tsv"}, 1, "no column \"marker\""},
      {{"--build", "word.tsv"}, 1, "word.tsv, line 2: \"x\" is no position"},
      {{"--build", "twice.tsv"}, 1, "twice.tsv, line 3: marker a stands twice"},
  };
  for (const auto& test : cases) {
    std::vector<std::string> arguments{"consensus"};
    arguments.insert(arguments.end(), test.arguments.begin(), test.arguments.end());
    const CommandResult result = RunCommand(sandbox, arguments);
    EXPECT_EQ(result.code, test.code) << test.words << result.err;
    EXPECT_NE(result.err.find(test.words), std::string::npos) << result.err;
  }
  EXPECT_EQ(sandbox.Names(), before) << "a file was left behind";
}

TEST(Consensus, BuildsOneFileAChromosome) {
  const Sandbox sandbox;
  sandbox.Write("first.map.tsv",
                "group\tmarker\tposition\nLG1\ta 1\t0\nLG1\tb\t10\nLG1\tc\t20\nLG1\td\t30\n"
                "LG2\tp\t0\nLG2\tq\t7\nunlinked\tlost\t\n");
  // The names of its groups say nothing; c and b have changed places.
  sandbox.Write(
      "second.map.tsv",
      "group\tmarker\tposition\nLG1\tq\t0\nLG1\tp\t8\nLG2\ta 1\t0\nLG2\tc\t9\nLG2\tb\t21\nLG2\td\t30\n"
      "LG3\tr\t0\n");
  const CommandResult result = RunCommand(
      sandbox, {"consensus", "--build", "first.map.tsv", "second.map.tsv", "-o", "both", "--json"});
  ASSERT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(sandbox.Names(),
            (std::vector<std::string>{"both.LG1.cmp", "both.LG2.cmp", "both.cmp.log", "both.consensus.tsv",
                                      "both.report.html", "both.second-LG3.cmp", "first.map.tsv",
                                      "second.map.tsv"}));
  const auto json = nlohmann::json::parse(result.out);
  ASSERT_EQ(json["groups"].size(), 3U);
  const auto& first = json["groups"][0];
  EXPECT_EQ(first["name"], "LG1");
  EXPECT_EQ(first["markers"].size(), 4U);
  EXPECT_EQ(first["markers"][0]["marker"], "a 1");
  ASSERT_EQ(first["conflicts"].size(), 1U);
  EXPECT_EQ(first["conflicts"][0]["pairs_opposite"], 1);
  EXPECT_EQ(json["groups"][1]["maps"][1]["reversed"], true);
  EXPECT_EQ(json["groups"][2]["maps"].size(), 1U);
  EXPECT_EQ(json["warnings"],
            nlohmann::json::array({"second: 1 group shares no marker with earlier maps: LG3"}));
  EXPECT_NE(sandbox.Read("both.consensus.tsv").find("second-LG3\tr\t1\t0.0000\t\t\t1\t0.0000\n"),
            std::string::npos);
  EXPECT_EQ(RunCommand(sandbox, {"check", "both.LG1.cmp"}).code, 0);
}

TEST(Consensus, AGroupGoesWhereItSharesMost) {
  const std::vector<MapTableFile> tables = {
      {"A", {{"1", {{"a", "0", 0}, {"b", "1", 1}}}, {"2", {{"c", "0", 0}, {"d", "1", 1}, {"e", "2", 2}}}}},
      {"B", {{"1", {{"a", "0", 0}, {"c", "1", 1}, {"d", "2", 2}}}, {"2", {{"e", "0", 0}}}}},
  };
  std::vector<std::string> warnings;
  const std::vector<Chromosome> chromosomes = MatchGroups(tables, warnings);
  ASSERT_EQ(chromosomes.size(), 2U);
  EXPECT_EQ(chromosomes[0].sources.size(), 1U);
  ASSERT_EQ(chromosomes[1].sources.size(), 2U);
  EXPECT_EQ(chromosomes[1].sources[1].group, 0U);
  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_NE(warnings[0].find("B 2 was left out"), std::string::npos) << warnings[0];
}

}  // namespace
}  // namespace host
