#include "host/trial_report.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kTop = 5;
constexpr std::size_t kShownTables = 12;  // analyses that the summary shows of a trait
constexpr double kFewDigits = 0.01;       // an error mean square below it has lost digits in the files
constexpr std::size_t kLabelWidth = 20, kFigureWidth = 10;

std::size_t At(int32_t place) { return static_cast<std::size_t>(place); }

const VarianceSource* SourceNamed(const VarianceTable& table, std::string_view name) {
  const auto found = std::find_if(table.sources.begin(), table.sources.end(),
                                  [&](const VarianceSource& source) { return source.name == name; });
  return found == table.sources.end() ? nullptr : &*found;
}

double ErrorMs(const VarianceTable& table) {
  const VarianceSource* error = SourceNamed(table, "Error");
  return error == nullptr ? kNoFigure : error->ms;
}

const VarianceTable* Combined(const TraitResults& results) {
  const bool any = !results.tables.empty() && results.tables.back().combined;
  return any ? &results.tables.back() : nullptr;
}

// Missing plots stand in the table of a run with other traits, and the library counts them in the grand mean.
bool IsOff(const TraitFacts& facts) { return facts.missing > 0; }

std::string Shown(double value) { return std::isfinite(value) ? Significant(value) : std::string("-"); }

nlohmann::json Number(double value) {
  return std::isfinite(value) ? nlohmann::json(value) : nlohmann::json();
}

double MeanAt(const TrialRun& run, std::size_t trait, const std::string& environment) {
  for (const TraitFacts::AtEnvironment& at : run.facts[trait].environments) {
    if (run.data.environments[At(at.place)] == environment) return at.mean;
  }
  return kNoFigure;
}

// ---- ranking

std::vector<double> AdjustedMeans(const TrialRun& run, std::size_t trait) {
  const std::vector<double> cells = CellMeans(run.data, trait);
  const std::size_t genotypes = run.data.genotypes.size();
  std::vector<double> sums(genotypes, 0), counts(genotypes, 0);
  for (const TraitFacts::AtEnvironment& at : run.facts[trait].environments) {
    double whole = 0, filled = 0;
    const double* column = cells.data() + At(at.place) * genotypes;
    for (std::size_t g = 0; g < genotypes; ++g) {
      if (std::isnan(column[g])) continue;
      whole += column[g];
      filled += 1;
    }
    for (std::size_t g = 0; g < genotypes; ++g) {
      if (std::isnan(column[g])) continue;
      sums[g] += column[g] - whole / filled;
      counts[g] += 1;
    }
  }
  for (std::size_t g = 0; g < genotypes; ++g) sums[g] = run.facts[trait].mean + sums[g] / counts[g];
  return sums;
}

bool PredictionsServe(const TrialRun& run, std::size_t trait) {
  const std::vector<double>& predictions = run.results[trait].predictions;
  if (predictions.empty() || run.facts[trait].emptyCells > 0) return false;
  return std::all_of(run.facts[trait].genotypes.begin(), run.facts[trait].genotypes.end(),
                     [&](int32_t g) { return std::isfinite(predictions[At(g)]); });
}

// ---- text

std::string Row(const std::vector<std::string>& cells) {
  std::string line = "  " + PaddedColumn(cells.front(), kLabelWidth);
  for (std::size_t k = 1; k < cells.size(); ++k) line += RightAligned(cells[k], kFigureWidth);
  return line + '\n';
}

std::string VarianceRow(const TrialRun& run, std::size_t trait, const VarianceTable& table) {
  const VarianceSource* genotype = SourceNamed(table, "Genotype");
  const std::string cv = Shown(VariationPercent(run, trait, table));
  return Row({table.combined ? "all environments" : table.where, cv, Shown(table.h2Plot), Shown(table.h2Mean),
              Shown(table.lsd05), Shown(genotype == nullptr ? kNoFigure : genotype->p)});
}

std::string TablesText(const TrialRun& run, std::size_t trait) {
  const std::vector<VarianceTable>& tables = run.results[trait].tables;
  if (tables.empty()) return "  no environment has error degrees of freedom: no analysis of variance\n";
  std::string text = Row({"", "CV %", "h2 plot", "h2 mean", "LSD 5 %", "P"});
  if (const VarianceTable* combined = Combined(run.results[trait])) {
    text += IsOff(run.facts[trait]) ? "  " + Padded("all environments", kLabelWidth) +
                                          "  off by the missing plots; --each-trait keeps them out\n"
                                    : VarianceRow(run, trait, *combined);
  }
  std::size_t shown = 0, environments = 0;
  for (const VarianceTable& table : tables) {
    if (table.combined || ++environments > kShownTables) continue;
    text += VarianceRow(run, trait, table);
    ++shown;
  }
  if (environments > shown)
    text += "  ... and " + Counted(static_cast<int64_t>(environments - shown), "environment") +
            " more, in the .aov file\n";
  return text;
}

