#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace host {

struct TableMarker {
  std::string name;
  std::string position;  // centimorgans, as the table has it
  double value = 0;
};
struct TableGroup {
  std::string name;
  std::vector<TableMarker> markers;  // by rising position
};
// A map table as `tessarmont map` writes it, or any with the columns group, marker and position.
struct MapTableFile {
  std::string name;  // of the file, without its extensions
  std::vector<TableGroup> groups;
  std::vector<std::string> unlinked{};  // names
};
// Failure InputWrong: a column is missing, a position is no number, a marker
// stands twice.
MapTableFile ReadMapTable(const std::filesystem::path& path);

// A name as a cell of a table: one may hold a tab when it was quoted in its file.
std::string TableCell(std::string text);

// The groups of several tables that are one chromosome: at most one of each table.
struct Chromosome {
  struct Source {
    std::size_t table, group;
  };
  std::string name;
  std::vector<Source> sources;
};
// A group belongs to the chromosome with which it shares the most markers, tables taken in order; the groups
// of the first table are the first chromosomes, and a group that shares none is one of its own. Where two
// groups of a table belong to one chromosome, the one that shares fewer is left out, and `warnings` says so.
std::vector<Chromosome> MatchGroups(const std::vector<MapTableFile>& tables,
                                    std::vector<std::string>& warnings);

// The text of a CMP project file of one chromosome, positions in centimorgans.
std::string CmpText(const std::vector<MapTableFile>& tables, const Chromosome& chromosome);

}  // namespace host
