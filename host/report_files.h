#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/reports/pages.h"
#include "host/result_files.h"

namespace CLI {
class App;
}

namespace host {

// What the user said about the report of a run. It stands beside the results unless told otherwise.
struct ReportOptions {
  std::string file;     // empty: STEM.report.html
  std::string figures;  // folder for the figures one by one; empty: none
  bool none = false;
  bool Wanted() const { return !none || !figures.empty(); }
};
// --report, --no-report and --figures.
void DeclareReport(CLI::App& app, ReportOptions& options);
inline constexpr const char* kReportExtension = ".report.html";

// The words of the command line, the program's name first.
void KeepArguments(int count, char** arguments);

// What every report has. The inputs are read for their checksums. Failure: Other.
reports::RunFacts RunFactsOf(std::string title, std::string kind, const std::vector<std::string>& inputs);
// Final names of the results that wait to be published.
std::vector<std::string> Waiting(const ResultFiles& results);

// Puts the page beside the other results, or in its own place, and the figures into their folder: ahead of
// Publish. Returns the files that Publish will not tell of. Failure: Other.
std::vector<std::string> WriteReport(const ResultFiles& results, const ReportOptions& options,
                                     const std::string& page, const std::vector<reports::Figure>& figures);

}  // namespace host
