#include "recombination/clonal_counts.h"

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/pair_counts.h"
#include "recombination/pair_lanes.h"

namespace recombination {
namespace {

constexpr size_t kWordBits = 64;

constexpr size_t ClassOf(char letter) {
  switch (letter) {
    case 'A':
    case 'E':
    case 'G':
    case 'I':
      return 0;
    case 'B':
    case 'F':
    case 'J':
      return 1;
    case 'C':
    case 'H':
      return 2;
    case 'D':
    case 'K':
      return 3;
    default:
      return 4;
  }
}
constexpr std::array<uint8_t, 256> kClassOfLetter = [] {
  std::array<uint8_t, 256> table{};
  for (size_t k = 0; k < table.size(); ++k) table[k] = static_cast<uint8_t>(ClassOf(static_cast<char>(k)));
  return table;
}();

int32_t KnownCategory(int32_t category) { return category >= 1 && category <= 5 ? category : 0; }

void FillMarker(ClonalPlanes& store, size_t position, const char* letters, size_t lines) {
  for (size_t w = 0; w < store.words; ++w) {
    std::array<uint64_t, 5> c{};
    const char* at = letters + w * kWordBits;
    const size_t count = std::min(kWordBits, lines - w * kWordBits);
    for (size_t line = 0; line < count; ++line) {
      c[kClassOfLetter[static_cast<unsigned char>(at[line])]] |= uint64_t{1} << line;
    }
    const std::array<uint64_t, kClonalPlaneCount> planes = {
        c[0],        c[1],        c[2],        c[3],        c[0] | c[1],
        c[2] | c[3], c[0] | c[2], c[1] | c[3], c[0] | c[3], c[0] | c[1] | c[2] | c[3]};
    for (size_t p = 0; p < planes.size(); ++p) {
      store.Bits()[(p * store.words + w) * store.stride + position] = planes[p];
    }
  }
}

// A term's planes: of the row marker and of the store; the second two null where there are none.
struct TermPlanes {
  const uint64_t *row, *plane, *otherRow, *otherPlane;
};
struct TermPlan {
  std::array<TermPlanes, kMostCounts> term;
  size_t size, words, stride;
};

void CountByTerms(Level level, const TermPlan& plan, size_t from, size_t to, ClonalCounts& counts) {
  alignas(64) std::array<uint32_t, kClonalRun> scratch;
  for (size_t k = 0; k < plan.size; ++k) {
    const TermPlanes& term = plan.term[k];
    CountRow(level, term.row, term.plane, plan.words, plan.stride, from, to, scratch.data());
    for (size_t m = 0; m < to - from; ++m) counts[k][m] = static_cast<int32_t>(scratch[m]);
    if (term.otherRow == nullptr) continue;
    CountRow(level, term.otherRow, term.otherPlane, plan.words, plan.stride, from, to, scratch.data());
    for (size_t m = 0; m < to - from; ++m) counts[k][m] += static_cast<int32_t>(scratch[m]);
  }
}

#if defined(__x86_64__)
// Up to four words of a term, from a word on; added to what is counted already.
template <size_t kWords, bool kTwo>
__attribute__((target("avx512f,avx512vl,avx512vpopcntdq"))) void CountWords(const TermPlanes& term,
                                                                            size_t word, size_t stride,
                                                                            size_t from, size_t to,
                                                                            int32_t* counts) {
  __m512i row[kWords], other[kWords];
#pragma GCC unroll 4
  for (size_t w = 0; w < kWords; ++w) {
    row[w] = _mm512_set1_epi64(static_cast<int64_t>(term.row[word + w]));
    if constexpr (kTwo) other[w] = _mm512_set1_epi64(static_cast<int64_t>(term.otherRow[word + w]));
  }
  const uint64_t *plane = term.plane + word * stride,
                 *otherPlane = term.otherPlane + (kTwo ? word * stride : 0);
  for (size_t m = from; m < to; m += kCountLanes) {
    auto* at = reinterpret_cast<__m256i*>(counts + (m - from));
    __m512i sum =
        word == 0 ? _mm512_setzero_si512() : _mm512_maskz_cvtepi32_epi64(0xff, _mm256_loadu_si256(at));
#pragma GCC unroll 4
    for (size_t w = 0; w < kWords; ++w) {
      __m512i shared = _mm512_and_si512(row[w], _mm512_loadu_si512(plane + w * stride + m));
      if constexpr (kTwo) {
        shared = _mm512_or_si512(shared,
                                 _mm512_and_si512(other[w], _mm512_loadu_si512(otherPlane + w * stride + m)));
      }
      sum = _mm512_add_epi64(sum, _mm512_popcnt_epi64(shared));
    }
    _mm256_storeu_si256(at, _mm512_maskz_cvtepi64_epi32(0xff, sum));
  }
}

template <bool kTwo>
void CountTerm(const TermPlan& plan, const TermPlanes& term, size_t from, size_t to, int32_t* counts) {
  if (plan.words == 0) std::fill_n(counts, to - from, 0);
  for (size_t word = 0; word < plan.words; word += 4) {
    switch (plan.words - word) {
      case 1:
        CountWords<1, kTwo>(term, word, plan.stride, from, to, counts);
        break;
      case 2:
        CountWords<2, kTwo>(term, word, plan.stride, from, to, counts);
        break;
      case 3:
        CountWords<3, kTwo>(term, word, plan.stride, from, to, counts);
        break;
      default:
        CountWords<4, kTwo>(term, word, plan.stride, from, to, counts);
    }
  }
}

void CountTogether(const TermPlan& plan, size_t from, size_t to, ClonalCounts& counts) {
  for (size_t k = 0; k < plan.size; ++k) {
    const TermPlanes& term = plan.term[k];
    if (term.otherRow == nullptr) {
      CountTerm<false>(plan, term, from, to, counts[k].data());
    } else {
      CountTerm<true>(plan, term, from, to, counts[k].data());
    }
  }
}
#endif

// Which markers of the project, block by block, are of a store.
void FillMasks(ClonalPlanes& store, int32_t numMarkers) {
  const size_t blocks = (static_cast<size_t>(numMarkers) + kMarkerBlock - 1) / kMarkerBlock;
  store.mask.assign(blocks, 0);
  store.before.assign(blocks + 1, 0);
  for (const int32_t marker : store.markers) {
    const size_t m = static_cast<size_t>(marker) - 1;
    store.mask[m / kMarkerBlock] =
        static_cast<uint16_t>(store.mask[m / kMarkerBlock] | 1U << m % kMarkerBlock);
    ++store.before[m / kMarkerBlock + 1];
  }
  for (size_t b = 0; b < blocks; ++b) store.before[b + 1] += store.before[b];
}

}  // namespace

std::vector<ClonalPlanes> MakeClonalPlanes(const Genotypes& data) {
  std::vector<ClonalPlanes> stores;
  for (int32_t m = 1; m <= data.numMarkers; ++m) {
    const int32_t category = KnownCategory(data.category[m - 1]);
    auto at = std::find_if(stores.begin(), stores.end(),
                           [&](const ClonalPlanes& s) { return s.category == category; });
    if (at == stores.end()) {
      at = stores.insert(at, ClonalPlanes{});
      at->category = category;
    }
    at->markers.push_back(m);
  }
  const auto lines = static_cast<size_t>(std::max(data.populationSize, 0));
  for (ClonalPlanes& store : stores) {
    FillMasks(store, data.numMarkers);
    store.words = (lines + kWordBits - 1) / kWordBits;
    store.stride = (store.markers.size() + 2 * kCountLanes - 1) / kCountLanes * kCountLanes;
    store.lines.resize(kClonalPlaneCount * store.words * store.stride / kCountLanes);
    for (size_t k = 0; k < store.markers.size(); ++k) {
      FillMarker(store, k, data.genotype + static_cast<size_t>(store.markers[k] - 1) * lines, lines);
    }
  }
  return stores;
}

void CountClonal(Level level, const ClonalTerms& terms, bool rowFirst, const uint64_t* rowWords,
                 const ClonalPlanes& store, size_t from, size_t to, ClonalCounts& counts) {
  TermPlan plan{{}, terms.size, store.words, store.stride};
  const auto row = [&](PlanePair pair) {
    return rowWords + (rowFirst ? pair.first : pair.second) * store.words;
  };
  const auto plane = [&](PlanePair pair) {
    return store.Bits() + (rowFirst ? pair.second : pair.first) * store.words * store.stride;
  };
  for (size_t k = 0; k < terms.size; ++k) {
    const ClonalTerm& term = terms.term[k];
    plan.term[k] = {row(term.one), plane(term.one), nullptr, nullptr};
    if (term.other.first == kClonalPlaneCount) continue;
    plan.term[k].otherRow = row(term.other);
    plan.term[k].otherPlane = plane(term.other);
  }
#if defined(__x86_64__)
  if (level == Level::Avx512) {
    CountTogether(plan, from, to, counts);
  } else {
    CountByTerms(level, plan, from, to, counts);
  }
#else
  CountByTerms(level, plan, from, to, counts);
#endif
  const size_t size = to - from, padded = (size + kMostLanes - 1) / kMostLanes * kMostLanes;
  for (size_t k = 0; k < terms.size; ++k) {
    std::fill(counts[k].begin() + static_cast<std::ptrdiff_t>(size),
              counts[k].begin() + static_cast<std::ptrdiff_t>(padded), 0);
  }
}

}  // namespace recombination
