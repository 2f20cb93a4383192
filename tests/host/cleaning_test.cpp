#include "host/cleaning.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "command_runner.h"
#include "simulated_cross.h"
#include "table_reader.h"

namespace {

using host::GenotypeTable;

// Doubled haploids; a row is a string of A, B and X.
GenotypeTable TableOf(const std::vector<std::string>& rows, std::vector<int32_t> anchors = {}) {
  GenotypeTable table;
  table.populationType = 3;
  table.lines = rows.front().size();
  for (std::size_t m = 0; m < rows.size(); ++m) {
    table.markers.push_back("m" + std::to_string(m + 1));
    for (char c : rows[m]) table.cells.push_back(host::CellOf(host::TableKind::Map, std::string(1, c)));
  }
  anchors.resize(rows.size(), 0);
  table.anchors = std::move(anchors);
  return table;
}

// "2>1" for each marker 2 that the kept marker with file number 1 stands for.
std::string Bins(const host::CleaningLedger& ledger) {
  std::string text;
  for (const host::BinnedMarker& binned : ledger.binned) {
    text += (text.empty() ? "" : " ") + std::to_string(binned.number) + ">" +
            std::to_string(ledger.kept[static_cast<std::size_t>(binned.kept - 1)]);
  }
  return text;
}

TEST(Cleaning, Bins) {
  const struct {
    const char* rule;
    std::vector<std::string> rows;
    std::vector<int32_t> anchors;
    std::string bins;
  } cases[] = {
      {"the first of equals stays", {"ABAB", "ABAB", "AABB", "ABAB"}, {}, "2>1 4>1"},
      {"the one with least missing stays", {"ABXB", "ABAB", "AABB"}, {}, "1>2"},
      {"equal with the same missing", {"ABXBB", "ABXBB", "AABBA"}, {}, "2>1"},
      {"one differing line", {"ABAB", "ABAA"}, {}, ""},
      {"a genotype where the other has none", {"ABXB", "XBAB"}, {}, ""},
      {"two bins could take it", {"ABAB", "ABAA", "ABAX"}, {}, ""},
      {"nothing known at all", {"ABAB", "BBAA", "XXXX"}, {}, ""},
      {"different anchor groups", {"ABAB", "ABAB", "ABAB"}, {1, 2, 1}, "3>1"},
      {"a bin has one anchor group", {"ABAB", "ABAB", "ABAB"}, {0, 2, 3}, "2>1"},
  };
  for (const auto& test : cases) {
    const GenotypeTable table = TableOf(test.rows, test.anchors);
    const host::CleaningLedger ledger = host::CleanMarkers(table, {.bin = true});
    EXPECT_EQ(Bins(ledger), test.bins) << test.rule;
    EXPECT_EQ(ledger.kept.size() + ledger.binned.size(), table.markers.size()) << test.rule;
  }
  // The kept marker takes over the group of its bin.
  const GenotypeTable table = TableOf({"ABAB", "ABAB"}, {0, 5});
  EXPECT_EQ(host::KeptTable(table, host::CleanMarkers(table, {.bin = true})).anchors,
            std::vector<int32_t>{5});
}

TEST(Cleaning, MissingShareAtTheLimitStays) {
  const GenotypeTable table = TableOf({"ABABABABAB", "XBABABABAB", "XXBABABABA", "XXXABABABA"});
  const host::CleaningLedger ledger = host::CleanMarkers(table, {.maxMissing = 0.2});
  EXPECT_EQ(ledger.kept, (std::vector<int32_t>{1, 2, 3}));
  ASSERT_EQ(ledger.tooMissing.size(), 1U);
  EXPECT_EQ(ledger.tooMissing[0].reason, "missing 0.3 above 0.2");
}

// A file whose second half repeats the first under other names, with some genotypes taken out.
std::string Doubled(const std::string& text) {
  const std::vector<std::string> lines = SplitAt(text, '\n');
  std::string rows, anchors, copies, copiedAnchors;
  for (std::size_t i = 6; i < lines.size(); ++i) {
    if (!lines[i].starts_with("c")) continue;
    const std::size_t blank = lines[i].find(' ');
    std::string copy = "d" + lines[i].substr(1, blank - 1) + lines[i].substr(blank);
    if (lines[i].size() < blank + 4) {
      anchors += lines[i] + "\n";
      copiedAnchors += copy + "\n";
      continue;
    }
    copy[blank + 1] = copy[blank + 5] = 'X';
    rows += lines[i] + "\n";
    copies += copy + "\n";
  }
  const auto markers = static_cast<std::size_t>(std::count(anchors.begin(), anchors.end(), '\n'));
  return "3\n2\n2\n" + std::to_string(2 * markers) + "\n" + lines[5] + "\n" + copies + rows + copiedAnchors +
         anchors;
}

TEST(Cleaning, BinnedMarkersStandAtTheirPlace) {
  const Sandbox sandbox;
  sandbox.Write("plain.map", MapFileText({.markersPerChromosome = {8, 6}, .lines = 200}));
  sandbox.Write("x.map", Doubled(sandbox.Read("plain.map")));
  ASSERT_EQ(RunCommand(sandbox, {"map", "plain.map", "-o", "plain", "--quiet"}).code, 0);
  const CommandResult result = RunCommand(sandbox, {"map", "x.map", "--bin", "--json"});
  ASSERT_EQ(result.code, 0) << result.err;
  // The map is that of the kept markers.
  EXPECT_EQ(sandbox.Read("x.sdl"), sandbox.Read("plain.sdl"));
  const std::vector<TableRow> rows = TableRows(sandbox.Read("x.map.tsv"));
  ASSERT_EQ(rows.size(), 28U);
  for (std::size_t i = 0; i < rows.size(); i += 2) {
    const TableRow &kept = rows[i], &other = rows[i + 1];
    EXPECT_EQ(other.at("marker"), "d" + kept.at("marker").substr(1));
    EXPECT_EQ(other.at("position"), kept.at("position"));
    EXPECT_EQ(other.at("bin"), kept.at("marker"));
    EXPECT_EQ(kept.at("bin"), kept.at("marker"));
    EXPECT_EQ(kept.at("others"), other.at("marker"));
    EXPECT_EQ(other.at("missing"), "0.0100");
  }
  EXPECT_NE(result.err.find("28 markers read, 14 kept"), std::string::npos) << result.err;
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["markers"], 14);
  EXPECT_EQ(json["cleaning"]["binned"].size(), 14U);
  for (const auto& group : json["groups"]) {
    for (const auto& marker : group["markers"])
      EXPECT_GT(marker["number"], 14) << "the number in the file given";
  }
  EXPECT_EQ(TableRows(sandbox.Read("x.dropped.tsv")).size(), 14U);
  EXPECT_EQ(TableRows(sandbox.Read("x.dropped.tsv"))[0].at("reason").find("bin of c"), 0U);
  // A trusted order may name a binned marker; the kept one stands for it.
  sandbox.Write("frame.txt", "d1m07\nd1m02\nc1m04\n");
  sandbox.Write("groups.tsv", "d1m01\tfirst\n");
  const CommandResult named = RunCommand(sandbox, {"map", "x.map", "--bin", "--quiet", "--anchor-order",
                                                   "frame.txt", "--anchors", "groups.tsv"});
  ASSERT_EQ(named.code, 0) << named.err;
  const auto groups = MarkersByGroup(TableRows(sandbox.Read("x.map.tsv")));
  const std::vector<std::string>& first = groups.at("first");
  EXPECT_LT(std::find(first.begin(), first.end(), "c1m07"), std::find(first.begin(), first.end(), "c1m02"));
  // One that is left out is passed over.
  const CommandResult dropped =
      RunCommand(sandbox, {"map", "x.map", "--max-missing", "0", "--quiet", "--anchor-order", "frame.txt"});
  ASSERT_EQ(dropped.code, 0) << dropped.err;
  EXPECT_EQ(TableRows(sandbox.Read("x.map.tsv")).size(), 14U);
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
}

