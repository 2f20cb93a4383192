#pragma once

#include <cstdint>

#include "ordering/distances.h"

namespace ordering {

// Nearest-neighbour tour from city start: tour[n] begins with start, and each further city is the nearest of
// those not yet on the tour, among equals the one that the exchanges have left last.
template <class Rows>
void NearestNeighbourTour(const Rows& rows, const Distances& d, City start, City* tour, std::int32_t* place);

// The same over a pair array.
void NearestNeighbourTour(std::int32_t n, const float* dist, City start, City* tour);

}  // namespace ordering
