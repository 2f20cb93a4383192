#include "tests/reference/two_point_plain.h"

#include <cmath>
#include <cstddef>

namespace reference {
namespace {

// Haplotypes: bit 0 the allele of the first locus, bit 1 of the second, 1 from P2. A generation is a share
// for every ordered pair of haplotypes, 4 * mother + father.
using Generation = std::array<double, 16>;
using Gametes = std::array<double, 4>;

Gametes GametesOf(size_t plant, double r) {
  const size_t x = plant / 4, y = plant % 4;
  Gametes gametes{};
  gametes[x] += (1 - r) / 2;
  gametes[y] += (1 - r) / 2;
  gametes[(x & 1U) | (y & 2U)] += r / 2;
  gametes[(y & 1U) | (x & 2U)] += r / 2;
  return gametes;
}

Generation Cross(const Generation& plants, size_t parent, double r) {
  Generation next{};
  for (size_t plant = 0; plant < 16; ++plant) {
    const Gametes gametes = GametesOf(plant, r);
    for (size_t g = 0; g < 4; ++g) next[4 * parent + g] += plants[plant] * gametes[g];
  }
  return next;
}

Generation Self(const Generation& plants, double r) {
  Generation next{};
  for (size_t plant = 0; plant < 16; ++plant) {
    const Gametes gametes = GametesOf(plant, r);
    for (size_t g = 0; g < 16; ++g) next[g] += plants[plant] * gametes[g / 4] * gametes[g % 4];
  }
  return next;
}

Generation Double(const Generation& plants, double r) {
  Generation next{};
  for (size_t plant = 0; plant < 16; ++plant) {
    const Gametes gametes = GametesOf(plant, r);
    for (size_t g = 0; g < 4; ++g) next[5 * g] += plants[plant] * gametes[g];
  }
  return next;
}

enum class End { None, Self, SelfTwice, Inbred, Doubled };
struct Breeding {
  int backcrosses;
  size_t parent;  // haplotype of the recurrent parent
  End end;
};
constexpr std::array<Breeding, 20> kBreeding = {{
    {1, 0, End::None},    {1, 3, End::None},    {0, 0, End::Doubled}, {0, 0, End::Inbred},
    {1, 0, End::Inbred},  {1, 3, End::Inbred},  {0, 0, End::Self},    {0, 0, End::SelfTwice},
    {2, 0, End::None},    {2, 3, End::None},    {2, 0, End::Inbred},  {2, 3, End::Inbred},
    {1, 0, End::Self},    {1, 3, End::Self},    {2, 0, End::Self},    {2, 3, End::Self},
    {1, 0, End::Doubled}, {1, 3, End::Doubled}, {2, 0, End::Doubled}, {2, 3, End::Doubled},
}};

}  // namespace

Cells CellsByGametes(int32_t population, double r) {
  const Breeding& breeding = kBreeding[static_cast<size_t>(population - 1)];
  Generation plants{};
  plants[4 * 0 + 3] = 1;  // the F1 in coupling
  for (int k = 0; k < breeding.backcrosses; ++k) plants = Cross(plants, breeding.parent, r);
  if (breeding.end == End::Doubled) plants = Double(plants, r);
  const int selfings = breeding.end == End::Self        ? 1
                       : breeding.end == End::SelfTwice ? 2
                       : breeding.end == End::Inbred    ? 60
                                                        : 0;
  for (int k = 0; k < selfings; ++k) plants = Self(plants, r);
  Cells cells{};
  for (size_t plant = 0; plant < 16; ++plant) {
    const size_t x = plant / 4, y = plant % 4;
    cells[3 * ((x & 1U) + (y & 1U)) + (x >> 1U) + (y >> 1U)] += plants[plant];
  }
  return cells;
}

Cells FoldCells(const Cells& cells, int32_t firstClass, int32_t secondClass) {
  const auto shown = [](size_t index, int32_t markerClass) {
    if (markerClass == 12 && index == 0) return size_t{1};
    if (markerClass == 10 && index == 2) return size_t{1};
    return index;
  };
  Cells folded{};
  for (size_t k = 0; k < 9; ++k) folded[3 * shown(k / 3, firstClass) + shown(k % 3, secondClass)] += cells[k];
  return folded;
}

double LogLikelihoodOf(const Cells& table, const Cells& frequencies) {
  double sum = 0;
  for (size_t k = 0; k < 9; ++k) {
    if (frequencies[k] > 1e-15) sum += table[k] * std::log(frequencies[k]);
  }
  return sum;
}

}  // namespace reference