TEST(Cleaning, SegregationIsTheLibrarysOwn) {
  for (const char* kind : {"map", "cdm", "plm"}) {
    SCOPED_TRACE(kind);
    const Sandbox sandbox;
    const std::string file = std::string("x.") + kind;
    std::string text = MapFileText({.markersPerChromosome = {12, 10}, .lines = 80});
    if (file == "x.cdm") text = ClonalFileText({.markersPerChromosome = {12, 10}, .lines = 80}).text;
    if (file == "x.plm") text = MultiParentFileText({.markersPerChromosome = {12, 10}, .lines = 80});
    sandbox.Write(file, text);
    ASSERT_EQ(RunCommand(sandbox, {"map", file, "--quiet", "-o", "all"}).code, 0);
    std::map<std::string, bool> distorted;
    for (const TableRow& row : TableRows(sandbox.Read("all.map.tsv"))) {
      distorted[row.at("marker")] = std::stod(row.at("segregation_p")) < 0.5;
    }
    const CommandResult result = RunCommand(sandbox, {"map", file, "--min-segregation-p", "0.5", "-o", "y"});
    ASSERT_EQ(result.code, 0) << result.err;
    std::map<std::string, bool> dropped;
    for (const TableRow& row : TableRows(sandbox.Read("y.map.tsv"))) dropped[row.at("marker")] = false;
    for (const TableRow& row : TableRows(sandbox.Read("y.dropped.tsv"))) {
      EXPECT_EQ(row.at("reason").find("segregation p 0."), 0U) << row.at("reason");
      dropped[row.at("marker")] = true;
    }
    EXPECT_EQ(dropped, distorted);
    EXPECT_NE(result.out.find("cleaning: 22 markers read"), std::string::npos) << result.out;
    EXPECT_EQ(result.out.find("segregation p below"), std::string::npos)
        << "the names stand on standard error";
    EXPECT_NE(result.err.find("segregation p below"), std::string::npos) << result.err;
  }
}

