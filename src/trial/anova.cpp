#include "trial/anova.h"

#include <cmath>

#include "platform/record.h"
#include "platform/unit.h"
#include "stats/f_and_t.h"

namespace trial {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

constexpr float kSome = 0.5F;  // degrees of freedom are whole numbers: above it there are some

constexpr Source kEvaluated[] = {Source::Model, Source::Total, Source::Error, Source::Block,
                                 Source::Genotype};
constexpr Source kTested[] = {Source::Model, Source::Block, Source::Genotype};
constexpr SourceRow kSourceRows[] = {{"Block", Source::Block}, {"Genotype", Source::Genotype}};

// The sums of squares of environment e; the number of its plots comes back.
float SumSquares(const TrialTrait& trait, int32_t e, BySource& SS) {
  float plots = 0;
  const float mean = ItemAt(trait.EnvironmentMean, e);
  for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
    const float gEff = CellMeanAt(trait, g, e) - mean;
    const auto values = OfCell(trait, trait.Value, g, e);
    const auto blocks = OfCell(trait, trait.BlockId, g, e);
    for (std::size_t j = 0; j < values.size(); ++j) {
      plots += 1;
      SS[Source::Genotype] += gEff * gEff;
      const float bEff = OfBlock(trait, trait.BlockMean, e, blocks[j]) - mean;
      const float res = (values[j] - mean) - (gEff + bEff);
      SS[Source::Error] += res * res;
      SS[Source::Block] += bEff * bEff;
    }
  }
  SS[Source::Model] = SS[Source::Genotype] + SS[Source::Block];
  SS[Source::Total] = SS[Source::Genotype] + SS[Source::Block] + SS[Source::Error];
  return plots;
}

// G counts the genotypes of the trait, also those without a plot here: required as it stands.
void DegreesOfFreedom(const TrialTrait& trait, int32_t e, float plots, BySource& DF) {
  DF[Source::Genotype] = static_cast<float>(trait.NumGenotypes - 1);
  DF[Source::Total] = plots - 1;
  DF[Source::Block] = static_cast<float>(NumBlocks(trait, e) - 1);
  DF[Source::Model] = DF[Source::Block] + DF[Source::Genotype];
  DF[Source::Error] = DF[Source::Total] - DF[Source::Model];
}

void Estimate(float genotypes, float blocks, float plots, AnovaTable& table) {
  const BySource& MS = table.MS;
  const float errorMs = MS[Source::Error];
  BySource& var = table.EstimatedVar;
  var[Source::Error] = Component(errorMs);
  var[Source::Genotype] = Component((MS[Source::Genotype] - errorMs) * genotypes / plots);
  var[Source::Block] = Component((MS[Source::Block] - errorMs) * blocks / plots);
  var[Source::Model] = Component(var[Source::Block] + var[Source::Genotype]);
  table.RSquare = table.SS[Source::Model] / table.SS[Source::Total] * 100;
  const float difference = std::sqrt(errorMs * 2 * genotypes / plots);
  table.LSD005 = difference * stats::TIN(0.975F, table.DF[Source::Error]);
  table.LSD001 = stats::TIN(0.995F, table.DF[Source::Error]) * difference;
  table.H2PerPlot = var[Source::Genotype] / (var[Source::Error] + var[Source::Genotype]);
  table.H2PerMean = var[Source::Genotype] / (var[Source::Error] * genotypes / plots + var[Source::Genotype]);
}

// False when the environment has no error degrees of freedom.
bool AnalyseEnvironment(const TrialTrait& trait, int32_t e, AnovaTable& table) {
  const float plots = SumSquares(trait, e, table.SS);
  DegreesOfFreedom(trait, e, plots, table.DF);
  if (plots < kSome || table.DF[Source::Error] < kSome) {
    return false;
  }
  MeanSquares(kEvaluated, table);
  TestSources(kTested, table);
  Estimate(static_cast<float>(trait.NumGenotypes), static_cast<float>(NumBlocks(trait, e)), plots, table);
  return true;
}

}  // namespace

