#include "host/precheck_rows.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <limits>
#include <unordered_map>

#include "host/file_walk.h"
#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kNameWidth = 35;       // characters of a marker's name that count
constexpr std::size_t kPhenotypeWidth = 20;  // of a phenotype
constexpr std::size_t kProbe = 16;           // words that tell what a row is
constexpr std::string_view kMissingMarks[] = {"NA", "na", "*", "."};

std::string ShownValue(std::string_view text) {
  constexpr std::size_t shown = 60;
  return "\"" + std::string(text.substr(0, shown)) + (text.size() > shown ? "..." : "") + "\"";
}

std::optional<int64_t> IntegerAt(const LineWords& words, std::size_t k) {
  return k < words.words.size() && !words.IsNull(k) ? AsInteger(words.words[k]) : std::nullopt;
}

std::optional<float> RealAt(const LineWords& words, std::size_t k) {
  if (k >= words.words.size() || words.IsNull(k) || !IsReal(words.words[k])) return std::nullopt;
  std::string digits(words.words[k].substr(words.words[k].front() == '+' ? 1 : 0));
  for (char& c : digits) c = c == 'd' || c == 'D' ? 'e' : c;
  float value = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return result.ec == std::errc{} ? value : std::numeric_limits<float>::quiet_NaN();
}

bool IsValue(std::string_view word, bool marks) {
  if (marks && std::find(std::begin(kMissingMarks), std::end(kMissingMarks), word) != std::end(kMissingMarks))
    return true;
  return IsReal(marks ? word.substr(0, kPhenotypeWidth) : word);
}

std::string_view Cut(std::string_view name) { return name.substr(0, kNameWidth); }

bool IsMarkers(Section section) { return section == Section::Markers || section == Section::Categorised; }
bool IsValues(Section section) {
  return section == Section::Phenotypes || section == Section::EnvironmentRows ||
         section == Section::LineValues;
}
std::size_t WordsAhead(Section section) { return section == Section::Categorised ? 2 : 1; }

// Why a row may have lost its step: characters that mean something to the reader.
std::string ReasonOf(const Sheet& sheet, const SheetRow& row, Section section) {
  const LineWords& words = row.words;
  if (words.slash) return "; a slash ends the row, so quote what holds one";
  if (words.openQuote) return "; a quote is opened and not closed";
  if (words.malformed) return "; behind a closing quote or a repeat stands what cannot stand there";
  if (words.firstRepeats) return "; a number and a star repeat what follows, so quote such a name";
  const std::size_t ahead = WordsAhead(section);
  if (words.words.size() >= ahead && words.words[ahead - 1].find(';') != std::string_view::npos)
    return "; semicolons part nothing, write blanks, tabs or commas";
  if (words.words.size() <= row.wanted || words.IsNull(ahead - 1)) return {};
  if (GoesOn(sheet, section, words.words[ahead]))
    return {};  // the name is whole, there is too much behind it
  const std::string_view name = words.words[ahead - 1];
  const auto end = static_cast<std::size_t>(name.data() - row.raw.data()) + name.size();
  if (name.data() < row.raw.data() || end >= row.raw.size()) return {};
  const bool comma = row.raw[end] == ',';
  return std::string("; ") + (comma ? "commas" : "blanks") + " part words, so quote a name that holds one";
}

// A name that fell apart into the words `first` to `last`, as the file has it.
std::string Rejoined(const SheetRow& row, std::size_t first, std::size_t last) {
  const char* const begin = row.words.words[first].data();
  const char* const end = row.words.words[last].data() + row.words.words[last].size();
  const bool inside = begin >= row.raw.data() && end <= row.raw.data() + row.raw.size() && begin < end;
  return inside ? std::string(begin, end) : std::string(row.words.words[first]);
}

std::string NameOf(const LineWords& words, std::size_t k) {
  return k < words.words.size() && !words.IsNull(k) ? std::string(words.words[k]) : std::string();
}

