// Token reads of every kind of item, one after the other, and the stepping of NextDataRecord between them.

#include <string>
#include <vector>

#include "fuzz/fuzzing.h"
#include "platform/unit.h"
#include "project/loader.h"
#include "project/reader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (fuzzing::Lengthy(text)) {
    return -1;
  }
  platform::OpenUnit(project::kProjectUnit, fuzzing::ProjectFile(text), platform::OpenStatus::Old);
  int32_t integer = 0;
  float real = 0;
  char name[5] = "name";
  std::vector<int32_t> integers;
  std::vector<float> reals;
  std::string cells;
  std::string values;
  for (int round = 0; round < 20; ++round) {
    project::NextDataRecord(project::kProjectUnit);
    project::ReadTokens(
        project::kProjectUnit,
        {project::TextItem(name, 4), project::CellItems(cells, 2, 7), project::IntegerItem(integer),
         project::RealItem(real), project::IntegerItems(integers, 3), project::RealItems(reals, 3),
         project::CellItems(values, 20, 2)});
    platform::StepBack(project::kProjectUnit);
    project::ReadTokens(project::kProjectUnit, {project::CellItems(cells, 2, 9)});
  }
  fuzzing::CleanUp();
  return 0;
}
