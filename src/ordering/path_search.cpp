#include "ordering/path_search.h"

#include <algorithm>
#include <utility>

#include "ordering/gains.h"

namespace ordering {
namespace {

struct Scratch {
  Places<City> city;
  Places<float> length;
};

template <class Rows>
struct Search {
  const Rows& rows;
  const Distances& d;
  const Tour& tour;
  bool three;
  TopEdges top;
  float best = kSmallestGain;
  std::uint64_t key = 0;  // of the best so far; 0 is never undercut
  Move move;
  float marginA = 0, marginB = 0;
  Scratch within1, within2;  // scratch of Within, by depth

  float BoundA() const { return best - marginA; }
  float BoundB() const { return best - marginB; }
  float Weight(std::int32_t p) const { return p == top.place[1] ? top.length[2] : tour.edge[p]; }
  float Nearest(City c) const { return d.nearest[c]; }
};

// Positions take 20 bits each, as the largest table that fits a 32-bit count of pairs has fewer cities.
std::uint64_t Key(std::int32_t i, std::int32_t j, std::int32_t k, int number) {
  return (static_cast<std::uint64_t>(i) << 43U) | (static_cast<std::uint64_t>(j) << 23U) |
         (static_cast<std::uint64_t>(k) << 3U) | static_cast<std::uint64_t>(number);
}

bool Touch(std::int32_t n, std::int32_t p, std::int32_t q) {
  const std::int32_t apart = p > q ? p - q : q - p;
  return apart < 2 || apart == n - 1;
}

template <class Rows>
void Offer(Search<Rows>& s, float gain, std::int32_t i, std::int32_t j, std::int32_t k, int number) {
  const std::uint64_t key = Key(i, j, k, number);
  if (gain > s.best || key < s.key) {
    s.best = gain;
    s.key = key;
    s.move = Move{gain, i, j, k, number, 0};
  }
}

// A pair of edges p < q is judged within triples, as their case 1, 2 or 3. Offers it as part of the first.
template <class Rows>
void OfferPairInTriple(Search<Rows>& s, float gain, std::int32_t p, std::int32_t q) {
  const std::int32_t n = s.tour.n;
  const auto fits = [n, p, q](std::int32_t z) { return !Touch(n, z, p) && !Touch(n, z, q); };
  for (std::int32_t z = 1; z <= std::min(p - 2, 2); ++z) {
    if (fits(z)) return Offer(s, gain, z, p, q, 1);
  }
  if (fits(p + 2) && p + 2 < q) return Offer(s, gain, p, p + 2, q, 3);
  if (q + 2 <= n && fits(q + 2)) Offer(s, gain, p, q, q + 2, 2);
}

template <class Rows>
void TryPair(Search<Rows>& s, std::int32_t p, std::int32_t q) {
  if (p > q) std::swap(p, q);
  if (Touch(s.tour.n, p, q)) return;
  const auto& city = s.tour.city;
  const float x1 = s.tour.edge[p], x2 = s.tour.edge[q], v = s.top.length[1];
  const float y1 = s.rows(city[p], city[q]), y2 = s.rows(city[p + 1], city[q + 1]);
  const float survivor = Survivor(s.top, p, q, 0);
  if (s.three) {
    const float gain = PairInThreeGain(x1, x2, v, y1, y2, survivor);
    if (gain >= s.best) OfferPairInTriple(s, gain, p, q);
  } else {
    const float gain = TwoOptPathGain(x1, x2, v, y1, y2, survivor);
    if (gain >= s.best) Offer(s, gain, p, q, q, 2);
  }
}

template <class Rows>
void TryTriple(Search<Rows>& s, std::int32_t p, std::int32_t q, std::int32_t r) {
  if (p > q) std::swap(p, q);
  if (q > r) std::swap(q, r);
  if (p > q) std::swap(p, q);
  if (Touch(s.tour.n, p, q) || Touch(s.tour.n, q, r) || Touch(s.tour.n, p, r)) return;
  const PureGains pure = PureThreeGains(s.rows, s.tour, s.top, p, q, r);
  for (int number = 4; number <= 7; ++number) {
    if (pure.gain[number - 4] >= s.best) Offer(s, pure.gain[number - 4], p, q, r, number);
  }
}

// Cities with their distances from one; all that are nearer than the limit asked for are among them. A walk
// through a list in order of the distance ends at the first that is not nearer.
struct NearCities {
  const City* city;
  const float* length;
  std::int32_t count;
};
template <class Rows>
NearCities Within(const Search<Rows>& s, City c, float limit, Scratch& scratch) {
  if (limit <= s.d.reach[c]) return {s.d.Near(c), s.d.NearLength(c), s.d.listed};
  scratch.city.resize(static_cast<std::size_t>(s.tour.n));
  scratch.length.resize(static_cast<std::size_t>(s.tour.n));
  std::int32_t count = 0;
  for (City other = 1; other <= s.tour.n; ++other) {
    if (other == c) continue;
    const float length = s.rows(c, other);
    scratch.city[count] = other;
    scratch.length[count] = length;
    count += length < limit ? 1 : 0;
  }
  return {scratch.city.data(), scratch.length.data(), count};
}

bool IsTop(const TopEdges& top, std::int32_t p) {
  return p == top.place[1] || p == top.place[2] || p == top.place[3] || p == top.place[4];
}

// Whether the list of near cities ends before the limit.
template <class Rows>
bool IsFar(const Search<Rows>& s, City c, float limit) {
  return s.Nearest(c) < limit && limit > s.d.reach[c];
}

// The positions of one to n that are no neighbours of p.
template <class Visit>
void EachOther(std::int32_t n, std::int32_t p, Visit visit) {
  for (std::int32_t q = 1; q < p - 1; ++q) visit(q);
  for (std::int32_t q = p + 2; q <= n; ++q) visit(q);
}

// Case A of two edges, edge p with every other: dearer than lists of near cities, cheaper than making such.
template <class Rows>
void PairsWithAll(Search<Rows>& s, std::int32_t p) {
  const City* const city = s.tour.city.data();
  const float* const edge = s.tour.edge.data();
  const auto fromA = s.rows.From(city[p]), fromB = s.rows.From(city[p + 1]);
  const float weight = s.Weight(p);
  float bound = s.BoundA();
  EachOther(s.tour.n, p, [&](std::int32_t q) {
    if (!(weight - fromA(city[q]) + edge[q] - fromB(city[q + 1]) > bound)) return;
    TryPair(s, p, q);
    bound = s.BoundA();
  });
}

// Case A of two edges, p the one that is longer than its added edge: the added edge joins the front cities
// of both, p being the earlier edge, or the rear cities, p being the later one.
template <class Rows>
void PairsFrom(Search<Rows>& s, std::int32_t p) {
  const City* const city = s.tour.city.data();
  const std::int32_t* const at = s.tour.at.data();
  const City a = city[p], b = city[p + 1];
  const float weight = s.Weight(p), limit = weight - s.BoundA() / 2;
  if (!s.three && (IsFar(s, a, limit) || IsFar(s, b, limit))) return PairsWithAll(s, p);
  if (s.Nearest(a) < limit) {
    const NearCities near = Within(s, a, limit, s.within1);
    const auto fromB = s.rows.From(b);
    for (std::int32_t m = 0; m < near.count && near.length[m] < limit; ++m) {
      const std::int32_t q = at[near.city[m]];
      if (q <= p + 1) continue;
      if (weight - near.length[m] + s.Weight(q) - fromB(city[q + 1]) > s.BoundA()) TryPair(s, p, q);
    }
  }
  if (s.Nearest(b) < limit) {
    const NearCities near = Within(s, b, limit, s.within1);
    const auto fromA = s.rows.From(a);
    for (std::int32_t m = 0; m < near.count && near.length[m] < limit; ++m) {
      const std::int32_t q = at[near.city[m]] - 1;
      if (q < 1 || q + 1 >= p) continue;
      if (weight - near.length[m] + s.Weight(q) - fromA(city[q]) > s.BoundA()) TryPair(s, q, p);
    }
  }
}

// Case B of two edges, the longest edge being one of them.
template <class Rows>
void PairsWithLongest(Search<Rows>& s) {
  const std::int32_t p = s.top.place[1];
  const City* const city = s.tour.city.data();
  const float* const edge = s.tour.edge.data();
  const auto fromA = s.rows.From(city[p]), fromB = s.rows.From(city[p + 1]);
  float bound = s.BoundB();
  if (std::min(s.Nearest(city[p]), s.Nearest(city[p + 1])) >= s.top.length[2] - bound) return;
  EachOther(s.tour.n, p, [&](std::int32_t q) {
    if (!(edge[q] - std::min(fromA(city[q]), fromB(city[q + 1])) > bound)) return;
    TryPair(s, p, q);
    bound = s.BoundB();
  });
}

// Positions of the edges above the limit, longest first.
template <class Rows>
std::vector<std::int32_t> LongEdges(const Search<Rows>& s, float limit) {
  std::vector<std::int32_t> places;
  for (std::int32_t p = 1; p <= s.tour.n; ++p) {
    if (s.tour.edge[p] > limit) places.push_back(p);
  }
  std::sort(places.begin(), places.end(), [&s](std::int32_t p, std::int32_t q) {
    return s.tour.edge[p] > s.tour.edge[q] || (s.tour.edge[p] == s.tour.edge[q] && p < q);
  });
  return places;
}

// Case B of two edges, the longest edge staying.
template <class Rows>
void PairsBesideLongest(Search<Rows>& s) {
  const float* v = s.top.length;
  if (v[2] + v[3] <= v[1] + s.BoundB()) return;
  const std::vector<std::int32_t> places = LongEdges(s, v[1] + s.BoundB() - v[2]);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const float x1 = s.tour.edge[places[i]];
    for (std::size_t j = i + 1; j < places.size(); ++j) {
      if (x1 + s.tour.edge[places[j]] <= v[1] + s.BoundB()) break;
      TryPair(s, places[i], places[j]);
    }
  }
}

// An edge with the end that its added edge leaves from.
struct Start {
  std::int32_t place;
  bool forward;  // walked along the tour: the added edge leaves from its rear city
};

// Third level of case A: edges 1 and 2 stand, `gained` is w1 - y1 + w2, and y2 leaves from `from`. Of the
// three edges at least two are walked forward; only then, and with edge 3 between 1 and 2 going forward from
// 1, do they make one tour.
template <class Rows>
void TriplesFrom(Search<Rows>& s, Start first, Start second, City from, float gained) {
  const std::int32_t n = s.tour.n;
  const auto& city = s.tour.city;
  const City end = first.forward ? city[first.place] : city[first.place + 1];
  const std::int32_t span = (second.place - first.place + n) % n;
  const float limit = gained - s.BoundA() * (2.0F / 3);
  if (!(s.Nearest(from) < limit)) return;
  const NearCities near = Within(s, from, limit, s.within2);
  for (std::int32_t m = 0; m < near.count && near.length[m] < limit; ++m) {
    const City to = near.city[m];
    const float left = gained - near.length[m];
    const std::int32_t at = s.tour.at[to];
    for (int backward = 0; backward < (first.forward && second.forward ? 2 : 1); ++backward) {
      const std::int32_t place = backward == 0 ? at : (at == 1 ? n : at - 1);
      const std::int32_t offset = place > first.place ? place - first.place : place - first.place + n;
      if (offset < 2 || offset > span - 2 || place == first.place) continue;
      const City last = backward == 0 ? city[place + 1] : city[place];
      if (left + s.Weight(place) - s.rows(last, end) > s.BoundA()) {
        TryTriple(s, first.place, second.place, place);
      }
    }
  }
}

// Case A of three edges, p the one that is longer than its added edge.
template <class Rows>
void TriplesFrom(Search<Rows>& s, Start first) {
  const std::int32_t n = s.tour.n;
  const auto& city = s.tour.city;
  const City from = first.forward ? city[first.place + 1] : city[first.place];
  const float limit = s.Weight(first.place) - s.BoundA() / 3;
  if (!(s.Nearest(from) < limit)) return;
  const NearCities near = Within(s, from, limit, s.within1);
  for (std::int32_t m = 0; m < near.count && near.length[m] < limit; ++m) {
    const City to = near.city[m];
    const float gained = s.Weight(first.place) - near.length[m];
    const std::int32_t at = s.tour.at[to];
    if (const Start second{at, true}; !Touch(n, first.place, at)) {
      TriplesFrom(s, first, second, city[at + 1], gained + s.Weight(at));
    }
    const std::int32_t before = at == 1 ? n : at - 1;
    if (const Start second{before, false}; first.forward && !Touch(n, first.place, before)) {
      TriplesFrom(s, first, second, city[before], gained + s.Weight(before));
    }
  }
}

template <class Rows>
void TriplesFrom(Search<Rows>& s, std::int32_t p) {
  TriplesFrom(s, Start{p, true});
  TriplesFrom(s, Start{p, false});
}

// Case B of three edges, the longest edge being one of them: of the two added edges that count, one joins the
// longest edge with edge e, and the other leaves from edge o (or joins it with the longest edge, too).
template <class Rows>
void TriplesWithLongest(Search<Rows>& s) {
  const std::int32_t n = s.tour.n;
  const auto& city = s.tour.city;
  const City g = city[s.top.place[1]], h = city[s.top.place[1] + 1];
  Places<float> slack(static_cast<std::size_t>(n) + 1);
  float largest = 0;
  for (std::int32_t o = 1; o <= n; ++o) {
    slack[o] = s.Weight(o) - std::min(s.Nearest(city[o]), s.Nearest(city[o + 1]));
    largest = std::max(largest, slack[o]);
  }
  for (std::int32_t e = 1; e <= n; ++e) {
    if (Touch(n, e, s.top.place[1])) continue;
    const City c = city[e], d = city[e + 1];
    const float joined =
        s.tour.edge[e] - std::min(std::min(s.rows(g, c), s.rows(g, d)), std::min(s.rows(h, c), s.rows(h, d)));
    if (joined + largest < s.BoundB()) continue;
    for (std::int32_t o = 1; o <= n; ++o) {
      if (joined + slack[o] >= s.BoundB()) TryTriple(s, s.top.place[1], e, o);
    }
  }
}

// Case B of three edges, the longest edge staying.
template <class Rows>
void TriplesBesideLongest(Search<Rows>& s) {
  const float* v = s.top.length;
  if (v[2] + v[3] + v[4] <= v[1] + s.BoundB()) return;
  const std::vector<std::int32_t> places = LongEdges(s, v[1] + s.BoundB() - v[2] - v[3]);
  const auto& edge = s.tour.edge;
  for (std::size_t i = 0; i + 2 < places.size(); ++i) {
    for (std::size_t j = i + 1; j + 1 < places.size(); ++j) {
      const float two = edge[places[i]] + edge[places[j]];
      if (two + edge[places[j + 1]] <= v[1] + s.BoundB()) break;
      for (std::size_t k = j + 1; k < places.size(); ++k) {
        if (two + edge[places[k]] <= v[1] + s.BoundB()) break;
        TryTriple(s, places[i], places[j], places[k]);
      }
    }
  }
}

// The positions, but the top edges, at which an added edge can be so short that they start a ring of `count`
// removed edges in case A.
template <class Rows, class Visit>
void ForEachStart(const Search<Rows>& s, int count, Visit visit) {
  const City* const city = s.tour.city.data();
  const float* const edge = s.tour.edge.data();
  float front = s.Nearest(city[1]), share = s.BoundA() / static_cast<float>(count);
  for (std::int32_t p = 1; p <= s.tour.n; ++p) {
    const float rear = s.Nearest(city[p + 1]);
    if (std::min(front, rear) < edge[p] - share && !IsTop(s.top, p)) {
      visit(p);
      share = s.BoundA() / static_cast<float>(count);
    }
    front = rear;
  }
}

}  // namespace

