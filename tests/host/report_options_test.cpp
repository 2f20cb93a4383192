// Where the reports of the commands go.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "tests/host/command_runner.h"

namespace {

const char kCmp[] = "2\n1\n2\nA 3\nB 3\nm1 1 0\nm2 1 4\nm3 1 9\nm1 2 0\nm3 2 8\nm4 2 12\n";
const char kTrial[] =
    "env gen block yield\nE1 g1 1 5\nE1 g1 2 6\nE1 g2 1 7\nE1 g2 2 8.5\nE1 g3 1 4\nE1 g3 2 4.5\nE2 g1 1 "
    "6\nE2 g1 2 7\n"
    "E2 g2 1 9\nE2 g2 2 8\nE2 g3 1 5\nE2 g3 2 5.5\n";

bool Has(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

struct CommandRow {
  std::string name;
  std::vector<std::string> words;
  std::string result;  // one of its files
};
std::vector<CommandRow> Commands(const Sandbox& sandbox) {
  std::filesystem::copy(std::string(EXAMPLES_DIR) + "/clonal.cdm", sandbox.folder / "in.cdm");
  sandbox.Write("both.cmp", kCmp);
  sandbox.Write("plots.txt", kTrial);
  return {{"map", {"map", "in.cdm", "-o", "r"}, "r.map.tsv"},
          {"consensus", {"consensus", "both.cmp", "-o", "r"}, "r.consensus.tsv"},
          {"trial", {"trial", "plots.txt", "-o", "r"}, "r.aov"}};
}

CommandResult RunWith(const Sandbox& sandbox, std::vector<std::string> words,
                      const std::vector<std::string>& more) {
  words.insert(words.end(), more.begin(), more.end());
  words.emplace_back("--quiet");
  return RunCommand(sandbox, words);
}

TEST(ReportOptions, SayWhereThePageAndTheFiguresGo) {
  const Sandbox sandbox;
  for (const CommandRow& command : Commands(sandbox)) {
    ASSERT_EQ(RunWith(sandbox, command.words, {"--no-report"}).code, 0) << command.name;
    EXPECT_FALSE(Has(sandbox.Names(), "r.report.html")) << command.name;
    ASSERT_EQ(RunWith(sandbox, command.words, {"--report", "page.html", "--figures", "figures"}).code, 0);
    EXPECT_FALSE(Has(sandbox.Names(), "r.report.html")) << command.name;
    const std::string page = sandbox.Read("page.html");
    const std::vector<std::string> figures = sandbox.Names("figures");
    ASSERT_FALSE(figures.empty()) << command.name;
    for (const std::string& figure : figures) {
      EXPECT_NE(sandbox.Read("figures/" + figure).find("</svg>"), std::string::npos) << figure;
    }
    EXPECT_NE(page.find("<svg"), std::string::npos) << command.name;
    EXPECT_EQ(page.find(sandbox.folder.string()), std::string::npos) << "no path of the machine";
    ASSERT_EQ(RunWith(sandbox, command.words, {"--report", "page.html", "--figures", "figures"}).code, 0);
    EXPECT_EQ(sandbox.Read("page.html"), page) << "the same input gives the same bytes";
    ASSERT_EQ(RunWith(sandbox, command.words, {}).code, 0) << command.name;
    EXPECT_TRUE(Has(sandbox.Names(), "r.report.html")) << command.name;
    for (const char* made : {"figures", "page.html", "r.report.html"})
      std::filesystem::remove_all(sandbox.folder / made);
  }
}

TEST(ReportOptions, AReportThatCannotBeWrittenLeavesNothing) {
  const Sandbox sandbox;
  sandbox.Write("file", "");
  for (const CommandRow& command : Commands(sandbox)) {
    const std::vector<std::string> before = sandbox.Names();
    EXPECT_EQ(RunWith(sandbox, command.words, {"--report", "absent/page.html"}).code, 3) << command.name;
    EXPECT_EQ(RunWith(sandbox, command.words, {"--figures", "file/figures"}).code, 3) << command.name;
    EXPECT_EQ(RunWith(sandbox, command.words, {"--report", "p.html", "--no-report"}).code, 2) << command.name;
    EXPECT_EQ(RunWith(sandbox, command.words, {"--report", command.result}).code, 3)
        << "two results, one name";
    EXPECT_EQ(RunWith(sandbox, command.words, {"--report", "both.cmp", "--figures", "f"}).code, 3)
        << command.name;
    EXPECT_EQ(sandbox.Read("both.cmp"), kCmp) << "only pages are replaced";
    EXPECT_EQ(sandbox.Names(), before) << command.name;
  }
}

}  // namespace
