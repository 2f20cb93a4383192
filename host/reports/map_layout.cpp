#include "host/reports/map_layout.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/shades.h"

namespace reports {
namespace {

// A gap is drawn as this part of the linked length, and at least as so many centimorgans.
constexpr double kGapShare = 0.04, kLeastGap = 4;
constexpr double kGroupGap = 6;  // pixels between groups in a row

// The rows of pixels of a bar that hold a marker; rows one below the other make one rectangle.
std::string FilledRows(const Bar& bar, const DrawnMap& map) {
  std::string path;
  double start = 0, end = 0;
  const auto close = [&] {
    if (end > start)
      path += MoveTo(bar.x, start) + "h" + Number(bar.width) + "V" + Number(end) + "H" + Number(bar.x) + "z";
  };
  for (const double at : map.at) {
    const double row = std::floor(bar.y(at));
    if (row > end) {
      close();
      start = row;
    }
    end = row + 1;
  }
  close();
  return path;
}

}  // namespace

DrawnMap DrawnAlong(const std::vector<double>& positions) {
  DrawnMap map;
  for (std::size_t i = 0; i < positions.size(); ++i) {
    if (std::isfinite(positions[i])) map.which.push_back(i);
  }
  const auto before = [&](std::size_t a, std::size_t b) { return positions[a] < positions[b]; };
  std::stable_sort(map.which.begin(), map.which.end(), before);
  double linked = 0;
  for (std::size_t k = 1; k < map.which.size(); ++k) {
    const double step = positions[map.which[k]] - positions[map.which[k - 1]];
    linked += step < kUnlinked ? step : 0;
  }
  const double gap = std::max(kLeastGap, kGapShare * linked);
  for (std::size_t k = 0; k < map.which.size(); ++k) {
    if (k == 0) {
      map.at.push_back(0);
      continue;
    }
    const double step = positions[map.which[k]] - positions[map.which[k - 1]];
    if (step >= kUnlinked) map.gaps.push_back(k);
    map.at.push_back(map.at.back() + (step < kUnlinked ? step : gap));
  }
  map.length = map.at.empty() ? 0 : map.at.back();
  return map;
}

DrawnMap DrawnGroup(const ReportGroup& group) {
  std::vector<double> positions;
  positions.reserve(group.markers.size());
  for (const ReportMarker& marker : group.markers) positions.push_back(marker.position);
  return DrawnAlong(positions);
}

void DrawBar(Drawing& drawing, const Bar& bar, const DrawnMap& map) {
  if (map.at.empty()) return;
  const std::string shape =
      "fill=\"#fff\" stroke=\"#333\" rx=\"" + Number(std::min(4.0, bar.width / 3)) + "\"";
  constexpr double cap = 4;  // the ends stand over, so that the ticks there show
  double top = bar.y(map.at.front()) - cap;
  const auto piece = [&](double bottom) { AddRect(drawing, bar.x, top, bar.width, bottom - top, shape); };
  for (const std::size_t k : map.gaps) {
    piece(bar.y(map.at[k - 1]) + cap);
    top = bar.y(map.at[k]) - cap;
    const double middle = bar.x + bar.width / 2;
    AddLine(drawing, middle, bar.y(map.at[k - 1]) + cap + 1, middle, top - 1,
            R"(stroke="#333" stroke-dasharray="1.5 2")");
  }
  piece(bar.y(map.at.back()) + cap);
  if (map.at.size() > kExactTicks) {
    AddPath(drawing, FilledRows(bar, map), R"(fill="#666")");
    return;
  }
  std::string ticks;
  for (const double at : map.at) ticks += MoveTo(bar.x, bar.y(at)) + "h" + Number(bar.width);
  AddPath(drawing, ticks, R"(stroke="#333" stroke-width=".8")");
}

void DrawMapScale(Drawing& drawing, double x, const Scale& y) {
  constexpr double apart = 14;  // pixels that a label needs
  const std::vector<double> ticks =
      NiceTicks(0, y.high, std::clamp(static_cast<int>((y.to - y.from) / apart), 1, 6));
  if (ticks.empty()) return;
  const std::vector<std::string> labels = TickLabels(ticks);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    AddLine(drawing, x - 4, y(ticks[i]), x, y(ticks[i]), kAxisStyle);
    AddText(drawing, x - 6, y(ticks[i]) + 3, labels[i], kSmallEnd);
  }
  AddLine(drawing, x, y.from, x, y.to, kAxisStyle);
  AddText(drawing, x, y.from - 8, "cM", kSmallEnd);
}

std::vector<SideLabel> FittingLabels(std::vector<SideLabel> labels, double height) {
  if (static_cast<double>(labels.size()) * kLabelGap <= height + kLabelGap) return labels;
  std::vector<SideLabel> kept;
  for (SideLabel& label : labels) {
    if (kept.empty() || label.y - kept.back().y >= kLabelGap) kept.push_back(std::move(label));
  }
  return kept;
}

void DrawSideLabels(Drawing& drawing, const std::vector<SideLabel>& labels, double x, bool left, Bounds range,
                    double width) {
  std::vector<double> wanted;
  wanted.reserve(labels.size());
  for (const SideLabel& label : labels) wanted.push_back(label.y);
  const std::vector<double> places = SpreadLabels(wanted, kLabelGap, range.low, range.high);
  const double side = left ? -1 : 1;
  std::string leaders;
  for (std::size_t k = 0; k < labels.size(); ++k) {
    leaders += MoveTo(x, labels[k].y) + LineTo(x + side * 4, labels[k].y) + LineTo(x + side * 12, places[k]);
    AddText(drawing, x + side * 14, places[k] + 3, Shortened(labels[k].text, kSmallText, width),
            left ? kSmallEnd : kSmall);
  }
  AddPath(drawing, leaders, R"(fill="none" stroke="#999" stroke-width=".6")");
}

GenomeAxis LayGroups(const MapReport& report, double from, double to) {
  GenomeAxis axis;
  double total = 0;
  for (const ReportGroup& group : report.groups) {
    axis.maps.push_back(DrawnGroup(group));
    total += axis.maps.back().length;
  }
  const auto groups = static_cast<double>(report.groups.size());
  const double gap = std::min(kGroupGap, (to - from) / (4 * std::max(1.0, groups)));
  // Every group has a few pixels, even one whose markers share one place.
  const double least = std::min(4.0, (to - from) / (4 * std::max(1.0, groups)));
  const double room = to - from - groups * (gap + least);
  double x = from;
  for (const DrawnMap& map : axis.maps) {
    const double width = least + (total > 0 ? map.length / total * room : room / groups);
    axis.scales.push_back({0, map.length, x, x + width});
    x += width + gap;
  }
  return axis;
}

void DrawGenomeBands(Drawing& drawing, const GenomeAxis& axis, double top, double bottom) {
  for (std::size_t g = 0; g < axis.scales.size(); ++g) {
    const Scale& scale = axis.scales[g];
    AddRect(drawing, scale.from - 2, top, scale.to - scale.from + 4, bottom - top,
            g % 2 == 0 ? R"(fill="#f3f3f3")" : R"(fill="#fafafa")");
  }
}

double DrawGenomeNames(Drawing& drawing, const MapReport& report, const GenomeAxis& axis, double bottom) {
  constexpr double longest = 70;
  std::vector<std::string> names;
  std::size_t tight = 0;
  double widest = 0;
  for (std::size_t g = 0; g < axis.scales.size(); ++g) {
    names.push_back(Shortened(report.groups[g].name, kSmallText, longest));
    const double width = TextWidth(names.back(), kSmallText);
    widest = std::max(widest, width);
    if (width > axis.scales[g].to - axis.scales[g].from + 6) ++tight;
  }
  const bool upright = 4 * tight > names.size();
  double free = -1e9;
  for (std::size_t g = 0; g < axis.scales.size(); ++g) {
    const double middle = (axis.scales[g].from + axis.scales[g].to) / 2;
    const double half = upright ? kLabelGap / 2 : TextWidth(names[g], kSmallText) / 2 + 1;
    if (middle - half + 3 < free) continue;  // the estimate is on the wide side
    free = middle + half;
    if (upright)
      AddUpright(drawing, middle + 3, bottom + 6, names[g], kSmallEnd);
    else
      AddText(drawing, middle, bottom + 13, names[g], kSmallMiddle);
  }
  return upright ? widest + 12 : 20;
}

std::size_t PlacedMarkers(const MapReport& report) {
  std::size_t count = 0;
  for (const ReportGroup& group : report.groups) count += group.markers.size();
  return count;
}

}  // namespace reports
