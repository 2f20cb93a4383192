#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>
#include <system_error>
#include <unordered_map>

#include "host/exit_code.h"
#include "host/input_file.h"
#include "host/populations.h"
#include "host/text.h"
#include "host/trial_cells.h"
#include "host/trial_columns.h"
#include "host/trial_data.h"

namespace host {
namespace {

constexpr std::size_t kNameBytes = 19;
constexpr std::size_t kShownFaults = 5;
// Squares of larger values, summed over a million plots, leave the range of a 32-bit real.
constexpr float kLargest = 1e15F;

constexpr std::string_view kMissingWords[] = {"", "NA", "N/A", "#N/A", "NaN", "null", ".", "-", "*"};
// ---- names

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};
struct NamePlaces {
  std::vector<std::string> names;
  std::vector<std::string> cells;                                              // as the file has them
  std::unordered_map<std::string, int32_t, TextHash, std::equal_to<>> places;  // by cell
};

// What the library gets of a name: nothing that could end a line, and 19 bytes, with no character cut in two.
std::string LibraryName(std::string_view cell) {
  std::string name(cell);
  for (char& c : name) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = ' ';
  }
  if (name.size() > kNameBytes) {
    std::size_t end = kNameBytes;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) --end;
    name.resize(end);
  }
  const std::size_t first = std::min(name.find_first_not_of(' '), name.size());
  return std::string(WithoutTrailing(std::string_view(name).substr(first), " "));
}

int32_t PlaceOf(NamePlaces& list, std::string_view cell, std::string_view what) {
  if (const auto found = list.places.find(cell); found != list.places.end()) return found->second;
  std::string name = LibraryName(cell);
  for (std::size_t k = 0; cell != name && k < list.names.size(); ++k) {
    if (list.names[k] == name) {
      Refuse("the " + std::string(what) + " names " + InQuotes(list.cells[k]) + " and " + InQuotes(cell) +
             " cannot be told apart: the analysis keeps " + std::to_string(kNameBytes) +
             " characters of a name, " + InQuotes(name) + " of both; rename one");
    }
  }
  const auto place = static_cast<int32_t>(list.names.size());
  list.places.emplace(std::string(cell), place);
  list.names.push_back(std::move(name));
  list.cells.emplace_back(cell);
  return place;
}

void NoteRenamed(const NamePlaces& list, std::string_view what, std::vector<std::string>& notes) {
  std::size_t renamed = 0;
  std::string shown;
  for (std::size_t k = 0; k < list.names.size(); ++k) {
    if (list.names[k] == list.cells[k] || ++renamed > kShownFaults) continue;
    shown += (shown.empty() ? "" : ", ") + InQuotes(list.cells[k]) + " as " + InQuotes(list.names[k]);
  }
  if (renamed == 0) return;
  notes.push_back(Counted(static_cast<int64_t>(renamed), std::string(what) + " name") +
                  " shortened or cleaned: " + shown + (renamed > kShownFaults ? ", ..." : ""));
}

// ---- values

enum class CellKind { Number, Missing, Text };

bool IsMissingWord(std::string_view cell) {
  return std::any_of(std::begin(kMissingWords), std::end(kMissingWords),
                     [&](std::string_view word) { return EqualIgnoringCase(cell, word); });
}

CellKind ReadNumber(std::string_view cell, float& value) {
  value = std::numeric_limits<float>::quiet_NaN();
  std::string_view digits = cell;
  if (digits.starts_with('+')) digits.remove_prefix(1);
  const char* const end = digits.data() + digits.size();
  float parsed = 0;
  auto result = std::from_chars(digits.data(), end, parsed);
  if (result.ec == std::errc::result_out_of_range) {
    double wide = 0;
    result = std::from_chars(digits.data(), end, wide);
    parsed = static_cast<float>(wide);
  }
  if (result.ec != std::errc() || result.ptr != end || !(std::fabs(parsed) <= kLargest)) {
    return IsMissingWord(cell) ? CellKind::Missing : CellKind::Text;
  }
  if (parsed == kMissing) return CellKind::Missing;
  value = parsed;
  return CellKind::Number;
}