std::string TopText(const TrialRun& run, std::size_t trait) {
  const Ranking ranking = Ranked(run, trait);
  std::string text = "  highest by " + ranking.by + ":";
  for (std::size_t k = 0; k < std::min(kTop, ranking.entries.size()); ++k) {
    text += (k > 0 ? ", " : " ") + run.data.genotypes[ranking.entries[k].genotype] + " " +
            Shown(ranking.entries[k].value);
  }
  return text + '\n';
}

std::string TraitText(const TrialRun& run, std::size_t trait, std::size_t rows) {
  const TraitFacts& facts = run.facts[trait];
  std::string text = "\n" + run.data.traits[trait] + ": mean " + Shown(facts.mean) + " (" +
                     Shown(static_cast<double>(facts.least)) + " to " +
                     Shown(static_cast<double>(facts.most)) + "), " +
                     Counted(static_cast<int64_t>(facts.genotypes.size()), "genotype") + " in " +
                     Counted(static_cast<int64_t>(facts.environments.size()), "environment") + ", " +
                     Counted(static_cast<int64_t>(facts.plots), "plot");
  if (rows > facts.plots) text += ", " + std::to_string(rows - facts.plots) + " missing";
  text += '\n' + TablesText(run, trait);
  return text + TopText(run, trait);
}

// ---- JSON

nlohmann::json TableJson(const TrialRun& run, std::size_t trait, const VarianceTable& table) {
  nlohmann::json json{{"where", table.where},
                      {"combined", table.combined},
                      {"cv_percent", Number(VariationPercent(run, trait, table))},
                      {"r_square_percent", Number(table.rSquare)},
                      {"lsd_05", Number(table.lsd05)},
                      {"lsd_01", Number(table.lsd01)},
                      {"h2_per_plot", Number(table.h2Plot)},
                      {"h2_per_mean", Number(table.h2Mean)},
                      {"sources", nlohmann::json::array()}};
  if (table.combined)
    json["bartlett"] = {{"statistic", Number(table.bartlett)}, {"p", Number(table.bartlettP)}};
  if (table.combined) json["off_by_missing_plots"] = IsOff(run.facts[trait]);
  for (const VarianceSource& source : table.sources) {
    json["sources"].push_back({{"source", source.name},
                               {"df", Number(source.df)},
                               {"ss", Number(source.ss)},
                               {"ms", Number(source.ms)},
                               {"f", Number(source.f)},
                               {"p", Number(source.p)},
                               {"variance", Number(source.variance)}});
  }
  return json;
}

nlohmann::json TraitJson(const TrialRun& run, std::size_t trait, std::size_t rows) {
  const TraitFacts& facts = run.facts[trait];
  nlohmann::json json{{"name", run.data.traits[trait]},
                      {"environments", facts.environments.size()},
                      {"genotypes", facts.genotypes.size()},
                      {"plots", facts.plots},
                      {"missing", rows - facts.plots},
                      {"empty_cells", facts.emptyCells},
                      {"mean", Number(facts.mean)},
                      {"least", Plain(facts.least)},
                      {"most", Plain(facts.most)},
                      {"analyses", nlohmann::json::array()},
                      {"genotypes_ranked", nlohmann::json::array()}};
  for (const VarianceTable& table : run.results[trait].tables)
    json["analyses"].push_back(TableJson(run, trait, table));
  const Ranking ranking = Ranked(run, trait);
  json["ranked_by"] = ranking.by;
  for (const Ranking::Entry& entry : ranking.entries) {
    json["genotypes_ranked"].push_back(
        {{"genotype", run.data.genotypes[entry.genotype]}, {"value", Number(entry.value)}});
  }
  return json;
}

}  // namespace

Ranking Ranked(const TrialRun& run, std::size_t trait) {
  Ranking ranking;
  const bool serve = PredictionsServe(run, trait);
  const std::vector<double> values = serve ? run.results[trait].predictions : AdjustedMeans(run, trait);
  ranking.by = serve ? "prediction" : run.facts[trait].environments.size() > 1 ? "adjusted mean" : "mean";
  for (const int32_t g : run.facts[trait].genotypes) ranking.entries.push_back({At(g), values[At(g)]});
  std::stable_sort(ranking.entries.begin(), ranking.entries.end(),
                   [](const Ranking::Entry& a, const Ranking::Entry& b) { return a.value > b.value; });
  return ranking;
}

double VariationPercent(const TrialRun& run, std::size_t trait, const VarianceTable& table) {
  const double mean = table.combined ? run.facts[trait].mean : MeanAt(run, trait, table.where);
  return 100 * std::sqrt(ErrorMs(table)) / std::fabs(mean);
}

std::string KeysText(const TrialInput& table) {
  constexpr const char* kWhat[] = {"environment", "genotype", "block"};
  std::string text;
  for (std::size_t k = 0; k < table.keys.size(); ++k) {
    text += (k > 0 ? ", " : "") + std::string(kWhat[k]) +
            (table.keys[k].empty() ? " none" : " \"" + table.keys[k] + '"');
  }
  return text;
}

