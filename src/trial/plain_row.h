#pragma once

#include <span>
#include <string_view>

#include "trial/names.h"

namespace trial {

// A row as most tables have it: words parted by blanks, then short decimal numbers, nothing that means more
// to the token read. Fills all keys and values, or gives false where the token read has to decide; what is
// filled then means nothing.
bool TakePlainRow(std::string_view record, std::span<Name> keys, std::span<float> values);

}  // namespace trial
