#include "tests/reference/ordering_plain.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "recombination/pair_index.h"
#include "stats/sorts.h"

namespace reference {
namespace {

using City = std::int32_t;
constexpr float kInfinity = std::numeric_limits<float>::infinity();

enum class Judge { Cycle, Exact, Path };

struct Scan {
  std::int32_t n;
  const float* dist;
  Judge judge;
  std::vector<City> next;        // one-based
  float pathLength = 0;          // exact kernels: of the tour as it stands
  float top[5] = {};             // V[1..4]
  std::int64_t topPair[5] = {};  // T[1..4]
};

struct Move {
  float gain = 0;
  City a = 0, b = 0, c = 0, d = 0, e = 0, f = 0;
  int number = 0;        // case 1..7, or 2 for a two-edge move
  float pathLength = 0;  // exact kernels only
};

float Between(const Scan& s, City i, City j) { return s.dist[recombination::PairIndex(i, j) - 1]; }

void Reverse(std::vector<City>& next, City x, City y, City p) {
  City behind = p, at = x;
  for (;;) {
    const City following = next[static_cast<std::size_t>(at)];
    next[static_cast<std::size_t>(at)] = behind;
    if (at == y) return;
    behind = at;
    at = following;
  }
}

void Apply(std::vector<City>& next, const Move& m) {
  const auto link = [&next](City from, City to) { next[static_cast<std::size_t>(from)] = to; };
  switch (m.number) {
    case 1:
      link(m.c, m.e);
      Reverse(next, m.d, m.e, m.f);
      break;
    case 2:
      link(m.a, m.c);
      Reverse(next, m.b, m.c, m.d);
      break;
    case 3:
      link(m.a, m.e);
      Reverse(next, m.b, m.e, m.f);
      break;
    case 4:
      link(m.a, m.d);
      link(m.e, m.b);
      link(m.c, m.f);
      break;
    case 5:
      link(m.a, m.d);
      link(m.e, m.c);
      Reverse(next, m.b, m.c, m.f);
      break;
    case 6:
      link(m.a, m.c);
      Reverse(next, m.b, m.c, m.e);
      Reverse(next, m.d, m.e, m.f);
      break;
    default:
      link(m.a, m.e);
      Reverse(next, m.d, m.e, m.b);
      link(m.c, m.f);
      break;
  }
}

void WriteBack(const std::vector<City>& next, std::int32_t n, City* tour) {
  City at = 1;
  for (std::int32_t k = 0; k < n; ++k) {
    tour[k] = at;
    at = next[static_cast<std::size_t>(at)];
  }
}

float PathLengthAfter(const Scan& s, const Move& move) {
  std::vector<City> next = s.next, tour(static_cast<std::size_t>(s.n));
  Apply(next, move);
  WriteBack(next, s.n, tour.data());
  float sum = 0, longest = 0;
  TourLength(s.n, s.dist, tour.data(), sum, longest);
  return sum - longest;
}

void TopTourEdges(Scan& s) {
  std::vector<float> length(static_cast<std::size_t>(s.n));
  std::vector<std::int32_t> city(static_cast<std::size_t>(s.n));
  for (City i = 1; i <= s.n; ++i) {
    city[static_cast<std::size_t>(i) - 1] = i;
    length[static_cast<std::size_t>(i) - 1] = -Between(s, i, s.next[static_cast<std::size_t>(i)]);
  }
  stats::SVRGP(s.n, length.data(), length.data(), city.data());
  for (int slot = 1; slot <= 4; ++slot) {
    s.top[slot] = 0;
    s.topPair[slot] = 0;
    if (slot > s.n) continue;
    const City i = city[static_cast<std::size_t>(slot) - 1];
    s.top[slot] = -length[static_cast<std::size_t>(slot) - 1];
    s.topPair[slot] = recombination::PairIndex(i, s.next[static_cast<std::size_t>(i)]);
  }
}

float Survivor(const Scan& s, std::int64_t p, std::int64_t q, std::int64_t r) {
  for (int slot = 1; slot < 4; ++slot) {
    if (s.topPair[slot] != p && s.topPair[slot] != q && s.topPair[slot] != r) return s.top[slot];
  }
  return s.top[4];
}

float Max3(float x, float y, float z) { return std::max(std::max(x, y), z); }
float Max4(float x, float y, float z, float w) { return std::max(Max3(x, y, z), w); }

void JudgeTwo(const Scan& s, City a, City b, City c, City d, Move& best) {
  Move m{0, a, b, c, d, 0, 0, 2, 0};
  if (s.judge == Judge::Exact) {
    m.pathLength = PathLengthAfter(s, m);
    m.gain = s.pathLength - m.pathLength;
  } else {
    const float x1 = Between(s, a, b), x2 = Between(s, c, d), y1 = Between(s, a, c), y2 = Between(s, b, d);
    if (s.judge == Judge::Cycle) {
      m.gain = x1 + x2 - y1 - y2;
    } else {
      const float r = Survivor(s, recombination::PairIndex(a, b), recombination::PairIndex(c, d), 0);
      m.gain = x1 + x2 - s.top[1] - y1 - y2 + Max3(r, y1, y2);
    }
  }
  if (m.gain > best.gain) best = m;
}

void JudgeThree(const Scan& s, City a, City b, City c, City d, City e, City f, Move& best) {
  const bool isVoid[8] = {false,
                          c == e || d == f,
                          a == c || b == d,
                          a == e || b == f,
                          a == d || b == e || c == f,
                          a == d || c == e || b == f,
                          a == c || b == e || d == f,
                          a == e || b == d || c == f};
  float gain[8] = {};
  float built[8] = {};
  if (s.judge == Judge::Exact) {
    for (int k = 1; k <= 7; ++k) {
      if (isVoid[k]) continue;
      built[k] = PathLengthAfter(s, Move{0, a, b, c, d, e, f, k, 0});
      gain[k] = s.pathLength - built[k];
    }
  } else {
    const float ab = Between(s, a, b), cd = Between(s, c, d), ef = Between(s, e, f);
    const float ac = Between(s, a, c), bd = Between(s, b, d), ae = Between(s, a, e), bf = Between(s, b, f);
    const float ce = Between(s, c, e), df = Between(s, d, f), ad = Between(s, a, d), be = Between(s, b, e);
    const float cf = Between(s, c, f);
    if (s.judge == Judge::Cycle) {
      gain[1] = cd + ef - ce - df;
      gain[2] = ab + cd - ac - bd;
      gain[3] = ab + ef - ae - bf;
      gain[4] = ab + cd + ef - ad - be - cf;
      gain[5] = ab + cd + ef - ad - bf - ce;
      gain[6] = ab + cd + ef - ac - be - df;
      gain[7] = ab + cd + ef - ae - bd - cf;
    } else {
      const std::int64_t pab = recombination::PairIndex(a, b), pcd = recombination::PairIndex(c, d),
                         pef = recombination::PairIndex(e, f);
      const float v = s.top[1], r = Survivor(s, pab, pcd, pef), all = ab - v + cd + ef;
      gain[1] = cd - v + ef - ce - df + Max3(Survivor(s, pcd, pef, 0), ce, df);
      gain[2] = ab - v + cd - ac - bd + Max3(Survivor(s, pab, pcd, 0), ac, bd);
      gain[3] = ab - v + ef - ae - bf + Max3(Survivor(s, pab, pef, 0), ae, bf);
      gain[4] = all - ad - be - cf + Max4(r, ad, be, cf);
      gain[5] = all - ce - bf - ad + Max4(r, ad, bf, ce);
      gain[6] = all - df - ac - be + Max4(r, ac, be, df);
      gain[7] = all - bd - ae - cf + Max4(r, ae, bd, cf);
    }
    for (int k = 1; k <= 7; ++k) {
      if (isVoid[k]) gain[k] = 0;
    }
  }
  int number = 1;
  for (int k = 2; k <= 7; ++k) {
    if (gain[k] > gain[number]) number = k;
  }
  if (gain[number] > best.gain) best = Move{gain[number], a, b, c, d, e, f, number, built[number]};
}

Move ScanTwo(const Scan& s) {
  const auto following = [&s](City at) { return s.next[static_cast<std::size_t>(at)]; };
  Move best;
  City a = 1;
  for (std::int32_t i = 1; i <= s.n - 2; ++i) {
    const City b = following(a);
    City c = following(b);
    for (std::int32_t j = i + 2; j <= (i == 1 ? s.n - 1 : s.n); ++j) {
      const City d = following(c);
      JudgeTwo(s, a, b, c, d, best);
      c = d;
    }
    a = b;
  }
  return best;
}

Move ScanThree(const Scan& s) {
  const auto following = [&s](City at) { return s.next[static_cast<std::size_t>(at)]; };
  Move best;
  City a = 1;
  for (std::int32_t i = 1; i <= s.n - 4; ++i) {
    const City b = following(a);
    City c = following(b);
    for (std::int32_t j = i + 2; j <= (i == 1 ? s.n - 3 : s.n - 2); ++j) {
      const City d = following(c);
      City e = following(d);
      for (std::int32_t k = j + 2; k <= (i == 1 ? s.n - 1 : s.n); ++k) {
        const City f = following(e);
        JudgeThree(s, a, b, c, d, e, f, best);
        e = f;
      }
      c = d;
    }
    a = b;
  }
  return best;
}

constexpr int kSequences[18][2] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}, {1, 2}, {1, 3},
                                   {1, 4}, {2, 3}, {2, 4}, {3, 4}, {1, 5}, {1, 6}, {2, 5}, {2, 6}, {5, 6}};

}  // namespace

