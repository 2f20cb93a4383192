#pragma once

#include <cctype>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// The twenty bi-parental populations. `shows` holds the genotypes that exist: of A (P1), H (F1), B (P2).
struct PopulationRow {
  int32_t id;
  std::string_view name;
  std::string_view alias;  // another name in use, or empty
  std::string_view shows;
};
inline constexpr PopulationRow kPopulations[20] = {
    {1, "P1BC1F1", "", "AH"},   {2, "P2BC1F1", "", "HB"},   {3, "F1DH", "", "AB"},
    {4, "RIL", "F1RIL", "AB"},  {5, "P1BC1RIL", "", "AB"},  {6, "P2BC1RIL", "", "AB"},
    {7, "F2", "", "AHB"},       {8, "F3", "", "AHB"},       {9, "P1BC2F1", "", "AH"},
    {10, "P2BC2F1", "", "HB"},  {11, "P1BC2RIL", "", "AB"}, {12, "P2BC2RIL", "", "AB"},
    {13, "P1BC1F2", "", "AHB"}, {14, "P2BC1F2", "", "AHB"}, {15, "P1BC2F2", "", "AHB"},
    {16, "P2BC2F2", "", "AHB"}, {17, "P1BC1DH", "", "AB"},  {18, "P2BC1DH", "", "AB"},
    {19, "P1BC2DH", "", "AB"},  {20, "P2BC2DH", "", "AB"},
};

inline bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

// The row of a number from 1 to 20 or of a name; null when there is none.
inline const PopulationRow* FindPopulation(std::string_view text) {
  for (const PopulationRow& row : kPopulations) {
    if (text == std::to_string(row.id) || EqualIgnoringCase(text, row.name) ||
        (!row.alias.empty() && EqualIgnoringCase(text, row.alias))) {
      return &row;
    }
  }
  return nullptr;
}

inline std::string PopulationName(int32_t id) {
  return id >= 1 && id <= 20 ? std::string(kPopulations[id - 1].name) : "unknown";
}

// Kosambi 1, Haldane 2, Morgan 3.
inline std::string_view MapFunctionName(int32_t code) {
  constexpr std::string_view names[] = {"unknown", "Kosambi", "Haldane", "Morgan"};
  return names[code >= 1 && code <= 3 ? code : 0];
}

}  // namespace host
