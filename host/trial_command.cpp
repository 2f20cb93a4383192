#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <algorithm>
#include <cctype>
#include <iostream>
#include <numeric>

#include "host/command_line.h"
#include "host/marker_data.h"
#include "host/result_files.h"
#include "host/text.h"
#include "host/trial_page.h"
#include "host/trial_report.h"

namespace host {
namespace {

constexpr int32_t kFewestClasses = 3, kMostClasses = 10000;

constexpr const char* kTrialFooter =
    "TABLE has one heading line and one plot a row, parted by tabs, semicolons, commas or blanks. Columns of "
    "environment, genotype and block are known by usual headings (environment, location, trial; genotype, "
    "variety, "
    "line; block, rep), else the first three are taken. All other columns with numbers are traits. Missing: "
    "an empty "
    "cell, NA, NaN, N/A, ., -, * or -9999.\n\n"
    "Writes STEM.aov (analyses of variance), .egv (means and predictions), .frq (classes), .qqp (normal "
    "quantiles), "
    ".coe (correlations), .pca and .pcp (biplots), and the page STEM.report.html. Genotypes are ranked by "
    "the library's predictions where "
    "every "
    "genotype grew in every environment, else by means adjusted for their environments.\n\n"
    "Example: wheat in one environment, two of its columns are no traits\n"
    "  tessarmont trial examples/trials/wheat2.txt --traits yield -o wheat";

void CheckClasses(int32_t classes) {
  if (classes >= kFewestClasses && classes <= kMostClasses) return;
  throw Failure{ExitCode::InputWrong, "--classes " + std::to_string(classes) + ": frequency tables take " +
                                          std::to_string(kFewestClasses) + " to " +
                                          std::to_string(kMostClasses) + " classes"};
}

void RefuseWhatCannotFit(const std::string& name, const TrialData& data) {
  const double needed = TrialBytes(data), available = AvailableBytes();
  if (needed <= available) return;
  throw Failure{ExitCode::Other,
                name + " has " + Counted(static_cast<int64_t>(data.genotypes.size()), "genotype") + " in " +
                    Counted(static_cast<int64_t>(data.environments.size()), "environment") +
                    ", whose tables need " + Bytes(needed) + " of memory; " + Bytes(available) +
                    " are available"};
}

// A run of these traits less those that cannot be analysed: without one, plots of others may be gone too.
TrialRun PlanRun(const TrialData& data, std::vector<std::size_t> traits, int32_t classes,
                 std::vector<TraitFault>& faults) {
  TrialRun run;
  for (bool again = true; again;) {
    again = false;
    run.data = Selected(data, traits);
    run.facts.clear();
    for (std::size_t k = traits.size(); k-- > 0;) {
      run.facts.insert(run.facts.begin(), FactsOf(run.data, k));
      const std::string why = FaultOf(run.data, k, run.facts.front(), classes);
      if (why.empty()) continue;
      faults.push_back({data.traits[traits[k]], why});
      traits.erase(traits.begin() + static_cast<std::ptrdiff_t>(k));
      again = true;
    }
  }
  return run;
}

std::string FileWord(const std::string& trait, const std::vector<TrialRun>& taken) {
  std::string word = "." + trait;
  for (char& c : word) {
    if (c == '/' || std::isspace(static_cast<unsigned char>(c)) != 0) c = '_';
  }
  while (std::any_of(taken.begin(), taken.end(), [&](const TrialRun& run) { return run.word == word; }))
    word += "_";
  return word;
}

void PlanRuns(bool eachTrait, TrialSession& session) {
  const TrialData& data = session.table.data;
  std::vector<std::size_t> traits(data.traits.size());
  std::iota(traits.begin(), traits.end(), std::size_t{0});
  if (!eachTrait) {
    session.runs.push_back(PlanRun(data, traits, session.classes, session.leftOut));
    if (session.runs.front().data.traits.empty()) session.runs.clear();
    return;
  }
  for (const std::size_t trait : traits) {
    TrialRun run = PlanRun(data, {trait}, session.classes, session.leftOut);
    if (run.data.traits.empty()) continue;
    run.word = FileWord(run.data.traits.front(), session.runs);
    session.runs.push_back(std::move(run));
  }
}

void JudgeTraits(bool skipBad, TrialSession& session) {
  if (session.leftOut.empty() && session.runs.empty()) {
    std::string message = session.input + ": no column has numbers, so that there is no trait to analyse";
    for (const std::string& note : session.table.notes) message += "\n  " + note;
    throw Failure{ExitCode::InputWrong, message};
  }
  if (session.leftOut.empty() || (skipBad && !session.runs.empty())) return;
  std::string message = session.input + ": " +
                        Counted(static_cast<int64_t>(session.leftOut.size()), "trait") +
                        " cannot be analysed";
  for (const TraitFault& fault : session.leftOut) message += "\n  " + fault.trait + ": " + fault.why;
  message += session.runs.empty()
                 ? "\nno trait is left"
                 : "\n--skip-bad-traits leaves such traits out, --traits names those to take";
  throw Failure{ExitCode::InputWrong, message};
}

ResultFiles OpenTrialResults(const TrialOptions& options, const TrialSession& session) {
  std::filesystem::path stem = options.stem;
  if (options.stem.empty()) stem = std::filesystem::path(options.file).replace_extension();
  std::vector<std::string> extensions;
  for (const TrialRun& run : session.runs) {
    for (const char* extension : kTrialExtensions) extensions.push_back(run.word + extension);
  }
  if (!options.report.none) extensions.emplace_back(kReportExtension);
  return OpenResults(stem, {options.file}, extensions);
}

void TellWarnings(const TrialSession& session) {
  const auto tell = [](const char* kind, const std::string& words) {
    std::cerr << "tessarmont: " << kind << ": " << words << '\n';
  };
  for (const std::string& note : session.table.notes) tell("note", note);
  for (const TraitFault& fault : session.leftOut)
    tell("warning", "trait " + fault.trait + " was left out: " + fault.why);
  for (const std::string& warning : session.warnings) tell("warning", warning);
}

}  // namespace

CLI::App* DeclareTrial(CLI::App& app, TrialOptions& options) {
  CLI::App* trial = app.add_subcommand("trial", "Analyses a table of field plots");
  trial->add_option("TABLE", options.file, "table of plots")->required();
  trial->add_option("-o,--output", options.stem, "STEM of the results [TABLE without extension]");
  trial->add_option("--env", options.environment, "column of the environment, or none");
  trial->add_option("--gen", options.genotype, "column of the genotype");
  trial->add_option("--block", options.block, "column of the block or replicate, or none");
  trial->add_option("--traits", options.traits, "columns to analyse, parted by commas")->delimiter(',');
  trial->add_option("--classes", options.classes, "classes of the frequency tables, 3 or more")
      ->capture_default_str();
  trial->add_flag("--each-trait", options.eachTrait,
                  "analyse each trait by its own plots, into STEM.TRAIT.*");
  trial->add_flag("--skip-bad-traits", options.skipBadTraits, "leave out traits that cannot be analysed");
  DeclareReport(*trial, options.report);
  trial->add_flag("--json", options.json, "print one JSON object instead of the summary");
  trial->add_flag("--quiet", options.quiet, "print nothing but failures (and the JSON)");
  trial->footer(kTrialFooter);
  return trial;
}

ExitCode RunTrial(const TrialOptions& options) {
  CheckClasses(options.classes);
  TrialSession session;
  session.input = options.file;
  session.classes = options.classes;
  session.table =
      ReadTrial(options.file, {options.environment, options.genotype, options.block, options.traits});
  session.leftOut = session.table.faults;
  RefuseWhatCannotFit(options.file, session.table.data);
  PlanRuns(options.eachTrait, session);
  JudgeTraits(options.skipBadTraits, session);
  const ResultFiles results = OpenTrialResults(options, session);
  if (std::string words = RepeatedRows(session.table); !words.empty())
    session.warnings.push_back(std::move(words));
  for (TrialRun& run : session.runs) {
    RunTrialAnalysis(results, session.classes, run);
    for (std::string& warning : TrialWarnings(run)) session.warnings.push_back(std::move(warning));
  }
  std::vector<std::string> beside;
  if (options.report.Wanted()) {
    const reports::TrialReport report = TrialPageData(session, results);
    const std::vector<reports::Figure> figures = reports::TrialFigures(report);
    beside = WriteReport(results, options.report, reports::TrialPage(report, figures), figures);
  }
  session.written = Publish(results);
  session.written.insert(session.written.end(), beside.begin(), beside.end());
  if (!options.quiet) TellWarnings(session);
  if (options.json) {
    std::cout << TrialJson(session);
  } else if (!options.quiet) {
    std::cout << TrialSummary(session);
  }
  return ExitCode::Good;
}

}  // namespace host
