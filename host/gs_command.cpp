#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/command_line.h"
#include "host/fault_report.h"
#include "host/file_walk.h"
#include "host/input_file.h"
#include "host/text.h"
#include "host/trait_data.h"

namespace host {
namespace {

// The counts that the pre-reads do not hand out.
nlohmann::json Counts(const FileLayout& layout, const SelectionData& data) {
  const auto count = [&](Field field) {
    const auto value = layout.Value(field);
    return value ? nlohmann::json(*value) : nlohmann::json();
  };
  return {{"markers", count(Field::NumMarkers)},
          {"training_lines", count(Field::TrainingSize)},
          {"breeding_lines", data.breedingSize},
          {"traits", data.traits}};
}

void PrintSummary(const InputFile& file, const FileLayout& layout, const SelectionData& data) {
  std::cout << file.given.string() << ": good genomic-selection file";
  if (const auto markers = layout.Value(Field::NumMarkers)) std::cout << ", " << Counted(*markers, "marker");
  if (const auto lines = layout.Value(Field::TrainingSize)) std::cout << ", training population " << *lines;
  std::cout << ", breeding population " << data.breedingSize << ", "
            << Counted(static_cast<int64_t>(data.traits.size()), "trait") << '\n';
  for (const std::string& trait : data.traits) std::cout << "  " << trait << '\n';
}

nlohmann::json FaultsJson(const std::vector<Fault>& faults) {
  nlohmann::json json = nlohmann::json::array();
  for (const Fault& fault : faults) json.push_back(FaultJson(fault));
  return json;
}

}  // namespace

CLI::App* DeclareGs(CLI::App& app, GsOptions& options) {
  CLI::App* gs = app.add_subcommand("gs", "Reads a genomic-selection file and tells its sizes and traits");
  gs->add_option("FILE", options.file, "genomic-selection file")->required();
  gs->add_flag("--json", options.json, "print one JSON object");
  gs->footer(
      "Marker names that differ between the training and the breeding population are warnings, not "
      "faults.\n\n"
      "Example: a file of two markers, made and read\n"
      "  printf '2\\n3\\n2\\n1\\nm1 0 1 2\\nm2 2 2 0\\nyield 4.1 3.9 3.5\\nm1 1 1\\nm2 0 2\\n' > small.gs\n"
      "  tessarmont gs small.gs");
  return gs;
}

ExitCode RunGs(const GsOptions& options) {
  const InputFile file = OpenInput(options.file);
  SelectionData data;
  const LoadResult load = LoadSelection(file, data);
  const std::string text = ReadWhole(file.absolute);
  const std::vector<Fault> told = LocateFaults(load.log, text, "GS", data.breedingWrong);
  if (options.json) {
    nlohmann::json json = load.good ? Counts(WalkFile(text, "GS"), data) : nlohmann::json::object();
    json["format"] = "tessarmont.gs/1";
    json["file"] = options.file;
    json["good"] = load.good;
    json[load.good ? "warnings" : "faults"] = FaultsJson(told);
    std::cout << json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
  } else if (load.good) {
    PrintSummary(file, WalkFile(text, "GS"), data);
    if (!told.empty()) std::cerr << "tessarmont: warning: " << FaultText(file, told);
  } else {
    std::cout << FaultText(file, told);
  }
  return load.good ? ExitCode::Good : ExitCode::InputWrong;
}

}  // namespace host
