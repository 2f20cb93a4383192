#include "host/command_line.h"

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <csignal>
#include <exception>
#include <iostream>

#include "host/isolated_call.h"

namespace host {
namespace {

constexpr const char* kAbout =
    "Linkage maps from the marker data of crosses: checks project files, estimates recombination, groups and "
    "orders markers.";
constexpr const char* kFooter =
    "Exit codes: 0 done; 1 the input is wrong; 2 the command line is wrong; 3 anything else (a file that "
    "cannot "
    "be read or written, memory, a fatal error).\n\n"
    "Example: a table of counts from an F2, no file needed\n"
    "  tessarmont twopoint --population F2 24 5 1 4 52 6 1 7 25";

struct Options {
  CheckOptions check;
  ImportOptions import;
  PopulationsOptions populations;
  MapOptions map;
  ConsensusOptions consensus;
  ExportOptions exporting;
  GsOptions gs;
  TrialOptions trial;
  TwoPointOptions twoPoint;
};

// The parser's own words for a wrong name would be that one is missing.
void RequireSubcommand(const CLI::App& app, const std::string& word) {
  if (word.starts_with('-')) return;
  for (const CLI::App* subcommand : app.get_subcommands({})) {
    if (subcommand->get_name() == word) return;
  }
  throw Failure{ExitCode::UsageWrong, "there is no subcommand \"" + word + "\"; see tessarmont --help"};
}

ExitCode Run(CLI::App& app, int count, char** arguments) {
  Options options;
  const CLI::App* check = DeclareCheck(app, options.check);
  const CLI::App* import = DeclareImport(app, options.import);
  const CLI::App* populations = DeclarePopulations(app, options.populations);
  const CLI::App* map = DeclareMap(app, options.map);
  const CLI::App* consensus = DeclareConsensus(app, options.consensus);
  const CLI::App* exporting = DeclareExport(app, options.exporting);
  const CLI::App* gs = DeclareGs(app, options.gs);
  const CLI::App* trial = DeclareTrial(app, options.trial);
  DeclareTwoPoint(app, options.twoPoint);
  if (count > 1) RequireSubcommand(app, arguments[1]);
  try {
    app.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? ExitCode::Good : ExitCode::UsageWrong;
  }
  CatchInterrupts();
  if (check->parsed()) return RunCheck(options.check);
  if (import->parsed()) return RunImport(options.import);
  if (populations->parsed()) return RunPopulations(options.populations);
  if (map->parsed()) return RunMap(options.map);
  if (consensus->parsed()) return RunConsensus(options.consensus);
  if (exporting->parsed()) return RunExport(options.exporting);
  if (gs->parsed()) return RunGs(options.gs);
  if (trial->parsed()) return RunTrial(options.trial);
  return RunTwoPoint(options.twoPoint);
}

ExitCode Complain(ExitCode code, const std::string& message) {
  std::cerr << "tessarmont: " << message << '\n';
  return code;
}

ExitCode RunGuarded(int count, char** arguments) {
  CLI::App app(kAbout, "tessarmont");
  app.set_version_flag("--version", "tessarmont " TESSARMONT_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);
  try {
    return Run(app, count, arguments);
  } catch (const Failure& failure) {
    return Complain(failure.code, failure.message);
  } catch (const std::bad_alloc&) {
    return Complain(ExitCode::Other, "out of memory");
  } catch (const std::exception& error) {
    return Complain(ExitCode::Other, error.what());
  }
}

}  // namespace

int RunCommandLine(int count, char** arguments) {
  KeepArguments(count, arguments);
  ExitCode code = RunGuarded(count, arguments);
  if (!std::cout.flush()) code = Complain(ExitCode::Other, "cannot write to standard output");
  if (const int signal = CaughtSignal(); signal != 0) {
    // The shell is to see that a signal ended the command.
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
  return static_cast<int>(code);
}

}  // namespace host
