#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>

#include "host/command_line.h"
#include "host/fault_report.h"
#include "host/importers/formats.h"
#include "host/marker_data.h"
#include "host/population_catalogue.h"
#include "host/populations.h"
#include "host/result_files.h"
#include "host/text.h"

namespace host {
namespace {

constexpr const char* kLedger = ".import.tsv";
constexpr const char* kImportFooter =
    "FORMAT is one of vcf, csv, csvr, tidy (R/qtl), raw (Mapmaker, OneMap), mstmap, joinmap (.loc), table "
    "(markers "
    "in rows or columns), or auto, which looks at the file and says what it took it for. Each may be packed "
    "by gzip "
    "or bgzip.\n\n"
    "Writes OUT.map, OUT.cdm or OUT.plm, by population, and OUT.import.tsv: what was read, kept, dropped and "
    "renamed, with reasons and lines. Genotypes that the population cannot have become missing and are "
    "counted.\n\n"
    "Example: a VCF of a cross of the inbred lines B73 and Mo17\n"
    "  tessarmont import vcf cross.vcf.gz --population F2 --parents B73,Mo17 -o cross\n"
    "  tessarmont map cross.map";

struct Imported {
  std::string file;
  const importers::FormatRow* format;
  importers::Import result;
  std::vector<std::string> written;
};

importers::Request RequestOf(const ImportOptions& options) {
  importers::Request request;
  if (!options.population.empty()) {
    const CatalogueRow* row = FindInCatalogue(options.population);
    if (row == nullptr) {
      throw Failure{ExitCode::UsageWrong, "there is no population \"" + options.population +
                                              "\"; \"tessarmont populations\" lists them"};
    }
    request.kind = row->kind;
    request.population = row->id;
  }
  for (int32_t code = 1; code <= 3; ++code) {
    if (EqualIgnoringCase(options.mappingFunction, MapFunctionName(code))) request.mappingFunction = code;
  }
  request.parents = options.parents;
  request.missing = options.missing;
  request.anchors = options.anchors;
  request.passOnly = options.passOnly;
  if (options.markers == "rows") request.markers = importers::Direction::Rows;
  if (options.markers == "columns") request.markers = importers::Direction::Columns;
  return request;
}

const importers::FormatRow& FormatOf(const ImportOptions& options) {
  if (EqualIgnoringCase(options.format, "auto")) {
    const importers::Format format = importers::DetectFormat(options.file);
    for (const importers::FormatRow& row : importers::Formats()) {
      if (row.format != format) continue;
      if (!options.quiet) std::cerr << options.file << " is taken for " << row.words << '\n';
      return row;
    }
  }
  const importers::FormatRow* row = importers::FindFormat(options.format);
  if (row != nullptr) return *row;
  std::string known;
  for (const importers::FormatRow& candidate : importers::Formats())
    known += std::string(candidate.name) + ", ";
  throw Failure{ExitCode::UsageWrong,
                "there is no format \"" + options.format + "\"; there are " + known + "and auto"};
}

// OUT may be given with the extension that the file gets; else it is the input without its extensions.
std::filesystem::path StemOf(const ImportOptions& options, TableKind kind) {
  const std::string extension(ExtensionOf(kind));
  std::string stem = options.output;
  if (stem.empty()) {
    std::filesystem::path path = options.file;
    if (EqualIgnoringCase(path.extension().string(), ".gz") ||
        EqualIgnoringCase(path.extension().string(), ".bgz")) {
      path.replace_extension();
    }
    stem = path.replace_extension().string();
  }
  if (stem.size() > extension.size() && stem.ends_with(extension))
    stem.resize(stem.size() - extension.size());
  return stem;
}

// What was written must be a file that the library takes; its check of markers makes no pairs.
void RequireGood(const ResultFiles& results, const GenotypeTable& table) {
  constexpr int32_t moduleCodes[] = {102, 20, 30};  // in the order of TableKind
  const InputFile file = OpenInput(Unpublished(results, std::string(ExtensionOf(table.kind))));
  BinData data;
  const LoadResult load = LoadBin(file, moduleCodes[static_cast<std::size_t>(table.kind)], data);
  if (load.good && static_cast<std::size_t>(data.numMarkers) == table.markers.size()) return;
  throw Failure{ExitCode::Other, "the file that was made does not pass its check, nothing is kept: " +
                                     (load.log.empty() ? "it has other markers" : load.log.front())};
}

nlohmann::json Counts(const importers::Ledger& ledger) {
  nlohmann::json dropped = nlohmann::json::object(), missing = nlohmann::json::object();
  for (std::size_t k = 0; k < importers::kDrops; ++k) {
    if (ledger.dropped[k] > 0)
      dropped[importers::WordsOf(static_cast<importers::Drop>(k))] = ledger.dropped[k];
  }
  for (std::size_t k = 0; k < importers::kBlanks; ++k) {
    if (ledger.blanked[k] > 0)
      missing[importers::WordsOf(static_cast<importers::Blank>(k))] = ledger.blanked[k];
  }
  return {{"read", ledger.read}, {"kept", ledger.Kept()},     {"renamed", ledger.renamed},
          {"dropped", dropped},  {"set_to_missing", missing}, {"notes", ledger.notes}};
}

void PrintJson(const Imported& imported) {
  const GenotypeTable& table = imported.result.table;
  const CatalogueRow& population = CatalogueRowOf(table.kind, table.populationType);
  nlohmann::json groups = nlohmann::json::array();
  for (const auto& group : imported.result.ledger.groups) {
    groups.push_back({{"chromosome", group.chromosome}, {"markers", group.markers}});
  }
  const nlohmann::json json{{"format", "tessarmont.import/1"},
                            {"file", imported.file},
                            {"taken_for", imported.format->name},
                            {"module", ModuleOf(table.kind)},
                            {"population", {{"number", population.id}, {"name", population.name}}},
                            {"lines", table.lines},
                            {"markers", Counts(imported.result.ledger)},
                            {"groups", groups},
                            {"written", imported.written}};
  std::cout << json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

void PrintSummary(const Imported& imported) {
  const GenotypeTable& table = imported.result.table;
  std::cout << imported.written.front() << ": "
            << Counted(static_cast<int64_t>(table.markers.size()), "marker") << " x "
            << Counted(static_cast<int64_t>(table.lines), "line") << ", population "
            << CatalogueRowOf(table.kind, table.populationType).name << ", "
            << MapFunctionName(table.mappingFunction) << '\n';
}

}  // namespace

CLI::App* DeclareImport(CLI::App& app, ImportOptions& options) {
  CLI::App* import =
      app.add_subcommand("import", "Makes a project file of markers from a file of another kind");
  import->add_option("FORMAT", options.format, "vcf, csv, csvr, tidy, raw, mstmap, joinmap, table or auto")
      ->required();
  import->add_option("FILE", options.file, "the file to read")->required();
  import->add_option("--population", options.population,
                     "name or number, as listed by \"tessarmont populations\" [as the file says]");
  import->add_option("--parents", options.parents, "the samples that are the parents: P1,P2 or A,B,C,D,...")
      ->delimiter(',');
  import->add_option("-o,--output", options.output,
                     "OUT, the results without extension [FILE without extension]");
  import->add_option("--mapping-function", options.mappingFunction, "Kosambi, Haldane or Morgan")
      ->check(CLI::IsMember({"Kosambi", "Haldane", "Morgan"}, CLI::ignore_case))
      ->capture_default_str();
  import->add_flag("--anchors", options.anchors, "chromosomes of the file become anchor groups of the map");
  import->add_flag("--pass-only", options.passOnly, "VCF: take only sites whose FILTER is PASS or missing");
  import->add_option("--missing", options.missing, "further codes for a missing genotype, parted by commas")
      ->delimiter(',');
  import
      ->add_option("--markers", options.markers,
                   "table: markers stand in rows or in columns [as its heading tells]")
      ->check(CLI::IsMember({"rows", "columns"}));
  import->add_flag("--json", options.json, "print one JSON object instead of the summary");
  import->add_flag("--quiet", options.quiet, "print nothing but failures (and the JSON)");
  import->footer(kImportFooter);
  return import;
}

ExitCode RunImport(const ImportOptions& options) {
  const importers::Request request = RequestOf(options);
  Imported imported{options.file, &FormatOf(options), {}, {}};
  imported.result = importers::ReadFormat(imported.format->format, options.file, request);
  const GenotypeTable& table = imported.result.table;
  const std::string extension(ExtensionOf(table.kind));
  const ResultFiles results = OpenResults(StemOf(options, table.kind), {options.file}, {extension, kLedger});
  WriteText(results, extension, ProjectText(table));
  WriteText(results, kLedger, importers::LedgerTable(imported.result.ledger));
  RequireGood(results, table);
  imported.written = Publish(results);
  std::stable_partition(imported.written.begin(), imported.written.end(),
                        [&](const std::string& path) { return path.ends_with(extension); });
  if (!options.quiet) std::cerr << importers::LedgerSummary(imported.result.ledger);
  if (options.json) {
    PrintJson(imported);
  } else if (!options.quiet) {
    PrintSummary(imported);
  }
  return ExitCode::Good;
}

}  // namespace host
