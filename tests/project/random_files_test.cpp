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

// What the cells of a kind of file may be: a token for each code letter, with what stands in front of the
// name.
struct Kind {
  Module module;
  int32_t population;
  const char* category;  // nothing in front
  const char* letters;   // the first two stand in every row, so that it shows two alleles
  const char* tokens;    // of two characters each
};
constexpr Kind kKinds[] = {
    {Module::Bin, 7, "", "ABHX", "2 0 1 -1"},       {Module::Map, 7, "", "AHBX", "A H B X "},
    {Module::Cdm, 1, "A=B ", "EFX", "XCXDXX"},      {Module::Plm, 1, "ABCD\t", "ABCDX", "A B C D X "},
    {Module::Sdl, 3, "", "ABX", "AABBXX"},          {Module::Bip, 1, "", "AHX", "A ABXX"},
    {Module::Met, 16, "", "AHB", "A H B "},         {Module::Nam, 4, "", "AB", "2 0 "},
    {Module::Csl, 0, "", "ABX", "D B * "},          {Module::Cdq, 2, "A=DB=C,", "IKJX", "AABBABXX"},
    {Module::Plq, 4, "ABCDEFGH ", "GHX", "G H X "}, {Module::Cmp, 0, "", "AB", "A B "},
};

// One random file: what it says, and the text that says it, with the freedoms that the reader allows.
struct RandomFile {
  Kind kind;
  std::mt19937 random;
  ProjectHeader header;
  std::vector<std::string> names;
  std::vector<std::string> codes;  // the letters of each marker
  std::vector<int32_t> chromosomeSizes, anchors, familySizes;
  std::vector<float> positions, phenotypes;
  std::string text;

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
  std::string Quoted(const std::string& name) {
    if (name.find_first_of(" ,/'") == std::string::npos && Below(3) != 0) {
      return name;
    }
    std::string quoted = "'";
    for (const char c : name) {
      quoted += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return quoted + "'";
  }

  void MakeUp() {
    header = {kMapping,
              kind.population,
              1 + Below(3),
              2,
              1,
              1 + Below(3),
              1 + Below(6),
              2 + Below(40),
              1 + Below(2),
              1 + Below(2),
              1 + Below(2),
              1 + Below(3)};
    const bool mapped = kind.module == Module::Cmp ||
                        RowOf(kind.module).steps[4].field == Field::NumChromosomes ||
                        RowOf(kind.module).steps[5].field == Field::NumChromosomes;
    if (mapped) {
      for (int32_t c = 0; c < header.NumChromosomes; ++c) {
        chromosomeSizes.push_back(1 + Below(3));
        float position = 0;
        for (int32_t k = 0; k < chromosomeSizes.back(); ++k) {
          positions.push_back(position += static_cast<float>(Below(3)) * 0.5F);
        }
      }
      header.NumMarkers = static_cast<int32_t>(positions.size());
    }
    if (kind.module == Module::Nam) {
      header.PopulationSize = 0;
      for (int32_t f = 0; f < header.NumFamilies; ++f) {
        familySizes.push_back(1 + Below(9));
        header.PopulationSize += familySizes.back();
      }
    }
    const std::string letters = kind.letters;
    const char* flourishes[] = {"", " x", ",y", "/z", "'w", "*2"};
    for (int32_t m = 1; m <= header.NumMarkers; ++m) {
      names.push_back("M" + std::to_string(m) + flourishes[Below(6)]);
      std::string row = letters.substr(0, 2);
      while (static_cast<int32_t>(row.size()) < header.PopulationSize) {
        row += letters[static_cast<std::size_t>(Below(static_cast<int32_t>(letters.size())))];
      }
      codes.push_back(row.substr(0, static_cast<std::size_t>(header.PopulationSize)));
      anchors.push_back(Below(4));
    }
  }

  std::string Token(char letter) const {
    const std::size_t k = std::string(kind.letters).find(letter);
    const std::string token = std::string(kind.tokens).substr(2 * k, 2);
    return token.substr(0, token.find(' '));
  }
  void WriteMarkerRows() {
    for (std::size_t m = 0; m < names.size(); ++m) {
      text += kind.category + Quoted(names[m]);
      for (std::size_t line = 0; line < codes[m].size();) {
        std::size_t run = 1;
        while (line + run < codes[m].size() && codes[m][line + run] == codes[m][line]) {
          ++run;
        }
        text += Gap() + (run > 1 ? std::to_string(run) + "*" : "") + Token(codes[m][line]);
        line += run;
      }
      text += "\n";
    }
  }
  void WriteMap() {
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
  void WriteValues(int32_t rows) {
    for (int32_t t = 1; t <= rows; ++t) {
      text += "row" + std::to_string(t);
      for (int32_t line = 0; line < header.PopulationSize; ++line) {
        phenotypes.push_back(static_cast<float>(Below(2000)) / 8);
        text += Gap() + std::to_string(phenotypes.back());
      }
      text += "\n";
    }
  }
  void Write(const Step& step) {
    Remark();
    switch (step.section) {
      case Section::Header:
        text +=
            std::to_string(FieldOf(header, step.field)) + (Below(3) == 0 ? " and words behind it\n" : "\n");
        break;
      case Section::MarkerTypes:
        return WriteMarkerRows();
      case Section::Anchors:
        for (std::size_t m = 0; m < names.size(); ++m) {
          text += Quoted(names[m]) + Gap() + std::to_string(anchors[m]) + " behind it\n";
        }
        break;
      case Section::Chromosomes:
        return WriteMap();
      case Section::Phenotypes:
        return WriteValues(header.NumTraits);
      case Section::EnvironmentRows:
        return WriteValues(header.NumEnvironments);
      case Section::LineValues:
        return WriteValues(header.NumTraits * header.NumEnvironments * header.NumReplications);
      case Section::Families:
        for (const int32_t size : familySizes) {
          text += "family" + Gap() + std::to_string(size) + "\n";
        }
        break;
      default:  // sections that take nothing from the file
        break;
    }
  }
};

RandomFile MakeFile(const Kind& kind, unsigned seed) {
  RandomFile file{kind, std::mt19937(seed), {}, {}, {}, {}, {}, {}, {}, {}, {}};
  file.MakeUp();
  for (const Step& step : RowOf(kind.module).steps) {
    if (step.onlyIndicator != kSimulation) {
      file.Write(step);
    }
  }
  return file;
}

std::string LoadFile(const Kind& kind, const std::string& text) {
  return support::Load(kind.module, kind.module == Module::Bin ? 101 : RowOf(kind.module).moduleCode, text);
}

TEST(RandomFiles, EveryKindIsReadBack) {
  const support::ScratchFolder folder;
  for (const Kind& kind : kKinds) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
      const RandomFile file = MakeFile(kind, seed);
      ASSERT_EQ(LoadFile(kind, file.text), "good") << file.text;
      const ProjectBlock& block = Store(kind.module);
      if (kind.module != Module::Cmp) {
        for (int32_t m = 1; m <= file.header.NumMarkers; ++m) {
          const auto at = static_cast<std::size_t>(m) - 1;
          ASSERT_EQ(MarkerNameAt(block, m), Padded(file.names[at], kNameWidth)) << file.text;
          ASSERT_EQ(GenotypesAt(block, m), file.codes[at]) << file.text;
        }
      }
      if (block.AnchorInfo.allocated) {
        EXPECT_EQ(block.AnchorInfo.items, file.anchors) << file.text;
      }
      std::vector<float> positions;
      for (const ChromosomeTable& chromosome : block.Chromosome.items) {
        positions.insert(positions.end(), chromosome.Position.begin(), chromosome.Position.end());
      }
      EXPECT_EQ(positions, file.positions) << file.text;
      EXPECT_EQ(block.Phenotype.items, file.phenotypes) << file.text;
    }
  }
}

