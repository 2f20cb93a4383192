#include "host/report_files.h"

#include <CLI/App.hpp>
#include <CLI/Option.hpp>
#include <algorithm>
#include <fstream>
#include <system_error>

#include "host/exit_code.h"
#include "host/input_file.h"
#include "host/reports/sha256.h"

namespace host {
namespace {

constexpr std::string_view kPageHead = "<!DOCTYPE html>";

std::vector<std::string>& Arguments() {
  static std::vector<std::string> arguments;
  return arguments;
}

// Beside its final place first, so that no half-written file bears the name.
void WriteWhole(const std::filesystem::path& path, const std::string& text) {
  const std::filesystem::path folder = path.has_parent_path() ? path.parent_path() : ".";
  const auto fail = [&](const std::string& why) {
    throw Failure{ExitCode::Other, "cannot write " + path.string() + why};
  };
  std::error_code error;
  if (!std::filesystem::is_directory(folder, error)) fail(": there is no folder " + folder.string());
  if (std::filesystem::is_directory(path, error)) fail(": it is a folder");
  const ScratchFolder scratch(folder, ".tessarmont-");
  const std::filesystem::path beside = scratch.Path() / "page";
  std::ofstream file(beside, std::ios::binary);
  file << text;
  file.close();
  if (!file) fail("");
  std::filesystem::rename(beside, path, error);
  if (error) fail(": " + error.message());
}

// A name given by mistake must not cost an input or a result: only a page is replaced.
void RefuseWhatIsNoPage(const ResultFiles& results, const std::filesystem::path& path) {
  const auto refuse = [&](const std::string& why) {
    throw Failure{ExitCode::Other, path.string() + why + "; choose another --report FILE"};
  };
  const std::filesystem::path folder = std::filesystem::weakly_canonical(path.parent_path());
  for (const std::string& name : Waiting(results)) {
    if (name == path.filename() && folder == std::filesystem::weakly_canonical(results.stem.parent_path()))
      refuse(" is another result of this run");
  }
  std::ifstream file(path, std::ios::binary);
  std::string head(kPageHead.size(), '\0');
  file.read(head.data(), static_cast<std::streamsize>(head.size()));
  if (file.gcount() > 0 && head != kPageHead) refuse(" is there already and is no report");
}

}  // namespace

void DeclareReport(CLI::App& app, ReportOptions& options) {
  CLI::Option* file = app.add_option("--report", options.file, "file of the report [STEM.report.html]");
  app.add_flag("--no-report", options.none, "write no report")->excludes(file);
  app.add_option("--figures", options.figures, "folder to write the report's figures into, an SVG file each");
}

void KeepArguments(int count, char** arguments) { Arguments().assign(arguments, arguments + count); }

reports::RunFacts RunFactsOf(std::string title, std::string kind, const std::vector<std::string>& inputs) {
  reports::RunFacts facts;
  facts.title = std::move(title);
  facts.kind = std::move(kind);
  facts.versions = {{"tessarmont", TESSARMONT_VERSION}};
  facts.arguments = Arguments();
  if (!facts.arguments.empty()) facts.arguments.front() = "tessarmont";
  for (const std::string& input : inputs) {
    facts.inputs.push_back(
        {std::filesystem::path(input).filename().string(), reports::Sha256(ReadWhole(input))});
  }
  return facts;
}

std::vector<std::string> Waiting(const ResultFiles& results) {
  std::vector<std::string> names;
  const std::string own = Unpublished(results, "").filename().string();
  for (const auto& entry : std::filesystem::directory_iterator(results.folder.Path())) {
    names.push_back(results.stem.filename().string() + entry.path().filename().string().substr(own.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> WriteReport(const ResultFiles& results, const ReportOptions& options,
                                     const std::string& page, const std::vector<reports::Figure>& figures) {
  std::vector<std::string> written;
  if (!options.file.empty()) RefuseWhatIsNoPage(results, options.file);
  if (!options.figures.empty()) {
    std::error_code error;
    std::filesystem::create_directories(options.figures, error);
    if (error) {
      throw Failure{ExitCode::Other, "cannot make the folder " + options.figures + ": " + error.message()};
    }
    for (const reports::Figure& figure : figures) {
      written.push_back((std::filesystem::path(options.figures) / (figure.name + ".svg")).string());
      WriteWhole(written.back(), figure.svg);
    }
  }
  if (options.none) return written;
  if (options.file.empty()) {
    WriteText(results, kReportExtension, page);
  } else {
    WriteWhole(options.file, page);
    written.push_back(options.file);
  }
  return written;
}

}  // namespace host
