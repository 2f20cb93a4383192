#include "trial/biplots.h"

#include <cmath>
#include <numeric>
#include <string>

#include "platform/unit.h"
#include "stats/svd.h"
#include "trial/fields.h"

namespace trial {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;
using stats::At;
using stats::Matrix;

constexpr int32_t kAxes = 2;

enum class Model { Gge, Ammi };
constexpr std::string_view kModelNames[] = {"GGE", "AMMI"};

// One table at work: a trait under a model.
struct Biplot {
  int32_t pcaUnit, pcpUnit;
  const TrialTable& table;
  std::string_view traitName;
  const TrialTrait& trait;
  Model model;
  std::string_view ModelName() const { return kModelNames[static_cast<std::size_t>(model)]; }
  std::string_view Genotype(int32_t g) const {
    return Text(ItemAt(table.GenotypeName, ItemAt(trait.GenotypeIndex, g)));
  }
  std::string_view Environment(int32_t e) const {
    return Text(ItemAt(table.EnvironmentName, ItemAt(trait.EnvironmentIndex, e)));
  }
};

// The -100 of an empty cell is not missing and enters like any effect: required as it stands.
Matrix MakeTable(const Biplot& plot) {
  const TrialTrait& trait = plot.trait;
  Matrix x = stats::MakeMatrix(trait.NumGenotypes, trait.NumEnvironments);
  for (int32_t e = 1; e <= x.columns; ++e) {
    for (int32_t g = 1; g <= x.rows; ++g) {
      const float effect = CellEffectAt(trait, g, e);
      const float genotype = ItemAt(trait.GenotypeEffect, g);
      const bool missing = IsMissing(effect);
      if (plot.model == Model::Gge) {
        At(x, g, e) = missing ? genotype : genotype + effect;
      } else {
        At(x, g, e) = missing ? 0 : effect;
      }
    }
  }
  return x;
}

// What the model leaves out of its table.
float BaseAt(const Biplot& plot, int32_t g, int32_t e) {
  const TrialTrait& trait = plot.trait;
  const float environment = ItemAt(trait.EnvironmentEffect, e);
  return plot.model == Model::Gge ? trait.GrandMean + environment
                                  : ItemAt(trait.GenotypeEffect, g) + trait.GrandMean + environment;
}

// A singular value is split evenly between the genotypes and the environments.
void WriteScores(const Biplot& plot, const stats::Decomposition& axes) {
  const TrialTrait& trait = plot.trait;
  const float root1 = std::sqrt(axes.s[0]), root2 = std::sqrt(axes.s[1]);
  const auto write = [&](std::string_view side, std::string_view name, float mean, float first,
                         float second) {
    WriteRecord(plot.pcaUnit, Record(Edits("A20,2A12,A20,3F12.4"),
                                     {plot.traitName, plot.ModelName(), side, name, mean, first, second}));
  };
  for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
    write("Genotype", plot.Genotype(g), ItemAt(trait.GenotypeMean, g), root1 * At(axes.u, g, 1),
          root2 * At(axes.u, g, 2));
  }
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    write("Environment", plot.Environment(e), ItemAt(trait.EnvironmentMean, e), root1 * At(axes.v, e, 1),
          root2 * At(axes.v, e, 2));
  }
  const float whole =
      std::accumulate(axes.s.begin(), axes.s.end(), 0.0F, [](float sum, float s) { return sum + s * s; });
  write("Score", "Score", trait.GrandMean, axes.s[0] * axes.s[0] / whole, axes.s[1] * axes.s[1] / whole);
}

void WriteHeadings(const Biplot& plot) {
  const std::string keys = Record(Edits("A20,A12,A20"), {"TraitName", "DataUsed", "GenotypeName"});
  std::string kinds = keys, names = keys;
  for (const std::string_view kind : {"Observation", "Prediction"}) {
    for (int32_t e = 1; e <= plot.trait.NumEnvironments; ++e) {
      AppendHeading(kinds, kind);
      AppendHeading(names, plot.Environment(e));
    }
  }
  WriteRecord(plot.pcpUnit, kinds);
  WriteRecord(plot.pcpUnit, names);
}

void WritePredictions(const Biplot& plot, const Matrix& x, const stats::Decomposition& axes) {
  const auto count = static_cast<std::size_t>(x.columns);
  std::vector<float> values(2 * count);
  for (int32_t g = 1; g <= x.rows; ++g) {
    for (int32_t e = 1; e <= x.columns; ++e) {
      const float base = BaseAt(plot, g, e);
      const float rebuilt =
          At(axes.u, g, 1) * axes.s[0] * At(axes.v, e, 1) + At(axes.u, g, 2) * axes.s[1] * At(axes.v, e, 2);
      ItemAt(values, e) = At(x, g, e) + base;
      ItemAt(values, x.columns + e) = rebuilt + base;
    }
    std::string record = Record(Edits("A20,A12,A20"), {plot.traitName, plot.ModelName(), plot.Genotype(g)});
    AppendValues(record, values);
    WriteRecord(plot.pcpUnit, record);
  }
}

void BiplotTables(const Biplot& plot) {
  const Matrix x = MakeTable(plot);
  const stats::Decomposition axes = stats::SVD(x, kAxes, kAxes);
  WriteScores(plot, axes);
  WriteHeadings(plot);
  WritePredictions(plot, x, axes);
}

}  // namespace

void BiplotAnalysis(int32_t pcaUnit, int32_t pcpUnit, const TrialTable& table) {
  WriteRecord(pcaUnit, Record(Edits("A20,2A12,A20,3A12"),
                              {"TraitName", "DataUsed", "GtpOrEnv", "Name", "MeanValue", "PCA1", "PCA2"}));
  for (int32_t t = 1; t <= table.NumTraits; ++t) {
    const TrialTrait& trait = ItemAt(table.Trait, t);
    if (trait.NumGenotypes > 1 && trait.NumEnvironments > 1) {
      for (const Model model : {Model::Gge, Model::Ammi}) {
        BiplotTables({pcaUnit, pcpUnit, table, Text(ItemAt(table.TraitName, t)), trait, model});
      }
    }
  }
}

}  // namespace trial