std::string RepeatedRows(const TrialInput& table) {
  constexpr std::size_t shown = 3;
  const TrialData& data = table.data;
  // One figure without a block may well come twice.
  if (table.keys[2].empty() && data.traits.size() < 2) return {};
  std::vector<std::string> names;
  for (const std::size_t p : RepeatedPlots(data)) {
    std::string name = data.genotypes[At(data.genotype[p])];
    if (!table.keys[2].empty())
      name += " in block " + data.blocks[At(data.environment[p])][At(data.block[p])];
    if (!table.keys[0].empty()) name += " at " + data.environments[At(data.environment[p])];
    names.push_back(std::move(name));
  }
  if (names.empty()) return {};
  return Counted(static_cast<int64_t>(names.size()), "row") + (names.size() == 1 ? " repeats" : " repeat") +
         " an earlier row, values and all (" + FirstNames(names, shown) +
         "); each counts as a plot of its own";
}

std::vector<std::string> TrialWarnings(const TrialRun& run) {
  std::vector<std::string> warnings;
  for (std::size_t t = 0; t < run.data.traits.size(); ++t) {
    const TraitFacts& facts = run.facts[t];
    const auto warn = [&](const std::string& words) {
      warnings.push_back(run.data.traits[t] + ": " + words);
    };
    const bool several = facts.environments.size() > 1;
    if (IsOff(facts)) {
      warn(Counted(static_cast<int64_t>(facts.missing), "missing plot") +
           " beside other traits: the grand mean of the analysis counts them as -9999, which puts the "
           "combined sums of squares and heritabilities, the classes and the biplots off; --each-trait keeps "
           "them out");
    }
    if (facts.emptyCells > 0 && several) {
      warn(Counted(static_cast<int64_t>(facts.emptyCells), "cell") +
           " of genotype and environment without a plot: SimpleMean, PredictionBLUE, the classes of means, "
           "correlations between environments and biplots count them as -100");
    }
    if (facts.hundreds > 0) {
      warn(Counted(static_cast<int64_t>(facts.hundreds), "plot") +
           " of exactly -100, which the analysis leaves out of the grand mean, the smallest and the largest "
           "value, and nowhere else");
    }
    std::vector<std::string> gaps, unreplicated;
    for (const TraitFacts::AtEnvironment& at : facts.environments) {
      if (at.blockGap) gaps.push_back(run.data.environments[At(at.place)]);
      if (facts.ErrorDf(at) < 1) unreplicated.push_back(run.data.environments[At(at.place)]);
    }
    if (!gaps.empty()) {
      warn("in environment " + gaps.front() + (gaps.size() > 1 ? " and others" : "") +
           " a block without values stands before others, whose block sums of squares are off; --each-trait "
           "keeps it out");
    }
    if (!unreplicated.empty()) {
      warn("no error degrees of freedom in environment " + unreplicated.front() +
           (unreplicated.size() > 1 ? " and " + std::to_string(unreplicated.size() - 1) + " more" : "") +
           ", which " + (unreplicated.size() > 1 ? "have" : "has") + " no analysis of variance" +
           (several ? "; there is no prediction to rely on" : ""));
    }
    const bool few = std::any_of(run.results[t].tables.begin(), run.results[t].tables.end(),
                                 [](const VarianceTable& table) { return ErrorMs(table) < kFewDigits; });
    if (few)
      warn(
          "the files show four decimals, too few for an error mean square this small; give the trait in a "
          "smaller unit");
  }
  return warnings;
}

std::string TrialSummary(const TrialSession& session) {
  const TrialData& data = session.table.data;
  std::string text = session.input + ": " + Counted(static_cast<int64_t>(data.Plots()), "row") + ", " +
                     Counted(static_cast<int64_t>(data.environments.size()), "environment") + ", " +
                     Counted(static_cast<int64_t>(data.genotypes.size()), "genotype") +
                     "\ncolumns: " + KeysText(session.table) + "\n";
  for (const TrialRun& run : session.runs) {
    for (std::size_t t = 0; t < run.data.traits.size(); ++t) text += TraitText(run, t, data.Plots());
  }
  text += "\nwritten:";
  for (const std::string& file : session.written) text += " " + file;
  return text + '\n';
}

std::string TrialJson(const TrialSession& session) {
  nlohmann::json json{{"format", "tessarmont.trial/1"},
                      {"file", session.input},
                      {"rows", session.table.data.Plots()},
                      {"columns",
                       {{"environment", session.table.keys[0]},
                        {"genotype", session.table.keys[1]},
                        {"block", session.table.keys[2]}}},
                      {"environments", session.table.data.environments},
                      {"classes", session.classes},
                      {"traits", nlohmann::json::array()},
                      {"left_out", nlohmann::json::array()},
                      {"notes", session.table.notes},
                      {"warnings", session.warnings},
                      {"written", session.written}};
  for (const TrialRun& run : session.runs) {
    for (std::size_t t = 0; t < run.data.traits.size(); ++t)
      json["traits"].push_back(TraitJson(run, t, session.table.data.Plots()));
  }
  for (const TraitFault& fault : session.leftOut)
    json["left_out"].push_back({{"trait", fault.trait}, {"why", fault.why}});
  return json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + '\n';
}

}  // namespace host
