#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/command_line.h"
#include "host/exporters/formats.h"
#include "host/exporters/writers.h"
#include "host/fault_report.h"
#include "host/file_walk.h"
#include "host/input_file.h"
#include "host/map_tables.h"
#include "host/marker_data.h"
#include "host/result_files.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kRenamedShown = 10;

std::string FormatWords() {
  std::string words;
  for (const exporters::FormatRow& row : exporters::kFormats) {
    words += (words.empty() ? "" : ", ") + std::string(row.word);
  }
  return words;
}

std::string Footer() {
  std::string text = "Formats:\n";
  for (const exporters::FormatRow& row : exporters::kFormats) {
    text += "  " + Padded(row.word, 9) + std::string(row.what) + "; positions in " + std::string(row.units) +
            '\n';
  }
  return text +
         "\nWithout -o the text goes to standard output. Unlinked markers are not exported, but listed by "
         "json.\n\n"
         "Example: the map of a mouse F2 with its genotypes for R/qtl\n"
         "  tessarmont map examples/listeria.map --lod 6 -o listeria\n"
         "  tessarmont export rqtl listeria.map.tsv --genotypes examples/listeria.map -o listeria.csv";
}

const exporters::FormatRow& RequireFormat(const ExportOptions& options) {
  const exporters::FormatRow* row = exporters::FormatOf(options.format);
  if (row == nullptr) {
    throw Failure{ExitCode::UsageWrong,
                  "there is no format \"" + options.format + "\"; known are " + FormatWords()};
  }
  if (row->genotypes && options.genotypes.empty()) {
    throw Failure{ExitCode::UsageWrong, options.format +
                                            " has the genotypes too: name the project file that the map was "
                                            "made of with --genotypes"};
  }
  if (options.json && options.output.empty()) {
    throw Failure{ExitCode::UsageWrong, "--json tells of a file that was written: name it with -o"};
  }
  return *row;
}

// The genotypes are read by the host itself, so the library looks at the file first.
GenotypeTable LoadGenotypes(const std::string& path) {
  const ModuleRow* module = ModuleOfExtension(path);
  if (module == nullptr || module->code != "MAP") {
    throw Failure{ExitCode::InputWrong, path + ": --genotypes takes a MAP project file (.map)"};
  }
  const InputFile file = OpenInput(path);
  constexpr int32_t kBiParental = 102;  // the rules of MAP files; a check of BIN files leaves the pairs out
  BinData data;
  const LoadResult load = LoadBin(file, kBiParental, data);
  if (!load.good) {
    const std::vector<Fault> faults = FaultsOf(file, "MAP", load.log);
    throw Failure{ExitCode::InputWrong, path + " is no good MAP file:\n" + FaultText(file, faults)};
  }
  return ReadGenotypes(ReadWhole(file.absolute), TableKind::Map);
}

// Exports end in .map as project files do: one of these is not to be lost to a slip of the keyboard.
void SpareProjectFiles(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string line;
  if (!std::getline(file, line)) return;
  const std::vector<std::string_view> words = BlankParted(WithoutTrailing(line, "\r"));
  const bool number = words.size() == 1 && AsInteger(words.front());
  if (!line.starts_with('!') && !number) return;
  throw Failure{ExitCode::Other, path.string() +
                                     " is a project file, which an export would replace; choose "
                                     "another -o FILE"};
}

void WriteFile(const ExportOptions& options, const std::string& text) {
  const std::filesystem::path path = options.output;
  const std::string extension = path.extension().string();
  std::vector<std::filesystem::path> inputs{options.table};
  if (!options.genotypes.empty()) inputs.emplace_back(options.genotypes);
  std::filesystem::path stem = path;
  const ResultFiles results = OpenResults(stem.replace_extension(), inputs, {extension});
  SpareProjectFiles(path);
  WriteText(results, extension, text);
  Publish(results);
}

void TellNames(const std::vector<std::string>& names, const std::string& what) {
  if (names.empty()) return;
  std::cerr << "tessarmont: " << Counted(static_cast<int64_t>(names.size()), "marker") << what << ": "
            << FirstNames(names, kRenamedShown) << '\n';
}

void TellLedger(const ExportOptions& options, const exporters::FormatRow& row, const MapTableFile& map,
                const exporters::Exported& result) {
  TellNames(map.unlinked, " not exported, unlinked");
  TellNames(result.leftOut, " left out, whose names are not CHROM_POS or CHROM:POS");
  TellNames(result.renamed, " with _ in the name in place of what the format cannot hold");
  std::cerr << "tessarmont: " << Counted(static_cast<int64_t>(result.markers), "marker") << " in "
            << Counted(static_cast<int64_t>(result.groups), "group") << " written, positions in "
            << row.units;
  if (!options.output.empty()) std::cerr << ", to " << options.output;
  std::cerr << '\n';
}

std::string LedgerJson(const ExportOptions& options, const exporters::FormatRow& row, const MapTableFile& map,
                       const exporters::Exported& result) {
  const nlohmann::json json{{"format", "tessarmont.exported/1"},
                            {"input", options.table},
                            {"file", options.output},
                            {"written_as", row.word},
                            {"unit", row.units},
                            {"groups", result.groups},
                            {"markers", result.markers},
                            {"unlinked", map.unlinked},
                            {"left_out", result.leftOut},
                            {"renamed", result.renamed}};
  return json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

}  // namespace

CLI::App* DeclareExport(CLI::App& app, ExportOptions& options) {
  CLI::App* command = app.add_subcommand("export", "Writes a finished map in another program's format");
  command->add_option("FORMAT", options.format, FormatWords())->required();
  command->add_option("TABLE", options.table, "STEM.map.tsv of tessarmont map")->required();
  command->add_option("--genotypes", options.genotypes, "MAP project file that the map was made of");
  command->add_option("-o,--output", options.output, "FILE to write [standard output]");
  command->add_flag("--json", options.json, "print what was written as one JSON object");
  command->add_flag("--quiet", options.quiet, "print nothing but failures (and the JSON)");
  command->footer(Footer());
  return command;
}

ExitCode RunExport(const ExportOptions& options) {
  const exporters::FormatRow& row = RequireFormat(options);
  const MapTableFile map = ReadMapTable(options.table);
  GenotypeTable genotypes;
  if (row.genotypes) genotypes = LoadGenotypes(options.genotypes);
  const exporters::Exported result = exporters::Export(row.format, map, &genotypes);
  if (options.output.empty()) {
    std::cout << result.text;
  } else {
    WriteFile(options, result.text);
  }
  if (!options.quiet) TellLedger(options, row, map, result);
  if (options.json) std::cout << LedgerJson(options, row, map, result);
  return ExitCode::Good;
}

}  // namespace host
