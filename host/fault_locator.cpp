#include "host/fault_locator.h"

#include <algorithm>
#include <charconv>

#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kJudged = 128;  // a line is judged by its first 128 characters
constexpr std::size_t kHeaderFields = 5;
constexpr std::size_t kSizeField = 4, kMarkersField = 3;

// Words of a header report, in the order of the fields in the file.
constexpr std::string_view kHeaderWords[kHeaderFields] = {
    "Population Type!", "Mapping Function", "Marker Space", "Number of Markers", "Population Size"};
constexpr std::string_view kHeaderRangeWord = "Population Type out of range";

// A row that is of no category gives no genotype at all or mixes classes that exclude each other.
constexpr std::string_view kCategoryWords = "impossible Marker Category";
constexpr std::string_view kCategoryHint =
    "the marker has no genotype that this population can show, or mixes D or R with genotypes that exclude "
    "them";

// Files whose header holds another count of numbers than the five of a marker file.
struct HeaderRow {
  int numbers;
  std::string_view kind;
};
constexpr HeaderRow kOtherHeaders[] = {
    {3, "a CMP or CSL"}, {6, "an SDL"}, {7, "a MET, NAM, CDQ or PLQ"}, {8, "a BIP"}};
constexpr std::string_view kClonalCategories[] = {"ABCD", "A=B", "C=D", "AB=CD", "A=CB=D", "A=DB=C"};

struct Walk {
  std::vector<std::string_view> lines;
  std::size_t next = 0;
  bool plain = true;
};

bool IsData(std::string_view line) {
  const std::string_view judged = line.substr(0, kJudged);
  return judged.find_first_not_of(' ') != std::string_view::npos && !judged.starts_with('!');
}

// Tokens of a line. `plain` is cleared by anything that could make the count differ from what a reader takes.
std::vector<std::string_view> Tokens(std::string_view line, bool& plain) {
  constexpr std::string_view separators = " \t";
  std::vector<std::string_view> tokens;
  for (std::size_t at = line.find_first_not_of(separators); at != std::string_view::npos;) {
    const std::size_t end = std::min(line.find_first_of(separators, at), line.size());
    const std::string_view token = line.substr(at, end - at);
    const std::size_t digits = token.find_first_not_of("0123456789");
    const bool repeat = digits != 0 && digits != std::string_view::npos && token[digits] == '*';
    if (repeat || token.find_first_of("/,'\"") != std::string_view::npos) plain = false;
    tokens.push_back(token);
    at = line.find_first_not_of(separators, end);
  }
  return tokens;
}

bool ToData(Walk& walk) {
  while (walk.next < walk.lines.size() && !IsData(walk.lines[walk.next])) ++walk.next;
  return walk.next < walk.lines.size();
}

// Takes `count` tokens over as many lines as they need; the rest of the last line is dropped.
bool TakeRow(Walk& walk, std::size_t count, std::vector<MarkerRow>& rows) {
  std::size_t taken = 0;
  for (bool first = true; taken < count; ++walk.next) {
    if (walk.next == walk.lines.size()) return false;
    const std::size_t here = Tokens(walk.lines[walk.next], walk.plain).size();
    if (first && here > 0) {
      rows.push_back({walk.next + 1, here});
      first = false;
    }
    taken += here;
    if (!walk.plain) return false;
  }
  return true;
}

std::optional<int64_t> Integer(std::string_view token) {
  if (token.starts_with('+')) token.remove_prefix(1);
  int64_t value = 0;
  const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), value);
  if (error != std::errc{} || end != token.data() + token.size()) return std::nullopt;
  return value;
}

bool TakeHeader(Walk& walk, FileLayout& layout) {
  for (std::size_t field = 0; field < kHeaderFields; ++field) {
    if (!ToData(walk)) return false;
    layout.header.push_back(walk.next + 1);
    bool ignored = true;
    const auto tokens = Tokens(walk.lines[walk.next], ignored);
    if (tokens.empty()) return false;  // tabs alone: the value is sought on the next line
    layout.values[field] = Integer(tokens.front());
    if (!layout.values[field]) return false;
    ++walk.next;
  }
  return true;
}

void CountLeadingNumbers(Walk walk, FileLayout& layout) {
  for (; ToData(walk); ++walk.next) {
    bool ignored = true;
    const auto tokens = Tokens(walk.lines[walk.next], ignored);
    if (tokens.empty()) return;
    layout.firstRowWord = tokens.front();
    if (!Integer(tokens.front()) || (tokens.size() > 1 && !tokens[1].starts_with('!'))) return;
    ++layout.leadingNumbers;
  }
}

bool TakeRows(Walk& walk, int64_t rows, std::size_t tokens, std::vector<MarkerRow>& places) {
  if (!ToData(walk)) return false;
  for (int64_t m = 0; m < rows; ++m) {
    if (!TakeRow(walk, tokens, places)) return false;
  }
  return true;
}

