#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/axes.h"
#include "host/reports/figures.h"
#include "host/reports/shades.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr double kCurveLeft = 62, kCurveRight = kFigureWidth - 110;
constexpr std::string_view kCurve = R"(fill="none" stroke="#1f4e79" stroke-width="1.8")";
constexpr std::string_view kSecondCurve =
    R"(fill="none" stroke="#c7761a" stroke-width="1.6" stroke-dasharray="5 3")";

// Left edges of the columns of a step chart: half way between the cuts.
std::vector<double> CutEdges(const std::vector<SweepStep>& sweep) {
  std::vector<double> edges;
  const double first = sweep.size() > 1 ? (sweep[1].lod - sweep[0].lod) / 2 : 0.5;
  edges.push_back(sweep.front().lod - first);
  for (std::size_t k = 1; k < sweep.size(); ++k) edges.push_back((sweep[k - 1].lod + sweep[k].lod) / 2);
  const double last = sweep.size() > 1 ? (sweep.back().lod - sweep[sweep.size() - 2].lod) / 2 : 0.5;
  edges.push_back(sweep.back().lod + last);
  return edges;
}

void DrawGroupCounts(Drawing& drawing, const MapReport& report, const Panel& panel) {
  std::string groups;
  for (const SweepStep& step : report.sweep) {
    const Point at{panel.x(step.lod), panel.y(static_cast<double>(step.sizes.size()))};
    groups += groups.empty() ? MoveTo(at.x, at.y) : LineTo(at.x, at.y);
    AddCircle(drawing, at.x, at.y, 2.6, R"(fill="#1f4e79")",
              "LOD " + Number(step.lod) + ": " + CountText(step.sizes.size(), "group"));
  }
  AddPath(drawing, groups, kCurve);
}

void DrawGroupSizes(Drawing& drawing, const MapReport& report, const Panel& panel) {
  const std::vector<double> edges = CutEdges(report.sweep);
  for (std::size_t k = 0; k < report.sweep.size(); ++k) {
    const double x = panel.x(edges[k]) + 0.4, width = std::max(0.4, panel.x(edges[k + 1]) - x - 0.4);
    double sum = 0;
    std::size_t g = 0;
    const std::vector<int64_t>& sizes = report.sweep[k].sizes;
    for (; g < sizes.size(); ++g) {
      const double bottom = panel.y(sum), top = panel.y(sum + static_cast<double>(sizes[g]));
      if (bottom - top < 1) break;  // the rest are drawn as one
      AddRect(drawing, x, top, width, bottom - top,
              g % 2 == 0 ? R"(fill="#5b8db8" stroke="#fff" stroke-width=".5")"
                         : R"(fill="#a9c6de" stroke="#fff" stroke-width=".5")");
      sum += static_cast<double>(sizes[g]);
    }
    double rest = 0;
    for (; g < sizes.size(); ++g) rest += static_cast<double>(sizes[g]);
    if (rest > 0) {
      AddRect(drawing, x, panel.y(sum + rest), width, panel.y(sum) - panel.y(sum + rest),
              R"(fill="#d9d9d9")");
    }
  }
}

void DrawCut(Drawing& drawing, const MapReport& report, const Panel& panel, bool named) {
  if (!(report.lodCut >= panel.x.low && report.lodCut <= panel.x.high)) return;
  const double x = panel.x(report.lodCut);
  AddLine(drawing, x, panel.y.from, x, panel.y.to, R"(stroke="#a00" stroke-dasharray="5 3")");
  if (named) AddText(drawing, x + 4, panel.y.to + 9, "cut used: " + Number(report.lodCut), kSmall);
}

struct LineValues {
  std::string title, unit;
  std::vector<double> values;  // by line, kNone without one
};

// Mean and standard deviation of what is there.
struct Moments {
  double count = 0, mean = 0, deviation = 0;
};
Moments MomentsOf(const std::vector<double>& values) {
  Moments moments;
  double squares = 0;
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    ++moments.count;
    const double off = value - moments.mean;
    moments.mean += off / moments.count;
    squares += off * (value - moments.mean);
  }
  if (moments.count > 1) moments.deviation = std::sqrt(squares / (moments.count - 1));
  return moments;
}

// Lines more than three standard deviations above the mean, highest first; at most a dozen are named.
std::vector<std::size_t> Outliers(const std::vector<double>& values, const Moments& moments) {
  std::vector<std::size_t> out;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] > moments.mean + 3 * moments.deviation) out.push_back(i);
  }
  std::stable_sort(out.begin(), out.end(),
                   [&](std::size_t a, std::size_t b) { return values[a] > values[b]; });
  if (out.size() > 12) out.resize(12);
  return out;
}

