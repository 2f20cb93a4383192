#pragma once

#include "ordering/tour.h"

namespace ordering {

// How a kernel judges a candidate: by the closed tour, by the open path built for each candidate, or by the
// open path from the top-edge list.
enum class Judge { Cycle, Exact, Path };

// Best move of one scan over all candidates in their order; the first of equal gains. gain is 0 where no
// candidate gains. `length` is the path length of the tour as it stands (exact kernels only).
template <class Rows>
Move FullScanTwo(const Rows& rows, Judge judge, const Tour& tour, float length);
template <class Rows>
Move FullScanThree(const Rows& rows, Judge judge, const Tour& tour, float length);

}  // namespace ordering
