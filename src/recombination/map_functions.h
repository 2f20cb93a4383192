#pragma once

#include <cstdint>

namespace recombination {

inline constexpr int32_t kKosambi = 1, kHaldane = 2, kMorgan = 3;
inline constexpr float kUnlinkedDistance = 1000.0f;  // what every table shows for a pair at 0.5

// Recombination frequency, 0 to 0.5, of a distance in centimorgans. 999 and above (the unlinked distance
// included) and not a number give 0.5, a negative distance 0, an unknown map function 0.
float RecFromDistance(int32_t mapFunction, float distance);

// Distance in centimorgans of a frequency from 0 to 1; values above 0.5 (repulsion) count as their
// complement. 1000 at 0.5, outside 0 to 1 and for not a number; 0 under an unknown map function.
float DistanceFromRec(int32_t mapFunction, float rec);

// The smaller root in 0 to 0.5 of a r^2 + b r + c = 0, else 0.5. With a = 0 the linear root as it stands.
float QuadraticRecRoot(float a, float b, float c);

// Sum of counts[k] log10(probabilities[k]) over the n cells whose probability is above 0.
float LogLikelihood(int32_t n, const float* counts, const float* probabilities);

}  // namespace recombination
