// Cells, means and effects of one trait, in time linear in the rows. Sums run in float, in the order that is
// part of the definition: environments, genotypes within, plots within in the order of the rows.

#include <algorithm>
#include <limits>
#include <numeric>

#include "trial/trial_table.h"

namespace trial {
namespace {

struct Sum {
  float value = 0;
  int32_t count = 0;
};
void Add(Sum& sum, float value) {
  sum.value += value;
  ++sum.count;
}
float MeanOf(const Sum& sum) { return sum.count > 0 ? sum.value / static_cast<float>(sum.count) : kNoValue; }

// One trait's values, row by row.
std::vector<float> ColumnOf(const TrialTable& table, const PlotRows& rows, int32_t t) {
  std::vector<float> values(rows.genotype.size());
  auto place = static_cast<std::size_t>(t) - 1;
  for (float& one : values) {
    one = rows.values[place];
    place += static_cast<std::size_t>(table.NumTraits);
  }
  return values;
}

// The places (from 1) that are marked, and for every place its rank among them, 0 for none.
struct Present {
  std::vector<int32_t> index, position;
};
Present Ranked(const std::vector<char>& marks) {
  Present present;
  for (const char mark : marks) {
    const bool marked = mark != 0;
    if (marked) {
      present.index.push_back(static_cast<int32_t>(present.position.size()) + 1);
    }
    present.position.push_back(marked ? static_cast<int32_t>(present.index.size()) : 0);
  }
  return present;
}

// Which of a list's names have a value of the trait.
Present PresentNames(const std::vector<float>& values, const std::vector<int32_t>& names, int32_t listed) {
  std::vector<char> marks(static_cast<std::size_t>(listed), 0);
  for (std::size_t row = 0; row < names.size(); ++row) {
    if (!IsMissing(values[row])) {
      marks[static_cast<std::size_t>(names[row]) - 1] = 1;
    }
  }
  return Ranked(marks);
}

void FindBlocks(const TrialTable& table, const PlotRows& rows, const std::vector<float>& values,
                TrialTrait& trait) {
  std::vector<std::size_t> begin(1, 0);
  for (const TrialEnvironment& environment : table.Environment) {
    begin.push_back(begin.back() + environment.BlockName.size());
  }
  std::vector<char> marks(begin.back(), 0);
  for (std::size_t row = 0; row < rows.block.size(); ++row) {
    if (!IsMissing(values[row])) {
      marks[ItemAt(begin, rows.environment[row]) + static_cast<std::size_t>(rows.block[row]) - 1] = 1;
    }
  }
  trait.BlockBegin.push_back(0);
  for (const int32_t e : trait.EnvironmentIndex) {
    for (std::size_t b = ItemAt(begin, e); b < begin[static_cast<std::size_t>(e)]; ++b) {
      if (marks[b] != 0) {
        trait.BlockIndex.push_back(static_cast<int32_t>(b - ItemAt(begin, e)) + 1);
      }
    }
    trait.BlockBegin.push_back(TotalBlocks(trait));
  }
}

// Counting sort of the plots with data into the cells; rows keep their order within a cell.
void FillCells(const PlotRows& rows, const std::vector<float>& values, const Present& genotypes,
               const Present& environments, TrialTrait& trait) {
  const std::size_t cells =
      static_cast<std::size_t>(trait.NumGenotypes) * static_cast<std::size_t>(trait.NumEnvironments);
  const auto cellOf = [&](std::size_t row) {
    return CellPlace(trait, ItemAt(genotypes.position, rows.genotype[row]),
                     ItemAt(environments.position, rows.environment[row]));
  };
  trait.CellBegin.assign(cells + 1, 0);
  for (std::size_t row = 0; row < rows.genotype.size(); ++row) {
    if (!IsMissing(values[row])) {
      ++trait.CellBegin[cellOf(row) + 1];
    }
  }
  std::partial_sum(trait.CellBegin.begin(), trait.CellBegin.end(), trait.CellBegin.begin());
  trait.BlockId.resize(static_cast<std::size_t>(trait.CellBegin.back()));
  trait.Value.resize(trait.BlockId.size());
  std::vector<int32_t> next(trait.CellBegin.begin(), trait.CellBegin.end() - 1);
  for (std::size_t row = 0; row < rows.genotype.size(); ++row) {
    const float value = values[row];
    if (!IsMissing(value)) {
      const auto place = static_cast<std::size_t>(next[cellOf(row)]++);
      trait.BlockId[place] = rows.block[row];
      trait.Value[place] = value;
    }
  }
}

// Over all rows: missing plots take part, plots of -100 do not.
void WholeTraitStatistics(const std::vector<float>& values, TrialTrait& trait) {
  Sum sum;
  float most = -std::numeric_limits<float>::infinity();
  float least = std::numeric_limits<float>::infinity();
  for (const float value : values) {
    if (std::fabs(value - kNoValue) > 1e-6F) {
      Add(sum, value);
      most = std::max(most, value);
      least = std::min(least, value);
    }
  }
  const bool any = sum.count > 0;
  trait.MaxValue = any ? most : std::numeric_limits<float>::lowest();
  trait.MinValue = any ? least : std::numeric_limits<float>::max();
  trait.GrandMean = any ? sum.value / static_cast<float>(sum.count) : std::numeric_limits<float>::quiet_NaN();
}

struct Sums {
  std::vector<Sum> genotypes, environments, cells;
  std::vector<Sum> blocks;  // as BlockMean
};

// Blocks are counted from 1 up to the number with data and compared with BlockId, a position in the whole
// list: behind a block without data the last ones are not reached. Required as it stands.
Sums SumUp(const TrialTrait& trait) {
  Sums sums;
  sums.genotypes.resize(static_cast<std::size_t>(trait.NumGenotypes));
  sums.environments.resize(static_cast<std::size_t>(trait.NumEnvironments));
  sums.cells.resize(trait.CellBegin.size() - 1);
  sums.blocks.resize(trait.BlockIndex.size());
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
      const auto values = OfCell(trait, trait.Value, g, e);
      const auto blocks = OfCell(trait, trait.BlockId, g, e);
      for (std::size_t j = 0; j < values.size(); ++j) {
        Add(ItemAt(sums.genotypes, g), values[j]);
        Add(ItemAt(sums.environments, e), values[j]);
        Add(sums.cells[CellPlace(trait, g, e)], values[j]);
        if (blocks[j] <= NumBlocks(trait, e)) {
          Add(ItemAt(sums.blocks, ItemAt(trait.BlockBegin, e) + blocks[j]), values[j]);
        }
      }
    }
  }
  return sums;
}

