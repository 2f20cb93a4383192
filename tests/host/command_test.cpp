#include <gtest/gtest.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "command_runner.h"
#include "simulated_cross.h"

namespace {

const std::string kGood = "3\n2\n2\n2\n4\nm1 A A B B\nm2 A A B A\nm1 0\nm2 0\n";

struct ExitCase {
  std::vector<std::string> arguments;
  int code;
  std::string words;  // in what is printed on either stream
};

void ExpectExits(const Sandbox& sandbox, const std::vector<ExitCase>& cases) {
  const std::vector<std::string> before = sandbox.Names();
  for (const ExitCase& test : cases) {
    std::string line = "tessarmont";
    for (const std::string& argument : test.arguments) line += " '" + argument + "'";
    SCOPED_TRACE(line);
    const CommandResult result = RunCommand(sandbox, test.arguments);
    EXPECT_EQ(result.code, test.code) << result.out << result.err;
    EXPECT_NE((result.out + result.err).find(test.words), std::string::npos) << result.out << result.err;
    EXPECT_EQ(test.code > 1 && result.err.empty(), false) << "a failure without a word on standard error";
  }
  EXPECT_EQ(sandbox.Names(), before) << "a file was left behind";
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch)) << "a scratch folder was left behind";
}

TEST(Command, HelpVersionAndUsage) {
  const Sandbox sandbox;
  ExpectExits(sandbox, {{{"--help"}, 0, "Exit codes"},
                        {{"--version"}, 0, "tessarmont "},
                        {{"check", "--help"}, 0, "tessarmont check examples/"},
                        {{"consensus", "--help"}, 0, "tessarmont consensus both.cmp"},
                        {{"gs", "--help"}, 0, "tessarmont gs small.gs"},
                        {{"map", "--help"}, 0, "tessarmont map examples/"},
                        {{"twopoint", "--help"}, 0, "tessarmont twopoint --population F2"},
                        {{}, 2, "subcommand"},
                        {{"mop"}, 2, "mop"},
                        {{"map"}, 2, "FILE"},
                        {{"map", "x.map", "--lod", "abc"}, 2, "--lod"},
                        {{"map", "x.map", "--max-rec", "0.6"}, 2, "--max-rec"},
                        {{"map", "x.map", "--min-group", "0"}, 2, "--min-group"},
                        {{"map", "x.map", "--color"}, 2, "--color"},
                        {{"check"}, 2, "FILE"}});
}

TEST(Command, FilesThatCannotBeRead) {
  const Sandbox sandbox;
  std::filesystem::create_directory(sandbox.folder / "folder.map");
  mkfifo((sandbox.folder / "pipe.map").c_str(), 0600);
  sandbox.Write("empty.map", "");
  sandbox.Write("blank.map", "\n  \n");
  sandbox.Write("calls.map", "##fileformat=VCFv4.2\n");
  sandbox.Write("packed.map", "\x1f\x8b\x08 and so on");
  sandbox.Write("marked.map", "\xef\xbb\xbf!Population\n7\n");
  sandbox.Write("binary.map", std::string("7\n1\0\0", 5));
  sandbox.Write("old.map", "3\r2\r2\r1\r2\rm1 A B\rm1 0\r");
  sandbox.Write("traits.bip", "1\n7\n");
  sandbox.Write("notes.txt", kGood);
  sandbox.Write("declares.map", "3\n2\n2\n2000000000\n4\nm1 A A B B\n");
  std::string large = "3\n2\n2\n900000\n1\n";
  for (int m = 0; m < 900000; ++m) large += "m A\n";
  sandbox.Write("large.map", large);
  ExpectExits(sandbox, {{{"map", "traits.bip"}, 1, "is a project file of kind BIP"},
                        {{"check", "traits.bip"}, 1, "--Input error: Mapping Function out of range!"},
                        {{"gs", "missing.gs"}, 3, "there is no such file"},
                        {{"gs", "calls.map"}, 1, "looks like a VCF file"}});
  for (const char* command : {"check", "map"}) {
    ExpectExits(sandbox, {{{command, "missing.map"}, 3, "there is no such file"},
                          {{command, "empty.map/x.map"}, 3, "Not a directory"},
                          {{command, "folder.map"}, 3, "is a folder"},
                          {{command, "pipe.map"}, 3, "not a regular file"},
                          {{command, "empty.map"}, 1, "is empty"},
                          {{command, "blank.map"}, 1, "--Input error: cannot read Population Type!"},
                          {{command, "calls.map"}, 1, "looks like a VCF file"},
                          {{command, "packed.map"}, 1, "gzip"},
                          {{command, "marked.map"}, 1, "byte order mark"},
                          {{command, "binary.map"}, 1, "a binary file"},
                          {{command, "old.map"}, 1, "its lines end in CR alone"},
                          {{command, "notes.txt"}, 1, "\".txt\""},
                          {{command, "declares.map"}, 1, "cannot hold their rows"},
                          {{command, "large.map"}, 3, "of memory"}});
  }
}

