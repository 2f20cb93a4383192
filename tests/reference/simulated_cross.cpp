#include "tests/reference/simulated_cross.h"

#include <random>
#include <utility>

#include "recombination/population_table.h"

namespace reference {
namespace {

using Haplotype = std::vector<char>;  // 0 from P1, 1 from P2
using Plant = std::pair<Haplotype, Haplotype>;
using Generator = std::mt19937;

struct Meiosis {
  const CrossPlan& plan;
  Generator& draw;
  std::uniform_real_distribution<double> uniform{0, 1};

  Haplotype Gamete(const Plant& plant) {
    Haplotype gamete(static_cast<size_t>(plan.markers));
    const int32_t perChromosome = (plan.markers + plan.chromosomes - 1) / plan.chromosomes;
    bool second = uniform(draw) < 0.5;
    for (int32_t m = 0; m < plan.markers; ++m) {
      const double rec = m % perChromosome == 0 ? 0.5 : plan.spacing;
      if (uniform(draw) < rec) second = !second;
      const auto at = static_cast<size_t>(m);
      gamete[at] = second ? plant.second[at] : plant.first[at];
    }
    return gamete;
  }
  Plant Self(const Plant& plant) {
    Haplotype first = Gamete(plant);
    return {std::move(first), Gamete(plant)};
  }
};

// How a line comes about: backcrosses (to P1 or P2), then what follows.
struct Breeding {
  int backcrosses, selfings;
  bool doubled;
};
Breeding BreedingOf(int32_t population) {
  constexpr int kInbred = 9;
  switch (population) {
    case 1:
    case 2:
      return {1, 0, false};
    case 3:
      return {0, 0, true};
    case 4:
      return {0, kInbred, true};
    case 5:
    case 6:
      return {1, kInbred, true};
    case 7:
      return {0, 1, false};
    case 8:
      return {0, 2, false};
    case 9:
    case 10:
      return {2, 0, false};
    case 11:
    case 12:
      return {2, kInbred, true};
    case 13:
    case 14:
      return {1, 1, false};
    case 15:
    case 16:
      return {2, 1, false};
    case 17:
    case 18:
      return {1, 0, true};
    default:
      return {2, 0, true};
  }
}

char Letter(bool first, bool second, int32_t category) {
  const int copies = (first ? 1 : 0) + (second ? 1 : 0);  // of P2's allele
  if (category == 12) return copies == 2 ? 'B' : 'D';
  if (category == 10) return copies == 0 ? 'A' : 'R';
  return "AHB"[copies];
}

}  // namespace

Cross SimulateCross(const CrossPlan& plan) {
  Generator draw(plan.seed);
  Meiosis meiosis{plan, draw};
  const auto markers = static_cast<size_t>(plan.markers), lines = static_cast<size_t>(plan.lines);
  Cross cross{std::vector<char>(markers * lines), std::vector<int32_t>(markers, 1)};
  const bool selfing = recombination::Population(plan.population).family == recombination::Family::Selfing;
  std::vector<bool> exchanged(markers);
  for (size_t m = 0; m < markers; ++m) {
    if (selfing && meiosis.uniform(draw) < plan.dominant)
      cross.category[m] = meiosis.uniform(draw) < 0.5 ? 12 : 10;
    exchanged[m] = meiosis.uniform(draw) < plan.repulsion;
  }
  const Breeding breeding = BreedingOf(plan.population);
  const Haplotype recurrent(markers, recombination::Population(plan.population).mirrored ? 1 : 0);
  for (size_t line = 0; line < lines; ++line) {
    Plant plant{Haplotype(markers, 0), Haplotype(markers, 1)};
    for (int k = 0; k < breeding.backcrosses; ++k) plant = {recurrent, meiosis.Gamete(plant)};
    for (int k = 0; k < breeding.selfings; ++k) plant = meiosis.Self(plant);
    if (breeding.doubled) plant.first = plant.second = meiosis.Gamete(plant);
    for (size_t m = 0; m < markers; ++m) {
      // Only where both homozygotes or neither class of the population change places does it stay one.
      const bool flip = exchanged[m] && (selfing || breeding.doubled);
      const bool first = (plant.first[m] != 0) != flip, second = (plant.second[m] != 0) != flip;
      char& letter = cross.genotype[m * lines + line];
      letter = Letter(first, second, cross.category[m]);
      if (exchanged[m] && !flip) letter = letter == 'H' ? (recurrent[0] != 0 ? 'B' : 'A') : 'H';
      if (meiosis.uniform(draw) < plan.missing) letter = 'X';
    }
  }
  return cross;
}

}  // namespace reference
