#include "trial/trial_table.h"

#include <algorithm>
#include <string>

#include "platform/record.h"
#include "platform/unit.h"
#include "project/reader.h"
#include "trial/plain_row.h"

namespace trial {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

constexpr int32_t kTableUnit = 2012;
constexpr int32_t kKeyColumns = 3;

// The three headings are never used again.
bool ReadTitle(int32_t numTraits, std::string& traitNames) {
  std::string headings;
  return project::ReadTokens(kTableUnit, {project::CellItems(headings, kNameWidth, kKeyColumns),
                                          project::CellItems(traitNames, kNameWidth,
                                                             static_cast<std::size_t>(numTraits))}) == 0;
}

// The lists that names go to while the rows are read.
struct NameLists {
  NameList environments, genotypes;
  std::vector<NameList> blocks;  // by environment: a block's name belongs to it
};

// What the token read makes of a row. What a null or a slash leaves out is blank, or a 0.0 like any other.
bool ReadAnyRow(std::span<Name, kKeyColumns> keys, std::vector<float>& values, std::size_t traits) {
  for (Name& key : keys) {
    key.fill(' ');
  }
  values.clear();
  const bool good = project::ReadTokens(kTableUnit, {project::TextItem(keys[0].data(), kNameWidth),
                                                     project::TextItem(keys[1].data(), kNameWidth),
                                                     project::TextItem(keys[2].data(), kNameWidth),
                                                     project::RealItems(values, traits)}) == 0;
  values.resize(traits, 0.0F);
  return good;
}

bool ReadRow(NameLists& lists, std::vector<float>& values, PlotRows& rows) {
  Name keys[kKeyColumns];
  std::string_view record;
  if (!platform::ReadRecord(kTableUnit, record) || !TakePlainRow(record, keys, values)) {
    platform::StepBack(kTableUnit);
    if (!ReadAnyRow(keys, values, rows.values.size())) {
      return false;
    }
  }
  const int32_t e = PositionOf(lists.environments, keys[0]);
  if (lists.blocks.size() < lists.environments.names.size()) {
    lists.blocks.resize(lists.environments.names.size());
  }
  rows.environment.push_back(e);
  rows.genotype.push_back(PositionOf(lists.genotypes, keys[1]));
  rows.block.push_back(PositionOf(ItemAt(lists.blocks, e), keys[2]));
  for (std::size_t t = 0; t < values.size(); ++t) {
    rows.values[t].push_back(values[t]);
  }
  return true;
}

// Room for as many rows as are claimed and could be in the file: two characters a column at least.
void Reserve(int32_t numRows, PlotRows& rows) {
  const std::size_t bytes = 2 * (kKeyColumns + rows.values.size());
  const std::size_t room =
      std::min(static_cast<std::size_t>(std::max(numRows, 0)), platform::BytesLeft(kTableUnit) / bytes);
  for (std::vector<int32_t>* positions : {&rows.environment, &rows.genotype, &rows.block}) {
    positions->reserve(room);
  }
  for (std::vector<float>& values : rows.values) {
    values.reserve(room);
  }
}

// The title and the rows, up to the first that cannot be read, which the log is told.
bool ReadRows(int32_t logUnit, int32_t numRows, int32_t numTraits, NameLists& lists, std::string& traitNames,
              PlotRows& rows) {
  if (!ReadTitle(numTraits, traitNames)) {
    WriteRecord(logUnit, "--Input error: cannot read the title line!");
    return false;
  }
  rows.values.resize(static_cast<std::size_t>(numTraits));
  Reserve(numRows, rows);
  std::vector<float> values(rows.values.size());
  for (int64_t row = 1; row <= numRows; ++row) {
    const auto i = static_cast<int32_t>(row);
    if (!ReadRow(lists, values, rows)) {
      WriteRecord(logUnit, Record(Edits("A,I5,A"), {"--Input error: can't read the", i, "th row!"}));
      return false;
    }
  }
  return true;
}

// Cuts the names of the traits out of one text; those that a slash left out are blank.
std::vector<Name> TraitNames(std::string& text, int32_t numTraits) {
  text.resize(kNameWidth * static_cast<std::size_t>(numTraits), ' ');
  std::vector<Name> names(static_cast<std::size_t>(numTraits));
  for (int32_t t = 1; t <= numTraits; ++t) {
    const std::size_t begin = kNameWidth * (static_cast<std::size_t>(t) - 1);
    std::copy_n(text.begin() + static_cast<std::ptrdiff_t>(begin), kNameWidth, ItemAt(names, t).begin());
  }
  return names;
}

}  // namespace

bool ReadTrialTable(int32_t logUnit, int32_t numRows, int32_t numColumns, std::string_view path,
                    TrialTable& table) {
  platform::OpenUnit(kTableUnit, path, platform::OpenStatus::Old);
  const int32_t numTraits = std::max(numColumns, kKeyColumns) - kKeyColumns;
  NameLists lists;
  std::string traitNames;
  PlotRows rows;
  const bool good = ReadRows(logUnit, numRows, numTraits, lists, traitNames, rows);
  platform::CloseUnit(kTableUnit);
  if (!good) {
    return false;
  }
  table.NumTraits = numTraits;
  table.TraitName = TraitNames(traitNames, numTraits);
  table.EnvironmentName = std::move(lists.environments.names);
  table.GenotypeName = std::move(lists.genotypes.names);
  table.NumEnvironments = static_cast<int32_t>(table.EnvironmentName.size());
  table.NumGenotypes = static_cast<int32_t>(table.GenotypeName.size());
  for (NameList& blocks : lists.blocks) {
    table.Environment.push_back({std::move(blocks.names)});
  }
  table.Trait = MakeTraits(table, rows);
  return true;
}

}  // namespace trial
