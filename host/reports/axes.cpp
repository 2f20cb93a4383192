#include "host/reports/axes.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/text.h"

namespace reports {
namespace {

double NiceStep(double span, int about) {
  const double raw = span / std::max(1, about);
  const double power = std::pow(10, std::floor(std::log10(raw)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (raw <= factor * power * 1.0001) return factor * power;
  }
  return 10 * power;
}

}  // namespace

std::vector<double> NiceTicks(double low, double high, int about) {
  std::vector<double> ticks;
  if (!std::isfinite(low) || !std::isfinite(high) || !(high > low)) return ticks;
  const double step = NiceStep(high - low, about);
  const double first = std::ceil(low / step - 1e-9), last = std::floor(high / step + 1e-9);
  // Ends that agree in all but their last digits have no ticks that could be told apart.
  if (!(std::max(std::abs(first), std::abs(last)) < 1e12)) return ticks;
  for (double k = first; k <= last; ++k) ticks.push_back(k * step + 0.0);
  return ticks;
}

std::vector<std::string> TickLabels(const std::vector<double>& ticks) {
  double step = 1, largest = 0;
  if (ticks.size() > 1) step = ticks[1] - ticks[0];
  for (const double tick : ticks) largest = std::max(largest, std::abs(tick));
  const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
  std::vector<std::string> labels;
  labels.reserve(ticks.size());
  for (const double tick : ticks) {
    labels.push_back(decimals > 6 || largest >= 1e7 ? host::Significant(tick) : host::Fixed(tick, decimals));
  }
  return labels;
}

Bounds BoundsOf(const std::vector<double>& values) {
  Bounds bounds{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    bounds.low = std::min(bounds.low, value);
    bounds.high = std::max(bounds.high, value);
  }
  if (bounds.low > bounds.high) return {0, 1};
  if (bounds.low == bounds.high) {
    const double half = std::max(0.5, 0.05 * std::abs(bounds.low));
    return {bounds.low - half, bounds.high + half};
  }
  return bounds;
}

Bounds Widened(Bounds bounds, double share) {
  const double margin = (bounds.high - bounds.low) * share;
  return {bounds.low - margin, bounds.high + margin};
}

void DrawYAxis(Drawing& drawing, const Panel& panel, int about) {
  const std::vector<double> ticks = NiceTicks(panel.y.low, panel.y.high, about);
  const std::vector<std::string> labels = TickLabels(ticks);
  double widest = 0;
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    const double y = panel.y(ticks[i]);
    AddLine(drawing, panel.x.from, y, panel.x.to, y, kGridStyle);
    AddText(drawing, panel.x.from - 5, y + 3.5, labels[i], kSmallEnd);
    widest = std::max(widest, TextWidth(labels[i], kSmallText));
  }
  AddLine(drawing, panel.x.from, panel.y.from, panel.x.from, panel.y.to, kAxisStyle);
  if (!panel.yTitle.empty()) {
    AddUpright(drawing, panel.x.from - widest - 12, (panel.y.from + panel.y.to) / 2, panel.yTitle, kMiddle);
  }
}

void DrawXAxis(Drawing& drawing, const Panel& panel, int about) {
  const std::vector<double> ticks = NiceTicks(panel.x.low, panel.x.high, about);
  const std::vector<std::string> labels = TickLabels(ticks);
  for (std::size_t i = 0; i < ticks.size(); ++i) {
    const double x = panel.x(ticks[i]);
    AddLine(drawing, x, panel.y.from, x, panel.y.from + 4, kAxisStyle);
    AddText(drawing, x, panel.y.from + 14, labels[i], kSmallMiddle);
  }
  AddLine(drawing, panel.x.from, panel.y.from, panel.x.to, panel.y.from, kAxisStyle);
  if (!panel.xTitle.empty()) {
    AddText(drawing, (panel.x.from + panel.x.to) / 2, panel.y.from + 29, panel.xTitle, kMiddle);
  }
}

void DrawFrame(Drawing& drawing, const Panel& panel) {
  AddRect(drawing, panel.x.from, panel.y.to, panel.x.to - panel.x.from, panel.y.from - panel.y.to,
          R"(fill="none" stroke="#999" stroke-width=".7")");
}

void DrawRampScale(Drawing& drawing, double x, double top, double height, const RampScale& scale) {
  constexpr double width = 16;
  constexpr int steps = 24;
  for (int k = 0; k < steps; ++k) {
    const double share = k / (steps - 1.0);
    AddRect(drawing, x, top + height * (1 - (k + 1.0) / steps), width, height / steps + 0.3,
            "fill=\"" + Hex(ShadeAt(scale.ramp, scale.darkAtLow ? 1 - share : share)) + "\"");
  }
  AddRect(drawing, x, top, width, height, R"(fill="none" stroke="#777" stroke-width=".7")");
  const std::vector<double> ticks = NiceTicks(scale.bounds.low, scale.bounds.high, 5);
  const std::vector<std::string> labels = TickLabels(ticks);
  const Scale y{scale.bounds.low, scale.bounds.high, top + height, top};
  for (std::size_t k = 0; k < ticks.size(); ++k) {
    AddLine(drawing, x + width, y(ticks[k]), x + width + 4, y(ticks[k]), kAxisStyle);
    AddText(drawing, x + width + 7, y(ticks[k]) + 3, labels[k], kSmall);
  }
}

std::vector<double> SpreadLabels(const std::vector<double>& wanted, double gap, double low, double high) {
  // Labels that touch form a block, which lies at the mean of what its members want; blocks that meet merge.
  struct Block {
    double sum;  // of wanted place less offset in the block
    double count;
    double Start() const { return sum / count; }
  };
  std::vector<Block> blocks;
  for (const double place : wanted) {
    blocks.push_back({place, 1});
    while (blocks.size() > 1) {
      const Block last = blocks.back();
      Block& before = blocks[blocks.size() - 2];
      if (before.Start() + before.count * gap <= last.Start()) break;
      before.sum += last.sum - last.count * before.count * gap;
      before.count += last.count;
      blocks.pop_back();
    }
  }
  std::vector<double> places;
  places.reserve(wanted.size());
  for (const Block& block : blocks) {
    for (double k = 0; k < block.count; ++k) places.push_back(block.Start() + k * gap);
  }
  // Pushed back inside, from the low end and then from the high one.
  double least = low;
  for (double& place : places) least = (place = std::max(place, least)) + gap;
  double most = high;
  for (auto place = places.rbegin(); place != places.rend(); ++place)
    most = (*place = std::min(*place, most)) - gap;
  return places;
}

std::size_t LabelStep(std::size_t n, double room, double size) {
  std::size_t step = 1;
  constexpr std::size_t factors[] = {2, 5, 10};
  for (std::size_t power = 1; static_cast<double>(n) * size > room * static_cast<double>(step); power *= 10) {
    for (const std::size_t factor : factors) {
      step = factor * power;
      if (static_cast<double>(n) * size <= room * static_cast<double>(step)) break;
    }
    if (step > n) break;
  }
  return step;
}

void MergeOnGrid(std::vector<Point>& points, double grid) {
  for (Point& point : points) point = {std::round(point.x / grid) * grid, std::round(point.y / grid) * grid};
  const auto before = [](const Point& a, const Point& b) { return a.x < b.x || (a.x == b.x && a.y < b.y); };
  const auto same = [](const Point& a, const Point& b) { return a.x == b.x && a.y == b.y; };
  std::sort(points.begin(), points.end(), before);
  points.erase(std::unique(points.begin(), points.end(), same), points.end());
}

std::string DotPath(std::vector<Point> points, std::size_t exact) {
  constexpr std::size_t most = 6000;
  if (points.size() > exact) MergeOnGrid(points, 1);
  if (points.size() > most) MergeOnGrid(points, 2);
  std::string path;
  for (const Point& point : points) path += Dot(point.x, point.y);
  return path;
}

}  // namespace reports
