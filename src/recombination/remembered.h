#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace recombination {

// What is known of a table; the key holds the counts that the model can tell apart, 16 bits each.
struct Remembered {
  uint64_t key;  // 0: free
  float rec, lod, distance;
};

// Open addressing over a power of two of slots, within one call. At most 24 MB, half as much again while
// growing.
struct RememberedTables {
  std::vector<Remembered> slots;
  size_t used = 0;
};

// Makes sure that so many keys can be added without slots moving: grows, and forgets all at the limit.
void MakeRoom(RememberedTables& tables, size_t more);

// The slot of a key other than 0.
inline size_t SlotOf(RememberedTables& tables, uint64_t key, bool& added) {
  const size_t mask = tables.slots.size() - 1;
  size_t at = (key * 0x9e3779b97f4a7c15ULL) >> 32 & mask;
  while (tables.slots[at].key != key && tables.slots[at].key != 0) at = (at + 1) & mask;
  added = tables.slots[at].key == 0;
  if (added) {
    tables.slots[at].key = key;
    ++tables.used;
  }
  return at;
}

}  // namespace recombination
