#include "host/fault_locator.h"

#include <algorithm>
#include <utility>

#include "host/file_walk.h"
#include "host/isolated_call.h"
#include "host/report_places.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::string_view kReportStart = "--Input error:";
constexpr std::string_view kNoNumberHint = "missing values are written -100, NA, na, * or .";
constexpr std::string_view kNothingShared = "No common markers are found on all maps!";
constexpr std::string_view kNothingSharedHint =
    "a consensus needs at least one marker that stands on every map, written alike";
constexpr std::size_t kValueWidth = 20;  // characters of a value that the library reads
constexpr auto kMarkerRows = static_cast<std::size_t>(Section::Markers);
constexpr auto kBreedingRows = static_cast<std::size_t>(Section::Breeding);
constexpr std::string_view kUnmatched = "MarkerType are not matched!";

// What is to be said of reports whose rows have the right count of words.
struct HintRow {
  std::string_view words, hint;
};
constexpr HintRow kHints[] = {
    {"impossible Marker Category",
     "the marker has no genotype that this population can show, or mixes D or R with genotypes that exclude "
     "them"},
    {"Marker category out of range",
     "the categories of a clonal F1 are ABCD, A=B, C=D and AB=CD, those of a double cross ABCD, A=B, C=D, "
     "A=CB=D and A=DB=C"},
    {"marker type of the parents",
     "in front of the name stands a letter a parent, four letters A to D or eight A to H; parents with the "
     "same allele have the same letter"},
    {"non-polymor", "the marker shows one genotype only, or one that its category does not have"},
    {"illeagal marker", "a genotype of this row is none of the marker's category or population"},
};

// The kinds of file by the count of numbers that their header holds.
struct HeaderRow {
  int numbers;
  std::string_view kind, modules;
};
constexpr HeaderRow kHeaders[] = {
    {3, "a CMP or CSL project file", "CMP CSL"},
    {4, "a genomic-selection file", "GS"},
    {5, "a MAP, BIN, CDM or PLM project file", "MAP BIN CDM PLM"},
    {6, "an SDL or CSL project file", "SDL CSL"},
    {7, "a MET, NAM, CDQ or PLQ project file", "MET NAM CDQ PLQ"},
    {8, "a BIP project file", "BIP"},
};
constexpr std::string_view kClonalCategories[] = {"ABCD", "A=B", "C=D", "AB=CD", "A=CB=D", "A=DB=C"};

// What a row of a section holds, where it holds as many words as its kind says.
struct ShapeRow {
  Section section;
  std::string_view what;
};
constexpr ShapeRow kShapes[] = {
    {Section::Families, "a family row is a name and a size"},
    {Section::Chromosomes, "a chromosome row is a name and the number of markers"},
    {Section::Map, "a map row is a marker name, the chromosome's number and a value"},
    {Section::Anchors, "an anchor row is a marker name and a group number"},
};

std::string RowHint(const FileLayout& layout, Section section, std::string_view line) {
  if (line.starts_with('!')) return "a remark line may not stand between the rows of a section";
  const std::size_t wanted = layout.Rows(section).words;
  // Only where each word on the line is one for the reader too.
  if (wanted == 0 || line.find_first_of("/,'\"") != std::string_view::npos) return {};
  const std::size_t words = BlankParted(line).size();
  if (words == wanted) return {};
  for (const ShapeRow& shape : kShapes) {
    if (shape.section != section) continue;
    return std::string(shape.what) + "; this line holds " + Counted(static_cast<int64_t>(words), "word");
  }
  const std::size_t ahead = section == Section::Categorised ? 2 : 1;
  const bool markers =
      section == Section::Markers || section == Section::Categorised || section == Section::Breeding;
  return std::string("this line holds ") + (ahead == 2 ? "a category, a name and " : "a name and ") +
         Counted(static_cast<int64_t>(words) - static_cast<int64_t>(ahead), markers ? "genotype" : "value") +
         ", the header says " + std::to_string(wanted - ahead);
}

std::string EarlyEnd(const FileLayout& layout) {
  return "the file has " + Counted(static_cast<int64_t>(layout.fileLines), "line") +
         " and ends before all rows are read";
}

void PlaceDetail(const FileLayout& layout, const std::vector<std::string_view>& lines,
                 std::string_view detail, Fault& fault) {
  const std::vector<RowPlace> places = PlacesOfReport(fault.report.front(), detail, layout);
  if (places.empty() && layout.endsEarly) fault.hint = EarlyEnd(layout);
  for (const RowPlace& place : places) {
    const std::vector<std::size_t>& rows = layout.Rows(place.section).lines;
    if (place.row > rows.size()) {
      if (layout.endsEarly && fault.hint.empty()) fault.hint = EarlyEnd(layout);
      continue;
    }
    const std::size_t line = rows[place.row - 1];
    fault.lines.push_back(line);
    if (fault.hint.empty()) fault.hint = RowHint(layout, place.section, lines[line - 1]);
  }
}

// A header with another count of numbers than the module's; told only where the walk did not get through.
std::string OtherKindHint(const FileLayout& layout, std::string_view module) {
  // A word that stands alone is a header value that is none.
  if (layout.complete || layout.firstRowWords == 1) return {};
  const auto own = std::find_if(std::begin(kHeaders), std::end(kHeaders), [&](const HeaderRow& row) {
    return row.numbers == layout.leadingNumbers && row.modules.find(module) != std::string_view::npos;
  });
  const std::string& word = layout.firstRowWord;
  const bool category = std::find(std::begin(kClonalCategories), std::end(kClonalCategories), word) !=
                        std::end(kClonalCategories);
  if (own != std::end(kHeaders)) {
    const bool plain = module == "MAP" || module == "BIN";
    return plain && category ? "the rows begin with a category; it looks like a CDM or PLM project file" : "";
  }
  for (const HeaderRow& row : kHeaders) {
    if (row.numbers != layout.leadingNumbers) continue;
    return "the header holds " + std::to_string(row.numbers) + " numbers, which is not what a file of kind " +
           std::string(module) + " has; it looks like " + std::string(row.kind);
  }
  return {};
}

