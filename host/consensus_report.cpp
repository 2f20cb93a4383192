#include "host/consensus_report.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "host/text.h"

namespace host {
namespace {

bool HasGroups(const ConsensusRun& run) { return run.groups.size() > 1 || !run.groups.front().name.empty(); }

std::string Tau(const OrderAgreement& agreement) {
  return agreement.tau ? Fixed(*agreement.tau, 4) : std::string("-");
}

// A name may hold a tab when it was quoted in the file.
std::string TableText(std::string text) {
  std::replace(text.begin(), text.end(), '\t', ' ');
  return text;
}

std::size_t MapOf(const ConsensusGroup& group, const std::string& name) {
  const auto& maps = group.consensus.maps;
  return static_cast<std::size_t>(std::find(maps.begin(), maps.end(), name) - maps.begin());
}

// The column of the table behind map m of a group. Maps of one file may share a name; those of a file that is
// not split stand in its own order.
std::vector<std::size_t> ColumnMaps(const ConsensusRun& run, const ConsensusGroup& group) {
  std::vector<std::size_t> maps;
  for (std::size_t column = 0; column < run.maps.size(); ++column) {
    maps.push_back(HasGroups(run) ? MapOf(group, run.maps[column]) : column);
  }
  return maps;
}

nlohmann::json AgreementJson(const OrderAgreement& agreement) {
  return {{"shared", agreement.shared},
          {"tau", agreement.tau ? nlohmann::json(*agreement.tau) : nlohmann::json()},
          {"reversed", agreement.Reversed()},
          {"pairs_alike", agreement.Reversed() ? agreement.opposite : agreement.alike},
          {"pairs_opposite", agreement.Conflicts()}};
}

nlohmann::json MarkerJson(const ConsensusMarker& marker, std::size_t place) {
  nlohmann::json json{{"marker", marker.name}, {"place", place}, {"position", Plain(marker.position)}};
  json["maps"] = nlohmann::json::array();
  for (std::size_t m = 0; m < marker.place.size(); ++m) {
    const bool there = marker.place[m] > 0;
    json["maps"].push_back(
        there ? nlohmann::json{{"place", marker.place[m]}, {"position", Plain(marker.positions[m])}}
              : nlohmann::json());
  }
  return json;
}

nlohmann::json GroupJson(const ConsensusGroup& group) {
  const Consensus& consensus = group.consensus;
  nlohmann::json json{{"name", group.name.empty() ? nlohmann::json() : nlohmann::json(group.name)},
                      {"maps", nlohmann::json::array()},
                      {"conflicts", nlohmann::json::array()},
                      {"markers", nlohmann::json::array()}};
  for (std::size_t m = 0; m < consensus.maps.size(); ++m) {
    json["maps"].push_back(AgreementJson(group.withConsensus[m]));
    json["maps"].back()["name"] = consensus.maps[m];
  }
  for (const MapConflict& conflict : group.conflicts) {
    json["conflicts"].push_back(AgreementJson(conflict.agreement));
    json["conflicts"].back()["maps"] = {consensus.maps[conflict.first], consensus.maps[conflict.second]};
  }
  for (std::size_t p = 0; p < consensus.markers.size(); ++p) {
    json["markers"].push_back(MarkerJson(consensus.markers[p], p + 1));
  }
  return json;
}

std::string GroupSummary(const ConsensusGroup& group) {
  const Consensus& consensus = group.consensus;
  std::string text = group.name.empty() ? "consensus" : group.name;
  text += ": " + Counted(static_cast<int64_t>(consensus.markers.size()), "marker") + ", " +
          Fixed(consensus.markers.empty() ? 0 : consensus.markers.back().position, 1) + " cM, " +
          Counted(static_cast<int64_t>(consensus.maps.size()), "map") + "\n";
  for (std::size_t m = 0; m < consensus.maps.size(); ++m) {
    const OrderAgreement& agreement = group.withConsensus[m];
    text += "  " + PaddedColumn(consensus.maps[m], 20) + RightAligned(std::to_string(agreement.shared), 7) +
            " markers, tau " + Tau(agreement) + (agreement.Reversed() ? ", reversed" : "") + "\n";
  }
  for (const MapConflict& conflict : group.conflicts) {
    const OrderAgreement& agreement = conflict.agreement;
    text += "  conflict: " + consensus.maps[conflict.first] + " and " + consensus.maps[conflict.second] +
            ", " + std::to_string(agreement.Conflicts()) + " of " +
            Counted(agreement.alike + agreement.opposite, "pair") + " in opposite order\n";
  }
  return text;
}

}  // namespace

ConsensusGroup Judge(std::string name, Consensus consensus) {
  ConsensusGroup group{std::move(name), std::move(consensus), {}, {}};
  Consensus& made = group.consensus;
  if (WithConsensus(made, 0).Reversed()) Turn(made);
  for (std::size_t m = 0; m < made.maps.size(); ++m) {
    group.withConsensus.push_back(WithConsensus(made, m));
    for (std::size_t n = 0; n < m; ++n) {
      const OrderAgreement agreement = BetweenMaps(made, n, m);
      if (agreement.Conflicts() > 0) group.conflicts.push_back({n, m, agreement});
    }
  }
  return group;
}

std::string ConsensusTable(const ConsensusRun& run) {
  const bool grouped = HasGroups(run);
  std::string text = grouped ? "group\tmarker\tplace\tposition" : "marker\tplace\tposition";
  for (const std::string& map : run.maps) {
    text += "\t" + TableText(map) + "_place\t" + TableText(map) + "_position";
  }
  text += '\n';
  for (const ConsensusGroup& group : run.groups) {
    const std::vector<std::size_t> maps = ColumnMaps(run, group);
    std::size_t place = 0;
    for (const ConsensusMarker& marker : group.consensus.markers) {
      if (grouped) text += group.name + '\t';
      text += TableText(marker.name) + '\t' + std::to_string(++place) + '\t' + Fixed(marker.position, 4);
      for (const std::size_t m : maps) {
        const bool there = m < marker.place.size() && marker.place[m] > 0;
        text +=
            there ? "\t" + std::to_string(marker.place[m]) + "\t" + Fixed(marker.positions[m], 4) : "\t\t";
      }
      text += '\n';
    }
  }
  return text;
}

std::string ConsensusLog(const ConsensusRun& run) {
  std::string text;
  for (const ConsensusGroup& group : run.groups) {
    if (HasGroups(run)) text += "group " + group.name + "\n";
    text += group.consensus.tables;
  }
  return text;
}

std::string ConsensusSummary(const ConsensusRun& run) {
  std::string text;
  for (const ConsensusGroup& group : run.groups) text += GroupSummary(group);
  text += "written:";
  for (const std::string& file : run.written) text += " " + file;
  return text + "\n";
}

std::string ConsensusJson(const ConsensusRun& run) {
  nlohmann::json json{
      {"format", "tessarmont.consensus/1"}, {"input", run.input},       {"maps", run.maps},
      {"groups", nlohmann::json::array()},  {"warnings", run.warnings}, {"files", run.written}};
  for (const ConsensusGroup& group : run.groups) json["groups"].push_back(GroupJson(group));
  return json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace host
