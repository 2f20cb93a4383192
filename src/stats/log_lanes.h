#pragma once

#include <cstdint>

namespace stats {

inline constexpr double kLog10E = 0.434294481903251827651;

// Natural logarithm of a normal positive double, or of each lane of a vector of them; other arguments give a
// finite value without meaning. Only +, -, * and / in a fixed order: the same bits on every processor, in any
// number of lanes. Error under 2e-15. D is double with U uint64_t, or vectors of these.
template <class D, class U>
inline void LogLanes(const D& x, D& result) {
  constexpr uint64_t kOffset = 0x3fe6a09e667f3bcd;  // sqrt(1/2): the mantissa runs from there to sqrt(2)
  constexpr double kTwo52 = 4503599627370496.0;
  const U biased = __builtin_bit_cast(U, x) - kOffset + (1024ULL << 52);
  const U power = biased >> 52;  // exponent + 1024
  const D mantissa = __builtin_bit_cast(D, __builtin_bit_cast(U, x) - (power << 52) + (1024ULL << 52));
  const D exponent = __builtin_bit_cast(D, power | 0x4330000000000000ULL) - (kTwo52 + 1024.0);
  const D s = (mantissa - 1.0) / (mantissa + 1.0);
  const D z = s * s;
  // ln((1 + s) / (1 - s)) = 2 (s + s^3/3 + s^5/5 + ...), |s| at most 0.1716
  D sum = z * (1.0 / 19.0) + 1.0 / 17.0;
  sum = sum * z + 1.0 / 15.0;
  sum = sum * z + 1.0 / 13.0;
  sum = sum * z + 1.0 / 11.0;
  sum = sum * z + 1.0 / 9.0;
  sum = sum * z + 1.0 / 7.0;
  sum = sum * z + 1.0 / 5.0;
  sum = sum * z + 1.0 / 3.0;
  result = exponent * 0.693147180559945309417 + (2.0 * s + 2.0 * s * z * sum);
}

// Cube root of a positive normal double or of each lane; a third of the exponent bits for a guess within 3.5
// %, then two steps of Halley, each of which triples the digits. Error under 2e-14.
template <class D, class U>
inline void CbrtLanes(const D& x, D& result) {
  constexpr double kTwo52 = 4503599627370496.0;
  const D high = __builtin_bit_cast(D, __builtin_bit_cast(U, x) >> 32 | 0x4330000000000000ULL) - kTwo52;
  const D third = high * (1.0 / 3.0) + 715094163.0 + kTwo52;
  D root = __builtin_bit_cast(D, __builtin_bit_cast(U, third) << 32);
  for (int step = 0; step < 2; ++step) {
    const D cube = root * root * root;
    root = root * ((cube + 2.0 * x) / (2.0 * cube + x));
  }
  result = root;
}

}  // namespace stats