void RunKernel(int kernel, std::int32_t n, const float* dist, std::int32_t* tour) {
  const bool three = kernel % 2 == 0;
  Scan s{n, dist, kernel <= 2 ? Judge::Cycle : kernel <= 4 ? Judge::Exact : Judge::Path, {}};
  s.next.resize(static_cast<std::size_t>(n) + 1);
  for (std::int32_t i = 0; i < n; ++i)
    s.next[static_cast<std::size_t>(tour[i])] = tour[i + 1 < n ? i + 1 : 0];
  if (s.judge == Judge::Exact) {
    float sum = 0, longest = 0;
    TourLength(n, dist, tour, sum, longest);
    s.pathLength = sum - longest;
  }
  for (std::int64_t moves = 0; moves < std::int64_t{1000} * n; ++moves) {
    if (s.judge == Judge::Path) TopTourEdges(s);
    const Move best = three ? ScanThree(s) : ScanTwo(s);
    if (best.gain <= 0.0001F) break;
    Apply(s.next, best);
    s.pathLength = best.pathLength;
  }
  WriteBack(s.next, n, tour);
}

void NearestNeighbourTour(std::int32_t n, const float* dist, std::int32_t start, std::int32_t* tour) {
  for (std::int32_t i = 0; i < n; ++i) tour[i] = i + 1;
  std::swap(tour[0], tour[start - 1]);
  for (std::int32_t i = 1; i < n; ++i) {
    float shortest = kInfinity;
    std::int32_t found = i;  // stays where no distance is a number
    for (std::int32_t j = i; j < n; ++j) {
      const float d = dist[recombination::PairIndex(tour[i - 1], tour[j]) - 1];
      if (d <= shortest) {
        shortest = d;
        found = j;
      }
    }
    std::swap(tour[i], tour[found]);
  }
}

