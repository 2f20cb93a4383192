#include "host/grouping.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace host {
namespace {

struct Link {
  int32_t first, second;  // from 0
  float lod, folded;
};

struct Forest {
  std::vector<int32_t> parent, anchor;  // the anchor of a root is that of its whole group
};

int32_t Root(Forest& forest, int32_t marker) {
  auto& parent = forest.parent;
  while (parent[static_cast<std::size_t>(marker)] != marker) {
    auto& up = parent[static_cast<std::size_t>(marker)];
    up = parent[static_cast<std::size_t>(up)];
    marker = up;
  }
  return marker;
}

// Joins two groups unless they are one or that would unite two anchor groups.
bool Unite(Forest& forest, int32_t a, int32_t b) {
  a = Root(forest, a);
  b = Root(forest, b);
  if (a == b) return false;
  int32_t& anchorA = forest.anchor[static_cast<std::size_t>(a)];
  const int32_t anchorB = forest.anchor[static_cast<std::size_t>(b)];
  if (anchorA > 0 && anchorB > 0 && anchorA != anchorB) return false;
  forest.parent[static_cast<std::size_t>(b)] = a;
  anchorA = std::max(anchorA, anchorB);
  return true;
}

Forest Planted(std::span<const int32_t> anchors) {
  Forest forest{std::vector<int32_t>(anchors.size()), std::vector<int32_t>(anchors.begin(), anchors.end())};
  std::iota(forest.parent.begin(), forest.parent.end(), 0);
  std::unordered_map<int32_t, int32_t> firstOf;
  for (int32_t m = 0; m < static_cast<int32_t>(anchors.size()); ++m) {
    const int32_t anchor = anchors[static_cast<std::size_t>(m)];
    if (anchor > 0) Unite(forest, firstOf.try_emplace(anchor, m).first->second, m);
  }
  return forest;
}

bool Stronger(const Link& a, const Link& b) {
  if (a.lod != b.lod) return a.lod > b.lod;
  if (a.folded != b.folded) return a.folded < b.folded;
  return std::pair(a.first, a.second) < std::pair(b.first, b.second);
}

}  // namespace

std::vector<Join> JoinMarkers(std::span<const int32_t> anchors, std::span<const float> rec,
                              std::span<const float> lod, const LinkThresholds& thresholds) {
  const auto n = static_cast<int32_t>(anchors.size());
  std::vector<Link> links;
  std::size_t pair = 0;
  for (int32_t i = 1; i < n; ++i) {
    for (int32_t j = 0; j < i; ++j, ++pair) {
      const float folded = 0.5F - std::fabs(0.5F - rec[pair]);
      if (!(lod[pair] >= thresholds.minLod && folded <= thresholds.maxRec)) continue;
      links.push_back({j, i, lod[pair], folded});
    }
  }
  std::sort(links.begin(), links.end(), Stronger);
  Forest forest = Planted(anchors);
  std::vector<Join> joins;
  for (const Link& link : links) {
    if (Unite(forest, link.first, link.second)) joins.push_back({link.first + 1, link.second + 1, link.lod});
  }
  return joins;
}

std::vector<MarkerGroup> GroupsAt(std::span<const int32_t> anchors, std::span<const Join> joins,
                                  float minLod) {
  Forest forest = Planted(anchors);
  for (const Join& join : joins) {
    if (join.lod >= minLod) Unite(forest, join.first - 1, join.second - 1);
  }
  std::vector<MarkerGroup> groups;
  std::vector<std::size_t> groupOf(anchors.size(), anchors.size());
  for (int32_t m = 0; m < static_cast<int32_t>(anchors.size()); ++m) {
    const auto root = static_cast<std::size_t>(Root(forest, m));
    if (groupOf[root] == anchors.size()) {
      groupOf[root] = groups.size();
      groups.push_back({forest.anchor[root], {}});
    }
    groups[groupOf[root]].markers.push_back(m + 1);
  }
  return groups;
}

std::vector<MarkerGroup> GroupMarkers(std::span<const int32_t> anchors, std::span<const float> rec,
                                      std::span<const float> lod, const LinkThresholds& thresholds) {
  return GroupsAt(anchors, JoinMarkers(anchors, rec, lod, thresholds), thresholds.minLod);
}

}  // namespace host
