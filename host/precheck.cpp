#include "host/precheck.h"

#include <algorithm>
#include <span>

#include "host/file_walk.h"
#include "host/precheck_rows.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kPeeked = 50;       // rows that tell how long the rows of a table are
constexpr int64_t kMostTold = 1'000'000;  // traits and environments, so that their product stays a number
constexpr std::size_t kMostWords = 5'000'000;  // of a row: repeats must not fill the memory

// The fields of the header: what they are called, and what they may be.
struct FieldRow {
  Field field;
  std::string_view name, rows;  // `rows`: of what the field is the number, as rows of a table
  int64_t most;                 // 0: no limit
  std::string_view range;
};
constexpr FieldRow kFieldRows[] = {
    {Field::Indicator, "indicator", "", 2, "1 for mapping or 2 for simulation"},
    {Field::PopulationType, "population type", "", 0, ""},
    {Field::MappingFunction, "mapping function", "", 3, "1 Kosambi, 2 Haldane or 3 Morgan"},
    {Field::MarkerSpaceType, "marker space type", "", 2, "1 for intervals or 2 for positions"},
    {Field::MarkerSpaceUnit, "marker space unit", "", 2, "1 for centiMorgans or 2 for Morgan"},
    {Field::NumChromosomes, "number of chromosomes", "chromosome", 0, "at least 1"},
    {Field::NumMarkers, "number of markers", "marker", 0, "at least 1"},
    {Field::PopulationSize, "population size", "", 0, "at least 1"},
    {Field::NumTraits, "number of traits", "trait", 0, "at least 1"},
    {Field::NumEnvironments, "number of environments", "environment", 0, "at least 1"},
    {Field::NumReplications, "number of replications", "", 0, "at least 1"},
    {Field::NumFamilies, "number of families", "family", 0, "at least 1"},
};

const FieldRow& RowOf(Field field) {
  return *std::find_if(std::begin(kFieldRows), std::end(kFieldRows) - 1,
                       [&](const FieldRow& row) { return row.field == field; });
}

// The tables: how they are called, and which field tells their rows (Indicator: none does).
struct TableRow {
  Section section;
  std::string_view name;
  Field count;
};
constexpr TableRow kTableRows[] = {
    {Section::Families, "families", Field::NumFamilies},
    {Section::Chromosomes, "chromosomes", Field::NumChromosomes},
    {Section::Map, "linkage map", Field::Indicator},
    {Section::Markers, "genotypes", Field::NumMarkers},
    {Section::Categorised, "genotypes", Field::NumMarkers},
    {Section::Anchors, "anchors", Field::Indicator},
    {Section::Phenotypes, "phenotypes", Field::NumTraits},
    {Section::EnvironmentRows, "phenotypes", Field::NumEnvironments},
    {Section::LineValues, "values", Field::Indicator},
};

const TableRow* TableOf(Section section) {
  const auto* row = std::find_if(std::begin(kTableRows), std::end(kTableRows),
                                 [&](const TableRow& candidate) { return candidate.section == section; });
  return row == std::end(kTableRows) ? nullptr : row;
}

// What is at work while a file is looked through.
struct Scan {
  std::vector<std::string_view> lines;
  std::size_t next = 0;
  Sheet sheet;
  LineWords words, peeked;
};

bool IsBlank(std::string_view line) { return line.find_first_not_of(" \t") == std::string_view::npos; }
bool IsRemark(std::string_view line) { return line.starts_with('!'); }

// The next line from `from` on that holds data; the number of lines when there is none.
std::size_t DataFrom(const Scan& scan, std::size_t from) {
  while (from < scan.lines.size() && (IsBlank(scan.lines[from]) || IsRemark(scan.lines[from]))) ++from;
  return from;
}

void Split(const Scan& scan, std::size_t line, LineWords& words, std::size_t most = kMostWords) {
  Clear(words);
  AddWords(scan.lines[line], most, words);
}

// --- the header

std::vector<Step> StepsOf(const Scan& scan, std::string_view module) {
  const auto* row = std::find_if(std::begin(kModuleSteps), std::end(kModuleSteps),
                                 [&](const ModuleSteps& candidate) { return candidate.code == module; });
  std::vector<Step> steps;
  if (row == std::end(kModuleSteps)) return steps;
  const int64_t indicator = scan.sheet.Value(Field::Indicator).value_or(kMapping);
  for (Step step : row->steps) {
    if (step.indicator != 0 && step.indicator != indicator) continue;
    // The walk knows BIN files as bi-parental ones only.
    if (step.section == Section::Markers && HasCategory(scan.sheet.rules))
      step.section = Section::Categorised;
    steps.push_back(step);
  }
  return steps;
}

