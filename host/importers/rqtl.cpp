// The comma-parted files of R/qtl: lines in rows (csv), in columns (csvr), and genotypes apart (tidy).

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "host/exit_code.h"
#include "host/importers/codes.h"
#include "host/importers/formats.h"
#include "host/importers/sheet.h"
#include "host/populations.h"

namespace importers {
namespace {

bool AllEmpty(const std::vector<std::string>& row, std::size_t count) {
  return std::all_of(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(count),
                     [](const std::string& text) { return text.empty(); });
}

// The second row is empty below the phenotypes.
std::size_t CountPhenotypes(const Sheet& sheet) {
  if (sheet.rows.size() < 3) ThrowAt(sheet.path, 1, "names, chromosomes and at least one line are needed");
  const auto& chromosomes = sheet.rows[1];
  const auto count =
      static_cast<std::size_t>(std::find_if(chromosomes.begin(), chromosomes.end(),
                                            [](const std::string& text) { return !text.empty(); }) -
                               chromosomes.begin());
  if (count == 0) {
    ThrowAt(
        sheet.path, sheet.LineOf(1, 0),
        "the chromosomes begin below the first column; a phenotype column, empty there, must stand ahead of "
        "the markers");
  }
  return count;
}

std::vector<std::string> LineNames(const Sheet& sheet, std::size_t phenotypes, std::size_t first) {
  std::vector<std::string> names;
  for (std::size_t column = 0; column < phenotypes; ++column) {
    if (!host::EqualIgnoringCase(sheet.rows[0][column], "id")) continue;
    for (std::size_t row = first; row < sheet.rows.size(); ++row) names.push_back(sheet.rows[row][column]);
    break;
  }
  return names;
}

// Each column from `phenotypes` on is a marker.
void TakeColumns(Builder& builder, const Sheet& sheet, std::size_t phenotypes, std::size_t first) {
  const CodeBook book = BookOf(Vocabulary::Rqtl, builder.request);
  UnknownCodes unknown;
  std::vector<std::string_view> texts(sheet.rows.size() - first);
  std::vector<std::size_t> lines(texts.size());
  for (std::size_t column = phenotypes; column < sheet.Width(); ++column) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      texts[i] = sheet.rows[first + i][column];
      lines[i] = sheet.LineOf(first + i, column);
    }
    TakeTexts(builder, book, {sheet.rows[0][column], sheet.LineOf(0, column), sheet.rows[1][column]}, texts,
              lines, unknown);
  }
  RefuseUnknown(sheet.path, book, unknown);
}

using Chromosomes = std::unordered_map<std::string, std::string>;

// x_gen.csv has its map beside it in x_map.csv.
Chromosomes ReadTidyMap(const std::filesystem::path& path, Ledger& ledger) {
  std::string name = path.filename().string();
  const std::size_t at = name.rfind("gen");
  if (at != std::string::npos) name.replace(at, 3, "map");
  const std::filesystem::path beside = path.parent_path() / name;
  std::error_code error;
  if (at == std::string::npos || !std::filesystem::is_regular_file(beside, error)) {
    ledger.notes.push_back("there is no map file " + name + " beside it: chromosomes are not known");
    return {};
  }
  const Sheet sheet = ReadSheet(ReadLines(beside));
  if (sheet.Width() < 2) ThrowAt(sheet.path, 1, "a map file has the columns marker, chr and pos");
  Chromosomes chromosomes;
  for (std::size_t row = 1; row < sheet.rows.size(); ++row) {
    chromosomes.emplace(sheet.rows[row][0], sheet.rows[row][1]);
  }
  return chromosomes;
}

}  // namespace

Import ReadRqtlCsv(const TextFile& file, Request request, bool turned) {
  Sheet sheet = ReadSheet(file);
  if (turned) sheet = Turned(std::move(sheet));
  const std::size_t phenotypes = CountPhenotypes(sheet);
  Ledger notes;
  RequireKinds(request, file.path, "an R/qtl file", true);
  SettlePopulation(request, file.path, request.kind, 0, "R/qtl csv", notes);
  const std::size_t first = AllEmpty(sheet.rows[2], phenotypes) ? 3 : 2;  // behind a row of positions
  if (first >= sheet.rows.size())
    ThrowAt(file.path, sheet.LineOf(2, 0), "there are no lines below the positions");
  Builder builder =
      StartTable(request, file.path, LineNames(sheet, phenotypes, first), sheet.rows.size() - first);
  TakeColumns(builder, sheet, phenotypes, first);
  return FinishTable(std::move(builder));
}

Import ReadRqtlTidy(const TextFile& file, Request request) {
  const Sheet sheet = ReadSheet(file);
  if (sheet.rows.size() < 2 || sheet.Width() < 2) {
    ThrowAt(file.path, 1, "a heading with the lines and a row for each marker are needed");
  }
  Ledger notes;
  RequireKinds(request, file.path, "an R/qtl file", true);
  SettlePopulation(request, file.path, request.kind, 0, "R/qtl tidy", notes);
  Builder builder =
      StartTable(request, file.path, {sheet.rows[0].begin() + 1, sheet.rows[0].end()}, sheet.Width() - 1);
  const Chromosomes chromosomes = ReadTidyMap(file.path, builder.ledger);
  const CodeBook book = BookOf(Vocabulary::Rqtl, request);
  UnknownCodes unknown;
  for (std::size_t row = 1; row < sheet.rows.size(); ++row) {
    const auto& cells = sheet.rows[row];
    const auto found = chromosomes.find(cells[0]);
    const std::string_view chromosome = found == chromosomes.end() ? std::string_view{} : found->second;
    const std::vector<std::string_view> texts(cells.begin() + 1, cells.end());
    TakeTexts(builder, book, {cells[0], sheet.lines[row], chromosome}, texts, {&sheet.lines[row], 1},
              unknown);
  }
  RefuseUnknown(file.path, book, unknown);
  return FinishTable(std::move(builder));
}

}  // namespace importers
