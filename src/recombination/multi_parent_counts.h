#pragma once

#include <cstddef>
#include <cstdint>

#include "recombination/pair_tables.h"

namespace recombination {

// Bit planes of two markers, one an allele class: word w of class c at [w * slots + c], slots 4 or 8.
struct ParentPlanes {
  const uint64_t *first, *second;
  size_t firstClasses, secondClasses, words, slots;
};

// counts[x * slots + y] = lines with class x at the first and y at the second marker; room for slots * slots.
void CountClasses(Level level, const ParentPlanes& planes, uint32_t* counts);

// A marker of two classes beside several such: word w of class c of marker k at second[(w * 2 + c) * kAbreast + k].
inline constexpr size_t kAbreast = 8;
struct TwoClassPlanes {
  const uint64_t* first;  // as above
  const uint64_t* second;
  size_t words, slots;
};

// counts[x * 2 + y][k] = lines with class x at the first and y at marker k.
using TwoClassCounts = uint32_t[4][kAbreast];
void CountTwoClasses(Level level, const TwoClassPlanes& planes, TwoClassCounts& counts);

}  // namespace recombination
