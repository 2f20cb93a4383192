#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <algorithm>
#include <iostream>

#include "host/command_line.h"
#include "host/consensus_page.h"
#include "host/consensus_report.h"
#include "host/fault_report.h"
#include "host/input_file.h"
#include "host/map_tables.h"
#include "host/result_files.h"
#include "host/text.h"

namespace host {
namespace {

constexpr const char* kConsensusTable = ".consensus.tsv";
constexpr const char* kLog = ".cmp.log";

constexpr const char* kConsensusFooter =
    "A CMP file holds one chromosome on several maps. With --build, map tables of tessarmont map (columns "
    "group, marker, position) make the CMP files, one a chromosome (STEM.GROUP.cmp, or STEM.cmp for a single "
    "one): a group belongs to the chromosome with which it shares the most markers, groups of the first "
    "table "
    "first. A chromosome without a marker on all of its maps is left out with a warning.\n\n"
    "Writes STEM.consensus.tsv: marker, place and position on the consensus, place and position on each map; "
    "with --build a first column group. The consensus runs as the first map does. STEM.cmp.log has the "
    "library's own tables of the order, which may run the other way. The summary tells for each map "
    "Kendall's "
    "tau-b with the consensus (reversed: the map runs the other way) and for each two maps how many pairs of "
    "their common markers stand in opposite order. STEM.report.html shows the maps with joining lines.\n\n"
    "Example: two maps of one chromosome, made and joined\n"
    "  printf '2\\n1\\n2\\nA 3\\nB 3\\nm1 1 0\\nm2 1 4\\nm3 1 9\\nm1 2 0\\nm3 2 8\\nm4 2 12\\n' > both.cmp\n"
    "  tessarmont consensus both.cmp";

std::string FileWord(std::string name) {
  for (char& c : name) {
    if (c == '/' || c == ' ' || c == '\t') c = '_';
  }
  return name;
}

// A wrong file is left out of a run with others; the last one that is wrong is the user's.
bool AddGroup(const InputFile& file, const std::string& name, bool quiet, ConsensusRun& run) {
  Consensus consensus;
  const LoadResult load = LoadConsensus(file, consensus);
  if (!load.good) {
    if (!quiet) std::cerr << FaultText(file, FaultsOf(file, "CMP", load.log));
    return false;
  }
  run.groups.push_back(Judge(name, std::move(consensus)));
  return true;
}

ResultFiles RunFile(const ConsensusOptions& options, ConsensusRun& run) {
  if (std::filesystem::path(options.file).extension() == ".tsv")
    throw Failure{ExitCode::UsageWrong, options.file + ": map tables are given with --build"};
  const InputFile file = OpenInput(options.file);
  std::filesystem::path stem = options.stem;
  if (options.stem.empty()) stem = std::filesystem::path(options.file).replace_extension();
  ResultFiles results = OpenResults(stem, {file.absolute}, {kConsensusTable, kLog, kReportExtension});
  run.input = options.file;
  if (AddGroup(file, "", false, run)) run.maps = run.groups.front().consensus.maps;
  return results;
}

// Names of the tables must differ, also where a map's name is cut.
std::vector<MapTableFile> ReadTables(const std::vector<std::string>& paths) {
  constexpr std::size_t kMapName = 19;
  std::vector<MapTableFile> tables;
  for (const std::string& path : paths) {
    MapTableFile table = ReadMapTable(path);
    table.name.resize(std::min(table.name.size(), kMapName));
    for (const MapTableFile& other : tables) {
      if (other.name != table.name) continue;
      table.name.resize(std::min(table.name.size(), kMapName - 3));
      table.name += "-" + std::to_string(tables.size() + 1);
      break;
    }
    tables.push_back(std::move(table));
  }
  return tables;
}

std::filesystem::path StemOfTable(const std::string& path) {
  std::filesystem::path stem = std::filesystem::path(path).replace_extension();
  if (stem.extension() == ".map") stem.replace_extension();
  return stem;
}

ResultFiles RunTables(const ConsensusOptions& options, ConsensusRun& run) {
  const std::vector<MapTableFile> tables = ReadTables(options.tables);
  const std::vector<Chromosome> chromosomes = MatchGroups(tables, run.warnings);
  std::vector<std::string> extensions{kConsensusTable, kLog, kReportExtension};
  for (const Chromosome& chromosome : chromosomes) {
    std::string word = chromosomes.size() == 1 ? "" : "." + FileWord(chromosome.name);
    while (std::find(extensions.begin(), extensions.end(), word + ".cmp") != extensions.end()) word += "_";
    extensions.push_back(word + ".cmp");
  }
  std::filesystem::path stem = options.stem;
  if (options.stem.empty()) stem = StemOfTable(options.tables.front());
  ResultFiles results = OpenResults(stem, {options.tables.begin(), options.tables.end()}, extensions);
  for (const MapTableFile& table : tables) run.maps.push_back(table.name);
  run.input = options.tables.front();
  for (std::size_t c = 0; c < chromosomes.size(); ++c) {
    const std::string& extension = extensions[c + 3];
    WriteText(results, extension, CmpText(tables, chromosomes[c]));
    InputFile file = OpenInput(Unpublished(results, extension));
    file.given = stem.string() + extension;
    if (AddGroup(file, chromosomes[c].name, options.quiet, run)) continue;
    run.warnings.push_back(chromosomes[c].name + " was left out of the consensus");
  }
  return results;
}

std::vector<std::string> ReportConsensus(const ConsensusOptions& options, const ConsensusRun& run,
                                         const ResultFiles& results) {
  if (!options.report.Wanted()) return {};
  const std::vector<std::string> inputs =
      options.tables.empty() ? std::vector<std::string>{options.file} : options.tables;
  reports::ConsensusReport report = ConsensusPageData(run, inputs);
  report.run.files = Waiting(results);
  const std::vector<reports::Figure> figures = reports::ConsensusFigures(report);
  return WriteReport(results, options.report, reports::ConsensusPage(report, figures), figures);
}

}  // namespace

CLI::App* DeclareConsensus(CLI::App& app, ConsensusOptions& options) {
  CLI::App* consensus = app.add_subcommand("consensus", "Makes one consensus map of several maps");
  consensus->add_option("FILE", options.file, "CMP project file (.cmp)");
  consensus->add_option("--build", options.tables,
                        "map tables (.map.tsv) to make CMP files from, instead of FILE");
  consensus->add_option("-o,--output", options.stem,
                        "STEM of the results [FILE or the first table, without extension]");
  DeclareReport(*consensus, options.report);
  consensus->add_flag("--json", options.json, "print one JSON object instead of the summary");
  consensus->add_flag("--quiet", options.quiet, "print nothing but failures (and the JSON)");
  consensus->footer(kConsensusFooter);
  return consensus;
}

ExitCode RunConsensus(const ConsensusOptions& options) {
  if (options.file.empty() == options.tables.empty()) {
    throw Failure{ExitCode::UsageWrong, "consensus takes either FILE or --build with map tables"};
  }
  ConsensusRun run;
  const ResultFiles results = options.tables.empty() ? RunFile(options, run) : RunTables(options, run);
  if (run.groups.empty()) return ExitCode::InputWrong;
  WriteText(results, kConsensusTable, ConsensusTable(run));
  WriteText(results, kLog, ConsensusLog(run));
  std::vector<std::string> report = ReportConsensus(options, run, results);
  run.written = Publish(results);
  run.written.insert(run.written.end(), report.begin(), report.end());
  if (!options.quiet) {
    for (const std::string& warning : run.warnings) std::cerr << "tessarmont: warning: " << warning << '\n';
  }
  if (options.json) {
    std::cout << ConsensusJson(run);
  } else if (!options.quiet) {
    std::cout << ConsensusSummary(run);
  }
  return ExitCode::Good;
}

}  // namespace host
