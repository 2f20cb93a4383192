#pragma once

#include <string_view>

namespace platform {

// Texts of fixed width are padded with blanks, which do not count.
constexpr std::string_view WithoutTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace platform
