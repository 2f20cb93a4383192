#pragma once

#include <string_view>

namespace platform {

// One line on the process's standard output, written out at once.
void WriteConsole(std::string_view line);

}  // namespace platform
