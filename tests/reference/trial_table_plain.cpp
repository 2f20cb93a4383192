#include "tests/reference/trial_table_plain.h"

#include <limits>

namespace reference {
namespace {

Names Unique(const Names& names) {
  Names list;
  for (const auto& name : names) {
    bool known = false;
    for (const auto& one : list) known = known || one == name;
    if (!known) list.push_back(name);
  }
  return list;
}

// One-based positions of the listed names with a value.
std::vector<std::size_t> PresentNames(const Names& names, const std::vector<float>& values,
                                      const Names& list) {
  std::vector<std::size_t> index;
  for (std::size_t j = 1; j <= list.size(); ++j) {
    bool present = false;
    for (std::size_t i = 0; i < names.size(); ++i) {
      present = present || (names[i] == list[j - 1] && !IsMissing(values[i]));
    }
    if (present) index.push_back(j);
  }
  return index;
}

float Mean(const std::vector<float>& values) {
  float sum = 0;
  for (const float v : values) sum += v;
  return values.empty() ? -100 : sum / static_cast<float>(values.size());
}

void FillCells(const Trial& trial, const Table& table, std::size_t t, Trait& trait) {
  for (const std::size_t e : trait.eIndex) {
    std::vector<Cell> column;
    for (const std::size_t g : trait.gIndex) {
      Cell cell;
      for (const Plot& plot : trial.plots) {
        if (plot.environment != table.environments[e - 1] || plot.genotype != table.genotypes[g - 1] ||
            IsMissing(plot.values[t])) {
          continue;
        }
        std::size_t b = 1;
        while (table.blocks[e - 1][b - 1] != plot.block) ++b;
        cell.blockId.push_back(b);
        cell.value.push_back(plot.values[t]);
      }
      column.push_back(cell);
    }
    trait.cell.push_back(column);
  }
}

void WholeTrait(const std::vector<float>& values, Trait& trait) {
  float sum = 0, n = 0;
  for (const float x : values) {
    if (std::fabs(x + 100.0F) > 1e-6F) {
      trait.most = n == 0 || x > trait.most ? x : trait.most;
      trait.least = n == 0 || x < trait.least ? x : trait.least;
      sum += x;
      n += 1;
    }
  }
  if (n == 0) {
    trait.most = -std::numeric_limits<float>::max();
    trait.least = std::numeric_limits<float>::max();
  }
  trait.grand = sum / n;
}

void Means(Trait& trait) {
  for (std::size_t g = 0; g < trait.G; ++g) {
    std::vector<float> all;
    for (const auto& column : trait.cell)
      all.insert(all.end(), column[g].value.begin(), column[g].value.end());
    trait.gMean.push_back(Mean(all));
    trait.gEff.push_back(trait.gMean[g] - trait.grand);
  }
  for (std::size_t e = 0; e < trait.E; ++e) {
    std::vector<float> all;
    for (const Cell& cell : trait.cell[e]) all.insert(all.end(), cell.value.begin(), cell.value.end());
    trait.eMean.push_back(Mean(all));
    trait.eEff.push_back(trait.eMean[e] - trait.grand);
    for (std::size_t b = 1; b <= trait.blockIndex[e].size(); ++b) {
      std::vector<float> block;
      for (const Cell& cell : trait.cell[e]) {
        for (std::size_t j = 0; j < cell.value.size(); ++j) {
          if (cell.blockId[j] == b) block.push_back(cell.value[j]);
        }
      }
      trait.bMean.push_back(Mean(block));
      trait.bEff.push_back(block.empty() ? -100 : trait.bMean.back() - trait.eMean[e]);
    }
    for (std::size_t g = 0; g < trait.G; ++g) {
      Cell& cell = trait.cell[e][g];
      cell.mean = Mean(cell.value);
      if (!cell.value.empty()) cell.effect = cell.mean - trait.grand - trait.eEff[e] - trait.gEff[g];
    }
  }
}

}  // namespace

Table MakeTable(const Trial& trial) {
  Table table;
  Names environments, genotypes;
  for (const Plot& plot : trial.plots) {
    environments.push_back(plot.environment);
    genotypes.push_back(plot.genotype);
  }
  table.environments = Unique(environments);
  table.genotypes = Unique(genotypes);
  for (const auto& environment : table.environments) {
    Names blocks;
    for (const Plot& plot : trial.plots) {
      if (plot.environment == environment) blocks.push_back(plot.block);
    }
    table.blocks.push_back(Unique(blocks));
  }
  for (std::size_t t = 0; t < trial.traits.size(); ++t) {
    Trait trait;
    trait.name = trial.traits[t];
    std::vector<float> values;
    for (const Plot& plot : trial.plots) values.push_back(plot.values[t]);
    trait.gIndex = PresentNames(genotypes, values, table.genotypes);
    trait.eIndex = PresentNames(environments, values, table.environments);
    trait.G = trait.gIndex.size();
    trait.E = trait.eIndex.size();
    for (const std::size_t e : trait.eIndex) {
      Names blocks;
      std::vector<float> own;
      for (const Plot& plot : trial.plots) {
        if (plot.environment == table.environments[e - 1]) {
          blocks.push_back(plot.block);
          own.push_back(plot.values[t]);
        }
      }
      trait.blockIndex.push_back(PresentNames(blocks, own, table.blocks[e - 1]));
      trait.totalBlocks += trait.blockIndex.back().size();
    }
    FillCells(trial, table, t, trait);
    WholeTrait(values, trait);
    Means(trait);
    table.traits.push_back(trait);
  }
  return table;
}

}  // namespace reference
