#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "command_runner.h"
#include "host/bridged_distance.h"
#include "simulated_cross.h"
#include "table_reader.h"

namespace {

// Every group is one chromosome and in order, but for a few markers.
void ExpectTrueGroups(const std::vector<TableRow>& rows, const std::vector<std::size_t>& sizes) {
  std::vector<std::size_t> found;
  for (const auto& [group, markers] : MarkersByGroup(rows)) {
    if (group == "unlinked") continue;
    found.push_back(markers.size());
    EXPECT_GE(OrderAgreementOf(markers), 0.97) << testing::PrintToString(markers);
    for (const std::string& marker : markers) {
      EXPECT_EQ(marker.substr(0, 3), markers.front().substr(0, 3)) << group;
    }
  }
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, sizes);
}

// The positions of a marker in a summary file: chromosome, name, marker, interval, position, frequency.
std::map<std::string, double> SummaryPositions(const std::string& text) {
  std::map<std::string, double> positions;
  std::stringstream stream(text);
  std::string line;
  std::getline(stream, line);
  while (std::getline(stream, line) && !line.empty()) {
    std::stringstream words(line);
    std::string number, group, marker;
    double interval = 0, position = 0;
    if (words >> number >> group >> marker >> interval >> position) positions[marker] = position;
  }
  return positions;
}

void ExpectPositionsOf(const std::vector<TableRow>& rows, const std::string& column,
                       const std::string& text) {
  const std::map<std::string, double> told = SummaryPositions(text);
  std::size_t placed = 0;
  for (const TableRow& row : rows) {
    if (row.at(column).empty()) continue;
    ++placed;
    ASSERT_TRUE(told.contains(row.at("marker"))) << row.at("marker");
    EXPECT_NEAR(std::stod(row.at(column)), told.at(row.at("marker")), 0.0051) << row.at("marker");
  }
  EXPECT_EQ(placed, told.size()) << column;
}

// Phases are relative: of the markers of a group all agree with the truth or all are exchanged.
void ExpectPhases(const std::vector<TableRow>& rows, const std::string& column, const std::string& asWritten,
                  const std::map<std::string, bool>& flipped) {
  std::map<std::string, std::vector<bool>> agreement;
  for (const TableRow& row : rows) {
    if (row.at(column).empty()) continue;
    agreement[row.at("group")].push_back((row.at(column) != asWritten) == flipped.at(row.at("marker")));
  }
  EXPECT_EQ(agreement.size(), 2U);
  for (const auto& [group, agrees] : agreement) {
    const auto same = std::count(agrees.begin(), agrees.end(), agrees.front());
    EXPECT_EQ(static_cast<std::size_t>(same), agrees.size()) << group << " " << column;
  }
}

// A written project file is good once it has a trait; its phases are known, as in a double cross.
void ExpectGoodWithTrait(const Sandbox& sandbox, const std::string& file, int lines) {
  std::string text = sandbox.Read(file);
  const auto put = [&](const std::string& heading, char value) {
    const std::size_t at = text.find("  " + heading);
    ASSERT_NE(at, std::string::npos) << heading;
    text[at - 1] = value;
  };
  put("!Number of traits", '1');
  if (file.ends_with(".cdq")) put("!Mapping Population Type", '2');
  text += "yield";
  for (int line = 0; line < lines; ++line) text += " 1.5";
  sandbox.Write(file, text + "\n");
  const CommandResult check = RunCommand(sandbox, {"check", file});
  EXPECT_EQ(check.code, 0) << check.out;
}

