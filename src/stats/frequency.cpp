#include "stats/frequency.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "stats/kernel_error.h"

namespace stats {
namespace {

void HoldPreconditions(std::span<const float> x, int32_t k, float xlo, float xhi) {
  if (x.empty()) {
    TerminalError("OWFRQ", "NOBS = 0.  There must be at least one observation.");
  }
  if (k < 3) {
    TerminalError("OWFRQ",
                  "K = " + std::to_string(k) + ".  Since IOPT = 1, there must be at least three intervals.");
  }
  if (!(xlo < xhi)) {
    TerminalError("OWFRQ", "XLO = " + Shown(xlo) + " and XHI = " + Shown(xhi) +
                               ".  The lower bound must be less than the upper bound.");
  }
  if (std::any_of(x.begin(), x.end(), [](float value) { return std::isnan(value); })) {
    TerminalError("OWFRQ", "X contains missing values.  Missing values are not allowed.");
  }
}

// The inner class i with (i - 1) h below `above` and `above` at most i h, or 0. The bounds rise with i, so a
// guess by division and a few steps find it.
int32_t InnerClass(float above, float h, int32_t inner) {
  const auto bound = [h](int32_t i) { return static_cast<float>(i) * h; };
  const float guess = above / h;
  int32_t i = guess < static_cast<float>(inner) ? std::max(static_cast<int32_t>(guess), 1) : inner;
  while (i > 1 && above <= bound(i - 1)) {
    --i;
  }
  while (i <= inner && !(above <= bound(i))) {
    ++i;
  }
  return i <= inner && bound(i - 1) < above ? i : 0;
}

}  // namespace

void OWFRQ(std::span<const float> x, int32_t k, float* table, float xlo, float xhi, float* div) {
  HoldPreconditions(x, k, xlo, xhi);
  const int32_t inner = k - 2;
  const float h = (xhi - xlo) / static_cast<float>(inner);
  std::fill_n(table, k, 0.0F);
  for (const float value : x) {
    if (value <= xlo) {
      table[0] += 1;
    } else if (value > xhi) {
      table[k - 1] += 1;
    } else if (const int32_t i = InnerClass(value - xlo, h, inner); i != 0) {
      table[i] += 1;
    }
  }
  div[0] = xlo - h / 2;
  for (int32_t i = 1; i <= inner; ++i) {
    div[i] = (static_cast<float>(i) - 0.5F) * h + xlo;
  }
  div[k - 1] = xhi + h / 2;
}

}  // namespace stats
