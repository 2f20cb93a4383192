#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace project {

// Finds equal names among names that come one after the other, in time linear in their number. The names must
// stay where they are.
struct NameIndex {
  std::unordered_map<std::string_view, int32_t> latest;  // the last entry with a name
  std::vector<int32_t> before = {0};  // of each entry, from 1: the one before it with its name
};

// Adds the next name (the first is entry 1) and tells the earlier entries of that name, in ascending order.
std::vector<int32_t> AddName(NameIndex& index, std::string_view name);

}  // namespace project