bool InRange(const Scan& scan, const FieldRow& row, int64_t value) {
  if (row.field == Field::PopulationType) return IsPopulation(scan.sheet.rules, value);
  return value >= 1 && (row.most == 0 || value <= row.most);
}

// Takes the value of a field from the line at hand. False when a row of a table stands there.
bool TakeField(Scan& scan, Field field) {
  const FieldRow& row = RowOf(field);
  Split(scan, scan.next, scan.words, 3);
  const std::vector<std::string_view>& words = scan.words.words;
  const std::string_view word = words.empty() || scan.words.IsNull(0) ? "" : words[0];
  const auto value = AsInteger(word);
  if (!value && words.size() > 1 && !words[1].starts_with('!')) return false;
  const auto place = static_cast<std::size_t>(field);
  scan.sheet.fieldLine[place] = ++scan.next;
  if (value && InRange(scan, row, *value)) {
    scan.sheet.value[place] = value;
    return true;
  }
  const std::string range =
      field == Field::PopulationType ? PopulationRange(scan.sheet.rules) : std::string(row.range);
  Add(scan.sheet, FindingKind::Header, {scan.next},
      "the " + std::string(row.name) + " is \"" + std::string(word) + "\", not " + range);
  return true;
}

// A header with a value too many or too few: which field the values belong to is a guess, so none is kept.
void ForgetHeader(Scan& scan, std::size_t taken, std::size_t due, std::string_view what) {
  scan.sheet.value.fill(std::nullopt);
  Add(scan.sheet, FindingKind::Header, {std::min(scan.next + 1, scan.lines.size())},
      "the header has " + Counted(static_cast<int64_t>(taken), "value") + ", a " +
          std::string(scan.sheet.module) + " file has " + std::to_string(due) + "; " + std::string(what));
}

// Header values one too many, each alone on its line, where a table belongs.
std::size_t SkipSurplus(Scan& scan) {
  std::size_t surplus = 0;
  for (;; ++surplus) {
    const std::size_t line = DataFrom(scan, scan.next);
    if (line == scan.lines.size()) return surplus;
    Split(scan, line, scan.words, 2);
    if (scan.words.words.size() != 1 || !AsInteger(scan.words.words[0])) return surplus;
    scan.next = line + 1;
  }
}

std::size_t HeaderSize(const std::vector<Step>& steps) {
  return static_cast<std::size_t>(std::count_if(
      steps.begin(), steps.end(), [](const Step& step) { return step.section == Section::Header; }));
}

// False when the file ends within the header.
bool TakeHeader(Scan& scan) {
  const std::string_view module = scan.sheet.module;
  std::size_t taken = 0;
  for (std::size_t k = 0; k < HeaderSize(StepsOf(scan, module)); ++k, ++taken) {
    const Field field = StepsOf(scan, module)[k].field;
    scan.next = DataFrom(scan, scan.next);
    if (scan.next == scan.lines.size()) {
      Add(scan.sheet, FindingKind::Header, {scan.lines.size()},
          "the file ends before the " + std::string(RowOf(field).name));
      return false;
    }
    if (TakeField(scan, field)) continue;
    ForgetHeader(scan, taken, HeaderSize(StepsOf(scan, module)), "a row of a table stands behind them");
    return true;
  }
  const std::size_t surplus = SkipSurplus(scan);
  if (surplus > 0) ForgetHeader(scan, taken + surplus, taken, "another number stands behind them");
  scan.sheet.population = scan.sheet.Value(Field::PopulationType).value_or(0);
  return true;
}

// --- the tables