void TourLength(std::int32_t n, const float* dist, const std::int32_t* tour, float& sum, float& longest) {
  sum = longest = dist[recombination::PairIndex(tour[n - 1], tour[0]) - 1];
  for (std::int32_t i = 0; i + 1 < n; ++i) {
    const float d = dist[recombination::PairIndex(tour[i], tour[i + 1]) - 1];
    sum += d;
    if (d > longest) longest = d;
  }
}

void CutAtLongestEdge(std::int32_t n, const float* dist, std::int32_t* tour) {
  float longest = dist[recombination::PairIndex(tour[n - 1], tour[0]) - 1];
  std::int32_t p = n;
  for (std::int32_t i = 0; i + 1 < n; ++i) {
    const float d = dist[recombination::PairIndex(tour[i], tour[i + 1]) - 1];
    if (d > longest) {
      p = i + 1;
      longest = d;
    }
  }
  std::vector<std::int32_t> rotated(static_cast<std::size_t>(n));
  for (std::int32_t k = 1; k <= n; ++k) {
    rotated[static_cast<std::size_t>(k) - 1] = tour[(p + k <= n ? p + k : p + k - n) - 1];
  }
  std::copy(rotated.begin(), rotated.end(), tour);
}

void NnTwoOpt(std::int32_t n, const float* dist, std::int32_t* order, const std::int32_t* method) {
  if (n < 1) return;
  order[0] = 1;
  if (n == 1) return;
  std::int32_t repetitions = n, number = 5;
  if (method != nullptr) {
    number = *method;
  } else if (n <= 200) {
    number = n <= 150 ? 6 : 17;
  } else if (n > 500) {
    repetitions = n <= 1000   ? 200
                  : n <= 1500 ? 100
                  : n <= 2000 ? 50
                  : n <= 3000 ? 20
                  : n <= 5000 ? 10
                  : n <= 6000 ? 5
                  : n <= 7000 ? 2
                              : 1;
  }
  if (number < 1 || number > 17) number = 0;
  for (std::int32_t i = 0; i < n; ++i) order[i] = i + 1;  // stays where no tour has a length that is a number
  std::vector<std::int32_t> tour(static_cast<std::size_t>(n));
  float best = kInfinity;
  for (std::int32_t k = 1; k <= repetitions; ++k) {
    NearestNeighbourTour(n, dist, k, tour.data());
    for (const int kernel : kSequences[number]) {
      if (kernel != 0) RunKernel(kernel, n, dist, tour.data());
    }
    float sum = 0, longest = 0;
    TourLength(n, dist, tour.data(), sum, longest);
    if (sum - longest < best) {
      best = sum - longest;
      std::copy(tour.begin(), tour.end(), order);
    }
  }
  CutAtLongestEdge(n, dist, order);
}

