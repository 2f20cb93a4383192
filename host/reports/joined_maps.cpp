#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/figures.h"
#include "host/reports/map_layout.h"
#include "host/reports/shades.h"
#include "host/text.h"

namespace reports {
namespace {

// A map in the middle and up to two others beside it, joined marker by marker.
struct JoinedMap {
  std::string heading, note;
  std::vector<double> positions;  // by marker, kNone where it is not on the map
};
struct JoinedPanel {
  std::string title;
  std::vector<std::string> names;  // by marker
  JoinedMap left, middle, right;
};

constexpr double kScaleRoom = 36, kNames = 92, kBarWidth = 12, kBetween = 104, kHead = 50;
constexpr double kPanelWidth = kScaleRoom + 2 * kNames + 2 * kBetween + 3 * kBarWidth;
constexpr std::size_t kMostPanels = 60;

// Markers that leave the longest run of maps in one order when taken out. `order` has places along one map in the
// order of the other.
std::vector<bool> OutOfOrder(const std::vector<double>& order) {
  std::vector<std::size_t> tails, before(order.size(), order.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    const auto at = std::upper_bound(tails.begin(), tails.end(), order[i],
                                     [&](double value, std::size_t tail) { return value < order[tail]; });
    if (at != tails.begin()) before[i] = *(at - 1);
    if (at == tails.end())
      tails.push_back(i);
    else
      *at = i;
  }
  std::vector<bool> out(order.size(), true);
  if (tails.empty()) return out;
  for (std::size_t i = tails.back(); i < order.size(); i = before[i]) out[i] = false;
  return out;
}

// Drawn places by marker, kNone where it is not on the map.
std::vector<double> PlacesByMarker(const DrawnMap& map, std::size_t markers) {
  std::vector<double> places(markers, kNone);
  for (std::size_t k = 0; k < map.at.size(); ++k) places[map.which[k]] = map.at[k];
  return places;
}

struct Joins {
  std::size_t joined = 0, crossed = 0;
};

// Lines from the right edge of one bar to the left edge of the other.
Joins DrawJoins(Drawing& drawing, const std::vector<double>& from, const std::vector<double>& to, double x1,
                double x2, const Scale& y) {
  std::vector<std::size_t> shared;
  for (std::size_t m = 0; m < from.size(); ++m) {
    if (std::isfinite(from[m]) && std::isfinite(to[m])) shared.push_back(m);
  }
  const auto before = [&](std::size_t a, std::size_t b) {
    return from[a] < from[b] || (from[a] == from[b] && to[a] < to[b]);
  };
  std::stable_sort(shared.begin(), shared.end(), before);
  std::vector<double> order;
  order.reserve(shared.size());
  for (const std::size_t m : shared) order.push_back(to[m]);
  const std::vector<bool> out = OutOfOrder(order);
  const bool dense = shared.size() > kExactTicks;
  std::string lines[2];  // along, across
  Point last[2] = {{-1e9, -1e9}, {-1e9, -1e9}};
  Joins joins{shared.size(), 0};
  for (std::size_t k = 0; k < shared.size(); ++k) {
    const std::size_t crossed = out[k] ? 1 : 0;
    const Point at{y(from[shared[k]]), y(to[shared[k]])};
    joins.crossed += crossed;
    if (dense && std::abs(at.x - last[crossed].x) + std::abs(at.y - last[crossed].y) < 3) continue;
    lines[crossed] += MoveTo(x1, at.x) + LineTo(x2, at.y);
    last[crossed] = at;
  }
  AddPath(drawing, lines[0], R"(fill="none" stroke="#8aa" stroke-width=".7")");
  AddPath(drawing, lines[1], R"(fill="none" stroke="#b5400a" stroke-width=".9" stroke-dasharray="4 2")");
  return joins;
}

void DrawMapHead(Drawing& drawing, const JoinedMap& map, double x, double top) {
  AddText(drawing, x, top - 22, Shortened(map.heading, kTextSize, kBetween + kBarWidth - 6), kBoldMiddle);
  AddText(drawing, x, top - 10, map.note, kSmallMiddle);
}

void DrawPanelNames(Drawing& drawing, const JoinedPanel& panel, const DrawnMap& map, double x, bool left,
                    const Scale& y) {
  std::vector<SideLabel> labels;
  for (std::size_t k = 0; k < map.at.size(); ++k) labels.push_back({y(map.at[k]), panel.names[map.which[k]]});
  labels = FittingLabels(std::move(labels), y.to - y.from);
  DrawSideLabels(drawing, labels, x, left, {y.from, y.to}, kNames - 16);
}

Joins DrawPanel(Drawing& drawing, const JoinedPanel& panel, double left, double top, double height) {
  const DrawnMap maps[] = {DrawnAlong(panel.left.positions), DrawnAlong(panel.middle.positions),
                           DrawnAlong(panel.right.positions)};
  const JoinedMap* heads[] = {&panel.left, &panel.middle, &panel.right};
  double longest = 0;
  for (const DrawnMap& map : maps) longest = std::max(longest, map.length);
  const Scale y{0, longest, top, top + height};
  double x[3];
  for (std::size_t k = 0; k < 3; ++k) {
    x[k] = left + kScaleRoom + kNames + static_cast<double>(k) * (kBarWidth + kBetween);
    if (maps[k].at.empty()) continue;
    DrawMapHead(drawing, *heads[k], x[k] + kBarWidth / 2, top);
    DrawBar(drawing, {x[k], kBarWidth, y}, maps[k]);
  }
  AddText(drawing, x[1] + kBarWidth / 2, top - 38, panel.title, kBoldMiddle);
  DrawMapScale(drawing, left + kScaleRoom, y);
  const std::size_t markers = panel.names.size();
  const std::vector<double> places = PlacesByMarker(maps[1], markers);
  const Joins first = DrawJoins(drawing, PlacesByMarker(maps[0], markers), places, x[0] + kBarWidth, x[1], y);
  const Joins second =
      DrawJoins(drawing, places, PlacesByMarker(maps[2], markers), x[1] + kBarWidth, x[2], y);
  DrawPanelNames(drawing, panel, maps[0], x[0], true, y);
  if (maps[2].at.empty())
    DrawPanelNames(drawing, panel, maps[1], x[1] + kBarWidth, false, y);
  else
    DrawPanelNames(drawing, panel, maps[2], x[2] + kBarWidth, false, y);
  return {first.joined + second.joined, first.crossed + second.crossed};
}

double PanelHeight(const std::vector<JoinedPanel>& panels) {
  std::size_t most = 0;
  for (const JoinedPanel& panel : panels) most = std::max(most, panel.names.size());
  return std::clamp(static_cast<double>(most) * kLabelGap, 160.0, panels.size() > 2 ? 400.0 : 640.0);
}

// Two panels a row.
Joins DrawPanels(Drawing& drawing, const std::vector<JoinedPanel>& panels) {
  const double height = PanelHeight(panels);
  drawing.width = kFigureWidth;
  double top = kHead;
  Joins sum;
  for (std::size_t p = 0; p < panels.size(); ++p) {
    if (p > 0 && p % 2 == 0) top += height + kHead + 16;
    const double left = panels.size() == 1 ? (kFigureWidth - kPanelWidth) / 2
                        : p % 2 == 0       ? 20
                                           : kFigureWidth / 2 + 20;
    const Joins joins = DrawPanel(drawing, panels[p], left, top, height);
    sum.joined += joins.joined;
    sum.crossed += joins.crossed;
  }
  drawing.height = top + height + 16;
  return sum;
}

std::string Length(const std::vector<double>& positions) {
  const DrawnMap map = DrawnAlong(positions);
  return map.gaps.empty() ? host::Fixed(map.length, 1) + " cM"
                          : std::to_string(map.gaps.size() + 1) + " pieces";
}

std::string CrossedText(const Joins& joins) {
  return joins.crossed == 0
             ? " No marker stands in another order."
             : " Dashed: " + std::to_string(joins.crossed) + " outside of the longest common order.";
}

JoinedMap SourceSide(const JointGroup& group, std::size_t source) {
  const SourceMap& map = group.sources[source];
  JoinedMap joined{map.name + (map.reversed ? " (turned)" : ""), "", {}};
  for (const JointMarker& marker : group.markers) joined.positions.push_back(marker.positions.at(source));
  if (map.reversed) {
    const Bounds bounds = BoundsOf(joined.positions);
    for (double& position : joined.positions) position = bounds.high - position;
  }
  const auto count = std::count_if(joined.positions.begin(), joined.positions.end(),
                                   [](double at) { return std::isfinite(at); });
  joined.note = Length(joined.positions) + ", " + host::Counted(count, "marker");
  return joined;
}

std::vector<JoinedPanel> ParentPanels(const MapReport& report) {
  std::vector<JoinedPanel> panels;
  for (const ReportGroup& group : report.groups) {
    JoinedPanel panel{
        group.name, {}, {report.femaleName, "", {}}, {"both", "", {}}, {report.maleName, "", {}}};
    bool any = false;
    for (const ReportMarker& marker : group.markers) {
      panel.names.push_back(marker.name);
      panel.left.positions.push_back(marker.female);
      panel.middle.positions.push_back(marker.position);
      panel.right.positions.push_back(marker.male);
      any = any || std::isfinite(marker.female) || std::isfinite(marker.male);
    }
    for (JoinedMap* map : {&panel.left, &panel.middle, &panel.right}) map->note = Length(map->positions);
    if (any) panels.push_back(std::move(panel));
  }
  return panels;
}

}  // namespace

Figure ParentalMaps(const MapReport& report) {
  std::vector<JoinedPanel> panels = ParentPanels(report);
  if (panels.empty()) return {};
  const std::size_t all = panels.size();
  if (all > kMostPanels) panels.resize(kMostPanels);
  Drawing drawing;
  const Joins joins = DrawPanels(drawing, panels);
  return MadeFigure(drawing, "parental_maps", "Maps of the two parents beside the common map",
                    CountText(panels.size(), "group") +
                        (all > panels.size() ? " of " + std::to_string(all) : std::string()) + ", " +
                        std::to_string(joins.joined) + " joining lines." + CrossedText(joins));
}

Figure ConsensusFigure(const JointGroup& group, std::size_t number) {
  if (group.markers.empty() || group.sources.empty()) return {};
  std::vector<JoinedPanel> panels;
  JoinedMap consensus{"consensus", "", {}};
  std::vector<std::string> names;
  for (const JointMarker& marker : group.markers) {
    names.push_back(marker.name);
    consensus.positions.push_back(marker.position);
  }
  consensus.note = Length(consensus.positions) + ", " + CountText(group.markers.size(), "marker");
  const std::size_t shown = std::min(group.sources.size(), 2 * kMostPanels);
  for (std::size_t s = 0; s < shown; s += 2) {
    JoinedPanel panel{"", names, SourceSide(group, s), consensus, {}};
    if (s + 1 < shown) panel.right = SourceSide(group, s + 1);
    panels.push_back(std::move(panel));
  }
  Drawing drawing;
  const Joins joins = DrawPanels(drawing, panels);
  const std::string of = group.name.empty() ? "" : " of " + group.name;
  return MadeFigure(
      drawing, "consensus_" + std::to_string(number), "Consensus map" + of + " with its sources",
      CountText(group.markers.size(), "marker") + " of " + CountText(group.sources.size(), "map") + ", " +
          std::to_string(joins.joined) + " joining lines." + CrossedText(joins));
}

}  // namespace reports
