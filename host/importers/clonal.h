#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace importers {

// The four zygotes of the cross AB x CD as bits; a genotype that fits several has several.
enum Zygote : uint8_t { kNone = 0, kAC = 1, kAD = 2, kBC = 4, kBD = 8, kAny = 15 };

// A category of clonal and double-cross markers: what its classes of zygotes are called.
struct ClonalCategory {
  std::string_view text;
  std::array<uint8_t, 4> classes;  // 0 behind the last one
  std::array<std::string_view, 4> codes;
  bool clonal, doubleCross;  // the populations that have it
};

// How often each set of zygotes is met, by its bits.
using ZygoteCounts = std::array<int64_t, 16>;

// The category that says most: the one that keeps most genotypes, of equals that with more classes. Null when
// none keeps any. `population`: 1 clonal F1, 2 double cross.
const ClonalCategory* CategoryFor(const ZygoteCounts& counts, int32_t population);

// The cell of each set of zygotes; the missing cell for one that spans classes of the category.
std::array<uint8_t, 16> CellsByZygotes(const ClonalCategory& category);

// The zygotes of parents with the alleles a, b and c, d that show one of these texts as `genotype`: two alleles,
// or one where it stands twice or beside `null`, an allele that nobody sees (0 for none). Order is no matter.
uint8_t ZygotesOf(std::string_view parents, std::string_view genotype, char null);

}  // namespace importers
