#include "host/genotype_rules.h"

#include <algorithm>
#include <array>

#include "host/populations.h"

namespace host {
namespace {

struct ModuleRules {
  std::string_view module;
  int32_t code;  // of BIN files
  Rules rules;
};
constexpr ModuleRules kModuleRules[] = {
    {"MAP", 102, Rules::BiParental}, {"SDL", 104, Rules::BiParental},  {"BIP", 105, Rules::BiParental},
    {"MET", 106, Rules::BiParental}, {"CSL", 107, Rules::ClosedLines}, {"NAM", 108, Rules::Families},
    {"CDM", 20, Rules::Clonal},      {"CDQ", 20, Rules::Clonal},       {"PLM", 30, Rules::MultiParent},
    {"PLQ", 30, Rules::MultiParent}, {"", 101, Rules::BiParental},
};

// How genotypes are written, each with its code letter.
struct Spelling {
  char code;
  std::string_view words;  // parted by blanks
};
constexpr Spelling kBiParental[] = {
    {'A', "2 A AA"},       {'H', "1 H AB BA"},
    {'B', "0 B BB"},       {'D', "12 D AH HA AX XA A* *A A_ _A"},
    {'X', "-1 X XX * **"}, {'R', "10 R BH HB BX XB B* *B B_ _B"},
};
constexpr Spelling kClosedLines[] = {{'A', "2 D A AA"}, {'B', "0 B BB"}, {'X', "-1 X XX * **"}};
constexpr Spelling kFamilies[] = {{'A', "2 A AA"}, {'H', "1 H AB"}, {'B', "0 B BB"}, {'X', "-1 X XX * **"}};
constexpr Spelling kClonal[] = {{'A', "AC"}, {'B', "AD"}, {'C', "BC"}, {'D', "BD"}, {'E', "XC"}, {'F', "XD"},
                                {'G', "AX"}, {'H', "BX"}, {'I', "AA"}, {'J', "AB"}, {'K', "BB"}, {'X', "XX"}};
constexpr std::string_view kParents = "ABCDEFGH";

// The code letter by a word's first two characters; 0 for what is no genotype.
using CodeTable = std::array<char, 65536>;

std::size_t Slot(std::string_view word) {
  const auto first = static_cast<unsigned char>(word.empty() ? ' ' : word[0]);
  const auto second = static_cast<unsigned char>(word.size() < 2 ? ' ' : word[1]);
  return static_cast<std::size_t>(first) << 8U | second;
}

CodeTable TableOf(std::span<const Spelling> spellings) {
  CodeTable table{};
  for (const Spelling& row : spellings) {
    for (std::string_view rest = row.words; !rest.empty();) {
      const std::size_t end = std::min(rest.find(' '), rest.size());
      table[Slot(rest.substr(0, end))] = row.code;
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  return table;
}

// Only the first character counts with four and eight parents.
CodeTable ParentTable() {
  CodeTable table{};
  for (std::size_t second = 0; second < 256; ++second) {
    for (const char letter : kParents) table[static_cast<std::size_t>(letter) << 8U | second] = letter;
    table[static_cast<std::size_t>('X') << 8U | second] = 'X';
  }
  return table;
}

const CodeTable& CodesOf(Rules rules) {
  static const CodeTable biParental = TableOf(kBiParental), closed = TableOf(kClosedLines),
                         families = TableOf(kFamilies), clonal = TableOf(kClonal), parents = ParentTable(),
                         none{};
  switch (rules) {
    case Rules::BiParental:
      return biParental;
    case Rules::ClosedLines:
      return closed;
    case Rules::Families:
      return families;
    case Rules::Clonal:
      return clonal;
    case Rules::MultiParent:
      return parents;
    case Rules::None:
      break;
  }
  return none;
}

// Code letters as a set.
constexpr uint32_t Letter(char code) { return 1U << static_cast<unsigned>(code - 'A'); }
constexpr uint32_t Letters(std::string_view codes) {
  uint32_t set = 0;
  for (const char code : codes) set |= Letter(code);
  return set;
}
constexpr bool Within(uint32_t shown, uint32_t allowed) { return (shown & ~allowed) == 0; }

struct CategoryRow {
  std::string_view text;
  bool clonal, doubleCross;  // where the category may stand
  std::string_view codes;    // of its genotypes, besides missing
};
constexpr CategoryRow kCategories[] = {
    {"ABCD", true, true, "ABCD"},  {"A=B", true, true, "EF"},      {"C=D", true, true, "GH"},
    {"AB=CD", true, false, "IJK"}, {"A=CB=D", false, true, "IJK"}, {"A=DB=C", false, true, "IJK"},
};
constexpr std::string_view kMonomorphic = "all lines have the same genotype, which says nothing";

const CategoryRow* CategoryOf(std::string_view text, int64_t population) {
  constexpr std::size_t width = 8;  // characters of a category that count
  for (const CategoryRow& row : kCategories) {
    if (row.text == text.substr(0, width) && (population == 1 ? row.clonal : row.doubleCross)) return &row;
  }
  return nullptr;
}

bool Monomorphic(uint32_t shown, std::string_view codes) {
  return std::any_of(codes.begin(), codes.end(),
                     [&](char code) { return Within(shown, Letter(code) | Letter('X')); });
}

// The codes that a row may have; a code that says nothing in the population counts as missing and may stand.
uint32_t Allowed(Rules rules, int64_t population, const CategoryRow* category) {
  constexpr uint32_t all = ~0U;
  if (population == 0) return all;
  if (rules == Rules::Clonal && category != nullptr) return Letters(category->codes) | Letter('X');
  if (rules != Rules::BiParental) return all;
  const std::string_view shows = kPopulations[population - 1].shows;
  if (shows == "AH") return Letters("AHDX");
  if (shows == "HB") return Letters("HBRX");
  return shows == "AB" ? Letters("ABHX") : all;
}

std::string BiParentalWhole(uint32_t shown, int64_t population) {
  const std::string_view shows = kPopulations[population - 1].shows;
  if (shows.size() == 2) {
    if ((shown & Letters(shows)) != 0) return {};
    return "no line has a genotype that says anything in population " + std::to_string(population) +
           "; take the marker out";
  }
  const bool fits =
      Within(shown, Letters("AHBX")) || Within(shown, Letters("BDX")) || Within(shown, Letters("ARX"));
  return fits ? "" : "D or R stands beside genotypes that it excludes (D goes with B, R with A)";
}

std::string ParentsWhole(uint32_t shown, int64_t population, std::string_view category) {
  const std::size_t count = population <= 2 ? 4 : 8;
  std::string parents(category.substr(0, count));
  parents.resize(count, 'X');
  const std::string_view legal = kParents.substr(0, count);
  // The first parent of an allele stands for all that share it.
  std::array<char, 8> standsFor{};
  std::copy(kParents.begin(), kParents.end(), standsFor.begin());
  for (std::size_t i = 0; i < count; ++i) {
    const char allele = parents[i];
    if (allele != kParents[i]) continue;
    const char first = kParents[parents.find(allele)];
    for (std::size_t k = 0; k < count; ++k) {
      if (parents[k] == allele) parents[k] = standsFor[k] = first;
    }
  }
  if (parents.find_first_not_of(legal) != std::string::npos) {
    return "the parents \"" + std::string(category) + "\" are not " + std::to_string(count) + " letters of " +
           std::string(legal);
  }
  uint32_t folded = shown & Letter('X');
  for (std::size_t k = 0; k < kParents.size(); ++k) {
    if ((shown & Letter(kParents[k])) != 0) folded |= Letter(standsFor[k]);
  }
  // With four parents the missing genotypes do not count along, those of a fifth letter do.
  const uint32_t besides = count == 8 ? Letter('X') : Letter('E');
  const bool alike = std::any_of(legal.begin(), legal.end(),
                                 [&](char code) { return Within(folded, Letter(code) | besides); });
  return alike ? std::string(kMonomorphic) : "";
}

std::string WholeRow(Rules rules, int64_t population, uint32_t shown, std::string_view categoryText,
                     const CategoryRow* category) {
  switch (rules) {
    case Rules::BiParental:
      return population == 0 ? "" : BiParentalWhole(shown, population);
    case Rules::ClosedLines:
      return std::string(Monomorphic(shown, "AB") ? kMonomorphic : "");
    case Rules::Clonal:
      return std::string(category != nullptr && Monomorphic(shown, category->codes) ? kMonomorphic : "");
    case Rules::MultiParent:
      return population == 0 ? "" : ParentsWhole(shown, population, categoryText);
    case Rules::Families:
    case Rules::None:
      break;
  }
  return {};
}

void Count(std::string_view word, std::size_t line, bool known, RowJudgement& into) {
  constexpr std::size_t told = 5, shown = 20;  // codes, and characters of one
  for (BadCell& cell : into.cells) {
    if (cell.code == word.substr(0, shown)) {
      ++cell.times;
      return;
    }
  }
  if (into.cells.size() == told) {
    ++into.others;
  } else {
    into.cells.push_back({std::string(word.substr(0, shown)), line, 1, known});
  }
}

}  // namespace

Rules RulesOf(std::string_view module, int32_t moduleCode) {
  for (const ModuleRules& row : kModuleRules) {
    if (module == "BIN" ? row.code == moduleCode : row.module == module) return row.rules;
  }
  return Rules::None;
}

bool HasCategory(Rules rules) { return rules == Rules::Clonal || rules == Rules::MultiParent; }

bool IsGenotype(Rules rules, std::string_view word) { return CodesOf(rules)[Slot(word)] != 0; }

bool IsPopulation(Rules rules, int64_t type) {
  constexpr int64_t clonal = 2, parents = 4, biParental = 20;
  if (rules == Rules::ClosedLines || rules == Rules::None) return true;  // nobody looks at it
  const int64_t last = rules == Rules::Clonal ? clonal : rules == Rules::MultiParent ? parents : biParental;
  if (type < 1 || type > last) return false;
  return rules != Rules::Families || kPopulations[type - 1].shows.size() == 2;
}

std::string PopulationRange(Rules rules) {
  if (rules == Rules::Clonal) return "1 or 2";
  if (rules == Rules::MultiParent) return "1 to 4";
  return rules == Rules::Families ? "1 to 20 without the selfing generations" : "1 to 20";
}

void JudgeRow(Rules rules, int64_t population, std::string_view category,
              std::span<const std::string_view> cells, bool part, RowJudgement& into) {
  into.cells.clear();
  into.whole.clear();
  into.others = 0;
  const CodeTable& codes = CodesOf(rules);
  const CategoryRow* row = rules == Rules::Clonal ? CategoryOf(category, population) : nullptr;
  if (rules == Rules::Clonal && population != 0 && row == nullptr) {
    into.whole =
        "\"" + std::string(category) + "\" is no marker category of population " + std::to_string(population);
    return;
  }
  const uint32_t allowed = Allowed(rules, population, row);
  uint32_t shown = 0;
  for (std::size_t k = 0; k < cells.size(); ++k) {
    const char code = codes[Slot(cells[k])];
    const bool stands = code != 0 && Within(Letter(code), allowed);
    if (stands) {
      shown |= Letter(code);
    } else {
      Count(cells[k], k + 1, code != 0, into);
    }
  }
  if (into.cells.empty() && !part) into.whole = WholeRow(rules, population, shown, category, row);
}

}  // namespace host