// A trait's column while it is read.
struct TraitColumn {
  std::size_t column = 0;
  std::vector<float> values;
  std::size_t numbers = 0, texts = 0, commas = 0;  // commas: numbers with a decimal comma
  std::size_t firstLine = 0;                       // of the first cell that is no number, and that cell
  std::string firstText;
};

void TakeValue(TraitColumn& trait, std::string_view cell, bool decimalCommas, std::size_t line) {
  float value = 0;
  std::string withPoint;
  CellKind kind = ReadNumber(cell, value);
  if (kind == CellKind::Text && decimalCommas && std::count(cell.begin(), cell.end(), ',') == 1) {
    withPoint = cell;
    std::replace(withPoint.begin(), withPoint.end(), ',', '.');
    kind = ReadNumber(withPoint, value);
    if (kind == CellKind::Number) ++trait.commas;
  }
  trait.values.push_back(value);
  if (kind == CellKind::Number) ++trait.numbers;
  if (kind == CellKind::Text && trait.texts++ == 0) {
    trait.firstLine = line;
    trait.firstText = cell.substr(0, 40);
  }
}

// ---- rows

struct Reading {
  CellReader reader;
  Headings headings;
  ChosenColumns chosen;
  NamePlaces environments, genotypes;
  std::vector<NamePlaces> blocks;
  std::vector<TraitColumn> traits;
  TrialData data;
  std::size_t faults = 0;
  std::string shownFaults;
};

void AddFault(Reading& reading, const std::string& why) {
  if (++reading.faults > kShownFaults) return;
  reading.shownFaults += "\n  line " + std::to_string(reading.reader.line) + ": " + why;
}

// Empty cells behind the last heading are what a spreadsheet leaves.
bool HasAllCells(Reading& reading) {
  std::vector<std::string_view>& cells = reading.reader.cells;
  const std::size_t wanted = reading.headings.size();
  while (cells.size() > wanted && cells.back().empty()) cells.pop_back();
  if (cells.size() == wanted) return true;
  AddFault(reading, Counted(static_cast<int64_t>(cells.size()), "cell") + " under " +
                        Counted(static_cast<int64_t>(wanted), "heading"));
  return false;
}

bool IsNoName(std::string_view cell) {
  return cell.empty() || EqualIgnoringCase(cell, "NA") || LibraryName(cell).empty();
}

void TakeRow(Reading& reading) {
  if (!HasAllCells(reading)) return;
  const std::vector<std::string_view>& cells = reading.reader.cells;
  std::array<std::string_view, kTrialKeys> keys;
  for (std::size_t k = 0; k < kTrialKeys; ++k) {
    const Column column = reading.chosen.keys[k];
    keys[k] = column ? cells[*column] : std::string_view("1");
    if (IsNoName(keys[k])) {
      AddFault(reading,
               "no " + std::string(KeyName(k)) + " in column " + InQuotes(reading.headings[*column]));
      return;
    }
  }
  const int32_t e = PlaceOf(reading.environments, keys[0], KeyName(0));
  reading.blocks.resize(reading.environments.names.size());
  reading.data.environment.push_back(e);
  reading.data.genotype.push_back(PlaceOf(reading.genotypes, keys[1], KeyName(1)));
  reading.data.block.push_back(PlaceOf(reading.blocks[static_cast<std::size_t>(e)], keys[2], KeyName(2)));
  for (TraitColumn& trait : reading.traits) {
    TakeValue(trait, cells[trait.column], reading.reader.separator != ',', reading.reader.line);
  }
}

// A heading with one word less than the rows: their first column has the names of the rows.
void InsertRowNames(Reading& reading) {
  CellReader ahead = reading.reader;
  if (NextRow(ahead) && ahead.cells.size() == reading.headings.size() + 1 && !ahead.cells.back().empty()) {
    reading.headings.insert(reading.headings.begin(), "");
  }
}

void ReadHeading(Reading& reading) {
  if (!NextRow(reading.reader)) Refuse("there is no heading line: the file is blank");
  for (const std::string_view cell : reading.reader.cells) reading.headings.emplace_back(cell);
  while (!reading.headings.empty() && reading.headings.back().empty()) reading.headings.pop_back();
  InsertRowNames(reading);
  for (std::size_t k = 0; k < reading.headings.size(); ++k) {
    const std::string& heading = reading.headings[k];
    const bool twice =
        !heading.empty() &&
        std::find(reading.headings.begin(), reading.headings.begin() + static_cast<std::ptrdiff_t>(k),
                  heading) != reading.headings.begin() + static_cast<std::ptrdiff_t>(k);
    if (twice) Refuse("two columns have the heading " + InQuotes(heading));
  }
}

