#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/module_sections.h"

namespace host {

struct SectionRows {
  std::vector<std::size_t> lines;  // of each row's first word, from 1
  std::vector<std::string> names;  // the row's name; of a simulated trait's rows empty
  std::size_t words = 0;           // that a row takes
};

// Where the parts of a project file stand and what its header says, as the host's own walk tells; lines are
// counted from 1. The walk ends where the file does, or at a count that is none.
struct FileLayout {
  std::array<std::size_t, kFields> fieldLine{};  // 0 where the field is not there
  std::array<std::optional<int64_t>, kFields> value;
  std::array<SectionRows, kSections> rows;
  std::vector<int64_t> chromosomeMarkers;
  std::size_t firstOddMapRow = 0;  // from 1: the first whose chromosome or value is no number
  int64_t lines = 0;               // of the population: as the header says, or of all families
  std::size_t fileLines = 0;
  bool complete = false;     // all sections were there
  bool endsEarly = false;    // the file ends before its last row
  int leadingNumbers = 0;    // data lines at the top with nothing but an integer
  std::string firstRowWord;  // first word behind them, on a line of
  std::size_t firstRowWords = 0;

  const std::optional<int64_t>& Value(Field field) const { return value[static_cast<std::size_t>(field)]; }
  std::size_t FieldLine(Field field) const { return fieldLine[static_cast<std::size_t>(field)]; }
  const SectionRows& Rows(Section section) const { return rows[static_cast<std::size_t>(section)]; }
  int64_t TotalMarkers() const;  // of the map, or as the header says
};

// `module` is a code of kModuleSteps.
FileLayout WalkFile(std::string_view text, std::string_view module);

// Numbers as a project file has them: an integer of 32 bits; a decimal number, exponents with E or D.
std::optional<int64_t> AsInteger(std::string_view word);
bool IsReal(std::string_view word);

}  // namespace host
