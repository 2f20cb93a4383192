// Random valid files of every kind are read back as they were written; damaged ones end in a report.

#include <random>
#include <string>
#include <vector>

#include "project/genomic_selection.h"
#include "project/name_index.h"
#include "tests/reference/names_plain.h"
#include "tests/support/load.h"

namespace project {
namespace {

using support::Padded;

// One random file: what it says, and the text that says it, with the freedoms that the reader allows.
struct RandomFile {
  std::mt19937 random;
  ProjectHeader header;
  std::vector<std::string> names;
  std::vector<std::string> codes;  // the letters of each marker
  std::vector<int32_t> chromosomeSizes;
  std::vector<float> positions;
  std::vector<int32_t> anchors;
  std::string text;

  explicit RandomFile(unsigned seed) : random(seed) {}

  int32_t Below(int32_t limit) { return static_cast<int32_t>(random() % static_cast<unsigned>(limit)); }
  std::string Gap() {
    const char* gaps[] = {" ", "  ", "\t", ",", " , ", "\n", " \n\n "};
    return gaps[Below(7)];
  }
  void Remark() {
    if (Below(2) == 0) {
      text += Below(2) == 0 ? "! a remark 1 2 3\n" : "\n   \n";
    }
  }
  void Value(int32_t value) {
    Remark();
    text += std::to_string(value) + (Below(3) == 0 ? " and words behind it\n" : "\n");
  }
  std::string Quoted(const std::string& name) {
    const bool plain = name.find_first_of(" ,/'") == std::string::npos;
    if (plain && Below(3) != 0) {
      return name;
    }
    std::string quoted = "'";
    for (const char c : name) {
      quoted += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return quoted + "'";
  }

  void MakeMarkers(std::string_view letters) {
    const char* flourishes[] = {"", " x", ",y", "/z", "'w", "*2"};
    for (int32_t m = 1; m <= header.NumMarkers; ++m) {
      names.push_back("M" + std::to_string(m) + flourishes[Below(6)]);
      std::string row;
      for (int32_t line = 0; line < header.PopulationSize; ++line) {
        row += letters[static_cast<std::size_t>(Below(static_cast<int32_t>(letters.size())))];
      }
      codes.push_back(row);
      anchors.push_back(Below(4));
    }
  }
  void WriteRows(bool withAnchors) {
    for (std::size_t m = 0; m < names.size(); ++m) {
      text += Quoted(names[m]);
      for (std::size_t line = 0; line < codes[m].size();) {
        std::size_t run = 1;
        while (line + run < codes[m].size() && codes[m][line + run] == codes[m][line]) {
          ++run;
        }
        text += Gap() + (run > 1 ? std::to_string(run) + "*" : "") + codes[m][line];
        line += run;
      }
      text += "\n";
    }
    if (!withAnchors) {
      return;
    }
    Remark();
    for (std::size_t m = 0; m < names.size(); ++m) {
      text += Quoted(names[m]) + Gap() + std::to_string(anchors[m]) + " behind it\n";
    }
  }
  void WriteMap() {
    Remark();
    for (std::size_t c = 0; c < chromosomeSizes.size(); ++c) {
      text += "chr" + std::to_string(c + 1) + Gap() + std::to_string(chromosomeSizes[c]) + "\n";
    }
    Remark();
    std::size_t m = 0;
    for (std::size_t c = 0; c < chromosomeSizes.size(); ++c) {
      for (int32_t k = 0; k < chromosomeSizes[c]; ++k, ++m) {
        text +=
            Quoted(names[m]) + Gap() + std::to_string(c + 1) + Gap() + std::to_string(positions[m]) + "\n";
      }
    }
  }
};

RandomFile MarkerFile(unsigned seed) {
  RandomFile file(seed);
  file.header.PopulationType = 7;
  file.header.MappingFunction = 1 + file.Below(3);
  file.header.MarkerSpaceType = 1 + file.Below(2);
  file.header.NumMarkers = 1 + file.Below(6);
  file.header.PopulationSize = 1 + file.Below(70);
  for (const int32_t value :
       {file.header.PopulationType, file.header.MappingFunction, file.header.MarkerSpaceType,
        file.header.NumMarkers, file.header.PopulationSize}) {
    file.Value(value);
  }
  file.MakeMarkers("AHBX");
  file.Remark();
  file.WriteRows(true);
  return file;
}

RandomFile SdlFile(unsigned seed) {
  RandomFile file(seed);
  file.header = {0, 4, 1, 2, 1, 1 + file.Below(3), 0, 1 + file.Below(20), 0, 0, 0, 0};
  for (int32_t c = 0; c < file.header.NumChromosomes; ++c) {
    file.chromosomeSizes.push_back(1 + file.Below(3));
    float position = 0;
    for (int32_t k = 0; k < file.chromosomeSizes.back(); ++k) {
      position += static_cast<float>(file.Below(3)) * 0.5F;
      file.positions.push_back(position);
    }
  }
  file.header.NumMarkers = static_cast<int32_t>(file.positions.size());
  for (const int32_t value : {4, 1, 2, 1, file.header.NumChromosomes, file.header.PopulationSize}) {
    file.Value(value);
  }
  file.MakeMarkers("AB");
  file.WriteMap();
  file.Remark();
  file.WriteRows(false);
  return file;
}

void ExpectMarkers(const RandomFile& file, const ProjectBlock& block) {
  for (int32_t m = 1; m <= file.header.NumMarkers; ++m) {
    const auto at = static_cast<std::size_t>(m) - 1;
    ASSERT_EQ(MarkerNameAt(block, m), Padded(file.names[at], kNameWidth)) << file.text;
    ASSERT_EQ(GenotypesAt(block, m), file.codes[at]) << file.text;
  }
}

TEST(RandomFiles, MarkersAreReadBack) {
  const support::ScratchFolder folder;
  for (unsigned seed = 1; seed <= 150; ++seed) {
    const RandomFile file = MarkerFile(seed);
    ASSERT_EQ(support::Load(Module::Map, file.text), "good") << file.text;
    const ProjectBlock& block = Store(Module::Map);
    ExpectMarkers(file, block);
    EXPECT_EQ(block.AnchorInfo.items, file.anchors) << file.text;
    EXPECT_EQ(block.Header.MappingFunction, file.header.MappingFunction);
  }
}

TEST(RandomFiles, MapsAreReadBack) {
  const support::ScratchFolder folder;
  for (unsigned seed = 1; seed <= 150; ++seed) {
    const RandomFile file = SdlFile(seed);
    ASSERT_EQ(support::Load(Module::Sdl, file.text), "good") << file.text;
    const ProjectBlock& block = Store(Module::Sdl);
    ExpectMarkers(file, block);
    std::vector<float> positions;
    for (const ChromosomeTable& chromosome : block.Chromosome.items) {
      positions.insert(positions.end(), chromosome.Position.begin(), chromosome.Position.end());
    }
    EXPECT_EQ(positions, file.positions) << file.text;
  }
}

// Lines dropped, doubled and swapped, bytes changed: a report, or good; whatever is called good holds
// together.
TEST(RandomFiles, DamagedFilesEndInAReport) {
  const support::ScratchFolder folder;
  std::mt19937 random(7);
  const char bytes[] = "\n !',/*0139AHX\t";
  int refused = 0;
  for (unsigned seed = 1; seed <= 600; ++seed) {
    const bool markers = seed % 2 == 0;
    const Module module = markers ? Module::Map : Module::Sdl;
    std::string text = (markers ? MarkerFile(seed) : SdlFile(seed)).text;
    for (unsigned k = 0; k <= seed % 3; ++k) {
      const std::size_t at = random() % text.size();
      switch (random() % 3) {
        case 0:
          text[at] = bytes[random() % (sizeof bytes - 1)];
          break;
        case 1:
          text.erase(at, text.find('\n', at) - at + 1);
          break;
        default:
          text.insert(at, text.substr(random() % text.size(), 20));
      }
      text += "\n";
    }
    const std::string log = support::Load(module, text);
    const ProjectBlock& block = Store(module);
    if (log == "good") {
      const int32_t rows = markers ? block.Header.NumMarkers : block.TotalMarkers;
      ASSERT_EQ(GenotypesAt(block, rows).size(), static_cast<std::size_t>(block.Header.PopulationSize))
          << text;
    } else {
      ++refused;
      ASSERT_TRUE(log.starts_with("--Input error: ")) << log;
    }
  }
  EXPECT_GT(refused, 200);
}

TEST(NameIndex, FindsThePairsOfThePlainCheckInItsOrder) {
  std::mt19937 random(3);
  for (int round = 0; round < 50; ++round) {
    std::vector<std::string> names;
    for (unsigned k = 0; k < random() % 60; ++k) {
      names.push_back("n" + std::to_string(random() % 25));
    }
    NameIndex index;
    std::vector<std::pair<int32_t, int32_t>> pairs;
    for (std::size_t i = 0; i < names.size(); ++i) {
      for (const int32_t earlier : AddName(index, names[i])) {
        pairs.emplace_back(earlier, static_cast<int32_t>(i) + 1);
      }
    }
    EXPECT_EQ(pairs, reference::EqualNames({names.begin(), names.end()}));
  }
}

}  // namespace
}  // namespace project
