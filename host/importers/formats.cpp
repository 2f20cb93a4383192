#include "host/importers/formats.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "host/exit_code.h"
#include "host/importers/sheet.h"
#include "host/populations.h"
#include "host/text.h"

namespace importers {
namespace {

constexpr FormatRow kFormats[] = {
    {Format::Vcf, "vcf", "a VCF file"},
    {Format::RqtlCsv, "csv", "an R/qtl csv file"},
    {Format::RqtlCsvr, "csvr", "an R/qtl csvr file"},
    {Format::RqtlTidy, "tidy", "an R/qtl tidy genotype file"},
    {Format::Raw, "raw", "a Mapmaker or OneMap raw file"},
    {Format::MstMap, "mstmap", "an MSTmap file"},
    {Format::JoinMap, "joinmap", "a JoinMap locus file"},
    {Format::Table, "table", "a plain table"},
};

bool StartsIgnoringCase(std::string_view text, std::string_view start) {
  return host::EqualIgnoringCase(text.substr(0, start.size()), start);
}

// Of the first lines with anything in them.
std::vector<std::string> Head(const std::filesystem::path& path) {
  constexpr std::size_t most = 40;
  TextSource source(path);
  std::vector<std::string> lines;
  for (std::string_view line; lines.size() < most && source.Next(line);) {
    if (!host::BlankParted(line).empty()) lines.emplace_back(line);
  }
  return lines;
}

bool IsJoinMapHead(std::string_view line) {
  for (const std::string_view key : {"name", "popt", "nloc", "nind"}) {
    if (!StartsIgnoringCase(line, key)) continue;
    const std::size_t next = line.find_first_not_of(" \t", key.size());
    if (next != std::string_view::npos && line[next] == '=') return true;
  }
  return false;
}

// Below the phenotypes (csv) or beside them (csvr) the cells of the chromosomes are empty.
std::optional<Format> DetectSheet(const std::vector<std::string>& head) {
  const char separator = SeparatorOf(head[0]);
  if (separator == ' ' || head.size() < 2) return std::nullopt;
  const auto first = Fields(head[0], separator), second = Fields(head[1], separator);
  if (first.size() < 2 || second.size() < 2) return std::nullopt;
  if (!first[0].empty() && second[0].empty()) return Format::RqtlCsv;
  if (!first[0].empty() && first[1].empty()) return Format::RqtlCsvr;
  return std::nullopt;
}

}  // namespace

std::span<const FormatRow> Formats() { return kFormats; }

const FormatRow* FindFormat(std::string_view name) {
  const auto* found = std::find_if(std::begin(kFormats), std::end(kFormats), [&](const FormatRow& row) {
    return host::EqualIgnoringCase(row.name, name);
  });
  return found == std::end(kFormats) ? nullptr : found;
}

Format DetectFormat(const std::filesystem::path& path) {
  const std::vector<std::string> head = Head(path);
  if (head.empty()) return Format::Table;
  if (head[0].starts_with('!')) {
    throw host::Failure{host::ExitCode::InputWrong,
                        path.string() + " is a project file already; \"tessarmont check\" looks at it"};
  }
  if (head[0].starts_with("##fileformat=VCF") || head[0].starts_with("#CHROM")) return Format::Vcf;
  for (const std::string& line : head) {
    if (line.starts_with('#') || line.starts_with(';')) continue;
    if (StartsIgnoringCase(line, "data type")) return Format::Raw;
    if (StartsIgnoringCase(line, "population_type")) return Format::MstMap;
    if (IsJoinMapHead(line)) return Format::JoinMap;
    break;
  }
  for (const std::string& line : head) {
    if (StartsIgnoringCase(line, "locus_name") && head[0] != line) return Format::MstMap;
  }
  if (path.filename().string().find("_gen.csv") != std::string::npos) return Format::RqtlTidy;
  return DetectSheet(head).value_or(Format::Table);
}

Import ReadFormat(Format format, const std::filesystem::path& path, const Request& request) {
  if (format == Format::Vcf) return ReadVcf(path, request);
  const TextFile file = ReadLines(path);
  switch (format) {
    case Format::RqtlCsv:
      return ReadRqtlCsv(file, request, false);
    case Format::RqtlCsvr:
      return ReadRqtlCsv(file, request, true);
    case Format::RqtlTidy:
      return ReadRqtlTidy(file, request);
    case Format::Raw:
      return ReadRaw(file, request);
    case Format::MstMap:
      return ReadMstMap(file, request);
    case Format::JoinMap:
      return ReadJoinMap(file, request);
    case Format::Vcf:
    case Format::Table:
      break;
  }
  return ReadTable(file, request);
}

}  // namespace importers
