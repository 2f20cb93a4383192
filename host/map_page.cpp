#include "host/map_page.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "host/population_catalogue.h"
#include "host/populations.h"
#include "host/report_files.h"
#include "host/text.h"

namespace host {
namespace {

constexpr float kRepulsionAbove = 0.5F;

// The genotype's place in what the population shows, which counts alleles of one parent; kNoDose for one that
// does not tell.
constexpr int kNoDose = -1;
int DoseOf(std::string_view code, std::string_view shows) {
  const std::size_t place = code.size() == 1 ? shows.find(code.front()) : std::string_view::npos;
  return place == std::string_view::npos ? kNoDose : static_cast<int>(place);
}

// The library counts D as A and R as B. Here they have shares of their own, between the genotypes they stand
// for, so that a boundary of theirs meets the one that the population expects.
constexpr std::string_view kShareCodes[] = {"A", "D", "H", "R", "B"};
constexpr int32_t kDominant = 12, kRecessive = 10;  // categories of MAP markers

std::vector<double> SharesOf(const MapData& data, const std::vector<double>& shares, int32_t category) {
  if (data.kind != TableKind::Map) return shares;
  const double a = shares[0], h = shares[1], b = shares[2];
  if (category == kDominant) return {0, a, h, 0, b};
  if (category == kRecessive) return {a, 0, h, b, 0};
  return {a, 0, h, 0, b};
}

std::span<const std::string_view> ShareCodes(TableKind kind) {
  return kind == TableKind::Map ? std::span<const std::string_view>(kShareCodes) : GenotypesOf(kind);
}

reports::ReportMarker MarkerOf(const MapData& data, int32_t marker) {
  reports::ReportMarker report;
  report.name = data.Name(marker);
  report.number = marker;
  if (data.Tested(marker)) report.p = static_cast<double>(data.SegregationP(marker));
  report.missing = data.MissingShare(marker);
  const double typed = data.populationSize - data.Missing(marker);
  std::vector<double> shares;
  for (const auto& counts : data.counts) {
    shares.push_back(typed > 0 ? counts[static_cast<std::size_t>(marker - 1)] / typed : 0.0);
  }
  report.shares = SharesOf(data, shares, data.Category(marker));
  return report;
}

reports::ReportGroup GroupOf(const MapData& data, const LinkageGroup& group) {
  reports::ReportGroup report{group.name, group.length, {}};
  report.markers.reserve(group.places.size());
  for (std::size_t k = 0; k < group.places.size(); ++k) {
    const MapPlace& place = group.places[k];
    reports::ReportMarker marker = MarkerOf(data, place.marker);
    marker.position = place.position;
    marker.interval = place.interval;
    if (k > 0) {
      marker.rec = place.rec;
      marker.lod = place.lod;
    }
    if (place.parent[0].onMap) marker.female = place.parent[0].position;
    if (place.parent[1].onMap) marker.male = place.parent[1].position;
    report.markers.push_back(std::move(marker));
  }
  return report;
}

// What the population expects of each code; a code that does not occur leaves its part to the dominance code
// that stands for it.
std::vector<double> ExpectedShares(const MapData& data, const std::vector<bool>& seen) {
  const ExpectedRatio ratio = RatioOf(CatalogueRowOf(data.kind, data.populationType));
  double parts[] = {static_cast<double>(ratio.a), 0, static_cast<double>(ratio.h), 0,
                    static_cast<double>(ratio.b)};
  const double all = parts[0] + parts[2] + parts[4];
  const auto leave = [&](std::size_t code, std::size_t to) {
    if (!seen[code] && seen[to]) parts[to] += std::exchange(parts[code], 0.0);
  };
  leave(2, seen[1] ? 1 : 3);
  leave(0, 1);
  leave(4, 3);
  std::vector<double> expected;
  for (std::size_t c = 0; c < seen.size(); ++c) {
    if (seen[c]) expected.push_back(parts[c] / all);
  }
  return expected;
}

// Codes that occur, so that no empty class is drawn.
void KeepSeenCodes(const MapData& data, reports::MapReport& report) {
  const auto codes = ShareCodes(data.kind);
  std::vector<bool> seen(codes.size(), false);
  const auto look = [&](const reports::ReportMarker& marker) {
    for (std::size_t c = 0; c < seen.size(); ++c) seen[c] = seen[c] || marker.shares[c] > 0;
  };
  const auto keep = [&](reports::ReportMarker& marker) {
    std::vector<double> shares;
    for (std::size_t c = 0; c < seen.size(); ++c) {
      if (seen[c]) shares.push_back(marker.shares[c]);
    }
    marker.shares = std::move(shares);
  };
  for (const reports::ReportGroup& group : report.groups)
    std::for_each(group.markers.begin(), group.markers.end(), look);
  std::for_each(report.unlinked.begin(), report.unlinked.end(), look);
  for (std::size_t c = 0; c < seen.size(); ++c) {
    if (seen[c]) report.codes.emplace_back(codes[c]);
  }
  for (reports::ReportGroup& group : report.groups)
    std::for_each(group.markers.begin(), group.markers.end(), keep);
  std::for_each(report.unlinked.begin(), report.unlinked.end(), keep);
  if (data.kind != TableKind::Map || data.populationType < 1 || data.populationType > 20) return;
  report.expected = ExpectedShares(data, seen);
}

// Crossovers of one line in one group.
int32_t CrossoversOf(const LinkageGroup& group, const GenotypeTable& table, const std::vector<bool>& turned,
                     std::size_t line, std::string_view shows) {
  const auto codes = CodesOf(table.kind);
  const int highest = static_cast<int>(shows.size()) - 1;
  int last = kNoDose;
  int32_t count = 0;
  for (std::size_t k = 0; k < group.places.size(); ++k) {
    const MapPlace& place = group.places[k];
    if (place.interval >= kUnlinkedDistance) last = kNoDose;
    int dose = DoseOf(codes[table.Row(static_cast<std::size_t>(place.marker - 1))[line]], shows);
    if (dose == kNoDose) continue;
    if (turned[k]) dose = highest - dose;
    if (last != kNoDose) count += std::abs(dose - last);
    last = dose;
  }
  return count;
}

void AddLines(const MapRun& run, const GenotypeTable& table, reports::MapReport& report) {
  const std::vector<int32_t> crossovers = LineCrossovers(run.map, table);
  const uint8_t missing = MissingCell(table.kind);
  std::vector<int64_t> blank(table.lines, 0);
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    const auto row = table.Row(m);
    for (std::size_t line = 0; line < table.lines; ++line) blank[line] += row[line] == missing;
  }
  for (std::size_t line = 0; line < table.lines; ++line) {
    reports::ReportLine one;
    one.name = line < table.lineNames.size() ? table.lineNames[line] : "line " + std::to_string(line + 1);
    if (!crossovers.empty()) one.crossovers = crossovers[line];
    one.missing = static_cast<double>(blank[line]) / static_cast<double>(table.markers.size());
    report.lines.push_back(std::move(one));
  }
}

void AddLedger(const MapRun& run, reports::RunFacts& facts) {
  const CleaningLedger& cleaning = run.cleaning;
  if (cleaning.kept.empty()) {
    facts.ledger.push_back({"markers read", run.data.numMarkers, ""});
  } else {
    facts.ledger.push_back({"markers read", cleaning.read, ""});
    const auto add = [&](const std::vector<DroppedMarker>& dropped, const std::string& why) {
      if (!dropped.empty())
        facts.ledger.push_back({"markers left out", static_cast<int64_t>(dropped.size()), why});
    };
    add(cleaning.tooMissing, "too many lines without a genotype");
    add(cleaning.distorted, "segregation distorted");
    if (!cleaning.binned.empty()) {
      facts.ledger.push_back({"markers binned", static_cast<int64_t>(cleaning.binned.size()),
                              "another marker stands for them, at the same place"});
    }
    facts.ledger.push_back({"markers kept", run.data.numMarkers, ""});
  }
  int64_t mapped = 0;
  for (const LinkageGroup& group : run.map.groups) mapped += static_cast<int64_t>(group.places.size());
  facts.ledger.push_back({"markers on the map", mapped, ""});
  if (!run.map.unlinked.empty()) {
    facts.ledger.push_back({"markers on no group", static_cast<int64_t>(run.map.unlinked.size()),
                            "in no group of " + Counted(run.minGroup, "marker") + " or more"});
  }
}

}  // namespace

