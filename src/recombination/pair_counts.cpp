#include "recombination/pair_counts.h"

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace recombination {
namespace {

constexpr size_t kWordBits = 64;
constexpr size_t kNoPlane = kPlanes;

constexpr size_t PlaneOf(char letter) {
  switch (letter) {
    case 'A':
      return kA;
    case 'H':
      return kHet;
    case 'D':
    case 'R':
      return kHalf;
    case 'B':
      return kB;
    default:
      return kNoPlane;
  }
}
constexpr std::array<uint8_t, 256> kPlaneOfLetter = [] {
  std::array<uint8_t, 256> table{};
  for (size_t k = 0; k < table.size(); ++k) table[k] = static_cast<uint8_t>(PlaneOf(static_cast<char>(k)));
  return table;
}();

// Bits of up to 64 lines, H in its own plane and in the class's.
std::array<uint64_t, kPlanes + 1> WordsOf(const char* letters, size_t lines) {
  std::array<uint64_t, kPlanes + 1> words{};
  for (size_t line = 0; line < lines; ++line) {
    words[kPlaneOfLetter[static_cast<unsigned char>(letters[line])]] |= uint64_t{1} << line;
  }
  return words;
}

void FillMarker(PlaneStore& store, size_t position, const char* letters, size_t lines) {
  for (size_t w = 0; w < store.words; ++w) {
    auto words = WordsOf(letters + w * kWordBits, std::min(kWordBits, lines - w * kWordBits));
    store.reduced = store.reduced || words[kHalf] != 0;
    words[kHalf] |= words[kHet];
    store.complete = store.complete && words[kNoPlane] == 0;
    for (size_t p = 0; p < kPlanes; ++p) {
      store.bits[(p * store.words + w) * store.stride + position] = words[p];
      store.present[p] = store.present[p] || words[p] != 0;
    }
  }
}

uint32_t BitsIn(uint64_t x) {
  x -= x >> 1 & 0x5555555555555555;
  x = (x & 0x3333333333333333) + (x >> 2 & 0x3333333333333333);
  x = (x + (x >> 4)) & 0x0f0f0f0f0f0f0f0f;
  return static_cast<uint32_t>((x * 0x0101010101010101) >> 56);
}

void CountPortable(const uint64_t* row, const uint64_t* plane, size_t words, size_t stride, size_t from,
                   size_t to, uint32_t* counts) {
  for (size_t m = from; m < to; ++m) {
    uint32_t count = 0;
    for (size_t w = 0; w < words; ++w) count += BitsIn(row[w] & plane[w * stride + m]);
    counts[m - from] = count;
  }
}

#if defined(__x86_64__)
__attribute__((target("popcnt"))) void CountPopcnt(const uint64_t* row, const uint64_t* plane, size_t words,
                                                   size_t stride, size_t from, size_t to, uint32_t* counts) {
  for (size_t m = from; m < to; ++m) {
    uint64_t count = 0;
    for (size_t w = 0; w < words; ++w) {
      count += static_cast<uint64_t>(__builtin_popcountll(row[w] & plane[w * stride + m]));
    }
    counts[m - from] = static_cast<uint32_t>(count);
  }
}

// Four positions a vector: bits of the two halves of each byte by table lookup, bytes summed by word.
__attribute__((target("avx2"))) void CountAvx2(const uint64_t* row, const uint64_t* plane, size_t words,
                                               size_t stride, size_t from, size_t to, uint32_t* counts) {
  const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4, 0, 1, 1, 2, 1, 2, 2,
                                         3, 1, 2, 2, 3, 2, 3, 3, 4);
  const __m256i low = _mm256_set1_epi8(15), zero = _mm256_setzero_si256();
  const __m256i evens = _mm256_setr_epi32(0, 2, 4, 6, 0, 2, 4, 6);
  for (size_t m = from; m < to; m += 4) {
    __m256i sum = zero;
    for (size_t w = 0; w < words; ++w) {
      const auto* at = reinterpret_cast<const __m256i*>(plane + w * stride + m);
      const __m256i both =
          _mm256_and_si256(_mm256_set1_epi64x(static_cast<int64_t>(row[w])), _mm256_loadu_si256(at));
      const __m256i bytes =
          _mm256_add_epi8(_mm256_shuffle_epi8(table, _mm256_and_si256(both, low)),
                          _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi32(both, 4), low)));
      sum = _mm256_add_epi64(sum, _mm256_sad_epu8(bytes, zero));
    }
    const __m128i packed = _mm256_castsi256_si128(_mm256_permutevar8x32_epi32(sum, evens));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(counts + (m - from)), packed);
  }
}

__attribute__((target("avx512f,avx512vpopcntdq"))) void CountAvx512(const uint64_t* row,
                                                                    const uint64_t* plane, size_t words,
                                                                    size_t stride, size_t from, size_t to,
                                                                    uint32_t* counts) {
  for (size_t m = from; m < to; m += 8) {
    __m512i sum = _mm512_setzero_si512();
    for (size_t w = 0; w < words; ++w) {
      const __m512i both = _mm512_and_si512(_mm512_set1_epi64(static_cast<int64_t>(row[w])),
                                            _mm512_loadu_si512(plane + w * stride + m));
      sum = _mm512_add_epi64(sum, _mm512_popcnt_epi64(both));
    }
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(counts + (m - from)),
                        _mm512_maskz_cvtepi64_epi32(0xff, sum));
  }
}
#endif

}  // namespace

Level BestLevel() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx512vpopcntdq") != 0 && __builtin_cpu_supports("avx512f") != 0 &&
      __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
      __builtin_cpu_supports("avx512bw") != 0) {
    return Level::Avx512;
  }
  if (__builtin_cpu_supports("avx2") != 0) return Level::Avx2;
  if (__builtin_cpu_supports("popcnt") != 0) return Level::Popcnt;
#endif
  return Level::Portable;
}

std::vector<PlaneStore> MakePlanes(const Genotypes& data) {
  std::vector<PlaneStore> stores;
  for (int32_t m = 1; m <= data.numMarkers; ++m) {
    const int32_t category = data.category[m - 1];
    auto at = std::find_if(stores.begin(), stores.end(),
                           [&](const PlaneStore& s) { return s.category == category; });
    if (at == stores.end()) {
      at = stores.insert(at, PlaneStore{});
      at->category = category;
    }
    at->markers.push_back(m);
  }
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  for (PlaneStore& store : stores) {
    store.words = (lines + kWordBits - 1) / kWordBits;
    store.stride = (store.markers.size() + kCountLanes - 1) / kCountLanes * kCountLanes;
    store.bits.assign(kPlanes * store.words * store.stride, 0);
    for (size_t k = 0; k < store.markers.size(); ++k) {
      FillMarker(store, k, data.genotype + static_cast<size_t>(store.markers[k] - 1) * lines, lines);
    }
  }
  return stores;
}

void CountRow(Level level, const uint64_t* row, const uint64_t* plane, size_t words, size_t stride,
              size_t from, size_t to, uint32_t* counts) {
  switch (level) {
#if defined(__x86_64__)
    case Level::Avx512:
      return CountAvx512(row, plane, words, stride, from, to, counts);
    case Level::Avx2:
      return CountAvx2(row, plane, words, stride, from, to, counts);
    case Level::Popcnt:
      return CountPopcnt(row, plane, words, stride, from, to, counts);
#endif
    default:
      return CountPortable(row, plane, words, stride, from, to, counts);
  }
}

}  // namespace recombination
