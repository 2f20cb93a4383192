#include "host/importers/calls.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/importers/clonal.h"
#include "host/populations.h"

namespace importers {
namespace {

using host::TableKind;

uint8_t First(Call call) { return call >> 4U; }
uint8_t Second(Call call) { return call & 15U; }
bool Known(Call call) { return First(call) < kOtherAllele && Second(call) < kOtherAllele; }
bool Homozygous(Call call) { return First(call) == Second(call); }

void SetPair(SiteTable& site, uint8_t first, uint8_t second, uint8_t cell) {
  for (const Call call : {CallOf(first, second), CallOf(second, first)}) {
    site.cell[call] = cell;
    site.blanked[call] = 0;
  }
}

// Every call missing, with the reason that its form tells.
void StartSite(const Request& request, SiteTable& site) {
  site.cell.fill(host::MissingCell(request.kind));
  for (std::size_t call = 0; call < 256; ++call) {
    const auto first = First(static_cast<Call>(call)), second = Second(static_cast<Call>(call));
    Blank reason = Blank::NoParentsAllele;
    if (first == kUnknown || second == kUnknown) reason = Blank::HalfCalled;
    if (second == kSingle) reason = Blank::Haploid;
    site.blanked[call] = static_cast<uint8_t>(1 + static_cast<unsigned>(reason));
  }
  site.blanked[kNoCall] = site.blanked[CallOf(kUnknown, kSingle)] = 0;
}

constexpr std::size_t kMostParents = 8;

bool LinesAreHomozygous(const Request& request) {
  if (request.kind == TableKind::Map) return host::kPopulations[request.population - 1].shows == "AB";
  return request.kind == TableKind::Plm;
}

std::optional<Drop> JudgeInbred(std::span<const Call> parents) {
  if (!std::all_of(parents.begin(), parents.end(), Known)) return Drop::ParentMissing;
  if (!std::all_of(parents.begin(), parents.end(), Homozygous)) return Drop::ParentHeterozygous;
  const bool alike =
      std::all_of(parents.begin(), parents.end(), [&](Call call) { return call == parents[0]; });
  return alike ? std::optional(Drop::ParentsAlike) : std::nullopt;
}

// Lines without heterozygotes may be called with a single allele.
void SetHomozygote(SiteTable& site, uint8_t allele, uint8_t cell, bool singleCounts) {
  SetPair(site, allele, allele, cell);
  if (!singleCounts) return;
  site.cell[CallOf(allele, kSingle)] = cell;
  site.blanked[CallOf(allele, kSingle)] = 0;
}

void ReadBiParental(const Request& request, std::span<const Call> parents, SiteTable& site) {
  const bool inbred = LinesAreHomozygous(request);
  const uint8_t p1 = First(parents[0]), p2 = First(parents[1]);
  SetHomozygote(site, p1, host::CellOf(TableKind::Map, "A"), inbred);
  SetHomozygote(site, p2, host::CellOf(TableKind::Map, "B"), inbred);
  SetPair(site, p1, p2, host::CellOf(TableKind::Map, "H"));
}

void ReadMultiParent(std::span<const Call> parents, SiteTable& site) {
  for (const Call parent : parents) {
    const auto first = std::find(parents.begin(), parents.end(), parent) - parents.begin();
    const char letter = static_cast<char>('A' + first);
    site.category += letter;
    SetHomozygote(site, First(parent), host::CellOf(TableKind::Plm, {&letter, 1}), true);
  }
  for (const Call one : parents) {
    for (const Call other : parents) {
      if (one == other) continue;
      site.blanked[CallOf(First(one), First(other))] = 1 + static_cast<unsigned>(Blank::NotInPopulation);
    }
  }
}

// `alleles`: A, B of one parent and C, D of the other.
void ReadOutbred(const Request& request, const std::array<uint8_t, 4>& alleles, SiteTable& site) {
  std::array<uint8_t, 256> zygotes{};
  for (const unsigned ab : {0U, 1U}) {
    for (const unsigned cd : {0U, 1U}) {
      const uint8_t one = alleles[ab], other = alleles[2 + cd];
      const auto bit = static_cast<uint8_t>(1U << (2 * ab + cd));
      zygotes[CallOf(one, other)] |= bit;
      if (one != other) zygotes[CallOf(other, one)] |= bit;
    }
  }
  ZygoteCounts counts{};
  for (const uint8_t set : zygotes) ++counts[set];
  counts[kNone] = 0;
  const ClonalCategory* category = CategoryFor(counts, request.population);
  if (category == nullptr) {
    site.drop = Drop::NoCategory;
    return;
  }
  site.category = category->text;
  const auto cells = CellsByZygotes(*category);
  for (std::size_t call = 0; call < 256; ++call) {
    if (zygotes[call] == kNone) continue;
    site.cell[call] = cells[zygotes[call]];
    site.blanked[call] = 0;
  }
}

void ReadClonal(const Request& request, std::span<const Call> parents, SiteTable& site) {
  if (!Known(parents[0]) || !Known(parents[1])) {
    site.drop = Drop::ParentMissing;
  } else if (Homozygous(parents[0]) && Homozygous(parents[1])) {
    site.drop = Drop::NoHeterozygousParent;
  } else {
    const auto [a, b] = std::minmax({First(parents[0]), Second(parents[0])});
    const auto [c, d] = std::minmax({First(parents[1]), Second(parents[1])});
    ReadOutbred(request, {a, b, c, d}, site);
  }
}

void ReadDoubleCross(const Request& request, std::span<const Call> parents, SiteTable& site) {
  const std::array<uint8_t, 4> alleles{First(parents[0]), First(parents[1]), First(parents[2]),
                                       First(parents[3])};
  if (alleles[0] == alleles[1] && alleles[2] == alleles[3]) {
    site.drop = Drop::NoHeterozygousParent;  // of the two hybrids
    return;
  }
  ReadOutbred(request, alleles, site);
}

}  // namespace

std::size_t ParentsNeeded(const Request& request) {
  if (request.kind == TableKind::Plm) return request.population <= 2 ? 4 : 8;
  return request.kind == TableKind::Cdm && request.population == 2 ? 4 : 2;
}

SiteTable ReadSite(const Request& request, std::span<const Call> given) {
  SiteTable site;
  StartSite(request, site);
  // Where lines may have a single allele, so may their parents.
  std::array<Call, kMostParents> whole{};
  std::copy(given.begin(), given.end(), whole.begin());
  const std::span<const Call> parents(whole.data(), given.size());
  if (LinesAreHomozygous(request)) {
    for (Call& parent : whole) {
      if (Second(parent) == kSingle) parent = CallOf(First(parent), First(parent));
    }
  }
  const bool clonal = request.kind == TableKind::Cdm && request.population == 1;
  if (!clonal) site.drop = JudgeInbred(parents);
  if (site.drop) return site;
  if (clonal) {
    ReadClonal(request, parents, site);
  } else if (request.kind == TableKind::Cdm) {
    ReadDoubleCross(request, parents, site);
  } else if (request.kind == TableKind::Plm) {
    ReadMultiParent(parents, site);
  } else {
    ReadBiParental(request, parents, site);
  }
  return site;
}

void TakeCalls(const SiteTable& site, std::span<const Call> calls, std::span<uint8_t> cells,
               std::array<int64_t, kBlanks>& blanked) {
  std::array<int64_t, 1 + kBlanks> counts{};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    cells[i] = site.cell[calls[i]];
    ++counts[site.blanked[calls[i]]];
  }
  for (std::size_t k = 0; k < kBlanks; ++k) blanked[k] += counts[k + 1];
}

}  // namespace importers
