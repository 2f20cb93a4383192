#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/figures.h"
#include "host/reports/map_layout.h"
#include "host/reports/shades.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr double kAxisRoom = 44, kHeadRoom = 34, kRowGap = 22;
constexpr double kStrip = 8, kPositionWidth = 32, kNameWidth = 96;
constexpr std::size_t kMostNamed = 60, kMostPlain = 240;  // groups in one figure

struct Ladder {
  std::vector<DrawnMap> maps;
  bool named = false;
  double cell = 0, height = 0, longest = 0;
  std::size_t perRow = 1;
  double window = 1;  // of the density strips, centimorgans
  double densest = 1;
};

double WidestName(const MapReport& report, std::size_t groups) {
  double widest = 0;
  for (std::size_t g = 0; g < groups; ++g) {
    for (const ReportMarker& marker : report.groups[g].markers) {
      widest = std::max(widest, TextWidth(marker.name, kSmallText));
      if (widest > kNameWidth) return kNameWidth;
    }
  }
  return widest + 1;
}

std::vector<double> WindowCounts(const DrawnMap& map, double window) {
  std::vector<double> counts(static_cast<std::size_t>(map.length / window) + 1, 0.0);
  for (const double at : map.at) ++counts[static_cast<std::size_t>(at / window)];
  return counts;
}

void PlanRows(Ladder& ladder, const MapReport& report) {
  const double names = ladder.named ? WidestName(report, ladder.maps.size()) : 0;
  double heading = 0;
  for (std::size_t g = 0; g < ladder.maps.size(); ++g) {
    const ReportGroup& group = report.groups[g];
    heading = std::max({heading, TextWidth(group.name, kTextSize) + 4,
                        TextWidth(host::Fixed(group.length, 1) + " cM", kSmallText)});
  }
  heading = std::min(heading, 110.0);
  ladder.cell = ladder.named ? std::max(kPositionWidth + kStrip + 30 + names + 24, heading + 8)
                             : std::max(kStrip + 26, heading + 8);
  const double room = kFigureWidth - kAxisRoom;
  ladder.perRow = std::max<std::size_t>(1, static_cast<std::size_t>(room / ladder.cell));
  const std::size_t rows = (ladder.maps.size() + ladder.perRow - 1) / ladder.perRow;
  ladder.perRow = std::max<std::size_t>(1, (ladder.maps.size() + rows - 1) / std::max<std::size_t>(1, rows));
  // A last row that is nearly as full as the others; wide cells when there is room.
  ladder.cell = std::min(room / static_cast<double>(ladder.perRow), ladder.cell * 1.8);
  // So high that every group has room for its names beside its bar, where that is possible.
  double wanted = 200;
  for (const DrawnMap& map : ladder.maps) {
    const double share = ladder.longest > 0 ? std::max(0.2, map.length / ladder.longest) : 1;
    wanted = std::max(wanted, static_cast<double>(map.at.size()) * kLabelGap / share);
  }
  ladder.height = ladder.named ? std::min(wanted, rows <= 1   ? 760.0
                                                  : rows == 2 ? 560.0
                                                              : 380.0)
                               : (rows <= 2 ? 280 : 200);
}

Ladder PlanLadder(const MapReport& report, bool named) {
  Ladder ladder;
  ladder.named = named;
  const std::size_t shown = std::min(report.groups.size(), named ? kMostNamed : kMostPlain);
  for (std::size_t g = 0; g < shown; ++g) {
    ladder.maps.push_back(DrawnGroup(report.groups[g]));
    ladder.longest = std::max(ladder.longest, ladder.maps.back().length);
  }
  PlanRows(ladder, report);
  const std::vector<double> ticks = NiceTicks(0, ladder.longest, 25);
  ladder.window = ticks.size() > 1 ? ticks[1] - ticks[0] : 1;
  for (const DrawnMap& map : ladder.maps) {
    for (const double count : WindowCounts(map, ladder.window))
      ladder.densest = std::max(ladder.densest, count);
  }
  return ladder;
}

