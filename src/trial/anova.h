#pragma once

// Analysis of variance of each environment, a randomised complete block design: genotypes by blocks. The sums
// of squares are built plot by plot from the means of the table, also in unbalanced data, where a
// least-squares fit would give others.

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "trial/trial_table.h"

namespace trial {

enum class Source { Model, Total, Error, Block, Genotype, Environment, GeInteraction };
inline constexpr std::size_t kSources = 7;

// One value a source.
struct BySource {
  std::array<float, kSources> values{};
  float& operator[](Source source) { return values[static_cast<std::size_t>(source)]; }
  float operator[](Source source) const { return values[static_cast<std::size_t>(source)]; }
};

// What is not computed stays 0.
struct AnovaTable {
  BySource DF, SS, MS, FValue, PrF, EstimatedVar;
  float RSquare = 0;             // percent
  float LSD005 = 0, LSD001 = 0;  // least significant differences of two genotypes
  float H2PerPlot = 0, H2PerMean = 0;
  float BartlettStat = 0, BartlettPr = 0;  // combined analysis only
};

// Steps that the analyses share: mean squares and F values of `sources`; upper tails of `tested`; a component
// of variance, where a negative value and a not-a-number count as 0.
void MeanSquares(std::span<const Source> sources, AnovaTable& table);
void TestSources(std::span<const Source> tested, AnovaTable& table);
float Component(float value);

// A source's line of the second table: what it is called, and whose figures it shows.
struct SourceRow {
  std::string_view label;
  Source source;
};
// The records of one analysis up to the heritabilities, in the .aov file.
void WriteAnova(int32_t unit, std::string_view trait, std::string_view where, std::span<const SourceRow> rows,
                const AnovaTable& table);

// All environments of a trait; keeps each one's ErrorMS and ErrorDF. An environment without error degrees of
// freedom leaves no record.
void AnalyseEnvironments(const TrialTable& table, int32_t aovUnit, std::string_view traitName,
                         TrialTrait& trait);

}  // namespace trial
