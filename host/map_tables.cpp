#include "host/map_tables.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_set>

#include "host/exit_code.h"
#include "host/file_walk.h"
#include "host/input_file.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::string_view kUnlinked = "unlinked";
constexpr std::size_t kStrangersNamed = 5;
constexpr std::size_t kMapName = 19, kMarkerName = 35;  // characters that a project file keeps

std::vector<std::string_view> Columns(std::string_view line) {
  std::vector<std::string_view> columns;
  for (;;) {
    const std::size_t tab = line.find('\t');
    columns.push_back(line.substr(0, tab));
    if (tab == std::string_view::npos) return columns;
    line.remove_prefix(tab + 1);
  }
}

struct ColumnPlaces {
  std::size_t group, marker, position;
};

ColumnPlaces FindColumns(const std::filesystem::path& path, const std::vector<std::string_view>& heading) {
  const auto find = [&](std::string_view name) {
    const auto found = std::find(heading.begin(), heading.end(), name);
    if (found == heading.end()) {
      FailAt(path, 1,
             "there is no column \"" + std::string(name) + "\"; a map table of tessarmont map is wanted");
    }
    return static_cast<std::size_t>(found - heading.begin());
  };
  return {find("group"), find("marker"), find("position")};
}

TableMarker MarkerAt(const std::filesystem::path& path, std::size_t line, std::string_view name,
                     std::string_view position) {
  TableMarker marker{std::string(name.substr(0, kMarkerName)), std::string(position), 0};
  const auto [end, error] = std::from_chars(position.data(), position.data() + position.size(), marker.value);
  if (error != std::errc{} || !IsReal(position) || end != position.data() + position.size()) {
    FailAt(path, line, "\"" + marker.position + "\" is no position");
  }
  return marker;
}

TableGroup& GroupNamed(MapTableFile& table, std::string_view name) {
  for (TableGroup& group : table.groups) {
    if (group.name == name) return group;
  }
  return table.groups.emplace_back(TableGroup{std::string(name), {}});
}

std::unordered_set<std::string> NamesOf(const TableGroup& group) {
  std::unordered_set<std::string> names;
  for (const TableMarker& marker : group.markers) names.insert(marker.name);
  return names;
}

// A word that stands for itself in a project file.
std::string TokenOf(const std::string& name) {
  const std::size_t digits = name.find_first_not_of("0123456789");
  const bool repeat = digits != 0 && digits != std::string::npos && name[digits] == '*';
  if (!name.empty() && !repeat && name.front() != '!' && name.find_first_of(" ,/'\"") == std::string::npos) {
    return name;
  }
  std::string quoted = "'";
  for (const char c : name) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

// How many markers each group of a table shares with each chromosome so far, most first.
struct Overlap {
  std::size_t shared, group, chromosome;
};
std::vector<Overlap> Overlaps(const MapTableFile& table,
                              const std::vector<std::unordered_set<std::string>>& chromosomes) {
  std::vector<Overlap> overlaps;
  for (std::size_t g = 0; g < table.groups.size(); ++g) {
    Overlap best{0, g, 0};
    for (std::size_t c = 0; c < chromosomes.size(); ++c) {
      std::size_t shared = 0;
      for (const TableMarker& marker : table.groups[g].markers) shared += chromosomes[c].count(marker.name);
      if (shared > best.shared) best = {shared, g, c};
    }
    overlaps.push_back(best);
  }
  std::stable_sort(overlaps.begin(), overlaps.end(),
                   [](const Overlap& a, const Overlap& b) { return a.shared > b.shared; });
  return overlaps;
}

}  // namespace

std::string TableCell(std::string text) {
  std::replace(text.begin(), text.end(), '\t', ' ');
  return text;
}

