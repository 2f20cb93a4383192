#pragma once

#include <string>
#include <vector>

#include "host/consensus_data.h"
#include "host/order_agreement.h"

namespace host {

struct MapConflict {
  std::size_t first, second;  // maps, from 0
  OrderAgreement agreement;
};

// One chromosome of a run of `consensus`, with how far its maps agree.
struct ConsensusGroup {
  std::string name;  // empty where the file is not split into chromosomes
  Consensus consensus;
  std::vector<OrderAgreement> withConsensus;  // a map each
  std::vector<MapConflict> conflicts;         // pairs of maps that contradict each other
};
// Compares the maps; the consensus is turned to run as the first map does.
ConsensusGroup Judge(std::string name, Consensus consensus);

struct ConsensusRun {
  std::string input;
  std::vector<std::string> maps;  // columns of the table; a group may lack some
  std::vector<ConsensusGroup> groups;
  std::vector<std::string> warnings, written;
};
std::string ConsensusTable(const ConsensusRun& run);
std::string ConsensusLog(const ConsensusRun& run);
std::string ConsensusSummary(const ConsensusRun& run);
std::string ConsensusJson(const ConsensusRun& run);

}  // namespace host
