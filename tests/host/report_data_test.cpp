// What the commands tell their report pages.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "host/consensus_page.h"
#include "host/map_page.h"
#include "host/map_quality.h"
#include "tests/host/command_runner.h"

namespace host {
namespace {

GenotypeTable Table(int32_t population, const std::vector<std::string>& rows) {
  GenotypeTable table;
  table.populationType = population;
  table.lines = rows.front().size();
  for (const std::string& row : rows) {
    table.markers.push_back("m" + std::to_string(table.markers.size() + 1));
    table.anchors.push_back(0);
    for (const char code : row) table.cells.push_back(CellOf(TableKind::Map, std::string(1, code)));
  }
  return table;
}

LinkageMap Chain(const std::vector<float>& intervals, const std::vector<float>& recs) {
  LinkageMap map;
  map.groups.emplace_back();
  for (std::size_t k = 0; k < intervals.size(); ++k) {
    MapPlace place{static_cast<int32_t>(k) + 1};
    place.interval = intervals[k];
    place.rec = recs[k];
    map.groups.front().places.push_back(place);
  }
  return map;
}

TEST(LineCrossovers, CountGametesBetweenTypedMarkers) {
  const LinkageMap map = Chain({0, 5, 5, 5}, {0, 0.05F, 0.05F, 0.05F});
  // A line each: none; one in one gamete; one in both; hidden by a missing and a dominant cell; there and back.
  EXPECT_EQ(LineCrossovers(map, Table(7, {"AAAAA", "AAAXH", "AHBDH", "AHBBA"})),
            (std::vector<int32_t>{0, 1, 2, 2, 2}));
  EXPECT_EQ(LineCrossovers(map, Table(3, {"AA", "AB", "AB", "BA"})), (std::vector<int32_t>{1, 2}))
      << "two classes are one crossover apart";
  EXPECT_EQ(LineCrossovers(map, Table(2, {"HH", "HB", "HB", "HH"})), (std::vector<int32_t>{0, 2}));
}

TEST(LineCrossovers, TurnMarkersInRepulsionAndStopAtGaps) {
  EXPECT_EQ(LineCrossovers(Chain({0, 5, 5}, {0, 0.95F, 0.95F}), Table(7, {"AB", "BA", "AA"})),
            (std::vector<int32_t>{0, 2}));
  EXPECT_EQ(LineCrossovers(Chain({0, 1000, 5}, {0, 0.5F, 0.05F}), Table(3, {"AA", "BB", "BA"})),
            (std::vector<int32_t>{0, 1}));
}

// A dominance code has a share of its own, on the side of the genotypes that it stands for.
TEST(MapPageData, KeepsDominanceCodesApart) {
  struct {
    const char* name;
    std::vector<int32_t> category;
    std::vector<std::string> codes;
    std::vector<double> expected;
    std::vector<double> first;  // shares of the first marker
  } const cases[] = {
      {"co-dominant", {1, 1}, {"A", "H", "B"}, {.25, .5, .25}, {.5, .25, .25}},
      {"a recessive one", {10, 1}, {"A", "H", "R", "B"}, {.25, .5, 0, .25}, {.5, 0, .5, 0}},
      {"a dominant one", {12, 1}, {"A", "D", "H", "B"}, {.25, 0, .5, .25}, {0, .5, 0, .5}},
      {"all dominant", {12, 12}, {"D", "B"}, {.75, .25}, {.5, .5}},
      {"all recessive", {10, 10}, {"A", "R"}, {.25, .75}, {.5, .5}},
  };
  for (const auto& one : cases) {
    MapRun run;
    MapData& data = run.data;
    data.numMarkers = 2;
    data.populationType = 7;
    data.populationSize = 4;
    data.names = {"m1", "m2"};
    for (auto* array : {&data.countX, &data.category}) *array = SharedArray<int32_t>(2);
    data.segregationP = SharedArray<float>(2);
    for (int k = 0; k < 3; ++k) data.counts.emplace_back(2);
    for (std::size_t m = 0; m < 2; ++m) {
      const bool two = one.category[m] != 1;  // the library counts D as A, R as B
      data.category[m] = one.category[m];
      data.counts[0][m] = 2;
      data.counts[1][m] = two ? 0 : 1;
      data.counts[2][m] = two ? 2 : 1;
    }
    run.map = Chain({0, 5}, {0, 0.05F});
    const Sandbox sandbox;
    sandbox.Write("x.map", "");
    const reports::MapReport report =
        MapPageData(run, Table(7, {"AAHB", "AAHB"}), (sandbox.folder / "x.map").string());
    EXPECT_EQ(report.codes, one.codes) << one.name;
    EXPECT_EQ(report.expected, one.expected) << one.name;
    EXPECT_EQ(report.groups[0].markers[0].shares, one.first) << one.name;
  }
}

// Markers at equal steps, every distance longer by what errors add.
MapData EquallySpaced(int32_t markers, float errors) {
  MapData data;
  data.numMarkers = markers;
  const auto count = static_cast<std::size_t>(markers);
  data.distance = SharedArray<float>(count * (count - 1) / 2);
  for (int32_t j = 1; j <= markers; ++j) {
    data.names.push_back("m" + std::to_string(j));
    for (int32_t i = 1; i < j; ++i)
      data.distance.data()[PairPlace(i, j)] = 5 * static_cast<float>(j - i) + errors;
  }
  return data;
}

TEST(QualityWarnings, TellOfInflationFewLinesAndLoneMarkers) {
  const GenotypeTable table = Table(7, std::vector<std::string>(12, std::string(80, 'H')));
  const auto warnings = [&](const LinkageMap& map, float errors, const GenotypeTable& genotypes) {
    return QualityWarnings(EquallySpaced(12, errors), map, genotypes);
  };
  const std::vector<float> recs(12, 0.05F);
  std::vector<float> steps(12, 5);
  EXPECT_EQ(warnings(Chain(steps, recs), 0, table), std::vector<std::string>{});
  steps.assign(12, 9);
  const auto inflated = warnings(Chain(steps, recs), 4, table);
  ASSERT_EQ(inflated.size(), 1U);
  EXPECT_NE(inflated[0].find("29 % longer"), std::string::npos) << inflated[0];
  steps.assign(9, 9);
  EXPECT_TRUE(warnings(Chain(steps, recs), 4, table).empty()) << "too short to judge";

  GenotypeTable sparse = table;
  std::fill_n(sparse.cells.begin() + 80, 51, MissingCell(TableKind::Map));  // 29 lines are left at m2
  LinkageMap map = Chain(std::vector<float>(12, 5), recs);
  map.unlinked = {12};
  EXPECT_EQ(warnings(map, 0, sparse),
            (std::vector<std::string>{
                "2 pairs of neighbours with fewer than 30 lines typed at both: m1 and m2 (29), m2 "
                "and m3 (29)",
                "1 marker in no group: m12"}));
}

TEST(ConsensusPageData, TellsWhereAMarkerIsOnNoMap) {
  Consensus consensus;
  consensus.maps = {"A", "B"};
  consensus.markers = {{"m1", 0, {1, 0}, {0, -1}}, {"m2", 4, {2, 1}, {4, 0}}, {"m3", 9, {3, 2}, {9, 5}}};
  ConsensusRun run;
  run.maps = consensus.maps;
  run.groups.push_back(Judge("LG1", consensus));
  const reports::ConsensusReport report = ConsensusPageData(run, {});
  ASSERT_EQ(report.groups.size(), 1U);
  const reports::JointGroup& group = report.groups.front();
  EXPECT_TRUE(std::isnan(group.markers[0].positions[1]));
  EXPECT_EQ(group.markers[2].positions[1], 5.0);
  EXPECT_EQ(group.sources[1].shared, 2U);
  EXPECT_EQ(group.sources[1].tau, 1.0);
}

}  // namespace
}  // namespace host
