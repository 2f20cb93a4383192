#include "host/map_report.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

constexpr float kDistorted = 0.01F;
constexpr std::size_t kUnlinkedShown = 20;  // names in the summary; the table has them all
constexpr std::string_view kTableHeading =
    "group\tmarker\tposition\tinterval\trec\tlod\tsegregation_p\tmissing\n";

// A name may hold a tab when it was quoted in the file.
std::string TableText(std::string text) {
  std::replace(text.begin(), text.end(), '\t', ' ');
  return text;
}

std::string MarkerColumns(const MapData& data, int32_t marker) {
  const std::string p = data.Tested(marker) ? Significant(Plain(data.SegregationP(marker))) : "";
  return "\t" + p + "\t" + Fixed(data.MissingShare(marker), 4) + "\n";
}

std::string Centimorgans(double length) { return Fixed(length, 1) + " cM"; }

std::string SpaceName(int32_t type) { return type == 1 ? "intervals" : "positions"; }

std::string UnlinkedNames(const MapRun& run) {
  std::string names;
  const std::size_t shown = std::min(run.map.unlinked.size(), kUnlinkedShown);
  for (std::size_t i = 0; i < shown; ++i) names += (i > 0 ? ", " : ": ") + run.data.Name(run.map.unlinked[i]);
  if (shown < run.map.unlinked.size()) names += ", ...";
  return names;
}

std::string GroupTable(const MapRun& run) {
  std::string text = "group     markers        cM  first and last marker\n";
  for (const LinkageGroup& group : run.map.groups) {
    text += Padded(group.name, 9) + RightAligned(std::to_string(group.places.size()), 8) +
            RightAligned(Fixed(group.length, 1), 10) + "  " + run.data.Name(group.places.front().marker) +
            ", " + run.data.Name(group.places.back().marker);
    if (group.gaps > 0) text += " (" + Counted(group.gaps, "gap") + ")";
    text += '\n';
  }
  return text;
}

nlohmann::json PlaceJson(const MapData& data, const MapPlace& place, bool first) {
  nlohmann::json json{{"marker", data.Name(place.marker)},
                      {"number", place.marker},
                      {"position", Plain(place.position)},
                      {"interval", Plain(place.interval)},
                      {"missing", data.MissingShare(place.marker)}};
  json["rec"] = first ? nlohmann::json() : nlohmann::json(Plain(place.rec));
  json["lod"] = first ? nlohmann::json() : nlohmann::json(Plain(place.lod));
  json["segregation_p"] =
      data.Tested(place.marker) ? nlohmann::json(Plain(data.SegregationP(place.marker))) : nlohmann::json();
  return json;
}

nlohmann::json GroupJson(const MapData& data, const LinkageGroup& group) {
  nlohmann::json json{{"name", group.name},
                      {"anchor", group.anchor},
                      {"length", group.length},
                      {"gaps", group.gaps},
                      {"markers", nlohmann::json::array()}};
  for (const MapPlace& place : group.places) {
    json["markers"].push_back(PlaceJson(data, place, &place == &group.places.front()));
  }
  return json;
}

}  // namespace

int32_t DistortedMarkers(const MapData& data) {
  int32_t count = 0;
  for (int32_t m = 1; m <= data.numMarkers; ++m) {
    if (data.Tested(m) && data.SegregationP(m) < kDistorted) ++count;
  }
  return count;
}

double MissingShare(const MapData& data) {
  double sum = 0;
  for (int32_t m = 1; m <= data.numMarkers; ++m) sum += data.MissingShare(m);
  return data.numMarkers > 0 ? sum / data.numMarkers : 0;
}

