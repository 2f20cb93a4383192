#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/genotype_table.h"
#include "host/order_options.h"

namespace host {

// What makes a marker leave the map; nothing does unless asked for.
struct CleaningRules {
  std::optional<double> maxMissing{};       // share of lines without a genotype, 0 to 1
  std::optional<double> minSegregationP{};  // p-value of the segregation test
  bool bin = false;                         // markers that tell nothing new stand aside

  bool Any() const { return maxMissing || minSegregationP || bin; }
};

struct DroppedMarker {
  std::string name;
  int32_t number = 0;  // running number in the file as given
  std::string reason;  // "missing 0.4 above 0.2"
};

// A marker for which another one stands.
struct BinnedMarker {
  std::string name;
  int32_t number = 0;
  int32_t kept = 0;                   // running number of the other among the kept markers
  double missing = 0;                 // share, 0 to 1
  std::optional<float> segregationP;  // where it was asked for
};

struct CleaningLedger {
  CleaningRules rules;
  int32_t read = 0;
  std::vector<int32_t> kept;  // running numbers in the file as given, ascending
  std::vector<DroppedMarker> tooMissing, distorted;
  std::vector<BinnedMarker> binned;  // in the order of the file
};

// The binned markers by the kept one that stands for them; element 0 is that of kept marker 1.
std::vector<std::vector<const BinnedMarker*>> BinMembers(const CleaningLedger& ledger);

// Applies the rules in the order missing, segregation, bins. A bin takes a marker when the kept one of it has
// the same genotype at every line where the marker has one, and when no other bin could take it; of the
// markers of a bin the one with least missing is kept, then the first. Markers of different categories or
// anchor groups do not share a bin. Runs the library on parts of the table for the segregation tests.
CleaningLedger CleanMarkers(const GenotypeTable& table, const CleaningRules& rules);

// The table of the kept markers; one that stands for others takes over their anchor group where it has none.
GenotypeTable KeptTable(const GenotypeTable& table, const CleaningLedger& ledger);

// Writes a project file. Failure: Other.
void WriteGenotypes(const std::filesystem::path& path, const GenotypeTable& table);

// Adds the names of markers that are not in the data any more.
void AddCleaned(const CleaningLedger& ledger, MarkerNumbers& numbers);

// STEM.dropped.tsv: marker and reason, in the order of the file.
std::string DroppedTable(const CleaningLedger& ledger, const std::vector<std::string>& keptNames);

// What was done in lines for people, with the first names of each kind.
std::string CleaningText(const CleaningLedger& ledger);

}  // namespace host
