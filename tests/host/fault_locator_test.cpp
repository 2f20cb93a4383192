#include "host/fault_locator.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

#include "host/file_walk.h"

namespace host {
namespace {

constexpr const char* kRowReport = "--Input error: Illegal Markertype value in input file!";
constexpr const char* kAnchorReport = "--Input error: Invalid anchor information!";

struct FaultCase {
  const char* rule;
  std::string text;
  std::vector<std::string> log;
  std::vector<std::size_t> lines;
  std::string hint;  // part of the hint; empty when there is to be none
  const char* module = "MAP";
  bool breeding = false;
};

const std::string kHeader = "!remark\n7\n\n1\n2\n3\n2 !lines\n";  // fields on lines 2, 4, 5, 6, 7

const std::string kSdl = "7\n1\n2\n1\n2\n2\n";        // six fields; two chromosomes, two lines
const std::string kMet = "7\n1\n2\n1\n1\n2\n2\n";     // one chromosome, two lines, two environments
const std::string kNam = "4\n1\n2\n1\n1\n2\n1\n";     // two families
const std::string kBip = "2\n7\n1\n2\n1\n1\n2\n2\n";  // simulation; one chromosome, two lines, two traits
const std::string kGs = "2\n1\n1\n1\n";               // two markers, one line each, one trait

const FaultCase kFaultCases[] = {
    {"header field, remarks and blank lines skipped",
     kHeader,
     {"--Input error: Mapping Function out of range!", "  Mapping Function =        9"},
     {4},
     ""},
    {"population out of range",
     kHeader,
     {"--Input error: Population Type out of range!", "  Population Type =       99"},
     {2},
     ""},
    {"a header that ends early",
     "7\n1\n",
     {"--Input error: cannot read Marker Space Type!"},
     {},
     "ends before"},
    {"marker row behind a remark",
     kHeader + "!rows\nm1 A B\nm2 A C\nm3 A B\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        2       2   C"},
     {10},
     ""},
    {"rows over several lines, blank lines between",
     kHeader + "m1 A\nB\n\nm2 A C\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        2       2   C"},
     {11},
     ""},
    {"CR LF",
     "7\r\n1\r\n2\r\n3\r\n2\r\nm1 A B\r\nm2 A C\r\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        2       2   C"},
     {7},
     ""},
    {"a short row is named as such",
     kHeader + "m1 A\nm2 A B\nm3 A B\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        1       2  m2"},
     {8},
     "holds a name and 1 genotype, the header says 2"},
    {"a remark between rows",
     kHeader + "m1 A B\n!here\nm2 A B\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        2       1  m2"},
     {9},
     "remark line"},
    {"repeats, nulls, quotes and slashes mean what they mean",
     kHeader + "'m1 /' 2*A\nm2,,,\nm3 /\nm4 A A A\n",
     {kAnchorReport, "  MarkerID, AnchorInfo =        1      -1"},
     {11},
     "holds 4 words"},
    {"behind a broken quote no line is told",
     kHeader + "m1 'A'x B\nm2 A C\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        2       2   C"},
     {},
     ""},
    {"a star that is a genotype is no repeat",
     kHeader + "m1 A* *\nm2 A C\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        2       2   C"},
     {9},
     ""},
    {"both rows of a repeated name, two reports",
     kHeader + "m1 A B\nm2 A B\nm1 A B\n",
     {"--Input error: two markers have same name in markertypes!",
      "  MarkerID, Name of 1st marker =        1 m1", "  MarkerID, Name of 2nd marker =        3 m1"},
     {8, 10},
     ""},
    {"a row without a genotype",
     kHeader + "m1 A B\nm2 X X\n",
     {"--Input error: impossible Marker Category!", "  MarkerID, Marker Category =        2       0"},
     {9},
     "no genotype that this population can show"},
    {"anchor row",
     kHeader + "m1 A B\nm2 A B\nm3 A B\n!anchors\nm1 0\nm2 -4\nm3 0\n",
     {kAnchorReport, "  MarkerID, AnchorInfo =        2      -4"},
     {13},
     ""},
    {"anchor row with too many words",
     kHeader + "m1 A B\nm2 A B\nm3 A B\nm1 0\nm2 x -4\nm3 0\n",
     {"--Input error: cannot read AnchorInfo!", "  MarkerID =        2"},
     {12},
     "holds 3 words"},
    {"a file that ends before the row",
     kHeader + "m1 A B\n",
     {"--Input error: cannot read MarkerType!", "  MarkerID =        2"},
     {},
     "ends before all rows"},
    {"a project file of another kind",
     "1\n7\n1\n2\n1\n5\n120\n0\nchr1 5\n",
     {"--Input error: Mapping Function out of range!", "  Mapping Function =        7"},
     {2},
     "BIP"},
    {"rows with categories",
     "1\n1\n2\n1\n2\nABCD m1 AC AD\n",
     {kRowReport, "  MarkerID, LineID, Markertype =        1       1  m1"},
     {6},
     "CDM"},
    {"family of a size that is none",
     kNam + "f1 2\nf2 0\n",
     {"--Input error: family size out of range!", "  FamilyID, Family Size =        2       0"},
     {9},
     "",
     "NAM"},
    {"the words of environments stand for families",
     "4\n1\n2\n1\n1\nx\n",
     {"--Input error: cannot read Number of Environments!"},
     {6},
     "",
     "NAM"},
    {"chromosome row, its number cut short in the report",
     kSdl + "c1 2\nc2\n",
     {"--Input error: cannot read chromosome name and number of markers!", "  ChromI       2"},
     {8},
     "holds 1 word",
     "SDL"},
    {"markers of a chromosome, not of the header",
     kSdl + "c1 2\nc2 0\n",
     {"--Input error: Number of Markers out of range!", "  ChromID, Number of Markers =        2       0"},
     {8},
     "",
     "SDL"},
    {"the row of the map that cannot be read, its chromosome as the row before left it",
     kSdl + "c1 2\nc2 2\na 1 0\nb 1 1\nc 2 0\nd x 1\n",
     {"--Input error: cannot read marker name and position!", "ChromID, MarkerID =       2       2"},
     {12},
     "",
     "SDL"},
    {"the row of another chromosome",
     kSdl + "c1 1\nc2 2\na 1 0\nb 1 1\nc 2 0\n",
     {"--Input error: chromosome and marker info does not match!",
      "  Input ChromID, Input MarkerID, Expected ChromID=        1       1       2"},
     {10},
     "",
     "SDL"},
    {"positions that fall, both rows",
     kSdl + "c1 1\nc2 2\na 1 0\n\nb 2 1\nc 2 0\n",
     {"--Input error: two markers are in wrong order!",
      "  ChromID, MarkerID, Position of 1st marker =        2       1    1.00",
      "  ChromID, MarkerID, Position of 2nd marker =        2       2    0.00"},
     {11, 12},
     "",
     "SDL"},
    {"names that differ, in the map and in the marker rows",
     kSdl + "c1 1\nc2 1\na 1 0\nb 2 1\na A B\nc A B\n",
     {"--Input error: Different names on chromosome and markertype!",
      "  ChromID, MarkerID, Name on Chromosome, Name on Markertype =        2       2 b c"},
     {10, 12},
     "",
     "SDL"},
    {"a value that is no number, on the second line of its trait",
     kMet + "c 1\nm 1 0\nm A B\ne1 1 2\ne2 3\nabc\n",
     {"tessarmont: the value 'abc' of 'e2' is not a number"},
     {13},
     "missing values",
     "MET"},
    {"a row an environment",
     kMet + "c 1\nm 1 0\nm A B\ne1 1 2\n",
     {"--Input error: cannot read phenotypic data!", "  TraitID, Trait Name =        2 "},
     {},
     "ends before all rows",
     "MET"},
    {"trait, environment and replication",
     "1\n1\n2\n2\n1\n2\nm A B\na 1 2\nb 1 2\nc 1 2\nd 1 x\n",
     {"--Input error: cannot read trait values!", "  TraitID, EnvID, RepID       2       1       2"},
     {11},
     "",
     "CSL"},
    {"locations of simulated QTL",
     "2\n1\n2\nm A B\n1 5 0.5\n2\n",
     {"--Input error: QTL locations out of range!"},
     {6},
     "",
     "CSL"},
    {"the second trait's mean, an empty matrix before it",
     kBip + "c 1\nm 1 0\nm A B\n0\n\n1\n.5\n9\n!two\n1 0 1\n1\n1\n.5\nx\n",
     {"--Input error: cannot read the overall mean of phenotype!", "  TraitID, TraitName =        2 2"},
     {22},
     "",
     "BIP"},
    {"maps without a marker in common",
     "2\n1\n2\na 1\nb 1\nm 1 0\nn 2 0\n",
     {"No common markers are found on all maps!"},
     {},
     "on every map",
     "CMP"},
    {"the same words for both populations",
     kGs + "m1 0\nm2 x\nt 1\nm1 0\nm2 x\n",
     {"--Input error: cannot read MarkerType!", "  MarkerID =        2"},
     {6},
     "",
     "GS"},
    {"the same words for both populations",
     kGs + "m1 0\nm2 1\nt 1\nm1 0\nm2 x\n",
     {"--Input error: cannot read MarkerType!", "  MarkerID =        2"},
     {9},
     "",
     "GS",
     true},
    {"names that differ between the populations",
     kGs + "m1 0\nm2 1\nt 1\nm1 0\nmx 0\n",
     {"--Input error: MarkerType are not matched!"},
     {6, 9},
     "marker 2 is \"m2\"",
     "GS"},
};

