#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <CLI/Validators.hpp>
#include <iostream>

#include "host/command_line.h"
#include "host/fault_report.h"
#include "host/grouping.h"
#include "host/input_file.h"
#include "host/linkage_map.h"
#include "host/map_report.h"
#include "host/marker_data.h"
#include "host/result_files.h"
#include "host/text.h"

namespace host {
namespace {

constexpr const char* kFooter =
    "Writes STEM.bip, STEM.met and STEM.sdl, the project files of the mapping engines, and STEM.map.tsv, a "
    "table "
    "with the columns group, marker, position and interval (cM), rec and lod (to the marker before), "
    "segregation_p, missing (share of the lines).\n\n"
    "Groups: markers with the same anchor number above 0 in FILE are one group; links (--lod, --max-rec) add "
    "the "
    "others, strongest first, and never join two anchor groups. Groups are named G<anchor> or LG1, LG2, ... "
    "and "
    "sorted longest first. The end that stands first in FILE is the origin. Neighbours in an anchor group "
    "that "
    "show no linkage stand 1000 cM apart, which every reader takes as a recombination of 0.5; lengths leave "
    "such "
    "gaps out.\n\n"
    "Example: a mouse F2; the four files go to the current folder\n"
    "  tessarmont map examples/listeria.map --lod 6 -o listeria";

void RequireMapFile(const std::filesystem::path& path) {
  const ModuleRow* row = ModuleOfExtension(path);
  if (row != nullptr && row->code == "MAP") return;
  const std::string wanted = "; map takes a MAP project file (.map)";
  if (row == nullptr) {
    throw Failure{ExitCode::InputWrong, path.string() + ": the extension \"" + path.extension().string() +
                                            "\" is not known" + wanted};
  }
  throw Failure{ExitCode::InputWrong, path.string() + " is a project file of kind " + std::string(row->code) +
                                          " (" + std::string(row->kind) + ")" + wanted};
}

LinkageMap GroupAndOrder(const MapRun& run, const MapOptions& options) {
  const std::vector<int32_t> frame =
      options.anchorOrder.empty() ? std::vector<int32_t>{} : ReadFrame(options.anchorOrder, run.data);
  const std::vector<MarkerGroup> groups =
      GroupMarkers(run.data.anchor.view(), run.data.rec.view(), run.data.lod.view(), run.thresholds);
  LinkageMap map = BuildMap(run.data, groups, run.minGroup, frame, options.quiet);
  if (map.groups.empty()) {
    throw Failure{ExitCode::InputWrong, run.input + ": no group of " + Counted(run.minGroup, "marker") +
                                            " or more at LOD >= " + Significant(options.lod) +
                                            " and recombination <= " + Significant(options.maxRec) +
                                            "; nothing was written"};
  }
  return map;
}

}  // namespace

CLI::App* DeclareMap(CLI::App& app, MapOptions& options) {
  CLI::App* map = app.add_subcommand("map", "Makes a linkage map of a MAP project file");
  map->add_option("FILE", options.file, "MAP project file (.map)")->required();
  map->add_option("-o,--output", options.stem, "STEM of the results [FILE without extension]");
  map->add_option("--lod", options.lod, "least LOD of a link")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str();
  map->add_option("--max-rec", options.maxRec, "highest recombination frequency of a link")
      ->check(CLI::Range(0.0, 0.5))
      ->capture_default_str();
  map->add_option("--min-group", options.minGroup, "smaller groups are listed as unlinked")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  map->add_option(
      "--anchor-order", options.anchorOrder,
      "file with marker names in a trusted order, one a line; groups with three or more of them keep "
      "that order and take in the other markers");
  map->add_flag("--json", options.json, "print one JSON object instead of the summary");
  map->add_flag("--quiet", options.quiet, "print nothing but failures (and the JSON)");
  map->footer(kFooter);
  return map;
}

ExitCode RunMap(const MapOptions& options) {
  RequireMapFile(options.file);
  const InputFile file = OpenInput(options.file);
  const ResultFiles results = OpenResults(options.stem, file);
  MapRun run;
  run.input = options.file;
  run.thresholds = {static_cast<float>(options.lod), static_cast<float>(options.maxRec)};
  run.minGroup = options.minGroup;
  const LoadResult load = LoadMap(file, options.quiet, run.data);
  if (!load.good) {
    std::cerr << FaultText(file, FaultsOf(file, "MAP", load.log));
    return ExitCode::InputWrong;
  }
  run.map = GroupAndOrder(run, options);
  WriteProjectFiles(results, file, run.data, run.map);
  WriteText(results, ".map.tsv", MapTable(run.data, run.map));
  run.written = Publish(results);
  run.warnings = MapWarnings(run.data, run.map);
  if (!options.quiet) {
    for (const std::string& warning : run.warnings) std::cerr << "tessarmont: warning: " << warning << '\n';
  }
  if (options.json) {
    std::cout << MapJson(run);
  } else if (!options.quiet) {
    std::cout << MapSummary(run);
  }
  return ExitCode::Good;
}

}  // namespace host
