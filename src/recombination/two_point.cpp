#include "recombination/two_point.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "recombination/map_functions.h"
#include "recombination/population_table.h"
#include "recombination/selfing_estimator.h"
#include "recombination/two_class_estimator.h"
#include "recombination/two_class_models.h"
#include "stats/distributions.h"
#include "stats/real_math.h"

namespace recombination {
namespace {

constexpr float kChiPerLod = 4.6051702f;  // 2 ln 10: a LOD as a likelihood-ratio statistic

bool MarkerClass(int32_t value) { return value == 1 || value == 12 || value == 10; }

float Sum(const float* table) {
  float sum = 0;
  for (int k = 0; k < 9; ++k) sum += table[k];
  return sum;
}

float StandardError(float second) {
  const float variance = -1.0f / second;
  return variance > 0 ? std::sqrt(variance) : 0.0f;
}

void SelfingFrequencies(int32_t population, int32_t pairCode, float rec, float* frequencies) {
  WithModel(population, pairCode, [&](auto known, auto index) {
    Curves<float> c;
    CurvesAt<float, decltype(known)::value>(rec, c);
    EachClass<decltype(index)::value>([&](auto shown) {
      const float p = Fold<float, decltype(index)::value, decltype(shown)::value>(c.p);
      for (size_t cell = 0; cell < 9; ++cell) {
        if ((kLayout[index()].shown[shown()].cells >> cell & 1U) != 0) frequencies[cell] = p;
      }
    });
  });
}

bool SelfingDerivatives(int32_t population, int32_t pairCode, const float* table, float rec, float& first,
                        float& second) {
  return WithModel(population, pairCode, [&](auto known, auto index) {
    float counts[6];
    MergeCells<float, decltype(index)::value>(table, counts);
    Derivatives<float, decltype(known)::value, decltype(index)::value>(counts, rec, first, second);
  });
}

struct HalfTable {
  std::array<std::array<std::array<float, kCurves>, kLayouts>, 17> logs{};
};

// All layouts of all selfing populations, once.
HalfTable MakeHalfTable() {
  HalfTable table;
  for (const int32_t population : {7, 8, 13, 14, 15, 16}) {
    for (const Layout& layout : kLayout) {
      WithModel(population, layout.code, [&](auto known, auto index) {
        Curves<float> c;
        CurvesAt<float, decltype(known)::value>(0.5f, c);
        EachClass<decltype(index)::value>([&](auto shown) {
          table.logs[known()][index()][shown()] =
              stats::Log10(Fold<float, decltype(index)::value, decltype(shown)::value>(c.p));
        });
      });
    }
  }
  return table;
}

}  // namespace

const float* HalfLogs(int32_t population, size_t layout) {
  static const HalfTable table = MakeHalfTable();
  return table.logs[static_cast<size_t>(population)][layout].data();
}

void MarkerPairCode(int32_t first, int32_t second, int32_t& code) {
  if (!MarkerClass(first)) {
    code = 2020;
  } else if (MarkerClass(second)) {
    code = first * (second == 1 ? 10 : 100) + second;
  }
}

float NewtonStart(int32_t population, int32_t pairCode, const float* table, float total) {
  float start = kLowest;
  WithModel(population, pairCode, [&](auto known, auto index) {
    start = StartOf<float, decltype(known)::value>(kLayout[index()].code, table, total);
  });
  return start;
}

void PopulationModel(int32_t population, int32_t pairCode, const float* table, float rec, float* frequencies,
                     float* firstDerivative, float* secondDerivative) {
  if (frequencies != nullptr) std::fill_n(frequencies, 9, 0.0f);
  if (!KnownPopulation(population)) return;
  if (SelfingPopulation(population)) {
    if (frequencies != nullptr) SelfingFrequencies(population, pairCode, rec, frequencies);
    if (firstDerivative == nullptr && secondDerivative == nullptr) return;
    float first = 0, second = 0;
    SelfingDerivatives(population, pairCode, table, rec, first, second);
    if (firstDerivative != nullptr) *firstDerivative = first;
    if (secondDerivative != nullptr) *secondDerivative = second;
    return;
  }
  const PopulationRow& row = Population(population);
  if (frequencies != nullptr) TwoClassCells(row, rec, frequencies);
  if (firstDerivative != nullptr) *firstDerivative = TwoClassFirst(population, table, rec);
  if (secondDerivative != nullptr) *secondDerivative = TwoClassSecond(population, table, rec);
}

void TwoPointStatistics(int32_t population, int32_t pairCode, const float* table, float rec, float& lod,
                        float& stdErr) {
  lod = 0;
  stdErr = 0;
  if (!KnownPopulation(population)) return;
  if (!SelfingPopulation(population)) {
    lod = TwoClassLod<float>(population, table, rec);
    stdErr = StandardError(TwoClassSecond(population, table, rec));
    return;
  }
  WithModel(population, pairCode, [&](auto known, auto index) {
    lod = LodOf<float, decltype(known)::value, decltype(index)::value>(table, rec);
    float first = 0, second = 0;
    SelfingDerivatives(population, pairCode, table, rec, first, second);
    stdErr = StandardError(second);
  });
}

void TwoPointOnePhase(int32_t population, int32_t pairCode, const float* table, float& rec, float& lod,
                      float& stdErr) {
  const float n = Sum(table);
  if (SelfingPopulation(population)) {
    WithModel(population, pairCode, [&](auto known, auto index) {
      rec = RecOf<float, decltype(known)::value, decltype(index)::value>(table, n);
    });
  } else if (KnownPopulation(population)) {
    rec = TwoClassRec<float>(Population(population), table, n);
  }
  TwoPointStatistics(population, pairCode, table, rec, lod, stdErr);
}

void TwoPointBothPhases(int32_t population, int32_t pairCode, const float* table, float& rec, float& lod,
                        float& stdErr) {
  TwoPointOnePhase(population, pairCode, table, rec, lod, stdErr);
  if (!KnownPopulation(population)) return;
  Flip flip = FlipOf(pairCode);
  if (!SelfingPopulation(population)) {
    flip = {pairCode, TwoClassFlip(Population(population))};
  } else if (LayoutOf(population, pairCode) == kNoLayout) {
    return;
  }
  std::array<float, 9> flipped{};
  for (size_t k = 0; k < 9; ++k) flipped[k] = table[flip.from[k]];
  float otherRec = 0, otherLod = 0, otherStdErr = 0;
  TwoPointOnePhase(population, flip.code, flipped.data(), otherRec, otherLod, otherStdErr);
  if (rec > otherRec) {
    rec = 1.0f - otherRec;
    lod = otherLod;
    stdErr = otherStdErr;
  }
}

void TwoPointRec(int32_t population, int32_t pairCode, const float* table, float& rec, float& stdErr,
                 float& lod, float& pValue, float& haldane, float& kosambi) {
  constexpr std::array<size_t, 9> kTransposed = {0, 3, 6, 1, 4, 7, 2, 5, 8};
  std::array<float, 9> cells{};
  for (size_t k = 0; k < 9; ++k) cells[k] = table[TransposedCode(pairCode) ? kTransposed[k] : k];
  if (Sum(table) <= 0) {
    rec = 0.5f;
    lod = 0;
    stdErr = 0;
  } else {
    TwoPointBothPhases(population, pairCode, cells.data(), rec, lod, stdErr);
  }
  pValue = 1.0f - stats::CHIDF(lod * kChiPerLod, 1.0f);
  kosambi = DistanceFromRec(kKosambi, rec);
  haldane = DistanceFromRec(kHaldane, rec);
}

}  // namespace recombination
