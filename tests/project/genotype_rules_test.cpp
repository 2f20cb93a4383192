// The rules of one marker-type row over all tokens, mixtures and categories.

#include "project/genotype_rules.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/unit.h"
#include "project/loader.h"
#include "tests/support/scratch.h"

namespace project {
namespace {

struct RowResult {
  std::string codes;
  int32_t category;
  std::string report;  // its first line; empty for none
};

RowResult ApplyTo(MarkerRules rules, int32_t population, std::string category, const std::string& tokens) {
  category.resize(kCategoryWidth, ' ');
  platform::OpenUnit(kLogUnit, "rules.log", platform::OpenStatus::Replace);
  int32_t status = 0;
  MarkerRow row{1, population, tokens.size() / kTokenWidth, category, tokens, {}};
  ApplyMarkerRules(rules, kLogUnit, status, row);
  platform::CloseUnit(kLogUnit);
  const std::string log = support::ReadFile("rules.log");
  std::filesystem::remove("rules.log");  // a new file costs the file system less than one cut to nothing
  EXPECT_EQ(status, log.empty() ? 0 : -1) << log;
  return {row.codes, row.category, log.substr(0, log.find('\n'))};
}

TEST(GenotypeRules, KnowTheirTokensAndNoOthers) {
  const support::ScratchFolder folder;
  struct Case {
    MarkerRules rules;
    int32_t population;
    const char *category, *legal;
  };
  const Case cases[] = {
      {MarkerRules::BiParental, 7, "",
       "* ** *A *B -1 0 1 10 12 2 A A* AA AB AH AX A_ B B* BA BB BH BX B_ D H HA HB R X XA XB XX _A _B "},
      {MarkerRules::ClosedLines, 0, "", "* ** -1 0 2 A AA B BB D X XX "},
      {MarkerRules::NestedFamilies, 1, "", "* ** -1 0 1 2 A AA AB B BB H X XX "},
      {MarkerRules::Clonal, 1, "ABCD", "AA AB AC AD AX BB BC BD BX XC XD XX "},
  };
  const std::string characters = " *-/01239?ABCDEHNRX_abhx\x80\xff";
  for (const Case& c : cases) {
    std::string legal;
    for (const char first : characters) {
      for (const char second : characters) {
        const std::string token = {first, second};
        if (ApplyTo(c.rules, c.population, c.category, token).report.find("arkertype") == std::string::npos) {
          legal += second == ' ' ? token : token + " ";
        }
      }
    }
    EXPECT_EQ(legal, c.legal);
  }
}

TEST(GenotypeRules, MixturesOfSelfedGenerations) {
  const support::ScratchFolder folder;
  std::string coDominant, dominant, recessive;
  int refused = 0;
  for (unsigned set = 1; set < 64; ++set) {
    std::string tokens, letters;
    for (unsigned k = 0; k < 6; ++k) {
      if ((set >> k & 1U) != 0) {
        letters += "AHBDRX"[k];
        tokens += {letters.back(), ' '};
      }
    }
    const RowResult row = ApplyTo(MarkerRules::BiParental, 7, "", tokens);
    refused += row.report == "--Input error: impossible Marker Category!" ? 1 : 0;
    (row.category == 1    ? coDominant
     : row.category == 12 ? dominant
                          : recessive) += row.report.empty() ? letters + " " : "";
  }
  EXPECT_EQ(coDominant, "A H AH B AB HB AHB X AX HX AHX BX ABX HBX AHBX ");
  EXPECT_EQ(dominant, "D BD DX BDX ");
  EXPECT_EQ(recessive, "R AR RX ARX ");
  EXPECT_EQ(refused, 40);
}

TEST(GenotypeRules, ClonalCategories) {
  const support::ScratchFolder folder;
  struct Case {
    const char *text, *populations;
    std::vector<std::string> tokens;
    const char* codes;
    int32_t category;
    std::string illegal;
  };
  const std::string mono = "non-polymorhism marker!";
  const Case cases[] = {
      {"ABCD", "12", {"AC", "AD", "BC", "BD"}, "ABCD", 1, "illeagal marker in input file!"},
      {"A=B", "12", {"XC", "XD"}, "EF", 2, "illeagal marker type!"},
      {"C=D", "12", {"AX", "BX"}, "GH", 3, mono},
      {"AB=CD", "1", {"AA", "AB", "BB"}, "IJK", 4, "illeagal marker type!"},
      {"A=CB=D", "2", {"AA", "AB", "BB"}, "IJK", 4, "illeagal marker type!"},
      {"A=DB=C", "2", {"AA", "AB", "BB"}, "IJK", 5, "illeagal marker type!"},
      {"abcd", "", {"AC", "BD"}, "", 1, ""},
      {"ABCDE", "", {"AC", "BD"}, "", 1, ""},
      {"", "", {"AC", "BD"}, "", 1, ""},
  };
  const char* every[] = {"AC", "AD", "BC", "BD", "XC", "XD", "AX", "BX", "AA", "AB", "BB"};
  for (const Case& c : cases) {
    std::string row;  // of its own tokens
    for (const std::string& token : c.tokens) {
      row += token;
    }
    for (int32_t population = 1; population <= 2; ++population) {
      const auto apply = [&](const std::string& tokens) {
        return ApplyTo(MarkerRules::Clonal, population, c.text, tokens);
      };
      const RowResult good = apply(row + "XX");
      if (std::string_view(c.populations).find(static_cast<char>('0' + population)) ==
          std::string_view::npos) {
        EXPECT_EQ(good.report, "--Input error: Marker category out of range!") << c.text;
        continue;
      }
      EXPECT_EQ(good.report + good.codes, std::string(c.codes) + "X") << c.text;
      EXPECT_EQ(good.category, c.category) << c.text;
      EXPECT_EQ(apply(row + "XXQQ").codes, "");
      for (const std::string token : every) {
        const bool own = std::find(c.tokens.begin(), c.tokens.end(), token) != c.tokens.end();
        std::string tokens = own ? token + "XX" : row;
        const RowResult refused = apply(tokens += token);
        EXPECT_EQ(refused.report, "--Input error: " + (own ? mono : c.illegal)) << c.text << " " << token;
        EXPECT_EQ(refused.codes, "") << "cells get codes in a good row only";
      }
    }
  }
}

}  // namespace
}  // namespace project