// --- tables of two or three words a row

struct RowShape {
  Section section;
  std::string_view what;
  FindingKind kind;
};
constexpr RowShape kRowShapes[] = {
    {Section::Families, "a family row is a name and a size of at least 1", FindingKind::Row},
    {Section::Chromosomes, "a chromosome row is a name and the number of its markers, at least 1",
     FindingKind::Row},
    {Section::Map, "a map row is a marker name, the chromosome's number and a value", FindingKind::Map},
    {Section::Anchors, "an anchor row is a marker name and a group of 0 or above", FindingKind::Anchor},
};

void AddShape(Sheet& sheet, Section section, const SheetRow& row) {
  for (const RowShape& shape : kRowShapes) {
    if (shape.section != section) continue;
    Add(sheet, shape.kind, {row.line},
        std::string(shape.what) + ", not " + ShownValue(row.raw) + ReasonOf(sheet, row, section));
  }
}

void LookAtCount(Sheet& sheet, Section section, const SheetRow& row) {
  auto count = IntegerAt(row.words, 1);
  if (count && *count < 1) count.reset();
  if (!count) AddShape(sheet, section, row);
  if (section == Section::Chromosomes) {
    sheet.chromosomes.push_back({NameOf(row.words, 0), count, row.line});
  } else {
    sheet.familiesGood = sheet.familiesGood && count;
    sheet.familyLines += count.value_or(0);
  }
}

std::string ChromosomeName(const ChromosomeRow& row, std::size_t number) {
  return "chromosome " + std::to_string(number) + " (" + row.name + ")";
}

void LookAtPosition(Sheet& sheet, ChromosomeRow& chromosome, const SheetRow& row, float value) {
  const bool first = !chromosome.placed;
  chromosome.placed = true;
  const auto type = sheet.Value(Field::MarkerSpaceType);
  constexpr int64_t intervals = 1;
  const float position = type == intervals && !first ? chromosome.position + value : value;
  if (!first && position < chromosome.position && type) {
    Add(sheet, FindingKind::Map, {row.line},
        type == intervals ? "the interval of " + NameOf(row.words, 0) + " is negative"
                          : "the positions fall: " + NameOf(row.words, 0) + " at " + NameOf(row.words, 2));
  }
  chromosome.position = position;
}

void LookAtMapRow(Sheet& sheet, const SheetRow& row) {
  if (!row.words.words.empty()) sheet.mapNames.push_back({NameOf(row.words, 0), row.line});
  const auto number = IntegerAt(row.words, 1);
  const auto value = RealAt(row.words, 2);
  if (!number || !value) AddShape(sheet, Section::Map, row);
  if (!number) return;
  const auto count = static_cast<int64_t>(sheet.chromosomes.size());
  if (*number < 1 || *number > count) {
    return Add(sheet, FindingKind::Map, {row.line},
               NameOf(row.words, 0) + " stands on chromosome " + std::to_string(*number) +
                   ", but there are " + std::to_string(count));
  }
  const auto place = static_cast<std::size_t>(*number);
  ChromosomeRow& chromosome = sheet.chromosomes[place - 1];
  ++chromosome.seen;
  if (place < sheet.lastChromosome) {
    Add(sheet, FindingKind::Map, {row.line},
        NameOf(row.words, 0) + " of " + ChromosomeName(chromosome, place) +
            " stands behind rows of chromosome " + std::to_string(sheet.lastChromosome) +
            "; rows come chromosome after chromosome");
  } else {
    sheet.lastChromosome = place;
    if (value) LookAtPosition(sheet, chromosome, row, *value);
  }
}

