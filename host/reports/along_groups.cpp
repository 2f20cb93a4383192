#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/figures.h"
#include "host/reports/map_layout.h"
#include "host/reports/shades.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr double kTrackLeft = 62, kTrackRight = kFigureWidth - 84, kTrackTop = 14, kBottom = 250;
constexpr double kHighest = 45;        // -log10 of the smallest single-precision number
constexpr std::size_t kHovered = 600;  // points up to this number tell their names

Panel AlongPanel(double low, double high, std::string yTitle) {
  return {{0, 1, kTrackLeft, kTrackRight}, {low, high, kBottom, kTrackTop}, "", std::move(yTitle)};
}

void DrawBase(Drawing& drawing, const MapReport& report, const GenomeAxis& axis, const Panel& panel) {
  DrawGenomeBands(drawing, axis, kTrackTop, kBottom);
  DrawYAxis(drawing, panel);
  drawing.height = kBottom + DrawGenomeNames(drawing, report, axis, kBottom);
}

// A value of every placed marker as a dot; what is not finite is left out.
struct Dots {
  std::vector<Point> even, odd;  // by group
  std::size_t count = 0;
};

void DrawDots(Drawing& drawing, const Dots& dots) {
  AddPath(drawing, DotPath(dots.even),
          R"(stroke="#1f4e79" stroke-width="3.4" stroke-linecap="round" fill="none")");
  AddPath(drawing, DotPath(dots.odd),
          R"(stroke="#c7761a" stroke-width="3.4" stroke-linecap="round" fill="none")");
}

double SegregationScore(const ReportMarker& marker) {
  return std::isnan(marker.p) ? kNone : std::min(kHighest, -std::log10(std::max(marker.p, 1e-300)));
}
double MissingPercent(const ReportMarker& marker) { return 100 * marker.missing; }

enum class MarkerValue { Segregation, Missing };
double ValueOf(MarkerValue value, const ReportMarker& marker) {
  return value == MarkerValue::Segregation ? SegregationScore(marker) : MissingPercent(marker);
}

Dots PlaceDots(Drawing& drawing, const MapReport& report, const GenomeAxis& axis, const Panel& panel,
               MarkerValue value) {
  const bool hovers = PlacedMarkers(report) <= kHovered;
  Dots dots;
  for (std::size_t g = 0; g < report.groups.size(); ++g) {
    const DrawnMap& map = axis.maps[g];
    for (std::size_t k = 0; k < map.at.size(); ++k) {
      const ReportMarker& marker = report.groups[g].markers[map.which[k]];
      const double y = ValueOf(value, marker);
      if (std::isnan(y)) continue;
      ++dots.count;
      const Point at{axis.scales[g](map.at[k]), panel.y(y)};
      (g % 2 == 0 ? dots.even : dots.odd).push_back(at);
      if (hovers) {
        AddCircle(drawing, at.x, at.y, 4, R"(fill="#fff" fill-opacity="0")",
                  marker.name + ": " + host::Significant(value == MarkerValue::Segregation ? marker.p : y) +
                      (value == MarkerValue::Segregation ? "" : " %"));
      }
    }
  }
  return dots;
}

void DrawThreshold(Drawing& drawing, const Panel& panel, double value, const std::string& label) {
  if (value > panel.y.high) return;
  const double y = panel.y(value);
  AddLine(drawing, kTrackLeft, y, kTrackRight, y,
          R"(stroke="#a00" stroke-width=".8" stroke-dasharray="5 3")");
  AddText(drawing, kTrackRight + 5, y + 3, label, kSmall);
}

// Shares of the codes in one column of the figure.
struct TrackColumn {
  double from = 0, to = 0;  // pixels
  std::vector<double> sums;
  double markers = 0;
};

// Markers that share a pixel are averaged; each column reaches half way to its neighbours.
std::vector<TrackColumn> ShareColumns(const ReportGroup& group, const DrawnMap& map, const Scale& scale,
                                      std::size_t codes) {
  std::vector<TrackColumn> columns;
  for (std::size_t k = 0; k < map.at.size(); ++k) {
    const ReportMarker& marker = group.markers[map.which[k]];
    if (marker.shares.size() != codes) continue;
    const double x = scale(map.at[k]);
    if (columns.empty() || x - columns.back().from >= 1)
      columns.push_back({x, x, std::vector<double>(codes), 0});
    for (std::size_t c = 0; c < codes; ++c) columns.back().sums[c] += marker.shares[c];
    ++columns.back().markers;
  }
  double start = scale.from - 1;
  for (std::size_t k = 0; k < columns.size(); ++k) {
    const double end = k + 1 < columns.size() ? (columns[k].from + columns[k + 1].from) / 2 : scale.to + 1;
    columns[k].from = start;
    columns[k].to = start = end;
  }
  return columns;
}

// Bars of one code over those of the codes before it, as one outline.
std::string ShareArea(const std::vector<TrackColumn>& columns, std::size_t code, const Scale& y) {
  std::string there, back;
  for (const TrackColumn& column : columns) {
    double below = 0;
    for (std::size_t c = 0; c < code; ++c) below += column.sums[c];
    const double low = y(below / column.markers), high = y((below + column.sums[code]) / column.markers);
    there += (there.empty() ? MoveTo(column.from, high) : "V" + Number(high)) + "H" + Number(column.to);
    std::string step = "V";
    step += Number(low) + "H" + Number(column.from);
    back.insert(0, step);
  }
  return there.empty() ? there : there + back + "Z";
}

void DrawCodeLegend(Drawing& drawing, const std::vector<std::string>& codes) {
  for (std::size_t c = 0; c < codes.size(); ++c) {
    const double y = kBottom - 12 - static_cast<double>(c) * 16;
    AddRect(drawing, kTrackRight + 12, y, 12, 12,
            "fill=\"" + Hex(ClassShade(c, codes.size())) + "\" stroke=\"#555\" stroke-width=\".5\"");
    AddText(drawing, kTrackRight + 29, y + 10, Shortened(codes[c], kTextSize, 52));
  }
}

}  // namespace

Figure SegregationFigure(const MapReport& report) {
  double highest = 2.2;
  std::size_t tested = 0, floor = 0, distorted = 0;
  for (const ReportGroup& group : report.groups) {
    for (const ReportMarker& marker : group.markers) {
      if (std::isnan(marker.p)) continue;
      ++tested;
      if (marker.p < 0.01) ++distorted;
      if (SegregationScore(marker) >= kHighest) ++floor;
      highest = std::max(highest, SegregationScore(marker));
    }
  }
  if (tested == 0) return {};
  const double strict = -std::log10(0.05 / static_cast<double>(tested));
  const GenomeAxis axis = LayGroups(report, kTrackLeft + 3, kTrackRight - 3);
  const Panel panel = AlongPanel(0, std::max(highest, strict) * 1.05, "\xE2\x88\x92log10 p");
  Drawing drawing{kFigureWidth, 0, {}};
  DrawBase(drawing, report, axis, panel);
  DrawThreshold(drawing, panel, 2, "p = 0.01");
  if (strict > 2.3) DrawThreshold(drawing, panel, strict, "0.05 / " + std::to_string(tested));
  DrawDots(drawing, PlaceDots(drawing, report, axis, panel, MarkerValue::Segregation));
  std::string caption = "Chi-square test of each marker's segregation, " + CountText(tested, "marker") +
                        "; p below 0.01 at " + std::to_string(distorted) +
                        ". Lines: p = 0.01, and 0.05 divided by the number of tests.";
  if (floor > 0)
    caption += " " + std::to_string(floor) + " with p below 1e-45 stand at " + Number(kHighest) + ".";
  return MadeFigure(drawing, "segregation", "Segregation distortion along the groups", caption);
}

Figure MissingFigure(const MapReport& report) {
  const std::size_t placed = PlacedMarkers(report);
  if (placed == 0) return {};
  double highest = 0, sum = 0;
  for (const ReportGroup& group : report.groups) {
    for (const ReportMarker& marker : group.markers) {
      highest = std::max(highest, MissingPercent(marker));
      sum += MissingPercent(marker);
    }
  }
  const GenomeAxis axis = LayGroups(report, kTrackLeft + 3, kTrackRight - 3);
  const Panel panel = AlongPanel(0, std::clamp(highest * 1.05, 1.0, 100.0), "missing, %");
  Drawing drawing{kFigureWidth, 0, {}};
  DrawBase(drawing, report, axis, panel);
  const double mean = sum / static_cast<double>(placed);
  DrawThreshold(drawing, panel, mean, "mean " + host::Fixed(mean, 1) + " %");
  DrawDots(drawing, PlaceDots(drawing, report, axis, panel, MarkerValue::Missing));
  return MadeFigure(drawing, "missing", "Missing genotypes along the groups",
                    "Share of the lines without a genotype at each of " + std::to_string(placed) +
                        " markers; mean " + host::Fixed(mean, 1) + " %, highest " + host::Fixed(highest, 1) +
                        " %.");
}

Figure GenotypeShares(const MapReport& report) {
  const std::size_t codes = report.codes.size();
  if (codes == 0 || PlacedMarkers(report) == 0) return {};
  const GenomeAxis axis = LayGroups(report, kTrackLeft + 3, kTrackRight - 3);
  const Panel panel = AlongPanel(0, 1, "share of typed lines");
  Drawing drawing{kFigureWidth, 0, {}};
  DrawBase(drawing, report, axis, panel);
  std::size_t shown = 0;
  for (std::size_t g = 0; g < report.groups.size(); ++g) {
    const auto columns = ShareColumns(report.groups[g], axis.maps[g], axis.scales[g], codes);
    for (const TrackColumn& column : columns) shown += static_cast<std::size_t>(column.markers);
    for (std::size_t c = 0; c < codes; ++c) {
      AddPath(drawing, ShareArea(columns, c, panel.y),
              "fill=\"" + Hex(ClassShade(c, codes)) + "\" stroke=\"#555\" stroke-width=\".25\"");
    }
  }
  if (shown == 0) return {};
  double expected = 0;
  for (std::size_t c = 0; c + 1 < report.expected.size(); ++c) {
    if (report.expected[c] <= 0) continue;  // the line is there already
    expected += report.expected[c];
    const double y = panel.y(expected);
    AddLine(drawing, kTrackLeft, y, kTrackRight, y,
            R"(stroke="#000" stroke-width=".9" stroke-dasharray="6 3")");
  }
  DrawCodeLegend(drawing, report.codes);
  return MadeFigure(drawing, "genotype_shares", "Genotype shares along the groups",
                    "Shares of the genotypes among the typed lines at " + std::to_string(shown) + " markers" +
                        (report.expected.empty() ? "." : "; dashed: what the population expects."));
}

}  // namespace reports
