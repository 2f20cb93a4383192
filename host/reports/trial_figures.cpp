#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "host/reports/axes.h"
#include "host/reports/figures.h"
#include "host/reports/shades.h"
#include "host/reports/small_panels.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr double kBoxLeft = 66, kBoxMargin = 16;
constexpr double kBoxRoom = 150, kLeastBoxes = 300;  // of an environment, where there is room; of all
constexpr std::size_t kMostBoxes = 160;
constexpr std::size_t kExactSmall = 400;  // marks of a small panel that are drawn one by one

std::string NameOf(const std::string& stem, std::size_t t) { return stem + "_" + std::to_string(t + 1); }

struct FiveNumbers {
  double low, q1, median, q3, high;  // whiskers end at plots within 1.5 quartile ranges of the box
};

// Quantile between order statistics of sorted values, the lowest at 0 and the highest at 1.
double QuantileOf(const std::vector<double>& sorted, double share) {
  const double at = share * (static_cast<double>(sorted.size()) - 1);
  const auto k = static_cast<std::size_t>(at);
  const double next = sorted[std::min(k + 1, sorted.size() - 1)];
  return sorted[k] + (at - static_cast<double>(k)) * (next - sorted[k]);
}

FiveNumbers Summarise(const std::vector<double>& sorted) {
  FiveNumbers five{0, QuantileOf(sorted, 0.25), QuantileOf(sorted, 0.5), QuantileOf(sorted, 0.75), 0};
  const double reach = 1.5 * (five.q3 - five.q1);
  five.low = *std::lower_bound(sorted.begin(), sorted.end(), five.q1 - reach);
  five.high = *(std::upper_bound(sorted.begin(), sorted.end(), five.q3 + reach) - 1);
  return five;
}

