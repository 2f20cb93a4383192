#pragma once

// The rules of one marker-type row: which tokens may stand in it, the code letter of each, and the marker's
// category. One routine per rule set; marker_types.cpp reads the rows.

#include <cstdint>
#include <string>
#include <string_view>

#include "project/rule_sets.h"

namespace project {

inline constexpr std::size_t kTokenWidth = 2;
inline constexpr std::size_t kCategoryWidth = 8;

struct MarkerRow {
  int32_t marker;  // its number, from 1
  int32_t populationType;
  std::size_t size;  // population size
  std::string_view categoryText;
  const std::string& tokens;  // two characters a line; lines behind its end are blank

  std::string codes;     // out: one letter a line, as far as the row was coded
  int32_t category = 1;  // out
};

std::string_view TokenAt(const MarkerRow& row, std::size_t line);  // line from 0

// Codes the row and tells its category; what is wrong goes to the log and sets status to -1.
void ApplyMarkerRules(MarkerRules rules, int32_t log, int32_t& status, MarkerRow& row);

}  // namespace project
