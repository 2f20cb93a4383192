#pragma once

// What the fuzzers share: an input as a project file, and the fatal path as an exception.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace fuzzing {

struct FatalPath {};  // thrown in place of ending the process

// Puts the text into a file that the project unit can open, and tells its name.
std::string_view ProjectFile(std::string_view text);

// True when the text claims a repeat or a size that is legal and merely long to go through.
bool Lengthy(std::string_view text);

// Closes all that a stopped load left open, and frees what it left allocated.
void CleanUp();

}  // namespace fuzzing
