#include <algorithm>

#include "host/file_walk.h"
#include "host/precheck_scan.h"
#include "host/text.h"

namespace host {
namespace {

// The fields of the header: what they are called, and what they may be.
struct FieldRow {
  Field field;
  std::string_view name;
  int64_t most;  // 0: no limit
  std::string_view range;
};
constexpr FieldRow kFieldRows[] = {
    {Field::Indicator, "indicator", 2, "1 for mapping or 2 for simulation"},
    {Field::PopulationType, "population type", 0, ""},
    {Field::MappingFunction, "mapping function", 3, "1 Kosambi, 2 Haldane or 3 Morgan"},
    {Field::MarkerSpaceType, "marker space type", 2, "1 for intervals or 2 for positions"},
    {Field::MarkerSpaceUnit, "marker space unit", 2, "1 for centiMorgans or 2 for Morgan"},
    {Field::NumChromosomes, "number of chromosomes", 0, "at least 1"},
    {Field::NumMarkers, "number of markers", 0, "at least 1"},
    {Field::PopulationSize, "population size", 0, "at least 1"},
    {Field::NumTraits, "number of traits", 0, "at least 1"},
    {Field::NumEnvironments, "number of environments", 0, "at least 1"},
    {Field::NumReplications, "number of replications", 0, "at least 1"},
    {Field::NumFamilies, "number of families", 0, "at least 1"},
};

const FieldRow& RowOf(Field field) {
  return *std::find_if(std::begin(kFieldRows), std::end(kFieldRows) - 1,
                       [&](const FieldRow& row) { return row.field == field; });
}

bool InRange(const Scan& scan, const FieldRow& row, int64_t value) {
  if (row.field == Field::PopulationType) return IsPopulation(scan.sheet.rules, value);
  return value >= 1 && (row.most == 0 || value <= row.most);
}

// Takes the value of a field from the line at hand. False when a row of a table stands there.
bool TakeField(Scan& scan, Field field) {
  const FieldRow& row = RowOf(field);
  Split(scan, scan.next, scan.words, 3);
  const std::vector<std::string_view>& words = scan.words.words;
  const std::string_view word = words.empty() || scan.words.IsNull(0) ? "" : words[0];
  const auto value = AsInteger(word);
  if (!value && words.size() > 1 && !words[1].starts_with('!')) return false;
  const auto place = static_cast<std::size_t>(field);
  scan.sheet.fieldLine[place] = ++scan.next;
  if (value && InRange(scan, row, *value)) {
    scan.sheet.value[place] = value;
    return true;
  }
  const std::string range =
      field == Field::PopulationType ? PopulationRange(scan.sheet.rules) : std::string(row.range);
  Add(scan.sheet, FindingKind::Header, {scan.next},
      "the " + std::string(row.name) + " is \"" + std::string(word) + "\", not " + range);
  return true;
}

// A header with a value too many or too few: which field the values belong to is a guess, so none is kept.
void ForgetHeader(Scan& scan, std::size_t taken, std::size_t due, std::string_view what) {
  scan.sheet.value.fill(std::nullopt);
  scan.sheet.findings.clear();
  Add(scan.sheet, FindingKind::Header, {std::min(scan.next + 1, scan.lines.size())},
      "the header has " + Counted(static_cast<int64_t>(taken), "value") + ", a " +
          std::string(scan.sheet.module) + " file has " + std::to_string(due) + "; " + std::string(what));
}

// Header values one too many, each alone on its line, where a table belongs.
std::size_t SkipSurplus(Scan& scan) {
  std::size_t surplus = 0;
  for (;; ++surplus) {
    const std::size_t line = DataFrom(scan, scan.next);
    if (line == scan.lines.size()) return surplus;
    Split(scan, line, scan.words, 2);
    if (scan.words.words.size() != 1 || !AsInteger(scan.words.words[0])) return surplus;
    scan.next = line + 1;
  }
}

}  // namespace

bool IsBlank(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }
bool IsRemark(std::string_view line) { return line.starts_with('!'); }

std::size_t DataFrom(const Scan& scan, std::size_t from) {
  while (from < scan.lines.size() && (IsBlank(scan.lines[from]) || IsRemark(scan.lines[from]))) ++from;
  return from;
}

void Split(const Scan& scan, std::size_t line, LineWords& words, std::size_t most) {
  Clear(words);
  AddWords(scan.lines[line], most, words);
}

std::vector<Step> StepsOf(const Scan& scan) {
  const auto* row =
      std::find_if(std::begin(kModuleSteps), std::end(kModuleSteps),
                   [&](const ModuleSteps& candidate) { return candidate.code == scan.sheet.module; });
  std::vector<Step> steps;
  if (row == std::end(kModuleSteps)) return steps;
  const int64_t indicator = scan.sheet.Value(Field::Indicator).value_or(kMapping);
  for (Step step : row->steps) {
    if (step.indicator != 0 && step.indicator != indicator) continue;
    // The walk knows BIN files as bi-parental ones only.
    if (step.section == Section::Markers && HasCategory(scan.sheet.rules))
      step.section = Section::Categorised;
    steps.push_back(step);
  }
  return steps;
}

std::size_t HeaderSize(const std::vector<Step>& steps) {
  return static_cast<std::size_t>(std::count_if(
      steps.begin(), steps.end(), [](const Step& step) { return step.section == Section::Header; }));
}

bool TakeHeader(Scan& scan) {
  std::size_t taken = 0;
  for (std::size_t k = 0; k < HeaderSize(StepsOf(scan)); ++k, ++taken) {
    const Field field = StepsOf(scan)[k].field;
    scan.next = DataFrom(scan, scan.next);
    if (scan.next == scan.lines.size()) {
      Add(scan.sheet, FindingKind::Header, {scan.lines.size()},
          "the file ends before the " + std::string(RowOf(field).name));
      return false;
    }
    if (TakeField(scan, field)) continue;
    ForgetHeader(scan, taken, HeaderSize(StepsOf(scan)), "a row of a table stands behind them");
    return true;
  }
  const std::size_t surplus = SkipSurplus(scan);
  if (surplus > 0) ForgetHeader(scan, taken + surplus, taken, "another number stands behind them");
  scan.sheet.population = scan.sheet.Value(Field::PopulationType).value_or(0);
  return true;
}

}  // namespace host
