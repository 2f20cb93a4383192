#include "host/trial_columns.h"

#include <algorithm>
#include <span>

#include "host/exit_code.h"
#include "host/populations.h"

namespace host {
namespace {

constexpr std::string_view kEnvironmentHeads[] = {"environment", "env",  "trial", "experiment", "location",
                                                  "loc",         "site", "year",  "season"};
constexpr std::string_view kGenotypeHeads[] = {"genotype", "geno",  "gen",    "variety",
                                               "cultivar", "entry", "hybrid", "line"};
constexpr std::string_view kBlockHeads[] = {"block", "blk",  "replicate", "replication",
                                            "rep",   "reps", "repid"};

struct KeyRow {
  std::string_view what, option;
  std::span<const std::string_view> heads;  // by preference
  bool mayBeNone;
};
constexpr KeyRow kKeyRows[kTrialKeys] = {{"environment", "--env", kEnvironmentHeads, true},
                                         {"genotype", "--gen", kGenotypeHeads, false},
                                         {"block", "--block", kBlockHeads, true}};

std::string Listed(const Headings& headings) {
  std::string list;
  for (const std::string& heading : headings) list += (list.empty() ? "" : ", ") + heading;
  return list;
}

Column ColumnNamed(const Headings& headings, std::string_view name) {
  const auto same = std::find(headings.begin(), headings.end(), name);
  const auto found = same != headings.end()
                         ? same
                         : std::find_if(headings.begin(), headings.end(), [&](const std::string& heading) {
                             return EqualIgnoringCase(heading, name);
                           });
  if (found == headings.end()) return std::nullopt;
  return static_cast<std::size_t>(found - headings.begin());
}

std::size_t GivenColumn(const Headings& headings, const std::string& name, std::string_view option) {
  const Column column = ColumnNamed(headings, name);
  if (!column)
    Refuse(std::string(option) + ": there is no column " + InQuotes(name) + "; the columns are " +
           Listed(headings));
  return *column;
}

Column KeyColumn(const Headings& headings, const KeyRow& row, const std::string& given) {
  if (row.mayBeNone && given == kNoColumn && !ColumnNamed(headings, given)) return std::nullopt;
  if (!given.empty()) return GivenColumn(headings, given, row.option);
  for (const std::string_view head : row.heads) {
    if (const Column column = ColumnNamed(headings, head)) return column;
  }
  return std::nullopt;
}

void ChooseKeys(const Headings& headings, const TrialColumns& wanted, ChosenColumns& chosen,
                std::vector<std::string>& notes) {
  const std::array<const std::string*, kTrialKeys> given{&wanted.environment, &wanted.genotype,
                                                         &wanted.block};
  bool any = false;
  for (std::size_t k = 0; k < kTrialKeys; ++k) {
    chosen.keys[k] = KeyColumn(headings, kKeyRows[k], *given[k]);
    any = any || chosen.keys[k] || !given[k]->empty();
  }
  if (!any)
    notes.emplace_back(
        "no usual heading is there: the first three columns are taken as environment, genotype and block; "
        "--env, --gen and --block name others");
  for (std::size_t k = 0; k < kTrialKeys; ++k) {
    if (!any) chosen.keys[k] = k;
    if (chosen.keys[k] || !given[k]->empty()) continue;
    const std::string option(kKeyRows[k].option);
    std::string message = "which column has the " + std::string(kKeyRows[k].what) +
                          " of a plot? Name it with " + option + " COLUMN";
    if (kKeyRows[k].mayBeNone) message += ", or say " + option + " none";
    Refuse(message + "; the columns are " + Listed(headings));
  }
  for (std::size_t k = 0; k < kTrialKeys; ++k) {
    for (std::size_t j = 0; j < k; ++j) {
      if (chosen.keys[j] && chosen.keys[j] == chosen.keys[k]) {
        Refuse("column " + InQuotes(headings[*chosen.keys[k]]) + " cannot be both " +
               std::string(kKeyRows[j].what) + " and " + std::string(kKeyRows[k].what) +
               "; choose others with --env, --gen and --block");
      }
    }
  }
}

bool IsKey(const ChosenColumns& chosen, std::size_t column) {
  return std::find(chosen.keys.begin(), chosen.keys.end(), Column(column)) != chosen.keys.end();
}

}  // namespace

void Refuse(const std::string& why) { throw Failure{ExitCode::InputWrong, why}; }

std::string InQuotes(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string_view KeyName(std::size_t key) { return kKeyRows[key].what; }

ChosenColumns ChooseColumns(const Headings& headings, const TrialColumns& wanted,
                            std::vector<std::string>& notes) {
  ChosenColumns chosen;
  if (headings.size() < 2)
    Refuse("the heading has one word only: " + Listed(headings) +
           "; a trial table has columns for environment, genotype, block and traits");
  ChooseKeys(headings, wanted, chosen, notes);
  chosen.traitsGiven = !wanted.traits.empty();
  for (const std::string& name : wanted.traits) {
    const std::size_t column = GivenColumn(headings, name, "--traits");
    if (IsKey(chosen, column))
      Refuse("--traits: column " + InQuotes(name) + " is the environment, genotype or block");
    if (std::find(chosen.traits.begin(), chosen.traits.end(), column) == chosen.traits.end())
      chosen.traits.push_back(column);
  }
  for (std::size_t column = 0; !chosen.traitsGiven && column < headings.size(); ++column) {
    if (IsKey(chosen, column)) continue;
    if (!headings[column].empty()) {
      chosen.traits.push_back(column);
    } else {
      notes.push_back("column " + std::to_string(column + 1) + " has no heading and was left out");
    }
  }
  if (chosen.traits.empty()) Refuse("there is no column for a trait beside " + Listed(headings));
  return chosen;
}

}  // namespace host
