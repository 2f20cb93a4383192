#pragma once

#include "ordering/tour.h"

namespace ordering {

// Best move of one scan of TwoOptPath (three = false) or ThreeOptPath (three = true): the very move that
// judging all candidates in their order finds, ties included, or none (number 0) if no gain is above
// kSmallestGain. Only for tame tables and n of at least kSmallestSearch.
//
// Candidates are reached through the lists of near cities and judged only if a bound on their gain is not
// below the best so far. The order of the scan lives in a key of the positions: of equal gains the one with
// the lower key wins, so candidates may be met in any order and more than once.
//
// The bounds. x are the removed edges, y the added ones, V the longest edge before the move, W the second
// longest. A gain is sum(x) - V - sum(y) + max(R, y), R the longest edge that stays.
//   A  no y above R: with w = x, but w = W for the longest edge, the gain is at most sum(w) - sum(y). The
//      edges x1 y1 x2 y2 .. close a ring, and going round it from some start every partial sum of
//      (w - y) - T / count is positive if the gain is above T. So y1 < w1 - T / count, and so on.
//   B  some y above R: the longest y drops out. If V is removed, the gain is what the other removed edges
//      lose to the other added ones; if V stays, the removed edges must together exceed V.
// Rounding moves a computed gain off these values by less than the margins, by which T lies below the best.
template <class Rows>
Move SearchPathMove(const Rows& rows, const Distances& d, const Tour& tour, bool three);

inline constexpr float kSmallestGain = 0.0001F;
// In smaller tours a pair of edges need not occur in any triple.
inline constexpr std::int32_t kSmallestSearch = 8;

}  // namespace ordering
