#include "host/precheck.h"

#include <algorithm>

#include "host/file_walk.h"
#include "host/precheck_scan.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kPeeked = 50;       // rows that tell how long the rows of a table are
constexpr int64_t kMostTold = 1'000'000;  // traits and environments, so that their product stays a number

// The tables: how they are called, and which field tells their rows (Indicator: none does).
struct SectionCheck {
  Section section;
  std::string_view name;
  Field count;
};
constexpr SectionCheck kTableRows[] = {
    {Section::Families, "families", Field::NumFamilies},
    {Section::Chromosomes, "chromosomes", Field::NumChromosomes},
    {Section::Map, "the linkage map", Field::Indicator},
    {Section::Markers, "genotypes", Field::NumMarkers},
    {Section::Categorised, "genotypes", Field::NumMarkers},
    {Section::Anchors, "anchors", Field::Indicator},
    {Section::Phenotypes, "phenotypes", Field::NumTraits},
    {Section::EnvironmentRows, "phenotypes", Field::NumEnvironments},
    {Section::LineValues, "values", Field::Indicator},
};

const SectionCheck* TableOf(Section section) {
  const auto* row = std::find_if(std::begin(kTableRows), std::end(kTableRows),
                                 [&](const SectionCheck& candidate) { return candidate.section == section; });
  return row == std::end(kTableRows) ? nullptr : row;
}

struct Table {
  const SectionCheck& row;
  std::optional<std::size_t> rows;  // that there should be
  std::size_t told = 0;             // words a row, as the header has it; 0 unknown
  std::size_t wanted = 0;           // words a row that the rows are held to
  std::size_t firstPart = 0;    // words of the first line of a row that runs over several; 0 for rows a line
  const Step* after = nullptr;  // the table behind it
};

std::optional<int64_t> LinesOf(const Sheet& sheet) {
  if (sheet.module != "NAM") return sheet.Value(Field::PopulationSize);
  if (!sheet.familiesGood || sheet.familyLines == 0) return std::nullopt;
  return sheet.familyLines;
}

std::optional<std::size_t> RowsDue(const Sheet& sheet, const SectionCheck& row) {
  std::optional<int64_t> count;
  if (row.count != Field::Indicator) count = sheet.Value(row.count);
  if (row.section == Section::Map || (row.count == Field::NumMarkers && !sheet.chromosomes.empty())) {
    count = 0;
    for (const ChromosomeRow& chromosome : sheet.chromosomes) {
      if (!chromosome.markers || !count) return std::nullopt;
      *count += *chromosome.markers;
    }
  }
  if (row.section == Section::Anchors) count = static_cast<int64_t>(sheet.markerNames.size());
  if (row.section == Section::LineValues) {
    const auto traits = sheet.Value(Field::NumTraits), environments = sheet.Value(Field::NumEnvironments),
               replications = sheet.Value(Field::NumReplications);
    if (traits && environments && replications && *traits < kMostTold && *environments < kMostTold)
      count = *traits * *environments * *replications;
  }
  if (!count) return std::nullopt;
  return static_cast<std::size_t>(std::max<int64_t>(*count, 0));
}

// Tables whose rows do not grow with the population.
bool IsFixed(Section section) {
  return section == Section::Families || section == Section::Chromosomes || section == Section::Map ||
         section == Section::Anchors;
}

std::size_t WordsTold(const Sheet& sheet, Section section) {
  if (section == Section::Map) return 3;
  if (section == Section::Families || section == Section::Chromosomes || section == Section::Anchors)
    return 2;
  const auto lines = LinesOf(sheet);
  return lines ? static_cast<std::size_t>(*lines) + (section == Section::Categorised ? 2 : 1) : 0;
}

// How long a row is where a name that fell apart counts as one word.
std::size_t Length(const Scan& scan, const Table& table, const LineWords& words) {
  const std::size_t count = words.words.size();
  if (count == table.told || IsFixed(table.row.section)) return count;
  std::size_t cells = table.row.section == Section::Categorised ? 2 : 1;
  const std::size_t ahead = cells;
  while (cells < count && !GoesOn(scan.sheet, table.row.section, words.words[cells])) ++cells;
  return cells < count ? count - cells + ahead : count;
}

// The lengths of the first lines of a table, up to a remark.
std::vector<std::size_t> PeekLengths(Scan& scan, const Table& table) {
  std::vector<std::size_t> lengths;
  for (std::size_t line = scan.next; line < scan.lines.size() && lengths.size() < kPeeked; ++line) {
    if (IsBlank(scan.lines[line])) continue;
    if (IsRemark(scan.lines[line])) break;
    Split(scan, line, scan.peeked);
    lengths.push_back(Length(scan, table, scan.peeked));
  }
  return lengths;
}

