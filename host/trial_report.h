#pragma once

#include <string>
#include <vector>

#include "host/trial_run.h"

namespace host {

// All that one invocation of the trial command found.
struct TrialSession {
  std::string input;
  TrialInput table;  // with every trait that could be read
  int32_t classes = 10;
  std::vector<TraitFault> leftOut;
  std::vector<TrialRun> runs;  // one, or one a trait
  std::vector<std::string> warnings, written;
};

// What speaks for rows that were copied twice into the table; empty for none.
std::string RepeatedRows(const TrialInput& table);

// Genotypes of a trait, best first. The library's predictions where every genotype was in every environment
// and all are numbers; else the grand mean plus the mean deviation from the means of the genotype's own
// environments.
struct Ranking {
  std::string by;  // "prediction", "mean", "adjusted mean"
  struct Entry {
    std::size_t genotype;
    double value;
  };
  std::vector<Entry> entries;
};
Ranking Ranked(const TrialRun& run, std::size_t trait);

// The coefficient of variation of an analysis, percent: root of the error mean square over the mean of its
// plots.
double VariationPercent(const TrialRun& run, std::size_t trait, const VarianceTable& table);

// What the figures of a trait do not tell by themselves.
std::vector<std::string> TrialWarnings(const TrialRun& run);

// environment "Env", genotype "Gen", block none
std::string KeysText(const TrialInput& table);

std::string TrialSummary(const TrialSession& session);
std::string TrialJson(const TrialSession& session);

}  // namespace host
