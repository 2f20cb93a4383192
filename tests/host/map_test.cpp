#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "command_runner.h"
#include "simulated_cross.h"

namespace {

const std::string kHeading = "group\tmarker\tposition\tinterval\trec\tlod\tsegregation_p\tmissing";

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::stringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

// The table's rows below its heading, by group in the order of the file.
std::vector<std::pair<std::string, std::vector<std::vector<std::string>>>> Table(const std::string& text) {
  std::vector<std::pair<std::string, std::vector<std::vector<std::string>>>> groups;
  const std::vector<std::string> lines = Split(text, '\n');
  EXPECT_EQ(lines.at(0), kHeading);
  for (std::size_t i = 1; i < lines.size(); ++i) {
    std::vector<std::string> fields = Split(lines[i], '\t');
    EXPECT_EQ(fields.size(), 8U) << lines[i];
    if (groups.empty() || groups.back().first != fields[0]) groups.push_back({fields[0], {}});
    groups.back().second.push_back(fields);
  }
  return groups;
}

std::vector<std::string> MarkersOf(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::string> names;
  names.reserve(rows.size());
  for (const auto& row : rows) names.push_back(row[1]);
  return names;
}

// "c2m01", "c2m02", ... upwards or downwards.
void ExpectInTrueOrder(std::vector<std::string> names, const std::string& chromosome, std::size_t count) {
  ASSERT_EQ(names.size(), count);
  if (names.front() > names.back()) std::reverse(names.begin(), names.end());
  EXPECT_TRUE(std::is_sorted(names.begin(), names.end())) << testing::PrintToString(names);
  for (const std::string& name : names) EXPECT_TRUE(name.starts_with(chromosome)) << name;
}

TEST(Map, RecoversTwoChromosomes) {
  for (const std::string& lineEnd : {std::string("\n"), std::string("\r\n")}) {
    for (const int spaceType : {1, 2}) {
      const Sandbox sandbox;
      sandbox.Write(
          "a cross.map",
          MapFileText({.markersPerChromosome = {8, 12}, .spaceType = spaceType, .lineEnd = lineEnd}));
      const CommandResult result = RunCommand(sandbox, {"map", "a cross.map"});
      ASSERT_EQ(result.code, 0) << result.err;
      EXPECT_EQ(sandbox.Names(),
                (std::vector<std::string>{"a cross.bip", "a cross.map", "a cross.map.tsv", "a cross.met",
                                          "a cross.report.html", "a cross.sdl"}));
      EXPECT_TRUE(std::filesystem::is_empty(sandbox.scratch));
      EXPECT_NE(result.out.find("20 markers x 150 lines, population 3 (F1DH), Haldane"), std::string::npos);
      const auto groups = Table(sandbox.Read("a cross.map.tsv"));
      ASSERT_EQ(groups.size(), 2U);
      EXPECT_EQ(groups[0].first, "LG1");
      EXPECT_EQ(groups[1].first, "LG2");
      ExpectInTrueOrder(MarkersOf(groups[0].second), "c2", 12);
      ExpectInTrueOrder(MarkersOf(groups[1].second), "c1", 8);
      double position = 0;
      for (const auto& row : groups[0].second) {
        position += std::stod(row[3]);
        EXPECT_NEAR(std::stod(row[2]), position, 1e-3);
      }
      EXPECT_NEAR(position, 110, 40);  // eleven steps of 10 cM, 150 lines

      // The project files bear the same order and the asked kind of value.
      const auto& second = groups[0].second[1];
      const auto lines = Split(sandbox.Read("a cross.sdl"), '\n');
      const std::string value = spaceType == 1 ? second[3] : second[2];
      const std::string row = second[1] + std::string(35 - second[1].size(), ' ') + "    1" +
                              std::string(12 - value.size(), ' ') + value;
      EXPECT_NE(std::find_if(lines.begin(), lines.end(),
                             [&](const std::string& line) { return line.starts_with(row); }),
                lines.end())
          << row;
    }
  }
}

// The example files list their markers in the published order, chromosome after chromosome.
TEST(Map, RecoversPublishedMaps) {
  const struct {
    const char* file;
    const char* lod;
    std::size_t groups;
  } cases[] = {{"listeria", "3", 19}, {"multitrait", "6", 5}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.file);
    const Sandbox sandbox;
    const std::filesystem::path input =
        std::filesystem::path(EXAMPLES_DIR) / (std::string(test.file) + ".map");
    const auto command = RunCommand(sandbox, {"map", input.string(), "--lod", test.lod, "-o", "x", "--json"});
    ASSERT_EQ(command.code, 0) << command.err;
    const auto json = nlohmann::json::parse(command.out);
    EXPECT_EQ(json["groups"].size(), test.groups);
    EXPECT_EQ(json["unlinked"].size(), 0U);
    for (const auto& group : json["groups"]) {
      std::vector<int> numbers;
      for (const auto& marker : group["markers"]) numbers.push_back(marker["number"]);
      const auto [least, most] = std::minmax_element(numbers.begin(), numbers.end());
      EXPECT_EQ(*most - *least + 1, static_cast<int>(numbers.size())) << "a chromosome was cut or joined";
      int agreeing = 0, pairs = 0;
      for (std::size_t i = 1; i < numbers.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j, ++pairs) agreeing += numbers[j] < numbers[i] ? 1 : -1;
      }
      EXPECT_GE(agreeing, 0.9 * pairs) << "order of " << group["name"];
    }
  }
}

