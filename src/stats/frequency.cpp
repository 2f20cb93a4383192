#include "stats/frequency.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

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
// guess and a few steps find it.
int32_t InnerClass(float above, float h, float guess, int32_t inner) {
  const auto bound = [h](int32_t i) { return static_cast<float>(i) * h; };
  int32_t i = guess < static_cast<float>(inner - 1) ? static_cast<int32_t>(guess) + 1 : inner;
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
  const float perUnit = 1 / h;
  std::vector<int32_t> counts(static_cast<std::size_t>(k), 0);
  for (const float value : x) {
    if (value <= xlo) {
      ++counts.front();
    } else if (value > xhi) {
      ++counts.back();
    } else if (const int32_t i = InnerClass(value - xlo, h, (value - xlo) * perUnit, inner); i != 0) {
      ++counts[static_cast<std::size_t>(i)];
    }
  }
  static constexpr int32_t kStandstill = 1 << 24;  // where a float that counts by one stays
  std::transform(counts.begin(), counts.end(), table,
                 [](int32_t count) { return static_cast<float>(std::min(count, kStandstill)); });
  div[0] = xlo - h / 2;
  for (int32_t i = 1; i <= inner; ++i) {
    div[i] = (static_cast<float>(i) - 0.5F) * h + xlo;
  }
  div[k - 1] = xhi + h / 2;
}

}  // namespace stats