void DrawStrip(Drawing& drawing, const Ladder& ladder, const DrawnMap& map, double x, const Scale& y) {
  const std::vector<double> counts = WindowCounts(map, ladder.window);
  for (std::size_t k = 0; k < counts.size(); ++k) {
    const double start = static_cast<double>(k) * ladder.window;
    const double end = std::min(start + ladder.window, map.length);
    if (end <= start && k > 0) continue;
    const double top = y(start), height = std::max(1.5, y(end) - top);
    AddRect(drawing, x, top, kStrip, height,
            "fill=\"" + Hex(ShadeAt(Ramp::Blue, counts[k] / ladder.densest)) + "\"");
  }
  AddRect(drawing, x, y(0), kStrip, std::max(1.5, y(map.length) - y(0)),
          R"(fill="none" stroke="#bbb" stroke-width=".5")");
}

// Returns how many names are drawn.
std::size_t DrawNames(Drawing& drawing, const ReportGroup& group, const DrawnMap& map, const Bar& bar,
                      double cellLeft, double height) {
  std::vector<SideLabel> names, positions;
  for (std::size_t k = 0; k < map.at.size(); ++k) {
    names.push_back({bar.y(map.at[k]), group.markers[map.which[k]].name});
  }
  names = FittingLabels(std::move(names), height);
  // Positions stand as near as the names do; those of one place are written once.
  for (std::size_t k = 0; k < map.at.size(); ++k) {
    const double y = bar.y(map.at[k]);
    if (!positions.empty() && y - positions.back().y < kLabelGap) continue;
    positions.push_back({y, host::Fixed(group.markers[map.which[k]].position, 1)});
  }
  DrawSideLabels(drawing, names, bar.x + bar.width, false, {bar.y.from, bar.y.from + height}, kNameWidth);
  for (const SideLabel& position : positions) {
    AddText(drawing, cellLeft + kPositionWidth - 3, position.y + 3, position.text, kSmallEnd);
  }
  return names.size();
}

void DrawDensityLegend(Drawing& drawing, const Ladder& ladder, double y) {
  const std::string unit = "markers per " + Number(ladder.window) + " cM";
  constexpr double width = 120;
  constexpr int steps = 24;
  AddText(drawing, kAxisRoom, y + 9, "Strip:", kSmall);
  const double x = kAxisRoom + 32;
  for (int k = 0; k < steps; ++k) {
    AddRect(drawing, x + k * width / steps, y, width / steps + 0.3, 10,
            "fill=\"" + Hex(ShadeAt(Ramp::Blue, (k + 0.5) / steps)) + "\"");
  }
  AddRect(drawing, x, y, width, 10, R"(fill="none" stroke="#999" stroke-width=".5")");
  AddText(drawing, x, y + 20, "0", kSmallMiddle);
  AddText(drawing, x + width, y + 20, Number(ladder.densest), kSmallMiddle);
  AddText(drawing, x + width + 10, y + 9, unit, kSmall);
}

// A row takes no more height than its longest bar, or its longest list of names, needs.
struct LadderRow {
  double length = 0, height = 0;  // centimorgans of the longest group; pixels
};
LadderRow RowFrom(const Ladder& ladder, std::size_t first) {
  LadderRow row;
  for (std::size_t g = first; g < std::min(first + ladder.perRow, ladder.maps.size()); ++g) {
    row.length = std::max(row.length, ladder.maps[g].length);
    if (ladder.named)
      row.height = std::max(row.height, static_cast<double>(ladder.maps[g].at.size()) * kLabelGap);
  }
  const double bars = ladder.longest > 0 ? row.length / ladder.longest * ladder.height : 0;
  row.height = std::clamp(row.height, bars, ladder.height);
  return row;
}

std::string LadderCaption(const MapReport& report, const Ladder& ladder, std::size_t named) {
  const std::size_t placed = PlacedMarkers(report);
  double length = 0;
  std::size_t gaps = 0;
  for (const ReportGroup& group : report.groups) length += group.length;
  for (const DrawnMap& map : ladder.maps) gaps += map.gaps.size();
  std::string text = CountText(placed, "marker") + " in " + CountText(report.groups.size(), "group") + ", " +
                     host::Fixed(length, 1) +
                     " cM. A tick is a marker; strips show the density in windows of " +
                     Number(ladder.window) + " cM.";
  if (gaps > 0) text += " Dotted breaks stand for neighbours without linkage and are not to scale.";
  if (ladder.maps.size() < report.groups.size()) {
    text += " The first " + std::to_string(ladder.maps.size()) + " groups are drawn.";
  }
  if (ladder.named && named < placed) {
    text += " Names where there is room: " + std::to_string(named) + " of " + std::to_string(placed) + ".";
  }
  return text;
}

}  // namespace

Figure MapLadder(const MapReport& report, bool named) {
  if (report.groups.empty()) return {};
  const Ladder ladder = PlanLadder(report, named);
  const double used = kAxisRoom + static_cast<double>(ladder.perRow) * ladder.cell;
  Drawing drawing{std::clamp(used, 420.0, kFigureWidth), 0, {}};
  double top = kHeadRoom;
  LadderRow row;
  std::size_t names = 0;
  for (std::size_t g = 0; g < ladder.maps.size(); ++g) {
    const std::size_t column = g % ladder.perRow;
    if (column == 0) {
      if (g > 0) top += row.height + kHeadRoom + kRowGap;
      row = RowFrom(ladder, g);
      DrawMapScale(drawing, kAxisRoom - 6,
                   {0, row.length, top, top + ladder.height * row.length / std::max(ladder.longest, 1e-9)});
    }
    const double left = kAxisRoom + static_cast<double>(column) * ladder.cell;
    const DrawnMap& map = ladder.maps[g];
    const ReportGroup& group = report.groups[g];
    const Scale y{0, ladder.longest, top, top + (ladder.longest > 0 ? ladder.height : 0)};
    const double stripLeft = left + (named ? kPositionWidth : 4);
    const Bar bar{stripLeft + kStrip + 3, 14, y};
    AddText(drawing, stripLeft, top - 20,
            Shortened(group.name, kTextSize, ladder.cell - (named ? kPositionWidth : 4)), kBold);
    AddText(drawing, stripLeft, top - 9,
            host::Fixed(group.length, 1) + " cM" + (named ? ", " + CountText(map.at.size(), "marker") : ""),
            kSmall);
    DrawStrip(drawing, ladder, map, stripLeft, y);
    DrawBar(drawing, bar, map);
    if (named) names += DrawNames(drawing, group, map, bar, left, row.height);
  }
  top += row.height + 22;
  DrawDensityLegend(drawing, ladder, top);
  drawing.height = top + 26;
  return MadeFigure(drawing, named ? "map_ladder" : "map_overview",
                    named ? "Linkage map with marker names" : "Linkage map and marker density",
                    LadderCaption(report, ladder, names));
}

}  // namespace reports