template <class Rows>
Move SearchPathMove(const Rows& rows, const Distances& d, const Tour& tour, bool three) {
  Search<Rows> s{rows, d, tour, three, FindTopEdges(tour), kSmallestGain, 0, {}, 0, 0, {}, {}};
  // A gain is a sum of at most seven steps, each rounded to half a unit in the last place (2^-24 of it); a
  // step that still can gain is at most V or 3 W in case A, 3 V or the longest distance in case B. Doubled
  // for the rounding of the bounds themselves.
  constexpr float kRounding = 2 * 0x1p-24F;
  s.marginA = kRounding * (6 * s.top.length[1] + 9 * s.top.length[2]);
  s.marginB = kRounding * (7 * d.longest + 21 * s.top.length[1]);
  // The longest edges first: a good gain early prunes the rest.
  for (int slot = 1; slot <= 4; ++slot) PairsFrom(s, s.top.place[slot]);
  PairsWithLongest(s);
  PairsBesideLongest(s);
  ForEachStart(s, 2, [&s](std::int32_t p) { PairsFrom(s, p); });
  if (!three) return s.move;
  TriplesWithLongest(s);
  TriplesBesideLongest(s);
  for (int slot = 1; slot <= 4; ++slot) TriplesFrom(s, s.top.place[slot]);
  ForEachStart(s, 3, [&s](std::int32_t p) { TriplesFrom(s, p); });
  return s.move;
}

template Move SearchPathMove(const DenseRows&, const Distances&, const Tour&, bool);
template Move SearchPathMove(const TriangleRows&, const Distances&, const Tour&, bool);

}  // namespace ordering
