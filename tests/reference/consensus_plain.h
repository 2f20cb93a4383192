#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace reference {

struct PlainMap {
  std::vector<std::string> names;
  std::vector<float> positions;
};

// The consensus tables by linear searches and loops over all maps for every pair; tables column after column.
struct PlainConsensus {
  std::vector<std::string> names;
  std::vector<int32_t> mapCount, mapIndex;
  std::vector<float> distance, position;
  bool common = false;  // some marker is on all maps; the tables behind mapIndex are filled only then
};
PlainConsensus UnitePlainly(const std::vector<PlainMap>& maps);

// The consensus order with its positions: the anchors ordered among themselves, the others inserted, each
// step as defined.
void OrderPlainly(int32_t n, const int32_t* anchorInfo, const float* dist, int32_t* order, float* position);

}  // namespace reference
