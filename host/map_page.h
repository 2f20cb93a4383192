#pragma once

#include "host/genotype_table.h"
#include "host/map_report.h"
#include "host/reports/report_data.h"

namespace host {

// The report's view of a run. `table` has the genotypes of the markers of run.data; `input` is the user's file. The
// spans of the result look into `run`.
reports::MapReport MapPageData(const MapRun& run, const GenotypeTable& table, const std::string& input);

// Crossovers of each line along the groups: changes of the genotype from one typed marker to the next of a group, by
// gametes (A to B of a population with heterozygotes counts 2), over the co-dominant markers of a MAP file and with
// markers in repulsion turned round. Empty for other kinds.
std::vector<int32_t> LineCrossovers(const LinkageMap& map, const GenotypeTable& table);

}  // namespace host
