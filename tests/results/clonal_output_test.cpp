#include <optional>
#include <string>
#include <vector>

#include "platform/unit.h"
#include "results/clonal_results.h"
#include "tests/results/result_arrays.h"
#include "tests/support/load.h"
#include "tests/support/scratch.h"

namespace {

using result_arrays::Distance;
using result_arrays::HostMap;
using result_arrays::Lines;
using result_arrays::LoadWithTrait;
using result_arrays::Lod;
using result_arrays::Phase;
using result_arrays::Rec;
using result_arrays::Words;
using support::Exists;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

const std::vector<std::string> kAlways = {".hap", ".cdq", ".sum", ".sumf", ".summ"};
const std::vector<std::string> kTables = {".rec",  ".recf", ".recm", ".lod", ".lodf",
                                          ".lodm", ".dis",  ".disf", ".dism"};

// A host's call: pair arrays of the given size, and the map.
struct Host {
  HostMap map;
  int32_t markers;
  std::array<int32_t, 3> switches = {0, 0, 0};
  std::array<std::vector<float>, 3> rec{}, lod{}, distance{};
  std::vector<int32_t> phase{};

  Host(HostMap hostMap, int32_t fileMarkers) : map(std::move(hostMap)), markers(fileMarkers) {
    for (int32_t which = 0; which < 3; ++which) {
      rec[static_cast<std::size_t>(which)] = Rec(markers, which);
      lod[static_cast<std::size_t>(which)] = Lod(markers, which);
      distance[static_cast<std::size_t>(which)] = Distance(markers, which);
    }
    phase = Phase(markers);
  }
  void Write(const std::string& file, const std::string& stem) {
    const auto family = [](const std::array<std::vector<float>, 3>& values) -> results::PairFamily {
      return {values[0].data(), values[1].data(), values[2].data()};
    };
    results::WriteClonalResults(file, stem,
                                {switches, map.View("LG"), markers, map.deleted.data(), family(rec),
                                 family(lod), family(distance), phase.data()});
    for (const int32_t unit : {30000, 30001, 30002, 30003, 30004, 30005, 40001, 40005, 40009, 100}) {
      EXPECT_FALSE(platform::IsConnected(unit)) << unit;
    }
  }
};

// An empty group, one of which a parent has nothing, one of a single marker; deleted markers out of order.
const HostMap kClonalMap = {{8, 0, 2, 1, 5},
                            {9, 2, 7, 5, 1, 4, 11, 14, 3, 12, 6, 20, 16, 8, 15, 13},
                            {19, 10, 18, 17},
                            {0, 3.14159F, 3.14159F, 10.125F, 25.333F, 31.0625F, 55.005F, 80.7F, 0, 12.5F, 0,
                             1.5F, 2.25F, 8, 17.77F, 1200.5F},
                            {}};

void ExpectGolden(const std::string& golden, const std::vector<std::string>& extensions) {
  for (const std::string& extension : extensions) {
    EXPECT_EQ(ReadFile("out" + extension), ReadFile(SOURCE_DIR "/tests/golden/" + golden + extension))
        << golden << extension;
  }
}

TEST(ClonalOutput, WritesEveryFile) {
  const ScratchFolder folder;
  Host host(kClonalMap, 20);
  host.switches = {1, 1, 1};
  for (int run = 1; run <= 2; ++run) {  // the second replaces the first
    host.Write(SOURCE_DIR "/tests/golden/clonal.cdm", "out");
    ExpectGolden("clonal", kAlways);
    ExpectGolden("clonal", kTables);
  }
  HostMap map = kClonalMap;
  map.places = {8, 3, 5};
  map.deleted = {17, 18, 19, 10};
  map.positions[10] = 20;
  Host(map, 20).Write(SOURCE_DIR "/tests/golden/double_cross.cdm", "out");
  ExpectGolden("double_cross", kAlways);
  EXPECT_EQ(LoadWithTrait(project::Module::Cdq, ReadFile("out.cdq"), 8), "good");
}

TEST(ClonalOutput, SwitchesSelectTables) {
  for (std::size_t family = 0; family < 3; ++family) {
    const ScratchFolder folder;
    Host host(kClonalMap, 20);
    host.switches = {2, -1, 0};
    host.switches[family] = 1;
    host.Write(SOURCE_DIR "/tests/golden/clonal.cdm", "out");
    for (std::size_t t = 0; t < kTables.size(); ++t) {
      EXPECT_EQ(Exists("out" + kTables[t]), t / 3 == family) << kTables[t];
    }
    ExpectGolden("clonal", kAlways);
  }
}

// A file of markers of one individual each, and a map of all of them in one group with the positions of a
// row.
std::string FileOf(int32_t population, const std::vector<std::string>& categoriesAndGenotypes) {
  std::string text =
      std::to_string(population) + "\n2\n1\n" + std::to_string(categoriesAndGenotypes.size()) + "\n1\n";
  int marker = 0;
  for (std::string row : categoriesAndGenotypes) {
    text += row.insert(row.find(' '), " M" + std::to_string(++marker)) + "\n";
  }
  return text;
}
HostMap OneGroup(int32_t markers) {
  HostMap map{{markers}, {}, {}, {}, {}};
  for (int32_t m = 1; m <= markers; ++m) {
    map.order.push_back(m);
    map.positions.push_back(static_cast<float>(10 * m * m));
  }
  return map;
}

TEST(ClonalOutput, PhasesAreCarriedAlongEachParent) {
  const ScratchFolder folder;
  // M2 is not on the map of AB: the pair M1, M3 decides there. The pair M3, M4 tells nothing, so M4 has phase
  // 0 in both parents and M5 copies it.
  WriteFile("in", FileOf(1, {"ABCD AC", "A=B XC", "ABCD AC", "ABCD AC", "ABCD AC"}));
  Host host(OneGroup(5), 5);
  host.phase.assign(10, 7);
  const auto set = [&](int32_t i, int32_t j, int32_t code) {
    host.phase[static_cast<std::size_t>((i - 1) * (i - 2) / 2 + j) - 1] = code;
  };
  set(2, 1, 3);  // AB repulsion, CD coupling
  set(3, 2, 2);  // AB coupling, CD repulsion
  set(3, 1, 3);
  set(5, 4, 4);
  host.Write("in", "out");
  const std::vector<std::string> lines = Lines(ReadFile("out.hap"));
  ASSERT_EQ(lines.size(), 6U);
  const std::string expected[] = {"A B C D", "X X C D", "B A D C", "X X X X", "X X X X"};
  for (std::size_t m = 0; m < 5; ++m) {
    const std::vector<std::string> words = Words(lines[m + 1]);
    ASSERT_EQ(words.size(), 9U) << lines[m + 1];
    EXPECT_EQ(words[4] + " " + words[5] + " " + words[6] + " " + words[7], expected[m]) << lines[m + 1];
  }
}

struct RecodeCase {
  int32_t population;
  std::string category, genotype;
  int32_t code;  // PhaseCode with the marker before
  std::string newCategory, newGenotype;
};
const RecodeCase kRecodeCases[] = {
    // in AB and CD coupling, CD repulsion, AB repulsion, both: each replaced at most once a step
    {1, "ABCD", "AC", 1, "ABCD", "AC"},
    {1, "ABCD", "AC", 2, "ABCD", "AD"},
    {1, "ABCD", "AC", 3, "ABCD", "BC"},
    {1, "ABCD", "AC", 4, "ABCD", "BD"},
    {2, "ABCD", "BD", 4, "ABCD", "AC"},
    {1, "ABCD", "XX", 4, "ABCD", "XX"},
    {1, "ABCD", "AC", 0, "ABCD", "AC"},
    {1, "C=D", "BX", 3, "C=D", "AX"},
    {1, "C=D", "AX", 4, "C=D", "BX"},
    {1, "A=B", "XC", 2, "A=B", "XD"},
    {1, "A=B", "XD", 4, "A=B", "XC"},
    {1, "AB=CD", "AA", 1, "A=CB=D", "AA"},
    {1, "AB=CD", "AA", 2, "A=DB=C", "AA"},
    {1, "AB=CD", "AA", 3, "A=DB=C", "BB"},
    {1, "AB=CD", "BB", 4, "A=CB=D", "AA"},
    {1, "AB=CD", "AB", 4, "A=CB=D", "AB"},
    {1, "AB=CD", "AA", 0, "A=DB=C", "AA"},
    {2, "A=CB=D", "AA", 1, "A=CB=D", "AA"},
    {2, "A=CB=D", "AA", 3, "A=DB=C", "BB"},
    {2, "A=DB=C", "BB", 4, "A=DB=C", "AA"},
    {2, "A=DB=C", "BB", 2, "A=CB=D", "BB"},
    // categories that the population does not have stay, and so do their genotypes
    {1, "A=CB=D", "AA", 3, "A=CB=D", "AA"},
    {2, "AB=CD", "AA", 4, "AB=CD", "AA"},
};

TEST(ClonalOutput, RecodesByPhase) {
  for (const RecodeCase& c : kRecodeCases) {
    const ScratchFolder folder;
    WriteFile("in", FileOf(c.population, {"ABCD AC", c.category + " " + c.genotype}));
    Host host(OneGroup(2), 2);
    host.phase = {c.code};
    host.Write("in", "out");
    const std::vector<std::string> row = Words(Lines(ReadFile("out.cdq"))[37]);
    EXPECT_EQ(row, (std::vector<std::string>{c.newCategory, "M2", c.newGenotype}))
        << c.population << " " << c.category << " " << c.genotype << " " << c.code;
    EXPECT_EQ(Words(Lines(ReadFile("out.hap"))[2]).back(), c.newCategory);
  }
}

TEST(ClonalOutput, ParentsPlaceMarkersByTheirOwnDistanceOrTheWholeMap) {
  const ScratchFolder folder;
  WriteFile("in", FileOf(1, {"ABCD AC", "ABCD AC", "A=B XC", "ABCD AC", "C=D AX"}));
  Host host(OneGroup(5), 5);
  // AB has M1 M2 M4 M5. M1, M2 at exactly 0.5; M2, M4 no neighbours; M4, M5 the least float below 0.5.
  host.rec[1] = {0.5F, 0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.1F, 0.49999997F};
  host.distance[1].assign(10, 7.5F);
  host.Write("in", "out");
  const std::vector<std::string> lines = Lines(ReadFile("out.sumf"));
  const struct {
    std::string name, interval, position, rec;
  } expected[] = {{"M1", "0.00", "0.00", "0.5000"},
                  {"M2", "30.00", "30.00", "0.2256"},    // 40 - 10, Haldane
                  {"M4", "120.00", "150.00", "0.4546"},  // 160 - 40
                  {"M5", "7.50", "157.50", "0.5000"}};   // its own distance
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_EQ(Words(lines[k + 1]),
              (std::vector<std::string>{"1", "LG1", expected[k].name, expected[k].interval,
                                        expected[k].position, expected[k].rec}));
  }
  EXPECT_EQ(Words(lines.back()), (std::vector<std::string>{"1", "M3"}));
  EXPECT_EQ(Words(Lines(ReadFile("out.summ")).back()), (std::vector<std::string>{"1", "M5"}));
  EXPECT_EQ(Words(Lines(ReadFile("out.sum")).back()), (std::vector<std::string>{"ID", "DeletedMarkers"}))
      << "nothing is deleted: the heading stands alone";
}

