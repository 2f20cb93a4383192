#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Distance tables for tests and timings of the ordering, as pair arrays in the order of PairIndex.
namespace reference {

// The crosses have 200 lines: markers 1 to 2 cM apart, or (Dense) any number of them on 150 cM. Sums of
// Tenths tie but for rounding; Huge goes up to 2^127; Undefined holds infinities, NaN and negative numbers.
enum class TableKind {
  DoubledHaploid,
  F2,
  DenseDoubledHaploid,
  DenseF2,
  Uniform,
  Integers,
  Zeros,
  Sentinels,
  Tenths,
  Mixed,
  Huge,
  Undefined
};
inline constexpr int kTableKinds = 12;

std::vector<float> MakeTable(TableKind kind, std::int32_t n, std::mt19937& random);

}  // namespace reference
