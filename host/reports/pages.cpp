#include "host/reports/pages.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/drawing.h"
#include "host/reports/map_layout.h"
#include "host/reports/page.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr std::size_t kMostRows = 300;  // of the long tables; the result files have them all

std::string MoreNote(std::size_t all) {
  return all > kMostRows
             ? "<p>The first " + std::to_string(kMostRows) + " of " + std::to_string(all) + ".</p>\n"
             : std::string();
}

std::string GroupTable(const MapReport& report) {
  std::vector<Row> rows;
  std::size_t markers = 0;
  double length = 0;
  for (const ReportGroup& group : report.groups) {
    markers += group.markers.size();
    length += group.length;
    if (rows.size() >= kMostRows || group.markers.empty()) continue;
    double widest = 0;
    for (const ReportMarker& marker : group.markers)
      widest = std::max(widest, marker.interval < kUnlinked ? marker.interval : 0);
    const std::size_t gaps = DrawnGroup(group).gaps.size();
    rows.push_back({group.name, std::to_string(group.markers.size()), FixedCell(group.length, 1),
                    FixedCell(widest, 1), std::to_string(gaps), group.markers.front().name,
                    group.markers.back().name});
  }
  rows.push_back({"all", std::to_string(markers), FixedCell(length, 1), "", "", "", ""});
  return TableHtml("Linkage groups",
                   {{"group"},
                    {"markers", true},
                    {"length, cM", true},
                    {"widest interval, cM", true},
                    {"gaps", true},
                    {"first marker"},
                    {"last marker"}},
                   rows) +
         MoreNote(report.groups.size());
}

std::string UnlinkedTable(const MapReport& report) {
  if (report.unlinked.empty()) return {};
  std::vector<Row> rows;
  for (const ReportMarker& marker : report.unlinked) {
    if (rows.size() >= kMostRows) break;
    rows.push_back({marker.name, SignificantCell(marker.p), FixedCell(100 * marker.missing, 1)});
  }
  return TableHtml("Markers in no group", {{"marker"}, {"segregation p", true}, {"missing, %", true}}, rows) +
         MoreNote(report.unlinked.size());
}

std::string SweepTable(const MapReport& report) {
  if (report.sweep.empty()) return {};
  std::vector<Row> rows;
  for (std::size_t s = 0; s < report.sweep.size(); ++s) {
    // Cuts that make the same groups share a row.
    const SweepStep& step = report.sweep[s];
    while (s + 1 < report.sweep.size() && report.sweep[s + 1].sizes == step.sizes &&
           report.sweep[s + 1].single == step.single)
      ++s;
    std::string sizes;
    constexpr std::size_t most = 20;
    for (std::size_t k = 0; k < std::min(step.sizes.size(), most); ++k)
      sizes += (k > 0 ? ", " : "") + std::to_string(step.sizes[k]);
    if (step.sizes.size() > most) sizes += ", ...";
    const double last = report.sweep[s].lod;
    rows.push_back({Number(step.lod) + (last > step.lod ? " to " + Number(last) : ""),
                    std::to_string(step.sizes.size()), std::to_string(step.single), sizes});
  }
  return TableHtml("Groups by LOD cut",
                   {{"LOD", true}, {"groups", true}, {"single markers", true}, {"markers per group"}}, rows);
}

// The markers that most need a look: the smallest p and the most missing.
std::string DistortedTable(const MapReport& report) {
  struct Found {
    const ReportGroup* group;
    const ReportMarker* marker;
  };
  std::vector<Found> found;
  for (const ReportGroup& group : report.groups) {
    for (const ReportMarker& marker : group.markers) {
      if (marker.p < 0.01) found.push_back({&group, &marker});
    }
  }
  if (found.empty()) return {};
  std::stable_sort(found.begin(), found.end(),
                   [](const Found& a, const Found& b) { return a.marker->p < b.marker->p; });
  constexpr std::size_t most = 25;
  const std::size_t all = found.size();
  found.resize(std::min(all, most));
  std::vector<Column> columns = {{"marker"}, {"group"}, {"position, cM", true}, {"p", true}};
  for (const std::string& code : report.codes) columns.push_back({code, true});
  std::vector<Row> rows;
  for (const Found& one : found) {
    Row row = {one.marker->name, one.group->name, FixedCell(one.marker->position, 1),
               SignificantCell(one.marker->p)};
    for (const double share : one.marker->shares) row.push_back(FixedCell(share, 3));
    rows.push_back(std::move(row));
  }
  return TableHtml(
      "Markers with distorted segregation, p below 0.01" +
          (all > most ? " (the first " + std::to_string(most) + " of " + std::to_string(all) + ")"
                      : std::string()),
      columns, rows);
}

