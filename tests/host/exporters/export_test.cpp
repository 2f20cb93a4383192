// A finished map in other programs' formats: the exact text of each, and the command around them.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/exporters/source_place.h"
#include "tests/host/command_runner.h"

namespace {

const std::string kHeading = "group\tmarker\tposition\tinterval\trec\tlod\tsegregation_p\tmissing\n";
const std::string kTable = kHeading +
                           "LG1\tchr1_100\t0.0000\t0.0000\t\t\t0.5\t0\n"
                           "LG1\tsc_2:77\t12.3456\t12.3456\t0.1\t3\t0.5\t0\n"
                           "LG 2\ta;b \"c,d\"\t0.0000\t0.0000\t\t\t0.5\t0\n"
                           "unlinked\tfar_9\t\t\t\t\t0.5\t0\n";
const std::string kProject =
    "7\n1\n2\n4\n5\n!Marker types\n"
    "'a;b \"c,d\"' D D B * 12\nfar_9 A B A B H\nsc_2:77 AA H B -1 2\nchr1_100 R A 10 X A\n"
    "!Anchors\n'a;b \"c,d\"' 0\nfar_9 0\nsc_2:77 0\nchr1_100 0\n";

struct FormatCase {
  const char* format;
  std::string text;
  const char* told;  // on standard error, besides the closing line
};

TEST(Export, EachFormatHasItsText) {
  const FormatCase cases[] = {
      {"tsv",
       "group\tmarker\tcM\torder\tchromosome\nLG1\tchr1_100\t0.0000\t1\tchr1\nLG1\tsc_2:77\t12.3456\t2\tsc_"
       "2\n"
       "LG 2\ta;b \"c,d\"\t0.0000\t1\t\n",
       "1 marker not exported, unlinked: far_9\n"},
      {"rqtl",
       "id,chr1_100,sc_2:77,\"a;b \"\"c,d\"\"\"\n,LG1,LG1,LG 2\n,0.0000,12.3456,0.0000\n"
       "1,C,A,D\n2,A,H,D\n3,C,B,B\n4,-,-,-\n5,A,A,D\n",
       "positions in cM"},
      {"joinmap", "group LG1\nchr1_100\t0.0000\nsc_2:77\t12.3456\n\ngroup LG_2\na_b_\"c,d\"\t0.0000\n",
       "1 marker with _ in the name in place of what the format cannot hold: a;b \"c,d\"\n"},
      {"allmaps",
       "Scaffold ID,scaffold position,LG,genetic position\nchr1,100,LG1,0.0000\nsc_2,77,LG1,12.3456\n",
       "1 marker left out, whose names are not CHROM_POS or CHROM:POS: a;b \"c,d\"\n"},
      {"plink", "LG1\tchr1_100\t0.000000\t100\nLG1\tsc_2:77\t0.123456\t77\nLG_2\ta_b_\"c,d\"\t0.000000\t0\n",
       "positions in Morgans"},
  };
  const Sandbox sandbox;
  sandbox.Write("x.map.tsv", kTable);
  sandbox.Write("x.map", kProject);
  for (const FormatCase& c : cases) {
    SCOPED_TRACE(c.format);
    const CommandResult shown =
        RunCommand(sandbox, {"export", c.format, "x.map.tsv", "--genotypes", "x.map"});
    EXPECT_EQ(shown.code, 0);
    EXPECT_EQ(shown.out, c.text);
    EXPECT_NE(shown.err.find(c.told), std::string::npos) << shown.err;
    const CommandResult filed = RunCommand(
        sandbox, {"export", c.format, "x.map.tsv", "--genotypes", "x.map", "-o", "out.file", "--quiet"});
    EXPECT_EQ(filed.code, 0);
    EXPECT_EQ(filed.out + filed.err, "");
    EXPECT_EQ(sandbox.Read("out.file"), c.text);
  }
  EXPECT_EQ(sandbox.Names(), (std::vector<std::string>{"out.file", "x.map", "x.map.tsv"}));
}

TEST(Export, JsonHasTheMapAndTheLedger) {
  const Sandbox sandbox;
  sandbox.Write("x.map.tsv", kTable);
  const auto map = nlohmann::json::parse(RunCommand(sandbox, {"export", "json", "x.map.tsv"}).out);
  EXPECT_EQ(map["unlinked"], nlohmann::json({"far_9"}));
  ASSERT_EQ(map["groups"].size(), 2U);
  EXPECT_EQ(map["groups"][0]["name"], "LG1");
  EXPECT_EQ(map["groups"][0]["markers"][1],
            nlohmann::json::parse(
                R"({"marker":"sc_2:77","position":12.3456,"order":2,"chromosome":"sc_2","bases":"77"})"));
  EXPECT_FALSE(map["groups"][1]["markers"][0].contains("chromosome"));
  const CommandResult told =
      RunCommand(sandbox, {"export", "allmaps", "x.map.tsv", "-o", "out.csv", "--json", "--quiet"});
  const auto ledger = nlohmann::json::parse(told.out);
  EXPECT_EQ(ledger["file"], "out.csv");
  EXPECT_EQ(ledger["markers"], 2);
  EXPECT_EQ(ledger["left_out"], nlohmann::json({"a;b \"c,d\""}));
}

std::vector<std::string> Words(const std::string& line, char mark) {
  std::vector<std::string> words;
  std::istringstream stream(line);
  for (std::string word; std::getline(stream, word, mark);) {
    if (!word.empty() || mark == ',') words.push_back(word);
  }
  return words;
}

// Rows of the genotypes by marker, straight from the lines of a project file without any flourish.
std::map<std::string, std::vector<std::string>> PlainGenotypes(const std::string& path, std::size_t lines) {
  std::map<std::string, std::vector<std::string>> rows;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::vector<std::string> words = Words(line, ' ');
    if (words.size() == lines + 1) rows[words[0]] = {words.begin() + 1, words.end()};
  }
  return rows;
}

