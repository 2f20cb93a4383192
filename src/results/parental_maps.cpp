#include "results/parental_maps.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "recombination/map_functions.h"

namespace results {
namespace {

constexpr int32_t kNoPlace = 0;
constexpr float kUnlinkedWithin = 1e-8F;
constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

bool Has(const std::array<int32_t, 2>& codes, int32_t code) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

// A kept marker that is not the first of its group, `before` being the one kept last, at place `previous`.
SummaryMarker NextOnMap(const NewMap& map, int32_t mapFunction, const PairArray<float>& rec,
                        const PairArray<float>& distance, const SummaryMarker& before, int32_t previous,
                        int32_t place) {
  const int32_t marker = MarkerAt(map, place);
  const float r = PairAt(rec, before.marker, marker, kNotANumber);
  if (std::fabs(r - 0.5F) <= kUnlinkedWithin || place != previous + 1) {
    const float d = PositionAt(map, place) - PositionAt(map, previous);
    return {marker, before.position + d, recombination::RecFromDistance(mapFunction, d)};
  }
  return {marker, before.position + PairAt(distance, before.marker, marker, kNotANumber), r};
}

}  // namespace

bool IsOnMap(const MarkerFile& file, ParentalMap which, int32_t marker) {
  const std::string_view leftOut = kParentalMaps[which].leftOut;
  return leftOut.empty() || CategoryOf(file, marker) != leftOut;
}

TableSelection SelectMarkers(const NewMap& map, const MarkerFile& file, ParentalMap which) {
  TableSelection selection;
  for (int32_t place = 1; place <= map.numMarkers; ++place) {
    const int32_t marker = MarkerAt(map, place);
    if (IsOnMap(file, which, marker)) {
      selection.markers.push_back(marker);
      selection.names.push_back(NameOf(file, marker));
    }
  }
  return selection;
}

std::vector<int32_t> ParentPhases(const NewMap& map, const MarkerFile& file, ParentalMap which,
                                  const PairArray<int32_t>& phaseCode) {
  const ParentalMapRow& row = kParentalMaps[which];
  std::vector<int32_t> phases(static_cast<std::size_t>(std::max(map.numMarkers, 0)) + 1);  // from place 1
  for (const PlaceRun& run : GroupRuns(map)) {
    int32_t previous = kNoPlace;
    for (int32_t place = run.first; place <= run.last; ++place) {
      if (!IsOnMap(file, which, MarkerAt(map, place))) {
        continue;
      }
      int32_t& phase = phases[static_cast<std::size_t>(place)];
      if (previous == kNoPlace) {
        phase = 1;
      } else {
        const int32_t code = PairAt(phaseCode, MarkerAt(map, previous), MarkerAt(map, place), 0);
        const int32_t before = phases[static_cast<std::size_t>(previous)];
        if (Has(row.same, code)) {
          phase = before;
        } else if (Has(row.other, code)) {
          phase = -before;
        }
      }
      previous = place;
    }
  }
  phases.erase(phases.begin());
  return phases;
}

MapSummary ParentSummary(const NewMap& map, const MarkerFile& file, ParentalMap which,
                         const PairArray<float>& rec, const PairArray<float>& distance,
                         std::vector<int32_t> deleted) {
  MapSummary summary;
  for (const PlaceRun& run : GroupRuns(map)) {
    auto& group = summary.groups.emplace_back();
    int32_t previous = kNoPlace;
    for (int32_t place = run.first; place <= run.last; ++place) {
      const int32_t marker = MarkerAt(map, place);
      if (!IsOnMap(file, which, marker)) {
        deleted.push_back(marker);
        continue;
      }
      group.push_back(group.empty() ? SummaryMarker{marker, 0, 0.5F}
                                    : NextOnMap(map, file.Header.MappingFunction, rec, distance, group.back(),
                                                previous, place));
      previous = place;
    }
  }
  summary.deleted = Sorted(std::move(deleted));
  return summary;
}

}  // namespace results