TEST(ClonalMap, RecoversOrderPositionsAndPhases) {
  for (const bool doubleCross : {false, true}) {
    SCOPED_TRACE(doubleCross ? "double cross" : "clonal F1");
    const Sandbox sandbox;
    const ClonalText cross =
        ClonalFileText({.markersPerChromosome = {15, 20, 1}, .lines = 300, .doubleCross = doubleCross});
    sandbox.Write("x.cdm", cross.text);
    const CommandResult result =
        RunCommand(sandbox, {"map", "x.cdm", "--lod", "5", "--tables", "rec,dis", "--no-report"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err.find("set its population type to 2") != std::string::npos, !doubleCross)
        << result.err;
    EXPECT_NE(result.out.find(doubleCross ? "population 2 (double cross)" : "population 1 (clonal F1)"),
              std::string::npos)
        << result.out;
    EXPECT_EQ(sandbox.Names(),
              (std::vector<std::string>{"x.cdm", "x.cdq", "x.dis", "x.disf", "x.dism", "x.hap", "x.map.tsv",
                                        "x.rec", "x.recf", "x.recm", "x.sum", "x.sumf", "x.summ"}));
    const std::vector<TableRow> rows = TableRows(sandbox.Read("x.map.tsv"));
    ASSERT_EQ(rows.size(), 36U);
    ExpectTrueGroups(rows, {15, 20});
    ExpectPositionsOf(rows, "position", sandbox.Read("x.sum"));
    ExpectPositionsOf(rows, "female_position", sandbox.Read("x.sumf"));
    ExpectPositionsOf(rows, "male_position", sandbox.Read("x.summ"));
    ExpectPhases(rows, "female_phase", "AB", cross.flippedAB);
    ExpectPhases(rows, "male_phase", "CD", cross.flippedCD);
    for (const TableRow& row : rows) {
      const std::string& category = row.at("category");
      const bool placed = row.at("group") != "unlinked";
      EXPECT_EQ(row.at("female_position").empty(), !placed || category == "A=B");
      EXPECT_EQ(row.at("male_position").empty(), !placed || category == "C=D");
      EXPECT_EQ(row.at("female_phase").empty(), row.at("female_position").empty());
      EXPECT_EQ(row.at("male_phase").empty(), row.at("male_position").empty());
      const bool deleted = sandbox.Read("x.sum").find("1 " + row.at("marker") + " ") != std::string::npos;
      EXPECT_TRUE(placed || deleted);
    }
    EXPECT_NEAR(std::stod(rows[19].at("position")), 95, 20);  // nineteen steps of 5 cM
    ExpectGoodWithTrait(sandbox, "x.cdq", 300);
    const CommandResult input = RunCommand(sandbox, {"check", "x.cdm"});
    EXPECT_EQ(input.out.find("x.cdm: good CDM file, 36 markers x 300 lines"), 0U) << input.out;
  }
}

TEST(MultiParentMap, RecoversGroupsAndOrder) {
  const Sandbox sandbox;
  sandbox.Write("x.plm", MultiParentFileText({.markersPerChromosome = {14, 20, 1}, .lines = 300}));
  const CommandResult result = RunCommand(sandbox, {"map", "x.plm", "--lod", "5", "--json", "--no-report"});
  ASSERT_EQ(result.code, 0) << result.err;
  EXPECT_EQ(sandbox.Names(), (std::vector<std::string>{"x.map.tsv", "x.plm", "x.plq", "x.sum"}));
  const std::vector<TableRow> rows = TableRows(sandbox.Read("x.map.tsv"));
  ASSERT_EQ(rows.size(), 35U);
  ExpectTrueGroups(rows, {14, 20});
  ExpectPositionsOf(rows, "position", sandbox.Read("x.sum"));
  EXPECT_EQ(rows[0].at("pattern").size(), 4U);
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["module"], "PLM");
  EXPECT_EQ(json["population"]["name"], "4PDH");
  EXPECT_EQ(json["unlinked"].size(), 1U);
  ExpectGoodWithTrait(sandbox, "x.plq", 300);
  EXPECT_EQ(RunCommand(sandbox, {"check", "x.plm"}).code, 0);
}

// Pairs of two alleles can show a high LOD by chance of the model alone; groups must not run together.
TEST(MultiParentMap, MarkersOfFewAllelesKeepTheirChromosomes) {
  const Sandbox sandbox;
  const std::string text =
      MultiParentFileText({.markersPerChromosome = {12, 12, 12}, .lines = 200, .step = 4});
  std::string twoAlleles;  // all markers lose their third and fourth allele, one letter each
  for (std::string line : SplitAt(text, '\n')) {
    if (line.starts_with("ABCD ")) {
      const bool single = line.find("m01") != std::string::npos || line.find("m05") != std::string::npos;
      line = (single ? "ABBB" : "ABAA") + line.substr(4);
      const std::size_t genotypes = line.find(' ', 5);
      for (std::size_t at = genotypes; at < line.size(); ++at) {
        if (line[at] == 'C' || line[at] == 'D') line[at] = single ? 'B' : 'A';
      }
    }
    twoAlleles += line + "\n";
  }
  twoAlleles.pop_back();
  sandbox.Write("x.plm", twoAlleles);
  const CommandResult result = RunCommand(sandbox, {"map", "x.plm", "--lod", "5", "--quiet"});
  ASSERT_EQ(result.code, 0) << result.err;
  for (const auto& [group, markers] : MarkersByGroup(TableRows(sandbox.Read("x.map.tsv")))) {
    if (group == "unlinked") continue;
    for (const std::string& marker : markers)
      EXPECT_EQ(marker.substr(0, 2), markers.front().substr(0, 2)) << group;
  }
}