TEST(Export, AMapOfTheCommandGoesOutWithItsGenotypes) {
  const Sandbox sandbox;
  const std::string input = EXAMPLES_DIR "/listeria.map";
  ASSERT_EQ(RunCommand(sandbox, {"map", input, "--lod", "6", "-o", "x", "--quiet"}).code, 0);
  const CommandResult exported =
      RunCommand(sandbox, {"export", "rqtl", "x.map.tsv", "--genotypes", input, "-o", "x.csv"});
  ASSERT_EQ(exported.code, 0) << exported.err;
  auto genotypes = PlainGenotypes(input, 120);
  std::istringstream text(sandbox.Read("x.csv"));
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(text, line);) rows.push_back(Words(line, ','));
  ASSERT_EQ(rows.size(), 3U + 120U);
  ASSERT_GT(rows[0].size(), 120U);
  for (std::size_t column = 1; column < rows[0].size(); ++column) {
    const std::vector<std::string>& row = genotypes[rows[0][column]];
    ASSERT_EQ(row.size(), 120U) << rows[0][column];
    for (std::size_t line = 0; line < row.size(); ++line) {
      ASSERT_EQ(rows[line + 3][column], row[line] == "X"   ? "-"
                                        : row[line] == "R" ? "C"
                                                           : row[line])
          << rows[0][column] << " " << line;
    }
  }
}

TEST(Export, WhatGoesOutComesBackIn) {
  const Sandbox sandbox;
  const std::string input = EXAMPLES_DIR "/listeria.map";
  ASSERT_EQ(RunCommand(sandbox, {"map", input, "--lod", "6", "-o", "x", "--quiet"}).code, 0);
  ASSERT_EQ(RunCommand(sandbox, {"export", "rqtl", "x.map.tsv", "--genotypes", input, "-o", "x.csv"}).code,
            0);
  const CommandResult back =
      RunCommand(sandbox, {"import", "csv", "x.csv", "--population", "F2", "-o", "back"});
  ASSERT_EQ(back.code, 0) << back.err;
  const auto before = PlainGenotypes(input, 120);
  const auto after = PlainGenotypes((sandbox.folder / "back.map").string(), 120);
  EXPECT_GT(after.size(), 120U);
  for (const auto& [name, row] : after) EXPECT_EQ(row, before.at(name)) << name;
}

struct FailureCase {
  const char* what;
  std::vector<std::string> arguments;
  int code;
  const char* words;
};

