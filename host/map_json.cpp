#include <cmath>
#include <nlohmann/json.hpp>
#include <numeric>

#include "host/clonal_map.h"
#include "host/map_report.h"
#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

using Bins = std::vector<std::vector<const BinnedMarker*>>;

nlohmann::json NumberOrNull(bool there, float value) {
  return there && !std::isnan(value) ? nlohmann::json(Plain(value)) : nlohmann::json();
}

void AddParents(const MapPlace& place, nlohmann::json& marker) {
  constexpr const char* names[] = {"female", "male"};
  for (std::size_t parent = 0; parent < 2; ++parent) {
    const ParentalPlace& own = place.parent[parent];
    marker[names[parent]] = nlohmann::json();
    if (own.onMap) marker[names[parent]] = {{"position", Plain(own.position)}, {"phase", own.phase}};
  }
}

nlohmann::json PlaceJson(const MapRun& run, const MapPlace& place, bool first, const Bins& bins) {
  const MapData& data = run.data;
  nlohmann::json marker{{"marker", data.Name(place.marker)},
                        {"number", run.FileNumber(place.marker)},
                        {"position", Plain(place.position)},
                        {"interval", Plain(place.interval)},
                        {"missing", data.MissingShare(place.marker)}};
  const bool told = !first && !place.bridged;
  marker["rec"] = NumberOrNull(told, place.rec);
  marker["lod"] = NumberOrNull(told, place.lod);
  marker["segregation_p"] = NumberOrNull(data.Tested(place.marker), data.SegregationP(place.marker));
  if (data.kind != TableKind::Map) marker["category"] = CategoryText(data, place.marker);
  if (data.kind == TableKind::Cdm) AddParents(place, marker);
  if (run.cleaning.rules.bin) {
    for (const BinnedMarker* binned : bins[static_cast<std::size_t>(place.marker - 1)]) {
      marker["bin"].push_back(binned->name);
    }
  }
  return marker;
}

nlohmann::json GroupJson(const MapRun& run, const LinkageGroup& group, const Bins& bins) {
  nlohmann::json result{{"name", group.name},
                        {"anchor", group.anchor},
                        {"length", group.length},
                        {"gaps", group.gaps},
                        {"markers", nlohmann::json::array()}};
  if (run.data.kind == TableKind::Cdm) {
    result["female_length"] = Plain(ParentLength(group, 0));
    result["male_length"] = Plain(ParentLength(group, 1));
  }
  for (const MapPlace& place : group.places) {
    result["markers"].push_back(PlaceJson(run, place, &place == &group.places.front(), bins));
  }
  return result;
}

nlohmann::json DroppedJson(const std::vector<DroppedMarker>& markers) {
  nlohmann::json result = nlohmann::json::array();
  for (const DroppedMarker& marker : markers) {
    result.push_back({{"marker", marker.name}, {"number", marker.number}, {"reason", marker.reason}});
  }
  return result;
}

nlohmann::json CleaningJson(const MapRun& run) {
  const CleaningLedger& ledger = run.cleaning;
  nlohmann::json result{{"read", ledger.read}, {"kept", ledger.kept.size()}, {"bin", ledger.rules.bin}};
  result["max_missing"] =
      ledger.rules.maxMissing ? nlohmann::json(*ledger.rules.maxMissing) : nlohmann::json();
  result["min_segregation_p"] =
      ledger.rules.minSegregationP ? nlohmann::json(*ledger.rules.minSegregationP) : nlohmann::json();
  result["too_missing"] = DroppedJson(ledger.tooMissing);
  result["distorted"] = DroppedJson(ledger.distorted);
  result["binned"] = nlohmann::json::array();
  for (const BinnedMarker& marker : ledger.binned) {
    result["binned"].push_back(
        {{"marker", marker.name}, {"number", marker.number}, {"kept", run.data.Name(marker.kept)}});
  }
  return result;
}

nlohmann::json SweepRows(const MapRun& run) {
  nlohmann::json rows = nlohmann::json::array();
  for (const SweepRow& row : run.sweep) {
    const std::vector<int32_t> sizes = LargeSizes(row, run.minGroup);
    const int32_t markers = std::accumulate(sizes.begin(), sizes.end(), 0);
    rows.push_back({{"lod", Plain(row.lod)}, {"sizes", sizes}, {"unlinked", run.data.numMarkers - markers}});
  }
  return rows;
}

std::string Dumped(const nlohmann::json& result) {
  return result.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string MapJson(const MapRun& run) {
  const MapData& data = run.data;
  const bool intervals = data.kind == TableKind::Map && data.markerSpaceType == 1;
  const std::string_view population = PopulationWords(data.kind, data.populationType);
  nlohmann::json result{{"format", "tessarmont.map/1"},
                        {"input", run.input},
                        {"module", ModuleOf(data.kind)},
                        {"markers", data.numMarkers},
                        {"lines", data.populationSize},
                        {"population", {{"number", data.populationType}, {"name", population}}},
                        {"map_function", MapFunctionName(data.mappingFunction)},
                        {"marker_space", intervals ? "intervals" : "positions"},
                        {"lod", Plain(run.thresholds.minLod)},
                        {"max_rec", Plain(run.thresholds.maxRec)},
                        {"min_group", run.minGroup},
                        {"missing", MissingShare(data)},
                        {"distorted", DistortedMarkers(data)},
                        {"groups", nlohmann::json::array()},
                        {"unlinked", nlohmann::json::array()},
                        {"sweep", SweepRows(run)},
                        {"warnings", run.warnings},
                        {"files", run.written}};
  if (!run.cut.empty()) result["cut"] = run.cut;
  if (run.cleaning.rules.Any()) result["cleaning"] = CleaningJson(run);
  const Bins bins = BinMembers(run.cleaning);
  for (const LinkageGroup& group : run.map.groups) result["groups"].push_back(GroupJson(run, group, bins));
  for (int32_t marker : run.map.unlinked) result["unlinked"].push_back(data.Name(marker));
  return Dumped(result);
}

std::string SweepJson(const MapRun& run) {
  return Dumped({{"format", "tessarmont.sweep/1"},
                 {"input", run.input},
                 {"markers", run.data.numMarkers},
                 {"max_rec", Plain(run.thresholds.maxRec)},
                 {"min_group", run.minGroup},
                 {"sweep", SweepRows(run)}});
}

}  // namespace host