TEST(ClonalMap, ExamplesGiveTheirThreeChromosomes) {
  for (const char* file : {"clonal.cdm", "four_parents.plm"}) {
    SCOPED_TRACE(file);
    const Sandbox sandbox;
    const std::string input = (std::filesystem::path(EXAMPLES_DIR) / file).string();
    const CommandResult result = RunCommand(sandbox, {"map", input, "--lod", "5", "-o", "x", "--quiet"});
    ASSERT_EQ(result.code, 0) << result.err;
    std::vector<std::size_t> sizes;
    for (const auto& [group, markers] : MarkersByGroup(TableRows(sandbox.Read("x.map.tsv")))) {
      sizes.push_back(markers.size());
      EXPECT_GE(OrderAgreementOf(markers), 0.85) << group;
    }
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{8, 10, 12}));
  }
}

TEST(ClonalMap, WrongFilesAndLines) {
  const Sandbox sandbox;
  const std::string head = "1\n1\n2\n2\n4\n", tail = "m1 0\nm2 0\n";
  const struct {
    const char* file;
    std::string text, words;
  } cases[] = {
      {"a.cdm", head + "ABCD m1 AC AD BC BD\nA=B m2 XC XQ XD XC\n" + tail, "a.cdm, line 7"},
      {"b.cdm", head + "ABCD m1 AC AD BC BD\nA=C m2 XC XC XD XC\n" + tail, "b.cdm, line 7: the categories"},
      {"c.cdm", head + "ABCD m1 AC AD BC BD\nA=B m2 XC XC XC XX\n" + tail, "shows one genotype"},
      {"d.cdm", head + "ABCD m1 AC AD BC BD\nA=B m2 XC XC XD\n" + tail, "d.cdm, line 7: this line holds"},
      {"e.cdm", "3" + head.substr(1) + tail, "e.cdm, line 1"},
      {"f.plm", head + "ABCD m1 A B C D\nABCX m2 A B C D\n" + tail, "f.plm, line 7: in front of the name"},
      {"g.plm", head + "ABCD m1 A B C D\nABCD m2 A B C Q\n" + tail, "g.plm, line 7"},
      {"h.plm", head + "ABCD m1 A B C D\nABCD m2 A B C D\nm1 0\nm3 0\n", "h.plm, line 9"},
  };
  for (const auto& test : cases) {
    sandbox.Write(test.file, test.text);
    for (const char* command : {"check", "map"}) {
      const CommandResult result = RunCommand(sandbox, {command, test.file});
      EXPECT_EQ(result.code, 1) << test.file;
      EXPECT_NE((result.out + result.err).find(test.words), std::string::npos) << result.out << result.err;
    }
  }
  const std::vector<std::string> names = sandbox.Names();
  EXPECT_EQ(names.size(), std::size(cases));
}

TEST(ClonalMap, PairTablesAreAskedFor) {
  const Sandbox sandbox;
  sandbox.Write("x.cdm", ClonalFileText({.markersPerChromosome = {8}}).text);
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {4}}));
  EXPECT_EQ(RunCommand(sandbox, {"map", "x.cdm", "--tables", "rec,pic"}).code, 2);
  EXPECT_EQ(RunCommand(sandbox, {"map", "x.map", "--tables", "rec"}).code, 2);
  EXPECT_EQ(sandbox.Names().size(), 2U);
  // A file that the disk does not take whole leaves nothing.
  const CommandResult cut = RunCommand(sandbox, {"map", "x.cdm", "--tables", "rec"}, 700);
  EXPECT_EQ(cut.code, 3) << cut.err;
  EXPECT_EQ(sandbox.Names().size(), 2U);
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.cdm", "--quiet", "--no-report"}).code, 0);
  EXPECT_EQ(sandbox.Names().size(), 8U);
}

// On a line, distances to common neighbours tell the one between two markers.
TEST(BridgedDistance, NeighboursAgree) {
  const struct {
    const char* rule;
    std::vector<float> neighbours;  // positions; the two markers stand at 40 and 52
    float distance;
  } cases[] = {{"on one side", {0, 8, 15, 30}, 12},
               {"on both sides", {10, 30, 60, 75}, 12},
               {"between", {43, 45, 50}, 12},
               {"one between: the way over it", {46}, 12},
               {"one beside: the way over it is all that is known", {30}, 32},
               {"none", {}, host::kNoBridge}};
  for (const auto& test : cases) {
    std::vector<float> first, second;
    for (float at : test.neighbours) {
      first.push_back(std::abs(at - 40));
      second.push_back(std::abs(at - 52));
    }
    first.push_back(3);  // linked to one of the two alone
    second.push_back(host::kNoBridge);
    EXPECT_NEAR(host::AgreedDistance(first, second), test.distance, 1e-4) << test.rule;
  }
}

}  // namespace
