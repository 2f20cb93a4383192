#include "host/linkage_map.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

#include "frame/exports.h"
#include "host/exit_code.h"
#include "host/input_file.h"
#include "host/isolated_call.h"
#include "host/progress.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kNameLength = 35;

std::vector<float> SubTable(const MapData& data, const std::vector<int32_t>& markers) {
  std::vector<float> table;
  table.reserve(markers.size() * (markers.size() - 1) / 2);
  for (std::size_t i = 1; i < markers.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) table.push_back(data.distance[PairPlace(markers[i], markers[j])]);
  }
  return table;
}

// Members of a group as the ordering wants them: those of the frame first and in its order, then the others.
struct Arranged {
  std::vector<int32_t> markers;
  std::size_t framed = 0;
};

Arranged Arrange(const MarkerGroup& group, const std::unordered_map<int32_t, std::size_t>& placeInFrame) {
  Arranged arranged{group.markers, 0};
  const auto key = [&](int32_t marker) {
    const auto found = placeInFrame.find(marker);
    return std::pair(found == placeInFrame.end() ? placeInFrame.size() : found->second, marker);
  };
  std::sort(arranged.markers.begin(), arranged.markers.end(),
            [&](int32_t a, int32_t b) { return key(a) < key(b); });
  arranged.framed =
      static_cast<std::size_t>(std::count_if(arranged.markers.begin(), arranged.markers.end(),
                                             [&](int32_t marker) { return placeInFrame.contains(marker); }));
  return arranged;
}

// In the child: `order` holds as many elements as the group.
void OrderOne(const MapData& data, const Arranged& group, int32_t* order) {
  const auto n = static_cast<int32_t>(group.markers.size());
  const std::vector<float> table = SubTable(data, group.markers);
  if (group.framed == 0) {
    MAPNNTWOOPT(&n, table.data(), order);
    return;
  }
  for (int32_t i = 0; i < n; ++i) order[i] = i < static_cast<int32_t>(group.framed) ? i + 1 : 0;
  MAPBYANCHORORDER(&n, table.data(), order);
}

std::vector<int32_t> Renumbered(const Arranged& group, const int32_t* order) {
  std::vector<int32_t> markers;
  std::vector<bool> seen(group.markers.size(), false);
  for (std::size_t i = 0; i < group.markers.size(); ++i) {
    const auto place = static_cast<std::size_t>(order[i] - 1);
    if (place >= seen.size() || seen[place]) {
      throw Failure{ExitCode::Other, "the library gave an order that is no permutation"};
    }
    seen[place] = true;
    markers.push_back(group.markers[place]);
  }
  return markers;
}

bool LongerFirst(const LinkageGroup& a, const LinkageGroup& b) {
  if (a.length != b.length) return a.length > b.length;
  if (a.places.size() != b.places.size()) return a.places.size() > b.places.size();
  return a.places.front().marker < b.places.front().marker;
}

}  // namespace

std::vector<int32_t> ReadFrame(const std::filesystem::path& path, const MapData& data) {
  const InputFile file = OpenInput(path);
  const std::string text = ReadWhole(file.absolute);
  std::unordered_map<std::string_view, int32_t> numbers;
  for (int32_t m = 1; m <= data.numMarkers; ++m) numbers.emplace(data.Name(m), m);
  std::vector<int32_t> frame;
  std::unordered_map<int32_t, std::size_t> lineOf;
  std::size_t lineNumber = 0;
  for (std::string_view line : Lines(text)) {
    ++lineNumber;
    if (line.starts_with('!')) continue;
    line = WithoutTrailing(line, " \t");
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (line.empty()) continue;
    const auto found = numbers.find(WithoutTrailing(line.substr(0, kNameLength), " "));
    const std::string where = path.string() + ", line " + std::to_string(lineNumber) + ": ";
    if (found == numbers.end()) {
      throw Failure{ExitCode::InputWrong, where + "no marker is named \"" + std::string(line) + "\""};
    }
    const auto [earlier, isNew] = lineOf.emplace(found->second, lineNumber);
    if (!isNew) {
      throw Failure{ExitCode::InputWrong, where + "\"" + std::string(line) + "\" stands already on line " +
                                              std::to_string(earlier->second)};
    }
    frame.push_back(found->second);
  }
  return frame;
}

