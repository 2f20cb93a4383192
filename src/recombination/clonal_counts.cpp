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

void FillMarker(ClonalPlanes& store, size_t position, const char* letters, size_t lines) {
  for (size_t w = 0; w < store.words; ++w) {
    std::array<uint64_t, 5> c{};
    const char* at = letters + w * kWordBits;
    const size_t count = std::min(kWordBits, lines - w * kWordBits);
    for (size_t line = 0; line < count; ++line) {
      c[kClassOfLetter[static_cast<unsigned char>(at[line])]] |= uint64_t{1} << line;
    }
    const std::array<uint64_t, kClonalPlaneCount> planes = {
        c[0],        c[1],        c[2],
        c[3],        c[0] | c[1], c[2] | c[3],
        c[0] | c[2], c[1] | c[3], c[0] | c[1] | c[2] | c[3]};
    for (size_t p = 0; p < planes.size(); ++p) {
      store.bits[(p * store.words + w) * store.stride + position] = planes[p];
    }
  }
}

// A term's planes: of the row marker and of the store.
struct TermPlanes {
  const uint64_t *row, *plane;
  bool last;  // of its count
};
struct TermPlan {
  std::array<TermPlanes, 13> term;
  size_t size, words, stride;
};

void CountByTerms(Level level, const TermPlan& plan, size_t from, size_t to, ClonalCounts& counts) {
  alignas(64) std::array<uint32_t, kClonalRun> scratch;
  size_t k = 0;
  for (size_t t = 0; t < plan.size; ++t) {
    if (t == 0 || plan.term[t - 1].last) std::fill_n(counts[k].begin(), to - from, 0);
    const TermPlanes& term = plan.term[t];
    CountRow(level, term.row, term.plane, plan.words, plan.stride, from, to, scratch.data());
    for (size_t m = 0; m < to - from; ++m) counts[k][m] += static_cast<int32_t>(scratch[m]);
    if (term.last) ++k;
  }
}

#if defined(__x86_64__)
__attribute__((target("avx512f,avx512vpopcntdq"))) void CountTogether(const TermPlan& plan, size_t from,
                                                                      size_t to, ClonalCounts& counts) {
  for (size_t m = from; m < to; m += kCountLanes) {
    size_t k = 0;
    __m512i sum = _mm512_setzero_si512();
    for (size_t t = 0; t < plan.size; ++t) {
      const TermPlanes& term = plan.term[t];
      const uint64_t* plane = term.plane + m;
      for (size_t w = 0; w < plan.words; ++w) {
        const __m512i both = _mm512_and_si512(_mm512_set1_epi64(static_cast<int64_t>(term.row[w])),
                                              _mm512_loadu_si512(plane + w * plan.stride));
        sum = _mm512_add_epi64(sum, _mm512_popcnt_epi64(both));
      }
      if (!term.last) continue;
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(counts[k++].data() + (m - from)),
                          _mm512_maskz_cvtepi64_epi32(0xff, sum));
      sum = _mm512_setzero_si512();
    }
  }
}
#endif

}  // namespace

std::vector<ClonalPlanes> MakeClonalPlanes(const Genotypes& data) {
  std::vector<ClonalPlanes> stores;
  for (int32_t m = 1; m <= data.numMarkers; ++m) {
    const int32_t category = data.category[m - 1];
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
    store.words = (lines + kWordBits - 1) / kWordBits;
    store.stride = (store.markers.size() + 2 * kCountLanes - 1) / kCountLanes * kCountLanes;
    store.bits.assign(kClonalPlaneCount * store.words * store.stride, 0);
    for (size_t k = 0; k < store.markers.size(); ++k) {
      FillMarker(store, k, data.genotype + static_cast<size_t>(store.markers[k] - 1) * lines, lines);
    }
  }
  return stores;
}

void CountClonal(Level level, const ClonalTerms& terms, bool rowFirst, const uint64_t* rowWords,
                 const ClonalPlanes& store, size_t from, size_t to, ClonalCounts& counts) {
  TermPlan plan{{}, terms.size, store.words, store.stride};
  for (size_t t = 0; t < terms.size; ++t) {
    const ClonalTerm& term = terms.term[t];
    const size_t row = rowFirst ? term.first : term.second, plane = rowFirst ? term.second : term.first;
    plan.term[t] = {rowWords + row * store.words, store.bits.data() + plane * store.words * store.stride,
                    t + 1 == terms.size || terms.term[t + 1].count != term.count};
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
  for (auto& count : counts) {
    std::fill(count.begin() + static_cast<std::ptrdiff_t>(size),
              count.begin() + static_cast<std::ptrdiff_t>(padded), 0);
  }
}

}  // namespace recombination
