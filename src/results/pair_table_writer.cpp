#include "results/pair_table_writer.h"

#include <limits>
#include <span>
#include <string>

#include "platform/record.h"
#include "platform/unit.h"

namespace results {
namespace {

constexpr int kWidth = 12, kDecimals = 4;
constexpr float kNoPlace = std::numeric_limits<float>::quiet_NaN();

}  // namespace

void WritePairTable(int32_t unit, const TableSelection& selection, const PairArray<float>& values) {
  const std::span<const int32_t> markers = selection.markers;
  const auto count = static_cast<int32_t>(markers.size());
  std::string record = platform::Record(platform::Edits("A12,1X,A35"), {"MarkerID", "MarkerName"});
  for (int32_t k = 1; k <= count; ++k) {
    platform::AppendInteger(record, kWidth, k);
  }
  platform::WriteRecord(unit, record);
  std::vector<float> row;
  row.reserve(markers.size());
  int32_t i = 0;
  for (const int32_t marker : markers) {
    const std::string_view name = selection.names[static_cast<std::size_t>(i)];
    record = platform::Record(platform::Edits("I12,1X,A35"), {i + 1, name});
    // The values stand far apart in the array: taken first, so that many loads are under way at a time.
    row.clear();
    for (const int32_t column : markers.first(static_cast<std::size_t>(i))) {
      row.push_back(PairAt(values, marker, column, kNoPlace));
    }
    for (const float value : row) {
      platform::AppendReal(record, kWidth, kDecimals, value);
    }
    platform::WriteRecord(unit, record);
    ++i;
  }
}

}  // namespace results
