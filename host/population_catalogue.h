#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "host/genotype_table.h"

namespace host {

// What is done with the last generation of a bi-parental cross.
enum class Finish { None, Selfed, SelfedTwice, DoubledHaploids, InbredLines };

// Every population of the raw marker files.
struct CatalogueRow {
  TableKind kind;
  int32_t id;  // the number in the file
  std::string_view name;
  std::string_view alias;  // another name in use, or empty
  int recurrent;           // bi-parental: 1 or 2, the parent of the backcrosses; 0 for none
  int backcrosses;
  Finish finish;
  std::string_view about;  // one sentence
};
std::span<const CatalogueRow> PopulationCatalogue();

// By name or alias in any case, or by the number of a bi-parental population; null when there is none.
const CatalogueRow* FindInCatalogue(std::string_view text);
const CatalogueRow& CatalogueRowOf(TableKind kind, int32_t id);

// Expected numbers of A, H and B of a bi-parental population, in the smallest whole numbers.
struct ExpectedRatio {
  int a, h, b;
};
ExpectedRatio RatioOf(const CatalogueRow& row);

// The genotypes of a line with their expected shares: "A 1 : H 2 : B 1".
std::string ExpectedWords(const CatalogueRow& row);
// The crossing as a drawing of plain characters, lines ended by LF.
std::string CrossingDiagram(const CatalogueRow& row);

}  // namespace host
