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

constexpr std::size_t kMostDrawnCells = 1800;  // more become an image
constexpr double kNamesLeft = 110, kTop = 14, kLegendRoom = 90;

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

constexpr int kShades = 64;
constexpr uint8_t kEmpty = kShades;

void DrawMeanImage(Drawing& drawing, const TrialReport& report, std::size_t t, const MeanTable& table,
                   double width, double height) {
  Raster raster{table.environments.size(), table.genotypes.size(), {}, {}};
  for (int k = 0; k < kShades; ++k) raster.palette.push_back(ShadeAt(Ramp::Blue, k / (kShades - 1.0)));
  raster.palette.push_back({255, 255, 255});
  for (const std::size_t g : table.genotypes) {
    for (const std::size_t e : table.environments) {
      const double mean = MeanAt(report, t, g, e);
      const double share = (mean - table.bounds.low) / (table.bounds.high - table.bounds.low);
      raster.pixels.push_back(std::isfinite(mean) ? static_cast<uint8_t>(std::clamp(
                                                        static_cast<int>(share * kShades), 0, kShades - 1))
                                                  : kEmpty);
    }
  }
  AddImage(drawing, kNamesLeft, kTop, width, height, Png(raster),
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
                   y = kTop + static_cast<double>(row) * cellHeight;
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

void DrawMeanLegend(Drawing& drawing, const Bounds& bounds, double x, const std::string& trait) {
  constexpr double height = 160, width = 14, top = kTop + 22;
  AddText(drawing, x, kTop + 8, Shortened(trait, kTextSize, kLegendRoom - 10), kBold);
  for (int k = 0; k < 32; ++k) {
    AddRect(drawing, x, top + height * (1 - (k + 1.0) / 32), width, height / 32 + 0.3,
            "fill=\"" + Hex(ShadeAt(Ramp::Blue, k / 31.0)) + "\"");
  }
  AddRect(drawing, x, top, width, height, R"(fill="none" stroke="#777" stroke-width=".7")");
  const std::vector<double> ticks = NiceTicks(bounds.low, bounds.high, 5);
  const std::vector<std::string> labels = TickLabels(ticks);
  const Scale y{bounds.low, bounds.high, top + height, top};
  for (std::size_t k = 0; k < ticks.size(); ++k) {
    AddLine(drawing, x + width, y(ticks[k]), x + width + 4, y(ticks[k]), kAxisStyle);
    AddText(drawing, x + width + 7, y(ticks[k]) + 3, labels[k], kSmall);
  }
}

// A correlation as a circle whose area is |r|: filled when positive, open when negative.
void DrawCorrelation(Drawing& drawing, double r, double x, double y, double cell, const std::string& hover) {
  const double radius = std::max(0.6, std::sqrt(std::min(1.0, std::abs(r))) * cell * 0.46);
  AddCircle(drawing, x, y, radius,
            r >= 0 ? R"(fill="#2171b5" stroke="#08285a" stroke-width=".6")"
                   : R"(fill="#fff" stroke="#b5400a" stroke-width="1.6")",
            hover);
}

constexpr std::size_t kMostNames = 60;

struct MatrixPlan {
  std::size_t shown = 0;
  double cell = 0, names = 0, size = 0;  // side of the square of cells, and of the whole panel
};
MatrixPlan PlanMatrix(const CorrelationMatrix& matrix, double room) {
  MatrixPlan plan;
  plan.shown = std::min(matrix.names.size(), kMostNames);
  for (std::size_t i = 0; i < plan.shown; ++i)
    plan.names = std::max(plan.names, TextWidth(matrix.names[i], kSmallText));
  plan.names = std::min(plan.names, 96.0) + 8;
  plan.cell = plan.shown > 0 ? std::min(36.0, (room - plan.names) / static_cast<double>(plan.shown)) : 0;
  plan.size = plan.names + plan.cell * static_cast<double>(plan.shown) + 30;
  return plan;
}

std::size_t DrawMatrix(Drawing& drawing, const CorrelationMatrix& matrix, const MatrixPlan& plan, double left,
                       double top) {
  const double x0 = left + plan.names, y0 = top + 20;
  AddText(drawing, left, top + 8, Shortened(matrix.title, kTextSize, std::max(plan.size, 180.0)), kBold);
  const std::size_t every = LabelStep(plan.shown, plan.cell * static_cast<double>(plan.shown), 9.5);
  const bool written = plan.cell >= 26;
  std::size_t known = 0;
  for (std::size_t i = 0; i < plan.shown; ++i) {
    const double y = y0 + (static_cast<double>(i) + 0.5) * plan.cell,
                 diagonal = x0 + (static_cast<double>(i) + 0.5) * plan.cell;
    if (i % every == 0) {
      const std::string name = Shortened(matrix.names[i], kSmallText, plan.names - 6);
      AddText(drawing, x0 - 4, y + 3, name, kSmallEnd);
      AddUpright(drawing, diagonal + 3, y0 + plan.cell * static_cast<double>(plan.shown) + 4, name,
                 kSmallEnd);
    }
    for (std::size_t j = 0; j < i; ++j) {
      const double r = matrix.values.at(i * matrix.names.size() + j),
                   x = x0 + (static_cast<double>(j) + 0.5) * plan.cell;
      if (!std::isfinite(r)) {
        AddText(drawing, x, y + 3, "\xC3\x97", R"(font-size="9" text-anchor="middle" fill="#999")");
        continue;
      }
      ++known;
      DrawCorrelation(drawing, r, x, y, plan.cell,
                      matrix.names[i] + ", " + matrix.names[j] + ": " + host::Fixed(r, 3));
      if (written)
        AddText(drawing, diagonal, y0 + (static_cast<double>(j) + 0.5) * plan.cell + 3, host::Fixed(r, 2),
                kSmallMiddle);
    }
  }
  const double side = plan.cell * static_cast<double>(plan.shown);
  AddRect(drawing, x0, y0, side, side, R"(fill="none" stroke="#999" stroke-width=".7")");
  AddLine(drawing, x0, y0, x0 + side, y0 + side, R"(stroke="#ccc" stroke-width=".7")");
  return known;
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
                  std::max(kTop + height + (upright ? std::min(longest, 110.0) : 12) + 12, 220.0),
                  {}};
  if (table.genotypes.size() * table.environments.size() > kMostDrawnCells)
    DrawMeanImage(drawing, report, t, table, width, height);
  else
    DrawMeanCells(drawing, report, t, table, cellWidth, cellHeight);
  AddRect(drawing, kNamesLeft, kTop, width, height, R"(fill="none" stroke="#777" stroke-width=".7")");
  const std::size_t everyRow = LabelStep(table.genotypes.size(), height, 9.5),
                    everyColumn = LabelStep(table.environments.size(), width, upright ? 10.0 : cellWidth);
  for (std::size_t row = 0; row < table.genotypes.size(); row += everyRow) {
    AddText(drawing, kNamesLeft - 5, kTop + (static_cast<double>(row) + 0.5) * height / rows + 3,
            Shortened(report.genotypes[table.genotypes[row]], kSmallText, kNamesLeft - 8), kSmallEnd);
  }
  for (std::size_t column = 0; column < table.environments.size(); column += everyColumn) {
    const double x = kNamesLeft + (static_cast<double>(column) + 0.5) * cellWidth;
    const std::string name =
        Shortened(report.environments[table.environments[column]], kSmallText, upright ? 110 : cellWidth);
    if (upright)
      AddUpright(drawing, x + 3, kTop + height + 5, name, kSmallEnd);
    else
      AddText(drawing, x, kTop + height + 13, name, kSmallMiddle);
  }
  DrawMeanLegend(drawing, table.bounds, kNamesLeft + width + 22, trait.name);
  const std::size_t empty = table.genotypes.size() * table.environments.size() - table.cells;
  return MadeFigure(drawing, "means_" + std::to_string(t + 1),
                    trait.name + ": means of genotypes in environments",
                    host::Counted(static_cast<int64_t>(table.genotypes.size()), "genotype") + " (rows) in " +
                        host::Counted(static_cast<int64_t>(table.environments.size()), "environment") +
                        " (columns), both sorted by their means, highest first; " +
                        (empty > 0 ? host::Counted(static_cast<int64_t>(empty), "cell") + " without a plot."
                                   : std::string("no cell is empty.")));
}

Figure CorrelationFigure(const std::vector<CorrelationMatrix>& matrices, const std::string& name,
                         const std::string& title) {
  Drawing drawing{0, 0, {}};
  std::size_t known = 0, drawn = 0, all = 0;
  double left = 8, top = 6, rowHeight = 0;
  bool cut = false;
  for (const CorrelationMatrix& matrix : matrices) {
    if (matrix.names.size() < 2 || matrix.values.size() < matrix.names.size() * matrix.names.size()) continue;
    if (++all > kMostSmallPanels) continue;
    const MatrixPlan plan = PlanMatrix(matrix, kFigureWidth - 60);
    cut = cut || plan.shown < matrix.names.size();
    const double width = std::max(plan.size, 190.0);
    if (left > 8 && left + width > kFigureWidth) {
      left = 8;
      top += rowHeight;
      rowHeight = 0;
    }
    known += DrawMatrix(drawing, matrix, plan, left, top);
    ++drawn;
    left += width;
    rowHeight = std::max(rowHeight, plan.size + 2);
    drawing.width = std::max(drawing.width, left);
  }
  if (known == 0) return {};
  drawing.height = top + rowHeight;
  std::string caption =
      host::Counted(static_cast<int64_t>(known), "correlation") + " of cell means" +
      (drawn > 1 ? " in " + std::to_string(drawn) + " tables" : std::string()) +
      ". The area of a circle is the size of the coefficient: filled positive, open negative.";
  if (drawn < all)
    caption += " The first " + std::to_string(drawn) + " of " + std::to_string(all) + " tables are drawn.";
  if (cut) caption += " The first " + std::to_string(kMostNames) + " rows are drawn.";
  return MadeFigure(drawing, name, title, caption);
}

}  // namespace reports
