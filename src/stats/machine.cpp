#include "stats/machine.h"

#include <limits>
#include <string>

#include "stats/kernel_error.h"

namespace stats {
namespace {

using Limits = std::numeric_limits<float>;

constexpr float kConstants[8] = {
    Limits::min(), Limits::max(),       0x1p-24F,           0x1p-23F,
    0.30103F,      Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(),
};

}  // namespace

float AMACH(std::int32_t which) {
  if (which < 1 || which > 8) {
    TerminalError("AMACH", "The argument must be between 1 and 8 inclusive. N = " + std::to_string(which));
  }
  return kConstants[which - 1];
}

}  // namespace stats
