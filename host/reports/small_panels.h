#pragma once

// Many small panels of one size in rows, for figures with a panel an environment.

#include <cstddef>
#include <string>
#include <vector>

#include "host/reports/axes.h"

namespace reports {

inline constexpr double kLabelPitch = 11;  // pixels that an upright or stacked small label needs

struct SmallPanels {
  std::size_t all = 0, shown = 0, perRow = 1;
  double cellWidth = 0, cellHeight = 0;  // pixels
  double width = 0, height = 0;          // of the whole figure
};
// Panels of at least `width` and of exactly `height` pixels, margins included; at most `kMostPanels`.
inline constexpr std::size_t kMostSmallPanels = 40;
SmallPanels LayPanels(std::size_t count, double width, double height);
// Panel k with its pixels set and its data ranges to be set.
Panel PanelAt(const SmallPanels& panels, std::size_t k);
void DrawPanelTitle(Drawing& drawing, const Panel& panel, const std::string& title);
// " in 3 environments", " in the first 40 of 90 environments".
std::string PanelNote(const SmallPanels& panels, const std::string& noun);
}  // namespace reports