std::string AgreementTables(const JointGroup& group) {
  std::vector<Row> maps, conflicts;
  for (const SourceMap& map : group.sources) {
    maps.push_back(
        {map.name, std::to_string(map.shared), FixedCell(map.tau, 4), map.reversed ? "reversed" : ""});
  }
  for (const JointConflict& conflict : group.conflicts) {
    conflicts.push_back({group.sources.at(conflict.first).name, group.sources.at(conflict.second).name,
                         std::to_string(conflict.opposed), std::to_string(conflict.pairs)});
  }
  std::string html = TableHtml("Agreement with the consensus",
                               {{"map"}, {"markers", true}, {"Kendall's tau", true}, {"direction"}}, maps);
  if (!conflicts.empty()) {
    html += TableHtml("Maps that contradict each other",
                      {{"map"}, {"map"}, {"pairs in opposite order", true}, {"pairs in common", true}},
                      conflicts);
  }
  return html;
}

// A tail that comes out as 1 less a single-precision number is 0 below the resolution of such a number.
std::string TailCell(double p) { return p <= 0 ? "< 1e-7" : SignificantCell(p); }

std::string AnovaHtml(const AnovaTable& table) {
  std::vector<Row> rows;
  for (const AnovaRow& row : table.rows) {
    rows.push_back({row.source, FixedCell(row.df, 0), FixedCell(row.ss, 4), FixedCell(row.ms, 4),
                    FixedCell(row.f, 3), TailCell(row.p), FixedCell(row.variance, 4)});
  }
  std::string html = TableHtml("Analysis of variance: " + table.where,
                               {{"source"},
                                {"df", true},
                                {"sum of squares", true},
                                {"mean square", true},
                                {"F", true},
                                {"p", true},
                                {"variance", true}},
                               rows);
  std::vector<Row> facts;
  for (const Fact& fact : table.facts) facts.push_back({fact.label, fact.value});
  if (!facts.empty()) html += TableHtml("", {{"figure"}, {"value", true}}, facts);
  return html;
}

std::string TraitBody(const TrialReport& report, std::size_t t, const std::vector<Figure>& figures) {
  const TraitReport& trait = report.traits[t];
  const std::string number = "_" + std::to_string(t + 1);
  std::string body = WarningsHtml(trait.notes);
  for (const std::string stem : {"boxes", "means", "variance", "biplot_gge", "biplot_ammi", "correlations",
                                 "quantiles", "histograms"}) {
    body += FigureNamed(figures, stem + number);
  }
  for (std::size_t k = 0; k < std::min(trait.anova.size(), kMostRows); ++k) body += AnovaHtml(trait.anova[k]);
  return body;
}

}  // namespace

std::string MapPage(const MapReport& report, const std::vector<Figure>& figures) {
  const auto drawn = [&](std::string_view name) { return FigureNamed(figures, name); };
  return PageHtml(
      report.run,
      {{"map", "Linkage map",
        drawn("map_overview") + GroupTable(report) + drawn("map_ladder") + UnlinkedTable(report)},
       {"parents", "Maps of the parents", drawn("parental_maps")},
       {"pairs", "Recombination and LOD", drawn("pair_heat_map")},
       {"grouping", "Grouping", drawn("lod_sweep") + SweepTable(report)},
       {"markers", "Markers",
        drawn("segregation") + drawn("genotype_shares") + DistortedTable(report) + drawn("missing")},
       {"lines", "Lines", drawn("lines")}});
}

std::string ConsensusPage(const ConsensusReport& report, const std::vector<Figure>& figures) {
  std::vector<Section> sections;
  for (std::size_t g = 0; g < report.groups.size(); ++g) {
    const JointGroup& group = report.groups[g];
    const std::string number = std::to_string(g + 1);
    sections.push_back({"group-" + number, group.name.empty() ? "Consensus map" : "Group " + group.name,
                        FigureNamed(figures, "consensus_" + number) + AgreementTables(group)});
  }
  return PageHtml(report.run, sections);
}

std::string TrialPage(const TrialReport& report, const std::vector<Figure>& figures) {
  std::vector<Section> sections;
  for (std::size_t t = 0; t < report.traits.size(); ++t) {
    sections.push_back(
        {"trait-" + std::to_string(t + 1), "Trait " + report.traits[t].name, TraitBody(report, t, figures)});
  }
  sections.push_back({"traits", "Traits together", FigureNamed(figures, "trait_correlations")});
  return PageHtml(report.run, sections);
}

}  // namespace reports
