// `tessarmont import` and `tessarmont populations` as a user runs them, and the page docs/import.md.

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/input_file.h"
#include "host/population_catalogue.h"
#include "host/populations.h"
#include "import_text.h"

namespace importers {
namespace {

using std::string;

// Every fenced file of the page with the command that stands under it.
TEST(ImportPage, EveryExampleIsImportedAndAcceptedByTheLibrary) {
  const string page = host::ReadWhole(SOURCE_DIR "/docs/import.md");
  std::map<string, int> formats;
  for (std::size_t at = page.find("\n```"); at != string::npos; at = page.find("\n```", at)) {
    const std::size_t kindEnd = page.find('\n', at + 4), end = page.find("\n```\n", kindEnd);
    ASSERT_NE(end, string::npos);
    const string kind = page.substr(at + 4, kindEnd - at - 4), text = page.substr(kindEnd + 1, end - kindEnd);
    at = end + 4;
    if (kind.empty()) continue;
    const std::size_t line = page.find("\ntessarmont ", end) + 1;
    std::istringstream words(page.substr(line, page.find('\n', line) - line));
    std::vector<string> arguments{std::istream_iterator<string>(words), {}};
    arguments.erase(arguments.begin());
    ASSERT_GE(arguments.size(), 4U);
    EXPECT_EQ(arguments[1], kind);
    const Sandbox sandbox;
    sandbox.Write(arguments[2], text);
    CommandResult result = RunCommand(sandbox, arguments);
    EXPECT_EQ(result.code, 0) << kind << '\n' << result.err;
    EXPECT_EQ(sandbox.Names().size(), 3U) << kind;
    // The file is seen for what it is.
    arguments[1] = "auto";
    result = RunCommand(sandbox, arguments);
    EXPECT_EQ(result.code, 0) << kind << '\n' << result.err;
    EXPECT_NE(result.err.find(" is taken for " + string(FindFormat(kind)->words)), string::npos)
        << result.err;
    ++formats[kind];
  }
  EXPECT_EQ(formats.size(), Formats().size()) << "a format without an example";
}

const string kTable = "marker,chr,a,b,c,d\nm 1,2,A,H,B,A\nm 1,1,A,H,B,H\nm3,2,-,-,NA,-\nm4,2,A,A,H,H\n";

TEST(ImportCommand, LedgerNamesWhatHappenedToEachMarker) {
  const Sandbox sandbox;
  sandbox.Write("in.csv", kTable);
  CommandResult result = RunCommand(sandbox, {"import", "table", "in.csv", "--population", "7", "--anchors",
                                              "--mapping-function", "haldane", "-o", "out.map"});
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out, "out.map: 3 markers x 4 lines, population F2, Haldane\n");
  EXPECT_EQ(result.err,
            "read 4 markers, kept 3, dropped 1, renamed 2\n  dropped 1: no line has a genotype\n");
  EXPECT_EQ(sandbox.Read("out.import.tsv"),
            "action\tline\tmarker\twritten_as\tcount\treason\nread\t\t\t\t4\tmarkers in the file\n"
            "kept\t\t\t\t3\tmarkers written\nrenamed\t\t\t\t2\tmarkers written under another name\n"
            "dropped\t\t\t\t1\tno line has a genotype\ngroup\t\t\t1\t2\tchromosome 2\n"
            "group\t\t\t2\t1\tchromosome 1\n"
            "renamed\t2\tm 1\tm_1\t1\tthe name has characters of another meaning\n"
            "renamed\t3\tm 1\tm_1_2\t1\tthe name has characters of another meaning; a marker before it has "
            "this name\n"
            "dropped\t4\tm3\t\t1\tno line has a genotype\n");
  const string map = sandbox.Read("out.map");
  EXPECT_TRUE(
      map.starts_with("!Population type\n7\n!Mapping function (1 for Kosambi; 2 for Haldane; 3 for "
                      "Morgan)\n2\n!Marker space type (1 for intervals; 2 for positions)\n2\n"
                      "!Number of markers\n3\n!Population size\n4\n!Line names: a b c d\n!Marker types\n"
                      "m_1 A H B A\n"))
      << map;
  EXPECT_TRUE(map.ends_with("!Marker name followed by anchor group\nm_1 1\nm_1_2 2\nm4 1\n")) << map;
  result = RunCommand(sandbox, {"check", "out.map"});
  EXPECT_EQ(result.code, 0) << result.err;
}

TEST(ImportCommand, JsonHasTheLedgersTotals) {
  const Sandbox sandbox;
  sandbox.Write("in.csv", kTable);
  const CommandResult result =
      RunCommand(sandbox, {"import", "auto", "in.csv", "--population", "P1BC1F1", "--json", "--quiet"});
  EXPECT_EQ(result.err, "");
  const nlohmann::json json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["taken_for"], "table");
  EXPECT_EQ(json["population"]["name"], "P1BC1F1");
  EXPECT_EQ(json["markers"]["read"], 4);
  EXPECT_EQ(json["markers"]["kept"], 3);
  EXPECT_EQ(json["markers"]["set_to_missing"]["cannot be in the population"], 2);
  EXPECT_EQ(json["markers"]["notes"].size(), 1U);  // one in ten and more
  EXPECT_EQ(json["written"], (std::vector<string>{"in.map", "in.import.tsv"}));
}

