// Reading a trial table: reports, tokens, names, the two marks, block positions; damaged tables.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <limits>
#include <random>

#include "platform/unit.h"
#include "project/reader.h"
#include "tests/trial/trial_run.h"
#include "trial/plain_row.h"
#include "trial/trial_table.h"

namespace trial {
namespace {

using support::Analyse;
using support::Exists;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

constexpr const char* kClosing = "--Input error: Please check the LOG file for error messages!\n";

TrialTable Read(const std::string& text, int32_t rows, int32_t columns) {
  WriteFile("t.txt", text);
  TrialTable table;
  EXPECT_TRUE(ReadTrialTable(2004, rows, columns, "t.txt", table));
  return table;
}

TEST(TrialTable, TellsWhatItCannotRead) {
  const ScratchFolder folder;
  const std::string title = "--Input error: cannot read the title line!\n";
  const auto row = [](const std::string& i) { return "--Input error: can't read the" + i + "th row!\n"; };
  const std::string rows12 = "e g b y\n" + []() {
    std::string text;
    for (int i = 1; i < 12; ++i) {
      text += "e g b 1\n";
    }
    return text;
  }();
  const struct {
    const char* rule;
    std::string text;
    int32_t rows, columns;
    std::string log;
  } cases[] = {
      {"an empty file", "", 1, 4, title},
      {"a title that is too short", "e g b", 1, 4, title},
      {"a title that claims more than a file can hold", "e g b y\n", 1, 2147483647, title},
      {"no row", "e g b y\n", 1, 4, row("    1")},
      {"a word in place of a number", "e g b y\ne g b 1\ne g b x\n", 2, 4, row("    2")},
      {"not a number is no number", "e g b y\ne g b NaN\n", 1, 4, row("    1")},
      {"nor is one in quotes", "e g b y\ne g b '1'\n", 1, 4, row("    1")},
      {"three blanks ahead of the twelfth", rows12, 12, 4, row("   12")},
      {"rows that are not there", rows12, 2147483647, 4, row("   12")},
      {"too few columns told", "e g b y z\ne g b 1 2\n3 g b x 2\n", 2, 4, row("    2")},
      {"remarks mean nothing", "e g b y\n! x\ne g b 1\n", 1, 4, row("    1")},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(Analyse(one.text, one.rows, one.columns), one.log + kClosing) << one.rule;
    EXPECT_FALSE(Exists("t.aov")) << one.rule;
  }
  EXPECT_FALSE(platform::IsConnected(2012));
}

TEST(TrialTable, TokensThatAreLeftOut) {
  const ScratchFolder folder;
  const TrialTable table =
      Read("e g b y z\n'an env' g b 1,,\n'an env' g c / 7 8\n,,,4 5 6\nx\ny\nz\n1 2\nnever seen", 4, 5);
  EXPECT_EQ(table.NumEnvironments, 3);
  EXPECT_EQ(Text(table.EnvironmentName[0]), "an env");
  EXPECT_EQ(Text(table.EnvironmentName[1]), "") << "a null leaves a blank name";
  EXPECT_EQ(Text(table.EnvironmentName[2]), "x") << "a row over four lines";
  EXPECT_EQ(table.Trait[1].Value, std::vector<float>({0, 0, 5, 2}))
      << "nulls and a slash are zeros like others";
  EXPECT_EQ(table.Trait[0].GrandMean, 1.5F);
}

// Whatever the short way takes, the token read takes in the same way.
TEST(TrialTable, PlainRowsAreWhatTheTokenReadMakesOfThem) {
  const ScratchFolder folder;
  const std::string_view pieces[] = {
      " ",    "  ",        "\t",         " 12",       " -3.25",
      " 0.1", " 16777215", " 1677721.7", " 99999999", " .5",
      " 7.",  " -0",       " +4",        " 1e3",      " abcdefghijklmnopqrstuv",
      " a",   ",",         "/",          " 'q r'",    " 3*1",
      " *",   " x,y",      " 5/",        " .",        " -."};
  std::mt19937 random(3);
  std::string text;
  std::vector<std::pair<std::array<Name, 3>, std::array<float, 2>>> taken;
  for (int k = 0; k < 200000; ++k) {
    std::string row = "e";
    for (std::size_t piece = 4 + random() % 3; piece-- > 0;) {
      row += pieces[random() % std::size(pieces)];
    }
    std::pair<std::array<Name, 3>, std::array<float, 2>> parts;
    if (TakePlainRow(row, parts.first, parts.second)) {
      taken.push_back(parts);
      text += row + "\n";
    }
  }
  EXPECT_GT(taken.size(), 1000U);
  WriteFile("t.txt", text);
  platform::OpenUnit(9, "t.txt", platform::OpenStatus::Old);
  for (const auto& [keys, values] : taken) {
    std::string names;
    std::vector<float> numbers;
    ASSERT_EQ(
        project::ReadTokens(9, {project::CellItems(names, kNameWidth, 3), project::RealItems(numbers, 2)}),
        0);
    for (std::size_t key = 0; key < 3; ++key) {
      ASSERT_EQ(names.substr(key * kNameWidth, kNameWidth), std::string(keys[key].begin(), keys[key].end()));
    }
    ASSERT_EQ(std::bit_cast<uint32_t>(numbers[0]), std::bit_cast<uint32_t>(values[0])) << numbers[0];
    ASSERT_EQ(std::bit_cast<uint32_t>(numbers[1]), std::bit_cast<uint32_t>(values[1])) << numbers[1];
  }
  std::string_view rest;
  EXPECT_FALSE(platform::ReadRecord(9, rest)) << "a row each";
  platform::CloseUnit(9);
}

TEST(TrialTable, NamesAreCutAtNineteenAndKnowCase) {
  const ScratchFolder folder;
  const std::string nineteen = "abcdefghijklmnopqrs";
  const TrialTable table = Read(
      "e g b y\nE " + nineteen + "T 1 1\nE " + nineteen + "U 1 2\nE " + nineteen + " 1 3\ne A 1 4\nE a 2 5\n",
      5, 4);
  EXPECT_EQ(table.NumGenotypes, 3);
  EXPECT_EQ(Text(table.GenotypeName[0]), nineteen);
  EXPECT_EQ(table.NumEnvironments, 2);
  EXPECT_EQ(table.Environment[0].BlockName.size(), 2U) << "a block belongs to its environment";
  EXPECT_EQ(table.Environment[1].BlockName.size(), 1U);
}

TEST(TrialTable, ManyNamesKeepTheOrderOfTheirFirstAppearance) {
  NameList list;
  for (int pass = 0; pass < 2; ++pass) {
    for (int32_t k = 1; k <= 5000; ++k) {
      Name name;
      name.fill(' ');
      const std::string text = std::to_string(k * 7919 % 5003);
      std::copy(text.begin(), text.end(), name.begin() + (k % 2) * 12);
      ASSERT_EQ(PositionOf(list, name), k);
    }
  }
  EXPECT_EQ(list.names.size(), 5000U);
}

// -9999 stays out of the cells and counts in the whole-trait statistics, -100 the other way round.
TEST(TrialTable, TheTwoMarksAreNeverMerged) {
  const ScratchFolder folder;
  const TrialTable table = Read(
      "e g b y none low\nE A 1 10 -9999 -100\nE B 1 -9999 -9999 -100\nE C 1 -100 -9999 -100\nF B 1 -9999 "
      "-9999 -100\n",
      4, 6);
  const TrialTrait& y = table.Trait[0];
  EXPECT_EQ(y.GenotypeIndex, std::vector<int32_t>({1, 3}));
  EXPECT_EQ(y.NumEnvironments, 1);
  EXPECT_EQ(y.CellMean, std::vector<float>({10, -100}));
  EXPECT_EQ(y.EnvironmentMean[0], -45);
  EXPECT_EQ(y.MaxValue, 10);
  EXPECT_EQ(y.MinValue, -9999);
  EXPECT_EQ(y.GrandMean, (10.0F - 9999 - 9999) / 3);
  const TrialTrait& none = table.Trait[1];
  EXPECT_EQ(none.NumGenotypes + none.NumEnvironments, 0);
  EXPECT_EQ(none.GrandMean, -9999);
  const TrialTrait& low = table.Trait[2];
  EXPECT_EQ(low.CellMean.size(), 6U);
  EXPECT_EQ(low.MaxValue, std::numeric_limits<float>::lowest());
  EXPECT_EQ(low.MinValue, std::numeric_limits<float>::max());
  EXPECT_TRUE(std::isnan(low.GrandMean));
  const TrialTrait beside = Read("e g b y\nE A 1 -9998.999\nE B 1 -100.00001\n", 2, 4).Trait[0];
  EXPECT_EQ(beside.NumGenotypes, 2) << "a step beside a mark is a value";
  EXPECT_EQ(beside.MaxValue, -100.00001F);
}

// Environment E has blocks 1, 2, 3, of which 2 has no data: its block means are those of the first two
// places.
TEST(TrialTable, ABlockWithoutDataHidesTheLast) {
  const ScratchFolder folder;
  const TrialTable table =
      Read("e g b y\nE A 1 1\nE A 2 -9999\nE A 3 5\nE B 3 7\nF A 1 20\nF A 2 -9999\nF A 3 30\n", 7, 4);
  const TrialTrait& trait = table.Trait[0];
  EXPECT_EQ(trait.BlockIndex, std::vector<int32_t>({1, 3, 1, 3}));
  EXPECT_EQ(trait.BlockMean, std::vector<float>({1, -100, 20, -100}));
  EXPECT_EQ(trait.BlockEffect[1], -100);
  EXPECT_EQ(OfBlock(trait, trait.BlockMean, 1, 3), 20) << "the next environment's";
  EXPECT_EQ(OfBlock(trait, trait.BlockMean, 2, 3), 0) << "past the last";
}

TEST(TrialTable, ResultFilesAreNamedByThePathLessFourCharacters) {
  const ScratchFolder folder;
  const std::pair<const char*, const char*> names[] = {
      {"trial.txt", "trial"}, {"x.trial", "x.t"}, {"abc", ""}, {"./sub.d/t", "./sub"}};
  std::filesystem::create_directory("sub.d");
  for (const auto& [path, base] : names) {
    WriteFile(path, "e g b y\n");
    platform::OpenUnit(2004, "ANOVA.log", platform::OpenStatus::Replace);
    EXPECT_TRUE(RunTrialAnalysis(2004, 0, 4, 3, path));
    platform::CloseUnit(2004);
    for (const std::string_view extension : support::kExtensions) {
      EXPECT_TRUE(std::filesystem::remove(base + std::string(extension))) << path << extension;
    }
  }
}

TEST(TrialTable, CountsThatMakeNoSenseReadNothingOutside) {
  const ScratchFolder folder;
  const std::pair<int32_t, int32_t> counts[] = {{0, 4}, {-5, 4}, {1, 3}, {1, 2}, {1, -2147483647 - 1}};
  for (const auto& [rows, columns] : counts) {
    EXPECT_EQ(Analyse("e g b y\nE A 1 1\n", rows, columns), "good") << rows << " " << columns;
    EXPECT_EQ(ReadFile("t.aov"), "");
    EXPECT_EQ(ReadFile("t.frq"), std::string(15, ' ') + "Trait         Environment               Block\n");
  }
}

// Every truncation and every change of a byte: a report, a terminal message or the fatal path.
TEST(TrialTable, DamagedTablesEndInOrder) {
  const ScratchFolder folder;
  const std::string good =
      "e g b y\nE A 1 1\nE B 1 2\nE A 2 4\nE B 2 3\nF A 1 2\nF B 1 7\nF A 2 1\nF B 2 -9999\nF A 3 5\nF B 3 "
      "6\n";
  std::vector<std::string> damaged;
  for (std::size_t k = 0; k < good.size(); ++k) {
    damaged.push_back(good.substr(0, k));
    for (const char c : {'\n', ' ', '9', '-', '/', ',', '*', '\'', 'E', '\0', '\xff'}) {
      damaged.push_back(good);
      damaged.back()[k] = c;
    }
  }
  const int code = support::InChild([&] {
    for (const std::string& text : damaged) {  // each ends well here or in a child of its own
      WriteFile("t.txt", text);
      TrialTable table;
      platform::OpenUnit(2004, "ANOVA.log", platform::OpenStatus::Replace);
      ReadTrialTable(2004, 10, 4, "t.txt", table);
      platform::CloseUnit(2004);
    }
    return 0;
  });
  EXPECT_EQ(code, 0) << ReadFile("stderr.txt");
  for (std::size_t k = 0; k < damaged.size(); k += 13) {
    const int ending = support::InChild([&] {
      Analyse(damaged[k], 10, 4);
      return 0;
    });
    const std::string told = ReadFile("stderr.txt");
    ASSERT_TRUE(ending == 0 || (ending == 1 && told.find("ERROR 5 from") != std::string::npos))
        << damaged[k] << told;
  }
}

}  // namespace
}  // namespace trial
