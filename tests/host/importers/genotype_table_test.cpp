// Genotype tables as they are read from project files and written to them.

#include "host/genotype_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/exit_code.h"
#include "host/marker_data.h"
#include "tests/host/command_runner.h"

namespace host {
namespace {

std::string Slurp(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::string RowText(const GenotypeTable& table, std::size_t marker) {
  std::string text;
  for (const uint8_t cell : table.Row(marker)) {
    text += (text.empty() ? "" : " ") + std::string(CodesOf(table.kind)[cell]);
  }
  return text;
}

void ExpectSame(const GenotypeTable& a, const GenotypeTable& b) {
  EXPECT_EQ(a.populationType, b.populationType);
  EXPECT_EQ(a.mappingFunction, b.mappingFunction);
  EXPECT_EQ(a.markerSpaceType, b.markerSpaceType);
  EXPECT_EQ(a.lines, b.lines);
  EXPECT_EQ(a.markers, b.markers);
  EXPECT_EQ(a.lineNames, b.lineNames);
  EXPECT_EQ(a.categories, b.categories);
  EXPECT_EQ(a.anchors, b.anchors);
  EXPECT_EQ(a.cells, b.cells);
}

// Counts by marker from the library's own load are the oracle.
TEST(GenotypeTable, RealCrossesAreReadAsTheLibraryReadsThem) {
  for (const std::string name : {"listeria.map", "multitrait.map"}) {
    const InputFile input = OpenInput(EXAMPLES_DIR "/" + name);
    const GenotypeTable table = ReadGenotypes(Slurp(input.absolute), TableKind::Map);
    MapData data, again;
    ASSERT_TRUE(LoadMarkers(input, TableKind::Map, true, data).good);
    EXPECT_EQ(table.markers, data.names);
    EXPECT_EQ(static_cast<int32_t>(table.lines), data.populationSize);
    for (std::size_t m = 0; m < table.markers.size(); ++m) {
      const auto row = table.Row(m);
      EXPECT_EQ(std::count(row.begin(), row.end(), MissingCell(TableKind::Map)), data.countX[m]) << m;
      EXPECT_EQ(std::count(row.begin(), row.end(), CellOf(TableKind::Map, "A")), data.counts[0][m]) << m;
      EXPECT_EQ(table.anchors[m], data.anchor[m]);
    }
    const std::string text = ProjectText(table);
    ExpectSame(ReadGenotypes(text, TableKind::Map), table);
    const Sandbox sandbox;
    ASSERT_TRUE(LoadMarkers(OpenInput(sandbox.Write("again.map", text)), TableKind::Map, true, again).good);
    EXPECT_TRUE(std::equal(data.lod.view().begin(), data.lod.view().end(), again.lod.view().begin()));
  }
}

TEST(GenotypeTable, FilesOfEveryKindComeBackAsTheyWere) {
  struct Case {
    const char* file;
    TableKind kind;
    const char* tail;  // some files were made without anchors
    std::size_t marker;
    const char* row;
  };
  const Case cases[] = {
      {"/clonal.cdm", TableKind::Cdm, "", 2, "XC XD XC XC XX XD XD XC"},
      {"/double_cross.cdm", TableKind::Cdm, "", 0, "XX AB AA AA BB BB AB AB"},
      // Parents ABAB: C and D show the alleles of A and B. Parents AABB: B shows that of A.
      {"/multi_parent.plm", TableKind::Plm, "\nP1 0\nP2 0\nP3 0\nP4 3\nP5 0\nP6 0\nP7 0\n", 3,
       "B X B X A A B B B X"},
      {"/multi_parent.plm", TableKind::Plm, "\nP1 0\nP2 0\nP3 0\nP4 3\nP5 0\nP6 0\nP7 0\n", 0,
       "X C C A D A X A X A"},
  };
  for (const Case& c : cases) {
    const GenotypeTable table =
        ReadGenotypes(Slurp(SOURCE_DIR "/tests/golden" + std::string(c.file)) + c.tail, c.kind);
    EXPECT_EQ(RowText(table, c.marker), c.row) << c.file;
    ExpectSame(ReadGenotypes(ProjectText(table), c.kind), table);
  }
}

TEST(GenotypeTable, RowsFollowTheRulesOfProjectFiles) {
  const std::string text =
      "!remark\n7\n2\n1\n4\n5\n!Line names: l1 'l 2' l3 l4 l5\n!types\n"
      "'a, \"b\"/''c''' 2 AAB 12 *\n-1 dropped words\n"  // a quoted name; cut and numeric codes; over two lines
      "m2 3*H,,BA\n"                                     // a null is the genotype of the row above
      "'12*x' H_ _A Q 10 XX\n"
      "averyveryverylongmarkername123456789TOOLONG 5*B\n"
      "!anchors\n'a, \"b\"/''c''' 2\nm2 0\n'12*x' 0\naveryveryverylongmarkername123456789TOOLONG 7\n";
  const GenotypeTable table = ReadGenotypes(text, TableKind::Map);
  EXPECT_EQ(table.markers,
            (std::vector<std::string>{"a, \"b\"/'c'", "m2", "12*x", "averyveryverylongmarkername12345678"}));
  EXPECT_EQ(RowText(table, 0), "A A D X X");
  EXPECT_EQ(RowText(table, 1), "H H H X H");
  EXPECT_EQ(RowText(table, 2), "X D X R X");
  EXPECT_EQ(table.lineNames, (std::vector<std::string>{"l1", "l 2", "l3", "l4", "l5"}));
  EXPECT_EQ(table.anchors, (std::vector<int32_t>{2, 0, 0, 7}));
  ExpectSame(ReadGenotypes(ProjectText(table), TableKind::Map), table);
}

// A genotype that cannot be in the population counts as missing, as in the library.
TEST(GenotypeTable, ThePopulationDecidesWhatCounts) {
  const std::pair<const char*, const char*> cases[] = {
      {"1", "A H X X X"}, {"10", "X H B X X"}, {"4", "A X B X X"}, {"13", "A H B D R"}};
  for (const auto& [population, row] : cases) {
    const std::string text = std::string(population) + "\n1\n2\n1\n5\nm A H B D R\nm 0\n";
    EXPECT_EQ(RowText(ReadGenotypes(text, TableKind::Map), 0), row) << population;
  }
}

TEST(GenotypeTable, WhatIsNoProjectFileIsAFailure) {
  for (const char* text :
       {"", "7\n1\n2\n1\n", "7\n1\n2\nx\n5\n", "7\n1\n2\n2\n2\nm A A\n",
        "7\n1\n2\n2000000000\n2000000000\nm A\n", "7\n1\n2\n1\n2\nm A A\n", "0\n1\n2\n1\n1\n"}) {
    EXPECT_THROW(ReadGenotypes(text, TableKind::Map), Failure) << text;
  }
}

}  // namespace
}  // namespace host
