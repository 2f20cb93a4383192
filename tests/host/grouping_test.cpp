#include "host/grouping.h"

#include <gtest/gtest.h>

#include <numeric>

#include "host/linkage_map.h"
#include "host/lod_sweep.h"
#include "host/marker_data.h"

namespace host {
namespace {

struct Linked {
  int first, second;
  float lod, rec;
};

struct GroupingCase {
  const char* rule;
  std::vector<int32_t> anchors;
  std::vector<Linked> links;  // all other pairs have LOD 0 and frequency 0.5
  std::vector<MarkerGroup> expected;
};

const GroupingCase kGroupingCases[] = {
    {"no marker", {}, {}, {}},
    {"no link", {0, 0}, {}, {{0, {1}}, {0, {2}}}},
    {"a chain is one component", {0, 0, 0, 0}, {{1, 3, 5, .1F}, {3, 4, 5, .1F}}, {{0, {1, 3, 4}}, {0, {2}}}},
    {"both thresholds include their value", {0, 0, 0}, {{1, 2, 3, .3F}}, {{0, {1, 2}}, {0, {3}}}},
    {"a LOD below its threshold", {0, 0}, {{1, 2, 2.99F, .1F}}, {{0, {1}}, {0, {2}}}},
    {"a frequency above its threshold", {0, 0}, {{1, 2, 9, .31F}}, {{0, {1}}, {0, {2}}}},
    {"repulsion is folded", {0, 0}, {{1, 2, 9, .9F}}, {{0, {1, 2}}}},
    {"an anchor group needs no link", {4, 0, 4}, {}, {{4, {1, 3}}, {0, {2}}}},
    {"a link never joins two anchor groups", {1, 2}, {{1, 2, 50, 0}}, {{1, {1}}, {2, {2}}}},
    {"a marker goes to the stronger link",
     {1, 0, 2},
     {{1, 2, 4, .1F}, {2, 3, 5, .1F}},
     {{1, {1}}, {2, {2, 3}}}},
    {"of equal LODs the lower frequency wins",
     {1, 0, 2},
     {{1, 2, 5, .2F}, {2, 3, 5, .1F}},
     {{1, {1}}, {2, {2, 3}}}},
    {"a chain between two anchor groups breaks at its weakest link",
     {1, 0, 0, 2},
     {{1, 2, 9, .1F}, {2, 3, 4, .1F}, {3, 4, 8, .1F}},
     {{1, {1, 2}}, {2, {3, 4}}}},
};

TEST(Grouping, LinksAndAnchors) {
  for (const GroupingCase& test : kGroupingCases) {
    SCOPED_TRACE(test.rule);
    const std::size_t n = test.anchors.size();
    std::vector<float> rec(n * n, .5F), lod(n * n, 0);
    for (const Linked& link : test.links) {
      rec[PairPlace(link.first, link.second)] = link.rec;
      lod[PairPlace(link.first, link.second)] = link.lod;
    }
    const auto groups = GroupMarkers(test.anchors, rec, lod, {});
    ASSERT_EQ(groups.size(), test.expected.size());
    for (std::size_t g = 0; g < groups.size(); ++g) {
      EXPECT_EQ(groups[g].anchor, test.expected[g].anchor);
      EXPECT_EQ(groups[g].markers, test.expected[g].markers);
    }
  }
}

TEST(Placing, OrientsByFrameElseByFileOrder) {
  const struct {
    std::vector<int32_t> order, frame, expected;
  } cases[] = {
      {{3, 1, 2}, {}, {2, 1, 3}},        {{2, 9, 3}, {}, {2, 9, 3}},  {{3, 1, 2}, {2, 1}, {2, 1, 3}},
      {{3, 1, 2}, {3, 2}, {3, 1, 2}},    {{3, 1, 2}, {1}, {2, 1, 3}}, {{5}, {5}, {5}},
      {{1, 2, 3}, {3, 7, 2}, {3, 2, 1}},
  };
  for (const auto& test : cases) {
    std::vector<int32_t> order = test.order;
    Orient(order, test.frame);
    EXPECT_EQ(order, test.expected);
  }
}

TEST(Placing, SumsIntervalsAndKeepsGapsOutOfTheLength) {
  MapData data;
  data.numMarkers = 4;
  data.rec = SharedArray<float>(6);
  data.lod = SharedArray<float>(6);
  data.distance = SharedArray<float>(6);
  const auto set = [&](int32_t i, int32_t j, float rec, float distance) {
    data.rec[PairPlace(i, j)] = rec;
    data.distance[PairPlace(i, j)] = distance;
  };
  set(2, 4, .1F, 10.5F);
  set(4, 1, .5F, 1000);
  set(1, 3, .8F, 20);
  const LinkageGroup group = PlaceMarkers(data, {2, 4, 1, 3});
  std::vector<float> positions, intervals;
  for (const MapPlace& place : group.places) {
    positions.push_back(place.position);
    intervals.push_back(place.interval);
  }
  EXPECT_EQ(positions, (std::vector<float>{0, 10.5F, 1010.5F, 1030.5F}));
  EXPECT_EQ(intervals, (std::vector<float>{0, 10.5F, 1000, 20}));
  EXPECT_EQ(group.length, 30.5);
  EXPECT_EQ(group.gaps, 1);
}

// Rows at LOD 1, 2, 3, ...: sizes of the groups; the first row has every marker.
TEST(Sweep, ACutBelowASteadierRunIsToldOf) {
  using Sizes = std::vector<std::vector<int32_t>>;
  const struct {
    const char* what;
    Sizes sizes;
    float lod;
    int32_t minGroup;
    std::optional<std::pair<float, float>> run;
  } cases[] = {
      {"joined at the cut", {{10}, {10}, {5, 5}, {5, 5}, {5, 5}}, 2, 2, {{3, 5}}},
      {"between two rows", {{10}, {10}, {5, 5}, {5, 5}, {5, 5}}, 1.5F, 2, {{3, 5}}},
      {"within the run", {{10}, {10}, {5, 5}, {5, 5}, {5, 5}}, 3, 2, {}},
      {"above it", {{5, 5}, {5, 5}, {5, 5}, {10}}, 4, 2, {}},
      {"above all rows", {{10}, {5, 5}, {5, 5}}, 9, 2, {}},
      {"a run no longer than its own", {{10}, {10}, {5, 5}, {5, 5}, {4, 4, 2}}, 1, 2, {}},
      {"the longest of several", {{10}, {6, 4}, {6, 4}, {4, 4, 2}, {4, 4, 2}, {4, 4, 2}}, 1, 2, {{4, 6}}},
      {"groups that fall apart", {{10}, {5, 3}, {5, 3}, {5, 3}}, 1, 2, {}},
      {"fewer groups, for longer", {{20, 18, 2}, {20, 18}, {20, 18}, {20, 18}}, 1, 2, {}},
      {"small groups do not count", {{8, 2}, {4, 4, 2}, {4, 4, 2}, {4, 4, 2}}, 1, 3, {{2, 4}}},
      {"markers in small groups stand alone", {{10}, {4, 4, 2}, {4, 4, 2}, {4, 4, 2}}, 1, 3, {}},
      {"no row", {}, 3, 2, {}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    std::vector<SweepRow> rows;
    for (const auto& sizes : test.sizes) {
      const auto& all = test.sizes.front();
      const int32_t single =
          std::accumulate(all.begin(), all.end(), 0) - std::accumulate(sizes.begin(), sizes.end(), 0);
      rows.push_back({static_cast<float>(rows.size() + 1), sizes, single});
    }
    const auto found = SteadierRange(rows, test.lod, test.minGroup);
    ASSERT_EQ(found.has_value(), test.run.has_value());
    if (found) {
      EXPECT_EQ(std::pair(found->low, found->high), *test.run);
    }
  }
}

}  // namespace
}  // namespace host
