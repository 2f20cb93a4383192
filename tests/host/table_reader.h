#pragma once

#include <map>
#include <sstream>
#include <string>
#include <vector>

// The rows of a map table by column name, in the order of the file.
using TableRow = std::map<std::string, std::string>;

inline std::vector<std::string> SplitAt(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  for (std::size_t at = text.find(separator); at != std::string::npos; at = text.find(separator, from)) {
    parts.push_back(text.substr(from, at - from));
    from = at + 1;
  }
  parts.push_back(text.substr(from));
  return parts;
}

// Every row has as many cells as the heading, else there is one row with the cell "broken".
inline std::vector<TableRow> TableRows(const std::string& text) {
  std::vector<TableRow> rows;
  std::stringstream stream(text);
  std::string line;
  std::getline(stream, line);
  const std::vector<std::string> heading = SplitAt(line, '\t');
  while (std::getline(stream, line)) {
    const std::vector<std::string> cells = SplitAt(line, '\t');
    if (cells.size() != heading.size()) return {{{"broken", line}}};
    TableRow& row = rows.emplace_back();
    for (std::size_t c = 0; c < cells.size(); ++c) row[heading[c]] = cells[c];
  }
  return rows;
}

// Markers of a column by group, in the order of the file.
inline std::map<std::string, std::vector<std::string>> MarkersByGroup(const std::vector<TableRow>& rows) {
  std::map<std::string, std::vector<std::string>> groups;
  for (const TableRow& row : rows) groups[row.at("group")].push_back(row.at("marker"));
  return groups;
}

// Share of the pairs of names "c1m07" that stand in rising or falling order, 0.5 to 1.
inline double OrderAgreementOf(const std::vector<std::string>& names) {
  int rising = 0, pairs = 0;
  for (std::size_t i = 1; i < names.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j, ++pairs) rising += names[j] < names[i] ? 1 : 0;
  }
  const double share = pairs > 0 ? static_cast<double>(rising) / pairs : 1;
  return share < 0.5 ? 1 - share : share;
}
