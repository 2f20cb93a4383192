#include "host/linkage_map.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "frame/exports.h"
#include "host/bridged_distance.h"
#include "host/clonal_map.h"
#include "host/exit_code.h"
#include "host/isolated_call.h"
#include "host/progress.h"

namespace host {
namespace {

// Pair distances of a group in the order of its markers, those that no line tells bridged.
std::vector<float> SubTable(const MapData& data, const std::vector<int32_t>& markers) {
  std::vector<float> table;
  table.reserve(markers.size() * (markers.size() - 1) / 2);
  std::vector<std::vector<float>> linked(markers.size());  // made where it is needed
  const auto linkedTo = [&](std::size_t i) -> const std::vector<float>& {
    if (linked[i].empty()) linked[i] = LinkedDistances(data, markers, markers[i]);
    return linked[i];
  };
  for (std::size_t i = 1; i < markers.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const std::size_t pair = PairPlace(markers[i], markers[j]);
      table.push_back(NeedsBridge(data, pair) ? AgreedDistance(linkedTo(j), linkedTo(i))
                                              : data.distance[pair]);
    }
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

std::vector<int32_t> Renumbered(const Arranged& group, std::span<const int32_t> order) {
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

struct OrderTask {
  Arranged group;
  SharedArray<int32_t> order;
  std::unique_ptr<IsolatedCall> call;  // while it runs
};

void Start(const MapData& data, OrderTask& task) {
  task.call = std::make_unique<IsolatedCall>();
  if (EnterChild(*task.call)) {
    OrderOne(data, task.group, task.order.data());
    LeaveChild(*task.call);
  }
}

// Largest groups first, so that the last process does not work alone for long.
void RunTasks(const MapData& data, std::vector<OrderTask>& tasks, const OrderPlan& plan, int32_t markers) {
  std::vector<OrderTask*> waiting, running;
  for (OrderTask& task : tasks) waiting.push_back(&task);
  std::stable_sort(waiting.begin(), waiting.end(), [](const OrderTask* a, const OrderTask* b) {
    return a->group.markers.size() < b->group.markers.size();
  });
  ProgressLine progress("ordering, markers", plan.quiet);
  std::size_t done = 0;
  while (!waiting.empty() || !running.empty()) {
    while (!waiting.empty() && running.size() < static_cast<std::size_t>(std::max(plan.jobs, 1))) {
      Start(data, *waiting.back());
      running.push_back(waiting.back());
      waiting.pop_back();
    }
    std::erase_if(running, [&](OrderTask* task) {
      if (StillRunning(*task->call)) return false;
      AwaitChild(*task->call);
      task->call.reset();
      done += task->group.markers.size();
      return true;
    });
    progress.Update(static_cast<double>(done), markers);
  }
}

// The others get the numbers that no group's own name has.
void NameGroups(LinkageMap& map, const OrderPlan& plan) {
  std::unordered_set<std::string> used;
  for (LinkageGroup& group : map.groups) {
    if (group.anchor == 0) continue;
    const auto named = plan.groupNames.find(group.anchor);
    group.name = named == plan.groupNames.end() ? "G" + std::to_string(group.anchor) : named->second;
    used.insert(group.name);
  }
  int number = 0;
  for (LinkageGroup& group : map.groups) {
    while (group.name.empty()) {
      std::string name = "LG" + std::to_string(++number);
      if (used.insert(name).second) group.name = std::move(name);
    }
  }
}

bool LongerFirst(const LinkageGroup& a, const LinkageGroup& b) {
  if (a.length != b.length) return a.length > b.length;
  if (a.places.size() != b.places.size()) return a.places.size() > b.places.size();
  return a.places.front().marker < b.places.front().marker;
}

}  // namespace

std::vector<std::vector<int32_t>> OrderGroups(const MapData& data, const std::vector<MarkerGroup>& groups,
                                              const OrderPlan& plan) {
  std::unordered_map<int32_t, std::size_t> placeInFrame;
  for (std::size_t i = 0; i < plan.frame.size(); ++i) placeInFrame.emplace(plan.frame[i], i);
  std::vector<OrderTask> tasks;
  int32_t markers = 0;
  for (const MarkerGroup& group : groups) {
    Arranged arranged = Arrange(group, placeInFrame);
    SharedArray<int32_t> order(arranged.markers.size());
    tasks.push_back({std::move(arranged), std::move(order), nullptr});
    markers += static_cast<int32_t>(group.markers.size());
  }
  RunTasks(data, tasks, plan, markers);
  std::vector<std::vector<int32_t>> orders;
  orders.reserve(tasks.size());
  for (const OrderTask& task : tasks) orders.push_back(Renumbered(task.group, task.order.view()));
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
      if (NeedsBridge(data, pair)) {
        const std::vector<float> before = LinkedDistances(data, order, order[i - 1]);
        place.interval = AgreedDistance(before, LinkedDistances(data, order, order[i]));
        place.bridged = place.interval < kUnlinkedDistance;
      }
      place.rec = data.rec[pair];
      place.lod = data.lod[pair];
      position += place.interval;
      if (place.interval >= kUnlinkedDistance) {
        ++group.gaps;
      } else {
        group.length += place.interval;
      }
      place.position = static_cast<float>(position);
    }
    group.places.push_back(place);
  }
  if (data.kind == TableKind::Cdm) PlaceOnParents(data, group);
  return group;
}

LinkageMap BuildMap(const MapData& data, const std::vector<MarkerGroup>& groups, int32_t minGroup,
                    const OrderPlan& plan) {
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
  std::vector<std::vector<int32_t>> orders;
  orders.reserve(kept.size());
  for (const MarkerGroup& group : kept) orders.push_back(group.markers);
  if (!plan.keepFileOrder) orders = OrderGroups(data, kept, plan);
  for (std::size_t g = 0; g < kept.size(); ++g) {
    if (!plan.keepFileOrder) Orient(orders[g], plan.frame);
    map.groups.push_back(PlaceMarkers(data, orders[g]));
    map.groups.back().anchor = kept[g].anchor;
  }
  std::sort(map.groups.begin(), map.groups.end(), LongerFirst);
  NameGroups(map, plan);
  return map;
}

}  // namespace host
