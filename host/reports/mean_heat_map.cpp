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

constexpr double kRowNamePitch = 9.5;          // pixels
constexpr std::size_t kMostDrawnCells = 1800;  // more become an image
constexpr double kNamesLeft = 110, kGridTop = 14, kLegendRoom = 90;

struct MeanTable {
  std::vector<std::size_t> genotypes, environments;  // in drawing order: highest mean first
  Bounds bounds{};
  std::size_t cells = 0;
};

double MeanAt(const TrialReport& report, std::size_t t, std::size_t g, std::size_t e) {
  const std::size_t place = g * report.environments.size() + e;
  return place < report.traits[t].means.size() ? report.traits[t].means[place] : kNone;
}

// Rows (or columns) with a value, highest mean first.
std::vector<std::size_t> ByMean(std::vector<double> sums, const std::vector<std::size_t>& counts) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < sums.size(); ++i) {
    if (counts[i] == 0) continue;
    sums[i] /= static_cast<double>(counts[i]);
    order.push_back(i);
  }
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return sums[a] > sums[b]; });
  return order;
}

MeanTable PlanMeans(const TrialReport& report, std::size_t t) {
  const std::size_t rows = report.genotypes.size(), columns = report.environments.size();
  std::vector<double> rowSums(rows), columnSums(columns);
  std::vector<std::size_t> rowCounts(rows), columnCounts(columns);
  for (std::size_t g = 0; g < rows; ++g) {
    for (std::size_t e = 0; e < columns; ++e) {
      const double mean = MeanAt(report, t, g, e);
      if (!std::isfinite(mean)) continue;
      rowSums[g] += mean;
      columnSums[e] += mean;
      ++rowCounts[g];
      ++columnCounts[e];
    }
  }
  MeanTable table;
  table.genotypes = ByMean(std::move(rowSums), rowCounts);
  table.environments = ByMean(std::move(columnSums), columnCounts);
  table.cells = std::accumulate(rowCounts.begin(), rowCounts.end(), std::size_t{0});
  table.bounds = BoundsOf(report.traits[t].means);
  return table;
}

constexpr int kGridShades = 64;
constexpr uint8_t kGridEmpty = kGridShades;

void DrawMeanImage(Drawing& drawing, const TrialReport& report, std::size_t t, const MeanTable& table,
                   double width, double height) {
  Raster raster{table.environments.size(), table.genotypes.size(), {}, {}};
  for (int k = 0; k < kGridShades; ++k)
    raster.palette.push_back(ShadeAt(Ramp::Blue, k / (kGridShades - 1.0)));
  raster.palette.push_back({255, 255, 255});
  for (const std::size_t g : table.genotypes) {
    for (const std::size_t e : table.environments) {
      const double mean = MeanAt(report, t, g, e);
      const double share = (mean - table.bounds.low) / (table.bounds.high - table.bounds.low);
      raster.pixels.push_back(
          std::isfinite(mean)
              ? static_cast<uint8_t>(std::clamp(static_cast<int>(share * kGridShades), 0, kGridShades - 1))
              : kGridEmpty);
    }
  }
  AddImage(drawing, kNamesLeft, kGridTop, width, height, Png(raster),
           "means of genotypes (rows) in environments");
}

