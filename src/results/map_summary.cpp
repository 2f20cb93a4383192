#include "results/map_summary.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "platform/record.h"
#include "platform/unit.h"
#include "stats/sorts.h"

namespace results {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

void WriteMarkers(int32_t unit, const NewMap& map, const MarkerFile& file, const MapSummary& summary) {
  WriteRecord(unit, Record(Edits("A12,1X,A19,1X,A35,3A12"), {"ChromosomeID", "ChromosomeName", "MarkerName",
                                                             "Interval", "Position", "RecomFreq"}));
  int32_t c = 0;
  for (const auto& group : summary.groups) {
    ++c;
    if (group.empty()) {
      WriteRecord(unit, Record(Edits("I12,1X,A19"), {c, ChromosomeNameAt(map, c)}));
    }
    for (std::size_t k = 0; k < group.size(); ++k) {
      const SummaryMarker& marker = group[k];
      const float interval = k == 0 ? 0 : marker.position - group[k - 1].position;
      WriteRecord(unit, Record(Edits("I12,1X,A19,1X,A35,2F12.2,F12.4"),
                               {c, ChromosomeNameAt(map, c), NameOf(file, marker.marker), interval,
                                marker.position, marker.recombFreq}));
    }
  }
  WriteRecord(unit, "");
}

void WriteLengths(int32_t unit, const NewMap& map, const MapSummary& summary) {
  WriteRecord(unit,
              Record(Edits("A12,1X,A19,2A12"), {"ChromosomeID", "ChromosomeName", "NumMarkers", "Length"}));
  int32_t c = 0, markers = 0;
  float sum = 0;
  for (const auto& group : summary.groups) {
    ++c;
    const auto count = static_cast<int32_t>(group.size());
    const float length = group.empty() ? 0 : group.back().position;
    WriteRecord(unit, Record(Edits("I12,1X,A19,I12,F12.2"), {c, ChromosomeNameAt(map, c), count, length}));
    markers += count;
    sum += length;
  }
  WriteRecord(unit, Record(Edits("A12,A20,I12,F12.2"), {"WholeGenome", "WholeGenome", markers, sum}));
  WriteRecord(unit, "");
}

void WriteDeleted(int32_t unit, const MarkerFile& file, const MapSummary& summary) {
  WriteRecord(unit, Record(Edits("A12,1X,A35"), {"ID", "DeletedMarkers"}));
  int32_t id = 0;
  for (const int32_t marker : summary.deleted) {
    WriteRecord(unit, Record(Edits("I12,1X,A35"), {++id, NameOf(file, marker)}));
  }
}

}  // namespace

std::vector<int32_t> DeletedMarkers(const NewMap& map, int32_t fileMarkers, const int32_t* deleted) {
  const int32_t onMap = std::max(map.numMarkers, 0);
  return fileMarkers > onMap ? std::vector<int32_t>(deleted, deleted + (fileMarkers - onMap))
                             : std::vector<int32_t>();
}

MapSummary WholeMapSummary(const NewMap& map, const PairArray<float>& rec, std::vector<int32_t> deleted) {
  MapSummary summary;
  summary.deleted = Sorted(std::move(deleted));
  for (const PlaceRun& run : GroupRuns(map)) {
    auto& group = summary.groups.emplace_back();
    for (int32_t place = run.first; place <= run.last; ++place) {
      const int32_t marker = MarkerAt(map, place);
      const float r = place == run.first ? 0.5F
                                         : PairAt(rec, marker, MarkerAt(map, place - 1),
                                                  std::numeric_limits<float>::quiet_NaN());
      group.push_back({marker, PositionAt(map, place), r});
    }
  }
  return summary;
}

std::vector<int32_t> Sorted(std::vector<int32_t> markers) {
  if (!markers.empty()) {  // the sort takes no empty list
    std::vector<int32_t> permutation(markers.size());
    std::iota(permutation.begin(), permutation.end(), 1);
    stats::SVIGP(static_cast<int32_t>(markers.size()), markers.data(), markers.data(), permutation.data());
  }
  return markers;
}

void WriteMapSummary(int32_t unit, const NewMap& map, const MarkerFile& file, const MapSummary& summary) {
  WriteMarkers(unit, map, file, summary);
  WriteLengths(unit, map, summary);
  WriteDeleted(unit, file, summary);
}

}  // namespace results
