#include "results/new_map.h"

#include <algorithm>

namespace results {
namespace {

constexpr std::size_t kChromosomeNameWidth = 19;

}  // namespace

std::string_view ChromosomeNameAt(const NewMap& map, int32_t c) {
  return {map.chromosomeName + static_cast<std::size_t>(c - 1) * kChromosomeNameWidth, kChromosomeNameWidth};
}

std::vector<PlaceRun> GroupRuns(const NewMap& map) {
  std::vector<PlaceRun> runs;
  int32_t last = 0;
  for (int32_t c = 1; c <= map.numChromosomes; ++c) {
    const int32_t left = std::max(map.numMarkers - last, 0);
    const int32_t places = std::clamp(map.chromosomeMarkers[c - 1], 0, left);
    runs.push_back({last + 1, last + places});
    last += places;
  }
  return runs;
}

ChromosomeWalk::ChromosomeWalk(int32_t chromosomes, const int32_t* places)
    : numChromosomes(chromosomes), markers(places), sum(chromosomes > 0 ? places[0] : 0) {}

int32_t ChromosomeWalk::At(int32_t place) {
  if (place > sum && current < numChromosomes) {
    sum += markers[current++];
  }
  return current;
}

}  // namespace results
