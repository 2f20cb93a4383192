#include "host/exporters/writers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <nlohmann/json.hpp>
#include <unordered_map>
#include <unordered_set>

#include "host/exit_code.h"
#include "host/exporters/source_place.h"

namespace exporters {
namespace {

using host::ExitCode;
using host::Failure;
using host::GenotypeTable;
using host::MapTableFile;
using host::TableGroup;
using host::TableMarker;

// R/qtl's words for the cells of a MAP file in the order of CodesOf: D is not BB, C is not AA.
constexpr std::string_view kRqtlCodes[] = {"A", "H", "B", "D", "C", "-"};
constexpr std::string_view kNoPosition = "0";  // of a marker whose name tells no place

std::size_t MarkersOf(const MapTableFile& map) {
  std::size_t count = 0;
  for (const TableGroup& group : map.groups) count += group.markers.size();
  return count;
}

std::string CsvField(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string field = "\"";
  for (const char c : text) field += c == '"' ? "\"\"" : std::string(1, c);
  return field + "\"";
}

// Six decimals: the tables have four of a centimorgan.
std::string Morgans(const TableMarker& marker) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), marker.value / 100,
                                 std::chars_format::fixed, 6);
  return {buffer.data(), end.ptr};
}

// Words of a format that parts them by blanks, where a semicolon begins a remark.
struct BlankFreeNames {
  std::unordered_set<std::string> taken;

  std::string Of(const std::string& name, Exported& result) {
    std::string word = name;
    for (char& c : word) c = c == ' ' || c == '\t' || c == ';' ? '_' : c;
    if (word != name) result.renamed.push_back(name);
    if (!taken.insert(word).second) {
      throw Failure{ExitCode::InputWrong, "marker \"" + name + "\" would become a second \"" + word +
                                              "\": this format has no blanks and semicolons in names"};
    }
    return word;
  }
};

void WriteTsv(const MapTableFile& map, Exported& result) {
  result.text = "group\tmarker\tcM\torder\tchromosome\n";
  for (const TableGroup& group : map.groups) {
    std::size_t order = 0;
    for (const TableMarker& marker : group.markers) {
      const auto source = SourceOf(marker.name);
      result.text += group.name + '\t' + marker.name + '\t' + marker.position + '\t' +
                     std::to_string(++order) + '\t' + std::string(source ? source->chromosome : "") + '\n';
    }
  }
}

void WriteJoinMap(const MapTableFile& map, Exported& result) {
  BlankFreeNames groups, markers;
  Exported unused;  // groups may change their names without a word
  for (const TableGroup& group : map.groups) {
    result.text += (result.text.empty() ? "group " : "\ngroup ") + groups.Of(group.name, unused) + '\n';
    for (const TableMarker& marker : group.markers) {
      result.text += markers.Of(marker.name, result) + '\t' + marker.position + '\n';
    }
  }
}

void WriteAllMaps(const MapTableFile& map, Exported& result) {
  result.text = "Scaffold ID,scaffold position,LG,genetic position\n";
  for (const TableGroup& group : map.groups) {
    for (const TableMarker& marker : group.markers) {
      const auto source = SourceOf(marker.name);
      if (!source) {
        result.leftOut.push_back(marker.name);
        continue;
      }
      result.text += CsvField(source->chromosome) + ',' + std::string(source->position) + ',' +
                     CsvField(group.name) + ',' + marker.position + '\n';
    }
  }
}

void WritePlink(const MapTableFile& map, Exported& result) {
  BlankFreeNames groups, markers;
  Exported unused;
  for (const TableGroup& group : map.groups) {
    const std::string chromosome = groups.Of(group.name, unused);
    for (const TableMarker& marker : group.markers) {
      const auto source = SourceOf(marker.name);
      result.text += chromosome + '\t' + markers.Of(marker.name, result) + '\t' + Morgans(marker) + '\t' +
                     std::string(source ? source->position : kNoPosition) + '\n';
    }
  }
}