MapTableFile ReadMapTable(const std::filesystem::path& path) {
  const InputFile file = OpenInput(path);
  const std::string text = ReadWhole(file.absolute);
  const std::vector<std::string_view> lines = Lines(text);
  const ColumnPlaces at = FindColumns(path, Columns(lines.front()));
  MapTableFile table;
  table.name = path.stem().string();
  if (table.name.ends_with(".map")) table.name.resize(table.name.size() - 4);
  std::unordered_set<std::string> seen;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    if (lines[i].empty()) continue;
    const std::vector<std::string_view> columns = Columns(lines[i]);
    if (columns.size() <= std::max({at.group, at.marker, at.position}))
      FailAt(path, i + 1, "a column is missing");
    if (columns[at.group] == kUnlinked) {
      table.unlinked.emplace_back(columns[at.marker]);
      continue;
    }
    TableMarker marker = MarkerAt(path, i + 1, columns[at.marker], columns[at.position]);
    if (!seen.insert(marker.name).second) FailAt(path, i + 1, "marker " + marker.name + " stands twice");
    GroupNamed(table, columns[at.group]).markers.push_back(std::move(marker));
  }
  if (table.groups.empty()) throw Failure{ExitCode::InputWrong, path.string() + " has no linked marker"};
  for (TableGroup& group : table.groups) {
    std::stable_sort(group.markers.begin(), group.markers.end(),
                     [](const TableMarker& a, const TableMarker& b) { return a.value < b.value; });
  }
  return table;
}

std::vector<Chromosome> MatchGroups(const std::vector<MapTableFile>& tables,
                                    std::vector<std::string>& warnings) {
  std::vector<Chromosome> chromosomes;
  std::vector<std::unordered_set<std::string>> names;
  for (std::size_t t = 0; t < tables.size(); ++t) {
    const std::size_t before = chromosomes.size();
    std::vector<bool> taken(before, false);
    std::vector<std::string> strangers;
    for (const Overlap& overlap : Overlaps(tables[t], names)) {
      const TableGroup& group = tables[t].groups[overlap.group];
      if (overlap.shared > 0 && taken[overlap.chromosome]) {
        warnings.push_back(tables[t].name + " " + group.name +
                           " was left out: a larger group of that map is " +
                           chromosomes[overlap.chromosome].name + " already");
      } else if (overlap.shared > 0) {
        taken[overlap.chromosome] = true;
        chromosomes[overlap.chromosome].sources.push_back({t, overlap.group});
        names[overlap.chromosome].merge(NamesOf(group));
      } else {
        if (t > 0) strangers.push_back(group.name);
        const std::string name = t == 0 ? group.name : tables[t].name + "-" + group.name;
        chromosomes.push_back({name, {{t, overlap.group}}});
        names.push_back(NamesOf(group));
      }
    }
    if (!strangers.empty()) {
      warnings.push_back(tables[t].name + ": " + Counted(static_cast<int64_t>(strangers.size()), "group") +
                         (strangers.size() == 1 ? " shares" : " share") +
                         " no marker with earlier maps: " + FirstNames(strangers, kStrangersNamed));
    }
  }
  return chromosomes;
}

std::string CmpText(const std::vector<MapTableFile>& tables, const Chromosome& chromosome) {
  std::string maps, rows;
  for (std::size_t m = 0; m < chromosome.sources.size(); ++m) {
    const Chromosome::Source& source = chromosome.sources[m];
    const TableGroup& group = tables[source.table].groups[source.group];
    maps += TokenOf(tables[source.table].name.substr(0, kMapName)) + " " +
            std::to_string(group.markers.size()) + "\n";
    for (const TableMarker& marker : group.markers) {
      rows += TokenOf(marker.name) + " " + std::to_string(m + 1) + " " + marker.position + "\n";
    }
  }
  return "!Marker space type (1 for intervals; 2 for positions)\n2\n"
         "!Marker space unit (1 for centiMorgans; 2 for Morgan)\n1\n!Number of maps\n" +
         std::to_string(chromosome.sources.size()) + "\n!Map name and number of markers\n" + maps +
         "!Marker name, number of the map, position\n" + rows;
}

}  // namespace host
