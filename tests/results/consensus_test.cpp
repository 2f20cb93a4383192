// Several maps of one organism: the union, its tables, its order, and what CMP files leave behind.

#include "results/consensus.h"

#include <random>
#include <string>
#include <vector>

#include "frame/exports.h"
#include "platform/unit.h"
#include "tests/reference/consensus_plain.h"
#include "tests/support/scratch.h"

namespace {

using reference::PlainMap;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

std::string CmpFile(const std::vector<PlainMap>& maps) {
  std::string text = "2\n1\n" + std::to_string(maps.size()) + "\n";
  for (std::size_t m = 0; m < maps.size(); ++m) {
    text += "map" + std::to_string(m + 1) + " " + std::to_string(maps[m].names.size()) + "\n";
  }
  for (std::size_t m = 0; m < maps.size(); ++m) {
    for (std::size_t k = 0; k < maps[m].names.size(); ++k) {
      text +=
          maps[m].names[k] + " " + std::to_string(m + 1) + " " + std::to_string(maps[m].positions[k]) + "\n";
    }
  }
  return text;
}

// The host's arrays, with what was not written left at -7.
struct Tables {
  int32_t status = 5;
  std::vector<int32_t> names, anchorInfo, order;
  std::vector<float> position, distance;
  std::string console;
};

Tables Check(const std::string& text, int32_t maps, int32_t n) {
  WriteFile("in.cmp", text);
  const auto rows = static_cast<std::size_t>(n), columns = static_cast<std::size_t>(maps) + 1;
  Tables t;
  t.names.assign(35 * rows, -7);
  t.anchorInfo.assign(rows, -7);
  t.order.assign(rows * columns, -7);
  t.position.assign(rows * columns, -7);
  t.distance.assign(rows * (rows + 1) / 2, -7);
  const int32_t length = 6;
  testing::internal::CaptureStdout();
  CHECKERRORCMP(&length, "in.cmp", &maps, &n, t.names.data(), t.anchorInfo.data(), t.order.data(),
                t.position.data(), t.distance.data(), &t.status);
  t.console = testing::internal::GetCapturedStdout();
  return t;
}

const std::vector<PlainMap> kMaps = {{{"a", "b", "c", "d"}, {0, 4, 10, 11}}, {{"a", "c", "x"}, {0, 8, 20}}};

TEST(Consensus, PreReadSumsTheMapsAndSaysBin) {
  const ScratchFolder folder;
  WriteFile("in.cmp", "1\n2" + CmpFile(kMaps).substr(3));
  const int32_t length = 6;
  int32_t type = 0, unit = 0, maps = 0, markers = 0, status = 5;
  CMPFINDNUMMARKERS(&length, "in.cmp", &type, &unit, &maps, &markers, &status);
  EXPECT_EQ((std::vector<int32_t>{type, unit, maps, markers, status}), (std::vector<int32_t>{1, 2, 2, 7, 5}));
  EXPECT_EQ(ReadFile("CMP.log"), "--DLL BINFindNumMarkers run successfully!\n");
  EXPECT_FALSE(platform::IsConnected(100));

  WriteFile("in.cmp", CmpFile({{{"a"}, {0}}, {{"b"}, {0}}}));
  CMPFINDNUMMARKERS(&length, "in.cmp", &type, &unit, &maps, &markers, &status);
  EXPECT_EQ(status, 100) << "the whole load, with the test of common markers";
  EXPECT_EQ(markers, 7) << "untouched";
  EXPECT_EQ(ReadFile("CMP.log"), "No common markers are found on all maps!\n");
}

TEST(Consensus, TablesStandColumnAfterColumnAndTheOrderGoesToTheDefaultFile) {
  const ScratchFolder folder;
  const Tables t = Check(CmpFile(kMaps), 2, 7);  // N is the sum, the union has five rows
  EXPECT_EQ(t.status, 5);
  EXPECT_EQ(t.console, " in.cmp read successfully!\n");
  EXPECT_EQ(ReadFile("CMP.log"), "in.cmp read successfully!\n--DLL CheckErrorCMP run successfully!\n");
  EXPECT_EQ(t.names[4], 'x');
  EXPECT_EQ(t.names[5], -7);
  EXPECT_EQ(t.anchorInfo, (std::vector<int32_t>{2, 1, 2, 1, 1, -7, -7}));
  // Two anchors are too few: all five are ordered from scratch.
  EXPECT_EQ(t.order,
            (std::vector<int32_t>{5, 3, 4, 2, 1, -7, -7, 1, 2, 3, 4, 0, -7, -7, 1, 0, 2, 0, 3, -7, -7}));
  EXPECT_EQ(t.distance[0], 4.0F);
  EXPECT_EQ(t.distance[1], 9.0F) << "the mean of 10 and 8";
  EXPECT_EQ(t.distance[7], 1000.0F) << "b and x are on no map together";
  EXPECT_EQ(t.distance[10], -7.0F);
  EXPECT_EQ(t.position[0], 0.0F);
  EXPECT_EQ(t.position[7 + 4], -1.0F) << "x is not on the first map";
  EXPECT_EQ(t.position[14 + 4], 20.0F);
  EXPECT_EQ(t.position[14 + 1], -1.0F);

  EXPECT_TRUE(platform::IsConnected("fort.100"));
  EXPECT_EQ(ReadFile("fort.100").substr(0, 4 * 49),
            " AnchorOrder    MarkerID  AnchorInfo    Position\n"
            "           1           1           2      0.0000\n"
            "           2           3           2      9.0000\n"
            " MarkerOrder    MarkerID  AnchorInfo    Position\n");
  // The next pre-read meets the default file.
  const int32_t length = 6;
  int32_t type = 0, unit = 0, maps = 0, markers = 0, status = 5;
  CMPFINDNUMMARKERS(&length, "in.cmp", &type, &unit, &maps, &markers, &status);
  EXPECT_TRUE(ReadFile("fort.100").ends_with("\n--DLL BINFindNumMarkers run successfully!\n"));
  EXPECT_TRUE(platform::IsConnected(100));

  const Tables fewer = Check(CmpFile(kMaps), 2, 3);
  EXPECT_EQ(fewer.anchorInfo, (std::vector<int32_t>{2, 1, 2})) << "the first N rows";
  EXPECT_EQ(fewer.distance, (std::vector<float>{4, 9, 6, -7, -7, -7}));

  platform::OpenUnit(100, "CMP.log", platform::OpenStatus::Replace);
  Check(CmpFile(kMaps), 2, 7);
  EXPECT_TRUE(platform::IsConnected("CMP.log")) << "open before, open behind";
  platform::CloseUnit(100);
  EXPECT_NE(ReadFile("CMP.log").find("ErrorCMP run successfully!\n AnchorOrder"), std::string::npos);
}

TEST(Consensus, NoCommonMarkerIsAReport) {
  const ScratchFolder folder;
  const Tables t = Check(CmpFile({{{"a", "b"}, {0, 1}}, {{"c", "d"}, {0, 1}}}), 2, 4);
  EXPECT_EQ(t.status, 100);
  EXPECT_EQ(t.console, " --Error found. Please check CMP.log for details!\n");
  EXPECT_EQ(ReadFile("CMP.log"), "No common markers are found on all maps!\n");
  EXPECT_EQ(t.order, std::vector<int32_t>(12, -7));
  EXPECT_FALSE(platform::IsConnected(100));
}

TEST(Consensus, ADistanceIsTheMeanIn32BitsFromTheFirstMapToTheLast) {
  const ScratchFolder folder;
  const Tables t = Check(
      CmpFile(
          {{{"a", "b", "c"}, {0, 1, 16777216}}, {{"a", "b", "c"}, {0, 1, 1}}, {{"a", "c", "b"}, {0, 1, 3}}}),
      3, 3);
  const float sum = 5, maps = 3;
  EXPECT_EQ(t.distance[0], sum / maps) << "a quotient, not a product with a third";
  EXPECT_EQ(t.distance[1], 16777216 / maps) << "each 1 behind the first map is lost";
}

TEST(Consensus, EqualsThePlainTables) {
  const ScratchFolder folder;
  std::mt19937 random(11);
  for (int round = 0; round < 60; ++round) {
    std::vector<PlainMap> maps(1 + random() % 4);
    int32_t total = 0;
    for (PlainMap& map : maps) {
      float position = 0;
      for (unsigned k = 0; k < 1 + random() % 20; ++k) {
        map.names.push_back("m" + std::to_string(k == 0 ? 0 : random() % 30));  // some stand twice on a map
        position += static_cast<float>(random() % 64) / 8;
        map.positions.push_back(position);
        ++total;
      }
    }
    const reference::PlainConsensus plain = reference::UnitePlainly(maps);
    const auto n = static_cast<int32_t>(plain.names.size());
    const Tables t = Check(CmpFile(maps), static_cast<int32_t>(maps.size()), n);
    ASSERT_EQ(t.status, plain.common ? 5 : 100);
    if (!plain.common) {
      continue;
    }
    std::vector<int32_t> order = plain.mapIndex;
    std::vector<float> position = plain.position;
    reference::OrderPlainly(n, plain.mapCount.data(), plain.distance.data(), order.data(), position.data());
    EXPECT_EQ(t.anchorInfo, plain.mapCount);
    EXPECT_EQ(t.order, order);
    EXPECT_EQ(t.position, position);
    EXPECT_EQ(std::vector<float>(t.distance.begin(), t.distance.begin() + n * (n - 1) / 2), plain.distance);
  }
}

TEST(ConsensusOrder, AnchorsAreThoseAboveOne) {
  const ScratchFolder folder;
  const int32_t n = 5;
  const float dist[] = {30, 10, 20, 20, 10, 10, 15, 15, 5, 5};  // places 0, 30, 10, 20, 15
  const auto ordered = [&](std::vector<int32_t> info) {
    std::vector<int32_t> order(5, 0);
    CMPBYANCHORORDER(&n, info.data(), dist, order.data());
    platform::CloseUnit(100);
    return order;
  };
  const std::vector<int32_t> up = {1, 3, 5, 4, 2}, down = {2, 4, 5, 3, 1};
  for (const std::vector<int32_t>& info : std::vector<std::vector<int32_t>>{
           {2, 2, 2, 1, 0}, {9, 9, 9, 9, 9}, {1, 1, 1, 1, 1}, {0, 2, 0, 0, 0}, {2, 2, 1, 1, 1}}) {
    const std::vector<int32_t> order = ordered(info);
    EXPECT_TRUE(order == up || order == down) << info[0] << info[1] << info[2];
  }
  ordered({1, 1, 1, 1, 1});
  EXPECT_EQ(ReadFile("fort.100").substr(0, 2 * 49),
            " AnchorOrder    MarkerID  AnchorInfo    Position\n"
            " MarkerOrder    MarkerID  AnchorInfo    Position\n")
      << "no anchor: the heading alone";
}

}  // namespace
