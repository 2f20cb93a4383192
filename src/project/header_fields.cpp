#include "project/header_fields.h"

#include <array>
#include <limits>
#include <string_view>

#include "platform/record.h"
#include "platform/unit.h"
#include "project/reader.h"
#include "project/rule_sets.h"

namespace project {
namespace {

constexpr int32_t kNoLimit = std::numeric_limits<int32_t>::max();

struct FieldRow {
  int32_t ProjectHeader::*place;
  std::string_view cannotRead, outOfRange, detail;
  int32_t low, high;
};

constexpr std::array<FieldRow, kNumFields> kFieldRows = {{
    // in the order of enum Field
    {&ProjectHeader::Indicator,
     "--Input error: cannot read indicator for mapping (1) or simulation (2)",  // no "!": required as it
                                                                                // stands
     "--Input error: indicator for mapping (1) or simulation (2) out of range!", "  Indicator = ", 1, 2},
    {&ProjectHeader::PopulationType, "--Input error: cannot read Population Type!",
     "--Input error: Population Type out of range!", "  Population Type = ", 0, 0},  // range by module
    {&ProjectHeader::MappingFunction, "--Input error: cannot read Mapping Function!",
     "--Input error: Mapping Function out of range!", "  Mapping Function = ", 1, 3},
    {&ProjectHeader::MarkerSpaceType, "--Input error: cannot read Marker Space Type!",
     "--Input error: Marker Space Type out of range!", "  Marker Space Type = ", 1, 2},
    {&ProjectHeader::MarkerSpaceUnit, "--Input error: cannot read Marker Space Unit!",
     "--Input error: Marker Space Uint out of range!",  // "Uint": required as it stands
     "  Marker Space Uint = ", 1, 2},
    {&ProjectHeader::NumChromosomes, "--Input error: cannot read Number of Chromosomes!",
     "--Input error: Number of Chromosomes out of range!", "  Number of Chromosomes = ", 1, kNoLimit},
    {&ProjectHeader::NumMarkers, "--Input error: cannot read Number of Markers!",
     "--Input error: Number of Markers out of range!", "  Number of Markers = ", 1, kNoLimit},
    {&ProjectHeader::PopulationSize, "--Input error: cannot read Population Size!",
     "--Input error: Population Size out of range!", "  Population Size = ", 1, kNoLimit},
    {&ProjectHeader::NumTraits, "--Input error: cannot read Number of Traits!",
     "--Input error: Number of Traits out of range!", "  Number of Traits = ", 1, kNoLimit},
    {&ProjectHeader::NumEnvironments, "--Input error: cannot read Number of Environments!",
     "--Input error: Number of Environments out of range!", "  Number of Environments = ", 1, kNoLimit},
    {&ProjectHeader::NumReplications, "--Input error: cannot read Number of Replications!",
     "--Input error: Number of Replications out of range!", "  Number of Replications = ", 1, kNoLimit},
    {&ProjectHeader::NumFamilies,
     "--Input error: cannot read Number of Environments!",  // not "Families": required as it stands
     "--Input error: Number of Families out of range!", "  Number of Families = ", 1, kNoLimit},
}};

bool PopulationInRange(int32_t moduleCode, int32_t value) {
  const uint32_t accepted = RulesOf(moduleCode).populations;
  return accepted == 0 || (value >= 1 && value <= 20 && (accepted & PopulationBit(value)) != 0);
}

}  // namespace

int32_t& FieldOf(ProjectHeader& header, Field field) {
  return header.*kFieldRows[static_cast<std::size_t>(field)].place;
}

void ReadField(int32_t moduleCode, int32_t unit, int32_t log, int32_t& status, Field field, int32_t& value) {
  const FieldRow& row = kFieldRows[static_cast<std::size_t>(field)];
  NextDataRecord(unit);
  if (ReadTokens(unit, {IntegerItem(value)}) != 0) {
    platform::WriteRecord(log, row.cannotRead);
    status = -1;
    return;
  }
  const bool inRange = field == Field::PopulationType ? PopulationInRange(moduleCode, value)
                                                      : value >= row.low && value <= row.high;
  if (!inRange) {
    platform::WriteRecord(log, row.outOfRange);
    platform::WriteRecord(log, platform::Record(platform::Edits("A,I8"), {row.detail, value}));
    status = -1;
  }
}

}  // namespace project
