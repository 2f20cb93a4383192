#pragma once

#include <cstdint>
#include <string_view>

#include "project/modules.h"

namespace project {

inline constexpr int32_t kLogUnit = 100;
inline constexpr int32_t kProjectUnit = 102;

// Reads a project file into the module's block of the store, section by section in the order of its row. The
// first section that reports an error ends the load with status -1. The file is closed on every way out.
void LoadModule(Module module, int32_t moduleCode, std::string_view fileName, int32_t& status);

}  // namespace project
