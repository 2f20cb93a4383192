#pragma once

// The project files of the mapping engines for a new map: STEM.sdl, STEM.bip and STEM.met.

#include <cstdint>
#include <string_view>

namespace results {

// A finished map as the host hands it over. The chromosomes are consecutive runs of places.
struct NewMap {
  int32_t numMarkers;  // places
  int32_t numChromosomes;
  const char* chromosomeName;        // 19 characters each
  const int32_t* chromosomeMarkers;  // places of each chromosome
  const int32_t* order;              // the marker's running number in the input file, for each place
  const float* position;             // position or interval length, for each place
};

// Reads the header and the marker types of a MAP project file and writes the three files. What the readers
// have to say goes to the log unit; after an error the files are written with what was read.
void WriteProjectFiles(std::string_view fileName, std::string_view stem, const NewMap& map);

}  // namespace results
