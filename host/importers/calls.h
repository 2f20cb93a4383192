#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "host/importers/ledger.h"
#include "host/importers/request.h"

namespace importers {

// Two alleles of a line as one byte: 16 * first + second.
using Call = uint8_t;
inline constexpr uint8_t kMostAlleles = 13;  // numbers 0 to 12 are told apart
inline constexpr uint8_t kOtherAllele = 13, kSingle = 14, kUnknown = 15;
inline constexpr Call kNoCall = 16 * kUnknown + kUnknown;
constexpr Call CallOf(uint8_t first, uint8_t second) { return static_cast<Call>(16U * first + second); }

// What each call means at a site, given the calls of the parents.
struct SiteTable {
  std::optional<Drop> drop;            // the site says nothing about this cross
  std::string category;                // CDM and PLM
  std::array<uint8_t, 256> cell{};     // by call
  std::array<uint8_t, 256> blanked{};  // by call: 0, or 1 + the Blank that made it missing
};

// How many parents a population needs: bi-parental and clonal 2, double cross 4, multi-parent 4 or 8.
std::size_t ParentsNeeded(const Request& request);

// The parents in the order P1, P2 or A, B, C, D, ...; inbred ones must be homozygous.
SiteTable ReadSite(const Request& request, std::span<const Call> parents);

// Cells of the lines under a table; adds to the counts by Blank.
void TakeCalls(const SiteTable& site, std::span<const Call> calls, std::span<uint8_t> cells,
               std::array<int64_t, kBlanks>& blanked);

}  // namespace importers
