#include <CLI/Formatter.hpp>
#include <CLI/Option.hpp>
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>

#include "frame/exports.h"
#include "host/command_line.h"
#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kCells = 9;
constexpr const char* kTwopointFooter =
    "The nine counts are the individuals with each pair of genotypes, the first marker's genotype running "
    "slowest: "
    "AA AH AB HA HH HB BA BH BB (A is P1, H is F1, B is P2). A dominant or recessive marker's merged class "
    "is "
    "counted as H.\n\n"
    "Populations: 1 P1BC1F1, 2 P2BC1F1, 3 F1DH, 4 RIL (F1RIL), 5 P1BC1RIL, 6 P2BC1RIL, 7 F2, 8 F3, 9 "
    "P1BC2F1, "
    "10 P2BC2F1, 11 P1BC2RIL, 12 P2BC2RIL, 13 P1BC1F2, 14 P2BC1F2, 15 P1BC2F2, 16 P2BC2F2, 17 P1BC1DH, "
    "18 P2BC1DH, 19 P1BC2DH, 20 P2BC2DH.\n\n"
    "Examples: two co-dominant markers of an F2, and a co-dominant with a dominant one\n"
    "  tessarmont twopoint --population F2 24 5 1 4 52 6 1 7 25\n"
    "  tessarmont twopoint --population 7 --classes codominant,dominant 0 28 2 0 45 5 0 3 17";

// The classes of a marker: the digits they add to a pair code, and the genotypes that are told apart.
struct ClassRow {
  std::string_view name, digits, shows;
};
constexpr ClassRow kClasses[] = {
    {"codominant", "1", "AHB"}, {"dominant", "12", "HB"}, {"recessive", "10", "AH"}};

struct Question {
  const PopulationRow* population;
  const ClassRow* first;
  const ClassRow* second;
  std::array<float, kCells> table;
};
struct Answer {
  float rec = 0.5F, standardError = 0, lod = 0, p = 1, haldane = 0, kosambi = 0;
};

[[noreturn]] void RefuseUsage(const std::string& sentence) { throw Failure{ExitCode::UsageWrong, sentence}; }

const ClassRow& FindClass(std::string_view text) {
  for (const ClassRow& row : kClasses) {
    if (EqualIgnoringCase(text, row.name) || text == row.digits) return row;
  }
  if (EqualIgnoringCase(text, "co-dominant")) return kClasses[0];
  RefuseUsage("\"" + std::string(text) + "\" is no marker class; known: codominant, dominant, recessive");
}

void FindClasses(const TwoPointOptions& options, Question& question) {
  question.first = question.second = &kClasses[0];
  if (!options.pairCode.empty()) {
    for (const ClassRow& first : kClasses) {
      for (const ClassRow& second : kClasses) {
        if (options.pairCode != std::string(first.digits) + std::string(second.digits)) continue;
        question.first = &first;
        question.second = &second;
        return;
      }
    }
    RefuseUsage("\"" + options.pairCode +
                "\" is no pair code; known: 11, 112, 110, 121, 1212, 1210, 101, 1012, 1010");
  }
  if (options.classes.empty()) return;
  const std::size_t comma = options.classes.find(',');
  if (comma == std::string::npos)
    RefuseUsage("--classes wants two classes with a comma between: codominant,dominant");
  const std::string_view text = options.classes;
  question.first = &FindClass(text.substr(0, comma));
  question.second = &FindClass(text.substr(comma + 1));
}

float ReadCount(const std::string& text) {
  float value = 0;
  const char* end = text.data() + text.size();
  const char* start = text.data() + (text.starts_with('+') ? 1 : 0);
  const auto result = std::from_chars(start, end, value);
  if (result.ec != std::errc{} || result.ptr != end || !std::isfinite(value)) {
    RefuseUsage("\"" + text + "\" is no count");
  }
  if (value < 0) RefuseUsage("the count " + text + " is negative");
  return value;
}

Question ReadQuestion(const TwoPointOptions& options) {
  Question question{};
  question.population = FindPopulation(options.population);
  if (question.population == nullptr) {
    RefuseUsage("\"" + options.population +
                "\" is no population; known are 1 to 20 and their names, see --help");
  }
  FindClasses(options, question);
  if (options.counts.size() != kCells) {
    RefuseUsage("nine counts are wanted, " + std::to_string(options.counts.size()) + " are given");
  }
  for (std::size_t cell = 0; cell < kCells; ++cell) question.table[cell] = ReadCount(options.counts[cell]);
  return question;
}