// At the LOD of default, chance joins some of five chromosomes.
TEST(Map, DoubtsACutThatJoinsWhatHigherCutsPart) {
  const Sandbox sandbox;
  const std::string input = (std::filesystem::path(EXAMPLES_DIR) / "multitrait.map").string();
  const char* const doubt = "fewer groups at LOD 3 than the 5 at every cut from 6 to 17:";
  EXPECT_NE(RunCommand(sandbox, {"map", input, "-o", "x"}).err.find(doubt), std::string::npos);
  for (const char* option : {"--lod=6", "--groups=3"}) {
    EXPECT_EQ(RunCommand(sandbox, {"map", input, "-o", "x", option}).err.find("fewer groups"),
              std::string::npos);
  }
}

TEST(Map, OriginIsTheEndThatStandsFirstInTheFile) {
  const Sandbox sandbox;
  const std::string text = MapFileText({.markersPerChromosome = {9}});
  sandbox.Write("x.map", text);
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.map", "--quiet"}).code, 0);
  const auto groups = Table(sandbox.Read("x.map.tsv"));
  const auto names = MarkersOf(groups.at(0).second);
  EXPECT_LT(text.find(names.front() + " "), text.find(names.back() + " "));
}

TEST(Map, AnchorsRuleTheGroups) {
  const Sandbox sandbox;
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {5, 6, 7}, .anchors = {31, 31, 4}}));
  const CommandResult result = RunCommand(sandbox, {"map", "x.map", "-o", "out/"});
  EXPECT_EQ(result.code, 2);
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.map"}).code, 0);
  std::map<std::string, std::size_t> sizes;
  for (const auto& [name, rows] : Table(sandbox.Read("x.map.tsv"))) sizes[name] = rows.size();
  EXPECT_EQ(sizes, (std::map<std::string, std::size_t>{{"G31", 11}, {"G4", 7}}));
}

TEST(Map, UnlinkedMarkersAreListedApart) {
  const Sandbox sandbox;
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {6, 1, 2}, .step = 5}));
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.map", "--min-group", "3"}).code, 0);
  const auto groups = Table(sandbox.Read("x.map.tsv"));
  ASSERT_EQ(groups.size(), 2U);
  ExpectInTrueOrder(MarkersOf(groups[0].second), "c1", 6);
  EXPECT_EQ(groups[1].first, "unlinked");
  EXPECT_EQ(groups[1].second.size(), 3U);
  for (const auto& row : groups[1].second) {
    EXPECT_EQ(row[2] + row[3] + row[4] + row[5], "");
    EXPECT_NE(row[6], "");
  }
  // The new project files hold the mapped markers alone.
  EXPECT_EQ(sandbox.Read("x.bip").find(groups[1].second[0][1] + " "), std::string::npos);
}

