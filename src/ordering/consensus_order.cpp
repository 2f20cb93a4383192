#include "ordering/consensus_order.h"

#include <vector>

#include "ordering/anchor_order.h"
#include "ordering/distances.h"
#include "ordering/driver.h"
#include "platform/record.h"
#include "platform/unit.h"
#include "recombination/pair_index.h"

namespace ordering {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

constexpr std::int32_t kLogUnit = 100;

// The pair array of the markers named, in their numbering.
std::vector<float> SubTable(const std::vector<City>& markers, const float* dist) {
  const TriangleRows rows{dist};
  std::vector<float> table;
  table.reserve(
      static_cast<std::size_t>(recombination::PairCount(static_cast<std::int64_t>(markers.size()))));
  for (std::size_t i = 1; i < markers.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      table.push_back(rows(markers[i], markers[j]));
    }
  }
  return table;
}

// The anchors in their own order, with their places along it.
struct OrderedAnchors {
  std::vector<City> marker;
  std::vector<float> position;
};

OrderedAnchors OrderAnchors(std::int32_t n, const std::int32_t* anchorInfo, const float* dist) {
  std::vector<City> selected;
  for (City marker = 1; marker <= n; ++marker) {
    if (anchorInfo[marker - 1] > 1) {
      selected.push_back(marker);
    }
  }
  OrderedAnchors anchors;
  if (selected.empty()) {
    return anchors;
  }
  const auto count = static_cast<std::int32_t>(selected.size());
  const std::vector<float> table = SubTable(selected, dist);
  std::vector<City> order(selected.size());
  NnTwoOpt(count, table.data(), order.data());
  anchors.position.resize(selected.size());
  CumulativePositions(count, table.data(), order.data(), anchors.position.data());
  for (const City place : order) {
    anchors.marker.push_back(selected[static_cast<std::size_t>(place) - 1]);
  }
  return anchors;
}

void WriteTable(std::string_view heading, std::size_t count, const std::int32_t* markers,
                const std::int32_t* anchorInfo, const float* position) {
  WriteRecord(kLogUnit, Record(Edits("4A12"), {heading, "MarkerID", "AnchorInfo", "Position"}));
  for (std::size_t i = 0; i < count; ++i) {
    WriteRecord(kLogUnit, Record(Edits("3I12,F12.4"), {static_cast<std::int32_t>(i) + 1, markers[i],
                                                       anchorInfo[markers[i] - 1], position[i]}));
  }
}

}  // namespace

void CumulativePositions(std::int32_t n, const float* dist, const std::int32_t* order, float* position) {
  const TriangleRows rows{dist};
  for (std::int32_t i = 0; i < n; ++i) {
    position[i] = i == 0 ? 0 : position[i - 1] + rows(order[i - 1], order[i]);
  }
}

void CmpByAnchorOrder(std::int32_t n, const std::int32_t* anchorInfo, const float* dist, std::int32_t* order,
                      float* position) {
  const OrderedAnchors anchors = OrderAnchors(n, anchorInfo, dist);
  // The anchors come first in the new numbering, in their order; then the others, by number.
  std::vector<City> numbering = anchors.marker;
  for (City marker = 1; marker <= n; ++marker) {
    if (anchorInfo[marker - 1] <= 1) {
      numbering.push_back(marker);
    }
  }
  const std::vector<float> table = SubTable(numbering, dist);
  std::vector<City> work(numbering.size(), 0);
  for (std::size_t i = 0; i < anchors.marker.size(); ++i) {
    work[i] = static_cast<City>(i) + 1;
  }
  InsertByAnchors(static_cast<std::int32_t>(work.size()), table.data(), work.data());
  for (std::size_t i = 0; i < work.size(); ++i) {
    order[i] = numbering[static_cast<std::size_t>(work[i]) - 1];
  }
  CumulativePositions(n, dist, order, position);
  WriteTable("AnchorOrder", anchors.marker.size(), anchors.marker.data(), anchorInfo,
             anchors.position.data());
  WriteTable("MarkerOrder", work.size(), order, anchorInfo, position);
}

}  // namespace ordering
