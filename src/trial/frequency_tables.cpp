#include "trial/frequency_tables.h"

#include <algorithm>
#include <string>

#include "platform/unit.h"
#include "stats/frequency.h"
#include "trial/fields.h"

namespace trial {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

struct Tally {
  int32_t unit;
  int32_t classes;
  float xlo = 0, xhi = 0;  // the trait's bounds
  std::vector<float> middle, count;
};

// Both bounds are moved up, not the upper one inwards: required as it stands.
void SetBounds(const TrialTrait& trait, Tally& tally) {
  const float d =
      (trait.MaxValue - trait.MinValue) / static_cast<float>(2 * static_cast<int64_t>(tally.classes) - 2);
  tally.xlo = trait.MinValue + d;
  tally.xhi = trait.MaxValue + d;
}

void WriteTally(Tally& tally, std::span<const float> x, std::string_view trait, std::string_view environment,
                std::string_view block) {
  tally.middle.resize(static_cast<std::size_t>(std::max(tally.classes, 0)));
  tally.count.resize(tally.middle.size());
  stats::OWFRQ(x, tally.classes, tally.count.data(), tally.xlo, tally.xhi, tally.middle.data());
  for (const auto& [label, values] : {std::pair(std::string_view("MiddlePoint"), &tally.middle),
                                      std::pair(std::string_view("Counts"), &tally.count)}) {
    std::string record = Record(Edits("4A20"), {trait, environment, block, label});
    AppendValues(record, *values);
    WriteRecord(tally.unit, record);
  }
}

// The plots of an environment by BlockId, which is compared with the blocks' running numbers.
std::vector<std::vector<float>> PlotsByBlock(const TrialTrait& trait, int32_t e) {
  std::vector<std::vector<float>> plots(static_cast<std::size_t>(NumBlocks(trait, e)));
  const auto values = OfEnvironment(trait, trait.Value, e);
  const auto blocks = OfEnvironment(trait, trait.BlockId, e);
  for (std::vector<float>& ofBlock : plots) {
    ofBlock.reserve(values.size() / plots.size() + 1);
  }
  for (std::size_t j = 0; j < values.size(); ++j) {
    if (blocks[j] <= NumBlocks(trait, e)) {
      ItemAt(plots, blocks[j]).push_back(values[j]);
    }
  }
  return plots;
}

// The name of the b-th block with data of the trait's e-th environment, looked up in the table's e-th:
// another one when the trait skips an environment, and blank past its end. Required as it stands.
std::string_view BlockNameAt(const TrialTable& table, const TrialTrait& trait, int32_t e, int32_t b) {
  const std::vector<Name>& names = ItemAt(table.Environment, e).BlockName;
  const int32_t place = ItemAt(trait.BlockIndex, ItemAt(trait.BlockBegin, e) + b);
  return static_cast<std::size_t>(place) <= names.size() ? Text(ItemAt(names, place)) : std::string_view();
}

void TallyBlocks(const TrialTable& table, std::string_view traitName, const TrialTrait& trait, Tally& tally) {
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    const std::string_view environment =
        Text(ItemAt(table.EnvironmentName, ItemAt(trait.EnvironmentIndex, e)));
    int32_t b = 0;
    for (const std::vector<float>& plots : PlotsByBlock(trait, e)) {
      ++b;
      if (!plots.empty()) {
        WriteTally(tally, plots, traitName, environment, BlockNameAt(table, trait, e, b));
      }
    }
  }
}

// Means or predictions: what is missing is left out, the -100 of an empty cell is not.
void TallyMeans(std::span<const float> means, std::string_view traitName, std::string_view environment,
                Tally& tally) {
  std::vector<float> x;
  std::copy_if(means.begin(), means.end(), std::back_inserter(x),
               [](float mean) { return !IsMissing(mean); });
  if (x.size() > 1) {
    WriteTally(tally, x, traitName, environment, "PredictionBLUE");
  }
}

void TallyTrait(const TrialTable& table, std::string_view traitName, const TrialTrait& trait, Tally& tally) {
  SetBounds(trait, tally);
  TallyBlocks(table, traitName, trait, tally);
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    TallyMeans(std::span(trait.CellMean)
                   .subspan(CellPlace(trait, 1, e), static_cast<std::size_t>(trait.NumGenotypes)),
               traitName, Text(ItemAt(table.EnvironmentName, ItemAt(trait.EnvironmentIndex, e))), tally);
  }
  TallyMeans(trait.PredictionBLUE, traitName, "Combined", tally);
}

}  // namespace

void FrequencyTables(int32_t unit, int32_t numClasses, const TrialTable& table) {
  WriteRecord(unit, Record(Edits("3A20"), {"Trait", "Environment", "Block"}));
  Tally tally{unit, numClasses, 0, 0, {}, {}};
  for (int32_t t = 1; t <= table.NumTraits; ++t) {
    TallyTrait(table, Text(ItemAt(table.TraitName, t)), ItemAt(table.Trait, t), tally);
  }
}

}  // namespace trial