TEST(Map, TrustedOrderIsKept) {
  const Sandbox sandbox;
  sandbox.Write("x.map", MapFileText({.markersPerChromosome = {8}}));
  sandbox.Write("frame.txt", "!trusted\r\nc1m07\r\n\r\nc1m02\r\nc1m04 \r\n");
  ASSERT_EQ(RunCommand(sandbox, {"map", "x.map", "--anchor-order", "frame.txt"}).code, 0);
  const auto groups = Table(sandbox.Read("x.map.tsv"));
  const auto names = MarkersOf(groups.at(0).second);
  const auto place = [&](const char* name) {
    return std::find(names.begin(), names.end(), name) - names.begin();
  };
  EXPECT_LT(place("c1m07"), place("c1m02"));
  EXPECT_LT(place("c1m02"), place("c1m04"));
  EXPECT_EQ(names.size(), 8U);

  sandbox.Write("unknown.txt", "c1m01\nc9m01\n");
  sandbox.Write("twice.txt", "c1m01\nc1m02\nc1m01\n");
  for (const auto& [file, words] : std::map<std::string, std::string>{
           {"unknown.txt", "unknown.txt, line 2: no marker is named \"c9m01\""},
           {"twice.txt", "twice.txt, line 3: \"c1m01\" stands already on line 1"}}) {
    const CommandResult result = RunCommand(sandbox, {"map", "x.map", "--anchor-order", file});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find(words), std::string::npos) << result.err;
  }
}

TEST(Map, JsonOtherFolderAndLongNames) {
  const Sandbox sandbox;
  const std::string name(35, 'N');
  sandbox.Write("in/x.map", MapFileText({.markersPerChromosome = {6}, .longName = name}));
  std::filesystem::create_directory(sandbox.folder / "my results");
  const CommandResult result =
      RunCommand(sandbox, {"map", "in/x.map", "-o", "my results/y", "--json", "--no-report"});
  ASSERT_EQ(result.code, 0) << result.err;
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["files"], (std::vector<std::string>{"my results/y.bip", "my results/y.map.tsv",
                                                     "my results/y.met", "my results/y.sdl"}));
  EXPECT_EQ(sandbox.Names("in"), std::vector<std::string>{"x.map"});
  EXPECT_EQ(sandbox.Names("my results").size(), 4U);
  ASSERT_EQ(json["groups"].size(), 1U);
  ASSERT_EQ(json["groups"][0]["markers"].size(), 6U);
  EXPECT_EQ(json["groups"][0]["markers"][0]["rec"], nullptr);
  EXPECT_NE(result.out.find(name), std::string::npos);
  EXPECT_NE(sandbox.Read("my results/y.map.tsv").find("\t" + name + "\t"), std::string::npos);
  EXPECT_NE(sandbox.Read("my results/y.sdl").find("\n" + name + " "), std::string::npos);
  // The same input gives the same bytes.
  const std::string before = sandbox.Read("my results/y.map.tsv") + sandbox.Read("my results/y.bip");
  EXPECT_EQ(RunCommand(sandbox, {"map", "in/x.map", "-o", "my results/y", "--json", "--no-report"}).out,
            result.out);
  EXPECT_EQ(sandbox.Read("my results/y.map.tsv") + sandbox.Read("my results/y.bip"), before);
}

TEST(Map, RefusedInputLeavesOldResultsAlone) {
  const Sandbox sandbox;
  sandbox.Write("x.map", "3\n2\n2\n2\n4\nm1 A A B B\nm2 A A B\nm1 0\nm2 0\n");
  sandbox.Write("x.map.tsv", "old");
  const CommandResult result = RunCommand(sandbox, {"map", "x.map", "--json"});
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_NE(result.err.find("--Input error: "), std::string::npos);
  EXPECT_NE(result.err.find("x.map, line 7: this line holds a name and 3 genotypes, the header says 4"),
            std::string::npos)
      << result.err;
  EXPECT_EQ(sandbox.Names(), (std::vector<std::string>{"x.map", "x.map.tsv"}));
  EXPECT_EQ(sandbox.Read("x.map.tsv"), "old");
}

