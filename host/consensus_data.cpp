#include "host/consensus_data.h"

#include <algorithm>
#include <unordered_set>

#include "frame/exports.h"
#include "host/exit_code.h"
#include "host/file_walk.h"
#include "host/genotype_table.h"
#include "host/isolated_call.h"
#include "host/text.h"
#include "host/trait_data.h"

namespace host {
namespace {

constexpr double kPairBytes = 24;  // distances, their copy in a new numbering, dense rows of the ordering

// The tables of CHECKERRORCMP. Their columns are as long as all maps together, the count that the pre-read
// gives; the union has fewer rows, and memory that nobody writes is never had.
struct Tables {
  std::size_t stride, columns;
  SharedArray<int32_t> names, anchors, order;
  SharedArray<float> position, distance;

  Tables(std::size_t markers, std::size_t maps)
      : stride(markers),
        columns(maps + 1),
        names(kMarkerNameLength * stride),
        anchors(stride),
        order(stride * columns),
        position(stride * columns),
        distance(stride * (stride - 1) / 2) {}

  // Rows of the union: a row that was written has a name, or blanks, and so no zero.
  std::size_t Rows() const {
    std::size_t rows = 0;
    while (rows < stride && names[rows] != 0) ++rows;
    return rows;
  }
};

void RefuseWhatCannotFit(const InputFile& file, const FileLayout& layout) {
  const std::vector<std::string>& names = layout.Rows(Section::Map).names;
  const double rows = static_cast<double>(std::unordered_set<std::string>(names.begin(), names.end()).size());
  const double needed = rows * rows / 2 * kPairBytes + file.bytes;
  const double available = AvailableBytes();
  if (needed <= available) return;
  throw Failure{ExitCode::Other, file.given.string() + " has " + Fixed(rows, 0) +
                                     " different markers, which needs " + Bytes(needed) + " of memory; " +
                                     Bytes(available) + " are available"};
}

ConsensusMarker MarkerOf(const Tables& tables, std::string name, std::size_t row, float position) {
  ConsensusMarker marker{std::move(name), position, {}, {}};
  for (std::size_t m = 1; m < tables.columns; ++m) {
    marker.place.push_back(tables.order[tables.stride * m + row]);
    marker.positions.push_back(tables.position[tables.stride * m + row]);
  }
  return marker;
}

void CopyOut(const Tables& tables, Consensus& consensus) {
  const std::size_t rows = tables.Rows();
  std::vector<std::string> names(rows);
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t c = 0; c < kMarkerNameLength; ++c) {
      names[row] += static_cast<char>(static_cast<unsigned char>(tables.names[c * tables.stride + row]));
    }
    names[row] = WithoutTrailing(names[row], " ");
  }
  for (std::size_t place = 0; place < rows; ++place) {
    const auto row = static_cast<std::size_t>(tables.order[place] - 1);
    consensus.markers.push_back(MarkerOf(tables, names[row], row, tables.position[place]));
  }
}

}  // namespace

LoadResult LoadConsensus(const InputFile& file, Consensus& consensus) {
  MapCounts counts;
  LoadResult before = CountMaps(file, counts);
  if (!before.good) return before;
  const FileLayout layout = WalkFile(ReadWhole(file.absolute), "CMP");
  RefuseWhatCannotFit(file, layout);
  Tables tables(static_cast<std::size_t>(counts.markers), static_cast<std::size_t>(counts.maps));
  SharedArray<int32_t> status(1);
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    CHECKERRORCMP(&length, file.absolute.data(), &counts.maps, &counts.markers, tables.names.data(),
                  tables.anchors.data(), tables.order.data(), tables.position.data(), tables.distance.data(),
                  &status[0]);
    LeaveChild(call);
  }
  CallOutcome outcome = AwaitChild(call);
  if (status[0] == kStatusWrong) return {false, std::move(outcome.log)};
  CopyOut(tables, consensus);
  consensus.maps = layout.Rows(Section::Chromosomes).names;
  consensus.maps.resize(static_cast<std::size_t>(counts.maps));
  consensus.tables = ReadWhole(call.folder.Path() / "fort.100");
  return {true, std::move(outcome.log)};
}

void Turn(Consensus& consensus) {
  std::reverse(consensus.markers.begin(), consensus.markers.end());
  if (consensus.markers.empty()) return;
  const float length = consensus.markers.front().position;
  for (ConsensusMarker& marker : consensus.markers) marker.position = length - marker.position;
}

}  // namespace host
