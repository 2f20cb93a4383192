#include "tests/reference/clonal_em.h"

#include <cmath>
#include <cstddef>

namespace reference {
namespace {

// Whether a line with alleles h and l of the parents shows the letter.
bool Shows(int category, char letter, int h, int l) {
  switch (category) {
    case 1:
      return letter == "ABCD"[2 * h + l];
    case 2:
      return letter == "EF"[l];
    case 3:
      return letter == "GH"[h];
    case 4:
      return letter == "IJK"[h + l];
    default:
      return letter == "IJK"[h + 1 - l];
  }
}

// Sums over the lines at the two frequencies.
struct Sums {
  double lines = 0, recombinant[2] = {0, 0}, logLikelihood = 0;
};
Sums SumsAt(const ClonalPair& pair, double ab, double cd) {
  Sums sums;
  for (std::size_t line = 0; line < pair.first.size(); ++line) {
    double all = 0, recombinant[2] = {0, 0};
    for (int state = 0; state < 16; ++state) {
      const int h1 = state >> 3, l1 = state >> 2 & 1, h2 = state >> 1 & 1, l2 = state & 1;
      if (!Shows(pair.firstCategory, pair.first[line], h1, l1) ||
          !Shows(pair.secondCategory, pair.second[line], h2, l2)) {
        continue;
      }
      const double weight = 0.25 * (h1 == h2 ? 1 - ab : ab) * (l1 == l2 ? 1 - cd : cd);
      all += weight;
      if (h1 != h2) recombinant[0] += weight;
      if (l1 != l2) recombinant[1] += weight;
    }
    if (all == 0) continue;  // missing
    sums.lines += 1;
    for (std::size_t parent = 0; parent < 2; ++parent) sums.recombinant[parent] += recombinant[parent] / all;
    sums.logLikelihood += std::log10(all);
  }
  return sums;
}

}  // namespace

void ParentFrequencies(const ClonalPair& pair, double rec[2]) {
  rec[0] = rec[1] = 0.3;
  for (int k = 0; k < 100000; ++k) {
    const Sums sums = SumsAt(pair, rec[0], rec[1]);
    const double next[2] = {sums.recombinant[0] / sums.lines, sums.recombinant[1] / sums.lines};
    const double change = std::fabs(next[0] - rec[0]) + std::fabs(next[1] - rec[1]);
    rec[0] = next[0];
    rec[1] = next[1];
    if (change < 1e-12) return;
  }
}

double PooledFrequency(const ClonalPair& pair, bool flipAB, bool flipCD, double start) {
  double r = start;
  for (int k = 0; k < 100000; ++k) {
    const Sums sums = SumsAt(pair, flipAB ? 1 - r : r, flipCD ? 1 - r : r);
    const double ab = flipAB ? sums.lines - sums.recombinant[0] : sums.recombinant[0],
                 cd = flipCD ? sums.lines - sums.recombinant[1] : sums.recombinant[1];
    const double next = (ab + cd) / (2 * sums.lines), change = std::fabs(next - r);
    r = next;
    if (change < 1e-12) break;
  }
  return r;
}

double ClonalLodScore(const ClonalPair& pair, double recAB, double recCD) {
  return SumsAt(pair, recAB, recCD).logLikelihood - SumsAt(pair, 0.5, 0.5).logLikelihood;
}

}  // namespace reference
