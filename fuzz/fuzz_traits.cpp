// Files of the mapping engines and of several maps; the first byte of the input chooses the module.

#include "fuzz/fuzzing.h"
#include "platform/unit.h"
#include "project/loader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  using project::Module;
  constexpr Module kModules[] = {Module::Bip, Module::Met, Module::Nam, Module::Csl,
                                 Module::Sdl, Module::Cmp, Module::Cdq, Module::Plq};
  if (size == 0) {
    return -1;
  }
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  if (fuzzing::Lengthy(text)) {
    return -1;
  }
  const Module module = kModules[data[0] % std::size(kModules)];
  platform::OpenUnit(project::kLogUnit, "/dev/null", platform::OpenStatus::Replace);
  int32_t status = 0;
  try {
    project::LoadModule(module, project::RowOf(module).moduleCode, fuzzing::ProjectFile(text), status);
  } catch (const fuzzing::FatalPath&) {
  }
  fuzzing::CleanUp();
  return 0;
}