// The integer in the first eight columns behind "= ", as in "  MarkerID, LineID, Markertype =        5 3 AC".
std::optional<std::size_t> DetailNumber(std::string_view detail) {
  if (!detail.starts_with("  MarkerID")) return std::nullopt;
  const std::size_t equals = detail.find("= ");
  if (equals == std::string_view::npos) return std::nullopt;
  const std::string_view field = detail.substr(equals + 2, 8);
  const std::size_t start = std::min(field.find_first_not_of(' '), field.size());
  const auto value = Integer(field.substr(start, field.find_last_not_of(' ') + 1 - start));
  if (!value || *value < 1) return std::nullopt;
  return static_cast<std::size_t>(*value);
}

std::optional<std::size_t> HeaderFieldOf(std::string_view report) {
  if (report.find(kHeaderRangeWord) != std::string_view::npos) return 0;
  for (std::size_t field = 0; field < kHeaderFields; ++field) {
    if (report.find(kHeaderWords[field]) != std::string_view::npos) return field;
  }
  return std::nullopt;
}

std::string RowHint(const FileLayout& layout, const MarkerRow& row, std::string_view text,
                    std::size_t wanted) {
  if (text.starts_with('!')) return "a remark line may not stand between the rows of a section";
  if (row.firstLine != wanted && wanted == 2) {
    return "an anchor row is a marker name and a group number; this line holds " +
           Counted(static_cast<int64_t>(row.firstLine), "word");
  }
  if (row.firstLine != wanted) {
    return "this line holds a name and " + Counted(static_cast<int64_t>(row.firstLine) - 1, "genotype") +
           ", the header says " + std::to_string(*layout.values[kSizeField]);
  }
  return {};
}

void PlaceRowFault(const FileLayout& layout, const std::vector<std::string_view>& lines, Fault& fault) {
  const bool anchors = fault.report.front().find("nchor") != std::string::npos;
  const std::vector<MarkerRow>& rows = anchors ? layout.anchors : layout.markers;
  for (const std::string& detail : fault.report) {
    const auto marker = DetailNumber(detail);
    if (!marker) continue;
    if (*marker > rows.size()) {
      if (layout.endsEarly && fault.hint.empty()) {
        fault.hint = "the file has " + Counted(static_cast<int64_t>(layout.lines), "line") +
                     " and ends before all rows are read";
      }
      continue;
    }
    const MarkerRow& row = rows[*marker - 1];
    fault.lines.push_back(row.line);
    const std::size_t wanted = anchors ? 2 : static_cast<std::size_t>(*layout.values[kSizeField]) + 1;
    if (fault.hint.empty()) fault.hint = RowHint(layout, row, lines[row.line - 1], wanted);
  }
}

std::string OtherKindHint(const FileLayout& layout) {
  for (const HeaderRow& row : kOtherHeaders) {
    if (row.numbers != layout.leadingNumbers) continue;
    return "the header holds " + std::to_string(row.numbers) +
           " numbers, a marker file has 5; it looks like " + std::string(row.kind) + " project file";
  }
  if (layout.leadingNumbers != static_cast<int>(kHeaderFields)) return {};
  const std::string& word = layout.firstRowWord;
  if (std::find(std::begin(kClonalCategories), std::end(kClonalCategories), word) !=
      std::end(kClonalCategories)) {
    return "the rows begin with a category; it looks like a CDM or PLM project file";
  }
  return {};
}

void PlaceFault(const FileLayout& layout, const std::vector<std::string_view>& lines, Fault& fault) {
  if (const auto field = HeaderFieldOf(fault.report.front())) {
    if (*field < layout.header.size()) {
      fault.lines.push_back(layout.header[*field]);
    } else {
      fault.hint = "the file ends before this field";
    }
  } else {
    PlaceRowFault(layout, lines, fault);
  }
  if (fault.hint.empty() && fault.report.front().find(kCategoryWords) != std::string::npos) {
    fault.hint = kCategoryHint;
  }
  if (const std::string other = OtherKindHint(layout); !other.empty()) fault.hint = other;
}

}  // namespace

FileLayout WalkMarkerFile(std::string_view text) {
  FileLayout layout;
  Walk walk{Lines(text)};
  layout.lines = walk.lines.size();
  CountLeadingNumbers(walk, layout);
  const bool header = TakeHeader(walk, layout);
  if (!header || *layout.values[kSizeField] < 1 || *layout.values[kMarkersField] < 1) return layout;
  const int64_t markers = *layout.values[kMarkersField];
  const std::size_t tokens = static_cast<std::size_t>(*layout.values[kSizeField]) + 1;
  const bool complete =
      TakeRows(walk, markers, tokens, layout.markers) && TakeRows(walk, markers, 2, layout.anchors);
  layout.endsEarly = !complete && walk.plain;
  return layout;
}

std::vector<Fault> LocateFaults(const std::vector<std::string>& log, std::string_view text) {
  std::vector<Fault> faults;
  for (const std::string& line : log) {
    if (line.starts_with("--Input error:")) faults.push_back({{line}, {}, {}});
    if (line.starts_with("  ") && !faults.empty()) faults.back().report.push_back(line);
  }
  const FileLayout layout = WalkMarkerFile(text);
  const std::vector<std::string_view> lines = Lines(text);
  for (Fault& fault : faults) PlaceFault(layout, lines, fault);
  return faults;
}

}  // namespace host
