#include "host/reports/small_panels.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/reports/figures.h"
#include "host/text.h"

namespace reports {

SmallPanels LayPanels(std::size_t count, double width, double height) {
  SmallPanels panels;
  panels.all = count;
  panels.shown = std::min(count, kMostSmallPanels);
  panels.perRow = std::clamp<std::size_t>(panels.shown, 1, static_cast<std::size_t>(kFigureWidth / width));
  const std::size_t rows = (panels.shown + panels.perRow - 1) / panels.perRow;
  if (rows > 0) panels.perRow = (panels.shown + rows - 1) / rows;
  panels.cellWidth =
      std::min(kFigureWidth / static_cast<double>(std::max<std::size_t>(1, panels.perRow)), 330.0);
  panels.cellHeight = panels.perRow <= 3 ? height * 1.4 : height;
  panels.width = static_cast<double>(panels.perRow) * panels.cellWidth + 4;
  panels.height = static_cast<double>(rows) * panels.cellHeight + 6;
  return panels;
}

Panel PanelAt(const SmallPanels& panels, std::size_t k) {
  const std::size_t row = k / panels.perRow;
  const double left = static_cast<double>(k % panels.perRow) * panels.cellWidth;
  const double top = static_cast<double>(row) * panels.cellHeight;
  return {{0, 1, left + 44, left + panels.cellWidth - 12},
          {0, 1, top + panels.cellHeight - 24, top + 22},
          "",
          ""};
}

void DrawPanelTitle(Drawing& drawing, const Panel& panel, const std::string& title) {
  AddText(drawing, (panel.x.from + panel.x.to) / 2, panel.y.to - 7,
          Shortened(title, kTextSize, panel.x.to - panel.x.from), kBoldMiddle);
}

std::string PanelNote(const SmallPanels& panels, const std::string& noun) {
  if (panels.shown == panels.all) return " in " + CountText(panels.all, noun);
  return " in the first " + std::to_string(panels.shown) + " of " + CountText(panels.all, noun);
}

}  // namespace reports
