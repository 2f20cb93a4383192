// A plain table of markers and lines, with a heading row and a heading column; columns (or rows) of chromosomes and
// positions may stand between. With parents its genotypes are alleles, else codes.

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>

#include "host/exit_code.h"
#include "host/importers/calls.h"
#include "host/importers/codes.h"
#include "host/importers/formats.h"
#include "host/importers/parents.h"
#include "host/importers/sheet.h"
#include "host/populations.h"
#include "host/text.h"

namespace importers {
namespace {

constexpr std::string_view kMarkerWords[] = {"marker", "markers", "locus", "locus_name",
                                             "snp",    "rs#",     "rs",    "name"};
constexpr std::string_view kLineWords[] = {"id",         "line", "lines",    "sample",
                                           "individual", "ind",  "genotype", "plant"};
constexpr std::string_view kChromosomeWords[] = {"chr",   "chrom",         "chromosome", "lg",
                                                 "group", "linkage group", "scaffold",   "contig"};
constexpr std::string_view kOtherWords[] = {"pos",    "position", "cm",      "bp",
                                            "pos bp", "pos cm",   "alleles", "strand"};

template <std::size_t N>
bool IsOneOf(const std::string& text, const std::string_view (&words)[N]) {
  return std::any_of(std::begin(words), std::end(words),
                     [&](std::string_view word) { return host::EqualIgnoringCase(text, word); });
}

// A heading without what people add to it: "#CHROM", "Chr.", "Linkage_group", "Position (cM)".
std::string PlainHeading(std::string_view heading) {
  if (heading.starts_with('#')) heading.remove_prefix(1);
  heading = heading.substr(0, heading.find_first_of("(["));
  std::string plain(host::WithoutTrailing(heading, " ._:"));
  std::replace_if(
      plain.begin(), plain.end(), [](char c) { return c == '_' || c == '.'; }, ' ');
  return plain;
}

// Markers in rows, from now on. The heading's first cell tells; else rows are taken for markers.
Sheet MarkersInRows(Sheet sheet, Direction asked, Ledger& ledger) {
  const std::string& corner = sheet.rows[0][0];
  bool rows = asked != Direction::Columns;
  if (asked == Direction::Told) {
    rows = !IsOneOf(corner, kLineWords);
    if (rows && !IsOneOf(corner, kMarkerWords)) {
      ledger.notes.push_back("each row is taken as a marker; --markers columns takes each column as one");
    }
  }
  return rows ? std::move(sheet) : Turned(std::move(sheet));
}

// What the columns of the table hold.
struct Columns {
  std::vector<std::size_t> lines;
  std::optional<std::size_t> chromosome;
  std::vector<std::string> names;  // of the lines
};

Columns ReadHeading(const Sheet& sheet) {
  Columns columns;
  for (std::size_t c = 1; c < sheet.Width(); ++c) {
    const std::string& name = sheet.rows[0][c];
    const std::string plain = PlainHeading(name);
    if (IsOneOf(plain, kOtherWords)) continue;
    if (IsOneOf(plain, kChromosomeWords)) {
      if (!columns.chromosome) columns.chromosome = c;
      continue;
    }
    columns.lines.push_back(c);
    columns.names.push_back(name);
  }
  return columns;
}

// The letters of two bases that stand for a heterozygote.
constexpr std::pair<char, std::string_view> kTwoBases[] = {{'R', "AG"}, {'Y', "CT"}, {'S', "CG"},
                                                           {'W', "AT"}, {'K', "GT"}, {'M', "AC"}};

bool IsAllele(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 && c != 'N' && c != '0'; }

// Alleles of one character each: "A", "AC", "A/C", "A|C" or the letter of two bases; each gets a number at its
// first sight in the marker. False when the text is none of these.
bool ReadAlleles(std::string_view text, const CodeBook& book, std::string& alleles, Call& call) {
  call = kNoCall;
  if (book.codes.contains(text)) return true;  // a code for missing
  std::string pair(text);
  if (pair.size() == 3 && (pair[1] == '/' || pair[1] == '|' || pair[1] == ':')) pair.erase(1, 1);
  if (pair == "NN" || pair == "00" || pair == "--" || pair == "..") return true;
  if (pair.size() == 1) {
    const auto* two = std::find_if(std::begin(kTwoBases), std::end(kTwoBases),
                                   [&](const auto& row) { return row.first == pair[0]; });
    pair = two == std::end(kTwoBases) ? std::string(2, pair[0]) : std::string(two->second);
  }
  if (pair.size() != 2 || !IsAllele(pair[0]) || !IsAllele(pair[1])) return false;
  std::array<uint8_t, 2> numbers{};
  for (std::size_t k = 0; k < 2; ++k) {
    std::size_t place = alleles.find(pair[k]);
    if (place == std::string::npos) {
      place = alleles.size();
      alleles += pair[k];
    }
    numbers[k] = static_cast<uint8_t>(std::min(place, std::size_t{kOtherAllele}));
  }
  call = CallOf(numbers[0], numbers[1]);
  return true;
}

// Only the codes for missing: all else are alleles.
CodeBook MissingOnly(const Request& request) {
  CodeBook book;
  for (const char* text : {"", "-", "N", "NA", ".", "?", "0", "X"}) book.codes.emplace(text, uint8_t{0});
  for (const std::string& text : request.missing) book.codes.emplace(text, uint8_t{0});
  book.words = "alleles such as A, A/C, AC, R";
  return book;
}

void TakeAlleleRows(Builder& builder, const Sheet& sheet, const Columns& columns,
                    const SampleColumns& samples) {
  const CodeBook book = MissingOnly(builder.request);
  std::vector<Call> calls(columns.lines.size()), parents, lines;
  std::vector<uint8_t> cells(samples.lines.size());
  for (std::size_t row = 1; row < sheet.rows.size(); ++row) {
    const std::vector<std::string>& fields = sheet.rows[row];
    const MarkerSource source{
        fields[0], sheet.LineOf(row, 0),
        columns.chromosome ? std::string_view(fields[*columns.chromosome]) : std::string_view{}};
    std::string alleles;
    for (std::size_t i = 0; i < calls.size(); ++i) {
      if (ReadAlleles(fields[columns.lines[i]], book, alleles, calls[i])) continue;
      ThrowAt(sheet.path, sheet.LineOf(row, columns.lines[i]),
              "marker " + Excerpt(fields[0]) + ", " + Excerpt(columns.names[i]) + ": \"" +
                  Excerpt(fields[columns.lines[i]]) + "\" is none of " + book.words);
    }
    parents.clear();
    lines.clear();
    for (const std::size_t place : samples.parents) parents.push_back(calls[place]);
    for (const std::size_t place : samples.lines) lines.push_back(calls[place]);
    const SiteTable site = ReadSite(builder.request, parents);
    if (site.drop) {
      DropMarker(builder, source, *site.drop);
      continue;
    }
    TakeCalls(site, lines, cells, builder.pending);
    AddMarker(builder, source, cells, site.category);
  }
}

void TakeCodeRows(Builder& builder, const Sheet& sheet, const Columns& columns) {
  CodeBook book = BookOf(Vocabulary::Plain, builder.request);
  book.words += " (alleles are read with --parents)";
  UnknownCodes unknown;
  std::vector<std::string_view> texts(columns.lines.size());
  std::vector<std::size_t> lines(columns.lines.size());
  for (std::size_t row = 1; row < sheet.rows.size(); ++row) {
    const std::vector<std::string>& fields = sheet.rows[row];
    for (std::size_t i = 0; i < texts.size(); ++i) {
      texts[i] = fields[columns.lines[i]];
      lines[i] = sheet.LineOf(row, columns.lines[i]);
    }
    const std::string_view chromosome =
        columns.chromosome ? std::string_view(fields[*columns.chromosome]) : std::string_view{};
    TakeTexts(builder, book, {fields[0], sheet.LineOf(row, 0), chromosome}, texts, lines, unknown);
  }
  RefuseUnknown(sheet.path, book, unknown);
}

}  // namespace

Import ReadTable(const TextFile& file, Request request) {
  Ledger notes;
  SettlePopulation(request, file.path, request.kind, 0, "a table", notes);
  Sheet sheet = ReadSheet(file, 0, true);
  if (sheet.rows.size() < 2 || sheet.Width() < 2) {
    ThrowAt(file.path, 1,
            "a table has a heading row, a heading column and genotypes, parted by tabs, commas or blanks");
  }
  sheet = MarkersInRows(std::move(sheet), request.markers, notes);
  const Columns columns = ReadHeading(sheet);
  if (request.parents.empty()) {
    RequireKinds(request, file.path, "a table without --parents", true);
    Builder builder = StartTable(request, file.path, columns.names, columns.lines.size());
    builder.ledger.notes.insert(builder.ledger.notes.end(), notes.notes.begin(), notes.notes.end());
    TakeCodeRows(builder, sheet, columns);
    return FinishTable(std::move(builder));
  }
  const SampleColumns samples = PartSamples(request, file.path, columns.names);
  std::vector<std::string> names;
  for (const std::size_t line : samples.lines) names.push_back(columns.names[line]);
  Builder builder = StartTable(request, file.path, std::move(names), samples.lines.size());
  builder.ledger.notes.insert(builder.ledger.notes.end(), notes.notes.begin(), notes.notes.end());
  TakeAlleleRows(builder, sheet, columns, samples);
  return FinishTable(std::move(builder));
}

}  // namespace importers
