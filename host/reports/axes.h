#pragma once

// Scales, ticks and axes of a panel, and labels that keep clear of each other.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/reports/drawing.h"
#include "host/reports/shades.h"

namespace reports {

// A straight map of data to pixels; a range of one value lies in the middle.
struct Scale {
  double low = 0, high = 1;  // data
  double from = 0, to = 1;   // pixels
  double operator()(double value) const {
    return high > low ? from + (value - low) / (high - low) * (to - from) : (from + to) / 2;
  }
};

// Multiples of 1, 2 or 5 times a power of ten in [low, high], about as many as asked for; none when the range is
// empty or not finite.
std::vector<double> NiceTicks(double low, double high, int about);
// The tick as text, with the decimals that the step of its list needs.
std::vector<std::string> TickLabels(const std::vector<double>& ticks);

struct Bounds {
  double low, high;
};
// Smallest and largest finite value, {0, 1} without one; a single value is widened by half a unit or 5 %.
Bounds BoundsOf(const std::vector<double>& values);
// Widened by the share of its range on both sides.
Bounds Widened(Bounds bounds, double share);

// A panel with a y axis and its grid on the left and an x axis below; the axis titles may be empty.
struct Panel {
  Scale x, y;  // y.from is the bottom
  std::string xTitle, yTitle;
};
void DrawYAxis(Drawing& drawing, const Panel& panel, int ticks = 5);
void DrawXAxis(Drawing& drawing, const Panel& panel, int ticks = 6);
void DrawFrame(Drawing& drawing, const Panel& panel);

// An upright strip of a ramp with ticks on its right; the ramp is dark at the high end unless `darkAtLow`.
struct RampScale {
  Ramp ramp = Ramp::Blue;
  Bounds bounds{0, 1};
  bool darkAtLow = false;
};
void DrawRampScale(Drawing& drawing, double x, double top, double height, const RampScale& scale);

// Places along a line for labels that want to stand at `wanted` (ascending) and need `gap` between each other, as
// near as they can (least squares), within [low, high] when there is room for all.
std::vector<double> SpreadLabels(const std::vector<double>& wanted, double gap, double low, double high);
// Every k-th of n labels (k = 1, 2, 5, 10, ...) such that `room` holds them at `size` each.
std::size_t LabelStep(std::size_t n, double room, double size);

struct Point {
  double x, y;
};
// Above this many marks of one kind, those that fall on one pixel are drawn once.
inline constexpr std::size_t kExactMarks = 2000;
// One path command a mark, for a path with round caps. More than `exact` marks are merged pixel by pixel, and
// many thousands on a grid of two pixels, which the size of the caps hides.
std::string DotPath(std::vector<Point> points, std::size_t exact = kExactMarks);

}  // namespace reports
