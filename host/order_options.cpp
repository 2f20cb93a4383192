#include "host/order_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_set>

#include "host/exit_code.h"
#include "host/file_walk.h"
#include "host/input_file.h"
#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::string_view kReserved = "unlinked";  // in the table of the results
constexpr std::size_t kGroupName = 19;

// A name counts to 35 characters, as in the library.
MarkerNumbers::const_iterator Find(const MarkerNumbers& numbers, std::string_view name) {
  return numbers.find(std::string(WithoutTrailing(name.substr(0, kMarkerNameLength), " ")));
}

bool IsNone(std::string_view group) { return group.empty() || group == "-" || group == "0"; }

struct AnchorLine {
  std::size_t line;
  int32_t marker;
  std::string_view group;
};

AnchorLine ReadAnchorLine(const std::filesystem::path& path, std::size_t lineNumber, std::string_view line,
                          const MarkerNumbers& numbers) {
  const std::size_t tab = line.find('\t');
  if (tab == std::string_view::npos) FailAt(path, lineNumber, "a marker name, a tab and a group are wanted");
  const std::string_view name = Trimmed(line.substr(0, tab)), group = Trimmed(line.substr(tab + 1));
  const auto found = Find(numbers, name);
  if (found == numbers.end()) FailAt(path, lineNumber, "no marker is named \"" + std::string(name) + "\"");
  if (group.find('\t') != std::string_view::npos) FailAt(path, lineNumber, "more than two columns");
  const bool number = AsInteger(group).has_value();
  if (number && *AsInteger(group) < 0) FailAt(path, lineNumber, "a group number is 0 or more");
  if (!number && (group.size() > kGroupName || group == kReserved)) {
    FailAt(path, lineNumber,
           "\"" + std::string(group) + "\" cannot be a group's name: at most " + std::to_string(kGroupName) +
               " characters, and not " + std::string(kReserved));
  }
  return {lineNumber, found->second, group};
}

std::vector<AnchorLine> ReadAnchorLines(const std::filesystem::path& path, std::string_view text,
                                        const MarkerNumbers& numbers) {
  std::vector<AnchorLine> rows;
  std::size_t lineNumber = 0;
  for (std::string_view line : Lines(text)) {
    ++lineNumber;
    if (line.starts_with('!') || Trimmed(line).empty()) continue;
    const bool heading =
        lineNumber == 1 && EqualIgnoringCase(Trimmed(line.substr(0, line.find('\t'))), "marker");
    if (heading && Find(numbers, "marker") == numbers.end()) continue;
    rows.push_back(ReadAnchorLine(path, lineNumber, line, numbers));
  }
  return rows;
}

// Numbers of the groups of a table: a number stands for itself, a name for the next that is free.
class GroupNumbers {
 public:
  explicit GroupNumbers(const std::vector<AnchorLine>& rows) {
    for (const AnchorLine& row : rows) {
      if (const auto number = AsInteger(row.group)) used_.insert(static_cast<int32_t>(*number));
    }
  }
  int32_t Of(std::string_view group, AnchorTable& table) {
    if (IsNone(group)) return 0;
    if (const auto number = AsInteger(group)) return static_cast<int32_t>(*number);
    const auto [place, isNew] = named_.emplace(std::string(group), 0);
    if (isNew) {
      while (!used_.insert(next_).second) ++next_;
      place->second = next_;
      table.names.emplace(next_, std::string(group));
    }
    return place->second;
  }

 private:
  std::unordered_set<int32_t> used_;
  std::unordered_map<std::string, int32_t> named_;
  int32_t next_ = 1;
};

std::string GroupWords(int32_t groups, int32_t minGroup) {
  return Counted(groups, "group") + " of " + Counted(minGroup, "marker") + " or more";
}

std::string RangeWords(const CutRange& range) {
  std::string words = "above " + Significant(Plain(range.low));
  if (!std::isinf(range.high)) words += " up to " + Significant(Plain(range.high));
  return words;
}

}  // namespace

MarkerNumbers NumbersOf(const MapData& data) {
  MarkerNumbers numbers;
  for (int32_t m = 1; m <= data.numMarkers; ++m) numbers.emplace(data.Name(m), m);
  return numbers;
}

std::vector<int32_t> ReadFrame(const std::filesystem::path& path, const MarkerNumbers& numbers) {
  const InputFile file = OpenInput(path);
  const std::string text = ReadWhole(file.absolute);
  std::vector<int32_t> frame;
  std::unordered_map<std::string_view, std::size_t> lineOf;
  std::unordered_set<int32_t> seen;
  std::size_t lineNumber = 0;
  for (std::string_view line : Lines(text)) {
    ++lineNumber;
    if (line.starts_with('!')) continue;
    line = Trimmed(line);
    if (line.empty()) continue;
    const auto found = Find(numbers, line);
    if (found == numbers.end()) FailAt(path, lineNumber, "no marker is named \"" + std::string(line) + "\"");
    const auto [earlier, isNew] = lineOf.emplace(found->first, lineNumber);
    if (!isNew) {
      FailAt(path, lineNumber,
             "\"" + std::string(line) + "\" stands already on line " + std::to_string(earlier->second));
    }
    // Two markers of a bin share one number.
    if (found->second > 0 && seen.insert(found->second).second) frame.push_back(found->second);
  }
  return frame;
}

AnchorTable ReadAnchorTable(const std::filesystem::path& path, const MarkerNumbers& numbers,
                            int32_t numMarkers) {
  const InputFile file = OpenInput(path);
  const std::string text = ReadWhole(file.absolute);
  const std::vector<AnchorLine> rows = ReadAnchorLines(path, text, numbers);
  AnchorTable table{std::vector<int32_t>(static_cast<std::size_t>(numMarkers), 0), {}};
  std::vector<std::size_t> lineOf(table.anchors.size(), 0);
  GroupNumbers groups(rows);
  for (const AnchorLine& row : rows) {
    const int32_t group = groups.Of(row.group, table);
    if (row.marker == 0 || group == 0) continue;
    const auto at = static_cast<std::size_t>(row.marker - 1);
    if (lineOf[at] > 0 && table.anchors[at] != group) {
      FailAt(path, row.line, "the marker has another group on line " + std::to_string(lineOf[at]));
    }
    table.anchors[at] = group;
    lineOf[at] = row.line;
  }
  return table;
}

ChosenCut ChooseCut(std::span<const int32_t> anchors, std::span<const Join> joins, int32_t groups,
                    int32_t minGroup) {
  const std::vector<CutRange> ranges = CutRanges(anchors, joins, minGroup);
  if (const auto range = RangeFor(ranges, groups)) {
    const float lod = CutIn(*range);
    return {lod, "LOD " + Significant(Plain(lod)) + " gives " + GroupWords(groups, minGroup) +
                     ", as every cut " + RangeWords(*range) + " does"};
  }
  std::string nearest;
  if (!ranges.empty()) {
    const auto best =
        std::min_element(ranges.begin(), ranges.end(), [&](const CutRange& a, const CutRange& b) {
          return std::abs(a.groups - groups) < std::abs(b.groups - groups);
        });
    const CutRange widest = *RangeFor(ranges, best->groups);
    nearest = "; the nearest is " + GroupWords(best->groups, minGroup) + " at LOD " +
              Significant(Plain(CutIn(widest)));
  }
  throw Failure{ExitCode::InputWrong,
                "no LOD cut gives " + GroupWords(groups, minGroup) + nearest + "; --sweep shows them all"};
}

}  // namespace host
