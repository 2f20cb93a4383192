#include "host/fault_locator.h"

#include <gtest/gtest.h>

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
};

const std::string kHeader = "!remark\n7\n\n1\n2\n3\n2 !lines\n";  // fields on lines 2, 4, 5, 6, 7

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
    {"behind a token that may mean more than itself no line is told",
     kHeader + "m1 2*A\nm2 A C\n",
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
};

TEST(FaultLocator, TellsTheLine) {
  for (const FaultCase& test : kFaultCases) {
    SCOPED_TRACE(test.rule);
    const std::vector<Fault> faults = LocateFaults(test.log, test.text);
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

}  // namespace
}  // namespace host
