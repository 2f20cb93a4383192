// The exports as a host meets them: logs, standard output, Status, arrays, units left open.

#include "frame/exports.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "platform/unit.h"
#include "project/store.h"
#include "recombination/pair_tables.h"
#include "tests/support/scratch.h"
#include "tests/support/untouched.h"

namespace {

using support::Exists;
using support::kUntouched;
using support::kUntouchedReal;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

std::string F2File(const std::string& rows, const std::string& anchors) {
  return "!type\n7\n!function\n2\n!space\n1\n!markers\n3\n!size\n4\n!types\n" + rows + "!anchors\n" + anchors;
}
const std::string kRows = "M1 A H B X\nM2 A H B A\nM3 D B D D\n";
const std::string kAnchors = "M1 0\nM2 2\nM3 1\n";

// What CHECKERRORMAP or CHECKERRORBIN came to; places of the arrays that were not written hold kUntouched.
struct Outcome {
  int32_t status = 0;
  std::string console;
  std::vector<int32_t> scalars, names, anchors, countA, countH, countB, countX, category;
  std::vector<float> chi, p, rec, lod, crossovers, distance, missing;
};

Outcome Prepared(int32_t n) {
  const auto count = static_cast<std::size_t>(n);
  const std::vector<int32_t> integers(count + 2, kUntouched);
  const std::vector<float> reals(count + 2, kUntouchedReal),
      pairs(count * (count - 1) / 2 + 2, kUntouchedReal);
  Outcome o;
  o.scalars.assign(4, kUntouched);
  o.names.assign(35 * count + 1, kUntouched);
  o.anchors = o.countA = o.countH = o.countB = o.countX = o.category = integers;
  o.chi = o.p = o.missing = reals;
  o.rec = o.lod = o.crossovers = o.distance = pairs;
  return o;
}

Outcome CheckMap(const std::string& name, int32_t n) {
  Outcome o = Prepared(n);
  const auto length = static_cast<int32_t>(name.size());
  CaptureStdout();
  CHECKERRORMAP(&length, name.data(), &n, &o.status, &o.scalars[0], &o.scalars[1], &o.scalars[2],
                &o.scalars[3], o.names.data(), o.anchors.data(), o.countA.data(), o.countH.data(),
                o.countB.data(), o.countX.data(), o.category.data(), o.chi.data(), o.p.data(), o.rec.data(),
                o.lod.data(), o.crossovers.data(), o.distance.data());
  o.console = GetCapturedStdout();
  return o;
}

Outcome CheckBin(int32_t moduleCode, const std::string& name, int32_t n) {
  Outcome o = Prepared(n);
  const auto length = static_cast<int32_t>(name.size());
  CaptureStdout();
  CHECKERRORBIN(&moduleCode, &length, name.data(), &n, o.names.data(), o.anchors.data(), o.missing.data(),
                &o.status);
  o.console = GetCapturedStdout();
  return o;
}

bool Untouched(const Outcome& o) {
  const auto integers = [](const std::vector<int32_t>& v) {
    return std::all_of(v.begin(), v.end(), [](int32_t x) { return x == kUntouched; });
  };
  const auto reals = [](const std::vector<float>& v) {
    return std::all_of(v.begin(), v.end(), [](float x) { return x == kUntouchedReal; });
  };
  return integers(o.scalars) && integers(o.names) && integers(o.anchors) && integers(o.countA) &&
         integers(o.countH) && integers(o.countB) && integers(o.countX) && integers(o.category) &&
         reals(o.chi) && reals(o.p) && reals(o.rec) && reals(o.lod) && reals(o.crossovers) &&
         reals(o.distance) && reals(o.missing);
}

std::string NameOf(const Outcome& o, int32_t n, int32_t m) {
  std::string name;
  for (int32_t c = 1; c <= 35; ++c) {
    name += static_cast<char>(o.names[static_cast<std::size_t>((c - 1) * n + m - 1)]);
  }
  return name;
}

TEST(PreRead, TellsTheCountAndClosesItsLog) {
  const ScratchFolder folder;
  struct Case {
    const char* rule;
    char module;
    int32_t moduleCode;
    std::string header, log;
    int32_t status, numMarkers;
  };
  const std::string mapRun = "--DLL MAPFindNumMarkers run successfully!\n";
  const std::string outOfRange = "--Input error: Number of Markers out of range!\n  Number of Markers = ";
  const std::string population =
      "--Input error: Population Type out of range!\n  Population Type =        5\n";
  const Case cases[] = {
      {"MAP", 'M', 0, "7\n1\n1\n12\n", mapRun, 5, 12},
      {"MAP has no range for the population", 'M', 0, "99\n1\n1\n12\n", mapRun, 5, 12},
      {"a bad count is handed out", 'M', 0, "7\n1\n1\n-3\n", outOfRange + "      -3\n", 100, -3},
      {"zero too", 'M', 0, "7\n1\n1\n0\n", outOfRange + "       0\n", 100, 0},
      {"a null keeps the host's value", 'M', 0, "7\n1\n1\n,\n", outOfRange + "     -77\n", 100, kUntouched},
      {"an unreadable count is not touched", 'M', 0, "7\n1\n1\nx\n",
       "--Input error: cannot read Number of Markers!\n", 100, kUntouched},
      {"the first error ends it", 'M', 0, "7\n9\n9\n5\n",
       "--Input error: Mapping Function out of range!\n  Mapping Function =        9\n", 100, kUntouched},
      {"CDM", 'C', 0, "2\n1\n1\n4\n", "--DLL CDMFindNumMarkers run successfully!\n", 5, 4},
      {"CDM has two populations", 'C', 0, "5\n1\n1\n4\n", population, 100, kUntouched},
      {"PLM", 'P', 0, "4\n1\n1\n4\n", "--DLL PLMFindNumMarkers run successfully!\n", 5, 4},
      {"PLM has four populations", 'P', 0, "5\n1\n1\n4\n", population, 100, kUntouched},
      {"BIN takes the host's rules", 'B', 20, "5\n1\n1\n4\n", population, 100, kUntouched},
      {"BIN without rules", 'B', 7, "5\n1\n1\n4\n", "--DLL BINFindNumMarkers run successfully!\n", 5, 4},
  };
  for (const Case& c : cases) {
    WriteFile("in.txt", c.header);
    const std::string name = "in.txt   ";
    const auto length = static_cast<int32_t>(name.size());
    int32_t status = 5;
    int32_t numMarkers = kUntouched;
    CaptureStdout();
    switch (c.module) {
      case 'M':
        MAPFINDNUMMARKERS(&length, name.data(), &numMarkers, &status);
        break;
      case 'C':
        CDMFINDNUMMARKERS(&length, name.data(), &numMarkers, &status);
        break;
      case 'P':
        PLMFINDNUMMARKERS(&length, name.data(), &numMarkers, &status);
        break;
      default:
        BINFINDNUMMARKERS(&c.moduleCode, &length, name.data(), &numMarkers, &status);
    }
    EXPECT_EQ(GetCapturedStdout(), "") << c.rule;
    EXPECT_EQ(status, c.status) << c.rule;
    EXPECT_EQ(numMarkers, c.numMarkers) << c.rule;
    const std::string log = c.module == 'M'   ? "MAP.log"
                            : c.module == 'C' ? "CDM.log"
                            : c.module == 'P' ? "PLM.log"
                                              : "BIN.log";
    EXPECT_EQ(ReadFile(log), c.log) << c.rule;
    EXPECT_FALSE(platform::IsConnected(100) || platform::IsConnected(102)) << c.rule;
  }
}

TEST(PreRead, AppendsToWhateverUnit100Has) {
  const ScratchFolder folder;
  WriteFile("good.txt", "7\n1\n1\n12\n");
  WriteFile("bad.txt", "7\n1\n1\n0\n");
  platform::WriteRecord(100, "left by an earlier call");
  int32_t status = 0;
  int32_t numMarkers = 0;
  const int32_t seven = 7;
  const int32_t eight = 8;
  MAPFINDNUMMARKERS(&seven, "bad.txt", &numMarkers, &status);
  EXPECT_EQ(status, 100);
  EXPECT_TRUE(platform::IsConnected(100)) << "not closed by a call that did not open it";
  MAPFINDNUMMARKERS(&eight, "good.txt", &numMarkers, &status);
  EXPECT_FALSE(Exists("MAP.log"));
  EXPECT_EQ(ReadFile("fort.100"),
            "left by an earlier call\n--Input error: Number of Markers out of range!\n  Number of Markers =  "
            "      0\n"
            "--DLL MAPFindNumMarkers run successfully!\n");
  // The question of a check is another one: is its log connected. It takes unit 100 over.
  WriteFile("f2.map", F2File(kRows, kAnchors));
  EXPECT_EQ(CheckMap("f2.map", 3).status, 0);
  EXPECT_FALSE(platform::IsConnected(100));
  EXPECT_TRUE(Exists("MAP.log"));
}

TEST(CheckErrorMap, HandsOutWhatWasRead) {
  const ScratchFolder folder;
  WriteFile("f2.map", F2File(kRows, kAnchors));
  WriteFile("MAP.log", "an old log\n");
  const Outcome o = CheckMap("f2.map  ", 3);
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(ReadFile("MAP.log"), "f2.map read successfully!\n  DLL CheckErrrorMAP run successfully!\n");
  EXPECT_EQ(o.console, " f2.map read successfully!\n  DLL CheckErrrorMAP run successfully!\n");
  EXPECT_EQ(o.scalars, (std::vector<int32_t>{7, 2, 1, 4}));
  EXPECT_EQ(NameOf(o, 3, 2), "M2" + std::string(33, ' '));
  EXPECT_EQ(o.anchors, (std::vector<int32_t>{0, 2, 1, kUntouched, kUntouched}));
  EXPECT_EQ(o.category, (std::vector<int32_t>{1, 1, 12, kUntouched, kUntouched}));
  EXPECT_EQ(o.countA, (std::vector<int32_t>{1, 2, 3, kUntouched, kUntouched})) << "D counts as A";
  EXPECT_EQ(o.countX, (std::vector<int32_t>{1, 0, 0, kUntouched, kUntouched}));
  EXPECT_EQ(o.rec[0], 0.0F);
  EXPECT_GT(o.lod[0], 0.0F);
  EXPECT_EQ(o.distance[0], 0.0F);
  EXPECT_EQ(o.rec[3], kUntouchedReal) << "three pairs";
  EXPECT_FALSE(platform::IsConnected(100));
}

TEST(CheckErrorMap, EveryArgumentHasItsOwnArray) {
  const ScratchFolder folder;
  WriteFile("f2.map",
            "7\n2\n1\n2\n14\nM1 A A A A H H H B B X X X X X\nM2 A A H A H H B B H A X X X B\nM1 0\nM2 0\n");
  const Outcome o = CheckMap("f2.map", 2);
  EXPECT_EQ((std::vector<int32_t>{o.countA[0], o.countH[0], o.countB[0], o.countX[0]}),
            (std::vector<int32_t>{4, 3, 2, 5}));
  EXPECT_NEAR(o.chi[0], 17.0F / 9, 1e-5F);
  EXPECT_NEAR(o.p[0], 0.3889F, 1e-4F);
  const int32_t category[] = {1, 1};
  float rec = 0, lod = 0, crossovers = 0, distance = 0;
  recombination::ComputePairTables({7, 2, 14, 2, category, "AAAAHHHBBXXXXXAAHAHHBBHAXXXB"},
                                   {&rec, &lod, &crossovers, &distance});
  const std::vector<float> expected = {rec, lod, crossovers, distance};
  EXPECT_EQ((std::vector<float>{o.rec[0], o.lod[0], o.crossovers[0], o.distance[0]}), expected);
  EXPECT_EQ(std::set<float>(expected.begin(), expected.end()).size(), 4U) << "no two alike";
}

TEST(CheckErrorMap, TouchesNothingOnFailure) {
  const ScratchFolder folder;
  WriteFile("bad.map", F2File("M1 A H B X\nM2 A H Q A\nM3 D B D D\n", kAnchors));
  const Outcome o = CheckMap("bad.map", 3);
  EXPECT_EQ(o.status, 100);
  EXPECT_TRUE(Untouched(o));
  EXPECT_EQ(o.console, " --Error found. Please check MAP.log for details!\n");
  EXPECT_EQ(ReadFile("MAP.log"),
            "--Input error: Illegal Markertype value in input file!\n"
            "  MarkerID, LineID, Markertype =        2       3  Q \n");
  WriteFile("good.map", F2File(kRows, kAnchors));
  EXPECT_EQ(CheckMap("good.map", 3).status, 0) << "the store was released";
}

TEST(CheckErrorMap, TheHostsCountBoundsTheCopying) {
  const ScratchFolder folder;
  WriteFile("f2.map", F2File(kRows, kAnchors));
  const Outcome exact = CheckMap("f2.map", 3);
  const Outcome fewer = CheckMap("f2.map", 2);
  EXPECT_EQ(fewer.anchors[1], 2);
  EXPECT_EQ(fewer.anchors[2], kUntouched);
  EXPECT_EQ(fewer.rec[0], exact.rec[0]);
  EXPECT_EQ(fewer.rec[1], kUntouchedReal) << "one pair";
  EXPECT_EQ(NameOf(fewer, 2, 2), NameOf(exact, 3, 2)) << "the stride is the host's";
  const Outcome more = CheckMap("f2.map", 5);
  EXPECT_EQ(NameOf(more, 5, 3), NameOf(exact, 3, 3));
  EXPECT_EQ(more.names[3], kUntouched) << "elements beyond the file's count are left alone";
  EXPECT_EQ(more.chi[3], kUntouchedReal);
  EXPECT_EQ(more.lod[2], exact.lod[2]);
  EXPECT_EQ(more.lod[3], kUntouchedReal) << "the pairs of the file's count";
  EXPECT_TRUE(CheckMap("f2.map", 0).status == 0);
}

TEST(CheckErrorMapDeathTest, ALogLeftOpenIsAppendedToAndTheStoreKept) {
  const ScratchFolder folder;
  WriteFile("f2.map", F2File(kRows, kAnchors));
  platform::OpenUnit(100, "MAP.log", platform::OpenStatus::Replace);
  platform::WriteRecord(100, "before");
  EXPECT_EQ(CheckMap("f2.map", 3).status, 0);
  EXPECT_TRUE(platform::IsConnected(100));
  EXPECT_EXIT(CheckMap("f2.map", 3), testing::ExitedWithCode(1), "still holds the last load");
  project::ReleaseStore(project::Module::Map);
  WriteFile("bad.map", "21\n");
  EXPECT_EQ(CheckMap("bad.map", 3).status, 100);
  EXPECT_TRUE(platform::IsConnected(100)) << "a failure leaves it open, too";
  platform::CloseUnit(100);
  EXPECT_EQ(ReadFile("MAP.log"),
            "before\nf2.map read successfully!\n  DLL CheckErrrorMAP run successfully!\n"
            "--Input error: Population Type out of range!\n  Population Type =       21\n");
}

TEST(CheckErrorBin, HandsOutNamesAnchorsAndMissingShares) {
  const ScratchFolder folder;
  WriteFile("f2.bin", F2File("M1 A H B X\n\xe9\xff A X X X\nM3 X X X A\n", "M1 0\n\xe9\xff 2\nM3 1\n"));
  const Outcome o = CheckBin(102, "f2.bin", 3);
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(ReadFile("BIN.log"), "f2.bin read successfully!\n--DLL CheckErrorBIN run successfully!\n");
  EXPECT_EQ(o.console, " f2.bin read successfully!\n");
  EXPECT_EQ(o.missing, (std::vector<float>{25.0F, 75.0F, 75.0F, kUntouchedReal, kUntouchedReal}));
  EXPECT_EQ(o.anchors, (std::vector<int32_t>{0, 2, 1, kUntouched, kUntouched}));
  EXPECT_EQ(o.names[1], 0xe9) << "bytes are widened without sign";
  EXPECT_EQ(o.names[4], 0xff);
  WriteFile("thirds.bin", "7\n1\n1\n1\n3\nM1 A X B\nM1 0\n");
  const float third = 1.0F / 3.0F;
  EXPECT_EQ(CheckBin(102, "thirds.bin", 1).missing[0], third * 100.0F) << "divided first, in 32 bits";

  const Outcome refused = CheckBin(20, "f2.bin", 3);
  EXPECT_EQ(refused.status, 100);
  EXPECT_TRUE(Untouched(refused));
  EXPECT_EQ(refused.console, " --Error found. Please check BIN.log for details!\n");
  EXPECT_EQ(ReadFile("BIN.log"),
            "--Input error: Population Type out of range!\n  Population Type =        7\n");

  platform::OpenUnit(100, "BIN.log", platform::OpenStatus::Replace);
  CheckBin(102, "f2.bin", 3);
  CheckBin(102, "f2.bin", 3);  // BIN releases its store whether the log was open or not
  EXPECT_TRUE(platform::IsConnected(100));
  platform::CloseUnit(100);
  EXPECT_EQ(ReadFile("BIN.log").size(), 2 * ReadFile("BIN.log").find("f2.bin", 1));
}

TEST(CheckErrorBin, WithoutRulesNamesAreBlankAndNothingIsMissing) {
  const ScratchFolder folder;
  WriteFile("no.bin", "1\n1\n1\n2\n4\n' ' 3\n' ' 4\n");
  const Outcome o = CheckBin(1, "no.bin", 2);
  EXPECT_EQ(o.status, 0);
  EXPECT_EQ(NameOf(o, 2, 2), std::string(35, ' '));
  EXPECT_EQ(o.missing[1], 0.0F);
  EXPECT_EQ(o.anchors[1], 4);
}

TEST(ExportsDeathTest, AFileThatCannotBeOpenedEndsTheProcess) {
  const ScratchFolder folder;
  const int32_t negative = -4;
  int32_t numMarkers = 0;
  int32_t status = 0;
  EXPECT_EXIT(MAPFINDNUMMARKERS(&negative, "f2.map", &numMarkers, &status), testing::ExitedWithCode(1),
              "^tessarmont: cannot open ''");
  EXPECT_FALSE(Exists("MAP.log")) << "the project file comes first";
  EXPECT_EXIT(CheckMap("absent.map", 1), testing::ExitedWithCode(1), "cannot open 'absent.map'");
  EXPECT_EQ(ReadFile("MAP.log"), "");
  EXPECT_EXIT(CheckMap("MAP.log", 1), testing::ExitedWithCode(1), "in use already");
  std::filesystem::create_directory("BIN.log");
  WriteFile("f2.bin", F2File(kRows, kAnchors));
  EXPECT_EXIT(CheckBin(102, "f2.bin", 3), testing::ExitedWithCode(1), "cannot write 'BIN.log'");
}

TEST(Tools, NeedNoFile) {
  const ScratchFolder folder;
  const int32_t backcross = 1;
  const int32_t codominant = 11;
  const float table[9] = {40, 10, 0, 10, 40, 0, 0, 0, 0};
  float rec = 0;
  float stdErr = 0;
  float lod = 0;
  float p = 0;
  float haldane = 0;
  float kosambi = 0;
  TOOLTWOPOINTREC(&backcross, &codominant, table, &rec, &stdErr, &lod, &p, &haldane, &kosambi);
  EXPECT_FLOAT_EQ(rec, 0.2F);
  EXPECT_FLOAT_EQ(stdErr, 0.04F);
  EXPECT_NEAR(lod, 8.3707F, 1e-3F);
  EXPECT_NEAR(haldane, 25.5413F, 1e-3F);
  EXPECT_NEAR(kosambi, 21.1824F, 1e-3F);

  const int32_t n = 4;
  const float line[6] = {30, 10, 20, 20, 10, 10};  // places 0, 30, 10, 20
  int32_t order[4] = {9, 9, 9, 9};
  MAPNNTWOOPT(&n, line, order);
  EXPECT_TRUE((std::vector<int32_t>(order, order + 4) == std::vector<int32_t>{1, 3, 4, 2}) ||
              (std::vector<int32_t>(order, order + 4) == std::vector<int32_t>{2, 4, 3, 1}));
  int32_t anchored[4] = {1, 2, 3, 0};
  MAPBYANCHORORDER(&n, line, anchored);
  EXPECT_EQ(std::count(anchored, anchored + 4, 4), 1);
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

}  // namespace
