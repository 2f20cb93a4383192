#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace recombination {

// Which estimator a population needs. Two: two genotype classes; Selfing: A, H and B.
enum class Family : int32_t { Two, Selfing };

// How a lineage stays parental over the generations, g(r).
enum class Curve : int32_t { S, S2, S3, Ril, Bc1Ril, Bc2Ril, Selfing };

struct PopulationRow {
  std::string_view name;
  Family family;
  int32_t
      step;  // from the class of the recurrent parent (A, or B when mirrored) to the other: 1 H, 2 the parent
  float share;  // of the lines in which the other parent's allele can still segregate at the last meiosis
  Curve curve;
  bool mirrored;               // recurrent parent is P2: cell k stands at 8 - k
  std::array<float, 3> ratio;  // expected shares of A, H, B
};

inline constexpr std::array<PopulationRow, 20> kPopulations = {{
    {"P1BC1F1", Family::Two, 1, 0.5f, Curve::S, false, {0.5f, 0.5f, 0}},
    {"P2BC1F1", Family::Two, 1, 0.5f, Curve::S, true, {0, 0.5f, 0.5f}},
    {"F1DH", Family::Two, 2, 0.5f, Curve::S, false, {0.5f, 0, 0.5f}},
    {"F1RIL", Family::Two, 2, 0.5f, Curve::Ril, false, {0.5f, 0, 0.5f}},
    {"P1BC1RIL", Family::Two, 2, 0.25f, Curve::Bc1Ril, false, {0.75f, 0, 0.25f}},
    {"P2BC1RIL", Family::Two, 2, 0.25f, Curve::Bc1Ril, true, {0.25f, 0, 0.75f}},
    {"F2", Family::Selfing, 0, 0, Curve::Selfing, false, {0.25f, 0.5f, 0.25f}},
    {"F3", Family::Selfing, 0, 0, Curve::Selfing, false, {0.375f, 0.25f, 0.375f}},
    {"P1BC2F1", Family::Two, 1, 0.25f, Curve::S2, false, {0.75f, 0.25f, 0}},
    {"P2BC2F1", Family::Two, 1, 0.25f, Curve::S2, true, {0, 0.25f, 0.75f}},
    {"P1BC2RIL", Family::Two, 2, 0.125f, Curve::Bc2Ril, false, {0.875f, 0, 0.125f}},
    {"P2BC2RIL", Family::Two, 2, 0.125f, Curve::Bc2Ril, true, {0.125f, 0, 0.875f}},
    {"P1BC1F2", Family::Selfing, 0, 0, Curve::Selfing, false, {0.625f, 0.25f, 0.125f}},
    {"P2BC1F2", Family::Selfing, 0, 0, Curve::Selfing, true, {0.125f, 0.25f, 0.625f}},
    {"P1BC2F2", Family::Selfing, 0, 0, Curve::Selfing, false, {0.8125f, 0.125f, 0.0625f}},
    {"P2BC2F2", Family::Selfing, 0, 0, Curve::Selfing, true, {0.0625f, 0.125f, 0.8125f}},
    {"P1BC1DH", Family::Two, 2, 0.25f, Curve::S2, false, {0.75f, 0, 0.25f}},
    {"P2BC1DH", Family::Two, 2, 0.25f, Curve::S2, true, {0.25f, 0, 0.75f}},
    {"P1BC2DH", Family::Two, 2, 0.125f, Curve::S3, false, {0.875f, 0, 0.125f}},
    {"P2BC2DH", Family::Two, 2, 0.125f, Curve::S3, true, {0.125f, 0, 0.875f}},
}};

constexpr bool KnownPopulation(int32_t population) { return population >= 1 && population <= 20; }

// The row of a population from 1 to 20.
constexpr const PopulationRow& Population(int32_t population) {
  return kPopulations[static_cast<size_t>(population) - 1];
}

// Cells that a population of two classes can show: both recurrent, the two mixed ones, both other.
struct TwoClassPlaces {
  size_t both, mixed1, mixed2, other;
};
constexpr TwoClassPlaces PlacesOf(const PopulationRow& row) {
  const int origin = row.mirrored ? 8 : 0, step = row.mirrored ? -row.step : row.step;
  return {static_cast<size_t>(origin), static_cast<size_t>(origin + step),
          static_cast<size_t>(origin + 3 * step), static_cast<size_t>(origin + 4 * step)};
}

}  // namespace recombination
