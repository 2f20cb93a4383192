#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

#include "host/cleaning.h"
#include "host/command_line.h"
#include "host/fault_report.h"
#include "host/independence.h"
#include "host/input_file.h"
#include "host/map_files.h"
#include "host/map_page.h"
#include "host/map_quality.h"
#include "host/map_report.h"
#include "host/order_options.h"
#include "host/precheck.h"
#include "host/result_files.h"
#include "host/text.h"

namespace host {
namespace {

constexpr const char* kMapTable = ".map.tsv";
constexpr const char* kDropped = ".dropped.tsv";
constexpr int kMostJobs = 256;

constexpr const char* kMapFooter =
    "Writes STEM.map.tsv, a table with the columns group, marker, position and interval (cM), rec and lod "
    "(to "
    "the marker before), segregation_p and missing (share of the lines), and the library's own files: of a "
    "MAP file STEM.bip, .met and .sdl; of a CDM file STEM.cdq, .hap (parents' haplotypes), .sum, .sumf and "
    ".summ (both parents, female AB, male CD); of a PLM file STEM.plq and .sum. The table of a CDM file goes "
    "on "
    "with category, position and phase in each parent, that of a PLM file with the parents' pattern.\n\n"
    "Groups: markers with the same anchor number above 0 in FILE (or group in --anchors) are one group; "
    "links "
    "(--lod, --max-rec) add the others, strongest first, and never join two anchor groups. Groups are named "
    "G<anchor> or LG1, LG2, ... and sorted longest first. The end that stands first in FILE is the origin. "
    "Neighbours that show no linkage stand 1000 cM apart, which every reader takes as a recombination of "
    "0.5; "
    "lengths leave such gaps out.\n\n"
    "Cleaning leaves FILE as it is; what was left out stands in STEM.dropped.tsv, and with --bin the table "
    "has "
    "the binned markers at the place of the one that stands for them.\n\n"
    "Examples: a mouse F2; the groups at each LOD; nineteen groups from markers with few gaps\n"
    "  tessarmont map examples/listeria.map --lod 6 -o listeria\n"
    "  tessarmont map examples/listeria.map --sweep\n"
    "  tessarmont map examples/listeria.map --groups 19 --max-missing 0.3 --bin -o clean";

TableKind KindOf(const std::filesystem::path& path) {
  const ModuleRow* row = ModuleOfExtension(path);
  const std::string wanted = "; map takes a MAP, CDM or PLM project file (.map, .cdm, .plm)";
  if (row == nullptr) {
    throw Failure{ExitCode::InputWrong, path.string() + ": the extension \"" + path.extension().string() +
                                            "\" is not known" + wanted +
                                            "; \"tessarmont import\" makes them of other files"};
  }
  if (const auto kind = MarkerKindOf(row->code)) return *kind;
  throw Failure{ExitCode::InputWrong, path.string() + " is a project file of kind " + std::string(row->code) +
                                          " (" + std::string(row->kind) + ")" + wanted};
}

TableSwitches TablesFor(TableKind kind, const MapOptions& options) {
  const TableSwitches tables = ReadTableSwitches(options.tables);
  if (kind == TableKind::Map && !options.tables.empty()) {
    throw Failure{ExitCode::UsageWrong, "--tables is for CDM and PLM files"};
  }
  return tables;
}

CleaningRules RulesOf(const MapOptions& options) {
  CleaningRules rules;
  if (options.maxMissing >= 0) rules.maxMissing = options.maxMissing;
  if (options.minSegregationP >= 0) rules.minSegregationP = options.minSegregationP;
  rules.bin = options.bin;
  return rules;
}

// The file that the library works on: the user's, or one of the markers that cleaning keeps.
struct Source {
  InputFile file;
  std::unique_ptr<ScratchFolder> folder;  // of the second kind
};

// Nothing is wrong with a text but markers that say nothing, as those without any genotype, which can be left out.
bool OnlyMarkersSayNothing(const std::string& text, TableKind kind, int32_t ruleSet) {
  const std::vector<Finding> findings = FindFaults(text, ModuleOf(kind), ruleSet);
  return !findings.empty() && std::all_of(findings.begin(), findings.end(), [](const Finding& finding) {
    return finding.kind == FindingKind::Marker;
  });
}

// Checks the file without its pairs, then writes a file of the markers that are kept.
std::optional<Source> Cleaned(const InputFile& file, TableKind kind, MapRun& run, LoadResult& load) {
  constexpr int32_t ruleSets[] = {102, 20, 30};  // in the order of TableKind
  const int32_t ruleSet = ruleSets[static_cast<std::size_t>(kind)];
  BinData data;
  load = LoadBin(file, ruleSet, data);
  const std::string text = ReadWhole(file.absolute);
  if (!load.good && !(run.cleaning.rules.maxMissing && OnlyMarkersSayNothing(text, kind, ruleSet))) {
    return std::nullopt;
  }
  const GenotypeTable table = ReadGenotypes(text, kind);
  DoubtGenotypes(table, run.warnings);
  run.cleaning = CleanMarkers(table, run.cleaning.rules);
  if (run.cleaning.kept.empty()) {
    const std::string doubt = run.warnings.empty() ? "" : "; " + run.warnings.front();
    throw Failure{ExitCode::InputWrong, file.given.string() + ": cleaning leaves no marker" + doubt};
  }
  Source source{file, std::make_unique<ScratchFolder>(std::filesystem::temp_directory_path(), "tessarmont-")};
  const auto path = source.folder->Path() / ("kept" + std::string(ExtensionOf(kind)));
  WriteGenotypes(path, KeptTable(table, run.cleaning));
  source.file = OpenInput(path);
  source.file.given = file.given;
  if (!load.good && !LoadBin(source.file, ruleSet, data).good) return std::nullopt;
  return source;
}

std::optional<Source> Load(const InputFile& file, TableKind kind, bool quiet, MapRun& run) {
  std::optional<Source> source;
  LoadResult load;
  if (run.cleaning.rules.Any()) {
    source = Cleaned(file, kind, run, load);
    if (source && !quiet) std::cerr << CleaningText(run.cleaning);
  } else {
    source = Source{file, nullptr};
  }
  if (source) load = LoadMarkers(source->file, kind, quiet, run.data);
  if (load.good) {
    if (kind == TableKind::Plm) AddLinkLods(ReadGenotypes(ReadWhole(source->file.absolute), kind), run.data);
    return source;
  }
  std::cerr << FaultText(file, FaultsOf(file, ModuleOf(kind), load.log));
  return std::nullopt;
}

OrderPlan PlanOf(const MapOptions& options, MapRun& run) {
  OrderPlan plan;
  plan.keepFileOrder = options.keepOrder;
  plan.jobs = options.jobs;
  plan.quiet = options.quiet;
  MarkerNumbers numbers = NumbersOf(run.data);
  AddCleaned(run.cleaning, numbers);
  if (!options.anchorOrder.empty()) plan.frame = ReadFrame(options.anchorOrder, numbers);
  if (options.anchors.empty()) return plan;
  AnchorTable table = ReadAnchorTable(options.anchors, numbers, run.data.numMarkers);
  std::copy(table.anchors.begin(), table.anchors.end(), run.data.anchor.data());
  plan.groupNames = std::move(table.names);
  return plan;
}

// The groups at the asked or found cut; fills the sweep.
std::vector<MarkerGroup> Group(const MapOptions& options, MapRun& run) {
  const LinkThresholds floor{std::min(run.thresholds.minLod, kLeastCut), run.thresholds.maxRec};
  const auto anchors = run.data.anchor.view();
  const std::vector<Join> joins = JoinMarkers(anchors, run.data.rec.view(), run.data.LinkLods(), floor);
  run.sweep = SweepCuts(anchors, joins);
  if (options.groups > 0 && !options.sweep) {
    ChosenCut cut = ChooseCut(anchors, joins, options.groups, run.minGroup);
    run.thresholds.minLod = cut.lod;
    run.cut = std::move(cut.words);
  }
  return GroupsAt(anchors, joins, run.thresholds.minLod);
}

void Build(const std::vector<MarkerGroup>& groups, const OrderPlan& plan, MapRun& run) {
  run.map = BuildMap(run.data, groups, run.minGroup, plan);
  if (!run.map.groups.empty()) return;
  throw Failure{ExitCode::InputWrong,
                run.input + ": no group of " + Counted(run.minGroup, "marker") +
                    " or more at LOD >= " + Significant(Plain(run.thresholds.minLod)) +
                    " and recombination <= " + Significant(Plain(run.thresholds.maxRec)) +
                    "; nothing was written"};
}

void Tell(const MapOptions& options, const MapRun& run) {
  if (!options.quiet) {
    for (const std::string& warning : run.warnings) std::cerr << "tessarmont: warning: " << warning << '\n';
  }
  if (options.json) {
    std::cout << (options.sweep ? SweepJson(run) : MapJson(run));
  } else if (options.sweep) {
    std::cout << SweepTable(run);
  } else if (!options.quiet) {
    std::cout << MapSummary(run);
  }
}

std::vector<std::string> ReportMap(const MapOptions& options, const GenotypeTable& table,
                                   const ResultFiles& results, const MapRun& run) {
  if (!options.report.Wanted()) return {};
  reports::MapReport report = MapPageData(run, table, options.file);
  report.run.files = Waiting(results);
  const std::vector<reports::Figure> figures = reports::MapFigures(report);
  return WriteReport(results, options.report, reports::MapPage(report, figures), figures);
}

// From the loaded markers to published files.
void MakeMap(const MapOptions& options, const Source& source, const ResultFiles& results,
             const TableSwitches& tables, MapRun& run) {
  const OrderPlan plan = PlanOf(options, run);
  Build(Group(options, run), plan, run);
  WriteResultFiles(results, source.file, run.data, run.map, tables);
  WriteText(results, kMapTable, MapTable(run));
  if (run.cleaning.rules.Any()) WriteText(results, kDropped, DroppedTable(run.cleaning, run.data.names));
  const GenotypeTable table = ReadGenotypes(ReadWhole(source.file.absolute), run.data.kind);
  if (!run.cleaning.rules.Any()) DoubtGenotypes(table, run.warnings);  // else done before the cleaning
  DoubtSegregation(run.data, run.warnings);
  if (options.groups == 0) DoubtCut(run.sweep, run.thresholds.minLod, run.minGroup, run.warnings);
  for (std::string& warning : MapWarnings(run.data, run.map)) run.warnings.push_back(std::move(warning));
  for (std::string& warning : QualityWarnings(run.data, run.map, table))
    run.warnings.push_back(std::move(warning));
  std::vector<std::string> report = ReportMap(options, table, results, run);
  run.written = Publish(results);
  run.written.insert(run.written.end(), report.begin(), report.end());
}

void DeclareCleaning(CLI::App& map, MapOptions& options) {
  map.add_option("--max-missing", options.maxMissing,
                 "leave out markers with a higher share of lines without a genotype")
      ->check(CLI::Range(0.0, 1.0));
  map.add_option("--min-segregation-p", options.minSegregationP,
                 "leave out markers with a lower p-value of the segregation test")
      ->check(CLI::Range(0.0, 1.0));
  map.add_flag("--bin", options.bin,
               "let one marker stand for those that have no other genotypes than it has");
}

void DeclareOrder(CLI::App& map, CLI::Option* lod, MapOptions& options) {
  map.add_option("--groups", options.groups, "choose the LOD that gives so many groups")
      ->check(CLI::PositiveNumber)
      ->excludes(lod);
  CLI::Option* frame = map.add_option(
      "--anchor-order", options.anchorOrder,
      "file with marker names in a trusted order, one a line; groups with three or more of them keep "
      "that order and take in the other markers");
  map.add_option("--anchors", options.anchors,
                 "table of known groups, marker TAB group (number or name), instead of those in FILE");
  map.add_flag("--keep-order", options.keepOrder, "keep the order of FILE within groups; distances only")
      ->excludes(frame);
  map.add_option("--jobs", options.jobs, "groups that are ordered at the same time; no result depends on it")
      ->check(CLI::Range(1, kMostJobs))
      ->capture_default_str();
}

}  // namespace

CLI::App* DeclareMap(CLI::App& app, MapOptions& options) {
  CLI::App* map = app.add_subcommand("map", "Makes a linkage map of a MAP, CDM or PLM project file");
  map->add_option("FILE", options.file, "project file (.map, .cdm, .plm)")->required();
  map->add_option("-o,--output", options.stem, "STEM of the results [FILE without extension]");
  CLI::Option* lod = map->add_option("--lod", options.lod, "least LOD of a link")
                         ->check(CLI::NonNegativeNumber)
                         ->capture_default_str();
  map->add_option("--max-rec", options.maxRec, "highest recombination frequency of a link")
      ->check(CLI::Range(0.0, 0.5))
      ->capture_default_str();
  map->add_option("--min-group", options.minGroup, "smaller groups are listed as unlinked")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  DeclareOrder(*map, lod, options);
  DeclareCleaning(*map, options);
  map->add_flag("--sweep", options.sweep,
                "print the groups at each LOD cut (lod, groups, markers, unlinked, sizes) and write nothing");
  map->add_option("--tables", options.tables,
                  "of CDM and PLM files: pair tables to write, of rec,lod,dis (frequency, LOD, distance)");
  DeclareReport(*map, options.report);
  map->add_flag("--json", options.json, "print one JSON object instead of the summary");
  map->add_flag("--quiet", options.quiet, "print nothing but failures (and the JSON or the sweep)");
  map->footer(kMapFooter);
  return map;
}

ExitCode RunMap(const MapOptions& options) {
  const TableKind kind = KindOf(options.file);
  const TableSwitches tables = TablesFor(kind, options);
  const InputFile file = OpenInput(options.file);
  MapRun run;
  run.input = options.file;
  run.thresholds = {static_cast<float>(options.lod), static_cast<float>(options.maxRec)};
  run.minGroup = options.minGroup;
  run.cleaning.rules = RulesOf(options);
  std::optional<ResultFiles> results;
  if (!options.sweep) {
    std::filesystem::path stem = options.stem;
    if (options.stem.empty()) stem = std::filesystem::path(options.file).replace_extension();
    std::vector<std::string> extensions = ResultExtensions(kind, tables);
    extensions.insert(extensions.end(), {kMapTable, kDropped, kReportExtension});
    results.emplace(OpenResults(stem, {file.absolute}, extensions));
  }
  const std::optional<Source> source = Load(file, kind, options.quiet, run);
  if (!source) return ExitCode::InputWrong;
  if (results) {
    MakeMap(options, *source, *results, tables, run);
  } else {
    PlanOf(options, run);
    Group(options, run);
  }
  Tell(options, run);
  return ExitCode::Good;
}

}  // namespace host
