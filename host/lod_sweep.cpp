#include "host/lod_sweep.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>

namespace host {
namespace {

constexpr float kFineUpTo = 10, kCoarseUpTo = 20;
constexpr int32_t kFewAlone = 20;
constexpr float kOpenEnd = 10;  // how far above the strongest link a cut is looked for

SweepRow RowAt(std::span<const int32_t> anchors, std::span<const Join> joins, float lod) {
  SweepRow row{lod, {}, 0};
  for (const MarkerGroup& group : GroupsAt(anchors, joins, lod)) {
    if (group.markers.size() < 2) {
      ++row.single;
    } else {
      row.sizes.push_back(static_cast<int32_t>(group.markers.size()));
    }
  }
  std::sort(row.sizes.begin(), row.sizes.end(), std::greater<>());
  return row;
}

// Groups with their sizes while joins are taken in.
struct Sizes {
  std::vector<std::size_t> up;
  std::vector<int32_t> size;  // of a group, at its root

  std::size_t Root(std::size_t marker) {
    while (up[marker] != marker) marker = up[marker] = up[up[marker]];
    return marker;
  }
};

Sizes AtStart(std::span<const int32_t> anchors) {
  Sizes sizes{std::vector<std::size_t>(anchors.size()), std::vector<int32_t>(anchors.size(), 0)};
  for (const MarkerGroup& group : GroupsAt(anchors, {}, 0)) {
    const auto root = static_cast<std::size_t>(group.markers.front() - 1);
    for (int32_t marker : group.markers) sizes.up[static_cast<std::size_t>(marker - 1)] = root;
    sizes.size[root] = static_cast<int32_t>(group.markers.size());
  }
  return sizes;
}

// Neighbouring rows with one number of groups, from the lowest to the highest cut.
struct CutRun : CutRange {
  int32_t alone = 0;  // markers in no group, at the highest
};
std::vector<CutRun> RunsOf(const std::vector<SweepRow>& rows, int32_t minGroup) {
  std::vector<CutRun> runs;
  for (const SweepRow& row : rows) {
    const std::vector<int32_t> large = LargeSizes(row, minGroup);
    const auto groups = static_cast<int32_t>(large.size());
    if (runs.empty() || runs.back().groups != groups) runs.push_back({{row.lod, row.lod, groups}, 0});
    runs.back().high = row.lod;
    runs.back().alone = std::accumulate(row.sizes.begin(), row.sizes.end(), row.single) -
                        std::accumulate(large.begin(), large.end(), 0);
  }
  return runs;
}

float Width(const CutRange& range) { return std::min(range.high, range.low + kOpenEnd) - range.low; }

}  // namespace

std::vector<SweepRow> SweepCuts(std::span<const int32_t> anchors, std::span<const Join> joins) {
  std::vector<SweepRow> rows;
  for (float lod = kLeastCut; lod <= kCoarseUpTo; lod += lod < kFineUpTo ? 0.5F : 1.0F) {
    rows.push_back(RowAt(anchors, joins, lod));
  }
  return rows;
}

std::vector<int32_t> LargeSizes(const SweepRow& row, int32_t minGroup) {
  std::vector<int32_t> sizes = row.sizes;
  std::erase_if(sizes, [&](int32_t size) { return size < minGroup; });
  if (minGroup <= 1) sizes.insert(sizes.end(), static_cast<std::size_t>(row.single), 1);
  return sizes;
}

std::vector<CutRange> CutRanges(std::span<const int32_t> anchors, std::span<const Join> joins,
                                int32_t minGroup) {
  Sizes sizes = AtStart(anchors);
  const auto isLarge = [&](std::size_t root) { return sizes.size[root] >= minGroup ? 1 : 0; };
  int32_t groups = 0;
  for (std::size_t m = 0; m < anchors.size(); ++m) groups += isLarge(m);
  std::vector<CutRange> ranges;
  float high = std::numeric_limits<float>::infinity();
  for (const Join& join : joins) {
    if (join.lod < high) {
      ranges.push_back({join.lod, high, groups});
      high = join.lod;
    }
    const std::size_t a = sizes.Root(static_cast<std::size_t>(join.first - 1)),
                      b = sizes.Root(static_cast<std::size_t>(join.second - 1));
    groups -= isLarge(a) + isLarge(b);
    sizes.up[b] = a;
    sizes.size[a] += sizes.size[b];
    groups += isLarge(a);
  }
  if (high > kLeastCut) ranges.push_back({kLeastCut, high, groups});
  return ranges;
}

std::optional<CutRange> SteadierRange(const std::vector<SweepRow>& rows, float lod, int32_t minGroup) {
  const std::vector<CutRun> runs = RunsOf(rows, minGroup);
  const auto own = std::find_if(runs.begin(), runs.end(), [&](const CutRun& run) { return lod <= run.high; });
  if (own == runs.end()) return std::nullopt;
  const SweepRow& first = rows.front();
  const int32_t markers = std::accumulate(first.sizes.begin(), first.sizes.end(), first.single);
  auto steadier = own;
  for (auto run = own; run != runs.end(); ++run) {
    const bool longer = run->high - run->low > steadier->high - steadier->low;
    if (longer && run->groups > own->groups && (run->alone - own->alone) * kFewAlone <= markers)
      steadier = run;
  }
  return steadier == own ? std::nullopt : std::optional<CutRange>(*steadier);
}

std::optional<CutRange> RangeFor(const std::vector<CutRange>& ranges, int32_t groups) {
  std::optional<CutRange> widest;
  for (const CutRange& range : ranges) {
    if (range.groups == groups && (!widest || Width(range) > Width(*widest))) widest = range;
  }
  return widest;
}

float CutIn(const CutRange& range) {
  const float middle = range.low + Width(range) / 2;
  const float rounded = std::round(middle * 100) / 100;
  return rounded > range.low && rounded <= range.high ? rounded : middle;
}

}  // namespace host
