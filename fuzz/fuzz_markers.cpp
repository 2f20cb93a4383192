// Raw marker files under every rule set; the first byte of the input chooses it.

#include <algorithm>

#include "fuzz/fuzzing.h"
#include "platform/unit.h"
#include "project/loader.h"
#include "project/store.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  constexpr int32_t kCodes[] = {20, 30, 101, 102, 107, 108, 1};
  if (size == 0) {
    return -1;
  }
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (fuzzing::Lengthy(text)) {
    return -1;
  }
  platform::OpenUnit(project::kLogUnit, "/dev/null", platform::OpenStatus::Replace);
  int32_t status = 0;
  try {
    project::LoadModule(project::Module::Bin, kCodes[data[0] % std::size(kCodes)], fuzzing::ProjectFile(text),
                        status);
  } catch (const fuzzing::FatalPath&) {
  }
  const project::ProjectBlock& block = project::Store(project::Module::Bin);
  // What was accepted is whole: a name and a code letter a line for every marker, unless no rules read the rows.
  const auto markers = static_cast<std::size_t>(std::max(block.Header.NumMarkers, 0));
  const auto lines = static_cast<std::size_t>(std::max(block.Header.PopulationSize, 0));
  if (status == 0 && (block.AnchorInfo.items.size() != markers ||
                      (!block.Genotype.items.empty() && block.Genotype.items.size() != markers * lines))) {
    __builtin_trap();
  }
  fuzzing::CleanUp();
  return 0;
}