void WriteJson(const MapTableFile& map, Exported& result) {
  nlohmann::json json{{"format", "tessarmont.export/1"}, {"unit", "cM"}, {"groups", nlohmann::json::array()}};
  for (const TableGroup& group : map.groups) {
    nlohmann::json markers = nlohmann::json::array();
    for (const TableMarker& marker : group.markers) {
      nlohmann::json row{{"marker", marker.name}, {"position", marker.value}, {"order", markers.size() + 1}};
      if (const auto source = SourceOf(marker.name)) {
        row["chromosome"] = source->chromosome;
        row["bases"] = source->position;  // a text: it may be longer than a number can be
      }
      markers.push_back(std::move(row));
    }
    json["groups"].push_back({{"name", group.name}, {"markers", std::move(markers)}});
  }
  json["unlinked"] = map.unlinked;
  result.text = json.dump(1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

// The row of each marker of the map in the table of genotypes, in map order.
std::vector<std::size_t> RowsOf(const MapTableFile& map, const GenotypeTable& genotypes) {
  std::unordered_map<std::string, std::size_t> rows;
  for (std::size_t m = 0; m < genotypes.markers.size(); ++m) {
    std::string name = genotypes.markers[m];
    std::replace(name.begin(), name.end(), '\t', ' ');  // as map tables have them
    rows.emplace(std::move(name), m);
  }
  std::vector<std::size_t> found;
  for (const TableGroup& group : map.groups) {
    for (const TableMarker& marker : group.markers) {
      const auto row = rows.find(marker.name);
      if (row == rows.end()) {
        throw Failure{ExitCode::InputWrong, "marker " + marker.name + " of group " + group.name +
                                                " has no genotypes in the project file; is it the file that "
                                                "the map was made of?"};
      }
      found.push_back(row->second);
    }
  }
  return found;
}

void WriteRqtl(const MapTableFile& map, const GenotypeTable& genotypes, Exported& result) {
  const std::vector<std::size_t> rows = RowsOf(map, genotypes);
  std::string names = "id", groups, positions;
  for (const TableGroup& group : map.groups) {
    for (const TableMarker& marker : group.markers) {
      names += ',' + CsvField(marker.name);
      groups += ',' + CsvField(group.name);
      positions += ',' + marker.position;
    }
  }
  result.text = names + '\n' + groups + '\n' + positions + '\n';
  result.text.reserve(result.text.size() + genotypes.lines * (2 * rows.size() + names.size() / 8 + 16));
  for (std::size_t line = 0; line < genotypes.lines; ++line) {
    result.text +=
        genotypes.lineNames.empty() ? std::to_string(line + 1) : CsvField(genotypes.lineNames[line]);
    for (const std::size_t row : rows) {
      result.text += ',';
      result.text += kRqtlCodes[genotypes.Row(row)[line]];
    }
    result.text += '\n';
  }
}

}  // namespace

Exported Export(Format format, const MapTableFile& map, const GenotypeTable* genotypes) {
  Exported result;
  switch (format) {
    case Format::Tsv:
      WriteTsv(map, result);
      break;
    case Format::Rqtl:
      WriteRqtl(map, *genotypes, result);
      break;
    case Format::JoinMap:
      WriteJoinMap(map, result);
      break;
    case Format::AllMaps:
      WriteAllMaps(map, result);
      break;
    case Format::Plink:
      WritePlink(map, result);
      break;
    case Format::Json:
      WriteJson(map, result);
      break;
  }
  result.groups = map.groups.size();
  result.markers = MarkersOf(map) - result.leftOut.size();
  if (result.markers == 0) {
    throw Failure{ExitCode::InputWrong,
                  "no marker has a name CHROM_POS or CHROM:POS, so that no place on a scaffold is known"};
  }
  return result;
}

}  // namespace exporters
