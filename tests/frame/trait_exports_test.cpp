// The checks of the mapping engines' files and the genomic-selection pre-reads, as a host meets them.

#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "frame/exports.h"
#include "platform/unit.h"
#include "tests/support/scratch.h"

namespace {

using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

using PlainCheck = void (*)(const int32_t*, const char*, int32_t*) noexcept;

struct CheckCase {
  const char* code;
  PlainCheck check;
  std::string good;  // a file that passes
  std::string log, console, failureInLog, failureOnConsole;
};

const std::string kMap = "C1 1\na 1 0\n";

std::vector<CheckCase> Cases() {
  const std::string read = "f.txt read successfully!\n";
  const auto found = [](const std::string& code) {
    return " --Error found. Please check " + code + ".log for details!\n";
  };
  const auto input = [](const std::string& code) {
    return "--Error in the input file. Please check " + code + ".log for details!\n";
  };
  return {
      {"BIP", CHECKERRORBIP, "1\n4\n1\n2\n1\n1\n2\n1\n" + kMap + "a A B\nt 1 2\nparameters\n",
       read + " DLL CheckErrorBIP run successfully!\n", " " + read, "", found("BIP")},
      {"CSL", CHECKERRORCSL, "1\n1\n2\n1\n1\n1\na A B\nt 1 2\n",
       read + " DLL CheckErrorCSL run successfully!\n", " " + read, "", found("CSL")},
      {"PLQ", CHECKERRORPLQ, "1\n1\n2\n1\n1\n2\n1\n" + kMap + "ABCD a A B\nt 1 2\n",
       read + " DLL CheckErrorPLQ run successfully!\n", " " + read, "", found("PLQ")},
      {"CDQ", CHECKERRORCDQ, "1\n1\n2\n1\n1\n2\n1\n" + kMap + "ABCD a AC BD\nt 1 2\n",
       read + " DLL CheckErrorCDQ run successfully!\n", " " + read, "", found("CDQ")},
      {"NAM", CHECKERRORNAM, "4\n1\n2\n1\n1\n1\n1\nfamily 2\n" + kMap + "a A B\nt 1 2\n",
       read + " DLL CheckErrorNAM run successfully!\n", "", "", found("NAM")},
      {"SDL", CHECKERRORSDL, "4\n1\n2\n1\n1\n2\n" + kMap + "a A B\n",
       "   " + read + "--DLL CheckErrorSDL run successfully!\n", "  " + read, " --Error in the input file!\n",
       input("SDL")},
      {"MET", CHECKERRORMET, "4\n1\n2\n1\n1\n2\n1\n" + kMap + "a A B\nt 1 2\n",
       "   " + read + "--DLL CheckErrorMET run successfully!\n", "  " + read, " --Error in the input file!\n",
       input("MET")},
  };
}

std::string Call(PlainCheck check, const std::string& text, int32_t& status) {
  WriteFile("f.txt", text);
  const int32_t length = 7;
  CaptureStdout();
  check(&length, "f.txt  ", &status);
  return GetCapturedStdout();
}

TEST(PlainChecks, CloseInTheWordsOfTheirModule) {
  const ScratchFolder folder;
  for (const CheckCase& c : Cases()) {
    const std::string log = std::string(c.code) + ".log";
    int32_t status = 7;
    Call(c.check, c.good, status);  // twice: the first call released its store
    EXPECT_EQ(Call(c.check, c.good, status), c.console) << c.code;
    EXPECT_EQ(ReadFile(log), c.log);
    EXPECT_EQ(status, c.check == CHECKERRORSDL ? 0 : 7) << c.code << ": left alone on success, but by SDL";
    EXPECT_FALSE(platform::IsConnected(100));

    EXPECT_EQ(Call(c.check, "x\n", status), c.failureOnConsole) << c.code;
    EXPECT_EQ(status, 100);
    const std::string failed = ReadFile(log);
    EXPECT_TRUE(failed.starts_with("--Input error: cannot read ")) << failed;
    EXPECT_EQ(failed.substr(failed.find('\n') + 1), c.failureInLog) << c.code;

    // A log that is open already is appended to and left open, but for a failing SDL.
    platform::OpenUnit(100, log, platform::OpenStatus::Replace);
    Call(c.check, c.good, status);
    EXPECT_TRUE(platform::IsConnected(100)) << c.code;
    Call(c.check, "x\n", status);
    EXPECT_EQ(platform::IsConnected(100), c.check != CHECKERRORSDL) << c.code;
    platform::CloseUnit(100);
    EXPECT_EQ(ReadFile(log), c.log + failed) << c.code;
  }
}

struct Selection {
  int32_t status = 5, numTraits = -9, breedingSize = -9;
  std::vector<int32_t> names;
};

Selection Traits(const std::string& text) {
  WriteFile("g.txt", text);
  Selection s;
  const int32_t length = 5;
  GSFINDNUMTRAITS(&length, "g.txt", &s.numTraits, &s.status);
  return s;
}

Selection Names(const std::string& text, int32_t hostTraits) {
  WriteFile("g.txt", text);
  Selection s;
  s.names.assign(static_cast<std::size_t>(19 * hostTraits + 1), -9);
  const int32_t length = 5;
  GSFINDTRAITNAMEBPS(&length, "g.txt", &hostTraits, s.names.data(), &s.breedingSize, &s.status);
  return s;
}

TEST(GenomicSelection, CountsAndNames) {
  const ScratchFolder folder;
  const std::string file =
      "! markers\n2\n3 training\n2\n!traits\n2\n!markers\nm1 0 1 2\nm2 2 1 0\n!traits\nyield 1 2 3\n'plant "
      "height' 4 5 "
      "6\n!breeding\nm1 0 1\nother 1 1\n";
  const Selection traits = Traits(file);
  EXPECT_EQ(traits.status, 5);
  EXPECT_EQ(traits.numTraits, 2);
  EXPECT_EQ(ReadFile("fort.100"), "--Input error: MarkerType are not matched!\n")
      << "told, and still a success";
  EXPECT_FALSE(platform::IsConnected(102));

  const Selection names = Names(file.substr(0, file.find("!breeding")) + "not read", 2);
  EXPECT_EQ(names.status, 5);
  EXPECT_EQ(names.breedingSize, 2);
  EXPECT_EQ(names.names[0], 'y');
  EXPECT_EQ(names.names[1], 'p');
  EXPECT_EQ(names.names[2 * 5 + 1], ' ') << "the blank of 'plant height'";
  EXPECT_EQ(names.names[2 * 18], ' ') << "all 19 places are written";
  EXPECT_EQ(names.names[38], -9);
  EXPECT_EQ(Names(file, 1).names[18], ' ');
  const Selection more = Names(file, 3);
  EXPECT_EQ(more.names[1], 'p');
  EXPECT_EQ(more.names[2], -9) << "a trait that the file has not is left alone";
}

TEST(GenomicSelection, ReportsGoToTheDefaultFile) {
  const ScratchFolder folder;
  const std::string head = "2\n2\n1\n1\n", markers = "m1 0 1\nm2 2 1\n", trait = "t 1.5 2\n";
  const std::string row2 = "--Input error: cannot read MarkerType!\n  MarkerID =        2\n";
  struct Case {
    const char* rule;
    std::string text, traitsLog, namesLog;
    int32_t traitsStatus, namesStatus;
  };
  const Case cases[] = {
      {"markers", "x\n", "--Input error: cannot read number of markers\n",
       "--Input error: cannot read number of markers\n", -1, -1},
      {"training", "2\nx\n", "--Input error: cannot read number of population size for training population\n",
       "--Input error: cannot read number of population size for training population\n", -1, -1},
      {"breeding", "2\n2\nx\n",
       "--Input error: cannot read number of population size for breeding population\n",
       "--Input error: cannot read number of population size for breeding population\n", -1, -1},
      {"traits", "2\n2\n1\n1.5\n", "--Input error: cannot read number of traits\n",
       "--Input error: cannot read number of traits\n", -1, -1},
      {"a genotype that is no integer", head + "m1 0 1\nm2 0.5 1\n" + trait, row2, row2, -1, -1},
      {"a phenotype", head + markers + "t 1.5 x\n",
       "--Input error: cannot read PhenoType!\n  TraitID =        1\n",
       "--Input error: cannot read phenotype!\n  TraitID =        1\n", -1, -1},
      {"a breeding genotype is not read for the names", head + markers + trait + "n1 0\nm2 x\n",
       "--Input error: MarkerType are not matched!\n" + row2, "", -1, 5},
      {"counts of zero and below make empty tables", "0\n-3\n-1\n0\nrest\n", "", "", 5, 5},
      {"a count that is only claimed", "2\n2000000000\n1\n1\nm1 0 1\n",
       "--Input error: cannot read MarkerType!\n  MarkerID =        1\n",
       "--Input error: cannot read MarkerType!\n  MarkerID =        1\n", -1, -1},
  };
  for (const Case& c : cases) {
    platform::CloseUnit(100);
    WriteFile("fort.100", "");
    EXPECT_EQ(Traits(c.text).status, c.traitsStatus) << c.rule;
    EXPECT_EQ(ReadFile("fort.100"), c.traitsLog) << c.rule;
    EXPECT_EQ(platform::IsConnected(102), c.traitsStatus == -1)
        << c.rule << ": the file stays open on a report";
    platform::CloseUnit(100);
    WriteFile("fort.100", "");
    EXPECT_EQ(Names(c.text, 1).status, c.namesStatus) << c.rule << ", and a later call starts afresh";
    EXPECT_EQ(ReadFile("fort.100"), c.namesLog) << c.rule;
  }
  EXPECT_EQ(Traits("0\n0\n0\n-4\n").numTraits, -4);
  const auto files = std::distance(std::filesystem::directory_iterator("."), {});
  EXPECT_EQ(files, 2) << "the file, fort.100, and no log";
}

}  // namespace
