#include "host/trial_page.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <unordered_map>
#include <utility>

#include "host/exit_code.h"
#include "host/report_files.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::string_view kOfMeans = "PredictionBLUE";  // in a block's place: classes of means

// One run's part of the report: its names stand at other places there.
struct Part {
  const TrialRun& run;
  reports::TrialReport& report;
  std::size_t firstTrait;                          // of the run, in the report
  std::vector<std::size_t> environment, genotype;  // places in the report, by place in the run
};

std::vector<std::size_t> PlacesIn(const std::vector<std::string>& all,
                                  const std::vector<std::string>& names) {
  std::unordered_map<std::string_view, std::size_t> known;
  for (std::size_t k = 0; k < all.size(); ++k) known.emplace(all[k], k);
  std::vector<std::size_t> places(names.size());
  std::transform(names.begin(), names.end(), places.begin(),
                 [&](const std::string& name) { return known.at(name); });
  return places;
}

// The report's trait of a record, whose first field is the name.
reports::TraitReport& TraitOf(Part& part, std::string_view record) {
  const auto& traits = part.run.data.traits;
  const auto found = std::find(traits.begin(), traits.end(), FieldAt(record, 0, 20));
  if (found == traits.end()) throw Failure{ExitCode::Other, "a result file has a record of no trait"};
  return part.report.traits[part.firstTrait + static_cast<std::size_t>(found - traits.begin())];
}

void AddPlots(Part& part) {
  const TrialData& data = part.run.data;
  const std::size_t width = part.report.environments.size();
  for (std::size_t t = 0; t < data.traits.size(); ++t) {
    reports::TraitReport& trait = part.report.traits[part.firstTrait + t];
    trait.plots.resize(width);
    trait.means.assign(width * part.report.genotypes.size(), reports::kNone);
    for (std::size_t p = 0; p < data.Plots(); ++p) {
      const float value = data.values[t][p];
      if (std::isnan(value)) continue;
      trait.plots[part.environment[static_cast<std::size_t>(data.environment[p])]].push_back(
          static_cast<double>(value));
    }
    const std::vector<double> cells = CellMeans(data, t);
    for (std::size_t e = 0; e < data.environments.size(); ++e) {
      for (std::size_t g = 0; g < data.genotypes.size(); ++g) {
        trait.means[part.genotype[g] * width + part.environment[e]] = cells[e * data.genotypes.size() + g];
      }
    }
  }
}

void AddFact(std::vector<reports::Fact>& facts, const char* label, double value) {
  if (std::isfinite(value)) facts.push_back({label, Significant(value)});
}

void AddTables(Part& part) {
  for (std::size_t t = 0; t < part.run.data.traits.size(); ++t) {
    reports::TraitReport& trait = part.report.traits[part.firstTrait + t];
    for (const VarianceTable& table : part.run.results[t].tables) {
      reports::AnovaTable shown{table.combined ? "Combined" : table.where, {}, {}};
      for (const VarianceSource& source : table.sources) {
        shown.rows.push_back(
            {source.name, source.df, source.ss, source.ms, source.f, source.p, source.variance});
      }
      AddFact(shown.facts, "R-square, %", table.rSquare);
      AddFact(shown.facts, "coefficient of variation, %", VariationPercent(part.run, t, table));
      AddFact(shown.facts, "LSD (0.05)", table.lsd05);
      AddFact(shown.facts, "LSD (0.01)", table.lsd01);
      AddFact(shown.facts, "heritability per plot", table.h2Plot);
      AddFact(shown.facts, "heritability per mean", table.h2Mean);
      AddFact(shown.facts, "Bartlett's statistic", table.bartlett);
      AddFact(shown.facts, "Bartlett's test, p", table.bartlettP);
      trait.anova.push_back(std::move(shown));
    }
  }
}

void AddQuantiles(Part& part, std::string_view text) {
  for (const std::string_view record : Lines(text.substr(text.find('\n') + 1))) {
    std::vector<reports::QuantileSet>& sets = TraitOf(part, record).quantiles;
    std::vector<double> values = NumbersFrom(record, 52, 12);
    if (FieldAt(record, 40, 12) == "Quantile") {
      sets.push_back({std::string(FieldAt(record, 20, 20)), std::move(values), {}});
    } else if (!sets.empty()) {
      sets.back().observed = std::move(values);
    }
  }
}

// The blocks of an environment are counted together; they share the trait's classes.
void AddHistograms(Part& part, std::string_view text) {
  std::vector<double> middles;
  for (const std::string_view record : Lines(text.substr(text.find('\n') + 1))) {
    if (FieldAt(record, 60, 20) == "MiddlePoint") {
      middles = NumbersFrom(record, 80, 12);
      continue;
    }
    const bool ofMeans = FieldAt(record, 40, 20) == kOfMeans;
    const std::string_view where = FieldAt(record, 20, 20);
    if (ofMeans && where != "Combined") continue;
    std::vector<reports::Histogram>& histograms = TraitOf(part, record).histograms;
    const std::string name = ofMeans ? "combined predictions" : std::string(where);
    const std::vector<double> counts = NumbersFrom(record, 80, 12);
    if (histograms.empty() || histograms.back().where != name) {
      histograms.push_back({name, middles, counts});
      continue;
    }
    std::transform(counts.begin(), counts.end(), histograms.back().counts.begin(),
                   histograms.back().counts.begin(), std::plus<>());
  }
}

