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

}  // namespace recombination
