#pragma once

#include <cstdint>
#include <vector>

#include "project/store.h"

namespace results {

// One of the maps: the rows of the union that it has, ascending from 0, and their positions.
struct MapPlaces {
  std::vector<std::size_t> row;
  std::vector<float> position;
};

// Several maps of one organism as one list of n markers, in the order of their first appearance.
struct Consensus {
  std::vector<project::NameText> names;
  std::vector<std::vector<std::int32_t>>
      mapIndex;                        // for each map, n places: from 1, 0 where it has not the marker
  std::vector<std::int32_t> mapCount;  // n: how many maps have the marker
  std::vector<MapPlaces> maps;
};

// Unites the maps of a load. No marker on all maps: that is told in the log and status becomes -1.
void BuildConsensus(const project::ProjectBlock& block, std::int32_t log, std::int32_t& status,
                    Consensus& consensus);

// The caller's tables: `rows` of them with `columns` map columns behind column 0, column after column.
struct ConsensusTables {
  std::int32_t rows, columns;
  std::int32_t* mapCount;  // rows
  std::int32_t* mapIndex;  // rows x (columns + 1): place on each map, 0 for none; column 0 is 1, 2, ...
  float* position;  // rows x (columns + 1): on each map, -1 for none; column 0 adds up the distances of
                    // neighbours in the list
  float* distance;  // pair array: mean distance over the maps that have both, 1000 where none has
};

// Fills the tables as far as both the consensus and the caller have rows and columns; nothing else is
// touched. Returns the number of rows filled.
std::int32_t FillTables(const Consensus& consensus, const ConsensusTables& tables);

}  // namespace results
