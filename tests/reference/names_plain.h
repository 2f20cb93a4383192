#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace reference {

// Every pair (earlier, later) of equal names, from 1, by comparing each name with all before it.
std::vector<std::pair<int32_t, int32_t>> EqualNames(const std::vector<std::string_view>& names);

}  // namespace reference
