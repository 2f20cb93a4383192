#include "trial/quantile_tables.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/unit.h"
#include "stats/f_and_t.h"
#include "stats/ranks.h"
#include "trial/fields.h"

namespace trial {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

constexpr float kNotAsked = -1e30F;  // below every quantile of a float

// Normal quantiles of the ranks among n values. Environments of one size ask for the same ones: remembered.
struct Quantiles {
  std::vector<float> ofRank;
};
float NormalQuantile(Quantiles& quantiles, float rank, std::size_t n) {
  if (quantiles.ofRank.size() != n) {
    quantiles.ofRank.assign(n, kNotAsked);
  }
  float& quantile =
      quantiles.ofRank[std::min(static_cast<std::size_t>(rank), n) - 1];  // beyond 2^24 ranks round
  if (quantile == kNotAsked) {
    quantile = stats::ANORIN((rank - 0.5F) / static_cast<float>(n));
  }
  return quantile;
}

void TakeResiduals(const TrialTrait& trait, int32_t e, std::vector<float>& residuals) {
  residuals.clear();
  for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
    for (const float value : OfCell(trait, trait.Value, g, e)) {
      residuals.push_back(value - CellMeanAt(trait, g, e));
    }
  }
}

// Replaces ranks by quantiles on the scale of the residuals.
void ScaleRanks(const std::vector<float>& residuals, std::vector<float>& ranks, Quantiles& quantiles) {
  const auto n = static_cast<float>(residuals.size());
  float sum = 0;
  for (const float r : residuals) {
    sum += r;
  }
  const float m = sum / n;
  float squares = 0;
  for (const float r : residuals) {
    squares += (r - m) * (r - m);
  }
  const float s = std::sqrt(squares / (n - 1));
  for (float& rank : ranks) {
    rank = NormalQuantile(quantiles, rank, residuals.size()) * s + m;
  }
}

}  // namespace

void QuantileTables(int32_t unit, const TrialTable& table) {
  WriteRecord(unit, Record(Edits("3A20"), {"Trait", "Environment"}));
  Quantiles quantiles;
  std::vector<float> residuals, ranks;  // and the record: long, and used again for every environment
  std::string record;
  for (int32_t t = 1; t <= table.NumTraits; ++t) {
    const TrialTrait& trait = ItemAt(table.Trait, t);
    const std::string_view name = Text(ItemAt(table.TraitName, t));
    for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
      const std::string_view environment =
          Text(ItemAt(table.EnvironmentName, ItemAt(trait.EnvironmentIndex, e)));
      TakeResiduals(trait, e, residuals);
      ranks.resize(residuals.size());
      stats::RANKS(residuals, ranks.data(), 0.0F);
      ScaleRanks(residuals, ranks, quantiles);
      const std::pair<std::string_view, const std::vector<float>*> records[] = {{"Quantile", &ranks},
                                                                                {"Observed", &residuals}};
      for (const auto& [label, values] : records) {
        record.assign(Record(Edits("2A20,A12"), {name, environment, label}));
        AppendValues(record, *values);
        WriteRecord(unit, record);
      }
    }
  }
}

}  // namespace trial
