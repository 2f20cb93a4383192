#include "host/importers/clonal.h"

#include <algorithm>
#include <string>

#include "host/genotype_table.h"

namespace importers {
namespace {

constexpr uint8_t kHeteroC = kAD | kBC, kHeteroD = kAC | kBD;
constexpr ClonalCategory kCategories[] = {
    {"ABCD", {kAC, kAD, kBC, kBD}, {"AC", "AD", "BC", "BD"}, true, true},
    {"AB=CD", {kAC, kHeteroC, kBD}, {"AA", "AB", "BB"}, true, false},
    // Which of its alleles a heterozygous parent calls C is free where phases are not known.
    {"AB=CD", {kAD, kHeteroD, kBC}, {"AA", "AB", "BB"}, true, false},
    {"A=CB=D", {kAC, kHeteroC, kBD}, {"AA", "AB", "BB"}, false, true},
    {"A=DB=C", {kAD, kHeteroD, kBC}, {"AA", "AB", "BB"}, false, true},
    {"C=D", {kAC | kAD, kBC | kBD}, {"AX", "BX"}, true, true},
    {"A=B", {kAC | kBC, kAD | kBD}, {"XC", "XD"}, true, true},
};

// The class that holds all of these zygotes, or the number of classes.
std::size_t ClassOf(const ClonalCategory& category, uint8_t zygotes) {
  if (zygotes == kNone) return category.classes.size();
  const auto found = std::find_if(category.classes.begin(), category.classes.end(),
                                  [&](uint8_t candidate) { return (zygotes & ~candidate) == 0; });
  return static_cast<std::size_t>(found - category.classes.begin());
}

// The alleles that are seen, each once, in order.
std::string Seen(char first, char second, char null) {
  std::string seen;
  for (const char allele : {std::min(first, second), std::max(first, second)}) {
    if (allele != null && (seen.empty() || seen.back() != allele)) seen += allele;
  }
  return seen.empty() ? std::string(1, null) : seen;
}

}  // namespace

const ClonalCategory* CategoryFor(const ZygoteCounts& counts, int32_t population) {
  const ClonalCategory* best = nullptr;
  int64_t most = 0;
  for (const ClonalCategory& category : kCategories) {
    if (population == 1 ? !category.clonal : !category.doubleCross) continue;
    int64_t kept = 0;
    for (std::size_t zygotes = 1; zygotes < counts.size(); ++zygotes) {
      if (ClassOf(category, static_cast<uint8_t>(zygotes)) < category.classes.size()) kept += counts[zygotes];
    }
    if (kept <= most) continue;
    most = kept;
    best = &category;
  }
  return best;
}

std::array<uint8_t, 16> CellsByZygotes(const ClonalCategory& category) {
  std::array<uint8_t, 16> cells{};
  for (std::size_t zygotes = 0; zygotes < cells.size(); ++zygotes) {
    const std::size_t found = ClassOf(category, static_cast<uint8_t>(zygotes));
    const bool fits = found < category.classes.size();
    cells[zygotes] = fits ? host::CellOf(host::TableKind::Cdm, category.codes[found])
                          : host::MissingCell(host::TableKind::Cdm);
  }
  return cells;
}

uint8_t ZygotesOf(std::string_view parents, std::string_view genotype, char null) {
  if (parents.size() != 4 || genotype.empty() || genotype.size() > 2) return kNone;
  const std::string seen = Seen(genotype.front(), genotype.back(), null);
  uint8_t zygotes = kNone;
  for (const std::size_t ab : {0U, 1U}) {
    for (const std::size_t cd : {0U, 1U}) {
      if (Seen(parents[ab], parents[2 + cd], null) == seen)
        zygotes |= static_cast<uint8_t>(1U << (2 * ab + cd));
    }
  }
  return zygotes;
}

}  // namespace importers
