#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/axes.h"
#include "host/reports/figures.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr double kPlotTop = 30, kSide = 420, kFirstLeft = 58, kSecondLeft = 562;
constexpr std::size_t kMostHovered = 120;  // points up to this number tell their names when pointed at
constexpr std::size_t kMostLabels = 400;   // genotypes beyond are drawn without a try for a name

struct BiplotPoint {
  std::string name;
  double x = 0, y = 0;
  bool environment = false;
};

std::vector<BiplotPoint> PointsOf(const Biplot& biplot, bool againstMean) {
  std::vector<BiplotPoint> points;
  const auto add = [&](const BiplotScore& score, bool environment) {
    const double x = againstMean ? score.mean : score.axis1, y = againstMean ? score.axis1 : score.axis2;
    if (std::isfinite(x) && std::isfinite(y)) points.push_back({score.name, x, y, environment});
  };
  for (const BiplotScore& score : biplot.environments) add(score, true);
  for (const BiplotScore& score : biplot.genotypes) add(score, false);
  return points;
}

// Both axes with one scale, around the origin.
Panel EqualPanel(const std::vector<BiplotPoint>& points, double left) {
  double reach = 1e-6;
  for (const BiplotPoint& point : points) reach = std::max({reach, std::abs(point.x), std::abs(point.y)});
  reach *= 1.14;
  return {{-reach, reach, left, left + kSide}, {-reach, reach, kPlotTop + kSide, kPlotTop}, "", ""};
}

Panel FreePanel(const std::vector<BiplotPoint>& points, double left) {
  std::vector<double> x, y{0};
  for (const BiplotPoint& point : points) {
    x.push_back(point.x);
    y.push_back(point.y);
  }
  const Bounds across = Widened(BoundsOf(x), 0.1), up = Widened(BoundsOf(y), 0.1);
  return {
      {across.low, across.high, left, left + kSide}, {up.low, up.high, kPlotTop + kSide, kPlotTop}, "", ""};
}

struct Box {
  double left, top, right, bottom;
};
bool Meets(const Box& a, const Box& b) {
  return a.left < b.right && a.right > b.left && a.top < b.bottom && a.bottom > b.top;
}

