#include "host/file_summary.h"

#include <vector>

#include "host/file_walk.h"
#include "host/marker_data.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kTraitsShown = 5;

struct CountRow {
  Field field;
  std::string_view noun, key;
};
constexpr CountRow kCounts[] = {
    {Field::NumFamilies, "family", "families"},
    {Field::NumTraits, "trait", "traits"},
    {Field::NumEnvironments, "environment", "environments"},
    {Field::NumReplications, "replication", "replications"},
};

void Add(std::string& sentence, const std::string& part) {
  sentence += (sentence.empty() ? "" : ", ") + part;
}

// CDQ and PLQ number their populations as CDM and PLM do.
std::string_view PopulationOf(std::string_view module, int64_t type) {
  if (module == "CDQ") return PopulationWords(TableKind::Cdm, type);
  return PopulationWords(module == "PLQ" ? TableKind::Plm : TableKind::Map, type);
}

std::vector<std::string> RowNames(const FileLayout& layout) {
  for (const Section section : {Section::Phenotypes, Section::EnvironmentRows}) {
    const std::vector<std::string>& names = layout.Rows(section).names;
    if (!names.empty()) return names;
  }
  return {};
}

void AddMap(const FileLayout& layout, FileSummary& summary) {
  const auto chromosomes = layout.Value(Field::NumChromosomes);
  if (chromosomes) {
    Add(summary.sentence, Counted(*chromosomes, "chromosome"));
    summary.facts["chromosomes"] = *chromosomes;
  }
  if (layout.TotalMarkers() == 0 || layout.lines == 0) return;  // the walk did not get that far
  Add(summary.sentence, Counted(layout.TotalMarkers(), "marker") + " x " + Counted(layout.lines, "line"));
  summary.facts["markers"] = layout.TotalMarkers();
  summary.facts["lines"] = layout.lines;
}

}  // namespace

FileSummary SummaryOf(std::string_view text, std::string_view module) {
  const FileLayout layout = WalkFile(text, module);
  FileSummary summary;
  AddMap(layout, summary);
  for (const CountRow& row : kCounts) {
    const auto count = layout.Value(row.field);
    if (!count) continue;
    const bool plain = *count == 1 || row.key != "families";
    Add(summary.sentence, plain ? Counted(*count, row.noun) : std::to_string(*count) + " families");
    summary.facts[std::string(row.key)] = *count;
  }
  if (const std::vector<std::string> names = RowNames(layout); layout.complete && !names.empty()) {
    summary.sentence += " (" + FirstNames(names, kTraitsShown) + ")";
    summary.facts["names"] = names;
  }
  if (const auto type = layout.Value(Field::PopulationType)) {
    const std::string name(PopulationOf(module, *type));
    Add(summary.sentence, "population " + std::to_string(*type) + " (" + name + ")");
    summary.facts["population"] = {{"number", *type}, {"name", name}};
  }
  if (const auto indicator = layout.Value(Field::Indicator)) {
    Add(summary.sentence, *indicator == kSimulation ? "simulation" : "mapping");
    summary.facts["purpose"] = *indicator == kSimulation ? "simulation" : "mapping";
  }
  return summary;
}

}  // namespace host