std::vector<double> SortedFinite(const std::vector<double>& values) {
  std::vector<double> sorted;
  for (const double value : values) {
    if (std::isfinite(value)) sorted.push_back(value);
  }
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

void DrawBox(Drawing& drawing, const std::vector<double>& sorted, double x, double width, const Scale& y) {
  const FiveNumbers five = Summarise(sorted);
  const double half = width / 2;
  const std::string whiskers = MoveTo(x, y(five.q1)) + "V" + Number(y(five.low)) + MoveTo(x, y(five.q3)) +
                               "V" + Number(y(five.high)) + MoveTo(x - half / 2, y(five.low)) + "h" +
                               Number(half) + MoveTo(x - half / 2, y(five.high)) + "h" + Number(half);
  AddPath(drawing, whiskers, R"(stroke="#333" fill="none")");
  AddRect(drawing, x - half, y(five.q3), width, std::max(0.5, y(five.q1) - y(five.q3)),
          R"(fill="#c6dbef" stroke="#333")",
          "median " + host::Significant(five.median) + ", quartiles " + host::Significant(five.q1) + " and " +
              host::Significant(five.q3) + ", " + CountText(sorted.size(), "plot"));
  AddLine(drawing, x - half, y(five.median), x + half, y(five.median),
          R"(stroke="#08285a" stroke-width="2")");
  std::vector<Point> outside;
  for (const double value : sorted) {
    if (value < five.low || value > five.high) outside.push_back({x, y(value)});
  }
  AddPath(drawing, DotPath(std::move(outside)),
          R"(stroke="#b5400a" stroke-width="3.4" stroke-linecap="round")");
}

// Names under the columns of a figure, upright when they do not fit side by side.
double NamesHeight(const std::vector<std::string>& names, double step) {
  double widest = 0;
  for (const std::string& name : names) widest = std::max(widest, TextWidth(name, kSmallText));
  return widest + 4 <= step ? 0 : std::min(widest, 110.0);
}
void DrawColumnName(Drawing& drawing, double x, double y, const std::string& name, bool upright) {
  if (upright)
    AddUpright(drawing, x + 3, y + 2, Shortened(name, kSmallText, 110), kSmallEnd);
  else
    AddText(drawing, x, y + 10, name, kSmallMiddle);
}

}  // namespace

Figure BoxPlots(const TrialReport& report, std::size_t t) {
  const TraitReport& trait = report.traits[t];
  const std::size_t shown = std::min({trait.plots.size(), report.environments.size(), kMostBoxes});
  std::vector<double> all;
  for (std::size_t e = 0; e < shown; ++e) all.insert(all.end(), trait.plots[e].begin(), trait.plots[e].end());
  const std::size_t plots = SortedFinite(all).size();
  if (plots == 0) return {};
  const Bounds bounds = Widened(BoundsOf(all), 0.05);
  constexpr double top = 14, bottom = 290;
  const double right = kBoxLeft + std::clamp(kBoxRoom * static_cast<double>(shown), kLeastBoxes,
                                             kFigureWidth - kBoxMargin - kBoxLeft);
  const Panel panel{{0, 1, kBoxLeft, right}, {bounds.low, bounds.high, bottom, top}, "", trait.name};
  const double step = (right - kBoxLeft) / static_cast<double>(shown);
  const double names = NamesHeight(report.environments, step);
  Drawing drawing{right + kBoxMargin, bottom + 38 + names, {}};
  DrawYAxis(drawing, panel);
  AddLine(drawing, kBoxLeft, bottom, right, bottom, kAxisStyle);
  const std::size_t every = LabelStep(shown, right - kBoxLeft, names > 0 ? kLabelPitch : step);
  for (std::size_t e = 0; e < shown; ++e) {
    const double x = kBoxLeft + (static_cast<double>(e) + 0.5) * step;
    const std::vector<double> sorted = SortedFinite(trait.plots[e]);
    if (!sorted.empty()) DrawBox(drawing, sorted, x, std::min(44.0, step * 0.6), panel.y);
    if (e % every != 0) continue;
    DrawColumnName(drawing, x, bottom + 4, report.environments[e], names > 0);
    const std::string count = "n = " + std::to_string(sorted.size());
    if (TextWidth(count, kSmallText) + 2 <= step)
      AddText(drawing, x, bottom + names + 28, count, kSmallMiddle);
  }
  return MadeFigure(
      drawing, NameOf("boxes", t), trait.name + ": plots by environment",
      CountText(plots, "plot") + " in " + CountText(shown, "environment") +
          (shown < report.environments.size()
               ? " (the first of " + std::to_string(report.environments.size()) + ")"
               : std::string()) +
          ". Boxes: quartiles and median; whiskers: plots within 1.5 quartile ranges; dots: plots beyond.");
}

Figure QuantilePlots(const TrialReport& report, std::size_t t) {
  const TraitReport& trait = report.traits[t];
  SmallPanels panels = LayPanels(trait.quantiles.size(), 200, 170);
  Drawing drawing{panels.width, panels.height, {}};
  std::size_t residuals = 0, drawn = 0;
  for (std::size_t k = 0; k < panels.shown; ++k) {
    const QuantileSet& set = trait.quantiles[k];
    const std::size_t n = std::min(set.quantiles.size(), set.observed.size());
    std::vector<double> both = set.quantiles;
    both.insert(both.end(), set.observed.begin(), set.observed.end());
    const Bounds bounds = Widened(BoundsOf(both), 0.04);
    Panel panel = PanelAt(panels, k);
    panel.x.low = panel.y.low = bounds.low;
    panel.x.high = panel.y.high = bounds.high;
    DrawYAxis(drawing, panel, 4);
    DrawXAxis(drawing, panel, 4);
    DrawFrame(drawing, panel);
    AddLine(drawing, panel.x.from, panel.y.from, panel.x.to, panel.y.to,
            R"(stroke="#a00" stroke-width=".8" stroke-dasharray="4 3")");
    std::vector<Point> points;
    for (std::size_t i = 0; i < n; ++i) {
      if (std::isfinite(set.quantiles[i]) && std::isfinite(set.observed[i]))
        points.push_back({panel.x(set.quantiles[i]), panel.y(set.observed[i])});
    }
    residuals += points.size();
    drawn += points.empty() ? 0U : 1U;
    AddPath(drawing, DotPath(std::move(points), kExactSmall),
            R"(stroke="#1f4e79" stroke-width="2.6" stroke-linecap="round")");
    DrawPanelTitle(drawing, panel, set.where);
  }
  if (drawn == 0) return {};
  return MadeFigure(
      drawing, NameOf("quantiles", t), trait.name + ": residuals beside normal quantiles",
      "Residuals of the plots from their cell means (upwards) against the normal quantiles of their ranks, " +
          CountText(residuals, "plot") + PanelNote(panels, "environment") +
          ". On the dashed line residuals are normal.");
}

Figure Histograms(const TrialReport& report, std::size_t t) {
  const TraitReport& trait = report.traits[t];
  SmallPanels panels = LayPanels(trait.histograms.size(), 200, 130);
  Drawing drawing{panels.width, panels.height, {}};
  double values = 0;
  for (std::size_t k = 0; k < panels.shown; ++k) {
    const Histogram& histogram = trait.histograms[k];
    const std::size_t n = std::min(histogram.middles.size(), histogram.counts.size());
    if (n == 0) continue;
    const double width =
        n > 1 ? (histogram.middles[n - 1] - histogram.middles[0]) / static_cast<double>(n - 1) : 1;
    Panel panel = PanelAt(panels, k);
    panel.x.low = histogram.middles[0] - 0.5 * width;
    panel.x.high = histogram.middles[n - 1] + 0.5 * width;
    panel.y.high = std::max(1.0, BoundsOf(histogram.counts).high) * 1.06;
    panel.y.low = 0;
    DrawYAxis(drawing, panel, 3);
    for (std::size_t c = 0; c < n; ++c) {
      if (!(histogram.counts[c] > 0)) continue;
      const double from = panel.x(histogram.middles[c] - 0.5 * width),
                   to = panel.x(histogram.middles[c] + 0.5 * width);
      const double y = panel.y(histogram.counts[c]);
      AddRect(drawing, from, y, to - from, panel.y.from - y,
              R"(fill="#6baed6" stroke="#fff" stroke-width=".6")",
              host::Significant(histogram.middles[c]) + ": " + Number(histogram.counts[c]));
      values += histogram.counts[c];
    }
    DrawXAxis(drawing, panel, 4);
    DrawPanelTitle(drawing, panel, histogram.where);
  }
  if (values == 0) return {};
  return MadeFigure(drawing, NameOf("histograms", t), trait.name + ": distributions",
                    "Counts by class of " + host::Counted(std::llround(values), "value") +
                        PanelNote(panels, "table") +
                        "; the outermost classes also hold what lies beyond them.");
}

}  // namespace reports