TEST(Map, WarnsOfRepulsionAndGaps) {
  const Sandbox sandbox;
  // m2 is m1 with the parents' codes swapped; m3 shares no line with either but the anchor group.
  sandbox.Write("x.map",
                "3\n1\n2\n3\n12\nm1 A A A A B B B B X X X X\nm2 B B B B A A A A X X X X\n"
                "m3 X X X X X X X X A A B B\nm1 1\nm2 1\nm3 1\n");
  const CommandResult result = RunCommand(sandbox, {"map", "x.map"});
  ASSERT_EQ(result.code, 0) << result.err;
  EXPECT_NE(result.err.find("G1: 1 pair of neighbours in repulsion"), std::string::npos) << result.err;
  EXPECT_NE(result.err.find("codes of some markers seem to be swapped: m1 and m2\n"), std::string::npos);
  EXPECT_NE(result.err.find("G1: 1 pair of neighbours without linkage"), std::string::npos) << result.err;
  const auto groups = Table(sandbox.Read("x.map.tsv"));
  ASSERT_EQ(groups.size(), 1U);
  EXPECT_EQ(groups[0].second.size(), 3U);
  EXPECT_EQ(RunCommand(sandbox, {"map", "x.map", "--quiet"}).err, "");
  // Eight of twelve lines recombine: above 0.5 by chance, which is no sign of swapped codes.
  sandbox.Write("y.map",
                "3\n1\n2\n2\n12\nm1 A A A A A A B B B B B B\nm2 B B B B A A A A A A B B\nm1 1\nm2 1\n");
  const CommandResult weak = RunCommand(sandbox, {"map", "y.map"});
  EXPECT_NE(weak.err.find("G1: 1 pair of neighbours that are hardly linked"), std::string::npos) << weak.err;
  EXPECT_EQ(weak.err.find("swapped"), std::string::npos) << weak.err;
}

TEST(Map, DoubtsThePopulation) {
  // Ten markers alike of twenty lines, in one anchor group.
  const auto file = [](const std::string& population, const std::string& row) {
    std::string text = population + "\n1\n2\n10\n20\n", anchors;
    for (int m = 1; m <= 10; ++m) {
      text += "m" + std::to_string(m);
      for (const char code : row) text += std::string(" ") + code;
      text += '\n';
      anchors += "m" + std::to_string(m) + " 1\n";
    }
    return text + anchors;
  };
  struct {
    const char *population, *row, *words;
  } const cases[] = {
      {"4", "AAAAABBBBBAAAAABBBBB", ""},
      {"4", "AAAAABBBBBAAAAABBBHH", ""},  // one in ten may be left of selfing
      {"4", "AAAAABBBBBAAAAABBHHH", "30 of 200 genotypes are none of population 4 (RIL)"},
      {"7", "AAAAABBBBBAAAAABBBBB", "distorted (p < 0.01) at 10 of 10 markers of population 7 (F2)"},
      {"5", "AAAAABBBBBAAAAABBBBB", "distorted (p < 0.01) at 10 of 10 markers of population 5 (P1BC1RIL)"},
  };
  for (const auto& [population, row, words] : cases) {
    const Sandbox sandbox;
    sandbox.Write("x.map", file(population, row));
    const CommandResult result = RunCommand(sandbox, {"map", "x.map", "--no-report"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.err.find("is it another one?") != std::string::npos, *words != 0) << row << result.err;
    EXPECT_NE(result.err.find(words), std::string::npos) << result.err;
  }
  // Judged before the cleaning, which takes what the population cannot show for missing.
  const Sandbox sandbox;
  sandbox.Write("x.map", file("4", "AAAAABBBBBAAAAABHHHH"));
  for (const char* share : {"0.1", "0.9"}) {
    const CommandResult result = RunCommand(sandbox, {"map", "x.map", "--no-report", "--max-missing", share});
    EXPECT_EQ(result.code, *(share + 2) == '1' ? 1 : 0) << result.err;
    EXPECT_NE(result.err.find("40 of 200 genotypes are none of population 4"), std::string::npos)
        << result.err;
  }
}

}  // namespace
