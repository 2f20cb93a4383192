#pragma once

#include <cstdint>

namespace stats {

// State of the process-wide generator; both words are 2147483562 and 2147483398 when the process starts.
struct GeneratorState {
  std::int32_t first, second;
};

GeneratorState SaveGenerator();
void RestoreGenerator(GeneratorState state);

// New state from calendar time plus processor time.
void SeedGeneratorFromClock();

// The next uniform number of the process-wide generator, in (0, 1].
float UniformDraw();

// Simple random sample of sampleSize indices out of 1..population, ascending. Draws only where an index may
// be left out. Returns false, with the reason on standard error, unless 1 <= sampleSize <= population.
bool RNSRI(std::int32_t sampleSize, std::int32_t population, std::int32_t* index);

}  // namespace stats
