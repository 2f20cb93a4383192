#include "tests/reference/multi_parent_simulated.h"

#include <random>
#include <utility>

namespace reference {
namespace {

using Haplotype = std::vector<char>;  // the parent that each marker comes from
using Plant = std::pair<Haplotype, Haplotype>;

struct Meiosis {
  const ParentsPlan& plan;
  std::mt19937 draw{plan.seed};
  std::uniform_real_distribution<double> uniform{0, 1};

  bool Chance(double share) { return uniform(draw) < share; }
  Haplotype Founder(int parent) const {
    return Haplotype(static_cast<size_t>(plan.markers), static_cast<char>(parent));
  }
  Haplotype Gamete(const Plant& plant) {
    Haplotype gamete(plant.first.size());
    const int32_t perChromosome = (plan.markers + plan.chromosomes - 1) / plan.chromosomes;
    bool second = Chance(0.5);
    for (int32_t m = 0; m < plan.markers; ++m) {
      if (Chance(m % perChromosome == 0 ? 0.5 : plan.spacing)) second = !second;
      const auto at = static_cast<size_t>(m);
      gamete[at] = second ? plant.second[at] : plant.first[at];
    }
    return gamete;
  }
  // A gamete of an F1, then of two such, and so on.
  Haplotype GameteOf(int firstParent, int parents) {
    if (parents == 1) return Founder(firstParent);
    Haplotype left = GameteOf(firstParent, parents / 2);
    return Gamete({std::move(left), GameteOf(firstParent + parents / 2, parents / 2)});
  }
};

char ClonalLetter(int32_t category, int h, int l) {
  switch (category) {
    case 1:
      return "ABCD"[2 * h + l];
    case 2:
      return "EF"[l];
    case 3:
      return "GH"[h];
    case 4:
      return "IJK"[h + l];
    default:
      return "IJK"[h + 1 - l];
  }
}

// One parent a digit, parents of one allele the digit of the first of them.
int32_t RandomPattern(Meiosis& meiosis, int parents, bool biallelic) {
  for (;;) {
    std::vector<int> allele(static_cast<size_t>(parents));
    int32_t digits = 0;
    bool several = false;
    for (size_t k = 0; k < allele.size(); ++k) {
      allele[k] = static_cast<int>(meiosis.draw() % static_cast<uint32_t>(biallelic ? 2 : parents));
      size_t first = 0;
      while (allele[first] != allele[k]) ++first;
      digits = 10 * digits + static_cast<int32_t>(first) + 1;
      several = several || first > 0;
    }
    if (several) return digits;
  }
}

}  // namespace

ParentsCross SimulateClonal(const ParentsPlan& plan) {
  Meiosis meiosis{plan};
  const auto markers = static_cast<size_t>(plan.markers), lines = static_cast<size_t>(plan.lines);
  ParentsCross cross;
  cross.genotype.resize(markers * lines);
  for (size_t m = 0; m < markers; ++m) {
    cross.category.push_back(1 + static_cast<int32_t>(meiosis.draw() % (plan.population == 1 ? 4 : 5)));
    cross.flippedAB.push_back(plan.population == 1 && meiosis.Chance(0.5));
    cross.flippedCD.push_back(plan.population == 1 && meiosis.Chance(0.5));
  }
  for (size_t line = 0; line < lines; ++line) {
    const Haplotype ab = meiosis.Gamete({meiosis.Founder(0), meiosis.Founder(1)}),
                    cd = meiosis.Gamete({meiosis.Founder(0), meiosis.Founder(1)});
    for (size_t m = 0; m < markers; ++m) {
      const char letter =
          ClonalLetter(cross.category[m], ab[m] ^ cross.flippedAB[m], cd[m] ^ cross.flippedCD[m]);
      cross.genotype[m * lines + line] = meiosis.Chance(plan.missing) ? 'X' : letter;
    }
  }
  return cross;
}

ParentsCross SimulateMultiParent(const ParentsPlan& plan) {
  Meiosis meiosis{plan};
  const auto markers = static_cast<size_t>(plan.markers), lines = static_cast<size_t>(plan.lines);
  const int parents = plan.population <= 2 ? 4 : 8;
  ParentsCross cross;
  cross.genotype.resize(markers * lines);
  for (size_t m = 0; m < markers; ++m) {
    cross.category.push_back(RandomPattern(meiosis, parents, meiosis.Chance(plan.biallelic)));
  }
  for (size_t line = 0; line < lines; ++line) {
    Haplotype left = meiosis.GameteOf(0, parents / 2);
    Plant plant = {std::move(left), meiosis.GameteOf(parents / 2, parents / 2)};
    for (int k = 0; k < 9 && plan.population % 2 == 0; ++k) {
      Haplotype first = meiosis.Gamete(plant);
      plant = {std::move(first), meiosis.Gamete(plant)};
    }
    const Haplotype inbred = meiosis.Gamete(plant);
    for (size_t m = 0; m < markers; ++m) {
      int32_t digits = cross.category[m];
      for (int k = parents - 1; k > inbred[m]; --k) digits /= 10;
      cross.genotype[m * lines + line] =
          meiosis.Chance(plan.missing) ? 'X' : static_cast<char>('A' + digits % 10 - 1);
    }
  }
  return cross;
}

}  // namespace reference