std::string MapTable(const MapData& data, const LinkageMap& map) {
  std::string text(kTableHeading);
  for (const LinkageGroup& group : map.groups) {
    for (const MapPlace& place : group.places) {
      text += group.name + '\t' + TableText(data.Name(place.marker)) + '\t' + Fixed(place.position, 4) +
              '\t' + Fixed(place.interval, 4) + '\t';
      if (&place != &group.places.front())
        text += Fixed(place.rec, 5) + '\t' + Fixed(place.lod, 3);
      else
        text += '\t';
      text += MarkerColumns(data, place.marker);
    }
  }
  for (int32_t marker : map.unlinked) {
    text += "unlinked\t" + TableText(data.Name(marker)) + "\t\t\t\t" + MarkerColumns(data, marker);
  }
  return text;
}

std::vector<std::string> MapWarnings(const MapData& data, const LinkageMap& map) {
  std::vector<std::string> warnings;
  for (const LinkageGroup& group : map.groups) {
    if (group.repulsions > 0) {
      warnings.push_back(
          group.name + ": " + Counted(group.repulsions, "pair") +
          " of neighbours in repulsion (frequency above 0.5); the parents' codes of some markers "
          "seem to be swapped");
    }
    if (group.gaps > 0) {
      warnings.push_back(
          group.name + ": " + Counted(group.gaps, "pair") +
          " of neighbours without linkage; each stands as 1000 cM in the files and is left out of "
          "the length");
    }
  }
  int32_t untested = 0;
  for (int32_t m = 1; m <= data.numMarkers; ++m) untested += data.Tested(m) ? 0 : 1;
  if (untested > 0) warnings.push_back(Counted(untested, "marker") + " without any genotype");
  return warnings;
}

std::string MapSummary(const MapRun& run) {
  const MapData& data = run.data;
  double length = 0;
  std::size_t placed = 0;
  for (const LinkageGroup& group : run.map.groups) {
    length += group.length;
    placed += group.places.size();
  }
  std::string text = run.input + ": " + Counted(data.numMarkers, "marker") + " x " +
                     Counted(data.populationSize, "line") + ", population " +
                     std::to_string(data.populationType) + " (" + PopulationName(data.populationType) +
                     "), " + std::string(MapFunctionName(data.mappingFunction)) + " distances\n";
  text += "missing genotypes " + Fixed(100 * MissingShare(data), 1) +
          " %, distorted segregation (p < 0.01) at " + Counted(DistortedMarkers(data), "marker") + "\n";
  text += "linked at LOD >= " + Significant(Plain(run.thresholds.minLod)) +
          " and recombination <= " + Significant(Plain(run.thresholds.maxRec)) + "\n\n" + GroupTable(run) +
          "\n";
  text += Counted(static_cast<int64_t>(run.map.groups.size()), "group") + ", " +
          Counted(static_cast<int64_t>(placed), "marker") + ", " + Centimorgans(length) + "; " +
          std::to_string(run.map.unlinked.size()) + " unlinked" + UnlinkedNames(run) + "\n";
  text += "written (" + SpaceName(data.markerSpaceType) + "):";
  for (const std::string& file : run.written) text += " " + file;
  return text + "\n";
}

std::string MapJson(const MapRun& run) {
  const MapData& data = run.data;
  nlohmann::json json{
      {"format", "tessarmont.map/1"},
      {"input", run.input},
      {"markers", data.numMarkers},
      {"lines", data.populationSize},
      {"population", {{"number", data.populationType}, {"name", PopulationName(data.populationType)}}},
      {"map_function", MapFunctionName(data.mappingFunction)},
      {"marker_space", SpaceName(data.markerSpaceType)},
      {"lod", Plain(run.thresholds.minLod)},
      {"max_rec", Plain(run.thresholds.maxRec)},
      {"min_group", run.minGroup},
      {"missing", MissingShare(data)},
      {"distorted", DistortedMarkers(data)},
      {"groups", nlohmann::json::array()},
      {"unlinked", nlohmann::json::array()},
      {"warnings", run.warnings},
      {"files", run.written}};
  for (const LinkageGroup& group : run.map.groups) json["groups"].push_back(GroupJson(data, group));
  for (int32_t marker : run.map.unlinked) json["unlinked"].push_back(data.Name(marker));
  return json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace host
