#include "stats/generator.h"

#include <ctime>
#include <string>

#include "stats/kernel_error.h"

namespace stats {
namespace {

// One of the two multiplicative generators, s = factor * s mod modulus; quotient = modulus / factor and
// rest = modulus mod factor keep every product within 32 bits.
struct Stream {
  std::int32_t modulus, factor, quotient, rest;
};
constexpr Stream kFirst{2147483563, 40014, 53668, 12211};
constexpr Stream kSecond{2147483399, 40692, 52774, 3791};

GeneratorState generator{2147483562, 2147483398};

std::int32_t Step(const Stream& stream, std::int32_t s) {
  const std::int32_t k = s / stream.quotient;
  s = stream.factor * (s - k * stream.quotient) - k * stream.rest;
  return s < 0 ? s + stream.modulus : s;
}

}  // namespace

GeneratorState SaveGenerator() { return generator; }

void RestoreGenerator(GeneratorState state) { generator = state; }

void SeedGeneratorFromClock() {
  const auto ticks =
      static_cast<std::uint64_t>(std::time(nullptr)) + static_cast<std::uint64_t>(std::clock());
  generator.first = static_cast<std::int32_t>(1 + ticks % (kFirst.modulus - 1));
  generator.second = static_cast<std::int32_t>(1 + ticks % (kSecond.modulus - 1));
}

float UniformDraw() {
  generator.first = Step(kFirst, generator.first);
  generator.second = Step(kSecond, generator.second);
  std::int32_t z = generator.first - generator.second;
  if (z < 1) z += kFirst.modulus - 1;
  return static_cast<float>(z * 4.656613e-10);  // the product in double, rounded once
}

bool RNSRI(std::int32_t sampleSize, std::int32_t population, std::int32_t* index) {
  if (sampleSize < 1 || population < 1 || sampleSize > population) {
    PrintTerminalError("RNSRI", "The sample size requested, NSAMP, is " + std::to_string(sampleSize) +
                                    " and the population size, NPOP, is " + std::to_string(population) +
                                    ".  NSAMP and NPOP both must be positive, and NSAMP must be less than or "
                                    "equal to NPOP.");
    return false;
  }
  std::int32_t wanted = sampleSize;
  for (std::int32_t i = 1; i <= population && wanted > 0; ++i) {
    const std::int32_t remaining = population - i + 1;
    if (wanted < remaining && UniformDraw() * static_cast<float>(remaining) > static_cast<float>(wanted)) {
      continue;
    }
    index[sampleSize - wanted] = i;
    --wanted;
  }
  return true;
}

}  // namespace stats
