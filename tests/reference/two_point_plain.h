#pragma once

#include <array>
#include <cstdint>

// Two linked loci by enumeration, in double: shares no formula with the library.
namespace reference {

using Cells = std::array<double, 9>;  // cell 3 i + j, classes 0 A, 1 H, 2 B

// Genotype frequencies of populations 1 to 20 in coupling: gametes and plants generation by generation,
// inbred lines as 60 rounds of selfing.
Cells CellsByGametes(int32_t population, double r);

// The cells as two markers of classes 1, 12 or 10 show them.
Cells FoldCells(const Cells& cells, int32_t firstClass, int32_t secondClass);

struct Classes {
  int32_t first, second;
};
inline constexpr std::array<Classes, 9> kClassPairs = {
    {{1, 1}, {1, 12}, {1, 10}, {12, 1}, {12, 12}, {12, 10}, {10, 1}, {10, 12}, {10, 10}}};

// Natural-log likelihood of a table; cells that cannot occur left out (inbred lines keep a trace of H).
double LogLikelihoodOf(const Cells& table, const Cells& frequencies);

}  // namespace reference
