#pragma once

#include <string>
#include <string_view>

namespace stats {

// Prints " *** TERMINAL ERROR 5 from ROUTINE.  MESSAGE" on standard error.
void PrintTerminalError(std::string_view routine, std::string_view message);

// Prints that line and ends the process with a non-zero status. Callers hold to the preconditions of the
// kernels; none of them examines an error state.
[[noreturn]] void TerminalError(std::string_view routine, std::string_view message);

// A real as messages show it: the fewest digits that tell it.
std::string Shown(float value);

}  // namespace stats
