#include <array>
#include <string>
#include <vector>

#include "platform/unit.h"
#include "results/multi_parent_results.h"
#include "tests/results/result_arrays.h"
#include "tests/support/scratch.h"

namespace {

using result_arrays::HostMap;
using result_arrays::Lines;
using result_arrays::Words;
using support::Exists;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

void Write(const std::string& file, const std::string& stem, HostMap map, int32_t markers,
           std::array<int32_t, 3> switches) {
  const std::vector<float> rec = result_arrays::Rec(markers, 0), lod = result_arrays::Lod(markers, 0),
                           distance = result_arrays::Distance(markers, 0);
  results::WriteMultiParentResults(
      file, stem,
      {switches, map.View("Group_"), markers, map.deleted.data(), rec.data(), lod.data(), distance.data()});
  for (const int32_t unit : {30000, 30002, 30003, 40001, 40004, 40007, 100}) {
    EXPECT_FALSE(platform::IsConnected(unit)) << unit;
  }
}

// A long position, and one whose fifth decimal is rounded.
const HostMap kMap = {{3, 1, 2}, {3, 1, 7, 2, 6, 5}, {4}, {0, 4.5F, 123456.0625F, 0.25F, 0, 2.00005F}, {}};

TEST(MultiParentOutput, WritesEveryFileAskedFor) {
  for (std::size_t asked = 0; asked <= 3; ++asked) {
    const ScratchFolder folder;
    const std::array<int32_t, 3> switches = {asked == 0 || asked == 1 ? 1 : 0,
                                             asked == 0 || asked == 2 ? 1 : 2, asked == 0 ? 1 : -1};
    Write(SOURCE_DIR "/tests/golden/multi_parent.plm", "out", kMap, 7, switches);
    const std::string extensions[] = {".rec", ".lod", ".dis", ".plq", ".sum"};
    for (std::size_t e = 0; e < 5; ++e) {
      const std::string name = "out" + extensions[e];
      if (e < 3 && switches[e] != 1) {
        EXPECT_FALSE(Exists(name)) << name;
      } else {
        EXPECT_EQ(ReadFile(name), ReadFile(SOURCE_DIR "/tests/golden/multi_parent" + extensions[e])) << name;
      }
    }
    EXPECT_EQ(result_arrays::LoadWithTrait(project::Module::Plq, ReadFile("out.plq"), 10), "good");
  }
}

TEST(MultiParentOutput, UnknownPopulationsHaveRowsOfGenotypesAlone) {
  const ScratchFolder folder;
  for (const int32_t population : {0, 1, 4, 5}) {
    WriteFile("in", std::to_string(population) + "\n1\n1\n2\n3\nABCD M1 A BB X\nABAB M2 C,,D\n");
    Write("in", "out", {{2}, {1, 2}, {}, {0, 1}, {}}, 2, {0, 0, 0});
    const std::vector<std::string> lines = Lines(ReadFile("out.plq"));
    // Genotypes are cut to a letter; a null keeps that of the row before.
    const bool named = population == 1 || population == 4;
    EXPECT_EQ(lines[28], (named ? "ABCD         M1" + std::string(33, ' ') : "") + " A B X");
    EXPECT_EQ(lines[29], (named ? "ABAB         M2" + std::string(33, ' ') : "") + " C B D");
    EXPECT_EQ(Words(Lines(ReadFile("out.sum")).back()), (std::vector<std::string>{"ID", "DeletedMarkers"}))
        << "every marker is on the map";
  }
}

TEST(MultiParentOutput, EachStepReadsTheFileAnew) {
  const ScratchFolder folder;
  WriteFile("out.plq", "1\n1\n1\n1\n1\nABCD M1 A\n");
  Write("out.plq", "out", {{1}, {1}, {}, {0}, {}}, 1, {1, 0, 0});
  EXPECT_EQ(Words(Lines(ReadFile("out.sum"))[1])[2], "!Population");
  EXPECT_EQ(Words(Lines(ReadFile("out.rec"))[1]), (std::vector<std::string>{"1", "!Population"}));
}

TEST(MultiParentOutput, TruncatedFilesGiveWhatCouldBeRead) {
  const ScratchFolder folder;
  const std::string text = "3\n2\n1\n2\n2\nABCDEFGH M1 A B\nABABABAB M2 2*A\n";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    WriteFile("in", text.substr(0, length));
    Write("in", "out", {{2}, {2, 1}, {3}, {0, 1}, {}}, 3, {1, 1, 1});
    const bool first = length >= text.find("\nABAB");
    EXPECT_EQ(ReadFile("out.rec").find("           2 M1 ") != std::string::npos, first) << length;
    EXPECT_EQ(Lines(ReadFile("out.sum")).size(), 10U) << length;
  }
}

}  // namespace
