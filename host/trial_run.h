#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "host/result_files.h"
#include "host/trial_data.h"

namespace host {

inline constexpr double kNoFigure = std::numeric_limits<double>::quiet_NaN();

// A line of an analysis of variance; a figure that the analysis does not give is not a number.
struct VarianceSource {
  std::string name;
  double df = kNoFigure, ss = kNoFigure, ms = kNoFigure, f = kNoFigure, p = kNoFigure, variance = kNoFigure;
};

struct VarianceTable {
  std::string where;  // the environment
  bool combined = false;
  std::vector<VarianceSource> sources;
  double rSquare = kNoFigure;                          // percent
  double lsd05 = kNoFigure, lsd01 = kNoFigure;         // least significant differences of two genotypes
  double h2Plot = kNoFigure, h2Mean = kNoFigure;       // heritability of a plot, of a genotype's mean
  double bartlett = kNoFigure, bartlettP = kNoFigure;  // combined analysis only
};

struct TraitResults {
  std::vector<VarianceTable> tables;  // environments in their order, then the combined one
  std::vector<double> predictions;    // by place in TrialData::genotypes; empty without combined analysis
};

// One call of the library.
struct TrialRun {
  std::string word;  // between STEM and the extensions: empty, or ".yield"
  TrialData data;
  std::vector<TraitFacts> facts;      // by trait
  std::vector<TraitResults> results;  // by trait
};

inline constexpr const char* kTrialExtensions[] = {".aov", ".egv", ".frq", ".qqp", ".coe", ".pca", ".pcp"};

// Writes the run's table for the library, calls it, and reads what it found. The seven files are among
// `files`, not published yet. Failure: Other.
void RunTrialAnalysis(const ResultFiles& files, int32_t classes, TrialRun& run);

// Bytes that the library needs for tables of genotypes by environments.
double TrialBytes(const TrialData& data);

// The text in columns begin to begin + width (from 0) of a record, without blanks around it.
std::string_view FieldAt(std::string_view record, std::size_t begin, std::size_t width);
// That field as a number; not a number when it is none, or did not fit its columns.
double NumberAt(std::string_view record, std::size_t begin, std::size_t width);
// All number fields of that width from `begin` to the end.
std::vector<double> NumbersFrom(std::string_view record, std::size_t begin, std::size_t width);

// Mean over the plots of each genotype (fastest) in each environment; not a number for an empty cell.
std::vector<double> CellMeans(const TrialData& data, std::size_t trait);

}  // namespace host
