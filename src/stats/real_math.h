#pragma once

#include <cstdint>

#include "stats/log_lanes.h"

namespace stats {

// Logarithms of a positive, finite float, rounded once.
inline float Log(float x) {
  double result;
  LogLanes<double, uint64_t>(static_cast<double>(x), result);
  return static_cast<float>(result);
}
inline float Log10(float x) {
  double result;
  LogLanes<double, uint64_t>(static_cast<double>(x), result);
  return static_cast<float>(result * kLog10E);
}

}  // namespace stats
