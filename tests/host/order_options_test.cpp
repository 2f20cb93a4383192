#include "host/order_options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "command_runner.h"
#include "simulated_cross.h"
#include "table_reader.h"

namespace {

std::vector<std::string> FileOrder(const std::string& text, std::vector<std::string> names) {
  std::sort(names.begin(), names.end(), [&](const std::string& a, const std::string& b) {
    return text.find("\n" + a + " ") < text.find("\n" + b + " ");
  });
  return names;
}

TEST(OrderOptions, KeepOrderTakesTheFilesOwn) {
  const Sandbox sandbox;
  const std::string text = MapFileText({.markersPerChromosome = {9, 6}});
  sandbox.Write("x.map", text);
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.map", "--keep-order"}).code, 0);
  const std::vector<TableRow> rows = TableRows(sandbox.Read("x.map.tsv"));
  for (const auto& [group, markers] : MarkersByGroup(rows)) {
    EXPECT_EQ(markers, FileOrder(text, markers)) << group;
    EXPECT_LT(OrderAgreementOf(markers), 1) << "the file is shuffled";
  }
  sandbox.Write("frame.txt", "c1m01\n");
  EXPECT_EQ(RunCommand(sandbox, {"map", "x.map", "--keep-order", "--anchor-order", "frame.txt"}).code, 2);
}

TEST(OrderOptions, JobsChangeNothing) {
  const Sandbox sandbox;
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {30, 5, 12, 8, 20}}));
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.map", "-o", "one"}).code, 0);
  for (const char* jobs : {"2", "7"}) {
    ASSERT_EQ(RunCommand(sandbox, {"map", "x.map", "-o", "more", "--jobs", jobs}).code, 0);
    for (const char* extension : {".map.tsv", ".bip", ".met", ".sdl"}) {
      EXPECT_EQ(sandbox.Read(std::string("one") + extension), sandbox.Read(std::string("more") + extension));
    }
  }
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
  EXPECT_EQ(RunCommand(sandbox, {"map", "x.map", "--jobs", "0"}).code, 2);
}

TEST(OrderOptions, AnchorTableRulesTheGroups) {
  const Sandbox sandbox;
  // The file's own anchors would join the first two chromosomes.
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {5, 6, 7, 4}, .anchors = {31, 31, 4}}));
  sandbox.Write("groups.tsv",
                "marker\tgroup\nc1m02\tchr 1A\n!remark\n\nc2m03\t7\r\nc3m01\tchr 1A\nc3m02\t-\nc2m04\t7\n");
  const CommandResult result = RunCommand(sandbox, {"map", "x.map", "--anchors", "groups.tsv", "--quiet"});
  ASSERT_EQ(result.code, 0) << result.err;
  std::map<std::string, std::size_t> sizes;
  for (const auto& [group, markers] : MarkersByGroup(TableRows(sandbox.Read("x.map.tsv")))) {
    sizes[group] = markers.size();
  }
  EXPECT_EQ(sizes, (std::map<std::string, std::size_t>{{"chr 1A", 12}, {"G7", 6}, {"LG1", 4}}));

  const struct {
    const char *text, *words;
  } wrong[] = {{"c1m01 3\n", "line 1: a marker name, a tab and a group"},
               {"c1m01\t3\n\nc9m01\t3\n", "line 3: no marker is named \"c9m01\""},
               {"c1m01\t3\nc1m01\t4\n", "line 2: the marker has another group on line 1"},
               {"c1m01\t-3\n", "line 1: a group number is 0 or more"},
               {"c1m01\tunlinked\n", "line 1: \"unlinked\" cannot be a group's name"},
               {"c1m01\ta name of 20 letters\n", "at most 19 characters"},
               {"c1m01\t3\t4\n", "line 1: more than two columns"}};
  for (const auto& test : wrong) {
    sandbox.Write("wrong.tsv", test.text);
    const CommandResult refused = RunCommand(sandbox, {"map", "x.map", "--anchors", "wrong.tsv", "-o", "y"});
    EXPECT_EQ(refused.code, 1) << test.text;
    EXPECT_NE(refused.err.find(test.words), std::string::npos) << refused.err;
  }
  EXPECT_FALSE(std::filesystem::exists(sandbox.folder / "y.map.tsv"));
}

// A name of the table can be what another group would be called.
TEST(OrderOptions, GroupNamesStayApart) {
  const Sandbox sandbox;
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {5, 9}}));
  sandbox.Write("groups.tsv", "c1m01\tLG1\n");
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.map", "--anchors", "groups.tsv", "--quiet"}).code, 0);
  const auto groups = MarkersByGroup(TableRows(sandbox.Read("x.map.tsv")));
  EXPECT_EQ(groups.at("LG1").size(), 5U);
  EXPECT_EQ(groups.at("LG2").size(), 9U);
}

