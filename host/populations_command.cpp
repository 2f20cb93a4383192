#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

#include "host/command_line.h"
#include "host/population_catalogue.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::string_view kKindWords[] = {"bi-parental (MAP)", "clonal and double cross (CDM)",
                                           "several parents (PLM)"};

// The rows of the chooser for two inbred parents, by what was done last.
struct FinishWords {
  Finish finish;
  std::string_view words;
};
constexpr FinishWords kFinishes[] = {
    {Finish::None, "the cross itself"},
    {Finish::Selfed, "selfed once"},
    {Finish::SelfedTwice, "selfed twice"},
    {Finish::InbredLines, "selfed 5 times or more"},
    {Finish::DoubledHaploids, "doubled haploids"},
};

std::string NameOf(Finish finish, int backcrosses) {
  for (const CatalogueRow& row : PopulationCatalogue()) {
    const bool first = row.recurrent <= 1 && row.kind == TableKind::Map;
    if (first && row.finish == finish && row.backcrosses == backcrosses) return std::string(row.name);
  }
  return "-";
}

std::string Chooser() {
  std::string text =
      "Which one is mine?\n"
      "1. Which parents? Two inbred lines: go to 2. Two heterozygous diploids (fruit trees, most "
      "outcrossers),\n"
      "   their progeny genotyped: ClonalF1. Four inbred lines: DoubleCross when the plants of the cross\n"
      "   (AAxBB)x(CCxDD) are genotyped, 4PDH or 4PRIL for its lines. Eight: 8PDH or 8PRIL.\n"
      "2. Did you cross the F1 back to a parent, and what was done then before genotyping?\n\n   " +
      Padded("", 24) + Padded("not crossed back", 18) + Padded("back to P1 once", 17) + "back to P1 twice\n";
  for (const FinishWords& row : kFinishes) {
    text += "   " + Padded(row.words, 24) + Padded(NameOf(row.finish, 0), 18) +
            Padded(NameOf(row.finish, 1), 17) + NameOf(row.finish, 2) + '\n';
  }
  return text +
         "\n   Back to P2: the same names with P2 for P1. P1 is the parent whose genotype is written A.\n"
         "   Three or four selfings lie between F3 and RIL: take RIL; heterozygotes then count as missing.\n";
}

std::string ListText() {
  std::string text;
  std::optional<TableKind> last;
  for (const CatalogueRow& row : PopulationCatalogue()) {
    if (row.kind != last) {
      text += (last ? "\n" : "") + std::string(kKindWords[static_cast<std::size_t>(row.kind)]) + '\n';
    }
    last = row.kind;
    text += RightAligned(std::to_string(row.id), 4) + "  " + Padded(row.name, 13) +
            Padded(ExpectedWords(row), 28) + std::string(row.about) + '\n';
  }
  return text + '\n' + Chooser() + "\ntessarmont populations NAME shows how one is made.\n";
}

std::string OneText(const CatalogueRow& row) {
  std::string text = std::string(row.name) + (row.alias.empty() ? "" : " (" + std::string(row.alias) + ")") +
                     ", number " + std::to_string(row.id) + " of " +
                     std::string(kKindWords[static_cast<std::size_t>(row.kind)]) + ": " +
                     std::string(row.about) + "\n\n";
  return text + CrossingDiagram(row) + "\nexpected: " + ExpectedWords(row) + '\n';
}

nlohmann::json Json(const CatalogueRow& row) {
  nlohmann::json object{{"kind", ModuleOf(row.kind)},
                        {"number", row.id},
                        {"name", row.name},
                        {"about", row.about},
                        {"expected", ExpectedWords(row)},
                        {"crossing", CrossingDiagram(row)}};
  if (!row.alias.empty()) object["alias"] = row.alias;
  return object;
}

}  // namespace

CLI::App* DeclarePopulations(CLI::App& app, PopulationsOptions& options) {
  CLI::App* populations =
      app.add_subcommand("populations", "Lists the populations, and helps to choose the one that is yours");
  populations->add_option("NAME", options.name,
                          "show this one: a name, or a number of a bi-parental population");
  populations->add_flag("--json", options.json, "print one JSON object");
  populations->footer("Example: how a P1BC2F2 is made and what it shows\n  tessarmont populations P1BC2F2");
  return populations;
}

ExitCode RunPopulations(const PopulationsOptions& options) {
  const CatalogueRow* one = options.name.empty() ? nullptr : FindInCatalogue(options.name);
  if (!options.name.empty() && one == nullptr) {
    throw Failure{ExitCode::UsageWrong,
                  "there is no population \"" + options.name + "\"; \"tessarmont populations\" lists them"};
  }
  if (!options.json) {
    std::cout << (one == nullptr ? ListText() : OneText(*one));
    return ExitCode::Good;
  }
  nlohmann::json rows = nlohmann::json::array();
  for (const CatalogueRow& row : PopulationCatalogue()) {
    if (one == nullptr || one == &row) rows.push_back(Json(row));
  }
  std::cout << nlohmann::json{{"format", "tessarmont.populations/1"}, {"populations", rows}}.dump(1) << '\n';
  return ExitCode::Good;
}

}  // namespace host