TEST(FaultLocator, TellsTheLine) {
  for (const FaultCase& test : kFaultCases) {
    SCOPED_TRACE(test.rule);
    const std::vector<Fault> faults = LocateFaults(test.log, test.text, test.module, test.breeding);
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0].report, test.log);
    EXPECT_EQ(faults[0].lines, test.lines);
    if (test.hint.empty()) {
      EXPECT_EQ(faults[0].hint, "");
    } else {
      EXPECT_NE(faults[0].hint.find(test.hint), std::string::npos) << faults[0].hint;
    }
  }
}

// The library reads each of them, so the walk must get through.
TEST(FileWalk, GetsThroughEveryExampleOfAFormat) {
  std::ifstream file(std::filesystem::path(EXAMPLES_DIR) / "../docs/formats.md");
  const std::string document{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  const std::regex fence("\n```([a-z]+)\n([^`]*)```\n");
  std::size_t examples = 0;
  for (std::sregex_iterator block(document.begin(), document.end(), fence), end; block != end; ++block) {
    std::string module = (*block)[1];
    for (char& c : module) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const std::string text = (*block)[2];
    EXPECT_TRUE(WalkFile(text, module).complete) << module << "\n" << text;
    const std::string cut = text.substr(0, text.find_last_of('\n', text.size() - 2) + 1);
    EXPECT_TRUE(WalkFile(cut, module).endsEarly) << module << " without its last row";
    ++examples;
  }
  EXPECT_GE(examples, std::size(kModuleSteps));
}

}  // namespace
}  // namespace host