void AddBiplots(Part& part, std::string_view text) {
  for (const std::string_view record : Lines(text.substr(text.find('\n') + 1))) {
    std::vector<reports::Biplot>& plots = TraitOf(part, record).biplots;
    const std::string model(FieldAt(record, 20, 12));
    const std::string_view side = FieldAt(record, 32, 12);
    const std::vector<double> numbers = NumbersFrom(record, 64, 12);
    if (numbers.size() != 3) continue;
    if (plots.empty() || plots.back().model != model) {
      plots.push_back({});
      plots.back().model = model;
      plots.back().centred = model == "GGE" ? "environment means" : "environment and genotype means";
    }
    const reports::BiplotScore score{std::string(FieldAt(record, 44, 20)), numbers[0], numbers[1],
                                     numbers[2]};
    if (side == "Score") {
      plots.back().share1 = numbers[1];
      plots.back().share2 = numbers[2];
    } else {
      (side == "Genotype" ? plots.back().genotypes : plots.back().environments).push_back(score);
    }
  }
}

void PutBoth(reports::CorrelationMatrix& matrix, std::size_t row, const std::vector<double>& lower) {
  const std::size_t n = matrix.names.size();
  for (std::size_t k = 0; k < lower.size() && k <= row; ++k) {
    matrix.values[row * n + k] = matrix.values[k * n + row] = lower[k];
  }
}

reports::CorrelationMatrix EmptyMatrix(std::string title, const std::vector<std::string>& names) {
  return {std::move(title), names, std::vector<double>(names.size() * names.size(), reports::kNone)};
}

// Two sets of lower triangles, each behind two heading records, in the order of environments and traits.
void AddCorrelations(Part& part, std::string_view text) {
  const TrialData& data = part.run.data;
  const std::vector<std::string_view> lines = Lines(text);
  const std::size_t traits = data.traits.size(), environments = data.environments.size();
  if (lines.size() != 4 + 2 * traits * environments)
    throw Failure{ExitCode::Other, "the .coe file came out incomplete"};
  std::size_t line = 2;
  for (std::size_t e = 0; e < environments; ++e) {
    reports::CorrelationMatrix matrix =
        EmptyMatrix("Traits, environment " + data.environments[e], data.traits);
    for (std::size_t t = 0; t < traits; ++t) PutBoth(matrix, t, NumbersFrom(lines[line++], 12, 10));
    if (traits > 1) part.report.correlations.push_back(std::move(matrix));
  }
  line += 2;
  for (std::size_t t = 0; t < traits; ++t) {
    reports::CorrelationMatrix matrix =
        EmptyMatrix("Environments, trait " + data.traits[t], data.environments);
    for (std::size_t e = 0; e < environments; ++e) PutBoth(matrix, e, NumbersFrom(lines[line++], 12, 10));
    if (environments > 1) part.report.traits[part.firstTrait + t].correlations.push_back(std::move(matrix));
  }
}

void AddRun(const TrialRun& run, const ResultFiles& files, reports::TrialReport& report) {
  Part part{run, report, report.traits.size(), PlacesIn(report.environments, run.data.environments),
            PlacesIn(report.genotypes, run.data.genotypes)};
  const auto text = [&](const char* extension) {
    return ReadWhole(Unpublished(files, run.word + extension));
  };
  for (const std::string& name : run.data.traits) {
    report.traits.emplace_back();
    report.traits.back().name = name;
  }
  AddPlots(part);
  AddTables(part);
  AddQuantiles(part, text(".qqp"));
  AddHistograms(part, text(".frq"));
  AddBiplots(part, text(".pca"));
  AddCorrelations(part, text(".coe"));
  for (std::size_t t = 0; t < run.data.traits.size(); ++t) {
    if (run.facts[t].missing == 0) continue;
    report.traits[part.firstTrait + t].histograms.clear();  // one class for -9999, one for all others
    report.traits[part.firstTrait + t].notes.emplace_back(
        "Missing plots beside other traits: the combined analysis and the biplots are off, and the classes "
        "are not shown.");
  }
}

reports::RunFacts FactsOfRun(const TrialSession& session, const ResultFiles& files) {
  const TrialData& data = session.table.data;
  const auto rows = static_cast<int64_t>(data.Plots());
  reports::RunFacts facts =
      RunFactsOf("Field trial " + std::filesystem::path(session.input).filename().string(), "field trial",
                 {session.input});
  facts.facts = {{"plots", std::to_string(rows)},
                 {"environments", std::to_string(data.environments.size())},
                 {"genotypes", std::to_string(data.genotypes.size())},
                 {"columns read as", KeysText(session.table)}};
  facts.ledger = {{"rows read", rows, "cells parted by " + session.table.separator}};
  for (const TrialRun& run : session.runs) {
    for (std::size_t t = 0; t < run.data.traits.size(); ++t) {
      const int64_t missing = rows - static_cast<int64_t>(run.facts[t].plots);
      if (missing > 0) facts.ledger.push_back({"plots without " + run.data.traits[t], missing, "missing"});
    }
  }
  for (const TraitFault& fault : session.leftOut)
    facts.ledger.push_back({"trait " + fault.trait + " left out", -1, fault.why});
  for (const std::string& note : session.table.notes) facts.ledger.push_back({note, -1, ""});
  facts.warnings = session.warnings;
  facts.files = Waiting(files);
  return facts;
}

}  // namespace

reports::TrialReport TrialPageData(const TrialSession& session, const ResultFiles& files) {
  reports::TrialReport report;
  report.environments = session.table.data.environments;
  report.genotypes = session.table.data.genotypes;
  for (const TrialRun& run : session.runs) AddRun(run, files, report);
  report.run = FactsOfRun(session, files);
  return report;
}

}  // namespace host
