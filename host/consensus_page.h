#pragma once

#include "host/consensus_report.h"
#include "host/reports/report_data.h"

namespace host {

// The report's view of a run: maps, consensus and where they contradict each other.
reports::ConsensusReport ConsensusPageData(const ConsensusRun& run, const std::vector<std::string>& inputs);

}  // namespace host
