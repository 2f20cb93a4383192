#include "recombination/multi_parent_counts.h"

#include <bit>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace recombination {
namespace {

void CountPortable(const ParentPlanes& p, uint32_t* counts) {
  for (size_t x = 0; x < p.firstClasses; ++x) {
    for (size_t y = 0; y < p.secondClasses; ++y) {
      uint32_t count = 0;
      for (size_t w = 0; w < p.words * p.slots; w += p.slots) {
        count += static_cast<uint32_t>(std::popcount(p.first[w + x] & p.second[w + y]));
      }
      counts[x * p.slots + y] = count;
    }
  }
}

void CountTwoPortable(const TwoClassPlanes& p, TwoClassCounts& counts) {
  for (size_t c = 0; c < 4; ++c) {
    for (size_t k = 0; k < kAbreast; ++k) {
      uint32_t count = 0;
      for (size_t w = 0; w < p.words; ++w) {
        count += static_cast<uint32_t>(
            std::popcount(p.first[w * p.slots + c / 2] & p.second[(w * 2 + c % 2) * kAbreast + k]));
      }
      counts[c][k] = count;
    }
  }
}

#if defined(__x86_64__)
__attribute__((target("popcnt"))) void CountPopcnt(const ParentPlanes& p, uint32_t* counts) {
  for (size_t x = 0; x < p.firstClasses; ++x) {
    for (size_t y = 0; y < p.secondClasses; ++y) {
      int64_t count = 0;
      for (size_t w = 0; w < p.words * p.slots; w += p.slots) {
        count += __builtin_popcountll(p.first[w + x] & p.second[w + y]);
      }
      counts[x * p.slots + y] = static_cast<uint32_t>(count);
    }
  }
}

__attribute__((target("popcnt"))) void CountTwoPopcnt(const TwoClassPlanes& p, TwoClassCounts& counts) {
  for (size_t c = 0; c < 4; ++c) {
    for (size_t k = 0; k < kAbreast; ++k) {
      int64_t count = 0;
      for (size_t w = 0; w < p.words; ++w) {
        count +=
            __builtin_popcountll(p.first[w * p.slots + c / 2] & p.second[(w * 2 + c % 2) * kAbreast + k]);
      }
      counts[c][k] = static_cast<uint32_t>(count);
    }
  }
}

// All classes of the second marker at once.
__attribute__((target("avx512f,avx512vl,avx512vpopcntdq"))) void CountFour(const ParentPlanes& p,
                                                                           uint32_t* counts) {
  for (size_t x = 0; x < p.firstClasses; ++x) {
    __m256i sum = _mm256_setzero_si256();
    for (size_t w = 0; w < p.words * 4; w += 4) {
      const __m256i second = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p.second + w));
      const __m256i both = _mm256_and_si256(_mm256_set1_epi64x(static_cast<int64_t>(p.first[w + x])), second);
      sum = _mm256_add_epi64(sum, _mm256_popcnt_epi64(both));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(counts + x * 4), _mm256_maskz_cvtepi64_epi32(0xf, sum));
  }
}
__attribute__((target("avx512f,avx512vpopcntdq"))) void CountEight(const ParentPlanes& p, uint32_t* counts) {
  for (size_t x = 0; x < p.firstClasses; ++x) {
    __m512i sum = _mm512_setzero_si512();
    for (size_t w = 0; w < p.words * 8; w += 8) {
      const __m512i both = _mm512_and_si512(_mm512_set1_epi64(static_cast<int64_t>(p.first[w + x])),
                                            _mm512_loadu_si512(p.second + w));
      sum = _mm512_add_epi64(sum, _mm512_popcnt_epi64(both));
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(counts + x * 8), _mm512_maskz_cvtepi64_epi32(0xff, sum));
  }
}
// One marker a lane.
__attribute__((target("avx512f,avx512vpopcntdq"))) void CountTwoWide(const TwoClassPlanes& p,
                                                                     TwoClassCounts& counts) {
  __m512i sum[4] = {};
  for (size_t w = 0; w < p.words; ++w) {
#pragma GCC unroll 4
    for (size_t c = 0; c < 4; ++c) {
      const __m512i both =
          _mm512_and_si512(_mm512_set1_epi64(static_cast<int64_t>(p.first[w * p.slots + c / 2])),
                           _mm512_loadu_si512(p.second + (w * 2 + c % 2) * kAbreast));
      sum[c] = _mm512_add_epi64(sum[c], _mm512_popcnt_epi64(both));
    }
  }
#pragma GCC unroll 4
  for (size_t c = 0; c < 4; ++c) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(counts[c]), _mm512_maskz_cvtepi64_epi32(0xff, sum[c]));
  }
}
#endif

}  // namespace

void CountTwoClasses(Level level, const TwoClassPlanes& planes, TwoClassCounts& counts) {
  switch (level) {
#if defined(__x86_64__)
    case Level::Avx512:
      return CountTwoWide(planes, counts);
    case Level::Avx2:
    case Level::Popcnt:
      return CountTwoPopcnt(planes, counts);
#endif
    default:
      return CountTwoPortable(planes, counts);
  }
}

void CountClasses(Level level, const ParentPlanes& planes, uint32_t* counts) {
  switch (level) {
#if defined(__x86_64__)
    case Level::Avx512:
      return planes.slots == 4 ? CountFour(planes, counts) : CountEight(planes, counts);
    case Level::Avx2:
    case Level::Popcnt:
      return CountPopcnt(planes, counts);
#endif
    default:
      return CountPortable(planes, counts);
  }
}

}  // namespace recombination
