#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "host/command_line.h"
#include "host/fault_report.h"
#include "host/file_summary.h"
#include "host/input_file.h"
#include "host/map_report.h"
#include "host/marker_data.h"
#include "host/populations.h"
#include "host/precheck.h"
#include "host/precheck_report.h"
#include "host/text.h"
#include "host/trait_data.h"

namespace host {
namespace {

// What a check of one file comes to, for both ways of printing.
struct Verdict {
  std::string file, module, sentence;  // the sentence: summary of a good file, or why there is no check
  ExitCode code = ExitCode::Good;
  std::vector<Fault> faults;
  std::string faultText;
  std::vector<Finding> findings;  // of the host's own look: faults of a refused file, warnings of a good one
  nlohmann::json facts = nlohmann::json::object();
};

const ModuleRow& ModuleFor(const std::filesystem::path& path, const std::string& asked) {
  const ModuleRow* row = asked.empty() ? ModuleOfExtension(path) : ModuleOfCode(asked);
  if (row != nullptr && row->checked) return *row;
  const std::string known = "; this version checks " + CheckedModules();
  if (!asked.empty()) throw Failure{ExitCode::UsageWrong, "--module " + asked + " is not known" + known};
  if (row != nullptr) {
    throw Failure{ExitCode::InputWrong, path.string() + " is a project file of kind " +
                                            std::string(row->code) + " (" + std::string(row->kind) + ")" +
                                            known};
  }
  throw Failure{ExitCode::InputWrong,
                path.string() + ": the extension \"" + path.extension().string() + "\" names no Module" +
                    known + "; --module names one, \"tessarmont import\" makes them of other files"};
}

void RefuseFile(const InputFile& file, const LoadResult& load, Verdict& verdict) {
  verdict.code = ExitCode::InputWrong;
  verdict.faults = FaultsOf(file, verdict.module, load.log);
  verdict.faultText = FaultText(file, verdict.faults);
}

void CheckMarkerFile(const InputFile& file, TableKind kind, bool quiet, Verdict& verdict) {
  MapData data;
  const LoadResult load = LoadMarkers(file, kind, quiet, data);
  if (!load.good) return RefuseFile(file, load, verdict);
  const std::string population(PopulationWords(kind, data.populationType));
  verdict.sentence = Counted(data.numMarkers, "marker") + " x " + Counted(data.populationSize, "line") +
                     ", population " + std::to_string(data.populationType) + " (" + population + "), " +
                     std::string(MapFunctionName(data.mappingFunction)) + ", missing " +
                     Fixed(100 * MissingShare(data), 1) + " %";
  verdict.facts = {{"markers", data.numMarkers},
                   {"lines", data.populationSize},
                   {"population", {{"number", data.populationType}, {"name", population}}},
                   {"map_function", MapFunctionName(data.mappingFunction)},
                   {"marker_space", data.markerSpaceType == 1 ? "intervals" : "positions"},
                   {"missing", MissingShare(data)},
                   {"distorted", DistortedMarkers(data)}};
}

void CheckBinFile(const InputFile& file, int32_t moduleCode, Verdict& verdict) {
  BinData data;
  const LoadResult load = LoadBin(file, moduleCode, data);
  if (!load.good) return RefuseFile(file, load, verdict);
  double missing = 0;
  for (float percent : data.missingPercent.view()) missing += percent;
  missing /= 100.0 * data.numMarkers;
  verdict.sentence = Counted(data.numMarkers, "marker") + ", missing " + Fixed(100 * missing, 1) + " %";
  verdict.facts = {{"markers", data.numMarkers}, {"missing", missing}, {"module_code", moduleCode}};
}

// The library says only that the file is good; what it holds is told by the host's own walk.
void CheckLinkageFile(const InputFile& file, Verdict& verdict) {
  const LoadResult load = CheckTraitFile(file, verdict.module);
  if (!load.good) return RefuseFile(file, load, verdict);
  const FileSummary summary = SummaryOf(ReadWhole(file.absolute), verdict.module);
  verdict.sentence = summary.sentence;
  verdict.facts = summary.facts;
}

void CheckCmpFile(const InputFile& file, Verdict& verdict) {
  MapCounts counts;
  const LoadResult load = CountMaps(file, counts);
  if (!load.good) return RefuseFile(file, load, verdict);
  verdict.sentence = Counted(counts.maps, "map") + ", " + Counted(counts.markers, "marker") + " over all";
  verdict.facts = {{"maps", counts.maps},
                   {"markers_over_all_maps", counts.markers},
                   {"marker_space", counts.markerSpaceType == 1 ? "intervals" : "positions"}};
}

// The library stops at the first fault; this lists all, and in a good file what it hardly holds as meant.
void LookThrough(const InputFile& file, int32_t moduleCode, Verdict& verdict) {
  if (verdict.code == ExitCode::Other) return;
  const auto look = verdict.code == ExitCode::Good ? FindPitfalls : FindFaults;
  verdict.findings = look(ReadWhole(file.absolute), verdict.module, moduleCode);
}

Verdict CheckOne(const std::string& path, const CheckOptions& options) {
  Verdict verdict;
  verdict.file = path;
  std::optional<InputFile> opened;
  try {
    const ModuleRow& module = ModuleFor(path, options.module);
    verdict.module = module.code;
    const InputFile& file = opened.emplace(OpenInput(path));
    if (module.code == "BIN") {
      CheckBinFile(file, options.moduleCode, verdict);
    } else if (module.code == "CMP") {
      CheckCmpFile(file, verdict);
    } else if (HasTraitCheck(module.code)) {
      CheckLinkageFile(file, verdict);
    } else if (const auto kind = MarkerKindOf(module.code)) {
      CheckMarkerFile(file, *kind, options.json, verdict);
    }
  } catch (const Failure& failure) {
    if (failure.code == ExitCode::UsageWrong) throw;
    verdict.code = failure.code;
    verdict.sentence = failure.message;
  }
  if (opened) LookThrough(*opened, options.moduleCode, verdict);
  return verdict;
}

void Print(const Verdict& verdict, bool all) {
  if (verdict.code == ExitCode::Good) {
    std::cout << verdict.file << ": good " << verdict.module << " file, " << verdict.sentence << '\n';
    for (const Finding& finding : verdict.findings) {
      std::cout.flush();
      std::cerr << "tessarmont: warning: " << verdict.file << ", line " << finding.lines.front() << ": "
                << finding.words << '\n';
    }
    return;
  }
  if (verdict.faults.empty()) {
    std::cout.flush();
    std::cerr << "tessarmont: " << verdict.sentence << '\n';
  } else {
    std::cout << verdict.faultText;
  }
  std::cout << FindingsText(verdict.file, verdict.findings, all);
}

nlohmann::json Json(const Verdict& verdict, bool all) {
  nlohmann::json json = verdict.facts;
  json["file"] = verdict.file;
  json["module"] = verdict.module.empty() ? nlohmann::json() : nlohmann::json(verdict.module);
  json["good"] = verdict.code == ExitCode::Good;
  json["exit_code"] = static_cast<int>(verdict.code);
  if (verdict.code != ExitCode::Good && verdict.faults.empty()) json["error"] = verdict.sentence;
  json["faults"] = nlohmann::json::array();
  for (const Fault& fault : verdict.faults) {
    json["faults"].push_back(FaultJson(fault));
  }
  json["findings"] = FindingsJson(verdict.findings, all);
  return json;
}

}  // namespace

CLI::App* DeclareCheck(CLI::App& app, CheckOptions& options) {
  CLI::App* check =
      app.add_subcommand("check", "Reads project files and says what is wrong in them, and where");
  check->add_option("FILE", options.files, "project files: " + CheckedModules())->required();
  check->add_option("--module", options.module, "read every FILE as this Module instead of by extension");
  check->add_option("--module-code", options.moduleCode, "rule set for BIN files")->capture_default_str();
  check->add_flag("--json", options.json, "print one JSON object: files, each with its facts or faults");
  check->add_flag("--all", options.all, "list every fault of a file with more than 20");
  check->footer(
      "Example: prints a line for each good file; for a bad one the report and its line, then all its "
      "faults\n"
      "  tessarmont check examples/listeria.map examples/multitrait.map");
  return check;
}

ExitCode RunCheck(const CheckOptions& options) {
  ExitCode worst = ExitCode::Good;
  nlohmann::json files = nlohmann::json::array();
  for (const std::string& path : options.files) {
    const Verdict verdict = CheckOne(path, options);
    worst = Worse(worst, verdict.code);
    if (options.json) {
      files.push_back(Json(verdict, options.all));
    } else {
      Print(verdict, options.all);
    }
  }
  if (options.json) {
    const nlohmann::json json{{"format", "tessarmont.check/1"}, {"files", files}};
    std::cout << json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  }
  return worst;
}

}  // namespace host