void DrawMeanCells(Drawing& drawing, const TrialReport& report, std::size_t t, const MeanTable& table,
                   double cellWidth, double cellHeight) {
  const bool written = cellWidth >= 34 && cellHeight >= 12;
  const int decimals = table.bounds.high - table.bounds.low >= 50  ? 0
                       : table.bounds.high - table.bounds.low >= 2 ? 1
                                                                   : 2;
  for (std::size_t row = 0; row < table.genotypes.size(); ++row) {
    for (std::size_t column = 0; column < table.environments.size(); ++column) {
      const std::size_t g = table.genotypes[row], e = table.environments[column];
      const double mean = MeanAt(report, t, g, e), x = kNamesLeft + static_cast<double>(column) * cellWidth,
                   y = kGridTop + static_cast<double>(row) * cellHeight;
      if (!std::isfinite(mean)) {
        AddText(drawing, x + cellWidth / 2, y + cellHeight / 2 + 3, "\xC3\x97",
                R"(text-anchor="middle" fill="#999")");
        continue;
      }
      const double share = (mean - table.bounds.low) / (table.bounds.high - table.bounds.low);
      AddRect(drawing, x, y, cellWidth, cellHeight,
              "fill=\"" + Hex(ShadeAt(Ramp::Blue, share)) + "\" stroke=\"#fff\" stroke-width=\".5\"",
              report.genotypes[g] + ", " + report.environments[e] + ": " + host::Significant(mean));
      if (written) {
        AddText(drawing, x + cellWidth / 2, y + cellHeight / 2 + 3, host::Fixed(mean, decimals),
                share > 0.55 ? R"(font-size="9" text-anchor="middle" fill="#fff" pointer-events="none")"
                             : R"(font-size="9" text-anchor="middle" pointer-events="none")");
      }
    }
  }
}

// Names of the rows on the left and of the columns below, thinned where they do not fit.
void DrawMeanNames(Drawing& drawing, const TrialReport& report, const MeanTable& table, double width,
                   double height, bool upright) {
  const double rows = static_cast<double>(table.genotypes.size()),
               columns = static_cast<double>(table.environments.size());
  const double cellWidth = width / columns;
  const std::size_t everyRow = LabelStep(table.genotypes.size(), height, kRowNamePitch),
                    everyColumn = LabelStep(table.environments.size(), width, upright ? 10.0 : cellWidth);
  for (std::size_t row = 0; row < table.genotypes.size(); row += everyRow) {
    AddText(drawing, kNamesLeft - 5, kGridTop + (static_cast<double>(row) + 0.5) * height / rows + 3,
            Shortened(report.genotypes[table.genotypes[row]], kSmallText, kNamesLeft - 8), kSmallEnd);
  }
  for (std::size_t column = 0; column < table.environments.size(); column += everyColumn) {
    const double x = kNamesLeft + (static_cast<double>(column) + 0.5) * cellWidth;
    const std::string name =
        Shortened(report.environments[table.environments[column]], kSmallText, upright ? 110 : cellWidth);
    if (upright)
      AddUpright(drawing, x + 3, kGridTop + height + 5, name, kSmallEnd);
    else
      AddText(drawing, x, kGridTop + height + 13, name, kSmallMiddle);
  }
}

}  // namespace

Figure MeanHeatMap(const TrialReport& report, std::size_t t) {
  const TraitReport& trait = report.traits[t];
  const MeanTable table = PlanMeans(report, t);
  if (table.cells == 0) return {};
  const auto rows = static_cast<double>(table.genotypes.size()),
             columns = static_cast<double>(table.environments.size());
  const double cellWidth = std::min(64.0, (kFigureWidth - kNamesLeft - kLegendRoom) / columns);
  const double cellHeight = std::clamp(900 / rows, 1.0, 18.0);
  const double width = cellWidth * columns, height = std::min(cellHeight * rows, 1400.0);
  double longest = 0;
  for (const std::size_t e : table.environments)
    longest = std::max(longest, TextWidth(report.environments[e], kSmallText));
  const bool upright = longest + 4 > cellWidth;
  Drawing drawing{std::max(kNamesLeft + width + kLegendRoom, 420.0),
                  std::max(kGridTop + height + (upright ? std::min(longest, 110.0) : 12) + 12, 220.0),
                  {}};
  if (table.genotypes.size() * table.environments.size() > kMostDrawnCells)
    DrawMeanImage(drawing, report, t, table, width, height);
  else
    DrawMeanCells(drawing, report, t, table, cellWidth, cellHeight);
  AddRect(drawing, kNamesLeft, kGridTop, width, height, R"(fill="none" stroke="#777" stroke-width=".7")");
  DrawMeanNames(drawing, report, table, width, height, upright);
  const double legend = kNamesLeft + width + 22;
  AddText(drawing, legend, kGridTop + 8, Shortened(trait.name, kTextSize, kLegendRoom - 10), kBold);
  DrawRampScale(drawing, legend, kGridTop + 22, 160, {Ramp::Blue, table.bounds, false});
  const std::size_t empty = table.genotypes.size() * table.environments.size() - table.cells;
  return MadeFigure(
      drawing, "means_" + std::to_string(t + 1), trait.name + ": means of genotypes in environments",
      CountText(table.genotypes.size(), "genotype") + " (rows) in " +
          CountText(table.environments.size(), "environment") +
          " (columns), both sorted by their means, highest first; " +
          (empty > 0 ? CountText(empty, "cell") + " without a plot." : std::string("no cell is empty.")) +
          (LabelStep(table.genotypes.size(), height, kRowNamePitch) > 1 ? " Names where there is room."
                                                                        : ""));
}

}  // namespace reports
