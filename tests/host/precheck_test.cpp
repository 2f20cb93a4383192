// All faults of a file at once: what is told, of which lines, how much of it, and what it costs.

#include "host/precheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/genotype_rules.h"
#include "host/precheck_report.h"
#include "tests/host/command_runner.h"

namespace {

using host::FindFaults;
using host::FindingsText;

struct FaultCase {
  const char *what, *module;
  std::string text;
  std::vector<std::string> told;  // each line, in order; a start is enough
};

const std::string kHead = "!Population type\n3\n1\n2\n!Number of markers\n3\n4\n!Marker types\n";
const std::string kAnchors = "!Anchors\nm1 0\nm2 0\nm3 0\n";
const std::string kTraitHead = "4\n1\n2\n1\n2\n4\n1\n!Chromosomes\nc1 2\nc2 1\n!Map\n";
const std::string kMap = "m1 1 0\nm2 1 5\nm3 2 0\n";
const std::string kRows = "!Types\nm1 A B A B\nm2 A B A B\nm3 A B A B\n";

const FaultCase kCases[] = {
    {"five different faults",
     "MAP",
     "3\n4\n2\n3\n4\nm1 A B Q Q\nm2 A D A B\nm3 A B A\n!Anchors\nm1 0\nm2 -2\nm4 0\n",
     {"line 2: the mapping function is \"4\"",
      "line 6: marker m1: \"Q\" is no genotype, 2 times (first as genotype 3)",
      "line 7: marker m2: \"D\" does not exist in population 3 (F1DH) (genotype 2)",
      "line 8: marker m3 has 3 genotypes in place of 4", "line 8: marker m3 has no anchor row",
      "line 11: an anchor row is a marker name and a group of 0 or above, not \"m2 -2\"",
      "line 12: marker m4 has an anchor row, but no genotypes"}},
    {"names that the reader takes apart",
     "MAP",
     kHead + "my marker A B A B\nm/2 A B A B\nm,3 A B A B\n" + "!Anchors\n'my marker' 0\n'm/2' 0\n'm,3' 0\n",
     {"line 9: marker my has 5 genotypes in place of 4; blanks part words",
      "line 10: marker m has 0 genotypes in place of 4; a slash ends the row",
      "line 10: marker m has no anchor row",
      "line 11: marker m has 5 genotypes in place of 4; commas part words",
      "line 14: marker m/2 has an anchor row"}},
    {"semicolons",
     "MAP",
     kHead + "m1;A;B;A;B\nm2;A;B;A;B\nm3;A;B;A;B\n" + kAnchors,
     {"line 9: marker m1;A;B;A;B has 0 genotypes in place of 1; semicolons part nothing, write blanks",
      "lines 7 and 9: the rows of genotypes have 1 value, the population has 4 lines",
      "line 9: 3 markers, m1;A;B;A;B to m3;A;B;A;B, have no anchor row", "line 10: marker m2",
      "line 11: marker m3", "line 13: 3 markers, m1 to m3, have an anchor row"}},
    {"a star, an open quote, an empty place, small letters",
     "MAP",
     kHead + "3*m A B A B\nm2 A ,, B\nm3 a B A 'B\n" + kAnchors,
     {"line 9: marker m has 6 genotypes in place of 4; a number and a star repeat",
      "line 9: marker m has no anchor row", "line 10: marker m2 has 3 genotypes",
      "line 10: marker m2: \"\", nothing between two commas",
      "line 11: marker m3 has 4 genotypes in place of 4; a quote",
      "line 11: marker m3: \"a\" is no genotype; write capitals", "line 13: marker m1 has an anchor row"}},
    {"a remark between rows, one row too many",
     "MAP",
     kHead + "m1 A B A B\n! note\nm2 A B A B\nm3 A B A B\nm4 A B A B\n" + kAnchors,
     {"lines 6 and 9: rows of genotypes: 4 there, 3 due", "line 10: a remark stands between the rows",
      "line 13: marker m4 has no anchor row"}},
    {"rows too few, anchors in another order",
     "MAP",
     kHead + "m1 A B A B\nm2 A B A B\n!Anchors\nm2 0\nm1 0\n",
     {"lines 6 and 9: rows of genotypes: 2 there, 3 due",
      "lines 9 and 13: the anchor rows come in another order"}},
    {"another count of lines than the header's",
     "MAP",
     kHead + "m1 A B A B A\nm2 A B A B A\nm3 A B A B A\n" + kAnchors,
     {"lines 7 and 9: the rows of genotypes have 5 values, the population has 4 lines"}},
    {"names that are one when cut",
     "MAP",
     kHead + "a2345678901234567890123456789012345_x A B A B\na2345678901234567890123456789012345_y A B A "
             "B\nm3 A B A B\n",
     {"lines 9 and 10: \"a2345678901234567890123456789012345_y\" and",
      "line 11: rows of anchors: 0 there, 3 due"}},
    {"a header that is a value short",
     "MAP",
     "3\n1\n3\n4\nm1 A B A B\nm2 A B Q B\nm3 A B A B\n" + kAnchors,
     {"line 5: the header has 4 values, a MAP file has 5", "line 6: marker m2: \"Q\""}},
    {"a header that is a value too long",
     "MAP",
     "3\n1\n2\n1\n3\n4\nm1 A B A B\nm2 A B Q B\nm3 A B A B\n" + kAnchors,
     {"line 7: the header has 6 values", "line 8: marker m2: \"Q\""}},
    {"rows over several lines",
     "MAP",
     kHead + "m1 A B\nA B\nm2 A B\nA Q\nm3 A B\nA B\n" + kAnchors,
     {"line 11: marker m2: \"Q\" is no genotype (genotype 4)"}},
    {"one row that runs on",
     "MAP",
     kHead + "m1 A B\n A B\nm2 A Q A B\nm3 A B A B\n" + kAnchors,
     {"line 11: marker m2: \"Q\""}},
    {"short rows whose names could be genotypes",
     "MAP",
     kHead + "m1 A B A\nA A B\nm3 A B A B\n!Anchors\nm1 0\nA 0\nm3 0\n",
     {"line 9: marker m1 has 3 genotypes in place of 4", "line 10: marker A has 2 genotypes in place of 4"}},
    {"one name in two kinds of quotes",
     "MAP",
     kHead + "'a''b' A B A B\nm2 A B A B\n\"a'b\" A B A B\n" + "!Anchors\na'b 0\nm2 0\na'b 0\n",
     {"lines 9 and 11: marker a'b stands twice"}},
    {"rows without any information",
     "MAP",
     "1\n1\n2\n3\n4\nm1 D D X X\nm2 A A A A\nm3 A H A D\n" + kAnchors,
     {"line 6: marker m1: no line has a genotype that says anything"}},
    {"dominance mixed",
     "MAP",
     "7\n1\n2\n3\n4\nm1 D B X D\nm2 A D A B\nm3 A R X A\n" + kAnchors,
     {"line 7: marker m2: D or R stands beside genotypes that it excludes"}},
    {"categories",
     "CDM",
     "1\n1\n2\n5\n4\nABCD a AC AD BC BD\nA=B b AX BX XX AX\nABBA c AC AD BC BD\nC=D d AX AX XX AX\nAB=CD e "
     "AA AB Q "
     "BB\n!Anchors\na 0\nb 0\nc 0\nd 0\ne 0\n",
     {"line 7: marker b: \"AX\" does not go with category A=B, 2 times", "line 7: marker b: \"BX\"",
      "line 8: marker c: \"ABBA\" is no marker category of population 1",
      "line 9: marker d: all lines have the same", "line 10: marker e: \"Q\" is no genotype"}},
    {"parents",
     "PLM",
     "1\n1\n2\n3\n4\nABCD a A B C D\nABXD b A B D A\nABAB c A C C A\n!Anchors\na 0\nb 0\nc 0\n",
     {"line 7: marker b: the parents \"ABXD\" are not 4 letters of ABCD",
      "line 8: marker c: all lines have the same"}},
    {"binning by the rules that the caller names",
     "BIN",
     "3\n1\n2\n1\n2\nm1 A Q\n!Anchors\nm1 0\n",
     {"line 6: marker m1: \"Q\""}},
    {"the map of a trait file",
     "MET",
     kTraitHead + "m1 1 0\nm2 1 x\nm4 3 0\n" + kRows + "!Phenotypes\nspring 1 2 3 4\n",
     {"line 10: chromosome 2 (c2) is told to have 1 marker, the map has 0 rows of it",
      "line 13: a map row is a marker name, the chromosome's number and a value, not \"m2 1 x\"",
      "line 14: m4 stands on chromosome 3, but there are 2",
      "line 14: marker m4 has a place on the map, but no",
      "line 18: marker m3 has genotypes, but no place on the map"}},
    {"falling positions, chromosomes mixed, names twice",
     "MET",
     kTraitHead + "m1 1 7\nm3 2 0\nm1 1 5\n" + kRows + "!Phenotypes\nspring 1 2 3 4\n",
     {"line 14: m1 of chromosome 1 (c1) stands behind rows of chromosome 2",
      "lines 12 and 14: marker m1 stands twice", "line 17: marker m2 has genotypes, but no place"}},
    {"positions", "CMP", "2\n1\n1\nn 3\na 1 2\na 1 1\na 1 3\n", {"line 6: the positions fall: a at 1"}},
    {"intervals", "CMP", "1\n1\n1\nn 3\na 1 -2\nb 1 -1\nc 1 3\n", {"line 6: the interval of b is negative"}},
    {"values that are no numbers",
     "MET",
     kTraitHead + kMap + kRows + "!Phenotypes\nspring 1 NA x 3,4\n",
     {"line 20: environment spring has 5 values in place of 4",
      "line 20: environment spring: \"x\" is not a number (value 3)"}},
    {"fewer traits than told",
     "BIP",
     "1\n4\n1\n2\n1\n1\n2\n2\nc 1\nm 1 0\nm A B\n!Traits\nyield 1 2\n",
     {"lines 8 and 13: rows of phenotypes: 1 there, 2 due"}},
    {"families",
     "NAM",
     "7\n1\n2\n1\n1\n2\n1\n!Families\na 2\nb 0\n!Chromosomes\nc 1\nm 1 0\nm A B A D\ny 1 2 3 4\n",
     {"line 1: the population type is \"7\", not 1 to 20 without the selfing generations",
      "line 10: a family row is a name and a size of at least 1, not \"b 0\"",
      "line 14: marker m: \"D\" is no genotype"}},
    {"closed lines",
     "CSL",
     "1\n2\n3\n1\n1\n2\n!Types\nm1 A A X\nm2 A H B\n!Values\nr1 1 2 y\nr2 1 2\n",
     {"line 8: marker m1: all lines have the same", "line 9: marker m2: \"H\" is no genotype",
      "line 11: row r1: \"y\" is not a number (value 3)", "line 12: row r2 has 2 values in place of 3"}},
    {"an end within the header", "SDL", "4\n1\n2\n", {"line 3: the file ends before the marker space unit"}},
    {"nothing but a header",
     "PLQ",
     "1\n1\n2\n1\n1\n4\n1\n",
     {"lines 5 and 7: rows of chromosomes: 0 there, 1 due"}},
};

TEST(Precheck, TellsEachFaultWithItsLine) {
  for (const FaultCase& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string text = FindingsText("f", FindFaults(c.text, c.module, 101), true);
    std::string expected;
    std::size_t at = text.find('\n');
    std::size_t lines = 0;
    for (; at != std::string::npos && at + 1 < text.size(); at = text.find('\n', at + 1), ++lines) {
      const std::string told = lines < c.told.size() ? "  " + c.told[lines] : "nothing more";
      EXPECT_EQ(text.substr(at + 1, told.size()), told) << text;
    }
    EXPECT_EQ(lines, c.told.size()) << text;
  }
}

TEST(Precheck, ManyFaultsAreSummarised) {
  std::string text = "3\n1\n2\n60\n4\n";
  for (int m = 1; m <= 60; ++m) text += "m" + std::to_string(m) + (m % 3 == 0 ? " A B Z Z\n" : " A B Q B\n");
  text += "!Anchors\n";
  for (int m = 1; m <= 60; ++m) text += "m" + std::to_string(m) + (m <= 5 ? " -1\n" : " 0\n");
  const std::vector<host::Finding> findings = FindFaults(text, "MAP", 101);
  ASSERT_EQ(findings.size(), 65U);
  const std::string shown = FindingsText("f", findings, false), all = FindingsText("f", findings, true);
  EXPECT_TRUE(shown.starts_with("f: 65 faults in all\n"));
  EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 1 + 10 + 5 + 1);
  EXPECT_TRUE(shown.ends_with(
      "  and 50 more of genotypes; in the whole file \"Q\" 40 times, \"Z\" 40 times; --all lists them\n"));
  EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 66);
  const nlohmann::json json = host::FindingsJson(findings, false);
  EXPECT_EQ(json["count"], 65);
  EXPECT_EQ(json["shown"], 15);
  EXPECT_EQ(json["kinds"], (nlohmann::json{{"anchor", 5}, {"genotype", 60}}));
  EXPECT_EQ(json["list"][14]["lines"], nlohmann::json({71}));
}

