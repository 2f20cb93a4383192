#include "project/genotype_rules.h"

#include <algorithm>
#include <array>

#include "platform/text.h"
#include "project/report.h"

namespace project {
namespace {

using platform::Edits;

// Tokens and their code letters.

struct TokenList {
  char code;
  std::string_view tokens;  // parted by blanks
};

constexpr TokenList kBiParentalTokens[] = {
    {'A', "2 A AA"},       {'H', "1 H AB BA"},
    {'B', "0 B BB"},       {'D', "12 D AH HA AX XA A* *A A_ _A"},
    {'X', "-1 X XX * **"}, {'R', "10 R BH HB BX XB B* *B B_ _B"},
};
constexpr TokenList kClosedLineTokens[] = {{'A', "2 D A AA"}, {'B', "0 B BB"}, {'X', "-1 X XX * **"}};
constexpr TokenList kNestedFamilyTokens[] = {
    {'A', "2 A AA"}, {'H', "1 H AB"}, {'B', "0 B BB"}, {'X', "-1 X XX * **"}};
constexpr TokenList kClonalTokens[] = {{'A', "AC"}, {'B', "AD"}, {'C', "BC"}, {'D', "BD"},
                                       {'E', "XC"}, {'F', "XD"}, {'G', "AX"}, {'H', "BX"},
                                       {'I', "AA"}, {'J', "AB"}, {'K', "BB"}, {'X', "XX"}};

// The code letter of every token of two characters; 0 for one that is not legal.
using CodeTable = std::array<char, 65536>;

constexpr std::size_t Slot(char first, char second) {
  return static_cast<std::size_t>(static_cast<uint8_t>(first)) << 8 | static_cast<uint8_t>(second);
}

template <std::size_t N>
consteval CodeTable Codes(const TokenList (&lists)[N]) {
  CodeTable table{};
  for (const TokenList& list : lists) {
    for (std::size_t at = 0; at < list.tokens.size(); ++at) {
      const bool two = at + 1 < list.tokens.size() && list.tokens[at + 1] != ' ';
      table[Slot(list.tokens[at], two ? list.tokens[at + 1] : ' ')] = list.code;
      at += two ? 2 : 1;
    }
  }
  return table;
}

constexpr CodeTable kBiParentalCodes = Codes(kBiParentalTokens);
constexpr CodeTable kClosedLineCodes = Codes(kClosedLineTokens);
constexpr CodeTable kNestedFamilyCodes = Codes(kNestedFamilyTokens);
constexpr CodeTable kClonalCodes = Codes(kClonalTokens);

// The letters that stand in a row, as a set: every test of a row asks which letters it shows, not how often.
constexpr uint32_t Letter(char code) {
  return code >= 'A' && code <= 'X' ? 1U << (code - 'A') : 1U << 31;  // the last for all that are no code
}
constexpr uint32_t Letters(std::string_view codes) {
  uint32_t set = 0;
  for (const char code : codes) {
    set |= Letter(code);
  }
  return set;
}
constexpr bool Within(uint32_t shown, uint32_t allowed) { return (shown & ~allowed) == 0; }

// Codes the row up to the first token that is not legal; false, with the line from 0, when there is one.
bool CodeTokens(const CodeTable& table, MarkerRow& row, std::size_t& illegalLine) {
  const std::size_t present = std::min(row.size, row.tokens.size() / kTokenWidth);
  row.codes.resize(present);
  const char* token = row.tokens.data();
  for (std::size_t line = 0; line < present; ++line, token += kTokenWidth) {
    const char code = table[Slot(token[0], token[1])];
    if (code == 0) {
      row.codes.resize(line);
      illegalLine = line;
      return false;
    }
    row.codes[line] = code;
  }
  illegalLine = present;  // lines that the row did not reach are blank
  return present == row.size;
}

void ReportToken(int32_t log, int32_t& status, std::string_view words, std::string_view detail,
                 const MarkerRow& row, std::size_t line) {
  Report(log, status, words);
  ReportDetail(log, Edits("A,2I8,A4"),
               {detail, row.marker, static_cast<int32_t>(line + 1), TokenAt(row, line)});
}

void ReportMarker(int32_t log, int32_t& status, std::string_view words, const MarkerRow& row) {
  Report(log, status, words);
  ReportDetail(log, Edits("A,I8"), {"  MarkerID = ", row.marker});
}

// Bi-parental populations.

struct FamilyRow {
  uint32_t populations;  // as bits
  uint32_t kept;         // codes that the family shows
  char toX;              // the code that tells nothing in this family, 0 for none
  std::string_view refusal;
};
constexpr FamilyRow kFamilies[] = {
    {PopulationBit(1) | PopulationBit(9), Letters("AHX"), 'D',
     "--Input error: Markertype out of range (A, H, D, X)!"},
    {PopulationBit(2) | PopulationBit(10), Letters("HBX"), 'R', "--Input error: Out of range (H, B, R, X)!"},
    {kSelfingPopulations, Letters("AHBDRX"), 0, ""},
    {PopulationsUpTo(20), Letters("ABX"), 'H',
     "--Input error: Out of range (A, H, B, X)!"},  // homozygous lines
};

const FamilyRow* FamilyOf(int32_t populationType) {
  for (const FamilyRow& family : kFamilies) {
    if (populationType >= 1 && populationType <= 20 &&
        (family.populations & PopulationBit(populationType)) != 0) {
      return &family;
    }
  }
  return nullptr;
}

// 1 co-dominant, 12 dominant, 10 recessive; 0 for a row that cannot be.
int32_t BiParentalCategory(const FamilyRow& family, uint32_t shown) {
  if (family.populations != kSelfingPopulations) {
    return Within(shown, Letter('X')) ? 0 : 1;
  }
  if (Within(shown, Letters("AHBX"))) {
    return 1;
  }
  if (Within(shown, Letters("BDX"))) {
    return 12;
  }
  return Within(shown, Letters("ARX")) ? 10 : 0;
}

// Turns what tells nothing in the family into X, up to the first code that the family cannot have; that line,
// from 0, or the row's size.
std::size_t FoldFamily(const FamilyRow& family, std::string& codes) {
  for (std::size_t line = 0; line < codes.size(); ++line) {
    if (!Within(Letter(codes[line]), family.kept)) {
      if (codes[line] != family.toX) {
        return line;
      }
      codes[line] = 'X';
    }
  }
  return codes.size();
}

void ApplyBiParental(int32_t log, int32_t& status, MarkerRow& row) {
  std::size_t line = 0;
  if (!CodeTokens(kBiParentalCodes, row, line)) {
    ReportToken(log, status, "--Input error: Illegal Markertype value in input file!",
                "  MarkerID, LineID, Markertype = ", row, line);
    return;
  }
  const FamilyRow* family = FamilyOf(row.populationType);
  if (family == nullptr) {
    return;
  }
  line = Within(Letters(row.codes), family->kept) ? row.size : FoldFamily(*family, row.codes);
  if (line < row.size) {
    Report(log, status, family->refusal);
    ReportDetail(log, Edits("A,2I8,A4"),
                 {"  MarkerID, LineID, and Markertype= ", row.marker, static_cast<int32_t>(line + 1),
                  std::string_view(row.codes).substr(line, 1)});
    return;
  }
  row.category = BiParentalCategory(*family, Letters(row.codes));
  if (row.category == 0) {
    Report(log, status, "--Input error: impossible Marker Category!");
    ReportDetail(log, Edits("A,2I8"), {"  MarkerID, Marker Category = ", row.marker, row.category});
  }
}

// Lines of a closed set, and nested families.

void ApplyClosedLines(int32_t log, int32_t& status, MarkerRow& row) {
  std::size_t illegal = 0;
  if (!CodeTokens(kClosedLineCodes, row, illegal)) {
    ReportToken(log, status, "--Input error: Illegal Markertype in input file!",
                "  MarkerID, LineID, and Input Markertype = ", row, illegal);
    return;
  }
  const uint32_t shown = Letters(row.codes);
  if (Within(shown, Letters("AX")) || Within(shown, Letters("BX"))) {
    ReportMarker(log, status, "--Input error: non polymorphism marker!", row);
  }
}

void ApplyNestedFamilies(int32_t log, int32_t& status, MarkerRow& row) {
  std::size_t illegal = 0;
  if (!CodeTokens(kNestedFamilyCodes, row, illegal)) {
    ReportToken(log, status, "--Input error: Illegal markertype in input file!",
                "  MarkerID, LineID, Markertype = ", row, illegal);
    return;
  }
  const FamilyRow* family = FamilyOf(row.populationType);
  if (family != nullptr && family->toX == 'H') {
    std::replace(row.codes.begin(), row.codes.end(), 'H', 'X');
  }
}

// Clonal F1 and double cross.

struct CategoryRow {
  std::string_view text;
  bool clonal, doubleCross;  // where the category may stand
  std::string_view codes;    // of its genotypes; X besides
  int32_t category;
  std::string_view illegal;  // report when other genotypes stand in the row
};
constexpr CategoryRow kClonalCategories[] = {
    {"ABCD", true, true, "ABCD", 1, "--Input error: illeagal marker in input file!"},
    {"A=B", true, true, "EF", 2, "--Input error: illeagal marker type!"},
    {"C=D", true, true, "GH", 3,
     "--Input error: non-polymorhism marker!"},  // these words: required as it stands
    {"AB=CD", true, false, "IJK", 4, "--Input error: illeagal marker type!"},
    {"A=CB=D", false, true, "IJK", 4, "--Input error: illeagal marker type!"},
    {"A=DB=C", false, true, "IJK", 5, "--Input error: illeagal marker type!"},
};

const CategoryRow* CategoryOf(const MarkerRow& row) {
  const std::string_view text = platform::WithoutTrailingBlanks(row.categoryText);
  for (const CategoryRow& category : kClonalCategories) {
    if (category.text == text && (row.populationType == 1 ? category.clonal : category.doubleCross)) {
      return &category;
    }
  }
  return nullptr;
}

void ReportCategory(int32_t log, int32_t& status, const MarkerRow& row) {
  Report(log, status, "--Input error: Marker category out of range!");
  if (row.populationType == 1) {
    ReportDetail(log, Edits("A,I8,1X,A"),
                 {"  MarkerID, Inout Marker Category = ",  // "Inout": required as it stands
                  row.marker, row.categoryText});
  } else {
    ReportDetail(log, Edits("A,I8,A"),
                 {"  MarkerID, Input Marker Category = ", row.marker, row.categoryText});
  }
}

void ApplyClonal(int32_t log, int32_t& status, MarkerRow& row) {
  const CategoryRow* category = CategoryOf(row);
  if (category == nullptr) {
    ReportCategory(log, status, row);
    return;
  }
  std::size_t illegal = 0;
  if (!CodeTokens(kClonalCodes, row, illegal)) {
    row.codes.clear();  // the cells take their codes only in a row without fault
    Report(log, status, "--Input error: illeagal Markertype in input file!");
    ReportDetail(log, Edits("A,I8,A4"), {"  MarkerID, Markertype = ", row.marker, TokenAt(row, illegal)});
    return;
  }
  const uint32_t shown = Letters(row.codes);
  const bool monomorphic = std::any_of(category->codes.begin(), category->codes.end(),
                                       [&](char code) { return Within(shown, Letter(code) | Letter('X')); });
  if (!Within(shown, Letters(category->codes) | Letter('X'))) {
    row.codes.clear();
    ReportMarker(log, status, category->illegal, row);
  } else if (monomorphic) {
    row.codes.clear();
    ReportMarker(log, status, "--Input error: non-polymorhism marker!", row);
  } else {
    row.category = category->category;
  }
}

// Four and eight parents.

constexpr std::string_view kParentLetters = "ABCDEFGH";

// Folds parents that share an allele onto the first of them: in the parents' row, and in the code that the
// letter of each parent gets in the cells.
void FoldAlleles(std::size_t numParents, std::array<char, 8>& parents, std::array<char, 8>& codeOf) {
  for (std::size_t i = 0; i < numParents; ++i) {
    const char allele = parents[i];
    if (allele != kParentLetters[i]) {
      continue;
    }
    const auto first =
        static_cast<std::size_t>(std::find(parents.begin(), parents.end(), allele) - parents.begin());
    for (std::size_t k = 0; k < numParents; ++k) {
      if (parents[k] == allele) {
        parents[k] = codeOf[k] = kParentLetters[first];
      }
    }
  }
}

// One digit a parent: 1 for A to 7 for G, 8 for everything else.
int32_t ParentPattern(std::size_t numParents, const std::array<char, 8>& parents) {
  int32_t pattern = 0;
  for (std::size_t k = 0; k < numParents; ++k) {
    const bool upToG = parents[k] >= 'A' && parents[k] <= 'G';
    pattern = 10 * pattern + (upToG ? parents[k] - 'A' + 1 : 8);
  }
  return pattern;
}

void ApplyMultiParent(int32_t log, int32_t& status, MarkerRow& row) {
  const std::size_t numParents = row.populationType <= 2 ? 4 : 8;
  std::array<char, 8> parents{};
  parents.fill('X');
  std::copy_n(row.categoryText.begin(), numParents, parents.begin());
  std::array<char, 8> codeOf{};  // of the cells that hold the k-th letter alone
  std::copy(kParentLetters.begin(), kParentLetters.end(), codeOf.begin());
  FoldAlleles(numParents, parents, codeOf);
  row.category = ParentPattern(numParents, parents);

  const std::size_t present = std::min(row.size, row.tokens.size() / kTokenWidth);
  row.codes.resize(present);
  for (std::size_t line = 0; line < present; ++line) {
    const char letter = row.tokens[2 * line];
    const auto k = kParentLetters.find(letter);
    const bool folds = k != std::string_view::npos && row.tokens[2 * line + 1] == ' ';
    row.codes[line] = folds ? codeOf[k] : letter;
  }
  const std::string_view legal = kParentLetters.substr(0, numParents);
  if (std::any_of(parents.begin(), parents.begin() + static_cast<std::ptrdiff_t>(numParents),
                  [&](char parent) { return legal.find(parent) == std::string_view::npos; })) {
    ReportMarker(log, status, "--Input error: illeagal marker type of the parents!", row);
    return;
  }
  const uint32_t shown = Letters(row.codes);
  // All eight letters pass, also with four parents; a row cut short by a slash has lines without any.
  if (!Within(shown, Letters(kParentLetters) | Letter('X')) || present < row.size) {
    ReportMarker(log, status, "--Input error: illeagal marker type!", row);
    return;
  }
  // With eight parents the missing cells count along; with four the cells of a fifth letter do. Required so.
  const uint32_t besides = Letter(numParents == 8 ? 'X' : 'E');
  for (const char letter : legal) {
    if (Within(shown, Letter(letter) | besides)) {
      ReportMarker(log, status, "--Input error: non-polymorphism marker!", row);
      return;
    }
  }
}

}  // namespace

std::string_view TokenAt(const MarkerRow& row, std::size_t line) {
  const std::size_t at = line * kTokenWidth;
  return at < row.tokens.size() ? std::string_view(row.tokens).substr(at, kTokenWidth)
                                : std::string_view("  ");
}

void ApplyMarkerRules(MarkerRules rules, int32_t log, int32_t& status, MarkerRow& row) {
  switch (rules) {
    case MarkerRules::None:
      return;
    case MarkerRules::BiParental:
      return ApplyBiParental(log, status, row);
    case MarkerRules::ClosedLines:
      return ApplyClosedLines(log, status, row);
    case MarkerRules::NestedFamilies:
      return ApplyNestedFamilies(log, status, row);
    case MarkerRules::Clonal:
      return ApplyClonal(log, status, row);
    case MarkerRules::MultiParent:
      return ApplyMultiParent(log, status, row);
  }
}

}  // namespace project