void DrawLinePanel(Drawing& drawing, const MapReport& report, const Panel& panel, const LineValues& chosen,
                   const Moments& moments) {
  DrawYAxis(drawing, panel, 4);
  const double step = (panel.x.to - panel.x.from) / static_cast<double>(chosen.values.size());
  const bool hovers = chosen.values.size() <= 600;
  std::string bars;
  for (std::size_t i = 0; i < chosen.values.size(); ++i) {
    if (!std::isfinite(chosen.values[i])) continue;
    const double x = panel.x.from + (static_cast<double>(i) + 0.5) * step, y = panel.y(chosen.values[i]);
    if (hovers) {
      AddRect(drawing, x - step * 0.4, y, step * 0.8, panel.y.from - y, R"(fill="#5b8db8")",
              report.lines[i].name + ": " + host::Significant(chosen.values[i]) + chosen.unit);
    } else {
      bars += MoveTo(x, panel.y.from) + "V" + Number(y);
    }
  }
  AddPath(drawing, bars, "stroke=\"#5b8db8\" stroke-width=\"" + Number(std::max(0.3, step)) + "\"");
  const double mean = panel.y(moments.mean);
  AddLine(drawing, panel.x.from, mean, panel.x.to, mean,
          R"(stroke="#a00" stroke-width=".8" stroke-dasharray="5 3")");
  AddText(drawing, panel.x.to + 5, mean + 3, "mean " + host::Fixed(moments.mean, 1) + chosen.unit, kSmall);
  std::vector<Bounds> taken;  // of names already written
  for (const std::size_t i : Outliers(chosen.values, moments)) {
    const std::string name = Shortened(report.lines[i].name, kSmallText, 90);
    const double half = TextWidth(name, kSmallText) / 2;
    const double x = std::clamp(panel.x.from + (static_cast<double>(i) + 0.5) * step, panel.x.from + half,
                                panel.x.to - half);
    const auto meets = [&](const Bounds& other) { return x - half < other.high && x + half > other.low; };
    if (std::any_of(taken.begin(), taken.end(), meets)) continue;
    taken.push_back({x - half, x + half});
    AddText(drawing, x, panel.y(chosen.values[i]) - 3, name, kSmallMiddle);
  }
  AddLine(drawing, panel.x.from, panel.y.from, panel.x.to, panel.y.from, kAxisStyle);
}

}  // namespace

Figure SweepFigure(const MapReport& report) {
  if (report.sweep.empty()) return {};
  const std::vector<double> edges = CutEdges(report.sweep);
  double most = 1, markers = 1, single = 0;
  for (const SweepStep& step : report.sweep) {
    most = std::max(most, static_cast<double>(step.sizes.size()));
    single = std::max(single, static_cast<double>(step.single));
    double sum = static_cast<double>(step.single);
    for (const int64_t size : step.sizes) sum += static_cast<double>(size);
    markers = std::max(markers, sum);
  }
  const Scale x{edges.front(), edges.back(), kCurveLeft, kCurveRight};
  const Panel counts{x, {0, most * 1.08, 190, 14}, "", "groups"};
  const Panel sizes{x, {0, markers * 1.04, 430, 222}, "LOD cut", "markers, by group"};
  Drawing drawing{kFigureWidth, 468, {}};
  DrawYAxis(drawing, counts);
  AddLine(drawing, kCurveLeft, counts.y.from, kCurveRight, counts.y.from, kAxisStyle);
  DrawGroupCounts(drawing, report, counts);
  DrawCut(drawing, report, counts, true);
  DrawYAxis(drawing, sizes);
  DrawGroupSizes(drawing, report, sizes);
  std::string line;
  for (const SweepStep& step : report.sweep) {
    const double y = sizes.y(static_cast<double>(step.single));
    line += line.empty() ? MoveTo(x(step.lod), y) : LineTo(x(step.lod), y);
  }
  if (single > 0) {
    AddPath(drawing, line, kSecondCurve);
    AddText(drawing, kCurveRight + 6, sizes.y(static_cast<double>(report.sweep.back().single)) + 3,
            "single markers", kSmall);
  }
  DrawXAxis(drawing, sizes, 12);
  DrawCut(drawing, report, sizes, false);
  return MadeFigure(
      drawing, "lod_sweep", "Groups against the LOD cut",
      "Number of groups of two markers or more (above) and their sizes (below, largest at the bottom) at " +
          CountText(report.sweep.size(), "LOD cut") +
          (single > 0 ? "; dashed: markers linked to no other." : "."));
}

Figure LineFigure(const MapReport& report) {
  LineValues crossovers{"crossovers", "", {}}, missing{"missing, %", " %", {}};
  for (const ReportLine& line : report.lines) {
    crossovers.values.push_back(line.crossovers);
    missing.values.push_back(100 * line.missing);
  }
  const Moments first = MomentsOf(crossovers.values), second = MomentsOf(missing.values);
  Drawing drawing{kFigureWidth, 0, {}};
  std::string caption;
  double top = 22;
  for (const auto& [chosen, moments] : {std::pair{&crossovers, &first}, std::pair{&missing, &second}}) {
    if (moments->count == 0) continue;
    const double highest = std::max(1.0, BoundsOf(chosen->values).high) * 1.08;
    DrawLinePanel(drawing, report,
                  {{0, 1, kCurveLeft, kCurveRight}, {0, highest, top + 150, top}, "", chosen->title}, *chosen,
                  *moments);
    caption += (caption.empty() ? "" : " ") +
               std::string(chosen == &crossovers ? "Crossovers" : "Missing genotypes, %,") + " of " +
               CountText(static_cast<std::size_t>(moments->count), "line") + ": mean " +
               host::Fixed(moments->mean, 1) + ", standard deviation " + host::Fixed(moments->deviation, 1) +
               ".";
    top += 185;
  }
  if (caption.empty()) return {};
  AddText(drawing, (kCurveLeft + kCurveRight) / 2, top - 18, "lines in file order", kMiddle);
  drawing.height = top - 6;
  return MadeFigure(
      drawing, "lines",
      first.count > 0 ? "Crossovers and missing genotypes per line" : "Missing genotypes per line",
      caption + " Lines more than three standard deviations above the mean are named.");
}

}  // namespace reports
