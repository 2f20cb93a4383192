#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/exit_code.h"
#include "host/report_files.h"

namespace host {

// One subcommand a file: its options, how they are declared, and what it does.
struct CheckOptions {
  std::vector<std::string> files;
  std::string module;    // empty: by extension
  int moduleCode = 101;  // rule set of BIN files
  bool json = false;
  bool all = false;  // list every fault of the host's own look
};
CLI::App* DeclareCheck(CLI::App& app, CheckOptions& options);
ExitCode RunCheck(const CheckOptions& options);

struct MapOptions {
  std::string file, stem, anchorOrder, anchors, tables;
  double lod = 3.0;
  double maxRec = 0.3;
  int minGroup = 2;
  int groups = 0;  // wanted; 0: the LOD rules
  int jobs = 1;
  double maxMissing = -1, minSegregationP = -1;  // below 0: not asked for
  bool keepOrder = false, sweep = false, bin = false;
  ReportOptions report;
  bool json = false, quiet = false;
};
CLI::App* DeclareMap(CLI::App& app, MapOptions& options);
ExitCode RunMap(const MapOptions& options);

struct ExportOptions {
  std::string format, table, genotypes, output;  // output empty: standard output
  bool json = false, quiet = false;
};
CLI::App* DeclareExport(CLI::App& app, ExportOptions& options);
ExitCode RunExport(const ExportOptions& options);

struct ImportOptions {
  std::string format, file, population, output, markers;  // markers: rows, columns or empty
  std::string mappingFunction = "Kosambi";
  std::vector<std::string> parents, missing;
  bool anchors = false, passOnly = false;
  bool json = false, quiet = false;
};
CLI::App* DeclareImport(CLI::App& app, ImportOptions& options);
ExitCode RunImport(const ImportOptions& options);

struct PopulationsOptions {
  std::string name;  // empty: all
  bool json = false;
};
CLI::App* DeclarePopulations(CLI::App& app, PopulationsOptions& options);
ExitCode RunPopulations(const PopulationsOptions& options);

struct GsOptions {
  std::string file;
  bool json = false;
};
CLI::App* DeclareGs(CLI::App& app, GsOptions& options);
ExitCode RunGs(const GsOptions& options);

struct ConsensusOptions {
  std::string file, stem;
  std::vector<std::string> tables;  // with --build
  ReportOptions report;
  bool json = false, quiet = false;
};
CLI::App* DeclareConsensus(CLI::App& app, ConsensusOptions& options);
ExitCode RunConsensus(const ConsensusOptions& options);

struct TrialOptions {
  std::string file, stem, environment, genotype, block;  // columns by heading; empty: the usual ones
  std::vector<std::string> traits;                       // empty: all columns with numbers
  ReportOptions report;
  int32_t classes = 10;
  bool eachTrait = false, skipBadTraits = false, json = false, quiet = false;
};
CLI::App* DeclareTrial(CLI::App& app, TrialOptions& options);
ExitCode RunTrial(const TrialOptions& options);

struct TwoPointOptions {
  std::string population, pairCode, classes;
  std::vector<std::string> counts;
  bool json = false;
};
CLI::App* DeclareTwoPoint(CLI::App& app, TwoPointOptions& options);
ExitCode RunTwoPoint(const TwoPointOptions& options);

// Everything behind main(): parses, runs, prints failures, returns the exit code.
int RunCommandLine(int count, char** arguments);

}  // namespace host
