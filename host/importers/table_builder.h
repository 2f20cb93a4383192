#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/genotype_table.h"
#include "host/importers/ledger.h"
#include "host/importers/request.h"

namespace importers {

// What an importer hands back.
struct Import {
  host::GenotypeTable table;
  Ledger ledger;
};

struct MarkerSource {
  std::string_view name;
  std::size_t line = 0;              // where the file has the marker
  std::string_view chromosome = {};  // empty when the file tells none
};

// A genotype table at work: importers add marker by marker.
struct Builder {
  Request request;
  std::string path;
  host::GenotypeTable table;
  Ledger ledger;
  std::unordered_map<std::string, int> names;       // how often each was asked for
  std::unordered_map<std::string, int32_t> groups;  // anchor number by chromosome
  std::array<int64_t, 256> seen{};                  // genotypes by code as the file has them
  std::array<int64_t, kBlanks> pending{};           // genotypes of the marker at hand that became missing
  int64_t impossible = 0;                           // genotypes that cannot be in the population
};

// Takes the population that a file tells of itself (0: none) where the user named none; a difference becomes
// a note. Failure UsageWrong when nobody names one, InputWrong when the file is of another kind.
void SettlePopulation(Request& request, const std::string& path, host::TableKind kind, int32_t told,
                      std::string_view words, Ledger& ledger);

// Failure InputWrong when there are no lines.
Builder StartTable(const Request& request, const std::string& path, std::vector<std::string> lineNames,
                   std::size_t lines);

// Adds a marker with cells as places in CodesOf(kind), one a line. Its name is made fit for project files;
// what the population cannot show becomes missing; a marker that says nothing is dropped.
void AddMarker(Builder& builder, const MarkerSource& source, std::vector<uint8_t>& cells,
               std::string_view category = {});
void DropMarker(Builder& builder, const MarkerSource& source, Drop reason);

// Failure InputWrong when no marker is left or more than a third of the genotypes cannot be in the
// population.
Import FinishTable(Builder&& builder);

// A name that project files take as it stands: no blanks, commas, slashes, quotes, stars or control
// characters (they become '_'), no leading '!', at most 35 bytes.
std::string CleanName(std::string_view name);

}  // namespace importers
