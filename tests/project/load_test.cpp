// Loads of raw marker files: every report letter for letter, and what a good load leaves in the store.

#include "tests/support/load.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "platform/unit.h"
#include "project/header_fields.h"
#include "project/loader.h"
#include "project/store.h"

namespace project {
namespace {

using support::Integer8;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

std::string Load(int32_t moduleCode, const std::string& text) {
  return support::Load(Module::Bin, moduleCode, text);
}

// A file of one population type: `size` lines, the marker rows given, all anchors 0 unless told.
std::string File(int population, int size, const std::vector<std::string>& rows, const std::string& anchors) {
  std::string text = "!type\n" + std::to_string(population) + "\n!function\n1\n!space\n2\n!markers\n" +
                     std::to_string(rows.size()) + "\n!size\n" + std::to_string(size) + "\n!types\n";
  for (const std::string& row : rows) {
    text += row + "\n";
  }
  return text + "!anchors\n" + anchors;
}

TEST(Header, EveryFieldHasItsWordsAndItsRange) {
  const ScratchFolder folder;
  struct Case {
    Field field;
    int32_t moduleCode;
    std::string value, log;
    int32_t left;  // in the field afterwards
  };
  const auto outOfRange = [](const std::string& words, const std::string& detail, int32_t value) {
    return "--Input error: " + words + " out of range!\n  " + detail + " = " + Integer8(value) + "\n";
  };
  std::vector<Case> cases = {
      {Field::Indicator, 105, "x", "--Input error: cannot read indicator for mapping (1) or simulation (2)\n",
       77},
      {Field::PopulationType, 102, "x", "--Input error: cannot read Population Type!\n", 77},
      {Field::PopulationType, 10, "99", "", 99},
      {Field::PopulationType, 103, "-5", "", -5},
      {Field::PopulationType, 107, "21", "", 21},
      {Field::MappingFunction, 102, "2.5", "--Input error: cannot read Mapping Function!\n", 77},
      {Field::MappingFunction, 102, "3 ! taken", "", 3},
      {Field::MappingFunction, 102, ",", outOfRange("Mapping Function", "Mapping Function", 77),
       77},  // a null
      {Field::MarkerSpaceType, 102, " !", "--Input error: cannot read Marker Space Type!\n", 77},
      {Field::MarkerSpaceUnit, 102, "", "--Input error: cannot read Marker Space Unit!\n", 77},
      {Field::NumFamilies, 108, "x", "--Input error: cannot read Number of Environments!\n", 77},
      {Field::NumFamilies, 108, "0", outOfRange("Number of Families", "Number of Families", 0), 0},
      {Field::PopulationSize, 102, "-2147483648",
       "--Input error: Population Size out of range!\n  Population Size = ********\n", -2147483647 - 1},
      {Field::PopulationSize, 102, "2147483648", "--Input error: cannot read Population Size!\n", 77},
  };
  const std::pair<Field, std::string> counts[] = {
      {Field::NumChromosomes, "Number of Chromosomes"},   {Field::NumMarkers, "Number of Markers"},
      {Field::PopulationSize, "Population Size"},         {Field::NumTraits, "Number of Traits"},
      {Field::NumEnvironments, "Number of Environments"}, {Field::NumReplications, "Number of Replications"}};
  for (const auto& [field, words] : counts) {
    cases.push_back({field, 102, "0", outOfRange(words, words, 0), 0});
    cases.push_back({field, 102, "x", "--Input error: cannot read " + words + "!\n", 77});
    cases.push_back({field, 102, "1", "", 1});
  }
  const std::tuple<Field, std::string, std::string, int32_t> choices[] = {
      {Field::Indicator, "indicator for mapping (1) or simulation (2)", "Indicator", 2},
      {Field::MappingFunction, "Mapping Function", "Mapping Function", 3},
      {Field::MarkerSpaceType, "Marker Space Type", "Marker Space Type", 2},
      {Field::MarkerSpaceUnit, "Marker Space Uint", "Marker Space Uint", 2}};
  for (const auto& [field, words, detail, last] : choices) {
    for (int32_t value = 0; value <= last + 1; ++value) {
      const bool good = value >= 1 && value <= last;
      cases.push_back(
          {field, 102, std::to_string(value), good ? "" : outOfRange(words, detail, value), value});
    }
  }
  for (const Case& c : cases) {
    WriteFile("in.txt", "! remark\n" + c.value + "\n");
    platform::OpenUnit(kLogUnit, "field.log", platform::OpenStatus::Replace);
    platform::OpenUnit(kProjectUnit, "in.txt", platform::OpenStatus::Old);
    int32_t value = 77;
    int32_t status = 0;
    ReadField(c.moduleCode, kProjectUnit, kLogUnit, status, c.field, value);
    platform::CloseUnit(kProjectUnit);
    platform::CloseUnit(kLogUnit);
    EXPECT_EQ(ReadFile("field.log"), c.log) << c.value;
    EXPECT_EQ(status, c.log.empty() ? 0 : -1) << c.log;
    EXPECT_EQ(value, c.left) << c.log;
  }
}

TEST(Header, PopulationTypesByRuleSet) {
  const ScratchFolder folder;
  const auto accepted = [](int32_t moduleCode) {
    std::vector<int32_t> types;
    for (int32_t type = -1; type <= 33; ++type) {
      WriteFile("in.txt", std::to_string(type) + "\n");
      platform::OpenUnit(kLogUnit, "field.log", platform::OpenStatus::Replace);
      platform::OpenUnit(kProjectUnit, "in.txt", platform::OpenStatus::Old);
      int32_t status = 0;
      int32_t value = 0;
      ReadField(moduleCode, kProjectUnit, kLogUnit, status, Field::PopulationType, value);
      if (status == 0) {
        types.push_back(type);
      }
    }
    return types;
  };
  const std::vector<int32_t> all = accepted(10);
  EXPECT_EQ(all.size(), 35U);
  const std::vector<int32_t> twenty(all.begin() + 2, all.begin() + 22);
  EXPECT_EQ(accepted(20), (std::vector<int32_t>{1, 2}));
  EXPECT_EQ(accepted(30), (std::vector<int32_t>{1, 2, 3, 4}));
  for (const int32_t code : {101, 102, 104, 105, 106}) {
    EXPECT_EQ(accepted(code), twenty) << code;
  }
  EXPECT_EQ(accepted(107), all);
  EXPECT_EQ(accepted(108), (std::vector<int32_t>{1, 2, 3, 4, 5, 6, 9, 10, 11, 12, 17, 18, 19, 20}));
}

// A row under the rules of a module code, and the report or the codes and category that come of it.
struct RowCase {
  const char* rule;
  int32_t moduleCode;
  int population;
  std::string cells;  // behind the name M, and the category text where there is one
  std::string outcome;
};

std::string RowOutcome(const RowCase& c) {
  const bool withCategory = c.moduleCode == 20 || c.moduleCode == 30;
  const std::size_t blank = withCategory ? c.cells.find(' ') : 0;
  const std::string cells = withCategory ? c.cells.substr(blank + 1) : c.cells;
  const std::string row = (withCategory ? c.cells.substr(0, blank) + " M " : "M ") + cells;
  const int size = 1 + static_cast<int>(std::count(cells.begin(), cells.end(), ' '));
  const std::string log = Load(c.moduleCode, File(c.population, size, {row}, "M 0\n"));
  const ProjectBlock& block = Store(Module::Bin);
  return log == "good" ? std::to_string(MarkerCategoryAt(block, 1)) + " " + std::string(GenotypesAt(block, 1))
                       : log;
}

std::string Refused(const std::string& words, const std::string& detail) {
  return "--Input error: " + words + "\n  " + detail + "\n";
}

TEST(MarkerTypes, BiParentalRows) {
  const ScratchFolder folder;
  const std::string illegal = "Illegal Markertype value in input file!";
  const std::string category = "impossible Marker Category!";
  const std::string zero = "MarkerID, Marker Category = " + Integer8(1) + Integer8(0);
  const auto token = [](int line, const std::string& text) {
    return "MarkerID, LineID, Markertype = " + Integer8(1) + Integer8(line) + "  " + text;
  };
  const auto code = [](int line, char letter) {
    return "MarkerID, LineID, and Markertype= " + Integer8(1) + Integer8(line) + "   " + letter;
  };
  const RowCase cases[] = {
      {"tokens of A, H, B", 102, 7, "2 A AA 1 H AB BA 0 B BB", "1 AAAHHHHBBB"},
      {"tokens of D", 102, 7, "12 D AH HA AX XA A* *A A_ _A", "12 DDDDDDDDDD"},
      {"tokens of R", 101, 8, "10 R BH HB BX XB B* *B B_ _B", "10 RRRRRRRRRR"},
      {"tokens of X", 104, 13, "-1 X XX * **", "1 XXXXX"},
      {"longer tokens count by two characters", 105, 16, "ABC AAA BBx", "1 HAB"},
      {"and are shown by two", 105, 16, "ABC 1xy", Refused(illegal, token(2, "1x"))},
      {"co-dominant with missing", 106, 7, "A H B X", "1 AHBX"},
      {"dominant", 102, 15, "D B B X", "12 DBBX"},
      {"recessive", 102, 14, "R A X", "10 RAX"},
      {"D beside A cannot be", 102, 7, "D A B", Refused(category, zero)},
      {"an illegal token", 102, 7, "A Q B", Refused(illegal, token(2, "Q "))},
      {"an illegal token wins over an earlier refused code", 102, 1, "B zz A",
       Refused(illegal, token(2, "zz"))},
      {"lower case is illegal", 102, 7, "a", Refused(illegal, token(1, "a "))},
      {"backcross to P1 keeps A, H, X and drops D", 102, 1, "A H X D", "1 AHXX"},
      {"backcross to P1 refuses B", 102, 9, "A B",
       Refused("Markertype out of range (A, H, D, X)!", code(2, 'B'))},
      {"backcross to P1 refuses R", 102, 1, "R A",
       Refused("Markertype out of range (A, H, D, X)!", code(1, 'R'))},
      {"backcross to P2 keeps H, B, X and drops R", 102, 2, "H B X R", "1 HBXX"},
      {"backcross to P2 refuses A", 102, 10, "H A", Refused("Out of range (H, B, R, X)!", code(2, 'A'))},
      {"inbred lines drop H", 102, 4, "A H B", "1 AXB"},
      {"inbred lines refuse D", 102, 20, "A D", Refused("Out of range (A, H, B, X)!", code(2, 'D'))},
      {"nothing left", 102, 4, "X H", Refused(category, zero)},
      {"nothing left of a backcross", 102, 9, "X D", Refused(category, zero)},
      {"a row of one genotype is kept", 102, 3, "A A", "1 AA"},
  };
  for (const RowCase& c : cases) {
    EXPECT_EQ(RowOutcome(c), c.outcome) << c.rule;
  }
}

TEST(MarkerTypes, ClosedLinesAndNestedFamilies) {
  const ScratchFolder folder;
  const auto token = [](const std::string& detail, int line, const std::string& text) {
    return detail + Integer8(1) + Integer8(line) + "  " + text;
  };
  const std::string id = "MarkerID = " + Integer8(1);
  const std::string csl = "MarkerID, LineID, and Input Markertype = ",
                    nam = "MarkerID, LineID, Markertype = ";
  const RowCase cases[] = {
      {"closed lines: tokens", 107, 0, "2 D A AA 0 B BB -1 X XX * **", "1 AAAABBBXXXXX"},
      {"closed lines have no H", 107, 0, "A H",
       Refused("Illegal Markertype in input file!", token(csl, 2, "H "))},
      {"only A and X", 107, 0, "A X A", Refused("non polymorphism marker!", id)},
      {"only B", 107, 0, "B B", Refused("non polymorphism marker!", id)},
      {"only X", 107, 0, "X", Refused("non polymorphism marker!", id)},
      {"families: tokens", 108, 1, "2 A AA 1 H AB 0 B BB -1 X XX * **", "1 AAAHHHBBBXXXXX"},
      {"families of inbred lines drop H", 108, 4, "A H B", "1 AXB"},
      {"families have no BA", 108, 1, "BA",
       Refused("Illegal markertype in input file!", token(nam, 1, "BA"))},
      {"families have no AH", 108, 1, "A AH",
       Refused("Illegal markertype in input file!", token(nam, 2, "AH"))},
      {"families have no test of polymorphism", 108, 4, "X X", "1 XX"},
  };
  for (const RowCase& c : cases) {
    EXPECT_EQ(RowOutcome(c), c.outcome) << c.rule;
  }
}

TEST(MarkerTypes, ClonalRows) {
  const ScratchFolder folder;
  const std::string id = "MarkerID = " + Integer8(1);
  const std::string mono = "non-polymorhism marker!";
  const RowCase cases[] = {
      {"ABCD", 20, 1, "ABCD AC AD BC BD XX", "1 ABCDX"},
      {"A=B", 20, 2, "A=B XC XD XX", "2 EFX"},
      {"C=D", 20, 1, "C=D AX BX XX", "3 GHX"},
      {"AB=CD", 20, 1, "AB=CD AA AB BB XX", "4 IJKX"},
      {"A=CB=D", 20, 2, "A=CB=D AA AB BB", "4 IJK"},
      {"A=DB=C", 20, 2, "A=DB=C AA BB", "5 IK"},
      {"AB=CD is no double cross", 20, 2, "AB=CD AA BB",
       "--Input error: Marker category out of range!\n  MarkerID, Input Marker Category =        1AB=CD   "
       "\n"},
      {"A=DB=C is no clonal F1", 20, 1, "A=DB=C AA BB",
       "--Input error: Marker category out of range!\n  MarkerID, Inout Marker Category =        1 A=DB=C  "
       "\n"},
      {"an illegal token", 20, 1, "ABCD AC CA",
       Refused("illeagal Markertype in input file!", "MarkerID, Markertype = " + Integer8(1) + "  CA")},
      {"ABCD with another's token", 20, 1, "ABCD AC AD XC", Refused("illeagal marker in input file!", id)},
      {"C=D with another's token says monomorphic", 20, 1, "C=D AX BX AC", Refused(mono, id)},
      {"ABCD, one genotype and missing", 20, 1, "ABCD AC XX AC", Refused(mono, id)},
      {"A=DB=C with another's token", 20, 2, "A=DB=C AA AB XC", Refused("illeagal marker type!", id)},
      {"all missing", 20, 1, "AB=CD XX XX", Refused(mono, id)},
  };
  for (const RowCase& c : cases) {
    EXPECT_EQ(RowOutcome(c), c.outcome) << c.rule;
  }
}

TEST(MarkerTypes, MultiParentRows) {
  const ScratchFolder folder;
  const std::string id = "MarkerID = " + Integer8(1);
  const RowCase cases[] = {
      {"four alleles", 30, 1, "ABCD A B C D X", "1234 ABCDX"},
      {"shared alleles fold the cells", 30, 1, "ABAB A B C D", "1212 ABAB"},
      {"an allele named by a later parent folds too", 30, 2, "BBCD A B C D", "1134 AACD"},
      {"folded twice", 30, 1, "AABB C D A", "1122 CDA"},
      {"letters beyond four parents are ignored", 30, 2, "ABABXYZ A B", "1212 AB"},
      {"a token of two letters goes by the first and is not folded", 30, 1, "ABAB A B Cx", "1212 ABC"},
      {"a fifth letter in a cell passes", 30, 1, "ABCD A B E", "1234 ABE"},
      {"A and X alone pass", 30, 1, "ABCD A X X", "1234 AXX"},
      {"A and E alone do not", 30, 1, "ABCD A E A E", Refused("non-polymorphism marker!", id)},
      {"eight parents", 30, 3, "ABCDEFGH A B C D E F G H X", "12345678 ABCDEFGHX"},
      {"eight parents, shared", 30, 4, "ABABABAB A B G H", "12121212 ABAB"},
      {"a letter beyond the parents", 30, 1, "ABCE A B", Refused("illeagal marker type of the parents!", id)},
      {"an X among the parents", 30, 3, "ABCDEFGX A B", Refused("illeagal marker type of the parents!", id)},
      {"too few parents", 30, 1, "ABC A B", Refused("illeagal marker type of the parents!", id)},
      {"an unknown letter", 30, 1, "ABCD A I", Refused("illeagal marker type!", id)},
      {"a row that a slash cuts short", 30, 1, "ABCD A B C/ D", Refused("illeagal marker type!", id)},
      {"eight parents, A and X alone", 30, 3, "ABCDEFGH A X", Refused("non-polymorphism marker!", id)},
      {"four parents, A alone", 30, 1, "ABCD A A", Refused("non-polymorphism marker!", id)},
      {"four parents, X alone", 30, 1, "ABCD X X", "1234 XX"},
      {"four parents, folded to one", 30, 1, "ABAB A C A", Refused("non-polymorphism marker!", id)},
  };
  for (const RowCase& c : cases) {
    EXPECT_EQ(RowOutcome(c), c.outcome) << c.rule;
  }
  RowOutcome({"", 30, 1, "ABXB A B", ""});
  EXPECT_EQ(MarkerCategoryAt(Store(Module::Bin), 1), 1282) << "the pattern is kept of a row that is refused";
}

TEST(Load, ReportsOfRowsAnchorsAndNames) {
  const ScratchFolder folder;
  struct Case {
    const char* rule;
    std::string text, log;
  };
  const std::string twice = "--Input error: two markers have same name in markertypes!\n";
  const auto pair = [&](int first, int second, const std::string& name) {
    return twice + "  MarkerID, Name of 1st marker = " + Integer8(first) + " " + support::NameField(name) +
           "\n  MarkerID, Name of 2nd marker = " + Integer8(second) + " " + support::NameField(name) + "\n";
  };
  const std::vector<std::string> two = {"M1 A B", "M2 B A"};
  const auto mismatch = [](int m, const std::string& read, const std::string& expected) {
    return "--Input error: Name in AnchorInfo does not match name in Markertype!\n"
           "  MarkerID, Name in Anchorinfo, Name in MarkerType = " +
           Integer8(m) + " " + support::NameField(read) + " " + support::NameField(expected) + "\n";
  };
  const std::string noRow = "--Input error: cannot read MarkerType!\n  MarkerID = ";
  const Case cases[] = {
      {"good", File(4, 2, two, "M1 0\nM2 3\n"), "good"},
      {"an empty file", "", "--Input error: cannot read Population Type!\n"},
      {"a file of remarks", "!a\n!b\n", "--Input error: cannot read Population Type!\n"},
      {"a header that ends early is read again", "4\n1\n2\n",
       "--Input error: cannot read MarkerType!\n  MarkerID =        1\n"},
      {"a row that cannot be read", "4 1\n1\n2\n2\n2\nM1 A B\nM2 A", noRow + Integer8(2) + "\n"},
      {"a row one token short takes the next row's", File(4, 2, {"M1 A", "M2 A B"}, "M1 0\nM2 0\n"),
       "--Input error: Illegal Markertype value in input file!\n  MarkerID, LineID, Markertype = " +
           Integer8(1) + Integer8(2) + "  M2\n"},
      {"a remark between rows is a row", File(4, 2, {"M1 A B", "!x A B"}, "M1 0\n!x 0\n"), "good"},
      {"a name three times is three reports", File(4, 1, {"M A", "N A", "M B", "M A"}, ""),
       pair(1, 3, "M") + pair(1, 4, "M") + pair(3, 4, "M")},
      {"a row that is refused ends the reading ahead of the names", File(4, 1, {"M A", "M A", "N Q"}, ""),
       "--Input error: Illegal Markertype value in input file!\n  MarkerID, LineID, Markertype = " +
           Integer8(3) + Integer8(1) + "  Q \n"},
      {"the first of two bad tokens is told", File(4, 2, {"M1 Q Z"}, ""),
       "--Input error: Illegal Markertype value in input file!\n  MarkerID, LineID, Markertype = " +
           Integer8(1) + Integer8(1) + "  Q \n"},
      {"names are equal over 35 characters",
       File(4, 1, {std::string(40, 'n') + " A", std::string(36, 'n') + " B"}, ""),
       pair(1, 2, std::string(35, 'n'))},
      {"one marker row too many is an anchor row", File(4, 2, two, "") + "M2 2 0\n", mismatch(1, "M2", "M1")},
      {"too few anchors: the last row is read again", File(4, 2, two, "M1 0\n"),
       "--Input error: cannot read AnchorInfo!\n  MarkerID = " + Integer8(2) + "\n"},
      {"no anchors: the last marker row is read again", "4\n1\n2\n1\n2\nM1 A B\n",
       "--Input error: cannot read AnchorInfo!\n  MarkerID = " + Integer8(1) + "\n"},
      {"anchors out of order", File(4, 2, two, "M2 0\nM1 0\n"), mismatch(1, "M2", "M1")},
      {"nulls are the name and the genotype of the row before", File(4, 2, {"M A B", ",,B"}, ""),
       pair(1, 2, "M")},
      {"case counts", File(4, 2, two, "M1 0\nm2 0\n"), mismatch(2, "m2", "M2")},
      {"negative anchors, the first alone", File(4, 2, two, "M1 -1\nM2 -2\n"),
       "--Input error: Invalid anchor information!\n  MarkerID, AnchorInfo = " + Integer8(1) + Integer8(-1) +
           "\n"},
      {"a quoted number is none", File(4, 2, two, "M1 1\nM2 '2'\n"),
       "--Input error: cannot read AnchorInfo!\n  MarkerID = " + Integer8(2) + "\n"},
      {"an anchor that is no integer", File(4, 2, two, "M1 1\nM2 x\n"),
       "--Input error: cannot read AnchorInfo!\n  MarkerID = " + Integer8(2) + "\n"},
      {"a null anchor keeps the row before", File(4, 2, two, "M1 5\nM2,,\n"), "good"},
      {"huge counts take no memory", "4\n1\n2\n2000000000\n2000000000\nM1 A B\n", noRow + Integer8(1) + "\n"},
      {"a slash leaves a huge row blank", "4\n1\n2\n2\n2000000000\nM1 A/\n",
       "--Input error: Illegal Markertype value in input file!\n  MarkerID, LineID, Markertype = " +
           Integer8(1) + Integer8(2) + "    \n"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Load(101, c.text), c.log) << c.rule;
  }
}

TEST(Load, FillsTheStore) {
  const ScratchFolder folder;
  const std::string longName(40, 'L');
  ASSERT_EQ(Load(101, File(7, 3, {"'a name' A H B", longName + " D B X", "M3 2*R A"},
                           "'a name' 4\n" + longName + ",,\nM3 0\n")),
            "good");
  const ProjectBlock& block = Store(Module::Bin);
  EXPECT_EQ(MarkerNameAt(block, 1), support::NameField("a name"));
  EXPECT_EQ(MarkerNameAt(block, 2), std::string(35, 'L'));
  EXPECT_EQ(block.MarkerCategory.items, (std::vector<int32_t>{1, 12, 10}));
  EXPECT_EQ(block.AnchorInfo.items, (std::vector<int32_t>{4, 4, 0}));
  EXPECT_EQ(GenotypesAt(block, 2), "DBX");
  EXPECT_EQ(GenotypesAt(block, 3), "RRA");
  EXPECT_EQ(GenotypesAt(block, 4), "");
  EXPECT_EQ(block.BinWork[2].items, std::vector<int32_t>(3, 0));
  ReleaseStore(Module::Bin);
  EXPECT_FALSE(block.Genotype.allocated);
  EXPECT_EQ(block.Header.PopulationSize, 3) << "scalars stay";
}

TEST(Load, ACodeWithoutRulesReadsNoRows) {
  const ScratchFolder folder;
  // The anchor rows follow the header at once, and their names are blank.
  EXPECT_EQ(Load(7, "99\n1\n2\n2\n3\n' ' 5\n, 6\n"), "good");
  const ProjectBlock& block = Store(Module::Bin);
  EXPECT_EQ(MarkerNameAt(block, 2), support::NameField(""));
  EXPECT_EQ(MarkerCategoryAt(block, 2), 1);
  EXPECT_EQ(block.AnchorInfo.items, (std::vector<int32_t>{5, 6}));
}

TEST(Load, NullsKeepTheLastLoadAndTheCategoryTextLivesOn) {
  const ScratchFolder folder;
  ASSERT_EQ(Load(20, File(1, 2, {"A=B M1 XC XD", ", M2 XD XC"}, "M1 0\nM2 0\n")), "good");
  EXPECT_EQ(Store(Module::Bin).MarkerCategory.items, (std::vector<int32_t>{2, 2}));
  // The header of the second file is nulls: the first one's values. So is its first category text.
  EXPECT_EQ(Load(20, ",\n,\n,\n,\n,\n, M1 XC XD\n, M2 XD XC\nM1 0\nM2 0\n"), "good");
  EXPECT_EQ(Store(Module::Bin).MarkerCategory.items, (std::vector<int32_t>{2, 2}));
}

TEST(LoadDeathTest, ABlockThatWasNotReleasedAndAFileThatIsNotThere) {
  const ScratchFolder folder;
  const std::string text = File(4, 1, {"M1 A"}, "M1 0\n");
  ASSERT_EQ(Load(101, text), "good");
  int32_t status = 0;
  EXPECT_EXIT(LoadModule(Module::Bin, 101, "in.txt", status), testing::ExitedWithCode(1),
              "still holds the last load");
  ReleaseStore(Module::Bin);
  EXPECT_EXIT(LoadModule(Module::Bin, 101, "absent", status), testing::ExitedWithCode(1),
              "cannot open 'absent'");
}

// Truncated at every byte, and changed at every byte: a report, or good, or the fatal path; nothing else
// happens.
TEST(Load, EveryTruncationAndEveryChangedByteEndsInAReport) {
  const ScratchFolder folder;
  const std::string bi = File(7, 3, {"M1 A H B", "'M 2' D,B X", "M3 2*R A"}, "M1 0\n'M 2' 1\nM3 0\n");
  const std::string clonal = File(1, 3, {"ABCD M1 AC BD AD", "A=B M2 XC XD XX"}, "M1 0\nM2 1\n");
  const std::string parents = File(1, 3, {"ABCD M1 A B C", "ABAB M2 A D X"}, "M1 0\nM2 1\n");
  const std::pair<int32_t, std::string> files[] = {
      {101, bi}, {107, bi}, {108, bi}, {20, clonal}, {30, parents}};
  std::size_t good = 0;
  std::size_t reported = 0;
  for (const auto& [moduleCode, text] : files) {
    for (std::size_t at = 0; at < text.size(); ++at) {
      const std::string log = Load(moduleCode, text.substr(0, at));
      ++(log == "good" ? good : reported);
      for (const char byte : {'\0', '\n', ' ', '\'', '*', ',', '/', '9', 'X', '\xff'}) {
        std::string changed = text;
        changed[at] = byte;
        const std::string outcome = Load(moduleCode, changed);
        ++(outcome == "good" ? good : reported);
        EXPECT_TRUE(outcome == "good" || outcome.starts_with("--Input error: ")) << outcome;
      }
    }
  }
  EXPECT_GT(good, 100U);
  EXPECT_GT(reported, 1000U);
}

}  // namespace
}  // namespace project