TEST(Export, WhatIsWrongIsTold) {
  const Sandbox sandbox;
  sandbox.Write("x.map.tsv", kTable);
  sandbox.Write("x.map", kProject);
  sandbox.Write("other.map", "3\n1\n2\n1\n2\nm A B\nm 0\n");
  sandbox.Write("broken.map", "3\n1\n2\n1\n2\nm A Q\nm 0\n");
  sandbox.Write("short.map.tsv", kHeading + "LG1\tm1\t0\nLG1\tm2\n");
  sandbox.Write("word.map.tsv", kHeading + "LG1\tm1\t0\nLG1\tm2\tfar\n");
  sandbox.Write("twice.map.tsv", kHeading + "LG1\tm1\t0\nLG1\tm1\t3\n");
  sandbox.Write("lone.map.tsv", kHeading + "unlinked\tm1\t\n");
  sandbox.Write("columns.map.tsv", "marker\tposition\nm1\t0\n");
  sandbox.Write("plain.map.tsv", kHeading + "LG1\tm1\t0\nLG1\tm 2\t1\nLG1\tm_b\t1\nLG1\tm b\t2\n");
  const FailureCase cases[] = {
      {"no such format", {"export", "xlsx", "x.map.tsv"}, 2, "no format \"xlsx\"; known are tsv, rqtl"},
      {"genotypes wanted", {"export", "rqtl", "x.map.tsv"}, 2, "--genotypes"},
      {"json without a file", {"export", "tsv", "x.map.tsv", "--json"}, 2, "-o"},
      {"no table", {"export", "tsv", "none.tsv"}, 3, "no such file"},
      {"row cut", {"export", "tsv", "short.map.tsv"}, 1, "short.map.tsv, line 3: a column is missing"},
      {"no position", {"export", "tsv", "word.map.tsv"}, 1, "line 3: \"far\" is no position"},
      {"repeated", {"export", "tsv", "twice.map.tsv"}, 1, "line 3: marker m1 stands twice"},
      {"nothing linked", {"export", "tsv", "lone.map.tsv"}, 1, "no linked marker"},
      {"no group column", {"export", "tsv", "columns.map.tsv"}, 1, "no column \"group\""},
      {"no places", {"export", "allmaps", "plain.map.tsv"}, 1, "no marker has a name CHROM_POS"},
      {"names that fall together", {"export", "plink", "plain.map.tsv"}, 1, "a second \"m_b\""},
      {"another cross",
       {"export", "rqtl", "x.map.tsv", "--genotypes", "other.map"},
       1,
       "marker chr1_100 of group LG1 has no genotypes"},
      {"a bad project file",
       {"export", "rqtl", "x.map.tsv", "--genotypes", "broken.map"},
       1,
       "broken.map, line 6"},
      {"no project file",
       {"export", "rqtl", "x.map.tsv", "--genotypes", "x.map.tsv"},
       1,
       "takes a MAP project"},
      {"over its input", {"export", "tsv", "x.map.tsv", "-o", "x.map.tsv"}, 3, "is the input itself"},
      {"over a project file", {"export", "joinmap", "x.map.tsv", "-o", "x.map"}, 3, "is a project file"},
      {"into nowhere", {"export", "tsv", "x.map.tsv", "-o", "no/where.tsv"}, 3, "no folder no"},
  };
  const std::vector<std::string> before = sandbox.Names();
  for (const FailureCase& c : cases) {
    SCOPED_TRACE(c.what);
    const CommandResult result = RunCommand(sandbox, c.arguments);
    EXPECT_EQ(result.code, c.code);
    EXPECT_NE(result.err.find(c.words), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
  }
  EXPECT_EQ(sandbox.Names(), before);
  EXPECT_EQ(sandbox.Read("x.map"), kProject);
}

TEST(Export, SourcePlacesComeFromNames) {
  using exporters::SourceOf;
  EXPECT_EQ(SourceOf("scaffold_12_3456")->chromosome, "scaffold_12");
  EXPECT_EQ(SourceOf("a:b_7")->position, "7");
  EXPECT_EQ(SourceOf("1:1_000")->chromosome, "1:1");
  for (const char* name : {"", "_", "_12", "chr1_", "D10M44", "chr1_12a", "chr1-100", "m_-5"}) {
    EXPECT_FALSE(SourceOf(name)) << name;
  }
}

}  // namespace
