#pragma once

#include <string_view>

namespace platform {

// Ends the process: one line "tessarmont: <what>" on standard error, open files flushed, exit code 1.
// For whatever is not an input error: a file that cannot be opened or written, memory that cannot be had.
[[noreturn]] void Fatal(std::string_view what);

// The same for the exception that is being handled; called from a catch-all handler only.
[[noreturn]] void FatalException();

}  // namespace platform