// A name beside its mark, where it meets no other mark and no name; returns whether there is such a place.
bool PlaceName(Drawing& drawing, const BiplotPoint& point, const Panel& panel, std::vector<Box>& taken) {
  const std::string name = Shortened(point.name, kSmallText, 90);
  const double bold = point.environment ? 1.14 : 1;
  const double width = TextWidth(name, kSmallText) * bold, x = panel.x(point.x), y = panel.y(point.y);
  const Point places[] = {{x + 6, y + 3},          {x - 6 - width, y + 3}, {x - width / 2, y - 6},
                          {x - width / 2, y + 13}, {x + 5, y - 4},         {x + 5, y + 11},
                          {x - 5 - width, y - 4},  {x - 5 - width, y + 11}};
  for (const Point& place : places) {
    const Box box{place.x, place.y - 8, place.x + width, place.y + 2};
    if (box.left < panel.x.from || box.right > panel.x.to || box.top < panel.y.to ||
        box.bottom > panel.y.from)
      continue;
    if (std::any_of(taken.begin(), taken.end(), [&](const Box& other) { return Meets(box, other); }))
      continue;
    taken.push_back(box);
    AddText(drawing, place.x, place.y, name,
            point.environment ? R"(font-size="9" fill="#8a2d00" font-weight="bold")"
                              : R"(font-size="9" fill="#08285a")");
    return true;
  }
  return false;
}

// Marks of all points, then as many names as find room; returns their number.
std::size_t DrawPoints(Drawing& drawing, const std::vector<BiplotPoint>& points, const Panel& panel,
                       bool vectors, std::vector<Box> taken = {}) {
  std::vector<Point> genotypes;
  for (const BiplotPoint& point : points) {
    const double x = panel.x(point.x), y = panel.y(point.y);
    taken.push_back({x - 3, y - 3, x + 3, y + 3});
    if (!point.environment) {
      if (points.size() <= kMostHovered)
        AddCircle(drawing, x, y, 2.8, R"(fill="#1f4e79")", point.name);
      else
        genotypes.push_back({x, y});
      continue;
    }
    if (vectors) AddLine(drawing, panel.x(0), panel.y(0), x, y, R"(stroke="#c98a5e" stroke-width=".8")");
    AddRect(drawing, x - 3, y - 3, 6, 6, R"(fill="#fff" stroke="#b5400a" stroke-width="1.4")", point.name);
  }
  AddPath(drawing, DotPath(std::move(genotypes)),
          R"(stroke="#1f4e79" stroke-width="4" stroke-linecap="round")");
  std::vector<std::size_t> order(points.size());
  for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
  const double midX = (panel.x.low + panel.x.high) / 2, midY = (panel.y.low + panel.y.high) / 2;
  const auto outness = [&](std::size_t k) {  // the outermost points matter most, and environments before all
    const double dx = (points[k].x - midX) / (panel.x.high - panel.x.low),
                 dy = (points[k].y - midY) / (panel.y.high - panel.y.low);
    return dx * dx + dy * dy + (points[k].environment ? 10 : 0);
  };
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return outness(a) > outness(b); });
  std::size_t named = 0;
  for (std::size_t k = 0; k < std::min(order.size(), kMostLabels); ++k)
    named += PlaceName(drawing, points[order[k]], panel, taken) ? 1U : 0U;
  return named;
}

double Cross(const BiplotPoint& o, const BiplotPoint& a, const BiplotPoint& b) {
  return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
}

// Corners of the convex hull of the genotypes, counter-clockwise.
std::vector<BiplotPoint> HullOf(const std::vector<BiplotPoint>& points) {
  std::vector<BiplotPoint> sorted;
  for (const BiplotPoint& point : points) {
    if (!point.environment) sorted.push_back(point);
  }
  std::sort(sorted.begin(), sorted.end(), [](const BiplotPoint& a, const BiplotPoint& b) {
    return a.x < b.x || (a.x == b.x && a.y < b.y);
  });
  std::vector<BiplotPoint> hull;
  for (int pass = 0; pass < 2; ++pass) {
    const std::size_t start = hull.size();
    for (const BiplotPoint& point : sorted) {
      while (hull.size() >= start + 2 && Cross(hull[hull.size() - 2], hull.back(), point) <= 0)
        hull.pop_back();
      hull.push_back(point);
    }
    if (!hull.empty()) hull.pop_back();
    std::reverse(sorted.begin(), sorted.end());
  }
  return hull;
}

// A straight line through the origin in a direction, to the frame of an equal panel; one-sided for a ray.
void DrawThroughOrigin(Drawing& drawing, const Panel& panel, double dx, double dy, bool ray,
                       std::string_view style) {
  const double largest = std::max(std::abs(dx), std::abs(dy));
  if (!(largest > 0)) return;
  const double reach = panel.x.high / largest, back = ray ? 0 : -reach;
  AddLine(drawing, panel.x(back * dx), panel.y(back * dy), panel.x(reach * dx), panel.y(reach * dy), style);
}

void DrawWinnerPolygon(Drawing& drawing, const std::vector<BiplotPoint>& points, const Panel& panel) {
  const std::vector<BiplotPoint> hull = HullOf(points);
  std::string outline;
  for (std::size_t k = 0; k < hull.size(); ++k) {
    outline += k == 0 ? MoveTo(panel.x(hull[k].x), panel.y(hull[k].y))
                      : LineTo(panel.x(hull[k].x), panel.y(hull[k].y));
    const BiplotPoint& next = hull[(k + 1) % hull.size()];
    // The outer normal of a side parts the environments where its two ends win.
    if (hull.size() > 2)
      DrawThroughOrigin(drawing, panel, next.y - hull[k].y, hull[k].x - next.x, true,
                        R"(stroke="#555" stroke-width=".9" stroke-dasharray="2 3")");
  }
  if (!outline.empty()) AddPath(drawing, outline + "Z", R"(fill="none" stroke="#1f4e79" stroke-width="1.1")");
}

// The line of the mean environment, on which projections rank the genotypes; the distance from it tells how
// unstable a genotype is. Returns where names may not stand.
std::vector<Box> DrawMeanLine(Drawing& drawing, const std::vector<BiplotPoint>& points, const Panel& panel) {
  double x = 0, y = 0, count = 0;
  for (const BiplotPoint& point : points) {
    if (!point.environment) continue;
    x += point.x;
    y += point.y;
    ++count;
  }
  if (count == 0 || !(x * x + y * y > 0)) return {};
  x /= count;
  y /= count;
  DrawThroughOrigin(drawing, panel, -y, x, false,
                    R"(stroke="#777" stroke-width=".9" stroke-dasharray="6 3")");
  DrawThroughOrigin(drawing, panel, x, y, false, R"(stroke="#222" stroke-width="1.2")");
  std::string projections;
  for (const BiplotPoint& point : points) {
    if (point.environment) continue;
    const double along = (point.x * x + point.y * y) / (x * x + y * y);
    projections +=
        MoveTo(panel.x(point.x), panel.y(point.y)) + LineTo(panel.x(along * x), panel.y(along * y));
  }
  AddPath(drawing, projections, R"(fill="none" stroke="#6b8fb3" stroke-width=".7" stroke-dasharray="1.5 2")");
  AddCircle(drawing, panel.x(x), panel.y(y), 5.5, R"(fill="none" stroke="#222" stroke-width="1.6")",
            "mean environment");
  return {{panel.x(x) - 6, panel.y(y) - 6, panel.x(x) + 6, panel.y(y) + 6}};
}

std::string AxisTitle(int axis, double share) {
  return "axis " + std::to_string(axis) +
         (std::isfinite(share) ? " (" + host::Fixed(100 * share, 1) + " %)" : std::string());
}

void DrawPanelBase(Drawing& drawing, Panel& panel, const std::string& title, std::string xTitle,
                   std::string yTitle) {
  panel.xTitle = std::move(xTitle);
  panel.yTitle = std::move(yTitle);
  DrawYAxis(drawing, panel, 6);
  DrawXAxis(drawing, panel, 6);
  DrawFrame(drawing, panel);
  AddText(drawing, (panel.x.from + panel.x.to) / 2, kPlotTop - 10, title, kBoldMiddle);
  if (panel.y.low < 0 && panel.y.high > 0)
    AddLine(drawing, panel.x.from, panel.y(0), panel.x.to, panel.y(0), R"(stroke="#999")");
  if (panel.x.low < 0 && panel.x.high > 0)
    AddLine(drawing, panel.x(0), panel.y.from, panel.x(0), panel.y.to, R"(stroke="#999")");
}

// "G3 in 4 environments, G7 in 2": the genotype with the highest two-axis prediction in each environment.
std::string Winners(const Biplot& biplot) {
  std::vector<std::pair<std::string, int>> wins;
  for (const BiplotScore& environment : biplot.environments) {
    const auto score = [&](const BiplotScore& genotype) {
      return genotype.axis1 * environment.axis1 + genotype.axis2 * environment.axis2;
    };
    const auto best =
        std::max_element(biplot.genotypes.begin(), biplot.genotypes.end(),
                         [&](const BiplotScore& a, const BiplotScore& b) { return score(a) < score(b); });
    if (best == biplot.genotypes.end()) continue;
    const auto known =
        std::find_if(wins.begin(), wins.end(), [&](const auto& win) { return win.first == best->name; });
    if (known == wins.end())
      wins.emplace_back(best->name, 1);
    else
      ++known->second;
  }
  std::stable_sort(wins.begin(), wins.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  std::string text;
  for (std::size_t k = 0; k < std::min<std::size_t>(wins.size(), 6); ++k) {
    text += (k > 0 ? ", " : "") + wins[k].first + " in " +
            (k == 0 ? host::Counted(wins[k].second, "environment") : std::to_string(wins[k].second));
  }
  return wins.size() > 6 ? text + ", ..." : text;
}

}  // namespace

Figure BiplotFigure(const Biplot& biplot, const std::string& trait, std::size_t t) {
  const bool wins = biplot.model == "GGE";
  const std::vector<BiplotPoint> axes = PointsOf(biplot, false), means = PointsOf(biplot, true);
  if (axes.empty()) return {};
  Drawing drawing{kFigureWidth, kPlotTop + kSide + 44, {}};
  const std::string one = AxisTitle(1, biplot.share1), two = AxisTitle(2, biplot.share2);
  Panel first = wins ? EqualPanel(axes, kFirstLeft) : FreePanel(means, kFirstLeft),
        second = EqualPanel(axes, kSecondLeft);
  std::size_t named = 0;
  std::vector<Box> taken;
  if (wins) {
    DrawPanelBase(drawing, first, "GGE: which wins where", one, two);
    DrawWinnerPolygon(drawing, axes, first);
    named = DrawPoints(drawing, axes, first, false);
    DrawPanelBase(drawing, second, "GGE: mean and stability", one, two);
    taken = DrawMeanLine(drawing, axes, second);
  } else {
    DrawPanelBase(drawing, first, biplot.model + "1: mean and first axis", "mean", one);
    named = DrawPoints(drawing, means, first, false);
    DrawPanelBase(drawing, second, biplot.model + "2: both axes", one, two);
  }
  named = std::min(named, DrawPoints(drawing, axes, second, !wins, std::move(taken)));
  std::string caption = CountText(biplot.genotypes.size(), "genotype") + " (dots) and " +
                        CountText(biplot.environments.size(), "environment") +
                        " (squares). Taken off before the decomposition: " + biplot.centred +
                        ". Singular values are split evenly between genotypes and environments.";
  if (wins) {
    caption +=
        " Left: corners of the polygon win in the sector between the dotted lines; highest by two axes: " +
        Winners(biplot) +
        ". Right: projections on the full line through the mean environment (circle) rank the means, their "
        "length tells how unstable a genotype is.";
  }
  if (named < axes.size()) caption += " Names where there is room.";
  std::string name = biplot.model;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
  return MadeFigure(drawing, "biplot_" + name + "_" + std::to_string(t + 1),
                    trait + ": " + biplot.model + " biplot", caption);
}

}  // namespace reports
