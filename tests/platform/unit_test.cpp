#include "platform/unit.h"

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/scratch.h"

namespace platform {
namespace {

using support::Exists;
using support::ReadFile;
using support::ScratchFolder;
using support::WriteFile;

std::vector<std::string> AllRecords(int32_t unit) {
  std::vector<std::string> records;
  for (std::string_view record; ReadRecord(unit, record);) {
    records.emplace_back(record);
  }
  return records;
}

TEST(Unit, RecordsEndAtEitherLineEndAndAtTheEndOfTheFile) {
  const ScratchFolder folder;
  struct Case {
    const char* name;
    std::string text;
    std::vector<std::string> records;
  };
  const std::vector<Case> cases = {
      {"empty", "", {}},
      {"one line end", "\n", {""}},
      {"line feeds", "a\n\nb\n", {"a", "", "b"}},
      {"carriage returns before them", "a\r\n\r\nb\r\n", {"a", "", "b"}},
      {"no final line end", "a\nb", {"a", "b"}},
      {"a lone carriage return at the end", "a\r\nb\r", {"a", "b"}},
      {"a carriage return inside a record stays", "a\rb\n", {"a\rb"}},
  };
  for (const Case& c : cases) {
    WriteFile("in.txt", c.text);
    OpenUnit(102, "in.txt", OpenStatus::Old);
    EXPECT_EQ(AllRecords(102), c.records) << c.name;
    // Back over the end of the file and each record, and all of it once more.
    for (std::size_t k = 0; k <= c.records.size() + 1; ++k) {
      StepBack(102);
    }
    EXPECT_EQ(AllRecords(102), c.records) << c.name << ", after stepping back";
    CloseUnit(102);
  }
}

TEST(Unit, TheEndOfTheFileIsARecordToStepBackOver) {
  const ScratchFolder folder;
  WriteFile("in.txt", "first\nlast");
  OpenUnit(102, "in.txt", OpenStatus::Old);
  std::string_view record;
  ASSERT_EQ(AllRecords(102).size(), 2U);
  StepBack(102);
  EXPECT_FALSE(ReadRecord(102, record));
  StepBack(102);
  StepBack(102);
  ASSERT_TRUE(ReadRecord(102, record));
  EXPECT_EQ(record, "last");
  CloseUnit(102);
}

TEST(Unit, AWriteWithoutAFileConnectsTheDefaultFileWhichStays) {
  const ScratchFolder folder;
  WriteFile("fort.100", "left by an earlier process\n");
  EXPECT_FALSE(IsConnected(100));
  WriteRecord(100, "one");
  EXPECT_TRUE(IsConnected(100));
  EXPECT_TRUE(IsConnected("fort.100"));
  EXPECT_EQ(ReadFile("fort.100"), "one\n") << "emptied first, and readable at once";
  WriteRecord(100, "");
  OpenUnit(100, "MAP.log", OpenStatus::Replace);  // takes the unit over
  EXPECT_FALSE(IsConnected("fort.100"));
  WriteRecord(100, "two");
  CloseUnit(100);
  CloseUnit(100);  // without a file: nothing happens
  EXPECT_EQ(ReadFile("fort.100"), "one\n\n");
  EXPECT_EQ(ReadFile("MAP.log"), "two\n");
  WriteRecord(100, "again");
  CloseUnit(100);
  EXPECT_EQ(ReadFile("fort.100"), "again\n");
}

TEST(Unit, AConnectedFileIsKnownFromAnyFolderAndByAnyName) {
  const ScratchFolder folder;
  const std::filesystem::path home = std::filesystem::current_path();
  std::filesystem::create_directory("sub");
  OpenUnit(100, "MAP.log", OpenStatus::Replace);
  std::filesystem::create_hard_link("MAP.log", "other.log");
  EXPECT_TRUE(IsConnected("./MAP.log"));
  EXPECT_TRUE(IsConnected("other.log"));
  std::filesystem::current_path("sub");
  EXPECT_FALSE(IsConnected("MAP.log")) << "a file of that name in another folder is another file";
  EXPECT_TRUE(IsConnected("../MAP.log"));
  std::filesystem::remove(home / "MAP.log");
  EXPECT_TRUE(IsConnected((home / "MAP.log").string())) << "also once its name is gone";
  std::filesystem::current_path(home);
  CloseUnit(100);
  EXPECT_FALSE(IsConnected("MAP.log"));
}

TEST(Unit, AnInputLeftOpenIsInNobodysWay) {
  const ScratchFolder folder;
  WriteFile("left.txt", "a\n");
  OpenUnit(102, "left.txt", OpenStatus::Old);
  OpenUnit(101, "left.txt", OpenStatus::Old);  // two units may read one file
  CloseUnit(101);
  std::filesystem::remove("left.txt");
  for (const char* name : {"new.txt", "newer.txt"}) {  // the first would get the inode if it were free
    WriteFile(name, "b\n");
    EXPECT_FALSE(IsConnected(name));
    OpenUnit(101, name, OpenStatus::Replace);
    CloseUnit(101);
  }
  CloseUnit(102);
}

TEST(UnitDeathTest, WhatGoesWrongInAFileEndsTheProcessWithOneLine) {
  const ScratchFolder folder;
  WriteFile("in.txt", "a\n");
  const auto old = [](const std::string& name) { OpenUnit(102, name, OpenStatus::Old); };
  const auto failed = testing::ExitedWithCode(1);
  EXPECT_EXIT(old("absent.txt"), failed,
              "^tessarmont: cannot open 'absent.txt': No such file or directory\n$");
  EXPECT_EXIT(old(""), failed, "cannot open ''");
  EXPECT_EXIT(old("."), failed, "cannot open '.': not a regular file");
  EXPECT_EXIT(old("/dev/zero"), failed, "not a regular file");
  EXPECT_EXIT(old(std::string("in.txt\0x", 8)), failed, "NUL");
  EXPECT_EXIT(OpenUnit(100, "absent/MAP.log", OpenStatus::Replace), failed, "cannot write 'absent/MAP.log'");
  EXPECT_EXIT((old("in.txt"), OpenUnit(100, "./in.txt", OpenStatus::Replace)), failed, "in use already");
  EXPECT_EXIT((old("in.txt"), WriteRecord(102, "x")), failed, "open for reading");
  WriteFile("fort.100", "somebody's\n");
  EXPECT_EXIT((old("fort.100"), WriteRecord(100, "x")), failed, "'fort.100': it is in use already");
  EXPECT_EQ(ReadFile("fort.100"), "somebody's\n");
  if (Exists("/dev/full")) {
    EXPECT_EXIT((OpenUnit(100, "/dev/full", OpenStatus::Replace), WriteRecord(100, "x"), CloseUnit(100)),
                failed, "cannot write '/dev/full': No space left on device");
  }
  EXPECT_EQ(ReadFile("in.txt"), "a\n");
}

}  // namespace
}  // namespace platform
