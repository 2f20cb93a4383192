#pragma once

// How maps are laid along a figure: places without the wide gaps, bars with their labels, groups in a row.

#include <string>
#include <vector>

#include "host/reports/axes.h"
#include "host/reports/report_data.h"

namespace reports {

// Markers further apart than this show no linkage: centimorgans.
inline constexpr double kUnlinked = 999;

// The markers of one map that have a place, with gaps drawn short.
struct DrawnMap {
  std::vector<double> at;          // centimorgans as drawn, ascending from 0
  std::vector<std::size_t> which;  // of the positions given
  std::vector<std::size_t> gaps;   // k: a gap lies between at[k-1] and at[k]
  double length = 0;
};
DrawnMap DrawnAlong(const std::vector<double>& positions);
DrawnMap DrawnGroup(const ReportGroup& group);

// A vertical bar with a tick a marker. Above `kExactTicks` markers, the rows of pixels that
// hold a marker are filled.
inline constexpr std::size_t kExactTicks = 300;
struct Bar {
  double x = 0, width = 12;  // left edge
  Scale y;
};
void DrawBar(Drawing& drawing, const Bar& bar, const DrawnMap& map);

// An axis of centimorgans from 0, left of x.
void DrawMapScale(Drawing& drawing, double x, const Scale& y);

// Names beside a bar, led to their ticks.
struct SideLabel {
  double y;  // of the tick
  std::string text;
};
inline constexpr double kLabelGap = 9;
// Those of the labels (ascending in y) that get a line each on a side of `height`: all, or as many as stand
// apart as they are.
std::vector<SideLabel> FittingLabels(std::vector<SideLabel> labels, double height);
// Labels left of (`left`) or right of x; `width` cuts names.
void DrawSideLabels(Drawing& drawing, const std::vector<SideLabel>& labels, double x, bool left, Bounds range,
                    double width);

// All groups one behind the other along x.
struct GenomeAxis {
  std::vector<DrawnMap> maps;
  std::vector<Scale> scales;  // a group each
};
GenomeAxis LayGroups(const MapReport& report, double from, double to);
// Bands behind the groups, and their names below; returns the height that the names take.
void DrawGenomeBands(Drawing& drawing, const GenomeAxis& axis, double top, double bottom);
double DrawGenomeNames(Drawing& drawing, const MapReport& report, const GenomeAxis& axis, double bottom);

std::size_t PlacedMarkers(const MapReport& report);

}  // namespace reports
