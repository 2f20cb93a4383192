#pragma once

// The project files of the mapping engines for a new map: STEM.sdl, STEM.bip and STEM.met.

#include <string_view>

#include "results/new_map.h"

namespace results {

// Reads the header and the marker types of a MAP project file and writes the three files. What the readers
// have to say goes to the log unit; after an error the files are written with what was read.
void WriteProjectFiles(std::string_view fileName, std::string_view stem, const NewMap& map);

}  // namespace results