void LookAtAnchor(Sheet& sheet, const SheetRow& row) {
  if (row.words.words.empty()) return;
  const auto group = IntegerAt(row.words, 1);
  if (!group || *group < 0) AddShape(sheet, Section::Anchors, row);
  const std::size_t last = row.words.words.size() - 1;
  const bool apart = !group && last > 1 && IntegerAt(row.words, last);
  sheet.anchorNames.push_back({apart ? Rejoined(row, 0, last - 1) : NameOf(row.words, 0), row.line});
}

// --- rows of genotypes and values

// Whether the row has as many words as it should; tells it when not.
bool HasLength(Sheet& sheet, Section section, const SheetRow& row, std::string_view who,
               std::string_view noun) {
  const std::size_t ahead = WordsAhead(section), have = row.words.words.size();
  if (have == row.wanted && !row.words.openQuote && !row.words.malformed) return true;
  if (have > row.wanted) {
    const std::string_view extra = row.words.words[row.wanted];
    if (extra.starts_with('!') || extra.starts_with('#')) return true;  // a remark behind the row
  }
  const auto count = static_cast<int64_t>(have) - static_cast<int64_t>(ahead);
  Add(sheet, FindingKind::Row, {row.line},
      std::string(who) + " " + NameOf(row.words, ahead - 1).substr(0, kNameWidth) + " has " +
          Counted(std::max<int64_t>(count, 0), noun) + " in place of " + std::to_string(row.wanted - ahead) +
          ReasonOf(sheet, row, section));
  return false;
}

std::string Times(std::size_t times, std::size_t first) {
  return times == 1
             ? " (genotype " + std::to_string(first) + ")"
             : ", " + std::to_string(times) + " times (first as genotype " + std::to_string(first) + ")";
}

std::string WhyNot(const Sheet& sheet, const BadCell& cell, std::string_view category) {
  if (cell.code.empty()) return ", nothing between two commas, takes over what the row before has";
  if (!cell.known) {
    std::string capitals = cell.code;
    for (char& c : capitals) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return capitals != cell.code && IsGenotype(sheet.rules, capitals) ? " is no genotype; write capitals"
                                                                      : " is no genotype";
  }
  if (sheet.rules == Rules::Clonal) return " does not go with category " + std::string(category);
  return " does not exist in population " + std::to_string(sheet.population) + " (" +
         PopulationName(static_cast<int32_t>(sheet.population)) + ")";
}

void TellJudgement(Sheet& sheet, const SheetRow& row, const std::string& marker, std::string_view category) {
  for (const BadCell& cell : sheet.judgement.cells) {
    sheet.findings.push_back({FindingKind::Genotype,
                              {row.line},
                              "marker " + marker + ": " + ShownValue(cell.code) +
                                  WhyNot(sheet, cell, category) + Times(cell.times, cell.first),
                              cell.code,
                              cell.times});
  }
  if (sheet.judgement.others > 0) {
    sheet.findings.push_back({FindingKind::Genotype,
                              {row.line},
                              "marker " + marker + ": " +
                                  Counted(static_cast<int64_t>(sheet.judgement.others), "genotype") +
                                  " more of other codes that cannot stand there",
                              "others",
                              sheet.judgement.others});
  }
  if (!sheet.judgement.whole.empty())
    Add(sheet, FindingKind::Marker, {row.line}, "marker " + marker + ": " + sheet.judgement.whole);
}

void LookAtGenotypes(Sheet& sheet, Section section, const SheetRow& row) {
  const std::size_t ahead = WordsAhead(section);
  const std::vector<std::string_view>& words = row.words.words;
  const bool whole = HasLength(sheet, section, row, "marker", "genotype");
  // A name that fell apart into words leaves nothing to judge.
  const bool apart = !whole && words.size() > row.wanted && !IsGenotype(sheet.rules, words[ahead]);
  if (words.size() >= ahead) {
    const std::size_t last = ahead - 1 + (apart ? words.size() - row.wanted : 0);
    sheet.markerNames.push_back(
        {apart ? Rejoined(row, ahead - 1, last) : NameOf(row.words, ahead - 1), row.line});
  }
  if (apart || words.size() <= ahead) return;
  const std::size_t count = std::min(words.size(), row.wanted) - ahead;
  const std::span<const std::string_view> cells = std::span(words).subspan(ahead, count);
  const std::string category = ahead == 2 ? NameOf(row.words, 0) : "";
  JudgeRow(sheet.rules, sheet.population, category, cells, !whole, sheet.judgement);
  TellJudgement(sheet, row, NameOf(row.words, ahead - 1), category);
}

