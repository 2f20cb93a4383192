#include "trial/names.h"

#include <cstring>

namespace trial {
namespace {

constexpr std::size_t kShort = 8;  // names that are looked through rather than hashed

std::size_t Hash(const Name& name) {
  uint64_t first = 0, second = 0, last = 0;
  std::memcpy(&first, name.data(), 8);
  std::memcpy(&second, name.data() + 8, 8);
  std::memcpy(&last, name.data() + 16, kNameWidth - 16);
  constexpr uint64_t kMix = 0x9E3779B97F4A7C15U;  // 2^64 over the golden ratio
  uint64_t hash = (first ^ (second * kMix) ^ (last << 17)) * kMix;
  hash = (hash ^ (hash >> 29)) * kMix;
  return static_cast<std::size_t>(hash >> 16);
}

template <class Part>
bool Like(const Name& one, const Name& other, std::size_t from) {
  return std::memcmp(one.data() + from, other.data() + from, sizeof(Part)) == 0;
}
bool ItemIs(const NameList& list, int32_t position, const Name& name) {
  const Name& item = list.names[static_cast<std::size_t>(position) - 1];
  return Like<uint64_t>(item, name, 0) && Like<uint64_t>(item, name, 8) && Like<uint16_t>(item, name, 16) &&
         item[18] == name[18];
}

// The slot of a name, or the empty one where it belongs.
int32_t& SlotOf(NameList& list, const Name& name) {
  std::size_t s = Hash(name) & (list.slots.size() - 1);
  while (list.slots[s] != 0 && !ItemIs(list, list.slots[s], name)) {
    s = (s + 1) & (list.slots.size() - 1);
  }
  return list.slots[s];
}

// Keeps at least half of the slots empty.
void Rehash(NameList& list) {
  list.slots.assign(list.slots.empty() ? 4 * kShort : 2 * list.slots.size(), 0);
  int32_t position = 0;
  for (const Name& name : list.names) {
    SlotOf(list, name) = ++position;
  }
}

}  // namespace

// Rows often come in the order of their names: the name before once more, or the one behind it.
int32_t PositionOf(NameList& list, const Name& name) {
  if (list.slots.empty()) {
    const auto count = static_cast<int32_t>(list.names.size());
    int32_t position = 1;
    while (position <= count && !ItemIs(list, position, name)) {
      ++position;
    }
    if (position > count) {
      list.names.push_back(name);
      if (list.names.size() > kShort) {
        Rehash(list);
      }
    }
    return position;
  }
  for (const int32_t guess : {list.last, list.last + 1}) {
    if (static_cast<std::size_t>(guess) <= list.names.size() && ItemIs(list, guess, name)) {
      list.last = guess;
      return guess;
    }
  }
  int32_t& slot = SlotOf(list, name);
  if (slot != 0) {
    list.last = slot;
    return slot;
  }
  list.names.push_back(name);
  const auto position = static_cast<int32_t>(list.names.size());
  slot = position;
  if (2 * list.names.size() > list.slots.size()) {
    Rehash(list);
  }
  return position;
}

}  // namespace trial
