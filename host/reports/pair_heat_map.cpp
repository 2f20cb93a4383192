#include <algorithm>
#include <cmath>
#include <utility>

#include "host/marker_data.h"
#include "host/reports/axes.h"
#include "host/reports/figures.h"
#include "host/reports/map_layout.h"
#include "host/reports/shades.h"
#include "host/text.h"

namespace reports {
namespace {

constexpr std::size_t kMostPixels = 1000;  // a side; more markers share pixels
constexpr std::size_t kLeastPixels = 500;  // fewer are drawn several pixels wide
// Of the markers that share a pixel so many are looked at on each side, evenly spread, so that tables of any size
// take the same time.
constexpr std::size_t kSampled = 6;
constexpr int kShades = 24;  // of each half
constexpr uint8_t kEmpty = 2 * kShades;
constexpr double kLargest = 660, kSmallest = 220, kSquareLeft = 100,
                 kSquareTop = 16;  // of the square, pixels

struct PairImage {
  Raster raster;
  std::size_t bin = 1;  // markers a pixel
  double highestLod = 1;
};

// The file's running numbers in map order.
std::vector<int32_t> MapOrder(const MapReport& report) {
  std::vector<int32_t> order;
  for (const ReportGroup& group : report.groups) {
    for (const ReportMarker& marker : group.markers) order.push_back(marker.number);
  }
  return order;
}

std::vector<int32_t> Sampled(const std::vector<int32_t>& order, std::size_t first, std::size_t bin) {
  const std::size_t size = std::min(bin, order.size() - first), taken = std::min(size, kSampled);
  std::vector<int32_t> markers;
  for (std::size_t k = 0; k < taken; ++k) {
    const int32_t marker = order[first + k * size / taken];
    if (marker > 0) markers.push_back(marker);
  }
  return markers;
}

// Mean over the pairs of two sets, with frequencies folded to the lower half; kNone without a pair.
struct PairMeans {
  double rec = kNone, lod = kNone;
};
PairMeans MeansOf(const MapReport& report, const std::vector<int32_t>& a, const std::vector<int32_t>& b) {
  double rec = 0, lod = 0, count = 0;
  for (const int32_t i : a) {
    for (const int32_t j : b) {
      if (i == j) continue;
      const std::size_t place = host::PairPlace(i, j);
      if (place >= report.rec.size() || place >= report.lod.size()) continue;
      const double r = report.rec[place], score = report.lod[place];
      if (!std::isfinite(r) || !std::isfinite(score)) continue;
      rec += std::min(r, 1 - r);
      lod += score;
      ++count;
    }
  }
  return count > 0 ? PairMeans{rec / count, lod / count} : PairMeans{};
}

uint8_t ShadeIndex(double share) {
  return static_cast<uint8_t>(std::clamp(static_cast<int>(share * kShades), 0, kShades - 1));
}

std::vector<Colour> Palette() {
  std::vector<Colour> palette;
  palette.reserve(2 * kShades + 1);
  for (int k = 0; k < kShades; ++k) palette.push_back(ShadeAt(Ramp::Blue, k / (kShades - 1.0)));
  for (int k = 0; k < kShades; ++k) palette.push_back(ShadeAt(Ramp::Orange, k / (kShades - 1.0)));
  palette.push_back({255, 255, 255});
  return palette;
}

PairImage PaintPairs(const MapReport& report) {
  const std::vector<int32_t> order = MapOrder(report);
  PairImage image;
  image.bin = (order.size() + kMostPixels - 1) / kMostPixels;
  const std::size_t side = (order.size() + image.bin - 1) / image.bin;
  std::vector<std::vector<int32_t>> sets;
  for (std::size_t k = 0; k < side; ++k) sets.push_back(Sampled(order, k * image.bin, image.bin));
  std::vector<PairMeans> means(side * (side + 1) / 2);
  for (std::size_t row = 0, place = 0; row < side; ++row) {
    for (std::size_t column = 0; column <= row; ++column, ++place) {
      means[place] = MeansOf(report, sets[row], sets[column]);
      if (means[place].lod > image.highestLod) image.highestLod = means[place].lod;
    }
  }
  image.raster = {side, side, std::vector<uint8_t>(side * side, kEmpty), Palette()};
  for (std::size_t row = 0, place = 0; row < side; ++row) {
    for (std::size_t column = 0; column <= row; ++column, ++place) {
      if (std::isnan(means[place].rec)) continue;
      // A pixel of the diagonal stands for pairs of one set and is left to the frequency.
      if (row != column) {
        image.raster.pixels[column * side + row] =
            static_cast<uint8_t>(kShades + ShadeIndex(means[place].lod / image.highestLod));
      }
      image.raster.pixels[row * side + column] = ShadeIndex(1 - means[place].rec / 0.5);
    }
  }
  return image;
}

void DrawBorders(Drawing& drawing, const MapReport& report, std::size_t placed, double side) {
  const double unit = side / static_cast<double>(placed);
  double at = 0, freeLeft = -1e9, freeBelow = -1e9;
  for (const ReportGroup& group : report.groups) {
    const double size = static_cast<double>(group.markers.size()) * unit, middle = at + size / 2;
    if (at > 0) {
      constexpr std::string_view style = R"(stroke="#000" stroke-width=".5" stroke-opacity=".6")";
      AddLine(drawing, kSquareLeft + at, kSquareTop, kSquareLeft + at, kSquareTop + side, style);
      AddLine(drawing, kSquareLeft, kSquareTop + at, kSquareLeft + side, kSquareTop + at, style);
    }
    if (middle - freeLeft >= kLabelGap) {
      AddText(drawing, kSquareLeft - 6, kSquareTop + middle + 3,
              Shortened(group.name, kSmallText, kSquareLeft - 10), kSmallEnd);
      freeLeft = middle;
    }
    const double width = TextWidth(group.name, kSmallText);
    if (middle - width / 2 >= freeBelow) {
      AddText(drawing, kSquareLeft + middle, kSquareTop + side + 13,
              Shortened(group.name, kSmallText, kSquareLeft), kSmallMiddle);
      freeBelow = middle + width / 2 + 4;
    }
    at += size;
  }
  AddRect(drawing, kSquareLeft, kSquareTop, side, side, R"(fill="none" stroke="#333")");
}

void DrawLegend(Drawing& drawing, double x, double top, const std::string& title, const std::string& where,
                const RampScale& scale) {
  AddText(drawing, x, top - 22, title, kBold);
  AddText(drawing, x, top - 9, where, kSmall);
  DrawRampScale(drawing, x, top, 150, scale);
}

}  // namespace

Figure PairHeatMap(const MapReport& report) {
  const std::size_t placed = PlacedMarkers(report);
  if (placed < 2 || report.rec.empty() || report.lod.empty()) return {};
  const PairImage image = PaintPairs(report);
  const std::size_t times = std::max<std::size_t>(1, kLeastPixels / image.raster.width);
  const double side = std::clamp(30 * static_cast<double>(placed), kSmallest, kLargest);
  // The scales stand one below the other where that fits.
  const bool stacked = side >= 480;
  const double scales = kSquareLeft + side + 40;
  Drawing drawing{scales + (stacked ? 200 : 350), kSquareTop + side + 34, {}};
  AddImage(drawing, kSquareLeft, kSquareTop, side, side, Png(image.raster, times),
           "recombination frequency below the diagonal, LOD above it");
  DrawBorders(drawing, report, placed, side);
  AddText(drawing, kSquareLeft + side / 2, kSquareTop + side + 29, "markers in map order", kMiddle);
  DrawLegend(drawing, scales, kSquareTop + 40, "LOD score", "above the diagonal",
             {Ramp::Orange, {0, image.highestLod}, false});
  DrawLegend(drawing, scales + (stacked ? 0 : 140), kSquareTop + (stacked ? 270 : 40),
             "Recombination frequency", "below the diagonal", {Ramp::Blue, {0, 0.5}, true});
  const double pairs = static_cast<double>(placed) * (static_cast<double>(placed) - 1) / 2;
  std::string caption =
      host::Fixed(pairs, 0) + " pairs of " + CountText(placed, "marker") +
      " in map order; dark is closely linked. Frequencies above 0.5 (repulsion) are shown as "
      "their complement.";
  if (image.bin > 1) {
    caption += " A pixel is the mean over pairs of " + std::to_string(image.bin) + " by " +
               std::to_string(image.bin) + " markers";
    caption += image.bin > kSampled ? ", of which " + std::to_string(kSampled) + " by " +
                                          std::to_string(kSampled) + " are looked at."
                                    : std::string(".");
  }
  return MadeFigure(drawing, "pair_heat_map", "Recombination and LOD of all pairs", caption);
}

}  // namespace reports
