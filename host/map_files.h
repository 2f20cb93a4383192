#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/linkage_map.h"
#include "host/marker_data.h"
#include "host/result_files.h"

namespace host {

// Pair tables that CDM and PLM files can have written.
struct TableSwitches {
  bool rec = false, lod = false, distance = false;
};
// "rec,lod,dis" or fewer of them. Failure UsageWrong for any other word.
TableSwitches ReadTableSwitches(const std::string& words);

// Every extension that a run of `map` can write for a kind of file.
std::vector<std::string> ResultExtensions(TableKind kind, const TableSwitches& tables);

// The library's result files for a finished map: project files for the mapping engines and, of CDM and PLM
// files, haplotypes, summaries and pair tables. They are looked through afterwards, since the library has no
// way to tell that it could not write. `input` is the file that `data` comes from.
void WriteResultFiles(const ResultFiles& results, const InputFile& input, MapData& data,
                      const LinkageMap& map, const TableSwitches& tables);

}  // namespace host