// Cells that hold counts though the population or the class of a marker cannot show them.
std::string ImpossibleCells(const Question& question) {
  constexpr std::string_view letters = "AHB";
  std::string list;
  const bool selfing = question.population->shows == letters;
  const auto shows = [&](const ClassRow& row, char letter) {
    return (selfing ? row.shows : question.population->shows).find(letter) != std::string_view::npos;
  };
  for (std::size_t cell = 0; cell < kCells; ++cell) {
    const char first = letters[cell / 3], second = letters[cell % 3];
    if (question.table[cell] > 0 && !(shows(*question.first, first) && shows(*question.second, second))) {
      list += std::string(list.empty() ? "" : ", ") + first + second;
    }
  }
  return list;
}

Answer Ask(const Question& question) {
  const std::string digits = std::string(question.first->digits) + std::string(question.second->digits);
  int32_t code = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), code);
  Answer answer;
  TOOLTWOPOINTREC(&question.population->id, &code, question.table.data(), &answer.rec, &answer.standardError,
                  &answer.lod, &answer.p, &answer.haldane, &answer.kosambi);
  return answer;
}

std::string_view Phase(const Answer& answer) {
  if (answer.rec > 0.5F) return "repulsion";
  return answer.rec < 0.5F ? "coupling" : "none (unlinked)";
}

std::string Distance(float centimorgans) {
  return centimorgans >= 999.0F ? "unlinked" : Fixed(centimorgans, 4) + " cM";
}

// The library forms 1 - x in single precision, so that 0 stands for all that is below its last digit.
std::string PValue(float p) { return p > 0 ? Significant(Plain(p)) : "< 6e-08"; }

void PrintText(const Question& question, const Answer& answer) {
  std::cout << "population       " << question.population->id << " (" << question.population->name << ")\n"
            << "markers          " << question.first->name << ", " << question.second->name << '\n'
            << "recombination    " << Fixed(answer.rec, 6) << '\n'
            << "standard error   " << Fixed(answer.standardError, 6) << '\n'
            << "LOD              " << Fixed(answer.lod, 4) << '\n'
            << "p-value          " << PValue(answer.p) << '\n'
            << "Haldane          " << Distance(answer.haldane) << '\n'
            << "Kosambi          " << Distance(answer.kosambi) << '\n'
            << "phase            " << Phase(answer) << '\n';
}

void PrintJson(const Question& question, const Answer& answer) {
  const nlohmann::json json{
      {"format", "tessarmont.twopoint/1"},
      {"population", {{"number", question.population->id}, {"name", question.population->name}}},
      {"classes", {question.first->name, question.second->name}},
      {"rec", Plain(answer.rec)},
      {"standard_error", Plain(answer.standardError)},
      {"lod", Plain(answer.lod)},
      {"p_value", Plain(answer.p)},
      {"haldane_cm", Plain(answer.haldane)},
      {"kosambi_cm", Plain(answer.kosambi)},
      {"phase", Phase(answer)}};
  std::cout << json.dump(1) << '\n';
}

}  // namespace

CLI::App* DeclareTwoPoint(CLI::App& app, TwoPointOptions& options) {
  CLI::App* twoPoint =
      app.add_subcommand("twopoint", "Estimates recombination from one table of nine counts");
  twoPoint->add_option("COUNT", options.counts, "nine counts, see below")->required();
  twoPoint->add_option("-p,--population", options.population, "number or name, any case")->required();
  auto* code = twoPoint->add_option("--pair", options.pairCode,
                                    "pair code: 11, 112, 110, 121, 1212, 1210, 101, 1012 or 1010 [11]");
  twoPoint
      ->add_option("--classes", options.classes, "classes of the two markers, such as codominant,dominant")
      ->excludes(code);
  twoPoint->add_flag("--json", options.json, "print one JSON object");
  twoPoint->footer(kTwopointFooter);
  return twoPoint;
}

ExitCode RunTwoPoint(const TwoPointOptions& options) {
  const Question question = ReadQuestion(options);
  if (const std::string cells = ImpossibleCells(question); !cells.empty()) {
    std::cerr << "tessarmont: warning: population " << question.population->name
              << " with these markers cannot show the counts of " << cells
              << ", which put the estimate off\n";
  }
  const Answer answer = Ask(question);
  if (options.json) {
    PrintJson(question, answer);
  } else {
    PrintText(question, answer);
  }
  return ExitCode::Good;
}

}  // namespace host
