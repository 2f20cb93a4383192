#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "host/exit_code.h"

namespace host {

// One subcommand a file: its options, how they are declared, and what it does.
struct CheckOptions {
  std::vector<std::string> files;
  std::string module;    // empty: by extension
  int moduleCode = 101;  // rule set of BIN files
  bool json = false;
};
CLI::App* DeclareCheck(CLI::App& app, CheckOptions& options);
ExitCode RunCheck(const CheckOptions& options);

struct MapOptions {
  std::string file, stem, anchorOrder;
  double lod = 3.0;
  double maxRec = 0.3;
  int minGroup = 2;
  bool json = false, quiet = false;
};
CLI::App* DeclareMap(CLI::App& app, MapOptions& options);
ExitCode RunMap(const MapOptions& options);

struct GsOptions {
  std::string file;
  bool json = false;
};
CLI::App* DeclareGs(CLI::App& app, GsOptions& options);
ExitCode RunGs(const GsOptions& options);

struct ConsensusOptions {
  std::string file, stem;
  std::vector<std::string> tables;  // with --build
  bool json = false, quiet = false;
};
CLI::App* DeclareConsensus(CLI::App& app, ConsensusOptions& options);
ExitCode RunConsensus(const ConsensusOptions& options);

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
