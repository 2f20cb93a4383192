// Raw marker files under every rule set; the first byte of the input chooses it.

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
  if (status == 0 && block.AnchorInfo.allocated &&
      project::MarkerNameAt(block, block.Header.NumMarkers).size() != project::kNameWidth) {
    __builtin_trap();
  }
  fuzzing::CleanUp();
  return 0;
}
