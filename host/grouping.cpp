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

// Joins two groups unless that would unite two anchor groups.
void Join(Forest& forest, int32_t a, int32_t b) {
  a = Root(forest, a);
  b = Root(forest, b);
  if (a == b) return;
  int32_t& anchorA = forest.anchor[static_cast<std::size_t>(a)];
  const int32_t anchorB = forest.anchor[static_cast<std::size_t>(b)];
  if (anchorA > 0 && anchorB > 0 && anchorA != anchorB) return;
  forest.parent[static_cast<std::size_t>(b)] = a;
  anchorA = std::max(anchorA, anchorB);
}

Forest Planted(std::span<const int32_t> anchors, bool& severalAnchors) {
  Forest forest{std::vector<int32_t>(anchors.size()), std::vector<int32_t>(anchors.begin(), anchors.end())};
  std::iota(forest.parent.begin(), forest.parent.end(), 0);
  std::unordered_map<int32_t, int32_t> firstOf;
  for (int32_t m = 0; m < static_cast<int32_t>(anchors.size()); ++m) {
    const int32_t anchor = anchors[static_cast<std::size_t>(m)];
    if (anchor > 0) Join(forest, firstOf.try_emplace(anchor, m).first->second, m);
  }
  severalAnchors = firstOf.size() > 1;
  return forest;
}

bool Stronger(const Link& a, const Link& b) {
  if (a.lod != b.lod) return a.lod > b.lod;
  if (a.folded != b.folded) return a.folded < b.folded;
  return std::pair(a.first, a.second) < std::pair(b.first, b.second);
}

}  // namespace

std::vector<MarkerGroup> GroupMarkers(std::span<const int32_t> anchors, std::span<const float> rec,
                                      std::span<const float> lod, const LinkThresholds& thresholds) {
  const auto n = static_cast<int32_t>(anchors.size());
  bool severalAnchors = false;
  Forest forest = Planted(anchors, severalAnchors);
  std::vector<Link> links;  // only where their order matters
  std::size_t pair = 0;
  for (int32_t i = 1; i < n; ++i) {
    for (int32_t j = 0; j < i; ++j, ++pair) {
      const float folded = 0.5F - std::fabs(0.5F - rec[pair]);
      if (!(lod[pair] >= thresholds.minLod && folded <= thresholds.maxRec)) continue;
      if (severalAnchors) {
        links.push_back({j, i, lod[pair], folded});
      } else {
        Join(forest, j, i);
      }
    }
  }
  std::sort(links.begin(), links.end(), Stronger);
  for (const Link& link : links) Join(forest, link.first, link.second);

  std::vector<MarkerGroup> groups;
  std::vector<std::size_t> groupOf(anchors.size(), anchors.size());
  for (int32_t m = 0; m < n; ++m) {
    const auto root = static_cast<std::size_t>(Root(forest, m));
    if (groupOf[root] == anchors.size()) {
      groupOf[root] = groups.size();
      groups.push_back({forest.anchor[root], {}});
    }
    groups[groupOf[root]].markers.push_back(m + 1);
  }
  return groups;
}

}  // namespace host
