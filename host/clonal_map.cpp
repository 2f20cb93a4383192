#include "host/clonal_map.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace host {
namespace {

constexpr int32_t kOtherOnly[] = {2, 3};  // categories A=B and C=D, which show the other parent alone
constexpr float kUninformative = 1e-8F;   // a frequency this near to 0.5 is none
constexpr int32_t kCoupling[][2] = {{1, 2}, {1, 3}};  // phase codes by parent
constexpr int32_t kRepulsion[][2] = {{3, 4}, {2, 4}};

bool Has(const int32_t (&codes)[2], int32_t code) { return code == codes[0] || code == codes[1]; }

void PlaceOnParent(const MapData& data, std::size_t which, LinkageGroup& group) {
  const PairTables& tables = data.parents[which];
  std::size_t before = group.places.size();  // the kept place before this one
  for (std::size_t at = 0; at < group.places.size(); ++at) {
    MapPlace& place = group.places[at];
    ParentalPlace& own = place.parent[which];
    own.onMap = data.Category(place.marker) != kOtherOnly[which];
    if (!own.onMap) continue;
    own.phase = 1;
    if (before < at) {
      const MapPlace& kept = group.places[before];
      const std::size_t pair = PairPlace(kept.marker, place.marker);
      const bool measured = !(std::fabs(tables.rec[pair] - 0.5F) <= kUninformative) && at == before + 1;
      own.position =
          kept.parent[which].position + (measured ? tables.distance[pair] : place.position - kept.position);
      own.phase = Has(kCoupling[which], data.phase[pair])    ? kept.parent[which].phase
                  : Has(kRepulsion[which], data.phase[pair]) ? -kept.parent[which].phase
                                                             : 0;
    }
    before = at;
  }
}

}  // namespace

void PlaceOnParents(const MapData& data, LinkageGroup& group) {
  for (std::size_t which = 0; which < 2; ++which) PlaceOnParent(data, which, group);
}

float ParentLength(const LinkageGroup& group, std::size_t parent) {
  float length = 0;
  for (const MapPlace& place : group.places) {
    if (place.parent[parent].onMap) length = place.parent[parent].position;
  }
  return length;
}

}  // namespace host
