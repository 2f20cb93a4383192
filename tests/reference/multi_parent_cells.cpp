#include "tests/reference/multi_parent_cells.h"

#include <algorithm>
#include <cmath>

#include "recombination/map_functions.h"

namespace reference {
namespace {

using recombination::AlleleAt;
using recombination::LogLikelihood;

constexpr int kMostCells = 64;

struct Cross {
  int32_t population;
  int parents;
};

void CellGroups(int parents, int32_t first, int32_t second, int* group) {
  for (int k = 0; k < parents * parents; ++k) group[k] = k;
  for (int j = 1; j < parents; ++j) {
    for (int earlier = 0; earlier < j; ++earlier) {
      if (AlleleAt(second, parents, j) != AlleleAt(second, parents, earlier)) continue;
      for (int i = 0; i < parents; ++i) group[i * parents + j] = group[i * parents + earlier];
      break;
    }
  }
  for (int i = 1; i < parents; ++i) {
    for (int earlier = 0; earlier < i; ++earlier) {
      if (AlleleAt(first, parents, i) != AlleleAt(first, parents, earlier)) continue;
      for (int j = 0; j < parents; ++j) group[i * parents + j] = group[earlier * parents + j];
      break;
    }
  }
}

bool Sisters(int i, int j) { return i != j && i / 2 == j / 2; }
bool SameHalf(int i, int j) { return i / 2 != j / 2 && i / 4 == j / 4; }

float CellFrequency(const Cross& cross, int i, int j, float r) {
  const float s = 1.0f - r, f = 1.0f + 2.0f * r;
  switch (cross.population) {
    case 1:
      return i == j ? s * s / 4.0f : Sisters(i, j) ? r * s / 4.0f : r / 8.0f;
    case 2:
      return i == j ? 0.25f - 3.0f * r / 8.0f : r / 8.0f;
    case 3:
      if (i == j) return s * s * s / 8.0f;
      return Sisters(i, j) ? r * s * s / 8.0f : SameHalf(i, j) ? r * s / 16.0f : r / 32.0f;
    default:
      if (i == j) return s * s / (8.0f * f);
      return Sisters(i, j) ? r * s / (8.0f * f) : r / (16.0f * f);
  }
}

// Counts of the M step and of the LOD.
struct Counts {
  float a, b, n;
};
Counts CountsOf(const Cross& cross, const float* expected) {
  float n = 0, same = 0, sisters = 0, half = 0;
  for (int i = 0; i < cross.parents; ++i) {
    for (int j = 0; j < cross.parents; ++j) {
      const float e = expected[i * cross.parents + j];
      n += e;
      if (i == j) same += e;
      if (Sisters(i, j)) sisters += e;
      if (SameHalf(i, j)) half += e;
    }
  }
  switch (cross.population) {
    case 1:
      return {n - same, sisters + 2.0f * same, n};
    case 2:
      return {same, n - same, n};
    case 3:
      return {n - same, 2.0f * sisters + half + 3.0f * same, n};
    default:
      return {n - same, sisters + 2.0f * (n - same), n};
  }
}

float NextRec(int32_t population, const Counts& c) {
  if (population == 2) return 0.6666667f * c.b / (c.a + c.b);
  if (population == 4) {
    return recombination::QuadraticRecRoot(2.0f * (c.n - c.b) - 2.0f * c.a, (c.a - c.b) - 2.0f * c.n, c.a);
  }
  return c.a / (c.a + c.b);
}

float LodAt(int32_t population, const Counts& c, float r) {
  const float counts[3] = {c.a, c.b, c.n}, half[3] = {0.5f, 0.5f, 0.5f};
  const float last = 1.0f / (2.0f * r + 1.0f);
  const float at[3] = {population == 2 ? 2.0f - 3.0f * r : r, population == 2 ? r : 1.0f - r, last};
  const int32_t classes = population == 4 ? 3 : 2;
  return LogLikelihood(classes, counts, at) - LogLikelihood(classes, counts, half);
}

// False when every class is as frequent as any other.
bool Expect(const Cross& cross, const int* group, const float* table, float r, float* expected) {
  const int cells = cross.parents * cross.parents;
  float frequency[kMostCells], sum[kMostCells] = {};
  int size[kMostCells] = {}, classes = 0;
  for (int k = 0; k < cells; ++k) {
    frequency[k] = std::min(CellFrequency(cross, k / cross.parents, k % cross.parents, r), 1.0f);
    classes += group[k] == k ? 1 : 0;
    sum[group[k]] += frequency[k];
    ++size[group[k]];
  }
  bool alike = true;
  for (int k = 0; k < cells; ++k) {
    if (group[k] == k && !(std::fabs(sum[k] - 1.0f / static_cast<float>(classes)) <= 1e-6f)) alike = false;
    const int first = group[k];
    expected[k] = size[first] == 1 ? table[k] : frequency[k] / sum[first] * table[first];
  }
  return !alike;
}

void Estimate(const Cross& cross, const int* group, const float* table, float& rec, float& lod) {
  rec = 0.5f;
  lod = 0;
  float r = 0.25f;
  Counts c;
  for (int iteration = 1;; ++iteration) {
    float expected[kMostCells];
    const bool informative = Expect(cross, group, table, r, expected);
    c = CountsOf(cross, expected);
    const float next = NextRec(cross.population, c);
    if (!informative || iteration > 1000) return;
    const float change = std::fabs(next - r);
    r = next;
    if (!(change > 1e-6f)) break;
  }
  lod = std::max(LodAt(cross.population, c, r), 0.0f);
  rec = r < 0 ? 0 : r > 0.5f ? 0.5f : r;
  if (cross.population == 2) rec = rec / ((1.0f - rec) * 2.0f);
}

bool OneClass(int32_t pattern, int parents) {
  for (int k = 1; k < parents; ++k) {
    if (AlleleAt(pattern, parents, k) != AlleleAt(pattern, parents, 0)) return false;
  }
  return true;
}

}  // namespace

void MultiParentPairsByCells(const recombination::Genotypes& data,
                             const recombination::MultiParentPairResults& results) {
  const Cross cross = {data.population, data.population <= 2 ? 4 : 8};
  const int32_t lines = data.populationSize;
  int64_t p = 0;
  for (int32_t i = 2; i <= data.numMarkers; ++i) {
    for (int32_t j = 1; j < i; ++j, ++p) {
      const char *first = data.genotype + static_cast<int64_t>(i - 1) * lines,
                 *second = data.genotype + static_cast<int64_t>(j - 1) * lines;
      float table[kMostCells] = {};
      int seen = 0;
      for (int32_t line = 0; line < lines; ++line) {
        const int x = first[line] - 'A', y = second[line] - 'A';
        if (x < 0 || x >= cross.parents || y < 0 || y >= cross.parents) continue;
        table[cross.parents * x + y] += 1;
        ++seen;
      }
      int group[kMostCells];
      CellGroups(cross.parents, data.category[i - 1], data.category[j - 1], group);
      results.rec[p] = 0.5f;
      results.lod[p] = 0;
      const bool told = seen > 0 && !OneClass(data.category[i - 1], cross.parents) &&
                        !OneClass(data.category[j - 1], cross.parents);
      if (told) Estimate(cross, group, table, results.rec[p], results.lod[p]);
      results.distance[p] = recombination::DistanceFromRec(data.mappingFunction, results.rec[p]);
    }
  }
}

}  // namespace reference
