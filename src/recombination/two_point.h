#pragma once

#include <cstdint>

namespace recombination {

// Tables are nine counts, cell 3 i + j with i the class of the first marker and j of the second: 0 A, 1 H and
// also D and R, 2 B. Pair codes are the digits of the two marker classes (1 co-dominant, 12 dominant, 10
// recessive): 11, 112, 110, 121, 1212, 1210, 101, 1012, 1010; 2020 stands for a marker of no class. For the
// codes of TransposedCode the estimators want the first marker along j; there 121 counts as 112, and so on.

// Leaves code alone when only the second class is none of 1, 12, 10.
void MarkerPairCode(int32_t first, int32_t second, int32_t& code);

constexpr bool TransposedCode(int32_t code) { return code == 121 || code == 101 || code == 1012; }

// Maximum-likelihood frequency of the better linkage phase, its LOD against 0.5 and its standard error.
// Above 0.5 means repulsion. rec keeps its value for a population outside 1 to 20 and for a pair code that a
// selfing population does not know; LOD and standard error are 0 then. The table is transposed where due.
void TwoPointBothPhases(int32_t population, int32_t pairCode, const float* table, float& rec, float& lod,
                        float& stdErr);

// The same for the coupling phase alone.
void TwoPointOnePhase(int32_t population, int32_t pairCode, const float* table, float& rec, float& lod,
                      float& stdErr);

// LOD and standard error at a given frequency.
void TwoPointStatistics(int32_t population, int32_t pairCode, const float* table, float rec, float& lod,
                        float& stdErr);

// Start of Newton's method in the selfing populations 7, 8 and 13 to 16; total is the table's sum.
float NewtonStart(int32_t population, int32_t pairCode, const float* table, float total);

// The two-locus model of a population in coupling: the nine cell frequencies, and first and second derivative
// of the natural-log likelihood of the table. Each output may be null. Cells that cannot occur are 0.
void PopulationModel(int32_t population, int32_t pairCode, const float* table, float rec, float* frequencies,
                     float* firstDerivative, float* secondDerivative);

// One table from end to end, transposed here where due: frequency, standard error, LOD, the p-value of the
// likelihood ratio with one degree of freedom, and the two distances in centimorgans.
void TwoPointRec(int32_t population, int32_t pairCode, const float* table, float& rec, float& stdErr,
                 float& lod, float& pValue, float& haldane, float& kosambi);

}  // namespace recombination