TEST(Precheck, CheckShowsItBehindTheLibrarysOwnReport) {
  const Sandbox sandbox;
  sandbox.Write("bad.map", kHead + "m1 A B Q B\nm2 A B A\nm3 A B A B\n" + kAnchors);
  sandbox.Write("long.map", kHead + "m1 A B A B\nm2 A B A B H\nm3 A B A B remark\n" + kAnchors);
  sandbox.Write("null.map", kHead + "m1 A,B,A,B\nm2,A,,A,B\nm3 A B A B\n" + kAnchors);
  sandbox.Write("huge.map", "3\n1\n2\n900000\n4\nm1 A B Q B\n");
  const CommandResult bad = RunCommand(sandbox, {"check", "bad.map"});
  EXPECT_EQ(bad.code, 1);
  EXPECT_TRUE(bad.out.starts_with("--Input error: Illegal Markertype value in input file!\n")) << bad.out;
  EXPECT_TRUE(
      bad.out.ends_with("bad.map, line 9\nbad.map: 2 faults in all\n"
                        "  line 9: marker m1: \"Q\" is no genotype (genotype 3)\n"
                        "  line 10: marker m2 has 3 genotypes in place of 4\n"))
      << bad.out;
  const auto json = nlohmann::json::parse(RunCommand(sandbox, {"check", "--json", "bad.map"}).out);
  EXPECT_EQ(json["files"][0]["findings"]["count"], 2);
  const CommandResult longer = RunCommand(sandbox, {"check", "long.map"});
  EXPECT_EQ(longer.code, 0);
  EXPECT_EQ(
      longer.err,
      "tessarmont: warning: long.map, line 10: 1 marker row with genotypes behind those of the 4 lines of "
      "the population; they are not read\n");
  const CommandResult null = RunCommand(sandbox, {"check", "null.map"});
  EXPECT_EQ(null.code, 0);
  EXPECT_NE(null.err.find("null.map, line 10: 1 marker row with nothing between two commas"),
            std::string::npos);
  const CommandResult huge = RunCommand(sandbox, {"check", "huge.map"});
  EXPECT_EQ(huge.code, 1);
  EXPECT_NE(huge.err.find("declares 900000 markers"), std::string::npos) << huge.err;
  EXPECT_NE(huge.out.find("line 6: marker m1: \"Q\""), std::string::npos) << huge.out;
}

// Files that would be slow by the square: each of these took minutes where a row or a remark looks at all others.
TEST(Precheck, TakesTimeByTheLine) {
  constexpr std::size_t rows = 200'000;
  std::string remarks = "3\n1\n2\n3\n4\nm1 A B A B\n", ones = "3\n1\n2\n200000\n1000\n",
              names = "3\n1\n2\n200000\n2\n";
  for (std::size_t k = 0; k < rows; ++k) {
    remarks += "!\n";
    ones += "A\n";
    names += "m A B\n";
  }
  EXPECT_EQ(FindFaults(remarks + "m2 A B A B\nm3 A B A B\n" + kAnchors, "MAP", 101).size(), 1U);
  EXPECT_GT(FindFaults(ones, "MAP", 101).size(), 0U);
  EXPECT_GT(FindFaults(names, "MAP", 101).size(), rows - 2);
}

}  // namespace
