#include "results/consensus.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "platform/unit.h"
#include "recombination/map_functions.h"

namespace results {
namespace {

using Maps = std::vector<project::ChromosomeTable>;

// Fills names, the union, and mapIndex. Map 1 enters whole; a marker that stands twice on a later map keeps
// the later place.
void Unite(const Maps& maps, Consensus& consensus) {
  std::unordered_map<std::string_view, std::size_t> rowOf;
  for (std::size_t m = 0; m < maps.size(); ++m) {
    std::vector<std::int32_t>& index = consensus.mapIndex.emplace_back(consensus.names.size(), 0);
    std::int32_t place = 0;
    for (const project::NameText& name : maps[m].MarkerName) {
      ++place;
      const auto [found, isNew] = rowOf.try_emplace(project::Text(name), consensus.names.size());
      if (isNew || m == 0) {
        consensus.names.push_back(name);
        index.push_back(place);
      } else {
        index[found->second] = place;
      }
    }
  }
  for (std::vector<std::int32_t>& index : consensus.mapIndex) {
    index.resize(consensus.names.size(), 0);
  }
}

void CountMaps(Consensus& consensus) {
  consensus.mapCount.assign(consensus.names.size(), 0);
  for (const std::vector<std::int32_t>& index : consensus.mapIndex) {
    for (std::size_t row = 0; row < index.size(); ++row) {
      consensus.mapCount[row] += index[row] > 0 ? 1 : 0;
    }
  }
}

void FindPlaces(const Maps& maps, Consensus& consensus) {
  for (std::size_t m = 0; m < maps.size(); ++m) {
    MapPlaces& places = consensus.maps.emplace_back();
    const std::vector<std::int32_t>& index = consensus.mapIndex[m];
    for (std::size_t row = 0; row < index.size(); ++row) {
      if (index[row] > 0) {
        places.row.push_back(row);
        places.position.push_back(maps[m].Position[static_cast<std::size_t>(index[row]) - 1]);
      }
    }
  }
}

// A row of the pair table at a time, over the maps that have the row's marker, in their order: a pair's sum
// takes its maps from the first to the last.
void FillDistances(const std::vector<MapPlaces>& maps, std::size_t rows, float* distance) {
  std::vector<float> sum(rows);
  std::vector<std::int32_t> shared(rows);
  std::vector<std::size_t> next(maps.size(), 0);  // of each map: the first of its markers not above the row
  for (std::size_t i = 0; i < rows; ++i) {
    std::fill_n(sum.begin(), i, 0.0F);
    std::fill_n(shared.begin(), i, 0);
    for (std::size_t m = 0; m < maps.size(); ++m) {
      const MapPlaces& map = maps[m];
      const std::size_t at = next[m];
      if (at == map.row.size() || map.row[at] != i) {
        continue;
      }
      for (std::size_t k = 0; k < at; ++k) {
        sum[map.row[k]] += std::fabs(map.position[at] - map.position[k]);
        ++shared[map.row[k]];
      }
      ++next[m];
    }
    for (std::size_t j = 0; j < i; ++j) {
      *distance++ = shared[j] > 0 ? sum[j] / static_cast<float>(shared[j]) : recombination::kUnlinkedDistance;
    }
  }
}

// The rows of a column of the caller's tables.
std::size_t Stride(const ConsensusTables& tables) {
  return static_cast<std::size_t>(std::max(tables.rows, 0));
}

// The maps that both have a column for.
std::size_t Columns(const Consensus& consensus, const ConsensusTables& tables) {
  return std::min(consensus.maps.size(), static_cast<std::size_t>(std::max(tables.columns, 0)));
}

void FillPositions(const Consensus& consensus, std::size_t rows, const ConsensusTables& tables) {
  const std::size_t stride = Stride(tables);
  const std::size_t columns = Columns(consensus, tables);
  std::size_t pair = 0;  // from 0: of row i and the row before it
  for (std::size_t i = 0; i < rows; ++i) {
    pair += i;
    tables.position[i] = i == 0 ? 0 : tables.position[i - 1] + tables.distance[pair - 1];
  }
  for (std::size_t m = 0; m < columns; ++m) {
    float* column = tables.position + stride * (m + 1);
    std::fill_n(column, rows, -1.0F);
    const MapPlaces& map = consensus.maps[m];
    for (std::size_t k = 0; k < map.row.size() && map.row[k] < rows; ++k) {
      column[map.row[k]] = map.position[k];
    }
  }
}

}  // namespace

void BuildConsensus(const project::ProjectBlock& block, std::int32_t log, std::int32_t& status,
                    Consensus& consensus) {
  const Maps& maps = block.Chromosome.items;
  Unite(maps, consensus);
  CountMaps(consensus);
  const auto all = static_cast<std::int32_t>(maps.size());
  if (std::find(consensus.mapCount.begin(), consensus.mapCount.end(), all) == consensus.mapCount.end()) {
    platform::WriteRecord(log, "No common markers are found on all maps!");
    status = -1;
    return;
  }
  FindPlaces(maps, consensus);
}

std::int32_t FillTables(const Consensus& consensus, const ConsensusTables& tables) {
  const std::size_t stride = Stride(tables);
  const std::size_t rows = std::min(consensus.names.size(), stride);
  std::copy_n(consensus.mapCount.begin(), rows, tables.mapCount);
  for (std::size_t i = 0; i < rows; ++i) {
    tables.mapIndex[i] = static_cast<std::int32_t>(i) + 1;
  }
  for (std::size_t m = 0; m < Columns(consensus, tables); ++m) {
    std::copy_n(consensus.mapIndex[m].begin(), rows, tables.mapIndex + stride * (m + 1));
  }
  FillDistances(consensus.maps, rows, tables.distance);
  FillPositions(consensus, rows, tables);
  return static_cast<std::int32_t>(rows);
}

}  // namespace results
