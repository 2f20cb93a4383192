#include "stats/ranks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "stats/kernel_error.h"
#include "stats/sorts.h"

namespace stats {
namespace {

// A value's bits, turned so that they ascend with it, above its place (from 0).
uint64_t KeyOf(float value, std::size_t place) {
  const auto bits = std::bit_cast<uint32_t>(value);
  const uint32_t ascending = (bits >> 31) != 0 ? ~bits : bits | 0x80000000U;
  return static_cast<uint64_t>(ascending) << 32 | place;
}

// The places in ascending order of their values, by a counting sort of the keys' upper half in three parts of
// eleven bits. Tied values share one rank, so their order does not matter.
std::vector<uint64_t> SortKeys(std::span<const float> x) {
  constexpr uint64_t kPart = 0x7FF;
  constexpr int kShifts[] = {32, 43, 54};
  std::vector<uint64_t> keys(x.size()), other(x.size());
  std::array<std::array<std::size_t, kPart + 2>, std::size(kShifts)> begins{};
  for (std::size_t i = 0; i < x.size(); ++i) {
    keys[i] = KeyOf(x[i], i);
    for (std::size_t part = 0; part < begins.size(); ++part) {
      ++begins[part][(keys[i] >> kShifts[part] & kPart) + 1];
    }
  }
  for (std::size_t part = 0; part < begins.size(); ++part) {
    auto& begin = begins[part];
    std::partial_sum(begin.begin(), begin.end(), begin.begin());
    for (const uint64_t key : keys) {
      other[begin[key >> kShifts[part] & kPart]++] = key;
    }
    keys.swap(other);
  }
  return keys;
}

// The order as SVRGP leaves it, which places values that are not numbers somewhere.
std::vector<uint64_t> SortUnordered(std::span<const float> x) {
  std::vector<float> sorted(x.size());
  std::vector<int32_t> place(x.size());
  std::iota(place.begin(), place.end(), 1);
  SVRGP(static_cast<int32_t>(x.size()), x.data(), sorted.data(), place.data());
  std::vector<uint64_t> keys;
  keys.reserve(place.size());
  for (const int32_t one : place) {
    keys.push_back(static_cast<uint64_t>(one) - 1);
  }
  return keys;
}

}  // namespace

void RANKS(std::span<const float> x, float* score, float fuzz) {
  if (x.size() < 2) {
    TerminalError("RANKS", "NOBS = " + std::to_string(x.size()) +
                               ".  The number of observations, NOBS, must be greater than or equal to 2.");
  }
  const bool ordered = std::none_of(x.begin(), x.end(), [](float value) { return std::isnan(value); });
  const std::vector<uint64_t> keys = ordered ? SortKeys(x) : SortUnordered(x);
  std::size_t runBegin = 0;
  float before = 0;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const auto place = static_cast<std::size_t>(keys[i] & 0xFFFFFFFFU);
    if (i > 0 && !(x[place] - before <= fuzz)) {
      runBegin = i;
    }
    before = x[place];
    score[place] = static_cast<float>(runBegin + 1);
  }
}

}  // namespace stats
