#include "trial/means.h"

#include <string>

#include "platform/unit.h"
#include "trial/fields.h"

namespace trial {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

void AppendEmptyColumns(std::string& record, int32_t count) {
  for (int32_t column = 1; column <= count; ++column) {
    platform::AppendReal(record, 12, 4, kNoValue);
  }
}

// One value a genotype of the trait, in the columns of all genotypes. The columns between the trait's first
// and second genotype are not filled, nor those behind a single one: required as it stands.
void AppendGenotypes(std::string& record, const TrialTable& table, const TrialTrait& trait,
                     const std::vector<float>& values) {
  const int32_t last = trait.NumGenotypes;
  for (int32_t g = 1; g <= last; ++g) {
    const int32_t column = ItemAt(trait.GenotypeIndex, g);
    if (g == 1) {
      AppendEmptyColumns(record, column - 1);
    }
    platform::AppendReal(record, 12, 4, ItemAt(values, g));
    if (g > 1) {
      const int32_t next = g < last ? ItemAt(trait.GenotypeIndex, g + 1) : table.NumGenotypes + 1;
      AppendEmptyColumns(record, next - column - 1);
    }
  }
}

// Empty cells come in with their -100: required as it stands.
std::vector<float> SimpleMeans(const TrialTrait& trait) {
  std::vector<float> means(static_cast<std::size_t>(trait.NumGenotypes), 0.0F);
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
      ItemAt(means, g) += CellMeanAt(trait, g, e);
    }
  }
  for (float& mean : means) {
    mean /= static_cast<float>(trait.NumEnvironments);
  }
  return means;
}

void WriteTrait(int32_t unit, const TrialTable& table, std::string_view name, const TrialTrait& trait) {
  const auto write = [&](std::string_view second, const std::vector<float>& values) {
    std::string record = Record(Edits("2A20"), {name, second});
    AppendGenotypes(record, table, trait, values);
    WriteRecord(unit, record);
  };
  std::vector<float> means(static_cast<std::size_t>(trait.NumGenotypes));
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
      ItemAt(means, g) = CellMeanAt(trait, g, e);
    }
    write(Text(ItemAt(table.EnvironmentName, ItemAt(trait.EnvironmentIndex, e))), means);
  }
  write("SimpleMean", SimpleMeans(trait));
  if (!trait.PredictionBLUE.empty()) {
    write("PredictionBLUE", trait.PredictionBLUE);
  }
}

}  // namespace

void WriteMeansAndPredictions(int32_t unit, const TrialTable& table) {
  std::string heading = Record(Edits("2A20"), {"TraitName", "EnvironmentName"});
  for (const Name& genotype : table.GenotypeName) {
    AppendHeading(heading, Text(genotype));
  }
  WriteRecord(unit, heading);
  for (int32_t t = 1; t <= table.NumTraits; ++t) {
    WriteTrait(unit, table, Text(ItemAt(table.TraitName, t)), ItemAt(table.Trait, t));
  }
}

}  // namespace trial