float Component(float value) { return value >= 0 ? value : 0; }

void MeanSquares(std::span<const Source> sources, AnovaTable& table) {
  for (const Source s : sources) {
    table.MS[s] = table.SS[s] / table.DF[s];
  }
  for (const Source s : sources) {
    table.FValue[s] = table.MS[s] / table.MS[Source::Error];
  }
}

void TestSources(std::span<const Source> tested, AnovaTable& table) {
  for (const Source s : tested) {
    if (table.DF[s] > kSome) {
      table.PrF[s] = 1 - stats::FDF(table.FValue[s], table.DF[s], table.DF[Source::Error]);
    }
  }
}

void WriteAnova(int32_t unit, std::string_view trait, std::string_view where, std::span<const SourceRow> rows,
                const AnovaTable& t) {
  WriteRecord(unit, Record(Edits("2A20,6A16"),
                           {"TraitName", "EnvironmentName", "Source", "DF", "SS", "MS", "F-value", "Pr>F"}));
  if (t.DF[Source::Model] > kSome) {
    const Source s = Source::Model;
    WriteRecord(unit, Record(Edits("2A20,A16,F16.4,3F16.4,E16.4E3"),
                             {trait, where, "Model", t.DF[s], t.SS[s], t.MS[s], t.FValue[s], t.PrF[s]}));
  }
  if (t.DF[Source::Error] > kSome) {
    const Source s = Source::Error;
    WriteRecord(unit,
                Record(Edits("2A20,A16,F16.4,2F16.4"), {trait, where, "Error", t.DF[s], t.SS[s], t.MS[s]}));
  }
  if (t.DF[Source::Total] > kSome) {
    const Source s = Source::Total;
    WriteRecord(unit, Record(Edits("2A20,A16,F16.4,F16.4"), {trait, where, "Total", t.DF[s], t.SS[s]}));
  }
  WriteRecord(unit, Record(Edits("2A20,A16,F16.4"), {trait, where, "R-square(%)", t.RSquare}));
  // Unlike the first heading, this one has the names themselves: required as it stands.
  WriteRecord(unit, Record(Edits("2A20,7A16"),
                           {trait, where, "Source", "DF", "SS", "MS", "F-value", "Pr>F", "EstimatedVar"}));
  for (const auto& [label, s] : rows) {
    if (t.DF[s] > kSome) {
      WriteRecord(unit, Record(Edits("2A20,A16,F16.4,3F16.4,E16.4E3,F16.4"),
                               {trait, where, label, t.DF[s], t.SS[s], t.MS[s], t.FValue[s], t.PrF[s],
                                t.EstimatedVar[s]}));
    }
  }
  const std::pair<std::string_view, float> closing[] = {{"LSD(0.05)", t.LSD005},
                                                        {"LSD(0.01)", t.LSD001},
                                                        {"H^2_per_plot", t.H2PerPlot},
                                                        {"H^2_per_mean", t.H2PerMean}};
  for (const auto& [label, value] : closing) {
    WriteRecord(unit, Record(Edits("2A20,A16,F16.4"), {trait, where, label, value}));
  }
}

void AnalyseEnvironments(const TrialTable& table, int32_t aovUnit, std::string_view traitName,
                         TrialTrait& trait) {
  trait.ErrorMS.assign(static_cast<std::size_t>(trait.NumEnvironments), 0.0F);
  trait.ErrorDF = trait.ErrorMS;
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    AnovaTable anova;
    if (AnalyseEnvironment(trait, e, anova)) {
      ItemAt(trait.ErrorDF, e) = anova.DF[Source::Error];
      ItemAt(trait.ErrorMS, e) = anova.MS[Source::Error];
      WriteAnova(aovUnit, traitName, Text(ItemAt(table.EnvironmentName, ItemAt(trait.EnvironmentIndex, e))),
                 kSourceRows, anova);
    }
  }
}

}  // namespace trial
