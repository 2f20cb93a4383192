// The examples of docs/formats.md are files that the library reads.

#include <regex>
#include <string>
#include <vector>

#include "frame/exports.h"
#include "tests/support/scratch.h"

namespace {

TEST(Documents, EveryExampleOfAFormatIsRead) {
  const std::string document = support::ReadFile(SOURCE_DIR "/docs/formats.md");
  const support::ScratchFolder folder;
  const std::regex fence("\n```([a-z]+)\n([^`]*)```\n");
  std::vector<std::string> kinds;
  for (std::sregex_iterator block(document.begin(), document.end(), fence), end; block != end; ++block) {
    const std::string kind = (*block)[1];
    const std::string name = "example." + kind;
    support::WriteFile(name, (*block)[2]);
    const auto length = static_cast<int32_t>(name.size());
    int32_t n = 0;
    int32_t status = 0;
    ASSERT_EQ(kind, "map") << "no reader for this kind of example";
    MAPFINDNUMMARKERS(&length, name.data(), &n, &status);
    ASSERT_EQ(status, 0) << name;
    const auto markers = static_cast<std::size_t>(n);
    std::vector<int32_t> scalars(4), names(35 * markers);
    std::vector<std::vector<int32_t>> counts(6, std::vector<int32_t>(markers));
    std::vector<std::vector<float>> reals(6, std::vector<float>(markers * markers));
    CHECKERRORMAP(&length, name.data(), &n, &status, &scalars[0], &scalars[1], &scalars[2], &scalars[3],
                  names.data(), counts[0].data(), counts[1].data(), counts[2].data(), counts[3].data(),
                  counts[4].data(), counts[5].data(), reals[0].data(), reals[1].data(), reals[2].data(),
                  reals[3].data(), reals[4].data(), reals[5].data());
    EXPECT_EQ(status, 0) << name;
    kinds.push_back(kind);
  }
  EXPECT_EQ(kinds, std::vector<std::string>{"map"});
}

}  // namespace
