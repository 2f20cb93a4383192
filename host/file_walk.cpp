#include "host/file_walk.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

#include "host/item_scanner.h"
#include "host/text.h"

namespace host {
namespace {

constexpr int64_t kMost = std::numeric_limits<int64_t>::max() / 4;

int64_t ValueOr0(const FileLayout& layout, Field field) {
  return std::max<int64_t>(layout.Value(field).value_or(0), 0);
}

int64_t Product(int64_t a, int64_t b) { return a != 0 && b > kMost / a ? kMost : a * b; }

// What is at work while a file is walked.
struct Walk {
  ItemScanner scanner;
  FileLayout layout;
};

bool Ended(Walk& walk, const RowRead& read) {
  walk.layout.endsEarly = read.ended;
  return false;
}

bool StartSection(Walk& walk) {
  if (ToData(walk.scanner)) return true;
  return Ended(walk, {0, false, true});
}

bool TakeField(Walk& walk, Field field) {
  if (!StartSection(walk)) return false;
  std::vector<Word> kept(1);
  const RowRead read = TakeRow(walk.scanner, 1, kept);
  const auto place = static_cast<std::size_t>(field);
  walk.layout.fieldLine[place] = read.line;
  if (!read.complete) return Ended(walk, read);
  if (!kept[0].quoted) walk.layout.value[place] = AsInteger(kept[0].text);
  return walk.layout.value[place].has_value();
}

int64_t RowsOf(const FileLayout& layout, Section section) {
  switch (section) {
    case Section::Families:
      return ValueOr0(layout, Field::NumFamilies);
    case Section::Chromosomes:
      return ValueOr0(layout, Field::NumChromosomes);
    case Section::Map:
    case Section::Markers:
    case Section::Categorised:
    case Section::Anchors:
    case Section::Breeding:
      return layout.TotalMarkers();
    case Section::Phenotypes:
      return ValueOr0(layout, Field::NumTraits);
    case Section::EnvironmentRows:
      return ValueOr0(layout, Field::NumEnvironments);
    case Section::LineValues:
      return Product(Product(ValueOr0(layout, Field::NumTraits), ValueOr0(layout, Field::NumEnvironments)),
                     ValueOr0(layout, Field::NumReplications));
    case Section::Header:
    case Section::TraitSimulation:
    case Section::LineSimulation:
      break;  // no table
  }
  return 0;
}

std::size_t WordsOf(const FileLayout& layout, Section section) {
  const auto lines = static_cast<std::size_t>(layout.lines);
  switch (section) {
    case Section::Families:
    case Section::Chromosomes:
    case Section::Anchors:
      return 2;
    case Section::Map:
      return 3;
    case Section::Categorised:
      return 2 + lines;
    case Section::Breeding:
      return 1 + static_cast<std::size_t>(ValueOr0(layout, Field::BreedingSize));
    default:
      return 1 + lines;
  }
}

void NoteMapRow(FileLayout& layout, std::size_t row, const std::vector<Word>& kept) {
  const bool numbers = !kept[1].quoted && !kept[2].quoted && AsInteger(kept[1].text) && IsReal(kept[2].text);
  if (!numbers && layout.firstOddMapRow == 0) layout.firstOddMapRow = row;
}

// A count behind a name: the size of a family or the markers of a chromosome.
bool NoteCount(FileLayout& layout, Section section, const Word& word) {
  const auto count = word.quoted ? std::nullopt : AsInteger(word.text);
  if (!count || *count < 1) return false;
  if (section == Section::Families) layout.lines += *count;
  if (section == Section::Chromosomes) layout.chromosomeMarkers.push_back(*count);
  return true;
}

bool TakeTable(Walk& walk, Section section) {
  const int64_t count = RowsOf(walk.layout, section);
  SectionRows& rows = walk.layout.rows[static_cast<std::size_t>(section)];
  rows.words = WordsOf(walk.layout, section);
  if (count == 0) return true;
  if (!StartSection(walk)) return false;
  std::vector<Word> kept(3);
  const std::size_t name = section == Section::Categorised ? 1 : 0;
  for (int64_t row = 0; row < count; ++row) {
    const RowRead read = TakeRow(walk.scanner, rows.words, kept);
    if (read.line > 0) {
      rows.lines.push_back(read.line);
      rows.names.push_back(kept[name].text);
    }
    if (section == Section::Map && read.line > 0) NoteMapRow(walk.layout, rows.lines.size(), kept);
    if (!read.complete) return Ended(walk, read);
    const bool counts = section == Section::Families || section == Section::Chromosomes;
    if (counts && !NoteCount(walk.layout, section, kept[1])) return false;
  }
  return true;
}

// A row that is read directly behind the one before, whatever it holds.
bool TakePlainRow(Walk& walk, Section section, std::size_t words, std::vector<Word>& kept) {
  const RowRead read = TakeRow(walk.scanner, words, kept);
  if (read.line > 0) {
    SectionRows& rows = walk.layout.rows[static_cast<std::size_t>(section)];
    rows.lines.push_back(read.line);
    rows.names.emplace_back();
  }
  return read.complete || Ended(walk, read);
}

// The first word of a row without moving on; below 0 where it is no count.
int64_t PeekCount(Walk& walk) {
  std::vector<Word> kept(1);
  const std::size_t begin = walk.scanner.next;
  const RowRead read = TakeRow(walk.scanner, 1, kept);
  walk.scanner.next = begin;
  if (!read.complete || kept[0].quoted) return -1;
  return AsInteger(kept[0].text).value_or(-1);
}

bool TakeTraitSimulation(Walk& walk) {
  std::vector<Word> ignored;
  const int64_t chromosomes = ValueOr0(walk.layout, Field::NumChromosomes);
  for (int64_t t = 0; t < ValueOr0(walk.layout, Field::NumTraits); ++t) {
    int64_t all = 0;
    for (int64_t c = 0; c < chromosomes; ++c) {
      if (!StartSection(walk)) return false;
      const int64_t count = PeekCount(walk);
      const std::size_t words = count < 0 ? 1 : 1 + 2 * static_cast<std::size_t>(count);
      if (!TakePlainRow(walk, Section::TraitSimulation, words, ignored) || count < 0) return false;
      all += count;
    }
    const auto matrix = static_cast<std::size_t>(Product(all, all + 1) / 2);
    for (const std::size_t words : {matrix, std::size_t{1}, std::size_t{1}, std::size_t{1}}) {
      if (!TakePlainRow(walk, Section::TraitSimulation, words, ignored)) return false;
    }
  }
  return true;
}

bool TakeLineSimulation(Walk& walk) {
  if (!StartSection(walk)) return false;
  std::vector<Word> kept(1), ignored;
  if (!TakePlainRow(walk, Section::LineSimulation, 3, kept)) return false;
  const auto count = kept[0].quoted ? std::nullopt : AsInteger(kept[0].text);
  if (!count) return false;
  const auto words = static_cast<std::size_t>(std::max<int64_t>(*count, 0));
  if (!TakePlainRow(walk, Section::LineSimulation, words, ignored)) return false;  // locations
  return TakePlainRow(walk, Section::LineSimulation, words, ignored);              // effects
}

bool TakeStep(Walk& walk, const Step& step) {
  FileLayout& layout = walk.layout;
  if (step.indicator != 0 && layout.Value(Field::Indicator) != step.indicator) return true;
  if (step.section == Section::Header && !TakeField(walk, step.field)) return false;
  if (step.section == Section::Header) {
    const bool size = step.field == Field::PopulationSize || step.field == Field::TrainingSize;
    if (size) layout.lines = ValueOr0(layout, step.field);
    return true;
  }
  if (step.section == Section::TraitSimulation) return TakeTraitSimulation(walk);
  if (step.section == Section::LineSimulation) return TakeLineSimulation(walk);
  return TakeTable(walk, step.section);
}

void CountLeadingNumbers(ItemScanner scanner, FileLayout& layout) {
  for (; ToData(scanner); ++scanner.next) {
    const std::vector<std::string_view> words = BlankParted(scanner.lines[scanner.next]);
    if (words.empty()) return;
    layout.firstRowWord = words.front();
    layout.firstRowWords = words.size();
    if (!AsInteger(words.front()) || (words.size() > 1 && !words[1].starts_with('!'))) return;
    ++layout.leadingNumbers;
  }
}

}  // namespace

int64_t FileLayout::TotalMarkers() const {
  if (!Value(Field::NumChromosomes)) return ValueOr0(*this, Field::NumMarkers);
  int64_t sum = 0;
  for (int64_t count : chromosomeMarkers) sum += count;
  return sum;
}

FileLayout WalkFile(std::string_view text, std::string_view module) {
  Walk walk{{Lines(text)}, {}};
  walk.layout.fileLines = walk.scanner.lines.size();
  CountLeadingNumbers(walk.scanner, walk.layout);
  const auto* row = std::find_if(std::begin(kModuleSteps), std::end(kModuleSteps),
                                 [&](const ModuleSteps& candidate) { return candidate.code == module; });
  if (row == std::end(kModuleSteps)) return walk.layout;
  walk.layout.complete = std::all_of(row->steps.begin(), row->steps.end(),
                                     [&](const Step& step) { return TakeStep(walk, step); });
  return std::move(walk.layout);
}

std::optional<int64_t> AsInteger(std::string_view word) {
  if (word.starts_with('+')) {
    word.remove_prefix(1);
    if (word.starts_with('-')) return std::nullopt;
  }
  int32_t value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc{} || end != word.data() + word.size()) return std::nullopt;
  return value;
}

bool IsReal(std::string_view word) {
  if (word.starts_with('+') || word.starts_with('-')) word.remove_prefix(1);
  if (word.empty() || (word.front() != '.' && (word.front() < '0' || word.front() > '9'))) return false;
  std::string digits(word);
  for (char& c : digits) c = c == 'd' || c == 'D' ? 'e' : c;
  double value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return error != std::errc::invalid_argument && end == digits.data() + digits.size();
}

}  // namespace host