void MeansAndEffects(const std::vector<Sum>& sums, float general, std::vector<float>& means,
                     std::vector<float>& effects) {
  for (const Sum& sum : sums) {
    means.push_back(MeanOf(sum));
    effects.push_back(sum.count > 0 ? means.back() - general : kNoValue);
  }
}

void BlockStatistics(const std::vector<Sum>& sums, TrialTrait& trait) {
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    for (int32_t b = 1; b <= NumBlocks(trait, e); ++b) {
      const Sum& sum = ItemAt(sums, ItemAt(trait.BlockBegin, e) + b);
      trait.BlockMean.push_back(MeanOf(sum));
      trait.BlockEffect.push_back(sum.count > 0 ? MeanOf(sum) - ItemAt(trait.EnvironmentMean, e) : kNoValue);
    }
  }
}

void CellStatistics(const std::vector<Sum>& sums, TrialTrait& trait) {
  for (int32_t e = 1; e <= trait.NumEnvironments; ++e) {
    for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
      const Sum& sum = sums[CellPlace(trait, g, e)];
      trait.CellMean.push_back(MeanOf(sum));
      trait.CellEffect.push_back(sum.count > 0
                                     ? MeanOf(sum) - trait.GrandMean - ItemAt(trait.EnvironmentEffect, e) -
                                           ItemAt(trait.GenotypeEffect, g)
                                     : kNoValue);
    }
  }
}

}  // namespace

TrialTrait MakeTrait(const TrialTable& table, const PlotRows& rows, int32_t t) {
  TrialTrait trait;
  const std::vector<float> values = ColumnOf(table, rows, t);
  const Present genotypes = PresentNames(values, rows.genotype, table.NumGenotypes);
  const Present environments = PresentNames(values, rows.environment, table.NumEnvironments);
  trait.GenotypeIndex = genotypes.index;
  trait.EnvironmentIndex = environments.index;
  trait.NumGenotypes = static_cast<int32_t>(genotypes.index.size());
  trait.NumEnvironments = static_cast<int32_t>(environments.index.size());
  FindBlocks(table, rows, values, trait);
  FillCells(rows, values, genotypes, environments, trait);
  WholeTraitStatistics(values, trait);
  const Sums sums = SumUp(trait);
  MeansAndEffects(sums.genotypes, trait.GrandMean, trait.GenotypeMean, trait.GenotypeEffect);
  MeansAndEffects(sums.environments, trait.GrandMean, trait.EnvironmentMean, trait.EnvironmentEffect);
  BlockStatistics(sums.blocks, trait);
  CellStatistics(sums.cells, trait);
  return trait;
}

}  // namespace trial
