#include "trial/correlations.h"

#include <cmath>
#include <string>

#include "platform/unit.h"
#include "stats/machine.h"
#include "trial/fields.h"

namespace trial {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

constexpr int32_t kNotComputed = 6;  // the constant of AMACH

std::span<const float> MeansOf(const TrialTrait& trait, int32_t e) {
  return std::span(trait.CellMean)
      .subspan(CellPlace(trait, 1, e), static_cast<std::size_t>(trait.NumGenotypes));
}

// For every environment of the table its position in the trait's list, 0 for none.
std::vector<int32_t> Positions(const TrialTable& table, const TrialTrait& trait) {
  std::vector<int32_t> positions(static_cast<std::size_t>(table.NumEnvironments), 0);
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    ItemAt(positions, ItemAt(trait.EnvironmentIndex, e)) = e;
  }
  return positions;
}

// Two traits in one environment, at position a of the first trait and b of the second. The genotypes at these
// positions, not the ones compared, decide whether there is a correlation, and the means are aligned by
// position in each trait's list: required as it stands. Places beyond a list leave it without a value.
float BetweenTraits(const TrialTrait& first, int32_t a, const TrialTrait& second, int32_t b) {
  const bool selected = a <= first.NumGenotypes && b <= second.NumGenotypes &&
                        ItemAt(first.GenotypeIndex, a) == ItemAt(second.GenotypeIndex, b);
  if (!selected || first.NumGenotypes > second.NumGenotypes) {
    return stats::AMACH(kNotComputed);
  }
  return PearsonR(MeansOf(first, a), MeansOf(second, b).first(static_cast<std::size_t>(first.NumGenotypes)));
}

void WriteRow(int32_t unit, int32_t first, int32_t second, const std::vector<float>& values) {
  std::string record = Record(Edits("2I6"), {first, second});
  platform::AppendReals(record, 10, 4, values);
  WriteRecord(unit, record);
}

void WriteTraitCorrelations(int32_t unit, const TrialTable& table,
                            const std::vector<std::vector<int32_t>>& positions) {
  for (int32_t v = 1; v <= table.NumEnvironments; ++v) {
    for (int32_t t1 = 1; t1 <= table.NumTraits; ++t1) {
      std::vector<float> row;
      const int32_t a = ItemAt(ItemAt(positions, t1), v);
      for (int32_t t2 = 1; t2 < t1; ++t2) {
        const int32_t b = ItemAt(ItemAt(positions, t2), v);
        row.push_back(a > 0 && b > 0 ? BetweenTraits(ItemAt(table.Trait, t1), a, ItemAt(table.Trait, t2), b)
                                     : stats::AMACH(kNotComputed));
      }
      row.push_back(1.0F);
      WriteRow(unit, v, t1, row);
    }
  }
}

void WriteEnvironmentCorrelations(int32_t unit, const TrialTable& table,
                                  const std::vector<std::vector<int32_t>>& positions) {
  for (int32_t t = 1; t <= table.NumTraits; ++t) {
    const TrialTrait& trait = ItemAt(table.Trait, t);
    for (int32_t v = 1; v <= table.NumEnvironments; ++v) {
      std::vector<float> row;
      const int32_t a = ItemAt(ItemAt(positions, t), v);
      for (int32_t w = 1; w <= v; ++w) {
        const int32_t b = ItemAt(ItemAt(positions, t), w);
        row.push_back(a > 0 && b > 0 ? PearsonR(MeansOf(trait, a), MeansOf(trait, b))
                                     : stats::AMACH(kNotComputed));
      }
      WriteRow(unit, t, v, row);
    }
  }
}

}  // namespace

float PearsonR(std::span<const float> x, std::span<const float> y) {
  int32_t pairs = 0;
  float sumX = 0, sumY = 0, sumXx = 0, sumYy = 0, sumXy = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (!IsMissing(x[i]) && !IsMissing(y[i])) {
      ++pairs;
      sumX += x[i];
      sumY += y[i];
      sumXx += x[i] * x[i];
      sumYy += y[i] * y[i];
      sumXy += x[i] * y[i];
    }
  }
  if (pairs < 1) {
    return stats::AMACH(kNotComputed);
  }
  const auto m = static_cast<float>(pairs);
  const float meanX = sumX / m, meanY = sumY / m;
  return (sumXy / m - meanX * meanY) / std::sqrt((sumXx / m - meanX * meanX) * (sumYy / m - meanY * meanY));
}

void CorrelationTables(int32_t unit, const TrialTable& table) {
  std::vector<std::vector<int32_t>> positions;
  for (const TrialTrait& trait : table.Trait) {
    positions.push_back(Positions(table, trait));
  }
  WriteRecord(unit, "Correlation between traits");
  WriteRecord(unit, Record(Edits("2A6"), {"EnvID", "TrtID"}));
  WriteTraitCorrelations(unit, table, positions);
  WriteRecord(unit, "Correlation between environments");
  WriteRecord(unit, Record(Edits("2A6"), {"TrtID", "EnvID"}));
  WriteEnvironmentCorrelations(unit, table, positions);
}

}  // namespace trial