void InsertByAnchors(std::int32_t n, const float* dist, std::int32_t* order) {
  const auto between = [dist](std::int32_t i, std::int32_t j) {
    return dist[recombination::PairIndex(i, j) - 1];
  };
  const auto k =
      static_cast<std::int32_t>(std::count_if(order, order + n, [](std::int32_t i) { return i > 0; }));
  for (std::int32_t i = 1; i <= k; ++i) {
    if (order[i - 1] == i) continue;
    for (std::int32_t j = 1; j <= n; ++j) order[j - 1] = j;
    return;
  }
  if (k == n) return;
  if (k < 3) return NnTwoOpt(n, dist, order);
  std::vector<std::int32_t> freeMarkers;
  for (std::int32_t i = k + 1; i <= n; ++i) freeMarkers.push_back(i);
  for (std::int32_t m = k; m < n; ++m) {
    float length = 0;
    for (std::int32_t i = 1; i < m; ++i) length += between(order[i - 1], order[i]);
    float limit = 10000000000.0F;
    std::size_t chosen = 0;
    for (std::size_t at = 0; at < freeMarkers.size(); ++at) {
      float nearest = between(freeMarkers[at], 1);
      for (std::int32_t anchor = 2; anchor <= k; ++anchor) {
        nearest = std::min(nearest, between(freeMarkers[at], anchor));
      }
      if (nearest < limit) {
        limit = nearest;
        chosen = at;
      }
    }
    const std::int32_t x = freeMarkers[chosen];
    float best = kInfinity;
    std::int32_t place = 0;
    for (std::int32_t p = 0; p <= m; ++p) {
      const float cost = p == 0   ? length + between(x, order[0])
                         : p == m ? length + between(order[m - 1], x)
                                  : between(x, order[p]) + (between(order[p - 1], x) +
                                                            (length - between(order[p - 1], order[p])));
      if (cost < best) {
        best = cost;
        place = p;
      }
    }
    for (std::int32_t i = m; i > place; --i) order[i] = order[i - 1];
    order[place] = x;
    freeMarkers.erase(freeMarkers.begin() + static_cast<std::ptrdiff_t>(chosen));
  }
}

}  // namespace reference
