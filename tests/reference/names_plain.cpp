#include "tests/reference/names_plain.h"

namespace reference {

std::vector<std::pair<int32_t, int32_t>> EqualNames(const std::vector<std::string_view>& names) {
  std::vector<std::pair<int32_t, int32_t>> pairs;
  for (std::size_t i = 1; i < names.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (names[j] == names[i]) {
        pairs.emplace_back(static_cast<int32_t>(j + 1), static_cast<int32_t>(i + 1));
      }
    }
  }
  return pairs;
}

}  // namespace reference
