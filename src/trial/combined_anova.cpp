#include "trial/combined_anova.h"

#include <cmath>

#include "platform/record.h"
#include "platform/unit.h"
#include "stats/distributions.h"
#include "stats/f_and_t.h"
#include "stats/real_math.h"
#include "trial/anova.h"

namespace trial {
namespace {

constexpr float kSome = 0.5F;  // degrees of freedom are whole numbers: above it there are some
constexpr std::string_view kWhere = "CombinedANOVA";

constexpr Source kEvaluated[] = {Source::Model,    Source::Total,       Source::Error,        Source::Block,
                                 Source::Genotype, Source::Environment, Source::GeInteraction};
constexpr Source kTested[] = {Source::Model, Source::Block, Source::Genotype, Source::Environment,
                              Source::GeInteraction};
constexpr SourceRow kSourceRows[] = {{"Block/Env", Source::Block},
                                     {"Genotype", Source::Genotype},
                                     {"Environment", Source::Environment},
                                     {"GE_interaction", Source::GeInteraction}};

void AddPlots(const TrialTrait& trait, int32_t g, int32_t e, BySource& SS) {
  const float gEff = ItemAt(trait.GenotypeEffect, g);
  const float eEff = ItemAt(trait.EnvironmentEffect, e);
  const float geEff = CellEffectAt(trait, g, e);
  const auto values = OfCell(trait, trait.Value, g, e);
  const auto blocks = OfCell(trait, trait.BlockId, g, e);
  for (std::size_t j = 0; j < values.size(); ++j) {
    SS[Source::Genotype] += gEff * gEff;
    SS[Source::Environment] += eEff * eEff;
    SS[Source::GeInteraction] += geEff * geEff;
    const float bEff = OfBlock(trait, trait.BlockEffect, e, blocks[j]);
    SS[Source::Block] += bEff * bEff;
    const float res = (values[j] - trait.GrandMean) - (gEff + bEff + eEff + geEff);
    SS[Source::Error] += res * res;
  }
}

void SumSquares(const TrialTrait& trait, BySource& SS) {
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
      AddPlots(trait, g, e, SS);
    }
  }
  SS[Source::Model] =
      SS[Source::Genotype] + SS[Source::Block] + SS[Source::Environment] + SS[Source::GeInteraction];
  SS[Source::Total] = SS[Source::Model] + SS[Source::Error];
}

// The plots, counted one by one in float: the count stands still at 2^24.
float CountPlots(const TrialTrait& trait) {
  constexpr std::size_t kStandstill = std::size_t{1} << 24;
  return static_cast<float>(std::min(trait.Value.size(), kStandstill));
}

void DegreesOfFreedom(const TrialTrait& trait, float plots, BySource& DF) {
  DF[Source::Block] = static_cast<float>(TotalBlocks(trait) - trait.NumEnvironments);
  DF[Source::Genotype] = static_cast<float>(trait.NumGenotypes - 1);
  DF[Source::Environment] = static_cast<float>(trait.NumEnvironments - 1);
  DF[Source::GeInteraction] = DF[Source::Genotype] * DF[Source::Environment];
  DF[Source::Total] = plots - 1;
  DF[Source::Model] =
      DF[Source::Block] + DF[Source::Genotype] + DF[Source::Environment] + DF[Source::GeInteraction];
  DF[Source::Error] = DF[Source::Total] - DF[Source::Model];
}

void EstimateComponents(float G, float E, float blocks, float plots, AnovaTable& table) {
  const BySource& MS = table.MS;
  const float errorMs = MS[Source::Error];
  BySource& var = table.EstimatedVar;
  var[Source::Block] = Component((MS[Source::Block] - errorMs) * blocks / plots);
  var[Source::Genotype] = Component((MS[Source::Genotype] - errorMs) * G / plots);
  var[Source::Environment] = Component((MS[Source::Environment] - errorMs) * E / plots);
  var[Source::GeInteraction] = Component((MS[Source::GeInteraction] - errorMs) * E * G / plots);
  var[Source::Model] = Component(var[Source::Block] + var[Source::Genotype] + var[Source::Environment] +
                                 var[Source::GeInteraction]);
  var[Source::Error] = Component(errorMs);
}

void Summarise(float G, float E, float plots, AnovaTable& table) {
  const float ve = table.EstimatedVar[Source::Error];
  const float vg = table.EstimatedVar[Source::Genotype];
  const float vge = table.EstimatedVar[Source::GeInteraction];
  table.RSquare = table.SS[Source::Model] / table.SS[Source::Total] * 100;
  const float difference = std::sqrt(ve * 2 * G / plots + vge * 2 * G * E / plots);  // required as it stands
  table.LSD005 = stats::TIN(0.975F, table.DF[Source::Error]) * difference;
  table.LSD001 = stats::TIN(0.995F, table.DF[Source::Error]) * difference;
  table.H2PerPlot = vg / (vg + vge + ve);
  table.H2PerMean = vg / (vge / E + vg + ve * G / plots);
}

// Cell means weighted by the inverse of the environments' error variances. An empty cell comes in with its
// -100, and an environment without error variance leaves no weight that is a number: required as it stands.
void Predict(TrialTrait& trait) {
  float whole = 0;
  for (const float ms : trait.ErrorMS) {
    whole += 1 / ms;
  }
  trait.PredictionBLUE.assign(static_cast<std::size_t>(trait.NumGenotypes), 0.0F);
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    const float weight = (1 / ItemAt(trait.ErrorMS, e)) / whole;
    for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
      ItemAt(trait.PredictionBLUE, g) += CellMeanAt(trait, g, e) * weight;
    }
  }
}

float LogOf(float x) { return x > 0 && std::isfinite(x) ? stats::Log(x) : std::log(x); }

void BartlettTest(const TrialTrait& trait, AnovaTable& table) {
  float k = 0, whole = 0, squares = 0, logs = 0, inverses = 0;
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    const float d = ItemAt(trait.ErrorDF, e);
    const float s = ItemAt(trait.ErrorMS, e);
    if (d > kSome) {
      k += 1;
      whole += d;
      squares += d * s;
      logs += d * LogOf(s);
      inverses += 1 / d;
    }
  }
  const float pooled = squares / whole;
  const float m = LogOf(pooled) * whole - logs;
  const float c = (inverses - 1 / whole) / (3 * (k - 1)) + 1;
  table.BartlettStat = m / c;
  table.BartlettPr = 1 - stats::CHIDF(table.BartlettStat, k - 1);
}

}  // namespace

void CombinedAnova(int32_t aovUnit, std::string_view traitName, TrialTrait& trait) {
  AnovaTable table;
  const float plots = CountPlots(trait);
  SumSquares(trait, table.SS);
  DegreesOfFreedom(trait, plots, table.DF);
  if (plots < kSome || table.DF[Source::Error] < kSome) {
    return;
  }
  const auto G = static_cast<float>(trait.NumGenotypes);
  const auto E = static_cast<float>(trait.NumEnvironments);
  MeanSquares(kEvaluated, table);
  TestSources(kTested, table);
  EstimateComponents(G, E, static_cast<float>(TotalBlocks(trait)), plots, table);
  Summarise(G, E, plots, table);
  Predict(trait);
  BartlettTest(trait, table);
  WriteAnova(aovUnit, traitName, kWhere, kSourceRows, table);
  platform::WriteRecord(aovUnit, platform::Record(platform::Edits("2A20,A16,F16.4,E16.4E3"),
                                                  {traitName, "Homogeneity", "BartlettTest",
                                                   table.BartlettStat, table.BartlettPr}));
}

}  // namespace trial
