#include "host/bridged_distance.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/linkage_map.h"

namespace host {
namespace {

constexpr std::size_t kNearest = 12;  // neighbours that are asked
constexpr float kLinkedLod = 4.0F;    // with both markers
constexpr double kAsGood = 1.0;       // difference of costs that chance makes

struct Neighbour {
  float difference, sum;
  std::size_t place;  // in the group; decides between equals
};

// The neighbours with the smallest sums.
std::vector<Neighbour> Nearest(std::span<const float> toFirst, std::span<const float> toSecond) {
  std::vector<Neighbour> found;
  for (std::size_t k = 0; k < toFirst.size(); ++k) {
    const float a = toFirst[k], b = toSecond[k];
    if (!(a < kUnlinkedDistance && b < kUnlinkedDistance)) continue;
    found.push_back({std::fabs(a - b), a + b, k});
  }
  const std::size_t asked = std::min(found.size(), kNearest);
  std::partial_sort(found.begin(), found.begin() + static_cast<std::ptrdiff_t>(asked), found.end(),
                    [](const Neighbour& x, const Neighbour& y) {
                      return x.sum != y.sum ? x.sum < y.sum : x.place < y.place;
                    });
  found.resize(asked);
  return found;
}

// The variance of a distance grows about as the distance does; one centimorgan keeps equals apart from 0.
double Weight(const Neighbour& neighbour) { return 1.0 / (1.0 + neighbour.sum); }

double NearerOf(const Neighbour& neighbour, double distance) {
  const double low = neighbour.difference, high = neighbour.sum;
  return distance - low < high - distance ? low : high;
}

double Cost(const std::vector<Neighbour>& neighbours, double distance) {
  double cost = 0;
  for (const Neighbour& neighbour : neighbours) {
    const double off = distance - NearerOf(neighbour, distance);
    cost += Weight(neighbour) * off * off;
  }
  return cost;
}

double MeanAround(const std::vector<Neighbour>& neighbours, double distance) {
  double sum = 0, weights = 0;
  for (const Neighbour& neighbour : neighbours) {
    sum += Weight(neighbour) * NearerOf(neighbour, distance);
    weights += Weight(neighbour);
  }
  return sum / weights;
}

}  // namespace

bool NeedsBridge(const MapData& data, std::size_t pair) {
  if (data.kind == TableKind::Map) return false;
  return data.distance[pair] >= kUnlinkedDistance;
}

float AgreedDistance(std::span<const float> toFirst, std::span<const float> toSecond) {
  const std::vector<Neighbour> neighbours = Nearest(toFirst, toSecond);
  if (neighbours.empty()) return kNoBridge;
  double least = std::numeric_limits<double>::infinity(), best = 0;
  for (const Neighbour& neighbour : neighbours) {
    least = std::min({least, Cost(neighbours, neighbour.sum), Cost(neighbours, neighbour.difference)});
  }
  // The largest of those that fit as well: a pair that is taken for close by mistake spoils the order.
  for (const Neighbour& neighbour : neighbours) {
    for (const double candidate : {double{neighbour.sum}, double{neighbour.difference}}) {
      if (Cost(neighbours, candidate) <= least + kAsGood) best = std::max(best, candidate);
    }
  }
  return static_cast<float>(MeanAround(neighbours, best));
}

std::vector<float> LinkedDistances(const MapData& data, std::span<const int32_t> group, int32_t marker) {
  std::vector<float> distances;
  distances.reserve(group.size());
  for (int32_t other : group) {
    const bool linked = other != marker && data.LinkLods()[PairPlace(marker, other)] >= kLinkedLod;
    distances.push_back(linked ? data.distance[PairPlace(marker, other)] : kNoBridge);
  }
  return distances;
}

}  // namespace host