TEST(OrderOptions, SweepAgreesWithTheMapsItForetells) {
  const Sandbox sandbox;
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {9, 7, 1}, .lines = 60, .step = 15}));
  const CommandResult sweep = RunCommand(sandbox, {"map", "x.map", "--sweep", "--min-group", "3", "--quiet"});
  ASSERT_EQ(sweep.code, 0) << sweep.err;
  EXPECT_EQ(sandbox.Names(), std::vector<std::string>{"x.map"});
  std::set<std::string> seen;
  for (const TableRow& row : TableRows(sweep.out)) {
    if (!seen.insert(row.at("sizes")).second) continue;  // groups that another cut gave
    const CommandResult map = RunCommand(
        sandbox, {"map", "x.map", "--lod", row.at("lod"), "--min-group", "3", "--json", "-o", "y"});
    if (row.at("groups") == "0") {
      EXPECT_EQ(map.code, 1);
      continue;
    }
    ASSERT_EQ(map.code, 0) << map.err;
    const auto json = nlohmann::json::parse(map.out);
    std::vector<std::size_t> sizes;
    for (const auto& group : json["groups"]) sizes.push_back(group["markers"].size());
    std::sort(sizes.rbegin(), sizes.rend());
    std::string words;
    for (std::size_t size : sizes) words += (words.empty() ? "" : ",") + std::to_string(size);
    EXPECT_EQ(words, row.at("sizes")) << "LOD " << row.at("lod");
    EXPECT_EQ(std::to_string(json["unlinked"].size()), row.at("unlinked"));
  }
  EXPECT_GE(seen.size(), 4U);
  const auto json = nlohmann::json::parse(RunCommand(sandbox, {"map", "x.map", "--sweep", "--json"}).out);
  EXPECT_EQ(json["sweep"].size(), 29U);
}

TEST(OrderOptions, GroupsChoosesTheCut) {
  const Sandbox sandbox;
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {9, 7, 8}}));
  const CommandResult three = RunCommand(sandbox, {"map", "x.map", "--groups", "3"});
  ASSERT_EQ(three.code, 0) << three.err;
  EXPECT_NE(three.out.find("gives 3 groups of 2 markers or more, as every cut above"), std::string::npos)
      << three.out;
  EXPECT_EQ(MarkersByGroup(TableRows(sandbox.Read("x.map.tsv"))).size(), 3U);
  const CommandResult none = RunCommand(sandbox, {"map", "x.map", "--groups", "20", "-o", "y"});
  EXPECT_EQ(none.code, 1);
  EXPECT_NE(none.err.find("no LOD cut gives 20 groups of 2 markers or more; the nearest is"),
            std::string::npos)
      << none.err;
  EXPECT_EQ(RunCommand(sandbox, {"map", "x.map", "--groups", "3", "--lod", "4"}).code, 2);
  EXPECT_FALSE(std::filesystem::exists(sandbox.folder / "y.map.tsv"));
}

// Four markers in a chain: joins at LOD 9, 6 and 3.
TEST(LodSweep, RangesAndCuts) {
  const std::vector<int32_t> anchors(4, 0);
  const std::vector<host::Join> joins{{1, 2, 9}, {3, 4, 6}, {2, 3, 3}};
  const auto ranges = host::CutRanges(anchors, joins, 2);
  std::vector<int32_t> groups;
  groups.reserve(ranges.size());
  for (const host::CutRange& range : ranges) groups.push_back(range.groups);
  EXPECT_EQ(groups, (std::vector<int32_t>{0, 1, 2, 1}));
  const auto two = host::RangeFor(ranges, 2);
  ASSERT_TRUE(two.has_value());
  EXPECT_EQ(two->low, 3);
  EXPECT_EQ(two->high, 6);
  EXPECT_EQ(host::CutIn(*two), 4.5F);
  EXPECT_EQ(host::RangeFor(ranges, 1)->high, 9) << "the wider one, the higher of equals";
  EXPECT_FALSE(host::RangeFor(ranges, 3).has_value());
  // A cut lies within a range that is narrower than two decimals.
  const float cut = host::CutIn({3.0001F, 3.0004F, 1});
  EXPECT_GT(cut, 3.0001F);
  EXPECT_LE(cut, 3.0004F);
  // With single markers as groups every join counts down.
  EXPECT_EQ(host::CutRanges(anchors, joins, 1).front().groups, 4);
}

}  // namespace
