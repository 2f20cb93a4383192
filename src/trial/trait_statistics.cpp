// Cells, means and effects of one trait, in time linear in the rows. Sums run in float, in the order that is
// part of the definition: environments, genotypes within, plots within in the order of the rows.

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>

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

// Where the plots with data of a trait go. Traits of which no plot is missing share one.
struct Layout {
  Present genotypes, environments;
  std::vector<int32_t> BlockBegin, BlockIndex, CellBegin, BlockId;  // as in the trait
  std::vector<int32_t> place;  // by row; what a missing plot has means nothing
};

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
                Layout& layout) {
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
  layout.BlockBegin.push_back(0);
  for (const int32_t e : layout.environments.index) {
    for (std::size_t b = ItemAt(begin, e); b < begin[static_cast<std::size_t>(e)]; ++b) {
      if (marks[b] != 0) {
        layout.BlockIndex.push_back(static_cast<int32_t>(b - ItemAt(begin, e)) + 1);
      }
    }
    layout.BlockBegin.push_back(static_cast<int32_t>(layout.BlockIndex.size()));
  }
}

// Counting sort of the plots with data into the cells; rows keep their order within a cell.
void FindCells(const PlotRows& rows, const std::vector<float>& values, Layout& layout) {
  const std::size_t genotypes = layout.genotypes.index.size();
  layout.place.resize(rows.genotype.size());
  layout.CellBegin.assign(genotypes * layout.environments.index.size() + 1, 0);
  for (std::size_t row = 0; row < layout.place.size(); ++row) {
    if (!IsMissing(values[row])) {
      const auto g = static_cast<std::size_t>(ItemAt(layout.genotypes.position, rows.genotype[row])) - 1;
      const auto e =
          static_cast<std::size_t>(ItemAt(layout.environments.position, rows.environment[row])) - 1;
      layout.place[row] = layout.CellBegin[e * genotypes + g + 1]++;  // within the cell, to begin with
    }
  }
  std::partial_sum(layout.CellBegin.begin(), layout.CellBegin.end(), layout.CellBegin.begin());
  layout.BlockId.resize(static_cast<std::size_t>(layout.CellBegin.back()));
  for (std::size_t row = 0; row < layout.place.size(); ++row) {
    if (!IsMissing(values[row])) {
      const auto g = static_cast<std::size_t>(ItemAt(layout.genotypes.position, rows.genotype[row])) - 1;
      const auto e =
          static_cast<std::size_t>(ItemAt(layout.environments.position, rows.environment[row])) - 1;
      layout.place[row] += layout.CellBegin[e * genotypes + g];
      layout.BlockId[static_cast<std::size_t>(layout.place[row])] = rows.block[row];
    }
  }
}

Layout LayOut(const TrialTable& table, const PlotRows& rows, const std::vector<float>& values) {
  Layout layout;
  layout.genotypes = PresentNames(values, rows.genotype, table.NumGenotypes);
  layout.environments = PresentNames(values, rows.environment, table.NumEnvironments);
  FindBlocks(table, rows, values, layout);
  FindCells(rows, values, layout);
  return layout;
}

void TakePlots(const Layout& layout, const std::vector<float>& values, TrialTrait& trait) {
  trait.GenotypeIndex = layout.genotypes.index;
  trait.EnvironmentIndex = layout.environments.index;
  trait.NumGenotypes = static_cast<int32_t>(trait.GenotypeIndex.size());
  trait.NumEnvironments = static_cast<int32_t>(trait.EnvironmentIndex.size());
  trait.BlockBegin = layout.BlockBegin;
  trait.BlockIndex = layout.BlockIndex;
  trait.CellBegin = layout.CellBegin;
  trait.BlockId = layout.BlockId;
  trait.Value.resize(trait.BlockId.size());
  for (std::size_t row = 0; row < values.size(); ++row) {
    if (!IsMissing(values[row])) {
      trait.Value[static_cast<std::size_t>(layout.place[row])] = values[row];
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
    Sum environment;
    const int32_t counted = NumBlocks(trait, e);
    Sum* const ofBlocks = sums.blocks.data() + ItemAt(trait.BlockBegin, e);
    for (int32_t g = 1; g <= trait.NumGenotypes; ++g) {
      const auto values = OfCell(trait, trait.Value, g, e);
      const auto blocks = OfCell(trait, trait.BlockId, g, e);
      Sum genotype = ItemAt(sums.genotypes, g), cell;
      for (std::size_t j = 0; j < values.size(); ++j) {
        Add(genotype, values[j]);
        Add(environment, values[j]);
        Add(cell, values[j]);
        if (blocks[j] <= counted) {
          Add(ofBlocks[blocks[j] - 1], values[j]);
        }
      }
      ItemAt(sums.genotypes, g) = genotype;
      sums.cells[CellPlace(trait, g, e)] = cell;
    }
    ItemAt(sums.environments, e) = environment;
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

TrialTrait MakeTrait(const Layout& layout, const std::vector<float>& values) {
  TrialTrait trait;
  TakePlots(layout, values, trait);
  WholeTraitStatistics(values, trait);
  const Sums sums = SumUp(trait);
  MeansAndEffects(sums.genotypes, trait.GrandMean, trait.GenotypeMean, trait.GenotypeEffect);
  MeansAndEffects(sums.environments, trait.GrandMean, trait.EnvironmentMean, trait.EnvironmentEffect);
  BlockStatistics(sums.blocks, trait);
  CellStatistics(sums.cells, trait);
  return trait;
}

}  // namespace

std::vector<TrialTrait> MakeTraits(const TrialTable& table, const PlotRows& rows) {
  std::vector<TrialTrait> traits;
  std::optional<Layout> whole;
  for (const std::vector<float>& values : rows.values) {
    if (std::any_of(values.begin(), values.end(), IsMissing)) {
      traits.push_back(MakeTrait(LayOut(table, rows, values), values));
      continue;
    }
    if (!whole) {
      whole = LayOut(table, rows, values);
    }
    traits.push_back(MakeTrait(*whole, values));
  }
  return traits;
}

}  // namespace trial