void LookAtValues(Sheet& sheet, Section section, const SheetRow& row) {
  const std::string_view who = section == Section::Phenotypes        ? "trait"
                               : section == Section::EnvironmentRows ? "environment"
                                                                     : "row";
  HasLength(sheet, section, row, who, "value");
  const bool marks = section != Section::LineValues;
  std::size_t bad = 0, first = 0;
  const std::size_t end = std::min(row.words.words.size(), row.wanted);
  for (std::size_t k = 1; k < end; ++k) {
    if (IsValue(row.words.words[k], marks)) continue;
    if (bad++ == 0) first = k;
  }
  if (bad == 0) return;
  Add(sheet, FindingKind::Value, {row.line},
      std::string(who) + " " + NameOf(row.words, 0) + ": " + ShownValue(row.words.words[first]) +
          " is not a number (value " + std::to_string(first) + ")" +
          (bad > 1 ? ", nor are " + std::to_string(bad - 1) + " more" : "") +
          (marks ? "; missing values are -100, NA, na, * or ." : ""));
}

// --- tables against each other

using NameIndex = std::unordered_map<std::string_view, std::size_t>;

// The first place of each name.
NameIndex IndexOf(const std::vector<NameAt>& names) {
  NameIndex index;
  index.reserve(names.size());
  for (std::size_t k = 0; k < names.size(); ++k) index.emplace(Cut(names[k].name), k);
  return index;
}

void TellRepeated(Sheet& sheet, const std::vector<NameAt>& names, const NameIndex& index) {
  for (std::size_t k = 0; k < names.size(); ++k) {
    const NameAt &here = names[k], &there = names[index.at(Cut(here.name))];
    if (&here == &there) continue;
    const std::string words = here.name == there.name
                                  ? "marker " + here.name + " stands twice"
                                  : ShownValue(here.name) + " and " + ShownValue(there.name) +
                                        " are one name for the reader, which keeps 35 characters";
    Add(sheet, FindingKind::Name, {there.line, here.line}, words);
  }
}

// How a second table of the same markers is spoken of.
struct Pairing {
  FindingKind kind;
  std::string_view missing;  // of markers that only the first table has
  std::string_view unknown;  // of names that only the second has
  std::string_view order;
};
constexpr Pairing kAnchorPairing = {FindingKind::Anchor, "no anchor row", "an anchor row, but no genotypes",
                                    "the anchor rows come in another order than the genotypes from here on"};
constexpr Pairing kMapPairing = {FindingKind::Map, "a place on the map, but no genotypes",
                                 "genotypes, but no place on the map",
                                 "the genotypes come in another order than the map from here on"};

// Tells the names that `others` lacks, those that stand together in one finding.
void TellLone(Sheet& sheet, FindingKind kind, const std::vector<NameAt>& names, const NameIndex& others,
              std::string_view what) {
  const auto lone = [&](std::size_t k) { return k < names.size() && !others.contains(Cut(names[k].name)); };
  for (std::size_t k = 0; k < names.size(); ++k) {
    const std::size_t begin = k;
    if (!lone(k)) continue;
    while (lone(k + 1)) ++k;
    const std::size_t count = k - begin + 1;
    const std::string who = count == 1
                                ? "marker " + std::string(Cut(names[begin].name)) + " has "
                                : std::to_string(count) + " markers, " + std::string(Cut(names[begin].name)) +
                                      " to " + std::string(Cut(names[k].name)) + ", have ";
    Add(sheet, kind, {names[begin].line}, who + std::string(what));
  }
}

