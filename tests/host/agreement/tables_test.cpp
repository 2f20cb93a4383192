// The host's tables of what stands in project files beside those of the readers.

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "host/genotype_rules.h"
#include "host/module_sections.h"
#include "project/genotype_rules.h"
#include "tests/support/load.h"

namespace {

using HostSteps = std::vector<std::pair<host::Section, std::pair<host::Field, int>>>;

const std::map<project::Field, host::Field> kFields = {
    {project::Field::Indicator, host::Field::Indicator},
    {project::Field::PopulationType, host::Field::PopulationType},
    {project::Field::MappingFunction, host::Field::MappingFunction},
    {project::Field::MarkerSpaceType, host::Field::MarkerSpaceType},
    {project::Field::MarkerSpaceUnit, host::Field::MarkerSpaceUnit},
    {project::Field::NumChromosomes, host::Field::NumChromosomes},
    {project::Field::NumMarkers, host::Field::NumMarkers},
    {project::Field::PopulationSize, host::Field::PopulationSize},
    {project::Field::NumTraits, host::Field::NumTraits},
    {project::Field::NumEnvironments, host::Field::NumEnvironments},
    {project::Field::NumReplications, host::Field::NumReplications},
    {project::Field::NumFamilies, host::Field::NumFamilies},
};

bool HasCategory(int32_t moduleCode) {
  const project::MarkerRules rules = project::RulesOf(moduleCode).markers;
  return rules == project::MarkerRules::Clonal || rules == project::MarkerRules::MultiParent;
}

// The tables that a section of the loader is for the host; steps without a row in the file are none.
std::vector<host::Section> TablesOf(project::Section section, int32_t moduleCode) {
  switch (section) {
    case project::Section::Header:
      return {host::Section::Header};
    case project::Section::MarkerTypes:
      return {HasCategory(moduleCode) ? host::Section::Categorised : host::Section::Markers};
    case project::Section::Chromosomes:
      return {host::Section::Chromosomes, host::Section::Map};
    case project::Section::Anchors:
      return {host::Section::Anchors};
    case project::Section::Phenotypes:
      return {host::Section::Phenotypes};
    case project::Section::EnvironmentRows:
      return {host::Section::EnvironmentRows};
    case project::Section::Families:
      return {host::Section::Families};
    case project::Section::TraitSimulation:
      return {host::Section::TraitSimulation};
    case project::Section::LineValues:
      return {host::Section::LineValues};
    case project::Section::LineSimulation:
      return {host::Section::LineSimulation};
    case project::Section::BinWork:
    case project::Section::NameAgreement:
      break;
  }
  return {};
}

TEST(Tables, TheSectionsOfAFileAreThoseOfTheLoader) {
  for (const project::ModuleRow& module : project::kModules) {
    HostSteps due, there;
    for (const project::Step& step : module.steps) {
      for (const host::Section table : TablesOf(step.section, module.moduleCode)) {
        const bool header = table == host::Section::Header;
        due.push_back(
            {table, {header ? kFields.at(step.field) : host::Field::Indicator, step.onlyIndicator}});
      }
    }
    for (const host::ModuleSteps& row : host::kModuleSteps) {
      if (row.code != module.code) continue;
      for (const host::Step& step : row.steps) there.push_back({step.section, {step.field, step.indicator}});
    }
    EXPECT_EQ(there, due) << module.code;
  }
  EXPECT_EQ(host::kMapping, project::kMapping);
  EXPECT_EQ(host::kSimulation, project::kSimulation);
}

TEST(Tables, EveryModuleHasItsRulesAndPopulations) {
  const std::map<project::MarkerRules, host::Rules> rules = {
      {project::MarkerRules::None, host::Rules::None},
      {project::MarkerRules::BiParental, host::Rules::BiParental},
      {project::MarkerRules::ClosedLines, host::Rules::ClosedLines},
      {project::MarkerRules::NestedFamilies, host::Rules::Families},
      {project::MarkerRules::Clonal, host::Rules::Clonal},
      {project::MarkerRules::MultiParent, host::Rules::MultiParent}};
  for (const project::ModuleRow& module : project::kModules) {
    if (module.moduleCode == project::kCallersCode) continue;
    EXPECT_EQ(host::RulesOf(module.code, 0), rules.at(project::RulesOf(module.moduleCode).markers))
        << module.code;
  }
  for (int32_t code = 0; code < 200; ++code) {
    const project::RuleSet due = project::RulesOf(code);
    EXPECT_EQ(host::RulesOf("BIN", code), rules.at(due.markers)) << code;
    if (due.markers == project::MarkerRules::None || due.populations == 0) continue;
    for (int32_t type = -1; type <= 25; ++type) {
      const bool accepted = type >= 1 && type <= 20 && (due.populations & project::PopulationBit(type)) != 0;
      EXPECT_EQ(host::IsPopulation(host::RulesOf("BIN", code), type), accepted) << code << " " << type;
    }
  }
}

// Rows at random, of few codes each, so that rows of every category come up.
TEST(Tables, ARowIsRefusedByBothOrByNone) {
  struct RulesCase {
    project::MarkerRules project;
    host::Rules host;
    int populations;
    std::vector<std::string> categories, codes;
  };
  const std::vector<std::string> plain = {
      "2",  "1",  "0",  "A",  "H",  "B",  "D", "R",  "X", "-1", "10", "12", "AA", "AB", "BA", "BB", "AH",
      "XB", "B*", "*A", "_A", "B_", "**", "*", "HH", "a", "BX", "XA", "HB", "AX", "C",  "-",  "XX", "ABC"};
  const RulesCase cases[] = {
      {project::MarkerRules::BiParental, host::Rules::BiParental, 20, {""}, plain},
      {project::MarkerRules::ClosedLines, host::Rules::ClosedLines, 20, {""}, plain},
      {project::MarkerRules::NestedFamilies, host::Rules::Families, 20, {""}, plain},
      {project::MarkerRules::Clonal,
       host::Rules::Clonal,
       2,
       {"ABCD", "A=B", "C=D", "AB=CD", "A=CB=D", "A=DB=C", "AB", "A=B="},
       {"AC", "AD", "BC", "BD", "XC", "XD", "AX", "BX", "AA", "AB", "BB", "XX", "CA", "X"}},
      {project::MarkerRules::MultiParent,
       host::Rules::MultiParent,
       4,
       {"ABCD", "ABAB", "AACC", "ABCDEFGH", "ABABEFEF", "AAAAEEEE", "ABXD", "ABCE", "ABC"},
       {"A", "B", "C", "D", "E", "F", "H", "X", "Q"}},
  };
  const support::ScratchFolder folder;
  platform::OpenUnit(project::kLogUnit, "rows.log", platform::OpenStatus::Replace);
  std::mt19937 random(12);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  for (const RulesCase& c : cases) {
    int good = 0, refused = 0;
    for (int round = 0; round < 20'000; ++round) {
      std::vector<std::string> codes(1 + below(4)), cells(1 + below(6));
      for (std::string& code : codes) code = c.codes[below(c.codes.size())];
      for (std::string& cell : cells) cell = codes[below(codes.size())];
      const auto population = static_cast<int32_t>(1 + below(static_cast<std::size_t>(c.populations)));
      const std::string category = c.categories[below(c.categories.size())];
      std::string tokens;
      for (const std::string& cell : cells) tokens += support::Padded(cell.substr(0, 2), 2);
      const std::string wide = support::Padded(category, project::kCategoryWidth);
      project::MarkerRow row{1, population, cells.size(), wide, tokens, {}};
      int32_t status = 0;
      project::ApplyMarkerRules(c.project, project::kLogUnit, status, row);
      host::RowJudgement judgement;
      const std::vector<std::string_view> views(cells.begin(), cells.end());
      host::JudgeRow(c.host, population, category, views, false, judgement);
      const bool told = !judgement.cells.empty() || !judgement.whole.empty();
      ASSERT_EQ(told, status != 0) << population << " " << category << " " << tokens << " "
                                   << judgement.whole;
      ++(told ? refused : good);
    }
    EXPECT_GT(good, 100);
    EXPECT_GT(refused, 500);
  }
  platform::CloseUnit(project::kLogUnit);
}

}  // namespace
