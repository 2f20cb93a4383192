#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// What may stand in the rows of genotypes, by kind of file.
enum class Rules { None, BiParental, ClosedLines, Families, Clonal, MultiParent };

// BIN files take the rules of the module code that the caller names; None for codes that have none.
Rules RulesOf(std::string_view module, int32_t moduleCode);
bool HasCategory(Rules rules);  // a word ahead of the marker's name

// Whether a genotype is so written in files of these rules, whatever the population.
bool IsGenotype(Rules rules, std::string_view word);
// Whether the header's population type exists.
bool IsPopulation(Rules rules, int64_t type);
std::string PopulationRange(Rules rules);

// A genotype that cannot stand in a row, and how often it does.
struct BadCell {
  std::string code;
  std::size_t first = 0, times = 0;  // the first line of the population, from 1
  bool known = false;                // written as genotypes are, but not of this population or marker
};
struct RowJudgement {
  std::vector<BadCell> cells;  // of the first few codes
  std::size_t others = 0;      // genotypes that cannot stand there, of further codes
  std::string whole;           // what is wrong with the row as a whole, or empty
};

// Judges a row as a check of the file would; `population` 0 where the header does not tell it, then only codes
// that exist nowhere are told. A null is a code of no characters. `part`: some of the row's genotypes are
// not there, so that nothing can be said of the row as a whole.
void JudgeRow(Rules rules, int64_t population, std::string_view category,
              std::span<const std::string_view> cells, bool part, RowJudgement& into);

}  // namespace host
