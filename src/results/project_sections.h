#pragma once

// The sections that written project files share.

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/record.h"
#include "results/new_map.h"

namespace results {

// Texts stand letter for letter, trailing blanks and misspellings included: required as they stand.
inline constexpr std::string_view kRemarkNote =
    "!*****Note: lines staring with \"!\" are remarks and will be ignored in the program*********";
inline constexpr std::string_view kGeneralHeading =
    "!*****General Information*****************************************************************";
inline constexpr std::string_view kMarkerHeading =
    "!*****Marker Types************************************************************************";

inline constexpr std::string_view kMappingFunctionRemark =
    "!Mapping Function (1 for Kosambi; 2 for Haldane; 3 for Morgan)";
inline constexpr std::string_view kSpaceTypeRemark = "!Marker Space Type (1 for intervals; 2 for positions)";
inline constexpr std::string_view kSpaceUnitRemark = "!Marker Space Unit(1 for centiMorgans; 2 for Morgan)";
inline constexpr std::string_view kChromosomesRemark = "!Number of Chromosomes (or Linkage Group)";
inline constexpr std::string_view kSizeRemark = "!Population size of the mapping population";
inline constexpr std::string_view kTraitsRemark = "!Number of traits";

// Connects a unit to a new file STEM and extension.
void OpenResult(int32_t unit, std::string_view stem, std::string_view extension,
                std::string_view suffix = {});

void WriteLines(int32_t unit, std::span<const std::string_view> lines);

// A value in ten columns and its remark.
void WriteHeaderRow(int32_t unit, int32_t value, std::string_view remark);

// The header of a file of the multi-allelic engines: positions in centimorgans, no traits yet.
void WriteTraitHeader(int32_t unit, int32_t populationType, int32_t mappingFunction, int32_t numChromosomes,
                      int32_t populationSize);

// The groups and the places of the map. `place` is the edit list of a place: name, group number, position;
// `names` has the marker's name for each place.
void WriteChromosomes(int32_t unit, const NewMap& map, std::span<const std::string_view> names,
                      const platform::EditList& place);

// The phenotype section, which the user fills in.
void WriteEmptyPhenotypes(int32_t unit);

}  // namespace results