bool IsUnmatched(const Fault& fault) { return fault.report.front().find(kUnmatched) != std::string::npos; }

// Reports without a number, one for each pair of rows with different names, in their order.
void PlaceUnmatched(const FileLayout& layout, std::vector<Fault>& faults) {
  constexpr std::size_t kNameWidth = 35;
  const SectionRows &training = layout.Rows(Section::Markers), &breeding = layout.Rows(Section::Breeding);
  std::vector<std::size_t> rows;
  for (std::size_t m = 0; m < std::min(training.names.size(), breeding.names.size()); ++m) {
    if (training.names[m].substr(0, kNameWidth) != breeding.names[m].substr(0, kNameWidth)) rows.push_back(m);
  }
  const auto reports = std::count_if(faults.begin(), faults.end(), IsUnmatched);
  if (static_cast<std::size_t>(reports) != rows.size()) return;
  std::size_t k = 0;
  for (Fault& fault : faults) {
    if (!IsUnmatched(fault)) continue;
    const std::size_t m = rows[k++];
    fault.lines = {training.lines[m], breeding.lines[m]};
    fault.hint = "marker " + std::to_string(m + 1) + " is \"" + training.names[m] +
                 "\" in the training population and \"" + breeding.names[m] + "\" in the breeding population";
  }
}

// "tessarmont: the value 'abc' of 'yield' is not a number": the first row of that trait with that word.
void PlaceNoNumber(const FileLayout& layout, const std::vector<std::string_view>& lines, Fault& fault) {
  constexpr std::size_t kTraitName = 19;
  constexpr std::string_view middle = "' of '", last = "' is not a number";
  const std::string_view report = fault.report.front();
  const std::size_t end = report.rfind(last), parted = report.rfind(middle, end);
  if (end == std::string_view::npos || parted == std::string_view::npos) return;
  const std::string_view value = report.substr(kNoNumber.size(), parted - kNoNumber.size());
  const std::string_view trait = report.substr(parted + middle.size(), end - parted - middle.size());
  const bool environments = !layout.Rows(Section::EnvironmentRows).lines.empty();
  const SectionRows& rows = layout.Rows(environments ? Section::EnvironmentRows : Section::Phenotypes);
  for (std::size_t t = 0; t < rows.lines.size(); ++t) {
    if (WithoutTrailing(rows.names[t].substr(0, kTraitName), " ") != trait) continue;
    const std::size_t next = t + 1 < rows.lines.size() ? rows.lines[t + 1] : lines.size() + 1;
    for (std::size_t line = rows.lines[t]; line < next; ++line) {
      const std::vector<std::string_view> words = BlankParted(lines[line - 1]);
      const auto bad = std::find_if(words.begin(), words.end(), [&](std::string_view word) {
        return WithoutTrailing(word.substr(0, kValueWidth), ",") == WithoutTrailing(value, " ");
      });
      if (bad == words.end()) continue;
      fault.lines.push_back(line);
      fault.hint = kNoNumberHint;
      return;
    }
  }
}

void PlaceFault(const FileLayout& layout, const std::vector<std::string_view>& lines, std::string_view module,
                Fault& fault) {
  const std::string& report = fault.report.front();
  if (report == kNothingShared) {
    fault.hint = kNothingSharedHint;
    return;
  }
  if (report.starts_with(kNoNumber)) return PlaceNoNumber(layout, lines, fault);
  if (const auto field = FieldOfReport(report, layout, module)) {
    if (layout.FieldLine(*field) > 0) {
      fault.lines.push_back(layout.FieldLine(*field));
    } else {
      fault.hint = "the file ends before this field";
    }
  } else if (HasDetails(report)) {
    for (std::size_t k = 1; k < fault.report.size(); ++k) PlaceDetail(layout, lines, fault.report[k], fault);
  } else {
    PlaceDetail(layout, lines, {}, fault);
  }
  for (const HintRow& row : kHints) {
    if (fault.hint.empty() && report.find(row.words) != std::string::npos) fault.hint = row.hint;
  }
  if (const std::string other = OtherKindHint(layout, module); !other.empty()) fault.hint = other;
}

bool IsDetail(std::string_view line) {
  return line.starts_with("  ") || line.starts_with("ChromID, MarkerID =");
}

}  // namespace

std::vector<Fault> LocateFaults(const std::vector<std::string>& log, std::string_view text,
                                std::string_view module, bool breeding) {
  std::vector<Fault> faults;
  for (const std::string& line : log) {
    if (line.starts_with(kReportStart) || line == kNothingShared || line.starts_with(kNoNumber)) {
      faults.push_back({{line}, {}, {}});
    } else if (IsDetail(line) && !faults.empty()) {
      faults.back().report.push_back(line);
    }
  }
  FileLayout layout = WalkFile(text, module);
  const std::vector<std::string_view> lines = Lines(text);
  PlaceUnmatched(layout, faults);
  // The readers' words are the same for both tables of a genomic-selection file.
  if (breeding) std::swap(layout.rows[kMarkerRows], layout.rows[kBreedingRows]);
  for (Fault& fault : faults) {
    if (!IsUnmatched(fault)) PlaceFault(layout, lines, module, fault);
  }
  return faults;
}

}  // namespace host
