#include "trial/analysis.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/unit.h"
#include "trial/anova.h"
#include "trial/biplots.h"
#include "trial/combined_anova.h"
#include "trial/correlations.h"
#include "trial/frequency_tables.h"
#include "trial/means.h"
#include "trial/quantile_tables.h"
#include "trial/trial_table.h"

namespace trial {
namespace {

enum File : int32_t { kAov = 1001, kEgv, kFrq, kQqp, kCoe, kPca, kPcp };
constexpr std::array<std::string_view, 7> kExtensions = {".aov", ".egv", ".frq", ".qqp",
                                                         ".coe", ".pca", ".pcp"};
constexpr std::size_t kExtensionOfInput = 4;  // cut off, whatever it is

void AnalyseTrials(TrialTable& table) {
  for (int32_t t = 1; t <= table.NumTraits; ++t) {
    const std::string_view name = Text(ItemAt(table.TraitName, t));
    TrialTrait& trait = ItemAt(table.Trait, t);
    AnalyseEnvironments(table, kAov, name, trait);
    if (trait.NumEnvironments > 1) {
      CombinedAnova(kAov, name, trait);
    }
  }
  WriteMeansAndPredictions(kEgv, table);
}

}  // namespace

bool RunTrialAnalysis(int32_t logUnit, int32_t numRows, int32_t numColumns, int32_t numClasses,
                      std::string_view path) {
  TrialTable table;
  if (!ReadTrialTable(logUnit, numRows, numColumns, path, table)) {
    platform::WriteRecord(logUnit, "--Input error: Please check the LOG file for error messages!");
    return false;
  }
  const std::string base(path.substr(0, path.size() - std::min(path.size(), kExtensionOfInput)));
  int32_t unit = kAov;
  for (const std::string_view extension : kExtensions) {
    platform::OpenUnit(unit++, base + std::string(extension), platform::OpenStatus::Replace);
  }
  AnalyseTrials(table);
  FrequencyTables(kFrq, numClasses, table);
  QuantileTables(kQqp, table);
  CorrelationTables(kCoe, table);
  BiplotAnalysis(kPca, kPcp, table);
  for (unit = kAov; unit <= kPcp; ++unit) {
    platform::CloseUnit(unit);
  }
  return true;
}

}  // namespace trial
