#include "recombination/remembered.h"

#include <algorithm>

namespace recombination {
namespace {

constexpr size_t kFirstSlots = size_t{1} << 13, kMostSlots = size_t{1} << 20;

}  // namespace

void MakeRoom(RememberedTables& tables, size_t more) {
  if (tables.slots.empty()) tables.slots.assign(kFirstSlots, Remembered{});
  while ((tables.used + more) * 3 > tables.slots.size() * 2) {
    tables.used = 0;
    if (tables.slots.size() >= kMostSlots) {
      std::fill(tables.slots.begin(), tables.slots.end(), Remembered{});
      return;
    }
    std::vector<Remembered> old(tables.slots.size() * 2);
    old.swap(tables.slots);
    for (const Remembered& known : old) {
      if (known.key == 0) continue;
      bool added;
      tables.slots[SlotOf(tables, known.key, added)] = known;
    }
  }
}

}  // namespace recombination
