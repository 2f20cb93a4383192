#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace host {

inline constexpr float kMissing = -9999.0F;  // a value that is missing, in the table of the library

// A field trial, one plot a row. Names are those that the library gets: at most 19 characters.
struct TrialData {
  std::vector<std::string> environments, genotypes, traits;  // in order of first appearance
  std::vector<std::vector<std::string>> blocks;              // by environment: a block belongs to it
  std::vector<int32_t> environment, genotype, block;         // of each plot, places from 0
  std::vector<std::vector<float>> values;                    // by trait, then plot; not a number: missing
  std::size_t Plots() const { return environment.size(); }
};

// A trait that cannot be analysed, and why in plain words.
struct TraitFault {
  std::string trait, why;
};

// Which columns hold what. An empty name is looked for among the usual headings; kNoColumn says that the
// table has no such column. Without any of the three the first columns are taken.
inline constexpr const char* kNoColumn = "none";
struct TrialColumns {
  std::string environment, genotype, block;
  std::vector<std::string> traits;  // empty: every other column with numbers
};

struct TrialInput {
  TrialData data;
  std::array<std::string, 3> keys;  // headings of environment, genotype, block; empty for none
  std::string separator;            // "commas"
  std::vector<TraitFault> faults;   // columns with text among the numbers; they are not in `data`
  std::vector<std::string> notes;   // what was left out or renamed, for the user
};

// Reads a table with one heading line: parted by tabs, semicolons, commas or blanks; missing values are an
// empty cell, NA, NaN, N/A, "-", ".", "*" or -9999. Failure InputWrong tells the lines that are wrong, Other
// a file that cannot be read.
TrialInput ReadTrial(const std::filesystem::path& path, const TrialColumns& columns);

// These traits (places from 0) and the plots that have a value of one of them at least.
TrialData Selected(const TrialData& data, const std::vector<std::size_t>& traits);

// Plots that an earlier one equals in environment, genotype, block and all values, of which one at least is there;
// ascending.
std::vector<std::size_t> RepeatedPlots(const TrialData& data);

// A trait's plots as the analysis counts them.
struct TraitFacts {
  struct AtEnvironment {
    int32_t place = 0;  // in TrialData::environments
    int32_t plots = 0;
    int32_t blocks = 0;     // with a value
    bool blockGap = false;  // a block without a value stands before one with values
    double mean = 0;
  };
  std::vector<int32_t> genotypes;           // with a value, places ascending
  std::vector<AtEnvironment> environments;  // with a value, places ascending
  std::size_t plots = 0, missing = 0;
  std::size_t hundreds = 0;    // plots of exactly -100
  std::size_t emptyCells = 0;  // pairs of those genotypes and environments without a plot
  float least = 0, most = 0;   // of the plots with a value
  double mean = 0;
  // Error degrees of freedom of an environment: plots - blocks - (genotypes - 1).
  int64_t ErrorDf(const AtEnvironment& at) const;
};
TraitFacts FactsOf(const TrialData& data, std::size_t trait);

// What the library could not survive, or would answer with nonsense, in words; empty for a good trait.
std::string FaultOf(const TrialData& data, std::size_t trait, const TraitFacts& facts, int32_t classes);

}  // namespace host
