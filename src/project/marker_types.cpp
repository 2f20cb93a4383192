#include "project/marker_types.h"

#include <algorithm>
#include <string>

#include "project/genotype_rules.h"
#include "project/name_index.h"
#include "project/reader.h"
#include "project/report.h"

namespace project {
namespace {

using platform::Edits;

// Process-wide: the category text read last. A null in a row keeps it, also from file to file.
std::array<char, kCategoryWidth>& CategoryText() {
  static std::array<char, kCategoryWidth> text = [] {
    std::array<char, kCategoryWidth> blank{};
    blank.fill(' ');
    return blank;
  }();
  return text;
}

int32_t ReadRow(int32_t unit, bool withCategory, NameText& name, std::string& tokens, std::size_t size) {
  if (withCategory) {
    return ReadTokens(unit, {TextItem(CategoryText().data(), kCategoryWidth),
                             TextItem(name.data(), kNameWidth), CellItems(tokens, kTokenWidth, size)});
  }
  return ReadTokens(unit, {TextItem(name.data(), kNameWidth), CellItems(tokens, kTokenWidth, size)});
}

void CheckNames(int32_t log, int32_t& status, const std::vector<NameText>& names) {
  NameIndex index;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string_view name = Text(names[i]);
    for (const int32_t earlier : AddName(index, name)) {
      Report(log, status, "--Input error: two markers have same name in markertypes!");
      ReportDetail(log, Edits("A,I8,1X,A"), {"  MarkerID, Name of 1st marker = ", earlier, name});
      ReportDetail(log, Edits("A,I8,1X,A"),
                   {"  MarkerID, Name of 2nd marker = ", static_cast<int32_t>(i) + 1, name});
    }
  }
}

}  // namespace

void ReadMarkerTypes(int32_t moduleCode, int32_t unit, int32_t log, int32_t& status, int32_t markers,
                     ProjectBlock& block) {
  NextDataRecord(unit);
  const auto size = static_cast<std::size_t>(std::max(block.Header.PopulationSize, 0));
  const auto numMarkers = static_cast<std::size_t>(std::max(markers, 0));
  // A word takes two characters of the file, unless repeat forms stand in it: what the file can hold is room
  // enough.
  const std::size_t rowsAtMost = std::min(numMarkers, platform::BytesLeft(unit) / (2 * (size + 1)) + 1);
  Allocate(block.MarkerCategory, rowsAtMost);
  Allocate(block.MarkerName, rowsAtMost);
  Allocate(block.Genotype, std::min(rowsAtMost * size, platform::BytesLeft(unit)));
  const MarkerRules rules = RulesOf(moduleCode).markers;
  if (rules == MarkerRules::None) {
    return;
  }
  const bool withCategory = rules == MarkerRules::Clonal || rules == MarkerRules::MultiParent;
  auto name = Blank<NameText>();  // scratch of the section: nulls keep the row before
  std::string tokens;
  for (std::size_t m = 1; m <= numMarkers; ++m) {
    const auto marker = static_cast<int32_t>(m);
    if (ReadRow(unit, withCategory, name, tokens, size) != 0) {
      Report(log, status, "--Input error: cannot read MarkerType!");
      ReportDetail(log, Edits("A,I8"), {"  MarkerID = ", marker});
      return;
    }
    MarkerRow row{marker, block.Header.PopulationType, size, {CategoryText().data(), kCategoryWidth}, tokens,
                  {}};
    ApplyMarkerRules(rules, log, status, row);
    block.MarkerCategory.items.push_back(row.category);
    block.MarkerName.items.push_back(name);
    block.Genotype.items.insert(block.Genotype.items.end(), row.codes.begin(), row.codes.end());
    if ((status & 1) != 0) {
      return;
    }
  }
  CheckNames(log, status, block.MarkerName.items);
}

}  // namespace project