// The first step replaces the very file that the project was read from: the second reads the new one.
TEST(ClonalOutput, EachStepReadsTheFileAnew) {
  const ScratchFolder folder;
  WriteFile("out.cdq", FileOf(1, {"ABCD AC", "ABCD AC"}));
  Host host(OneGroup(2), 2);
  host.switches = {1, 0, 0};
  host.Write("out.cdq", "out");
  EXPECT_EQ(Words(Lines(ReadFile("out.hap"))[1])[2], "M1");
  // As a marker file, the new one has 1 marker (its space unit) and 1 individual (its groups).
  EXPECT_EQ(Words(Lines(ReadFile("out.sum"))[1])[2], "!Population");
  EXPECT_EQ(Words(Lines(ReadFile("out.rec"))[1])[1], "!Population");
  EXPECT_EQ(Words(Lines(ReadFile("out.rec"))[2]), (std::vector<std::string>{"2", "0.1094"}));
}

TEST(ClonalOutput, NumbersBeyondTheFileStayBlank) {
  const ScratchFolder folder;
  WriteFile("in", FileOf(1, {"ABCD AC", "A=B XC"}));
  HostMap map{{2, 3, -1, 9}, {3, 1, 0, 2, 2, -5}, {7, 2}, std::vector<float>(6, 1.5F), {}};
  Host host(map, 2);  // arrays for two markers; a map of more places than the file has markers
  host.switches = {1, 1, 1};
  host.Write("in", "out");
  const std::vector<std::string> lines = Lines(ReadFile("out.rec"));
  ASSERT_EQ(lines.size(), 7U);
  EXPECT_EQ(lines[4], "           4 M2" + std::string(33, ' ') + "         NaN      0.1094         NaN");
  EXPECT_EQ(Lines(ReadFile("out.hap")).size(), 7U) << "the last group ends with the map";
  EXPECT_EQ(lines[3], "           3 " + std::string(35, ' ') + "         NaN         NaN");
}