struct Table {
  const TableRow& row;
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

std::optional<std::size_t> RowsDue(const Sheet& sheet, const TableRow& row) {
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

std::size_t WordsTold(const Sheet& sheet, Section section) {
  if (section == Section::Map) return 3;
  if (section == Section::Families || section == Section::Chromosomes || section == Section::Anchors)
    return 2;
  const auto lines = LinesOf(sheet);
  return lines ? static_cast<std::size_t>(*lines) + (section == Section::Categorised ? 2 : 1) : 0;
}

// Words of the first lines of a table, up to a remark.
std::vector<std::size_t> PeekLengths(Scan& scan, std::size_t rows) {
  std::vector<std::size_t> lengths;
  for (std::size_t line = scan.next; line < scan.lines.size() && lengths.size() < std::min(rows, kPeeked);
       ++line) {
    if (IsBlank(scan.lines[line])) continue;
    if (IsRemark(scan.lines[line])) break;
    Split(scan, line, scan.peeked);
    lengths.push_back(scan.peeked.words.size());
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
  std::vector<std::size_t> lengths = PeekLengths(scan, kPeeked);
  if (lengths.empty()) return;
  if (table.told > 0 && RunsOver(lengths, table.told)) {
    table.firstPart = lengths.front();
    return;
  }
  if (table.told == 2 || table.told == 3) return;
  const std::size_t rows = std::max<std::size_t>(1, std::min(table.rows.value_or(kPeeked), lengths.size()));
  lengths.resize(rows);
  const auto fitting = static_cast<std::size_t>(std::count(lengths.begin(), lengths.end(), table.told));
  if (4 * fitting >= rows) return;
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
  return !AlikeAfter(scan, table, scan.words) || Alike(scan, table, scan.words);
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
  if (!table.rows || seen == *table.rows || table.row.section == Section::Map) return;
  const std::string due = std::to_string(*table.rows), there = std::to_string(seen);
  const std::string name(table.row.name);
  std::vector<std::size_t> lines;
  if (table.row.count != Field::Indicator && scan.sheet.Line(table.row.count) > 0)
    lines.push_back(scan.sheet.Line(table.row.count));
  lines.push_back(seen == 0 ? std::min(scan.next + 1, scan.lines.size()) : firstLine);
  const FindingKind kind = table.row.section == Section::Anchors ? FindingKind::Anchor : FindingKind::Count;
  if (seen == 0) {
    Add(scan.sheet, kind, lines, "the table of " + name + " is not there: " + due + " rows are due");
  } else if (table.row.section != Section::Anchors) {  // else each marker is told
    Add(scan.sheet, kind, lines, "the table of " + name + " has " + there + " rows, " + due + " are due");
  }
}

void TellLength(Scan& scan, const Table& table, std::size_t firstLine) {
  if (table.told == 0 || table.wanted == table.told) return;
  const std::size_t ahead = table.row.section == Section::Categorised ? 2 : 1;
  std::vector<std::size_t> lines{firstLine};
  if (const std::size_t line = scan.sheet.Line(Field::PopulationSize); line > 0)
    lines.insert(lines.begin(), line);
  Add(scan.sheet, FindingKind::Count, lines,
      "the rows of the " + std::string(table.row.name) + " have " + std::to_string(table.wanted - ahead) +
          " values, the population has " + std::to_string(table.told - ahead) + " lines");
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
  const std::vector<Step> steps = StepsOf(scan, scan.sheet.module);
  for (std::size_t k = HeaderSize(steps); k < steps.size(); ++k) {
    const TableRow* row = TableOf(steps[k].section);
    if (row == nullptr) return;  // simulations have a form of their own
    Table table{*row, RowsDue(scan.sheet, *row)};
    if (k + 1 < steps.size()) table.after = &steps[k + 1];
    TakeTable(scan, table);
  }
}

// No line has more words than marks between words, and one; unless a star repeats them.
std::size_t MostWords(std::string_view line) {
  if (line.find('*') != std::string_view::npos) return kMostWords;
  std::size_t marks = 0;
  for (const char mark : {' ', '\t', ','})
    marks += static_cast<std::size_t>(std::count(line.begin(), line.end(), mark));
  return marks + 1;
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

std::vector<Finding> FindDropped(std::string_view text, std::string_view module, int32_t moduleCode) {
  const Rules rules = RulesOf(module, moduleCode);
  const FileLayout layout = WalkFile(text, module);
  const bool categories = !layout.Rows(Section::Categorised).lines.empty();
  const SectionRows& rows = layout.Rows(categories ? Section::Categorised : Section::Markers);
  if (!layout.complete || HasCategory(rules) != categories) return {};
  const std::vector<std::string_view> lines = Lines(text);
  LineWords words;
  std::size_t count = 0, first = 0, most = 0;
  for (std::size_t m = 0; m < rows.lines.size(); ++m) {
    if (m + 1 < rows.lines.size() && rows.lines[m + 1] != rows.lines[m] + 1) continue;
    const std::string_view line = lines[rows.lines[m] - 1];
    if (MostWords(line) <= rows.words) continue;
    Clear(words);
    AddWords(line, kMostWords, words);
    if (words.words.size() <= rows.words) continue;
    const auto extra = std::span(words.words).subspan(rows.words);
    if (!std::all_of(extra.begin(), extra.end(), [&](std::string_view word) {
          return word.data() != nullptr && word.size() <= 2 && IsGenotype(rules, word);
        }))
      continue;  // a remark
    if (count++ == 0) first = rows.lines[m];
    most = std::max(most, words.words.size() - rows.words);
  }
  if (count == 0) return {};
  return {{FindingKind::Row,
           {first},
           Counted(static_cast<int64_t>(count), "marker row") + " with up to " +
               Counted(static_cast<int64_t>(most), "genotype") + " behind those of the population's " +
               Counted(layout.lines, "line") + "; they are not read",
           {},
           0}};
}

}  // namespace host