std::vector<std::vector<int32_t>> OrderGroups(const MapData& data, const std::vector<MarkerGroup>& groups,
                                              const std::vector<int32_t>& frame, bool quiet) {
  std::unordered_map<int32_t, std::size_t> placeInFrame;
  for (std::size_t i = 0; i < frame.size(); ++i) placeInFrame.emplace(frame[i], i);
  std::vector<Arranged> arranged;
  arranged.reserve(groups.size());
  for (const MarkerGroup& group : groups) arranged.push_back(Arrange(group, placeInFrame));

  SharedArray<int32_t> order(static_cast<std::size_t>(data.numMarkers)), done(1);
  IsolatedCall call;
  if (EnterChild(call)) {
    std::size_t at = 0;
    for (const Arranged& group : arranged) {
      OrderOne(data, group, order.data() + at);
      at += group.markers.size();
      done[0] += static_cast<int32_t>(group.markers.size());
    }
    LeaveChild(call);
  }
  ProgressLine progress("ordering", quiet);
  while (progress.Shown() && StillRunning(call)) progress.Update(done[0], data.numMarkers);
  AwaitChild(call);

  std::vector<std::vector<int32_t>> orders;
  const int32_t* at = order.data();
  for (const Arranged& group : arranged) {
    orders.push_back(Renumbered(group, at));
    at += group.markers.size();
  }
  return orders;
}

void Orient(std::vector<int32_t>& order, const std::vector<int32_t>& frame) {
  const auto placeOf = [&](int32_t marker) { return std::find(frame.begin(), frame.end(), marker); };
  auto first = frame.end(), last = frame.end();  // the outermost markers of the frame
  for (int32_t marker : order) {
    const auto place = placeOf(marker);
    if (place == frame.end()) continue;
    if (first == frame.end()) first = place;
    last = place;
  }
  const bool backwards = first != last ? last < first : order.front() > order.back();
  if (backwards) std::reverse(order.begin(), order.end());
}

LinkageGroup PlaceMarkers(const MapData& data, const std::vector<int32_t>& order) {
  LinkageGroup group;
  double position = 0;  // double: hundreds of float terms, rounded once
  for (std::size_t i = 0; i < order.size(); ++i) {
    MapPlace place{order[i]};
    if (i > 0) {
      const std::size_t pair = PairPlace(order[i - 1], order[i]);
      place.interval = data.distance[pair];
      place.rec = data.rec[pair];
      place.lod = data.lod[pair];
      position += place.interval;
      if (place.interval >= kUnlinkedDistance) {
        ++group.gaps;
      } else {
        group.length += place.interval;
        if (place.rec > 0.5F) ++group.repulsions;
      }
      place.position = static_cast<float>(position);
    }
    group.places.push_back(place);
  }
  return group;
}

LinkageMap BuildMap(const MapData& data, const std::vector<MarkerGroup>& groups, int32_t minGroup,
                    const std::vector<int32_t>& frame, bool quiet) {
  LinkageMap map;
  std::vector<MarkerGroup> kept;
  for (const MarkerGroup& group : groups) {
    if (static_cast<int32_t>(group.markers.size()) >= minGroup) {
      kept.push_back(group);
    } else {
      map.unlinked.insert(map.unlinked.end(), group.markers.begin(), group.markers.end());
    }
  }
  std::sort(map.unlinked.begin(), map.unlinked.end());
  if (kept.empty()) return map;
  std::vector<std::vector<int32_t>> orders = OrderGroups(data, kept, frame, quiet);
  for (std::size_t g = 0; g < kept.size(); ++g) {
    Orient(orders[g], frame);
    map.groups.push_back(PlaceMarkers(data, orders[g]));
    map.groups.back().anchor = kept[g].anchor;
  }
  std::sort(map.groups.begin(), map.groups.end(), LongerFirst);
  int unanchored = 0;
  for (LinkageGroup& group : map.groups) {
    group.name = group.anchor > 0 ? "G" : "LG";
    group.name += std::to_string(group.anchor > 0 ? group.anchor : ++unanchored);
  }
  return map;
}

}  // namespace host
