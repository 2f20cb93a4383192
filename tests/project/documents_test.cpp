// The examples of docs/formats.md are files that the library reads, one at least of every kind.

#include <algorithm>
#include <map>
#include <string>

#include "project/genomic_selection.h"
#include "tests/support/load.h"

namespace project {
namespace {

std::string LoadExample(const std::string& kind, const std::string& text) {
  if (kind == "gs") {
    support::WriteFile("in.gs", text);
    int32_t traits = 0;
    return ReadSelectionTraits("in.gs", traits) && !platform::IsConnected(kLogUnit) ? "good" : "bad";
  }
  for (std::size_t m = 0; m < kModules.size(); ++m) {
    std::string code(kModules[m].code);
    std::transform(code.begin(), code.end(), code.begin(), [](char c) { return static_cast<char>(c + 32); });
    if (code == kind) {
      const int32_t rules = kModules[m].moduleCode == kCallersCode ? 101 : kModules[m].moduleCode;
      return support::Load(static_cast<Module>(m), rules, text);
    }
  }
  return "no such kind";
}

TEST(Documents, EveryExampleOfAFormatIsRead) {
  const std::string document = support::ReadFile(SOURCE_DIR "/docs/formats.md");
  const support::ScratchFolder folder;
  std::map<std::string, int> kinds;
  // An example is fenced: "```kind", its lines, "```".
  for (std::size_t at = document.find("\n```"); at != std::string::npos; at = document.find("\n```", at)) {
    const std::size_t kindEnd = document.find('\n', at + 4);
    const std::string kind = document.substr(at + 4, kindEnd - at - 4);
    const std::size_t end = document.find("\n```\n", kindEnd);
    ASSERT_NE(end, std::string::npos);
    const std::string example = document.substr(kindEnd + 1, end - kindEnd);
    EXPECT_EQ(LoadExample(kind, example), "good") << kind << "\n" << example;
    ++kinds[kind];
    at = end + 4;
  }
  EXPECT_EQ(kinds.size(), kModules.size() + 1) << "a kind without an example";
}

TEST(Chromosomes, SeveralMapsMayShareMarkers) {
  const support::ScratchFolder folder;
  EXPECT_EQ(support::Load(Module::Cmp, "2\n1\n2\nn 2\ns 2\na 1 0\na 1 1\nb 2 0\na 2 1\n"), "good");
  EXPECT_EQ(Store(Module::Cmp).TotalMarkers, 4);
  EXPECT_TRUE(support::Load(Module::Cmp, "2\n1\n1\nn 2\na 1 2\na 1 1\n")
                  .starts_with("--Input error: two markers are in"));
}

}  // namespace
}  // namespace project