TEST(ImportCommand, FailuresLeaveNothingBehind) {
  struct Case {
    std::vector<string> arguments;
    int code;
    string words;
  };
  const Case cases[] = {
      {{"table", "in.csv"}, 2, "in.csv (a table) does not tell the population: give --population"},
      {{"table", "in.csv", "--population", "F7"}, 2, "there is no population \"F7\""},
      {{"excel", "in.csv", "--population", "F2"}, 2, "there is no format \"excel\"; there are vcf, csv, "},
      {{"table", "in.csv", "--population", "F2", "--parents", "a"}, 2, "needs --parents with 2 sample names"},
      {{"table", "in.csv", "--population", "F2", "-o", "no/where"}, 3, "there is no folder no"},
      {{"auto", "done.map", "--population", "F2"}, 1, "done.map is a project file already"},
      {{"table", "in.map", "--population", "F2"}, 3, "in.map is the input itself"},
      {{"table", "none.csv", "--population", "F2"}, 3, "cannot read none.csv: there is no such file"},
      {{"table", ".", "--population", "F2"}, 3, "it is a folder"},
      {{"vcf", "in.csv", "--population", "F2", "--parents", "a,b"}, 1, "in.csv: line 1: a VCF begins with"},
      {{"csv", "in.csv", "--population", "F2"}, 1, "in.csv: line 2: the chromosomes begin below"},
      {{"table", "in.csv", "--population", "F2", "--missing", "A,H,B"},
       1,
       "none of 4 markers is left: 4: no line"},
      {{"table", "in.csv", "--population", "P1BC1F1", "--missing", "A,H"},
       1,
       "cannot be in population 1 (P1BC1F1)"},
  };
  for (const Case& c : cases) {
    const Sandbox sandbox;
    sandbox.Write("in.csv", kTable);
    sandbox.Write("in.map", kTable);
    sandbox.Write("done.map", "!Population type\n7\n");
    std::vector<string> arguments{"import"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    const CommandResult result = RunCommand(sandbox, arguments);
    EXPECT_EQ(result.code, c.code) << c.words << result.err;
    EXPECT_NE(result.err.find(c.words), string::npos) << result.err;
    EXPECT_EQ(sandbox.Names(), (std::vector<string>{"done.map", "in.csv", "in.map"}));
    EXPECT_EQ(sandbox.Read("in.map"), kTable);
  }
}

// Expected shares of A, H and B, worked out by hand: a backcross halves H, a selfing too, and shares it out.
TEST(Populations, RatiosAreThoseOfTheCrosses) {
  const char* const ratios[] = {"A 1 : H 1",       "H 1 : B 1",       "A 1 : B 1",        "A 1 : B 1",
                                "A 3 : B 1",       "A 1 : B 3",       "A 1 : H 2 : B 1",  "A 3 : H 2 : B 3",
                                "A 3 : H 1",       "H 1 : B 3",       "A 7 : B 1",        "A 1 : B 7",
                                "A 5 : H 2 : B 1", "A 1 : H 2 : B 5", "A 13 : H 2 : B 1", "A 1 : H 2 : B 13",
                                "A 3 : B 1",       "A 1 : B 3",       "A 7 : B 1",        "A 1 : B 7"};
  for (const host::PopulationRow& row : host::kPopulations) {
    const host::CatalogueRow* found = host::FindInCatalogue(row.name);
    ASSERT_NE(found, nullptr) << row.name;
    EXPECT_EQ(found->id, row.id);
    EXPECT_EQ(host::ExpectedWords(*found), ratios[row.id - 1]) << row.name;
    string shown;
    for (const char c : string("AHB"))
      shown += host::ExpectedWords(*found).find(c) == string::npos ? "" : string(1, c);
    EXPECT_EQ(shown, row.shows) << row.name;
  }
}

TEST(Populations, CommandListsAndDraws) {
  const Sandbox sandbox;
  const CommandResult all = RunCommand(sandbox, {"populations"});
  EXPECT_EQ(all.code, 0);
  for (const host::CatalogueRow& row : host::PopulationCatalogue()) {
    EXPECT_NE(all.out.find("  " + string(row.name) + ' '), string::npos) << row.name;
  }
  EXPECT_EQ(
      RunCommand(sandbox, {"populations", "p2bc1f2"}).out,
      "P2BC1F2, number 14 of bi-parental (MAP): P2BC1F1 selfed once\n\n  P1  x  P2\n      |\n     F1  x  P2\n"
      "      |\n   P2BC1F1\n      |  selfed once\n   P2BC1F2\n\nexpected: A 1 : H 2 : B 5\n");
  const nlohmann::json json = nlohmann::json::parse(RunCommand(sandbox, {"populations", "--json"}).out);
  EXPECT_EQ(json["populations"].size(), 26U);
  EXPECT_EQ(RunCommand(sandbox, {"populations", "F9"}).code, 2);
}

}  // namespace
}  // namespace importers