TEST(ClonalOutput, TruncatedFilesGiveWhatCouldBeRead) {
  const ScratchFolder folder;
  const std::string text = "!\n1\n1\n1\n3\n2\n!types\nABCD M1 AC BD\nA=B M2 XC,'XD'\nC=D M3 2*AX\n";
  Host host(OneGroup(3), 3);
  host.switches = {1, 1, 1};
  for (std::size_t length = 0; length <= text.size(); ++length) {
    WriteFile("in", text.substr(0, length));
    host.Write("in", "out");
    const std::vector<std::string> lines = Lines(ReadFile("out.rec"));
    ASSERT_EQ(lines.size(), 4U);
    std::size_t complete = 0;  // rows that end with a line end
    for (const char* row : {"BD\n", "'XD'\n", "*AX\n"}) {
      complete += text.find(row) + std::string(row).size() <= length ? 1U : 0U;
    }
    for (std::size_t m = 1; m <= complete; ++m) {
      EXPECT_EQ(lines[m].substr(13, 3), "M" + std::to_string(m) + " ") << length;
    }
    if (complete + 1 < 3) {
      EXPECT_EQ(lines[3].substr(13, 35), std::string(35, ' ')) << length;
    }
    EXPECT_EQ(Lines(ReadFile("out.hap")).size(), 4U);
    EXPECT_EQ(Lines(ReadFile("out.sum")).size(), 10U);
  }
}

}  // namespace