TEST(Command, ResultsThatCannotBeWritten) {
  const Sandbox sandbox;
  sandbox.Write("good.map", kGood);
  std::filesystem::create_directory(sandbox.folder / "taken.bip");
  sandbox.Write("x.map.tsv", "another file");
  std::filesystem::create_hard_link(sandbox.folder / "good.map", sandbox.folder / "same.sdl");
  ExpectExits(sandbox, {{{"map", "good.map", "-o", "missing/x"}, 3, "there is no folder missing"},
                        {{"map", "good.map", "-o", "good.map/x"}, 3, "there is no folder good.map"},
                        {{"map", "good.map", "-o", "./"}, 2, "names a folder"},
                        {{"map", "good.map", "-o", "taken"}, 3, "it is a folder"},
                        {{"map", "good.map", "-o", "same"}, 3, "is the input itself"},
                        {{"map", "good.map", "-o", "x", "--lod", "9"}, 1, "no group of 2 markers"}});
  EXPECT_EQ(sandbox.Read("x.map.tsv"), "another file");
  EXPECT_EQ(sandbox.Read("good.map"), kGood);

  // A full disk: the project files cannot be finished, and nothing takes a final name.
  sandbox.Write("cross.map", MapFileText({.markersPerChromosome = {9}}));
  const CommandResult full = RunCommand(sandbox, {"map", "cross.map"}, 2000);
  EXPECT_EQ(full.code, 3) << full.out << full.err;
  EXPECT_FALSE(std::filesystem::exists(sandbox.folder / "cross.sdl"));
  EXPECT_FALSE(std::filesystem::exists(sandbox.folder / "cross.map.tsv"));
  EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));

  std::filesystem::remove(sandbox.scratch);
  const CommandResult homeless = RunCommand(sandbox, {"check", "good.map"});
  EXPECT_EQ(homeless.code, 3);
  EXPECT_NE(homeless.err.find("TMPDIR"), std::string::npos) << homeless.err;
}

TEST(Check, TellsReportLineAndFacts) {
  const Sandbox sandbox;
  sandbox.Write("good.map", kGood);
  sandbox.Write("UPPER.MAP", kGood);
  sandbox.Write("a b.bin", "3\n2\n2\n2\n4\nm1 A X B B\nm2 X X X A\nm1 0\nm2 0\n");
  sandbox.Write("plain.txt", kGood);
  sandbox.Write("bad.map", "3\n2\n2\n2\n4\nm1 A A B B\nm2 A A Q A\nm1 0\nm2 0\n");
  ExpectExits(
      sandbox,
      {{{"check", "good.map"}, 0, "good.map: good MAP file, 2 markers x 4 lines, population 3 (F1DH)"},
       {{"check", "UPPER.MAP"}, 0, "UPPER.MAP: good MAP file"},
       {{"check", "a b.bin"}, 0, "a b.bin: good BIN file, 2 markers, missing 50.0 %"},
       {{"check", "plain.txt", "--module", "map"}, 0, "plain.txt: good MAP file"},
       {{"check", "good.map", "--module", "XYZ"}, 2, "XYZ is not known"},
       {{"check", "good.map", "--module", "BIN", "--module-code", "20"}, 1, "Population Type out of range"},
       {{"check", "good.map", "bad.map"}, 1, "good.map: good"},
       {{"check", "bad.map", "missing.map"}, 3, ""}});
  const CommandResult bad = RunCommand(sandbox, {"check", "bad.map"});
  EXPECT_EQ(bad.out,
            "--Input error: Illegal Markertype value in input file!\n"
            "  MarkerID, LineID, Markertype =        2       3  Q \n"
            "bad.map, line 7\n"
            "bad.map: 1 fault in all\n"
            "  line 7: marker m2: \"Q\" is no genotype (genotype 3)\n");
  const CommandResult both = RunCommand(sandbox, {"check", "--json", "good.map", "bad.map", "missing.map"});
  EXPECT_EQ(both.code, 3);
  const auto json = nlohmann::json::parse(both.out);
  EXPECT_EQ(json["files"][0]["good"], true);
  EXPECT_EQ(json["files"][0]["markers"], 2);
  EXPECT_EQ(json["files"][1]["faults"][0]["lines"], nlohmann::json::array({7}));
  EXPECT_EQ(json["files"][2]["exit_code"], 3);
}