void ReadRows(Reading& reading) {
  while (NextRow(reading.reader)) TakeRow(reading);
  if (reading.faults > 0) {
    const std::size_t more = reading.faults - std::min(reading.faults, kShownFaults);
    Refuse(Counted(static_cast<int64_t>(reading.faults), "row") + " cannot be used (cells parted by " +
           std::string(SeparatorName(reading.reader.separator)) + "):" + reading.shownFaults +
           (more > 0 ? "\n  and " + std::to_string(more) + " more" : ""));
  }
  if (reading.data.environment.empty()) Refuse("there is a heading and no row of a plot");
}

// ---- the result

void TakeTraits(Reading& reading, TrialInput& input) {
  NamePlaces names;
  for (TraitColumn& trait : reading.traits) {
    const std::string& heading = reading.headings[trait.column];
    if (trait.texts > 0 && trait.numbers == 0 && !reading.chosen.traitsGiven) {
      input.notes.push_back("column " + InQuotes(heading) + " has no numbers and was left out");
    } else if (trait.texts > 0) {
      std::string why = InQuotes(trait.firstText) + " in line " + std::to_string(trait.firstLine) +
                        " is no number of the analysis (up to 1e15)";
      if (trait.texts > 1) why += ", and " + std::to_string(trait.texts - 1) + " more";
      input.faults.push_back({heading, why});
    } else {
      if (trait.commas > 0)
        input.notes.push_back("column " + InQuotes(heading) +
                              ": commas in numbers are taken as decimal points");
      PlaceOf(names, heading, "trait");
      input.data.values.push_back(std::move(trait.values));
    }
  }
  NoteRenamed(names, "trait", input.notes);
  input.data.traits = std::move(names.names);
}

std::string ReadText(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  const auto fail = [&](const std::string& why) {
    throw Failure{ExitCode::Other, "cannot read " + path.string() + ": " + why};
  };
  if (status.type() == std::filesystem::file_type::not_found) fail("there is no such file");
  if (error) fail(error.message());
  if (std::filesystem::is_directory(status)) fail("it is a folder");
  if (!std::filesystem::is_regular_file(status)) fail("it is not a regular file");
  std::string text = ReadWhole(path);
  if (text.empty()) Refuse("the file is empty");
  constexpr std::size_t kHead = 4096, kMark = 3;
  const std::string_view head =
      std::string_view(text).substr(text.starts_with("\xef\xbb\xbf") ? kMark : 0, kHead);
  if (const auto kind = ForeignKind(head)) Refuse("this is no trial table: it looks like " + *kind);
  return text;
}

}  // namespace

TrialInput ReadTrial(const std::filesystem::path& path, const TrialColumns& columns) try {
  const std::string text = ReadText(path);
  TrialInput input;
  Reading reading;
  reading.reader = OpenCells(text);
  ReadHeading(reading);
  reading.chosen = ChooseColumns(reading.headings, columns, input.notes);
  for (const std::size_t column : reading.chosen.traits)
    reading.traits.push_back({column, {}, 0, 0, 0, 0, {}});
  ReadRows(reading);
  for (std::size_t k = 0; k < kTrialKeys; ++k) {
    if (const Column column = reading.chosen.keys[k]) input.keys[k] = reading.headings[*column];
  }
  input.separator = SeparatorName(reading.reader.separator);
  NoteRenamed(reading.environments, "environment", input.notes);
  NoteRenamed(reading.genotypes, "genotype", input.notes);
  input.data = std::move(reading.data);
  TakeTraits(reading, input);
  input.data.environments = std::move(reading.environments.names);
  input.data.genotypes = std::move(reading.genotypes.names);
  for (NamePlaces& blocks : reading.blocks) {
    NoteRenamed(blocks, "block", input.notes);
    input.data.blocks.push_back(std::move(blocks.names));
  }
  return input;
} catch (const Failure& failure) {
  if (failure.code != ExitCode::InputWrong) throw;
  throw Failure{failure.code, path.string() + ": " + failure.message};
}

}  // namespace host
