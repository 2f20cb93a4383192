// Loads of the files of the mapping engines: maps, phenotypes, families, simulations.

#include <cmath>
#include <string>
#include <vector>

#include "project/chromosomes.h"
#include "project/phenotypes.h"
#include "tests/support/load.h"

namespace project {
namespace {

using support::Integer8;
using support::Load;
using support::Padded;
using support::ScratchFolder;

std::string Short(const std::string& text) { return Padded(text, 19); }

std::string Report(const std::string& words, const std::vector<std::string>& details) {
  std::string log = "--Input error: " + words + "\n";
  for (const std::string& detail : details) {
    log += detail + "\n";
  }
  return log;
}

// An SDL file of two inbred lines: the map as told, and a genotype table of the markers named.
std::string Sdl(int spaceType, int spaceUnit, const std::string& names, const std::string& map,
                const std::vector<std::string>& markers) {
  std::string text = "4\n1\n" + std::to_string(spaceType) + "\n" + std::to_string(spaceUnit) + "\n";
  text +=
      std::to_string(std::count(names.begin(), names.end(), '\n')) + "\n2\n!names\n" + names + "!map\n" + map;
  text += "!types\n";
  for (const std::string& marker : markers) {
    text += marker + " A B\n";
  }
  return text;
}

TEST(Chromosomes, Reports) {
  const ScratchFolder folder;
  const std::string names = "C1 2\nC2 1\n", good = "a 1 0\nb 1 5.5\nc 2 0\n";
  const std::vector<std::string> abc = {"a", "b", "c"};
  const std::string differs = "Different names on chromosome and markertype!";
  const auto twice = [](int c1, int k1, int c2, int k2) {
    return Report("two markers have same name on linkage maps!",
                  {"  ChromID, MarkerID, Name of 1st marker = " + Integer8(c1) + Integer8(k1) + " " +
                       support::NameField("a"),
                   "  ChromID, MarkerID, Name of 2nd marker = " + Integer8(c2) + Integer8(k2) + " " +
                       support::NameField("a")});
  };
  const auto disagree = [&](int c, int m, const std::string& map, const std::string& types) {
    return Report(differs, {"  ChromID, MarkerID, Name on Chromosome, Name on Markertype = " + Integer8(c) +
                            Integer8(m) + " " + support::NameField(map) + " " + support::NameField(types)});
  };
  const std::string falls =
      Report("two markers are in wrong order!",
             {"  ChromID, MarkerID, Position of 1st marker = " + Integer8(1) + Integer8(2) + "    5.00",
              "  ChromID, MarkerID, Position of 2nd marker = " + Integer8(1) + Integer8(3) + "    4.00"});
  struct Case {
    const char* rule;
    std::string text, log;
  };
  const Case cases[] = {
      {"good", Sdl(2, 1, names, good, abc), "good"},
      {"a name row that cannot be read is told in eight characters", Sdl(2, 1, "C1 x\nC2 1\n", good, abc),
       Report("cannot read chromosome name and number of markers!", {"  ChromI" + Integer8(1)})},
      {"a chromosome without markers", Sdl(2, 1, "C1 2\nC2 0\n", good, abc),
       Report("Number of Markers out of range!",
              {"  ChromID, Number of Markers = " + Integer8(2) + Integer8(0)})},
      {"an interval row, with the chromosome that is due", Sdl(1, 1, names, "a 1 0\nb 7 x\nc 2 0\n", abc),
       Report("cannot read marker name and interval!",
              {"  ChromID, MarkerID = " + Integer8(1) + Integer8(2)})},
      {"a position row, with the chromosome as the row had it",
       Sdl(2, 1, names, "a 1 0\nb 7 x\nc 2 0\n", abc),
       Report("cannot read marker name and position!", {"ChromID, MarkerID =" + Integer8(7) + Integer8(2)})},
      {"or as the row before left it", Sdl(2, 1, names, "a 1 0\nb x 5\nc 2 0\n", abc),
       Report("cannot read marker name and position!", {"ChromID, MarkerID =" + Integer8(1) + Integer8(2)})},
      {"also one of the chromosome before", Sdl(2, 1, names, "a 1 0\nb 1 5\nc x 0\n", abc),
       Report("cannot read marker name and position!", {"ChromID, MarkerID =" + Integer8(1) + Integer8(1)})},
      {"or nothing yet", Sdl(2, 1, names, "a x 0\n", abc),
       Report("cannot read marker name and position!", {"ChromID, MarkerID =" + Integer8(0) + Integer8(1)})},
      {"nulls keep the row before: name and count",
       Sdl(2, 1, "C1 2\n,,\n", "a 1 0\nb 1 5\nc 2 0\nd 2 1\n", {"a", "b", "c", "d"}), "good"},
      {"the name and the chromosome of a map row", Sdl(2, 1, names, "a 1 0\n,, 5\nc 2 0\n", abc),
       twice(1, 1, 1, 2)},
      {"and its position", Sdl(2, 1, names, "a 1 3\nb 1,,\nc 2 0\n", abc), "good"},
      {"a bad row ends the reading: equal names before it are not told",
       Sdl(2, 1, names, "a 1 0\na 1 5\nc 9 0\n", abc),
       Report("chromosome and marker info does not match!",
              {"  Input ChromID, Input MarkerID, Expected ChromID= " + Integer8(9) + Integer8(1) +
               Integer8(2)})},
      {"a chromosome number that is not due", Sdl(2, 1, names, "a 0 0\nb 1 5\nc 2 0\n", abc),
       Report("chromosome and marker info does not match!",
              {"  Input ChromID, Input MarkerID, Expected ChromID= " + Integer8(0) + Integer8(1) +
               Integer8(1)})},
      {"a name three times is three reports", Sdl(2, 1, names, "a 1 0\na 1 5\na 2 0\n", abc),
       twice(1, 1, 1, 2) + twice(1, 1, 2, 1) + twice(1, 2, 2, 1)},
      {"equal positions pass", Sdl(2, 1, "C1 3\n", "a 1 0\nb 1 0\nc 1 5\n", abc), "good"},
      {"falling positions", Sdl(2, 1, "C1 3\n", "a 1 0\nb 1 5\nc 1 4\n", abc), falls},
      {"negative intervals fall", Sdl(1, 1, "C1 3\n", "a 1 0\nb 1 5\nc 1 -1\n", abc), falls},
      {"the order is looked at after the names", Sdl(2, 1, "C1 3\n", "a 1 0\na 1 5\nc 1 4\n", abc),
       twice(1, 1, 1, 2) + falls},
      {"only the first fall is told", Sdl(2, 1, "C1 3\nC2 2\n", "a 1 0\nb 1 5\nc 1 4\nd 2 9\ne 2 8\n", abc),
       falls},
      {"a marker too many shifts all behind it", Sdl(2, 1, names, good, {"a", "x", "b"}),
       disagree(1, 2, "b", "x") + disagree(2, 3, "c", "b")},
      {"names agree over 35 characters",
       Sdl(2, 1, "C1 1\n", std::string(34, 'n') + "x 1 0\n", {std::string(34, 'n') + "y"}),
       disagree(1, 1, std::string(34, 'n') + "x", std::string(34, 'n') + "y")},
      {"too few genotype rows", Sdl(2, 1, names, good, {"a", "b"}),
       Report("cannot read MarkerType!", {"  MarkerID = " + Integer8(3)})},
      {"huge counts take no memory", Sdl(2, 1, "C1 2000000000\n", "a 1 0\n", {}),
       Report("cannot read marker name and position!", {"ChromID, MarkerID =" + Integer8(1) + Integer8(2)})},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Load(Module::Sdl, c.text), c.log) << c.rule;
  }
}

TEST(Chromosomes, IntervalsAreSummedFirstThenMorganScaled) {
  const ScratchFolder folder;
  struct Case {
    int spaceType, spaceUnit;
    const char* values[3];
    std::vector<float> positions;
  };
  const Case cases[] = {
      {2, 1, {"0", "5.5", "5.5"}, {0, 5.5F, 5.5F}},
      {1, 1, {"10", "5", "0"}, {10, 15, 15}},
      {2, 2, {"0.1", "0.25", "0.3"}, {0.1F * 100, 25, 0.3F * 100}},
      {1, 2, {"0.1", "0.2", "0.07"}, {0.1F * 100, (0.1F + 0.2F) * 100, (0.1F + 0.2F + 0.07F) * 100}},
  };
  for (const Case& c : cases) {
    std::string map;
    for (int k = 0; k < 3; ++k) {
      map += std::string(1, static_cast<char>('a' + k)) + " 1 " + c.values[k] + "\n";
    }
    ASSERT_EQ(Load(Module::Sdl, Sdl(c.spaceType, c.spaceUnit, "C1 3\n", map, {"a", "b", "c"})), "good");
    EXPECT_EQ(Store(Module::Sdl).Chromosome.items[0].Position, c.positions);
    EXPECT_EQ(Store(Module::Sdl).TotalMarkers, 3);
  }
  EXPECT_NE(Load(Module::Sdl, Sdl(2, 1, "C1 2\n", "a 1 5\nb 1 4\n", {"a", "b"})), "good");
  EXPECT_EQ(Store(Module::Sdl).TotalMarkers, 3) << "as the load before left it when positions fall";
}

TEST(Chromosomes, NamesMustDifferInEveryModuleOfOneMap) {
  const ScratchFolder folder;
  const std::pair<Module, const char*> headers[] = {
      {Module::Bip, "1\n4\n1\n2\n1\n1\n2\n1\n"},   {Module::Met, "4\n1\n2\n1\n1\n2\n1\n"},
      {Module::Nam, "4\n1\n2\n1\n1\n1\n1\nf 2\n"}, {Module::Sdl, "4\n1\n2\n1\n1\n2\n"},
      {Module::Cdq, "1\n1\n2\n1\n1\n2\n1\n"},      {Module::Plq, "1\n1\n2\n1\n1\n2\n1\n"},
  };
  for (const auto& [module, header] : headers) {
    EXPECT_TRUE(Load(module, header + std::string("C1 2\na 1 0\na 1 1\n"))
                    .starts_with("--Input error: two markers have same name on linkage maps!\n"))
        << header;
  }
}

const char kMap[] =
    "C1 1\nC2 2\na 1 0\nb 2 0\nc 2 5\na A B\nb B A\nc A A\n";  // three markers, two inbred lines

TEST(Phenotypes, TextualMarksSwitchTheMeaningOfMinus100ForGood) {
  const ScratchFolder folder;
  const auto values = [](const std::string& rows, int traits) {
    const std::string log =
        Load(Module::Cdq, 20,
             "1\n1\n2\n1\n1\n2\n" + std::to_string(traits) + "\nC1 1\na 1 0\nABCD a AC BD\n" + rows);
    EXPECT_EQ(log, "good");
    return Store(Module::Cdq).Phenotype.items;
  };
  const float missing = kMissingPhenotype;
  EXPECT_EQ(values("t1 -100 -100.0001\n", 1), (std::vector<float>{missing, -100.0001F}));
  EXPECT_EQ(values("t1 -100.0 1e2\nt2 NA -100\n't 3' . -1.0D2\n", 3),
            (std::vector<float>{missing, 100, missing, -100, missing, -100}))
      << "from the trait with the mark on";
  EXPECT_EQ(Text(Store(Module::Cdq).TraitName.items[2]), Short("t 3"));
  EXPECT_EQ(Store(Module::Cdq).TraitFlag.items, std::vector<int32_t>(3, 0));
  EXPECT_EQ(values("t1 -100 5\n", 1), (std::vector<float>{-100, 5})) << "and in every later file";
  EXPECT_EQ(values("t1 '12,5' '7/8'\nt2 '2*5' ','\n", 2), (std::vector<float>{12, 7, 5, 0}))
      << "a quoted value is read as a list of its own";
  EXPECT_EQ(values("t1 1234567890123456789012 1\n", 1)[0], 12345678901234567890.0F) << "cut at 20 characters";
  EXPECT_EQ(values("t1 1 2\n,, 3\n", 2), (std::vector<float>{1, 2, 1, 3})) << "nulls keep the row before";
  EXPECT_EQ(Text(Store(Module::Cdq).TraitName.items[1]), Short("t1"));
  EXPECT_EQ(values("t1 na 'NA '\nt2 * 1\n", 2), (std::vector<float>{missing, missing, missing, 1}));
}

TEST(Phenotypes, Reports) {
  const ScratchFolder folder;
  const std::string head = "4\n1\n2\n1\n2\n2\n2\n";
  const std::string words = "cannot read phenotypic data!";
  EXPECT_EQ(Load(Module::Met, head + kMap + "e1 1 2\ne2 3 4\n"), "good") << "a row an environment";
  EXPECT_EQ(Load(Module::Met, head + kMap + "e1 1 2\ne2 3\n"),
            Report(words, {"  TraitID, Trait Name = " + Integer8(2) + " " + Short("e2")}));
  EXPECT_EQ(Load(Module::Met, head + kMap + "e1 1 2\n"),
            Report(words, {"  TraitID, Trait Name = " + Integer8(2) + " " + Short("")}));
}

TEST(PhenotypesDeathTest, AValueThatIsNoNumberEndsTheProcess) {
  const ScratchFolder folder;
  for (const char* value : {"Na", "x", "1.2.3", "' '", "nan", "12abc"}) {
    EXPECT_EXIT(Load(Module::Met, "4\n1\n2\n1\n2\n2\n1\n" + std::string(kMap) + "e1 1 " + value + "\n"),
                testing::ExitedWithCode(1), "of 'e1' is not a number")
        << value;
  }
}

TEST(Families, SizesMakeThePopulation) {
  const ScratchFolder folder;
  const auto file = [](const std::string& families) {
    return "4\n1\n2\n1\n2\n2\n1\n!families\n" + families + "!names\n" + kMap + "t1 1 2\n";
  };
  EXPECT_EQ(Load(Module::Nam, file("f1 1\nf2 1\n")), "good");
  EXPECT_EQ(Store(Module::Nam).Header.PopulationSize, 2);
  EXPECT_EQ(Load(Module::Nam, file("f1 1\n,,\n")), "good") << "nulls keep the row before";
  EXPECT_EQ(Store(Module::Nam).Header.PopulationSize, 2);
  EXPECT_EQ(Load(Module::Nam, file("f1 0\nf2 -1\n")),
            Report("family size out of range!", {"  FamilyID, Family Size = " + Integer8(1) + Integer8(0)}))
      << "the first alone";
  EXPECT_EQ(Load(Module::Nam, file("f1 1\nf2 x\n")),
            Report("cannot read family name, and family size!", {"  FamliyID = " + Integer8(2)}));
  EXPECT_EQ(Load(Module::Nam, file("f1 2000000000\nf2 2000000000\n")),
            Report("cannot read MarkerType!", {"  MarkerID = " + Integer8(1)}));
  EXPECT_EQ(Load(Module::Nam, "7\n"),
            Report("Population Type out of range!", {"  Population Type = " + Integer8(7)}));
}

// A BIP simulation: two traits on the map above, with the second trait's part as told.
std::string Simulation(const std::string& second, int spaceUnit = 1) {
  return "2\n4\n1\n2\n" + std::to_string(spaceUnit) + "\n2\n2\n2\n" + kMap +
         "!trait 1\n1 5 0.5\n!next\n2 10 20 1 2\n1 2 3 4 5 6\n1\n0.4\n12.5\n" + second;
}

TEST(TraitSimulation, ReadsEachChromosomesRowTwice) {
  const ScratchFolder folder;
  ASSERT_EQ(
      Load(Module::Bip,
           Simulation("0\n!\n0\nan empty triangle takes a record\n2\n3.5\n-1\nthe rest is not read", 2)),
      "good");
  const std::vector<SimulatedTrait>& traits = Store(Module::Bip).Simulation.items;
  EXPECT_EQ(traits[0].TraitQTL[1].QTLPosition, (std::vector<float>{1000, 2000})) << "Morgan";
  EXPECT_EQ(traits[0].TraitQTL[1].QTLEffect, (std::vector<float>{1, 2}));
  EXPECT_EQ(traits[0].EpistasisEffect, (std::vector<float>{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(traits[0].Heritability, 0.4F);
  EXPECT_EQ(traits[1].ErrorVariance, 3.5F);
  EXPECT_EQ(traits[1].OverallMean, -1.0F);
  EXPECT_EQ(Text(Store(Module::Bip).TraitName.items[1]), Short("2"));
}

TEST(TraitSimulation, Reports) {
  const ScratchFolder folder;
  const std::string name = " " + Short("2");
  const std::string trait = "  TraitID, TraitName = " + Integer8(2) + name;
  const auto chromosome = [&](int c) {
    return "  TraitID, ChromID, TraitName = " + Integer8(2) + Integer8(c) + name;
  };
  const std::string ascending = "QTL positions must be in the ascending order!";
  const auto qtl = [&](int k) {
    return "  TraitID, ChromID, QTLID, TraitName = " + Integer8(2) + Integer8(1) + Integer8(k) + name;
  };
  struct Case {
    const char* rule;
    std::string second, log;
  };
  const Case cases[] = {
      {"no number of QTL", "x\n", Report("cannot read the number of QTL!", {chromosome(1)})},
      {"of the second chromosome", "0\nx\n", Report("cannot read the number of QTL!", {chromosome(2)})},
      {"a position", "1 x 1\n", Report("cannot read QTL positions!", {chromosome(1)})},
      {"an effect too few", "0\n1 5", Report("cannot read QTL positions!", {chromosome(2)})},
      {"a number that is only claimed", "2000000000 1\n",
       Report("cannot read QTL positions!", {chromosome(1)})},
      {"two QTL at one position", "2 5 5 1 1\n", Report(ascending, {qtl(1)})},
      {"positions that a slash leaves out are 0", "2 5/\n", Report(ascending, {qtl(1)})},
      {"a huge number of them too", "2000000000/\n", Report(ascending, {qtl(1)})},
      {"falling ones, the first alone", "4 1 5 4 3 1 1 1 1\n", Report(ascending, {qtl(2)})},
      {"a remark ahead of the triangle is none", "1 5 1\n0\n! remark\n1\n1\n1\n1\n",
       Report("cannot read lower triangular matrix of QTL effects!", {trait})},
      {"the triangle", "1 5 1\n1 5 1\n1 2 x\n",
       Report("cannot read lower triangular matrix of QTL effects!", {trait})},
      {"the indicator", "0\n0\n-\nx\n",
       Report("cannot read the indicator for heritability (1) or error variance (2)!", {trait})},
      {"a remark ahead of it is none", "0\n0\n-\n!\n1\n0.5\n1\n",
       Report("cannot read the indicator for heritability (1) or error variance (2)!", {trait})},
      {"nor ahead of its value", "0\n0\n-\n1\n!\n0.5\n1\n",
       Report("cannot read heritability or error variance!", {trait})},
      {"its value", "0\n0\n-\n1\nx\n", Report("cannot read heritability or error variance!", {trait})},
      {"the mean", "0\n0\n-\n1\n0.5\n", Report("cannot read the overall mean of phenotype!", {trait})},
      {"good", "0\n0\n-\n1\n0.5\n1\n", "good"},
      {"an indicator that is neither 1 nor 2 passes", "0\n0\n-\n7\n0.5\n1\n", "good"},
      {"a negative number of QTL is none", "-1\n0\n-\n1\n0.5\n1\n", "good"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Load(Module::Bip, Simulation(c.second)), c.log) << c.rule;
  }
  EXPECT_EQ(Load(Module::Bip, "3\n"), Report("indicator for mapping (1) or simulation (2) out of range!",
                                             {"  Indicator = " + Integer8(3)}));
  EXPECT_EQ(
      Load(Module::Bip, "1\n4\n1\n2\n1\n2\n2\n1\n" + std::string(kMap) + "t1 1 2\n0.05 wrong parameters\n"),
      "good");
}

TEST(Lines, Values) {
  const ScratchFolder folder;
  const std::string head = "1\n2\n3\n2\n1\n2\n!types\nm1 A B X\nm2 B A A\n!values\n";
  EXPECT_EQ(Load(Module::Csl, head + "t1 1 2 3\nt1r2 4 5 6\nt2 7 8 9\nt2r2 1 1 1/\n"), "good");
  EXPECT_EQ(Store(Module::Csl).Phenotype.items[3], 4.0F);
  EXPECT_EQ(Text(Store(Module::Csl).TraitName.items[1]), Short("t1r2"));
  EXPECT_EQ(Load(Module::Csl, head + "t1 1 2 3\n, , 5,,\nt2 7 8 9\nt2r2 1 1 1\n"), "good");
  EXPECT_EQ(Text(Store(Module::Csl).TraitName.items[1]), Short("t1")) << "a null keeps the row before";
  EXPECT_EQ(Store(Module::Csl).Phenotype.items[3], 1.0F);
  EXPECT_EQ(Store(Module::Csl).Phenotype.items[5], 3.0F);
  const std::string types = "!types\nm1 A B X\nm2 B A A\n",
                    rows = "r 1 2 3\nr 4 5 6\nr 7 8 9\nr 1 1 1\nr 1 1 1\n";
  EXPECT_EQ(Load(Module::Csl, "1\n2\n3\n2\n2\n2\n" + types + rows + "r 1 NA 1\n"),
            Report("cannot read trait values!",
                   {"  TraitID, EnvID, RepID" + Integer8(2) + Integer8(1) + Integer8(2)}));
}

TEST(Lines, SimulationAndWhatFollowsFromIt) {
  const ScratchFolder folder;
  const std::string head = "2\n3\n4\n!types\nm1 A B X A\nm2 B A A B\nm3 A A B X\n!simulation\n";
  ASSERT_EQ(Load(Module::Csl, head + "2 10 0.8\n1 3\n0.5 2\nnot read\n"), "good");
  const LineSimulation& lines = Store(Module::Csl).Lines;
  EXPECT_EQ(lines.MarkerEffect.items, (std::vector<float>{0.5F, 0, 2}));
  EXPECT_EQ(lines.GenotypicValue.items, (std::vector<float>{2.5F, 1.5F, -2.5F, -1.5F}));
  EXPECT_EQ(lines.GeneticVariance, 4.25F);
  EXPECT_NEAR(lines.ErrorVariance, 4.25 * 0.25, 1e-6);
  EXPECT_NEAR(lines.PVEGenetic.items[0], 0.5 * 4 * 0.5 * 0.25 * 0.75 / 4.25 * 100, 1e-5)
      << "from the missing cells";
  EXPECT_EQ(lines.PVEGenetic.items[1], 0.0F);
  EXPECT_NEAR(lines.PVEPhenotypic.items[2], 2.0 * 4 * 2 * 0.25 * 0.75 / (4.25 * 1.25) * 100, 1e-4);

  struct Case {
    const char* rule;
    std::string block, log;
  };
  const Case cases[] = {
      {"the counts", "2 10 x\n",
       Report("cannot read the number of QTL, number of simulations, and heritability!", {})},
      {"the locations", "2 10 0.8\n1 1.5\n", Report("cannot read the locations of QTL!", {})},
      {"a location above the markers, told once", "2 10 0.8\n4 5\n1 1\n",
       Report("QTL locations out of range!", {})},
      {"the effects", "2 10 0.8\n1 3\n0.5\n", Report("cannot read the additive effects of QTLs!", {})},
      {"a number that is only claimed", "2000000000 10 0.8\n1 3\n0.5\n",
       Report("cannot read the locations of QTL!", {})},
      {"no QTL at all", "0 10 0.8\n\n\n", "good"},
      {"effects that a slash leaves out", "2 10 0.8\n2 2\n0.5/\n", "good"},
      {"locations below 1 have no effect, the last of two alike wins", "4 10 0.8\n0 -5 2 2\n1 1 7 1\n",
       "good"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Load(Module::Csl, head + c.block), c.log) << c.rule;
  }
  EXPECT_EQ(lines.MarkerEffect.items, (std::vector<float>{0, 1, 0}));
}

}  // namespace
}  // namespace project
