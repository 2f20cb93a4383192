#pragma once

// What places of the caller's arrays hold before a call.

#include <cstdint>

namespace support {

inline constexpr int32_t kUntouched = -77;
inline constexpr float kUntouchedReal = -77.0F;

}  // namespace support
