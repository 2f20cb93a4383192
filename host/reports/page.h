#pragma once

// What the pages have in common: head, style, sections, tables.

#include <string>
#include <string_view>
#include <vector>

#include "host/reports/pages.h"

namespace reports {

struct Column {
  std::string heading;
  bool number = false;  // right-aligned
};
using Row = std::vector<std::string>;  // plain text; escaped by the table

struct Section {
  std::string id, title, body;  // body is HTML
};

std::string TableHtml(const std::string& caption, const std::vector<Column>& columns,
                      const std::vector<Row>& rows);
// The figure with its caption, as the page shows it.
std::string FigureHtml(const Figure& figure);
// The figure of that name, empty when there is none. Figures that do not fit in a page any more are told
// instead of shown.
std::string FigureNamed(const std::vector<Figure>& figures, std::string_view name);
std::string WarningsHtml(const std::vector<std::string>& warnings);

// Summary, the sections, and what is known about the run, behind a table of contents.
std::string PageHtml(const RunFacts& run, const std::vector<Section>& sections);

// Cells of numbers: a dash for what is not there.
std::string FixedCell(double value, int decimals);
std::string SignificantCell(double value);

}  // namespace reports
