#include "host/importers/table_builder.h"

#include <algorithm>
#include <unordered_set>

#include "host/exit_code.h"
#include "host/population_catalogue.h"
#include "host/populations.h"
#include "host/text.h"

namespace importers {
namespace {

using host::ExitCode;
using host::Failure;
using host::TableKind;

constexpr std::string_view kSpecial = " ,/'\"*\x7F";
constexpr std::size_t kMostCodes = 12;  // the most that a kind has
// Codes of a bi-parental table by their place.
enum : uint8_t { kA, kH, kB, kD, kR, kX };

// What a code becomes where the population shows these genotypes. `says` is the code that is left: D (not B)
// is A where there is no H; R (not A) is H where there is no B; X for what cannot be or says nothing.
struct FamilyRow {
  std::string_view shows;
  std::array<uint8_t, 6> says;
};
constexpr FamilyRow kFamilies[] = {
    {"AH", {kA, kH, kX, kX, kH, kX}},
    {"HB", {kX, kH, kB, kH, kX, kX}},
    {"AB", {kA, kX, kB, kA, kB, kX}},
    {"AHB", {kA, kH, kB, kD, kR, kX}},
};

const FamilyRow& FamilyOf(int32_t population) {
  const std::string_view shows = host::kPopulations[population - 1].shows;
  return *std::find_if(std::begin(kFamilies), std::end(kFamilies),
                       [&](const FamilyRow& row) { return row.shows == shows; });
}

using Counts = std::array<int64_t, 256>;

Counts CountCells(const std::vector<uint8_t>& cells) {
  Counts counts{};
  for (const uint8_t cell : cells) ++counts[cell];
  return counts;
}

void BlankCells(Builder& builder, std::vector<uint8_t>& cells, uint8_t code, Blank reason, int64_t count) {
  if (count == 0) return;
  std::replace(cells.begin(), cells.end(), code, static_cast<uint8_t>(kX));
  builder.pending[static_cast<std::size_t>(reason)] += count;
}

// A row of a selfing population is co-dominant (A, H, B), dominant (D, B) or recessive (A, R). In one that
// mixes them the codes D and R go; where only one homozygote is beside them, the other of the two goes.
void Unmix(Builder& builder, std::vector<uint8_t>& cells, const Counts& n) {
  const bool dominant = n[kA] + n[kH] + n[kR] == 0, recessive = n[kB] + n[kH] + n[kD] == 0;
  if (dominant || recessive) return;
  const bool likeDominant = n[kA] + n[kH] == 0 && n[kB] > 0, likeRecessive = n[kB] + n[kH] == 0 && n[kA] > 0;
  if (!likeDominant || n[kD] == 0) BlankCells(builder, cells, kD, Blank::Dominance, n[kD]);
  if (!likeRecessive || n[kR] == 0) BlankCells(builder, cells, kR, Blank::Dominance, n[kR]);
}

void FitToPopulation(Builder& builder, std::vector<uint8_t>& cells) {
  const FamilyRow& family = FamilyOf(builder.request.population);
  const Counts counts = CountCells(cells);
  if (family.shows == "AHB") return Unmix(builder, cells, counts);
  for (const uint8_t code : {kA, kH, kB, kD, kR}) {
    if (counts[code] == 0 || family.says[code] == code) continue;
    if (family.says[code] == kX) {
      const Blank reason = code == kD || code == kR ? Blank::Dominance : Blank::NotInPopulation;
      BlankCells(builder, cells, code, reason, counts[code]);
    } else {
      std::replace(cells.begin(), cells.end(), code, family.says[code]);
    }
  }
}

// At most `most` bytes; a letter of several bytes is kept whole or left out.
std::string_view CutName(std::string_view name, std::size_t most) {
  std::size_t length = std::min(name.size(), most);
  while (length > 0 && length < name.size() && (static_cast<unsigned char>(name[length]) & 0xC0U) == 0x80U) {
    --length;
  }
  return name.substr(0, length);
}

// The name under which a marker is written, and why when it is another.
std::string NewName(Builder& builder, const MarkerSource& source, std::string& reason) {
  std::string name = CleanName(source.name);
  if (name != source.name) {
    reason = source.name.size() > host::kMarkerNameLength ? "the name is cut to 35 characters"
                                                          : "the name has characters of another meaning";
  }
  if (name.empty()) name = "marker_" + std::to_string(builder.ledger.read);
  std::string unique = name;
  for (int copy = ++builder.names[name]; copy > 1; ++copy) {
    const std::string tail = "_" + std::to_string(copy);
    unique = std::string(CutName(name, host::kMarkerNameLength - tail.size())) + tail;
    if (!builder.names.contains(unique)) break;
  }
  if (unique != name) {
    ++builder.names[unique];
    reason += (reason.empty() ? "" : "; ") + std::string("a marker before it has this name");
  }
  return unique;
}

int32_t AnchorOf(Builder& builder, std::string_view chromosome) {
  if (!builder.request.anchors || chromosome.empty()) return 0;
  std::vector<Ledger::Group>& groups = builder.ledger.groups;
  const auto next = static_cast<int32_t>(groups.size() + 1);
  const int32_t group = builder.groups.emplace(chromosome, next).first->second;
  if (group == next) groups.push_back({std::string(chromosome)});
  ++groups[static_cast<std::size_t>(group - 1)].markers;
  return group;
}

std::string DropSummary(const Ledger& ledger) {
  std::string text;
  for (std::size_t k = 0; k < kDrops; ++k) {
    if (ledger.dropped[k] == 0) continue;
    text += (text.empty() ? "" : "; ") + std::to_string(ledger.dropped[k]) + ": " +
            std::string(WordsOf(static_cast<Drop>(k)));
  }
  return text;
}

std::string SeenSummary(const Builder& builder) {
  std::string text;
  const auto codes = host::CodesOf(builder.request.kind);
  for (std::size_t code = 0; code + 1 < codes.size(); ++code) {
    if (builder.seen[code] == 0) continue;
    text += (text.empty() ? "" : ", ") + std::string(codes[code]) + " " + std::to_string(builder.seen[code]);
  }
  return text;
}

// Genotypes that cannot be there tell of another population when there are many: half of an F2 in inbred lines.
constexpr int64_t kRefusedOneIn = 3, kNotedOneIn = 10;

void JudgeTheImpossible(Builder& builder) {
  const int64_t impossible = builder.impossible, typed = builder.ledger.typed;
  if (builder.request.kind != TableKind::Map || kNotedOneIn * impossible <= typed) return;
  const host::PopulationRow& row = host::kPopulations[builder.request.population - 1];
  std::string words = std::to_string(impossible);
  words.append(" of ").append(std::to_string(typed)).append(" genotypes cannot be in population ");
  words.append(std::to_string(row.id))
      .append(" (")
      .append(row.name)
      .append("), which shows ")
      .append(row.shows);
  words.append("; the file has ").append(SeenSummary(builder));
  words.append(". Is it another population? \"tessarmont populations\" helps to choose");
  if (kRefusedOneIn * impossible > typed) throw Failure{ExitCode::InputWrong, builder.path + ": " + words};
  builder.ledger.notes.push_back(words);
}

}  // namespace

std::string CleanName(std::string_view name) {
  std::string clean(CutName(name, host::kMarkerNameLength));
  for (char& c : clean) {
    if (static_cast<unsigned char>(c) < ' ' || kSpecial.find(c) != std::string_view::npos) c = '_';
  }
  if (clean.starts_with('!')) clean.front() = '_';
  return clean;
}

void SettlePopulation(Request& request, const std::string& path, TableKind kind, int32_t told,
                      std::string_view words, Ledger& ledger) {
  if (request.population == 0) {
    if (told == 0) {
      throw Failure{ExitCode::UsageWrong, path + (words.empty() ? "" : " (" + std::string(words) + ")") +
                                              " does not tell the population: give --population; "
                                              "\"tessarmont populations\" helps to choose"};
    }
    request.population = told;
    request.kind = kind;
    return;
  }
  if (request.kind != kind) {
    throw Failure{ExitCode::InputWrong,
                  path + " holds " + std::string(words) + ", which --population " +
                      std::string(host::CatalogueRowOf(request.kind, request.population).name) + " is not"};
  }
  if (told != 0 && told != request.population) {
    ledger.notes.push_back("the file calls itself " + std::string(words) + "; taken as " +
                           std::string(host::CatalogueRowOf(kind, request.population).name) + ", as asked");
  }
}

Builder StartTable(const Request& request, const std::string& path, std::vector<std::string> lineNames,
                   std::size_t lines) {
  if (lines == 0) throw Failure{ExitCode::InputWrong, path + " has no lines of the population"};
  Builder builder;
  builder.request = request;
  builder.path = path;
  builder.table.kind = request.kind;
  builder.table.populationType = request.population;
  builder.table.mappingFunction = request.mappingFunction;
  builder.table.lines = lines;
  std::unordered_set<std::string_view> names;
  std::string repeated;
  for (std::string& name : lineNames) {
    for (char& c : name) {
      if (static_cast<unsigned char>(c) < ' ') c = '_';
    }
    if (!names.insert(name).second && repeated.empty()) repeated = name;
  }
  if (!repeated.empty()) builder.ledger.notes.push_back("two lines or more have one name: " + repeated);
  builder.table.lineNames = std::move(lineNames);
  return builder;
}

void DropMarker(Builder& builder, const MarkerSource& source, Drop reason) {
  ++builder.ledger.read;
  builder.pending = {};
  ++builder.ledger.dropped[static_cast<std::size_t>(reason)];
  builder.ledger.rows.push_back({source.line, std::string(source.name), "", std::string(WordsOf(reason))});
}

void AddMarker(Builder& builder, const MarkerSource& source, std::vector<uint8_t>& cells,
               std::string_view category) {
  const TableKind kind = builder.request.kind;
  const uint8_t missing = host::MissingCell(kind);
  if (source.chromosome == "X" || source.chromosome == "x") {
    return DropMarker(builder, source, Drop::SexChromosome);
  }
  const Counts before = CountCells(cells);
  const int64_t typed = static_cast<int64_t>(cells.size()) - before[missing];
  if (kind == TableKind::Map) FitToPopulation(builder, cells);
  const Counts after = CountCells(cells);
  const int64_t left = static_cast<int64_t>(cells.size()) - after[missing];
  const bool oneGenotype =
      kind != TableKind::Map &&
      std::any_of(after.begin(), after.begin() + missing, [&](int64_t count) { return count == left; });
  builder.ledger.typed += typed;
  builder.impossible += builder.pending[static_cast<std::size_t>(Blank::NotInPopulation)];
  for (std::size_t code = 0; code < kMostCodes; ++code) builder.seen[code] += before[code];
  if (left == 0) return DropMarker(builder, source, Drop::NothingLeft);
  if (oneGenotype) return DropMarker(builder, source, Drop::OneGenotype);
  ++builder.ledger.read;
  for (std::size_t k = 0; k < kBlanks; ++k) builder.ledger.blanked[k] += builder.pending[k];
  builder.pending = {};
  std::string reason;
  std::string name = NewName(builder, source, reason);
  if (!reason.empty()) {
    ++builder.ledger.renamed;
    builder.ledger.rows.push_back({source.line, std::string(source.name), name, reason});
  }
  builder.table.markers.push_back(std::move(name));
  if (kind != TableKind::Map) builder.table.categories.emplace_back(category);
  builder.table.anchors.push_back(AnchorOf(builder, source.chromosome));
  builder.table.cells.insert(builder.table.cells.end(), cells.begin(), cells.end());
}

// Many alleles that the parents have not: perhaps others are the parents.
void DoubtTheParents(Builder& builder) {
  constexpr int64_t oneIn = 10;
  const int64_t strange = builder.ledger.blanked[static_cast<std::size_t>(Blank::NoParentsAllele)];
  if (strange == 0 || oneIn * strange <= builder.ledger.typed + strange) return;
  builder.ledger.notes.push_back(
      "more than one genotype in ten cannot come of these parents; are they the parents?");
}

Import FinishTable(Builder&& builder) {
  JudgeTheImpossible(builder);
  DoubtTheParents(builder);
  if (builder.table.markers.empty()) {
    const std::string why = builder.ledger.read == 0
                                ? " has no markers"
                                : ": none of " + host::Counted(builder.ledger.read, "marker") +
                                      " is left: " + DropSummary(builder.ledger);
    throw Failure{ExitCode::InputWrong, builder.path + why};
  }
  if (builder.request.anchors && builder.ledger.groups.empty()) {
    builder.ledger.notes.emplace_back("the file tells no chromosomes; --anchors had nothing to take");
  }
  return {std::move(builder.table), std::move(builder.ledger)};
}

}  // namespace importers
