#include "results/recoding.h"

#include <span>

namespace results {
namespace {

constexpr int32_t kClonalF1 = 1, kDoubleCross = 2;
constexpr std::string_view kBothParents = "AB=CD   ", kCoupling = "A=CB=D  ", kRepulsion = "A=DB=C  ";

// Two genotypes that change places.
struct Exchange {
  std::string_view one, other;
};
constexpr Exchange kExchangeAB[] = {{"AC", "BC"}, {"AD", "BD"}, {"AX", "BX"}};
constexpr Exchange kExchangeCD[] = {{"AC", "AD"}, {"BC", "BD"}, {"XC", "XD"}};
constexpr Exchange kExchangeHomozygotes[] = {{"AA", "BB"}};

void Apply(std::span<const Exchange> exchanges, std::string& genotypes) {
  for (std::size_t at = 0; at + project::kTokenWidth <= genotypes.size(); at += project::kTokenWidth) {
    const std::string_view genotype(genotypes.data() + at, project::kTokenWidth);
    for (const Exchange& exchange : exchanges) {
      if (genotype == exchange.one || genotype == exchange.other) {
        genotypes.replace(at, project::kTokenWidth, genotype == exchange.one ? exchange.other : exchange.one);
        break;
      }
    }
  }
}

// What a marker of the same two alleles in both parents becomes; blank for a category that stays.
std::string_view NewCategory(std::string_view category, int32_t populationType, bool samePhase) {
  if (populationType == kClonalF1 && category == kBothParents) {
    return samePhase ? kCoupling : kRepulsion;
  }
  if (populationType == kDoubleCross && category == kCoupling) {
    return samePhase ? kCoupling : kRepulsion;
  }
  if (populationType == kDoubleCross && category == kRepulsion) {
    return samePhase ? kRepulsion : kCoupling;
  }
  return {};
}

}  // namespace

RecodedMarker Recode(const MarkerRecord& marker, int32_t populationType, int32_t phaseAB, int32_t phaseCD) {
  const std::string_view category = project::Text(marker.category);
  RecodedMarker recoded{category, marker.genotypes};
  if (category != kBothParents && category != kCoupling && category != kRepulsion) {
    if (phaseAB == -1) {
      Apply(kExchangeAB, recoded.genotypes);
    }
    if (phaseCD == -1) {
      Apply(kExchangeCD, recoded.genotypes);
    }
    return recoded;
  }
  const std::string_view changed = NewCategory(category, populationType, phaseAB * phaseCD == 1);
  if (!changed.empty()) {
    recoded.category = changed;
    if (phaseAB == -1) {
      Apply(kExchangeHomozygotes, recoded.genotypes);
    }
  }
  return recoded;
}

}  // namespace results
