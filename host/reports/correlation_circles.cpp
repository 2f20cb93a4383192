#include <algorithm>
#include <cmath>

#include "host/reports/axes.h"
#include "host/reports/figures.h"
#include "host/reports/small_panels.h"
#include "host/text.h"

namespace reports {
namespace {

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

// Circles below the diagonal, figures above it where they fit; returns how many coefficients are known.
std::size_t DrawMatrix(Drawing& drawing, const CorrelationMatrix& matrix, const MatrixPlan& plan, double left,
                       double top) {
  const double x0 = left + plan.names, y0 = top + 20;
  AddText(drawing, left, top + 8, Shortened(matrix.title, kTextSize, std::max(plan.size, 180.0)), kBold);
  const double side = plan.cell * static_cast<double>(plan.shown);
  const std::size_t every = LabelStep(plan.shown, side, 9.5);
  const bool written = plan.cell >= 26;
  std::size_t known = 0;
  for (std::size_t i = 0; i < plan.shown; ++i) {
    const double y = y0 + (static_cast<double>(i) + 0.5) * plan.cell,
                 diagonal = x0 + (static_cast<double>(i) + 0.5) * plan.cell;
    if (i % every == 0) {
      const std::string name = Shortened(matrix.names[i], kSmallText, plan.names - 6);
      AddText(drawing, x0 - 4, y + 3, name, kSmallEnd);
      AddUpright(drawing, diagonal + 3, y0 + side + 4, name, kSmallEnd);
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
  AddRect(drawing, x0, y0, side, side, R"(fill="none" stroke="#999" stroke-width=".7")");
  AddLine(drawing, x0, y0, x0 + side, y0 + side, R"(stroke="#ccc" stroke-width=".7")");
  return known;
}

}  // namespace

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
      CountText(known, "correlation") + " of cell means" +
      (drawn > 1 ? " in " + std::to_string(drawn) + " tables" : std::string()) +
      ". The area of a circle is the size of the coefficient: filled positive, open negative.";
  if (drawn < all)
    caption += " The first " + std::to_string(drawn) + " of " + std::to_string(all) + " tables are drawn.";
  if (cut) caption += " The first " + std::to_string(kMostNames) + " rows are drawn.";
  return MadeFigure(drawing, name, title, caption);
}

}  // namespace reports
