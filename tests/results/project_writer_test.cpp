#include <string>
#include <vector>

#include "frame/exports.h"
#include "platform/unit.h"
#include "project/loader.h"
#include "tests/support/scratch.h"

namespace {

using support::Exists;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

const std::string kInput =
    "!type\n7\n!function\n2\n!space\n1\n!markers\n5\n!size\n3\n!types\n"
    "first A H B\nsecond D B X\n" +
    std::string(35, 'w') + " A A A\nfourth R R A\nleft-out B B B\n!anchors\n";

struct Map {
  std::vector<int32_t> places, order;
  std::vector<float> positions;
};

void Output(const std::string& file, const std::string& stem, const Map& map) {
  std::string names;
  for (std::size_t c = 1; c <= map.places.size(); ++c) {
    std::string name = "LG" + std::to_string(c);
    names += name.append(19 - name.size(), ' ');
  }
  const auto fileLength = static_cast<int32_t>(file.size()), stemLength = static_cast<int32_t>(stem.size()),
             markers = static_cast<int32_t>(map.order.size()),
             chromosomes = static_cast<int32_t>(map.places.size());
  MAPOUTPUT(&fileLength, file.data(), &stemLength, stem.data(), &markers, &chromosomes, names.data(),
            map.places.data(), map.order.data(), map.positions.data());
}

TEST(MapOutput, WritesTheThreeProjectFiles) {
  const ScratchFolder folder;
  WriteFile("in.map", kInput);
  // An empty chromosome in the middle: the place behind it bears its number.
  const Map map = {{2, 0, 2}, {4, 1, 3, 2}, {0.0F, 12.34567F, 0.0F, 12345678.0F}};
  for (int run = 1; run <= 2; ++run) {  // the second replaces the first
    Output("in.map ", "out ", map);
    for (const char* extension : {".bip", ".met", ".sdl"}) {
      EXPECT_EQ(ReadFile("out" + std::string(extension)),
                ReadFile(SOURCE_DIR "/tests/golden/new_map" + std::string(extension)))
          << extension;
    }
  }
  EXPECT_FALSE(Exists("MAP.log") || Exists("fort.100")) << "it opens no log";
  EXPECT_FALSE(platform::IsConnected(102) || platform::IsConnected(10001000));
}

TEST(MapOutput, TheEnginesTakeTheFilesOnceTheTraitsAreFilledIn) {
  const ScratchFolder folder;
  WriteFile("in.map", kInput);
  Output("in.map", "out", {{3}, {4, 1, 3}, {0.0F, 5.5F, 2.0F}});
  const auto log = [](void (*check)(const int32_t*, const char*, int32_t*) noexcept,
                      const std::string& file) {
    const auto length = static_cast<int32_t>(file.size());
    int32_t status = 0;
    testing::internal::CaptureStdout();
    check(&length, file.data(), &status);
    testing::internal::GetCapturedStdout();
    return status;
  };
  EXPECT_EQ(log(CHECKERRORSDL, "out.sdl"), 0);
  EXPECT_EQ(log(CHECKERRORBIP, "out.bip"), 100);
  EXPECT_EQ(ReadFile("BIP.log"),
            "--Input error: Number of Traits out of range!\n  Number of Traits =        0\n");
  EXPECT_EQ(log(CHECKERRORMET, "out.met"), 100);
  std::string filled = ReadFile("out.bip") + "height 1.5 2.5 -100.0\n";
  const std::string none = "         0  !Number of traits";
  filled.replace(filled.find(none), none.size(), "         1  !Number of traits");
  WriteFile("out.bip", filled);
  EXPECT_EQ(log(CHECKERRORBIP, "out.bip"), 0);
}

TEST(MapOutput, WritesWhatItHasAfterAnError) {
  const ScratchFolder folder;
  const Map map = {{2}, {2, 9, 1}, {0.0F, 1.0F, 2.0F}};  // a place more than the chromosome has
  WriteFile("bad.map", "7\n1\n2\n3\n3\nM1 A H B\nM2 A Q H\nM3 A A A\n");
  Output("bad.map", "bad", map);
  EXPECT_EQ(ReadFile("fort.100"),
            "--Input error: Illegal Markertype value in input file!\n"
            "  MarkerID, LineID, Markertype =        2       2  Q \n");
  EXPECT_TRUE(platform::IsConnected(100));
  const std::string written = ReadFile("bad.sdl");
  const std::string rows = written.substr(written.find("!Missing marker"));
  const std::string blanks(33, ' ');
  EXPECT_EQ(rows, "!Missing marker is coded as -1 (=X or XX). \nM2" + blanks + "  A\n  " + blanks + " \nM1" +
                      blanks + "  A H B\n\n")
      << "marker 2 as far as it was coded, nothing of marker 9, which was not read";
  // The header fails: later readers do not run, and nothing is known of the markers.
  platform::CloseUnit(100);
  WriteFile("worse.map", "21\n8\n2\n3\n2000000000\n");
  Output("worse.map", "worse", map);
  EXPECT_NE(ReadFile("worse.met").find("        21  !Mapping Population"), std::string::npos);
  EXPECT_NE(ReadFile("worse.met").find("         0  !Population size"), std::string::npos);
  WriteFile("sizeless.map", "7\n1\n2\n1\n-5\nM1\n");
  Output("sizeless.map", "sizeless", map);
  EXPECT_EQ(ReadFile("fort.100"),
            "--Input error: Population Type out of range!\n  Population Type =       21\n"
            "--Input error: Population Size out of range!\n  Population Size =       -5\n");
  EXPECT_EQ(ReadFile("sizeless.met").find("M1"), std::string::npos);
}

}  // namespace
