#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/genotype_rules.h"
#include "host/line_words.h"
#include "host/module_sections.h"
#include "host/precheck.h"

namespace host {

// A name as the reader keeps it, and the line of the file that it stands on.
struct NameAt {
  std::string name;
  std::size_t line;
};

// A row of the table of chromosomes, and how its rows of the map come out.
struct ChromosomeRow {
  std::string name;
  std::optional<int64_t> markers;
  std::size_t line;
  int64_t seen = 0;
  bool placed = false;  // a row with a value was met
  float position = 0;   // of the last one
};

// What the precheck knows of a file so far.
struct Sheet {
  std::string_view module;
  Rules rules = Rules::None;
  int64_t population = 0;  // 0 while unknown
  std::array<std::optional<int64_t>, kFields> value;
  std::array<std::size_t, kFields> fieldLine{};
  std::vector<ChromosomeRow> chromosomes;
  std::size_t lastChromosome = 0;  // of the map's rows, from 1
  int64_t familyLines = 0;         // of all families
  bool familiesGood = true;
  std::vector<NameAt> mapNames, markerNames, anchorNames;
  RowJudgement judgement;  // of the row at hand
  std::vector<Finding> findings;

  const std::optional<int64_t>& Value(Field field) const { return value[static_cast<std::size_t>(field)]; }
  std::size_t Line(Field field) const { return fieldLine[static_cast<std::size_t>(field)]; }
};

// A row of a table as it stands in the file.
struct SheetRow {
  std::size_t line;      // from 1
  std::string_view raw;  // its first line
  const LineWords& words;
  std::size_t wanted;  // words that it should have
};

void Add(Sheet& sheet, FindingKind kind, std::vector<std::size_t> lines, std::string words);

// Looks at one row of a table and notes what later tables are compared with.
void LookAtRow(Sheet& sheet, Section section, const SheetRow& row);

// Whether a line looks like a row of a table with rows of about `wanted` words.
bool LooksLike(const Sheet& sheet, Section section, std::size_t wanted, const LineWords& words);

// Whether a word may stand behind the name of a row.
bool GoesOn(const Sheet& sheet, Section section, std::string_view word);

// What shows only when the tables are read: names that stand twice, tables that do not agree, chromosomes of
// another length than told.
void CompareTables(Sheet& sheet, bool anchorsDue);

}  // namespace host
