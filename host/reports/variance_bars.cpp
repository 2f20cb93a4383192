#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/axes.h"
#include "host/reports/figures.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr std::size_t kMostBars = 60;
constexpr double kPitch = 22, kBarsTop = 34, kWidestName = 190;

// The components of one analysis, by VarianceParts::sources; 0 where it has none.
struct VarianceBar {
  std::string where;
  std::vector<double> components;
  double sum = 0;
};
struct VarianceParts {
  std::vector<std::string> sources;  // in order of first appearance
  std::vector<VarianceBar> bars;
};

std::size_t SourceNumber(std::vector<std::string>& sources, const std::string& source) {
  const auto found = std::find(sources.begin(), sources.end(), source);
  const auto number = static_cast<std::size_t>(found - sources.begin());
  if (found == sources.end()) sources.push_back(source);
  return number;
}

// The model is the sum of other components, and the total has none.
VarianceParts PartsOf(const TraitReport& trait) {
  VarianceParts parts;
  for (const AnovaTable& table : trait.anova) {
    VarianceBar bar{table.where, {}, 0};
    for (const AnovaRow& row : table.rows) {
      if (row.source == "Model" || row.source == "Total" || !std::isfinite(row.variance)) continue;
      const std::size_t source = SourceNumber(parts.sources, row.source);
      bar.components.resize(std::max(bar.components.size(), source + 1));
      bar.components[source] = std::max(0.0, row.variance);
      bar.sum += bar.components[source];
    }
    if (bar.sum > 0) parts.bars.push_back(std::move(bar));
  }
  return parts;
}

std::string Fill(std::size_t source, const VarianceParts& parts) {
  return "fill=\"" + Hex(ClassShade(source, parts.sources.size())) + "\" stroke=\"#555\" stroke-width=\".5\"";
}

void DrawSources(Drawing& drawing, const VarianceParts& parts, double x) {
  for (std::size_t s = 0; s < parts.sources.size(); ++s) {
    AddRect(drawing, x, 8, 12, 12, Fill(s, parts));
    AddText(drawing, x + 17, 18, parts.sources[s]);
    x += 34 + TextWidth(parts.sources[s], kTextSize);
  }
}

void DrawVarianceBar(Drawing& drawing, const VarianceParts& parts, const VarianceBar& bar, const Scale& x,
                     double y) {
  double at = 0;
  for (std::size_t s = 0; s < bar.components.size(); ++s) {
    const double from = x(100 * at / bar.sum), to = x(100 * (at + bar.components[s]) / bar.sum);
    at += bar.components[s];
    if (bar.components[s] > 0) {
      AddRect(drawing, from, y, to - from, kPitch - 5, Fill(s, parts),
              parts.sources[s] + ": " + host::Significant(bar.components[s]));
    }
  }
  AddText(drawing, x.from - 6, y + 13, Shortened(bar.where, kTextSize, kWidestName), kEnd);
  AddText(drawing, x.to + 8, y + 13, host::Significant(bar.sum));
}

}  // namespace

Figure VarianceBars(const TrialReport& report, std::size_t t) {
  const TraitReport& trait = report.traits[t];
  VarianceParts parts = PartsOf(trait);
  if (parts.bars.empty()) return {};
  const std::size_t all = parts.bars.size();
  parts.bars.resize(std::min(all, kMostBars));
  double names = 60;
  for (const VarianceBar& bar : parts.bars)
    names = std::max(names, std::min(kWidestName, TextWidth(bar.where, kTextSize)));
  const double bottom = kBarsTop + kPitch * static_cast<double>(parts.bars.size()) + 2;
  const Panel panel{
      {0, 100, names + 14, kFigureWidth - 90}, {0, 1, bottom, kBarsTop}, "share of the variance, %", ""};
  Drawing drawing{kFigureWidth, bottom + 38, {}};
  DrawSources(drawing, parts, panel.x.from);
  AddText(drawing, panel.x.to + 8, 18, "total");
  double y = kBarsTop;
  for (const VarianceBar& bar : parts.bars) {
    DrawVarianceBar(drawing, parts, bar, panel.x, y);
    y += kPitch;
  }
  DrawXAxis(drawing, panel, 10);
  const std::string count =
      parts.bars.size() == 1 ? "1 analysis" : std::to_string(parts.bars.size()) + " analyses";
  return MadeFigure(drawing, "variance_" + std::to_string(t + 1), trait.name + ": components of variance",
                    "Estimated components of variance of " + count +
                        (all > kMostBars ? " (the first of " + std::to_string(all) + ")" : std::string()) +
                        ", as shares of their sum; estimates below 0 count as 0.");
}

}  // namespace reports
