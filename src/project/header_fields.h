#pragma once

// The header of a project file: single integers, each in a data record of its own.

#include <cstdint>

namespace project {

enum class Field {
  Indicator,
  PopulationType,
  MappingFunction,
  MarkerSpaceType,
  MarkerSpaceUnit,
  NumChromosomes,
  NumMarkers,
  PopulationSize,
  NumTraits,
  NumEnvironments,
  NumReplications,
  NumFamilies,
};
inline constexpr std::size_t kNumFields = 12;

struct ProjectHeader {
  int32_t Indicator = 0;        // 1 mapping, 2 simulation
  int32_t PopulationType = 0;   // 1 to 20 bi-parental, 1 to 2 clonal and double cross, 1 to 4 multi-parent
  int32_t MappingFunction = 0;  // 1 Kosambi, 2 Haldane, 3 Morgan
  int32_t MarkerSpaceType = 0;  // 1 intervals, 2 positions
  int32_t MarkerSpaceUnit = 0;  // 1 centiMorgans, 2 Morgan
  int32_t NumChromosomes = 0;
  int32_t NumMarkers = 0;
  int32_t PopulationSize = 0;
  int32_t NumTraits = 0;
  int32_t NumEnvironments = 0;
  int32_t NumReplications = 0;
  int32_t NumFamilies = 0;
};

int32_t& FieldOf(ProjectHeader& header, Field field);

// Reads one field. The value is kept even when it is out of range; status becomes -1 on any error, else it
// stays. Population Type is tested by the rule set of moduleCode.
void ReadField(int32_t moduleCode, int32_t unit, int32_t log, int32_t& status, Field field, int32_t& value);

}  // namespace project
