// Both pre-reads of genomic-selection files.

#include "fuzz/fuzzing.h"
#include "platform/unit.h"
#include "project/genomic_selection.h"
#include "project/loader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (fuzzing::Lengthy(text)) {
    return -1;
  }
  platform::OpenUnit(project::kLogUnit, "/dev/null", platform::OpenStatus::Replace);
  int32_t count = 0;
  std::vector<project::ShortName> names;
  const bool whole = project::ReadSelectionTraits(fuzzing::ProjectFile(text), count);
  const bool head = project::ReadSelectionNames(fuzzing::ProjectFile(text), names, count);
  if (whole && !head) {
    __builtin_trap();  // what reads whole reads up to the traits
  }
  fuzzing::CleanUp();
  return 0;
}
