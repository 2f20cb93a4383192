#include "tests/reference/multi_parent_plain.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "recombination/map_functions.h"

namespace reference {
namespace {

using recombination::LogLikelihood;

enum Kind : size_t { kSame, kSister, kHalf, kOther, kKinds };

// Of the pair of parents i and j. Kinds of one frequency are one kind.
Kind KindOf(int32_t population, int i, int j) {
  if (i == j) return kSame;
  if (i / 2 == j / 2) return population == 2 ? kOther : kSister;
  return population == 3 && i / 4 == j / 4 ? kHalf : kOther;
}

// The class of every cell, numbered by its first cell.
void CellGroups(int parents, int32_t first, int32_t second, int* group) {
  using recombination::AlleleAt;
  for (int k = 0; k < parents * parents; ++k) group[k] = k;
  for (int j = 0; j < parents; ++j) {
    for (int earlier = 0; earlier < j; ++earlier) {
      if (AlleleAt(second, parents, j) != AlleleAt(second, parents, earlier)) continue;
      for (int i = 0; i < parents; ++i) group[i * parents + j] = group[i * parents + earlier];
      break;
    }
  }
  for (int i = 0; i < parents; ++i) {
    for (int earlier = 0; earlier < i; ++earlier) {
      if (AlleleAt(first, parents, i) != AlleleAt(first, parents, earlier)) continue;
      for (int j = 0; j < parents; ++j) group[i * parents + j] = group[earlier * parents + j];
      break;
    }
  }
}

void Model(int32_t population, float r, float* frequency) {
  const float s = 1.0f - r, f = 1.0f + 2.0f * r;
  switch (population) {
    case 1:
      frequency[kSame] = s * s / 4.0f;
      frequency[kSister] = r * s / 4.0f;
      frequency[kOther] = r / 8.0f;
      break;
    case 2:
      frequency[kSame] = 0.25f - 3.0f * r / 8.0f;
      frequency[kOther] = r / 8.0f;
      break;
    case 3:
      frequency[kSame] = s * s * s / 8.0f;
      frequency[kSister] = r * s * s / 8.0f;
      frequency[kHalf] = r * s / 16.0f;
      frequency[kOther] = r / 32.0f;
      break;
    default:
      frequency[kSame] = s * s / (8.0f * f);
      frequency[kSister] = r * s / (8.0f * f);
      frequency[kOther] = r / (16.0f * f);
  }
  for (size_t k = 0; k < kKinds; ++k) frequency[k] = std::min(frequency[k], 1.0f);
}

// Counts of the M step and of the LOD.
struct Counts {
  float a, b, n;
};
Counts CountsOf(int32_t population, const float* expected, float n) {
  const float a = n - expected[kSame];
  switch (population) {
    case 1:
      return {a, expected[kSister] + 2.0f * expected[kSame], n};
    case 2:
      return {expected[kSame], a, n};
    case 3:
      return {a, 2.0f * expected[kSister] + expected[kHalf] + 3.0f * expected[kSame], n};
    default:
      return {a, expected[kSister] + 2.0f * a, n};
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
  if (population == 2) {
    const float at[2] = {2.0f - 3.0f * r, r};
    return LogLikelihood(2, counts, at) - LogLikelihood(2, counts, half);
  }
  const float at[3] = {r, 1.0f - r, 1.0f / (2.0f * r + 1.0f)};
  const int32_t classes = population == 4 ? 3 : 2;
  return LogLikelihood(classes, counts, at) - LogLikelihood(classes, counts, half);
}

// What a class is made of: cells of each kind. Classes alike in this share their frequency; their counts are
// added before they are split.
struct Mix {
  std::array<int, kKinds> cells{};
  float count = 0;
};

// The mixes in descending order of their cells; classes: how many there are in all.
int Mixes(int32_t population, int parents, const int* group, const float* table, Mix* mixes, int& classes) {
  Mix all[64];
  for (int k = 0; k < parents * parents; ++k)
    all[group[k]].cells[KindOf(population, k / parents, k % parents)] += 1;
  int found = 0;
  classes = 0;
  for (int k = 0; k < parents * parents; ++k) {
    if (group[k] != k) continue;
    ++classes;
    int at = 0;
    while (at < found && mixes[at].cells != all[k].cells) ++at;
    if (at == found) mixes[found++] = {all[k].cells, 0};
    mixes[at].count += table[k];
  }
  std::sort(mixes, mixes + found, [](const Mix& a, const Mix& b) { return a.cells > b.cells; });
  return found;
}

// Expected counts by kind: a class of one cell keeps its count, another's is split by frequencies. False when
// every class is as frequent as any other.
bool Expect(const Mix* mixes, int count, int classes, const float* frequency, float* expected) {
  bool informative = false;
  float known[kKinds] = {}, part[kKinds] = {};
  for (int m = 0; m < count; ++m) {
    float sum = 0;
    int cells = 0;
    for (size_t k = 0; k < kKinds; ++k) {
      sum += static_cast<float>(mixes[m].cells[k]) * frequency[k];
      cells += mixes[m].cells[k];
    }
    if (!(std::fabs(sum - 1.0f / static_cast<float>(classes)) <= 1e-6f)) informative = true;
    for (size_t k = 0; k < kKinds; ++k) {
      const auto of = static_cast<float>(mixes[m].cells[k]);
      if (cells == 1 && of > 0) {
        known[k] += mixes[m].count;
      } else if (cells > 1) {
        part[k] += of * (mixes[m].count / sum);
      }
    }
  }
  for (size_t k = 0; k < kKinds; ++k) expected[k] = known[k] + frequency[k] * part[k];
  return informative;
}

bool OneClass(int32_t pattern, int32_t parents) {
  for (int32_t k = 1; k < parents; ++k) {
    if (recombination::AlleleAt(pattern, parents, k) != recombination::AlleleAt(pattern, parents, 0))
      return false;
  }
  return true;
}

void Iterate(int32_t population, int parents, const int* group, const float* table, float& rec, float& lod) {
  Mix mixes[64];
  int classes;
  const int count = Mixes(population, parents, group, table, mixes, classes);
  float n = 0;
  for (int m = 0; m < count; ++m) n += mixes[m].count;
  rec = 0.5f;
  lod = 0;
  if (n < 1) return;
  float r = 0.25f;
  Counts c;
  for (int iteration = 1;; ++iteration) {
    float frequency[kKinds] = {}, expected[kKinds];
    Model(population, r, frequency);
    const bool informative = Expect(mixes, count, classes, frequency, expected);
    c = CountsOf(population, expected, n);
    const float next = NextRec(population, c);
    if (!informative || iteration > 1000) return;
    const float change = std::fabs(next - r);
    r = next;
    if (!(change > 1e-6f)) break;
  }
  lod = LodAt(population, c, r);
  if (lod < 0) lod = 0;
  rec = r < 0 ? 0 : r > 0.5f ? 0.5f : r;
  if (population == 2) rec = rec / ((1.0f - rec) * 2.0f);
}

}  // namespace

void MultiParentPairsPlain(const recombination::Genotypes& data,
                           const recombination::MultiParentPairResults& results) {
  const int32_t lines = data.populationSize, parents = data.population <= 2 ? 4 : 8;
  const bool known = data.population >= 1 && data.population <= 4;
  int64_t p = 0;
  for (int32_t i = 2; i <= data.numMarkers; ++i) {
    for (int32_t j = 1; j < i; ++j, ++p) {
      if (known) {
        const char *first = data.genotype + static_cast<int64_t>(i - 1) * lines,
                   *second = data.genotype + static_cast<int64_t>(j - 1) * lines;
        float table[64] = {};
        for (int32_t line = 0; line < lines; ++line) {
          const int x = first[line] - 'A', y = second[line] - 'A';
          if (x >= 0 && x < parents && y >= 0 && y < parents) table[parents * x + y] += 1;
        }
        int group[64];
        CellGroups(parents, data.category[i - 1], data.category[j - 1], group);
        results.rec[p] = 0.5f;
        results.lod[p] = 0;
        if (!OneClass(data.category[i - 1], parents) && !OneClass(data.category[j - 1], parents)) {
          Iterate(data.population, parents, group, table, results.rec[p], results.lod[p]);
        }
      }
      results.distance[p] = recombination::DistanceFromRec(data.mappingFunction, results.rec[p]);
    }
  }
}

}  // namespace reference