TEST(TwoPoint, RefusesWhatIsNoTable) {
  const Sandbox sandbox;
  const auto with = [](const std::string& population, std::vector<std::string> words) {
    words.insert(words.begin(), {"twopoint", "--population", population});
    return words;
  };
  const std::vector<std::string> counts{"40", "10", "0", "10", "40", "0", "0", "0", "0"};
  auto replaced = [&](const std::string& last) {
    std::vector<std::string> words = counts;
    words.back() = last;
    return words;
  };
  auto optioned = [&](const std::string& option, const std::string& value) {
    std::vector<std::string> words = counts;
    words.insert(words.end(), {option, value});
    return words;
  };
  ExpectExits(sandbox, {{with("21", counts), 2, "\"21\" is no population"},
                        {with("F9", counts), 2, "\"F9\" is no population"},
                        {with("1", {"1", "2"}), 2, "nine counts are wanted, 2 are given"},
                        {with("1", replaced("-1")), 2, "negative"},
                        {with("1", replaced("nan")), 2, "\"nan\" is no count"},
                        {with("1", replaced("1e99")), 2, "\"1e99\" is no count"},
                        {with("1", replaced("4x")), 2, "\"4x\" is no count"},
                        {with("1", optioned("--pair", "12")), 2, "\"12\" is no pair code"},
                        {with("1", optioned("--classes", "dominant")), 2, "two classes"},
                        {with("1", optioned("--classes", "dominant,odd")), 2, "\"odd\" is no marker class"},
                        {with("1", replaced("3")), 0, "cannot show the counts of BB"}});
}

TEST(TwoPoint, EstimatesByNameAndNumber) {
  const Sandbox sandbox;
  const struct {
    std::vector<std::string> words;
    double rec, lod;
    const char* phase;
  } cases[] = {
      // Backcross: 20 of 100 recombine; LOD = 80 log10(1.6) + 20 log10(0.4) = 8.3708.
      {{"-p", "1", "40", "10", "0", "10", "40", "0", "0", "0", "0"}, 0.2, 8.3708, "coupling"},
      {{"-p", "p1bc1f1", "10", "40", "0", "40", "10", "0", "0", "0", "0"}, 0.8, 8.3708, "repulsion"},
      {{"-p", "F1DH", "25", "0", "25", "0", "0", "0", "25", "0", "25"}, 0.5, 0, "none (unlinked)"},
      // Inbred lines: R = 0.2 gives r = 0.5 R / (1 - R).
      {{"-p", "ril", "40", "0", "10", "0", "0", "0", "10", "0", "40"}, 0.125, 8.3708, "coupling"},
      {{"-p", "F1RIL", "40", "0", "10", "0", "0", "0", "10", "0", "40"}, 0.125, 8.3708, "coupling"},
  };
  for (const auto& test : cases) {
    std::vector<std::string> words{"twopoint", "--json"};
    words.insert(words.end(), test.words.begin(), test.words.end());
    const CommandResult result = RunCommand(sandbox, words);
    ASSERT_EQ(result.code, 0) << result.err;
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_NEAR(json["rec"].get<double>(), test.rec, 1e-6);
    EXPECT_NEAR(json["lod"].get<double>(), test.lod, 1e-4);
    EXPECT_EQ(json["phase"], test.phase);
  }
  // Every name and number is known, and both lead to the same answer.
  const std::vector<std::string> names{"P1BC1F1",  "P2BC1F1",  "F1DH",    "RIL",     "P1BC1RIL",
                                       "P2BC1RIL", "F2",       "F3",      "P1BC2F1", "P2BC2F1",
                                       "P1BC2RIL", "P2BC2RIL", "P1BC1F2", "P2BC1F2", "P1BC2F2",
                                       "P2BC2F2",  "P1BC1DH",  "P2BC1DH", "P1BC2DH", "P2BC2DH"};
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::vector<std::string> byName{"twopoint", "-p", names[i], "9", "1", "1", "1", "9", "1", "1", "1", "9"};
    std::vector<std::string> byNumber = byName;
    byNumber[2] = std::to_string(i + 1);
    const CommandResult named = RunCommand(sandbox, byName), numbered = RunCommand(sandbox, byNumber);
    EXPECT_EQ(named.code, 0);
    EXPECT_EQ(named.out, numbered.out);
    EXPECT_NE(named.out.find(std::to_string(i + 1) + " (" + names[i] + ")"), std::string::npos);
  }
  const std::vector<std::string> table{"0", "28", "2", "0", "45", "5", "0", "3", "17"};
  std::vector<std::string> byCode{"twopoint", "-p", "F2", "--pair", "112"}, byClass = byCode;
  byClass[3] = "--classes";
  byClass[4] = "codominant,dominant";
  byCode.insert(byCode.end(), table.begin(), table.end());
  byClass.insert(byClass.end(), table.begin(), table.end());
  EXPECT_EQ(RunCommand(sandbox, byCode).out, RunCommand(sandbox, byClass).out);
}

}  // namespace