// Lines dropped, doubled and swapped, bytes changed: a report, or good; whatever is called good holds
// together. Files with phenotypes are left to the fuzzers, since a value that is no number ends the process.
TEST(RandomFiles, DamagedFilesEndInAReport) {
  const support::ScratchFolder folder;
  std::mt19937 random(7);
  const char bytes[] = "\n !',/*0139AHX\t";
  int refused = 0;
  for (const Kind& kind : kKinds) {
    const Module m = kind.module;
    if (m == Module::Bip || m == Module::Met || m == Module::Nam || m == Module::Cdq || m == Module::Plq) {
      continue;
    }
    for (unsigned seed = 1; seed <= 80; ++seed) {
      std::string text = MakeFile(kind, seed).text;
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
      const std::string log = LoadFile(kind, text);
      const ProjectBlock& block = Store(m);
      if (log == "good" && m != Module::Cmp) {
        const int32_t rows = block.Chromosome.allocated ? block.TotalMarkers : block.Header.NumMarkers;
        ASSERT_EQ(GenotypesAt(block, rows).size(), static_cast<std::size_t>(block.Header.PopulationSize))
            << text;
      } else if (log != "good") {
        ++refused;
        ASSERT_TRUE(log.starts_with("--Input error: ")) << log;
      }
    }
  }
  EXPECT_GT(refused, 200);
}

TEST(RandomFiles, GenomicSelection) {
  const support::ScratchFolder folder;
  for (unsigned seed = 1; seed <= 40; ++seed) {
    RandomFile file{kKinds[1], std::mt19937(seed), {}, {}, {}, {}, {}, {}, {}, {}, {}};
    file.MakeUp();
    const int32_t breeding = 1 + file.Below(5);
    for (const int32_t count :
         {file.header.NumMarkers, file.header.PopulationSize, breeding, file.header.NumTraits}) {
      file.Remark();
      file.text += std::to_string(count) + "\n";
    }
    const auto markers = [&](int32_t size) {
      file.Remark();
      for (const std::string& name : file.names) {
        file.text += file.Quoted(name);
        for (int32_t line = 0; line < size; ++line) {
          file.text += file.Gap() + std::to_string(file.Below(3));
        }
        file.text += "\n";
      }
    };
    markers(file.header.PopulationSize);
    file.Remark();
    file.WriteValues(file.header.NumTraits);
    markers(breeding);
    support::WriteFile("in.gs", file.text);
    int32_t traits = 0;
    ASSERT_TRUE(ReadSelectionTraits("in.gs", traits)) << file.text;
    EXPECT_EQ(traits, file.header.NumTraits);
    std::vector<ShortName> names;
    int32_t size = 0;
    ASSERT_TRUE(ReadSelectionNames("in.gs", names, size)) << file.text;
    EXPECT_EQ(size, breeding);
    EXPECT_EQ(Text(names.back()), Padded("row" + std::to_string(traits), 19));
    EXPECT_FALSE(platform::IsConnected(kLogUnit)) << "nothing to report";
  }
}

TEST(NameIndex, FindsThePairsOfThePlainCheckInItsOrder) {
  std::mt19937 random(3);
  for (int round = 0; round < 50; ++round) {
    std::vector<std::string> names;
    const unsigned count = static_cast<unsigned>(random() % 60);
    for (unsigned k = 0; k < count; ++k) {
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