void TellPairing(Sheet& sheet, const Pairing& pairing, const std::vector<NameAt>& first,
                 const std::vector<NameAt>& second) {
  const NameIndex firstIndex = IndexOf(first), secondIndex = IndexOf(second);
  TellLone(sheet, pairing.kind, first, secondIndex, pairing.missing);
  TellLone(sheet, pairing.kind, second, firstIndex, pairing.unknown);
  if (firstIndex.size() != first.size() || secondIndex.size() != second.size()) return;
  std::size_t last = 0;
  for (const NameAt& here : second) {
    const auto found = firstIndex.find(Cut(here.name));
    if (found == firstIndex.end()) continue;
    if (found->second < last)
      return Add(sheet, pairing.kind, {first[found->second].line, here.line}, std::string(pairing.order));
    last = found->second;
  }
}

void TellChromosomes(Sheet& sheet) {
  for (std::size_t c = 0; c < sheet.chromosomes.size(); ++c) {
    const ChromosomeRow& row = sheet.chromosomes[c];
    if (!row.markers || *row.markers == row.seen) continue;
    Add(sheet, FindingKind::Count, {row.line},
        ChromosomeName(row, c + 1) + " is told to have " + Counted(*row.markers, "marker") +
            ", the map has " + Counted(row.seen, "row") + " of it");
  }
}

}  // namespace

void Add(Sheet& sheet, FindingKind kind, std::vector<std::size_t> lines, std::string words) {
  sheet.findings.push_back({kind, std::move(lines), std::move(words), {}, 0});
}

void LookAtRow(Sheet& sheet, Section section, const SheetRow& row) {
  if (IsMarkers(section)) return LookAtGenotypes(sheet, section, row);
  if (IsValues(section)) return LookAtValues(sheet, section, row);
  if (section == Section::Map) return LookAtMapRow(sheet, row);
  if (section == Section::Anchors) return LookAtAnchor(sheet, row);
  LookAtCount(sheet, section, row);
}

bool LooksLike(const Sheet& sheet, Section section, std::size_t wanted, const LineWords& words) {
  const std::size_t count = words.words.size();
  if (section == Section::Map) return count == 3 && IntegerAt(words, 1) && RealAt(words, 2);
  if (!IsMarkers(section) && !IsValues(section)) return count == 2 && IntegerAt(words, 1);
  const std::size_t ahead = WordsAhead(section);
  if (count <= ahead || 2 * count <= wanted) return false;
  std::size_t fitting = 0, looked = 0;
  for (std::size_t k = ahead; k < count && looked < kProbe; ++k, ++looked) {
    fitting += GoesOn(sheet, section, words.words[k]) ? 1 : 0;
  }
  return 2 * fitting >= looked;
}

bool GoesOn(const Sheet& sheet, Section section, std::string_view word) {
  if (word.data() == nullptr) return true;
  if (IsMarkers(section)) return IsGenotype(sheet.rules, word);
  return IsValues(section) ? IsValue(word, true) : AsInteger(word).has_value();
}

void CompareTables(Sheet& sheet, bool anchorsDue) {
  const bool maps = sheet.module == "CMP";  // its maps share markers
  if (!maps) {
    TellRepeated(sheet, sheet.mapNames, IndexOf(sheet.mapNames));
    TellRepeated(sheet, sheet.markerNames, IndexOf(sheet.markerNames));
  }
  TellChromosomes(sheet);
  if (!sheet.mapNames.empty() && !sheet.markerNames.empty())
    TellPairing(sheet, kMapPairing, sheet.mapNames, sheet.markerNames);
  if (anchorsDue && !sheet.anchorNames.empty())
    TellPairing(sheet, kAnchorPairing, sheet.markerNames, sheet.anchorNames);
}

}  // namespace host
