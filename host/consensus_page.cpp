#include "host/consensus_page.h"

#include "host/report_files.h"
#include "host/text.h"

namespace host {
namespace {

reports::JointMarker MarkerOf(const ConsensusMarker& marker) {
  reports::JointMarker joint{marker.name, marker.position, {}};
  for (std::size_t m = 0; m < marker.place.size(); ++m) {
    joint.positions.push_back(marker.place[m] > 0 ? static_cast<double>(marker.positions[m])
                                                  : reports::kNone);
  }
  return joint;
}

reports::JointGroup GroupOf(const ConsensusGroup& group) {
  reports::JointGroup joint;
  joint.name = group.name;
  for (std::size_t m = 0; m < group.consensus.maps.size(); ++m) {
    const OrderAgreement& agreement = group.withConsensus[m];
    joint.sources.push_back({group.consensus.maps[m], agreement.shared,
                             agreement.tau.value_or(reports::kNone), agreement.Reversed()});
  }
  for (const ConsensusMarker& marker : group.consensus.markers) joint.markers.push_back(MarkerOf(marker));
  for (const MapConflict& conflict : group.conflicts) {
    joint.conflicts.push_back({conflict.first, conflict.second, conflict.agreement.Conflicts(),
                               conflict.agreement.alike + conflict.agreement.opposite});
  }
  return joint;
}

}  // namespace

reports::ConsensusReport ConsensusPageData(const ConsensusRun& run, const std::vector<std::string>& inputs) {
  reports::ConsensusReport report;
  std::string title;
  for (const std::string& input : inputs) {
    title += (title.empty() ? "" : ", ") + std::filesystem::path(input).filename().string();
  }
  report.run = RunFactsOf("Consensus of " + title, "consensus of several maps", inputs);
  report.run.warnings = run.warnings;
  std::size_t markers = 0;
  for (const ConsensusGroup& group : run.groups) {
    markers += group.consensus.markers.size();
    report.groups.push_back(GroupOf(group));
  }
  report.run.facts = {{"maps", std::to_string(run.maps.size())},
                      {"groups", std::to_string(run.groups.size())},
                      {"markers", std::to_string(markers)}};
  return report;
}

}  // namespace host
