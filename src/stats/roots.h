#pragma once

#include <complex>
#include <cstdint>

namespace stats {

// The real cube root, odd in x.
float CBRT(float x);

// The ndeg complex roots of a polynomial, coeff[0..ndeg] ascending by power, coeff[ndeg] not zero. In no
// particular order. A real root has an imaginary part of exactly 0. ndeg outside 1 to 100 is a terminal
// error.
void ZPORC(int32_t ndeg, const float* coeff, std::complex<float>* root);

}  // namespace stats
