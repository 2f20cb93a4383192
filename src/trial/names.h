#pragma once

// Names of a trial table: 19 characters, blank-padded, listed once each in order of first appearance.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace trial {

inline constexpr std::size_t kNameWidth = 19;
using Name = std::array<char, kNameWidth>;

// A name without its trailing blanks, as all fields show it.
inline std::string_view Text(const Name& name) {
  const std::string_view text(name.data(), name.size());
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

struct NameList {
  std::vector<Name> names;
  std::vector<int32_t> slots;  // positions by hash, 0 for an empty one; a short list has none
  int32_t last = 1;            // the position asked for last, in a list that has slots
};

// The position (from 1) of a name in the list, at the end of which it is put when it is new.
int32_t PositionOf(NameList& list, const Name& name);

}  // namespace trial
