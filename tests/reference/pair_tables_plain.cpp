#include "tests/reference/pair_tables_plain.h"

#include "recombination/map_functions.h"
#include "recombination/two_point.h"

namespace reference {
namespace {

using recombination::Genotypes;

int ClassOf(char letter) {
  switch (letter) {
    case 'A':
      return 0;
    case 'H':
    case 'D':
    case 'R':
      return 1;
    case 'B':
      return 2;
    default:
      return -1;
  }
}

void CountTable(const char* first, const char* second, int32_t lines, float* table) {
  for (int k = 0; k < 9; ++k) table[k] = 0;
  for (int32_t line = 0; line < lines; ++line) {
    const int i = ClassOf(first[line]), j = ClassOf(second[line]);
    if (i >= 0 && j >= 0) table[3 * i + j] += 1;
  }
}

void Estimate(int32_t population, int32_t code, const float* table, float& rec, float& lod) {
  float n = 0, stdErr = 0;
  for (int k = 0; k < 9; ++k) n += table[k];
  if (n <= 0) {
    rec = 0.5f;
    lod = 0;
    return;
  }
  recombination::TwoPointBothPhases(population, code, table, rec, lod, stdErr);
  if (lod < 0) lod = 0;
}

bool Pair(char a, char b, char x, char y) { return (a == x && b == y) || (a == y && b == x); }

int32_t Unequal(const char* first, const char* second, int32_t lines, char x, char y) {
  int32_t count = 0;
  for (int32_t line = 0; line < lines; ++line) count += Pair(first[line], second[line], x, y) ? 1 : 0;
  return count;
}

// The double heterozygotes are counted before their weight is applied, so that no order of lines enters.
float SelfingCrossovers(const char* first, const char* second, int32_t lines, float rec) {
  int32_t sure = 0, hetero = 0;
  for (int32_t line = 0; line < lines; ++line) {
    const char a = first[line], b = second[line];
    if (Pair(a, b, 'A', 'H') || Pair(a, b, 'H', 'B')) {
      sure += 1;
    } else if (Pair(a, b, 'A', 'B')) {
      sure += 2;
    } else if (a == 'H' && b == 'H') {
      hetero += 1;
    }
  }
  if (hetero == 0) return static_cast<float>(sure);
  const float w = rec * rec / (1.0f - 2.0f * rec + 2.0f * rec * rec);
  return static_cast<float>(sure) + w * static_cast<float>(hetero);
}

float Crossovers(int32_t population, const char* first, const char* second, int32_t lines, float rec) {
  switch (population) {
    case 1:
    case 9:
      return static_cast<float>(Unequal(first, second, lines, 'A', 'H'));
    case 2:
    case 10:
      return static_cast<float>(Unequal(first, second, lines, 'H', 'B'));
    case 7:
    case 8:
    case 13:
    case 14:
    case 15:
    case 16:
      return SelfingCrossovers(first, second, lines, rec);
    default:
      break;
  }
  if (population < 1 || population > 20) return 0;
  return static_cast<float>(2 * Unequal(first, second, lines, 'A', 'B'));
}

}  // namespace

void PairTablesPlain(const Genotypes& data, const recombination::PairResults& results) {
  const int32_t lines = data.populationSize;
  int64_t p = 0;
  for (int32_t i = 2; i <= data.numMarkers; ++i) {
    for (int32_t j = 1; j < i; ++j, ++p) {
      const char* atI = data.genotype + static_cast<int64_t>(i - 1) * lines;
      const char* atJ = data.genotype + static_cast<int64_t>(j - 1) * lines;
      int32_t code = 2020;
      recombination::MarkerPairCode(data.category[i - 1], data.category[j - 1], code);
      const bool transposed = recombination::TransposedCode(code);
      float table[9];
      CountTable(transposed ? atJ : atI, transposed ? atI : atJ, lines, table);
      Estimate(data.population, code, table, results.rec[p], results.lod[p]);
      results.crossovers[p] = Crossovers(data.population, atI, atJ, lines, results.rec[p]);
      results.distance[p] = recombination::DistanceFromRec(data.mappingFunction, results.rec[p]);
    }
  }
}

}  // namespace reference
