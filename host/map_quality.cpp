#include "host/map_quality.h"

#include <algorithm>

#include "host/map_report.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kPlacesToJudge = 10;
constexpr double kInflated = 1.25;
constexpr std::size_t kWarnedShown = 5;

std::size_t LinesWithBoth(const GenotypeTable& table, int32_t a, int32_t b) {
  const auto first = table.Row(static_cast<std::size_t>(a - 1)),
             second = table.Row(static_cast<std::size_t>(b - 1));
  const uint8_t missing = MissingCell(table.kind);
  std::size_t count = 0;
  for (std::size_t line = 0; line < table.lines; ++line) {
    count += first[line] != missing && second[line] != missing ? 1 : 0;
  }
  return count;
}

void WarnOfFewLines(const MapData& data, const LinkageMap& map, const GenotypeTable& table,
                    std::vector<std::string>& warnings) {
  const std::size_t least = std::min(kFewLines, table.lines / 2);
  std::vector<std::string> pairs;
  for (const LinkageGroup& group : map.groups) {
    for (std::size_t k = 1; k < group.places.size(); ++k) {
      const int32_t a = group.places[k - 1].marker, b = group.places[k].marker;
      const std::size_t lines = LinesWithBoth(table, a, b);
      if (lines < least)
        pairs.push_back(data.Name(a) + " and " + data.Name(b) + " (" + std::to_string(lines) + ")");
    }
  }
  if (pairs.empty()) return;
  warnings.push_back(Counted(static_cast<int64_t>(pairs.size()), "pair") + " of neighbours with fewer than " +
                     std::to_string(least) + " lines typed at both: " + FirstNames(pairs, kWarnedShown));
}

void WarnOfLoneMarkers(const MapData& data, const LinkageMap& map, std::vector<std::string>& warnings) {
  if (map.unlinked.empty()) return;
  std::vector<std::string> names;
  for (const int32_t marker : map.unlinked) names.push_back(data.Name(marker));
  warnings.push_back(Counted(static_cast<int64_t>(names.size()), "marker") +
                     " in no group: " + FirstNames(names, kWarnedShown));
}

// "population 4 (RIL)"
std::string PopulationOfRun(TableKind kind, int32_t population) {
  return "population " + std::to_string(population) + " (" + std::string(PopulationWords(kind, population)) +
         ")";
}
constexpr const char* kAsk = "; is it another one? \"tessarmont populations\" helps to choose";

}  // namespace

void DoubtGenotypes(const GenotypeTable& table, std::vector<std::string>& warnings) {
  constexpr std::size_t oneIn = 10;
  const auto missing =
      static_cast<std::size_t>(std::count(table.cells.begin(), table.cells.end(), MissingCell(table.kind)));
  const std::size_t typed = table.cells.size() - missing + table.notShown;
  if (table.notShown * oneIn <= typed) return;
  warnings.push_back(std::to_string(table.notShown) + " of " + std::to_string(typed) +
                     " genotypes are none of " + PopulationOfRun(table.kind, table.populationType) +
                     " and count as missing" + kAsk);
}

void DoubtSegregation(const MapData& data, std::vector<std::string>& warnings) {
  constexpr int32_t fewest = 10;
  int32_t tested = 0;
  for (int32_t m = 1; m <= data.numMarkers; ++m) tested += data.Tested(m) ? 1 : 0;
  const int32_t distorted = DistortedMarkers(data);
  if (tested < fewest || 2 * distorted <= tested) return;
  warnings.push_back("segregation is distorted (p < 0.01) at " + std::to_string(distorted) + " of " +
                     std::to_string(tested) + " markers of " +
                     PopulationOfRun(data.kind, data.populationType) + kAsk);
}

void DoubtCut(const std::vector<SweepRow>& sweep, float lod, int32_t minGroup,
              std::vector<std::string>& warnings) {
  const auto steadier = SteadierRange(sweep, lod, minGroup);
  if (!steadier) return;
  warnings.push_back("fewer groups at LOD " + Significant(Plain(lod)) + " than the " +
                     std::to_string(steadier->groups) + " at every cut from " +
                     Significant(Plain(steadier->low)) + " to " + Significant(Plain(steadier->high)) +
                     ": links of chance may have joined some; \"--groups " +
                     std::to_string(steadier->groups) + "\" parts them, \"--sweep\" shows all cuts");
}

double Inflation(const MapData& data, const LinkageGroup& group) {
  const auto& places = group.places;
  if (places.size() < kPlacesToJudge || group.gaps > 0) return 0;
  // Both sums take the steps around each inner place, so that they span the same stretches.
  double near = 0, far = 0;
  for (std::size_t k = 1; k + 1 < places.size(); ++k) {
    const float skip = data.distance[PairPlace(places[k - 1].marker, places[k + 1].marker)];
    if (!(skip < kUnlinkedDistance) || places[k].bridged || places[k + 1].bridged) continue;
    near += places[k].interval + places[k + 1].interval;
    far += skip;
  }
  return far > 0 ? near / far : 0;
}

std::vector<std::string> QualityWarnings(const MapData& data, const LinkageMap& map,
                                         const GenotypeTable& table) {
  std::vector<std::string> warnings;
  WarnOfFewLines(data, map, table, warnings);
  for (const LinkageGroup& group : map.groups) {
    const double inflation = Inflation(data, group);
    if (inflation < kInflated) continue;
    warnings.push_back(
        group.name + " is " + Fixed(100 * (inflation - 1), 0) +
        " % longer over all markers than over every second one; genotyping errors lengthen maps so");
  }
  WarnOfLoneMarkers(data, map, warnings);
  return warnings;
}

}  // namespace host
