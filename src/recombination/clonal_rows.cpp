#include "recombination/clonal_rows.h"

#include <algorithm>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "recombination/map_functions.h"

namespace recombination {
namespace {

constexpr float kEmpty[3] = {0.5f, 0, kUnlinkedDistance};

// Frequencies, LODs and distances of one parent or of both together.
struct ThreeRows {
  std::array<float*, 3> row;
};
std::array<const float*, 3> ColumnsOf(const StorePart& part, size_t parent) {
  return {part.rec[parent], part.lod[parent], part.distance[parent]};
}

void Scatter(const RowPart& part, size_t parent, const ThreeRows& rows) {
  for (size_t s = 0; s < part.stores; ++s) {
    const StorePart& store = part.store[s];
    const int32_t* marker = store.store->markers.data() + store.from;
    const size_t before = part.block * kMarkerBlock + 1, size = store.to - store.from;
    const auto columns = ColumnsOf(store, parent);
    for (size_t k = 0; k < 3; ++k) {
      float* row = rows.row[k];
      for (size_t t = 0; t < size; ++t) {
        row[static_cast<size_t>(marker[t]) - before] = columns[k] == nullptr ? kEmpty[k] : columns[k][t];
      }
    }
  }
}

void Phases(const float* first, const float* second, size_t count, int32_t* phase) {
  for (size_t p = 0; p < count; ++p) {
    phase[p] = 1 + (first[p] > 0.5f ? 2 : 0) + (second[p] > 0.5f ? 1 : 0);
  }
}

#if defined(__x86_64__)
// A store's columns and, for each block, its places and where their values begin.
struct Source {
  std::array<const float*, 3> column;
  const uint16_t* mask;
  const uint32_t* before;
};

// Each store's places of a block are filled from its columns.
__attribute__((target("avx512f"))) void Expand(const RowPart& part, size_t parent, const ThreeRows& rows) {
  std::array<Source, kMostStores> source;
  size_t sources = 0;
  for (size_t s = 0; s < part.stores; ++s) {
    const StorePart& store = part.store[s];
    const auto columns = ColumnsOf(store, parent);
    if (columns[0] == nullptr) continue;
    const uint32_t* before = store.store->before.data() + part.block;
    source[sources++] = {columns, store.store->mask.data() + part.block, before};
  }
  for (size_t at = 0, block = 0; at < part.count; at += kMarkerBlock, ++block) {
    __m512 rec = _mm512_set1_ps(kEmpty[0]), lod = _mm512_set1_ps(kEmpty[1]),
           distance = _mm512_set1_ps(kEmpty[2]);
    const size_t left = part.count - at;
    const auto places = static_cast<__mmask16>(left < kMarkerBlock ? (1U << left) - 1 : 0xffffU);
    for (size_t k = 0; k < sources; ++k) {
      const Source& s = source[k];
      const auto mask = static_cast<__mmask16>(s.mask[block] & places);
      const size_t from = s.before[block] - s.before[0];
      rec = _mm512_mask_expandloadu_ps(rec, mask, s.column[0] + from);
      lod = _mm512_mask_expandloadu_ps(lod, mask, s.column[1] + from);
      distance = _mm512_mask_expandloadu_ps(distance, mask, s.column[2] + from);
    }
    _mm512_mask_storeu_ps(rows.row[0] + at, places, rec);
    _mm512_mask_storeu_ps(rows.row[1] + at, places, lod);
    _mm512_mask_storeu_ps(rows.row[2] + at, places, distance);
  }
}

__attribute__((target("avx512f"))) void PhasesWide(const float* first, const float* second, size_t count,
                                                   int32_t* phase) {
  const __m512 half = _mm512_set1_ps(0.5f);
  const __m512i one = _mm512_set1_epi32(1), two = _mm512_set1_epi32(2);
  for (size_t at = 0; at < count; at += kMarkerBlock) {
    const size_t left = count - at;
    const auto places = static_cast<__mmask16>(left < kMarkerBlock ? (1U << left) - 1 : 0xffffU);
    const __mmask16 firstAbove =
        _mm512_cmp_ps_mask(_mm512_maskz_loadu_ps(places, first + at), half, _CMP_GT_OQ);
    const __mmask16 secondAbove =
        _mm512_cmp_ps_mask(_mm512_maskz_loadu_ps(places, second + at), half, _CMP_GT_OQ);
    const __m512i value = _mm512_mask_add_epi32(one, firstAbove, one, two);
    _mm512_mask_storeu_epi32(phase + at, places, _mm512_mask_add_epi32(value, secondAbove, value, one));
  }
}
#endif

}  // namespace

void WriteRow(Level level, const RowPart& part, const ClonalPairResults& results, size_t first) {
  const size_t at = first + part.block * kMarkerBlock;
  for (size_t parent = 0; parent < 3; ++parent) {
    const ThreeRows rows = {
        {results.rec[parent] + at, results.lod[parent] + at, results.distance[parent] + at}};
#if defined(__x86_64__)
    if (level == Level::Avx512) {
      Expand(part, parent, rows);
      continue;
    }
#endif
    Scatter(part, parent, rows);
  }
  const float *firstRec = results.rec[0] + at, *secondRec = results.rec[1] + at;
#if defined(__x86_64__)
  if (level == Level::Avx512) return PhasesWide(firstRec, secondRec, part.count, results.phase + at);
#endif
  Phases(firstRec, secondRec, part.count, results.phase + at);
}

}  // namespace recombination