// Whether the first row runs over several lines and ends with one of them.
bool RunsOver(const std::vector<std::size_t>& lengths, std::size_t told) {
  std::size_t sum = 0;
  for (const std::size_t length : lengths) {
    if (length >= told) return false;
    sum += length;
    if (sum >= told) return sum == told;
  }
  return false;
}

// Rows are held to the header where some have the length that it tells, else to the length that they have.
void SetLength(Scan& scan, Table& table) {
  table.wanted = table.told = WordsTold(scan.sheet, table.row.section);
  std::vector<std::size_t> lengths = PeekLengths(scan, table);
  if (lengths.empty()) return;
  if (table.told > 0 && RunsOver(lengths, table.told)) {
    table.firstPart = lengths.front();
    return;
  }
  if (IsFixed(table.row.section) || scan.sizeConfirmed) return;
  const std::size_t rows = std::max<std::size_t>(1, std::min(table.rows.value_or(kPeeked), lengths.size()));
  lengths.resize(rows);
  const auto fitting = static_cast<std::size_t>(std::count(lengths.begin(), lengths.end(), table.told));
  scan.sizeConfirmed = 4 * fitting >= rows;
  if (scan.sizeConfirmed) return;
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(rows / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  table.wanted = std::max<std::size_t>(*middle, 2);
}

bool Alike(const Scan& scan, const Table& table, const LineWords& words) {
  return LooksLike(scan.sheet, table.row.section, table.wanted, words);
}

bool AlikeAfter(const Scan& scan, const Table& table, const LineWords& words) {
  if (table.after == nullptr || TableOf(table.after->section) == nullptr) return false;
  return LooksLike(scan.sheet, table.after->section, WordsTold(scan.sheet, table.after->section), words);
}

// Whether the remark at hand stands between the rows of the table, and does not end it.
bool RemarkWithin(Scan& scan, const Table& table, std::size_t seen) {
  if (table.rows && seen >= *table.rows) return false;
  const std::size_t line = DataFrom(scan, scan.next);
  if (line == scan.lines.size()) return false;
  Split(scan, line, scan.peeked);
  const bool row = scan.peeked.words.size() == table.wanted || Alike(scan, table, scan.peeked);
  return row && !AlikeAfter(scan, table, scan.peeked);
}

// Whether the line split last is a row of the table, also when that has all its rows.
bool IsRow(const Scan& scan, const Table& table, std::size_t seen) {
  if (table.rows && seen >= *table.rows) {
    const bool open =
        table.after == nullptr && table.row.count != Field::NumMarkers;  // parameters may follow
    return !open && Alike(scan, table, scan.words) && !AlikeAfter(scan, table, scan.words);
  }
  const bool shaped = IsFixed(table.row.section) && scan.words.words.size() == table.wanted;
  return shaped || !AlikeAfter(scan, table, scan.words) || Alike(scan, table, scan.words);
}

// Adds the lines that a row runs over to, as the reader does; a line that begins as rows do begins the next.
void TakeRest(Scan& scan, const Table& table) {
  while (scan.words.words.size() < table.wanted && scan.words.Whole() && scan.next < scan.lines.size()) {
    Split(scan, scan.next, scan.peeked);
    const std::vector<std::string_view>& words = scan.peeked.words;
    const bool begins = words.size() == table.firstPart && !words.empty() && table.wanted > 3 &&
                        !GoesOn(scan.sheet, table.row.section, words.front());
    if (begins) return;
    AddWords(scan.lines[scan.next++], table.wanted, scan.words);
  }
}

// Whether a row that is too short runs on over the next lines and then has just the words that it should: these
// lines go on with what may stand in a row, not with a name.
bool RunsOn(Scan& scan, const Table& table) {
  std::size_t sum = scan.words.words.size();
  if (sum >= table.wanted || !scan.words.Whole() || table.wanted <= 3) return false;
  for (std::size_t line = scan.next; line < std::min(scan.lines.size(), scan.next + kPeeked); ++line) {
    Split(scan, line, scan.peeked, table.wanted);
    const std::vector<std::string_view>& words = scan.peeked.words;
    if (words.empty()) continue;
    if (words.size() >= table.wanted || !GoesOn(scan.sheet, table.row.section, words.front())) return false;
    sum += words.size();
    if (sum >= table.wanted) return sum == table.wanted;
  }
  return false;
}

void TellCount(Scan& scan, const Table& table, std::size_t seen, std::size_t firstLine) {
  if (!table.rows || seen == *table.rows) return;
  const bool itemised = table.row.section == Section::Map || table.row.section == Section::Anchors;
  if (itemised && seen > 0) return;  // each chromosome or marker is told
  const std::size_t here = seen == 0 ? std::min(scan.next + 1, scan.lines.size()) : firstLine;
  const std::size_t header = table.row.count == Field::Indicator ? 0 : scan.sheet.Line(table.row.count);
  std::vector<std::size_t> lines{here};
  if (header > 0 && header != here) lines.insert(lines.begin(), header);
  Add(scan.sheet, table.row.section == Section::Anchors ? FindingKind::Anchor : FindingKind::Count, lines,
      "rows of " + std::string(table.row.name) + ": " + std::to_string(seen) + " there, " +
          std::to_string(*table.rows) + " due");
}

void TellLength(Scan& scan, const Table& table, std::size_t firstLine) {
  if (table.told == 0 || table.wanted == table.told) return;
  const std::size_t ahead = table.row.section == Section::Categorised ? 2 : 1;
  std::vector<std::size_t> lines{firstLine};
  if (const std::size_t line = scan.sheet.Line(Field::PopulationSize); line > 0)
    lines.insert(lines.begin(), line);
  Add(scan.sheet, FindingKind::Count, lines,
      "the rows of " + std::string(table.row.name) + " have " +
          Counted(static_cast<int64_t>(table.wanted - ahead), "value") + ", the population has " +
          std::to_string(table.told - ahead) + " lines");
}

void TakeTable(Scan& scan, Table& table) {
  scan.next = DataFrom(scan, scan.next);
  SetLength(scan, table);
  std::size_t seen = 0, firstLine = 0;
  while (scan.next < scan.lines.size()) {
    const std::string_view line = scan.lines[scan.next];
    if (IsBlank(line)) {
      ++scan.next;
      continue;
    }
    if (IsRemark(line)) {
      if (!RemarkWithin(scan, table, seen)) break;
      Add(scan.sheet, FindingKind::Remark, {scan.next + 1},
          "a remark stands between the rows of a table, where its words are read as a row");
      scan.next = DataFrom(scan, scan.next);
      continue;
    }
    Split(scan, scan.next, scan.words);
    if (table.firstPart == 0 && !IsRow(scan, table, seen)) break;
    if (table.firstPart > 0 && table.rows && seen >= *table.rows) break;
    const std::size_t number = ++scan.next;
    if (seen++ == 0) firstLine = number;
    if (table.firstPart > 0 || RunsOn(scan, table)) TakeRest(scan, table);
    LookAtRow(scan.sheet, table.row.section, {number, line, scan.words, table.wanted});
  }
  TellCount(scan, table, seen, firstLine);
  if (seen > 0) TellLength(scan, table, firstLine);
}

void TakeTables(Scan& scan) {
  const std::vector<Step> steps = StepsOf(scan);
  for (std::size_t k = HeaderSize(steps); k < steps.size(); ++k) {
    const SectionCheck* row = TableOf(steps[k].section);
    if (row == nullptr) return;  // simulations have a form of their own
    const bool ended = DataFrom(scan, scan.next) == scan.lines.size();
    Table table{*row, RowsDue(scan.sheet, *row)};
    if (k + 1 < steps.size()) table.after = &steps[k + 1];
    TakeTable(scan, table);
    if (ended) return;  // told once
  }
}

}  // namespace

std::vector<Finding> FindFaults(std::string_view text, std::string_view module, int32_t moduleCode) {
  Scan scan;
  scan.lines = Lines(text);
  if (scan.lines.empty()) return {};
  scan.sheet.module = module;
  scan.sheet.rules = RulesOf(module, moduleCode);
  if (module != "CMP" && scan.sheet.rules == Rules::None) return {};  // nobody knows how its rows look
  if (TakeHeader(scan)) {
    TakeTables(scan);
    CompareTables(scan.sheet, module == "MAP" || module == "BIN" || module == "CDM" || module == "PLM");
  }
  std::stable_sort(scan.sheet.findings.begin(), scan.sheet.findings.end(),
                   [](const Finding& a, const Finding& b) { return a.lines.back() < b.lines.back(); });
  return std::move(scan.sheet.findings);
}

}  // namespace host