// The library refuses such a file; another fault beside still ends the run.
TEST(Cleaning, LeavesOutMarkersWithoutAnyGenotype) {
  const Sandbox sandbox;
  const std::string head = "3\n2\n2\n4\n6\n", anchors = "m1 0\nm2 0\nm3 0\nm4 0\n";
  const std::string rows = "m1 A A B B A B\nm2 X X X X X X\nm3 A A B B A B\n";
  sandbox.Write("empty.map", head + rows + "m4 A A B B B B\n" + anchors);
  sandbox.Write("worse.map", head + rows + "m4 A A Q B B B\n" + anchors);
  EXPECT_EQ(RunCommand(sandbox, {"map", "empty.map", "--lod", "1"}).code, 1);
  const CommandResult kept = RunCommand(sandbox, {"map", "empty.map", "--lod", "1", "--max-missing", "0.9"});
  EXPECT_EQ(kept.code, 0) << kept.err;
  EXPECT_EQ(sandbox.Read("empty.dropped.tsv"), "marker\treason\nm2\tmissing 1 above 0.9\n");
  const CommandResult limit = RunCommand(sandbox, {"map", "empty.map", "--lod", "1", "--max-missing", "1"});
  EXPECT_EQ(limit.code, 1) << "a share of 1 is not above 1";
  EXPECT_NE(limit.err.find("empty.map, line 7"), std::string::npos) << limit.err;
  const CommandResult worse = RunCommand(sandbox, {"map", "worse.map", "--lod", "1", "--max-missing", "0.9"});
  EXPECT_EQ(worse.code, 1) << worse.out;
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
}

TEST(Cleaning, FaultsAndEmptyResults) {
  const Sandbox sandbox;
  sandbox.Write("x.map", "3\n2\n2\n2\n4\nm1 A A B B\nm2 A A B\nm1 0\nm2 0\n");
  sandbox.Write("y.map", "3\n2\n2\n2\n4\nm1 A A B X\nm2 A A B X\nm1 0\nm2 0\n");
  const CommandResult wrong = RunCommand(sandbox, {"map", "x.map", "--bin"});
  EXPECT_EQ(wrong.code, 1);
  EXPECT_NE(wrong.err.find("x.map, line 7: this line holds"), std::string::npos) << wrong.err;
  const CommandResult nothing = RunCommand(sandbox, {"map", "y.map", "--max-missing", "0.1"});
  EXPECT_EQ(nothing.code, 1);
  EXPECT_NE(nothing.err.find("y.map: cleaning leaves no marker"), std::string::npos) << nothing.err;
  EXPECT_EQ(RunCommand(sandbox, {"map", "y.map", "--max-missing", "1.5"}).code, 2);
  EXPECT_EQ(sandbox.Names().size(), 2U);
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
}

}  // namespace