std::vector<int32_t> LineCrossovers(const LinkageMap& map, const GenotypeTable& table) {
  if (table.kind != TableKind::Map) return {};
  std::vector<int32_t> crossovers(table.lines, 0);
  const bool known = table.populationType >= 1 && table.populationType <= 20;
  const std::string_view shows = known ? kPopulations[table.populationType - 1].shows : "AHB";
  for (const LinkageGroup& group : map.groups) {
    std::vector<bool> turned(group.places.size(), false);
    for (std::size_t k = 1; k < turned.size(); ++k)
      turned[k] = turned[k - 1] != (group.places[k].rec > kRepulsionAbove);
    for (std::size_t line = 0; line < table.lines; ++line) {
      crossovers[line] += CrossoversOf(group, table, turned, line, shows);
    }
  }
  return crossovers;
}

reports::MapReport MapPageData(const MapRun& run, const GenotypeTable& table, const std::string& input) {
  const MapData& data = run.data;
  reports::MapReport report;
  const std::string name = std::filesystem::path(input).filename().string();
  report.run =
      RunFactsOf("Linkage map of " + name,
                 std::string(PopulationWords(data.kind, data.populationType)) + " population", {input});
  for (const LinkageGroup& group : run.map.groups) report.groups.push_back(GroupOf(data, group));
  for (const int32_t marker : run.map.unlinked) report.unlinked.push_back(MarkerOf(data, marker));
  KeepSeenCodes(data, report);
  double length = 0;
  for (const LinkageGroup& group : run.map.groups) length += group.length;
  report.run.facts = {{"markers", std::to_string(data.numMarkers)},
                      {"lines", std::to_string(data.populationSize)},
                      {"groups", std::to_string(run.map.groups.size())},
                      {"length", Fixed(length, 1) + " cM"},
                      {"map function", std::string(MapFunctionName(data.mappingFunction))},
                      {"least LOD of a link", Significant(Plain(run.thresholds.minLod))},
                      {"highest recombination of a link", Significant(Plain(run.thresholds.maxRec))}};
  report.run.warnings = run.warnings;
  AddLedger(run, report.run);
  for (const SweepRow& row : run.sweep) {
    report.sweep.push_back({row.lod, {row.sizes.begin(), row.sizes.end()}, row.single});
  }
  report.lodCut = run.thresholds.minLod;
  AddLines(run, table, report);
  if (data.kind == TableKind::Cdm) {
    report.femaleName = "parent AB";
    report.maleName = "parent CD";
  }
  report.rec = data.rec.view();
  report.lod = data.lod.view();
  return report;
}

}  // namespace host
