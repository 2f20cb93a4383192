#include "recombination/remembered_phases.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "recombination/four_rows.h"
#include "recombination/lane_math.h"
#include "recombination/pair_lanes.h"
#include "recombination/population_table.h"
#include "recombination/two_class_models.h"

namespace recombination {
namespace {

typedef uint32_t Count4 __attribute__((vector_size(16)));
typedef int32_t Whole4 __attribute__((vector_size(16)));
constexpr size_t kFour = 4;
constexpr int32_t kAnyPair = 11;  // two classes are estimated alike under every pair code

// Neighbouring counts have slots of their own: tables of one cross lie close together.
constexpr uint32_t kLinesBits = 5, kMixedBits = 6, kOtherBits = 5;
constexpr size_t kSlots = size_t{1} << (kLinesBits + kMixedBits + kOtherBits);

constexpr uint32_t Low(uint32_t bits) { return (1U << bits) - 1; }

struct Slots {
  Count4 slot, tag;
};
inline Slots SlotsOf(const Count4& lines, const Count4& mixed, const Count4& other) {
  return {(lines & Low(kLinesBits)) << (kMixedBits + kOtherBits) | (mixed & Low(kMixedBits)) << kOtherBits |
              (other & Low(kOtherBits)),
          (lines >> kLinesBits) << 21U | (mixed >> kMixedBits) << 11U | other >> kOtherBits};
}

// The four cells of a table, where the population has them.
struct Places {
  const uint32_t *both, *mixed1, *mixed2, *other;
};
inline Count4 Load4(const uint32_t* from) {
  Count4 value;
  std::memcpy(&value, from, sizeof value);
  return value;
}
inline void Store4(float* to, const Float4& value) { std::memcpy(to, &value, sizeof value); }

struct PairSlots {
  Slots coupling, repulsion;
  Count4 mixed;
};
// In repulsion the first marker's two classes are exchanged.
inline PairSlots SlotsAt(const Places& at, size_t k) {
  const Count4 both = Load4(at.both + k), mixed1 = Load4(at.mixed1 + k), mixed2 = Load4(at.mixed2 + k),
               other = Load4(at.other + k);
  const Count4 mixed = mixed1 + mixed2, pure = both + other, lines = mixed + pure;
  return {SlotsOf(lines, mixed, other), SlotsOf(lines, pure, mixed1), mixed};
}

// Four estimates, field by field.
struct Estimates {
  Whole4 tag;
  Float4 rec, lod, distance;
};
inline Estimates At(const std::vector<PhaseEstimate>& known, const Count4& slot) {
  std::array<Float4, kFour> e;
  for (size_t t = 0; t < kFour; ++t) std::memcpy(&e[t], &known[slot[t]], sizeof e[t]);
  const auto [tag, rec, lod, distance] = Transposed(e);
  return {__builtin_bit_cast(Whole4, tag), rec, lod, distance};
}

// The better phase of each lane.
inline void StoreBetter(const PhaseJob& job, size_t k, const Estimates& coupling,
                        const Estimates& repulsion) {
  const Mask<Float4> flip = coupling.rec > repulsion.rec;
  Store4(job.rec + k, Select<Float4>(flip, 1.0f - repulsion.rec, coupling.rec));
  Store4(job.lod + k, Select<Float4>(flip, repulsion.lod, coupling.lod));
  Store4(job.distance + k, Select<Float4>(flip, repulsion.distance, coupling.distance));
}

// Tables that are not remembered, both phases of each.
struct Fresh {
  std::array<uint32_t, kMostPhasePairs> pair;
  size_t count = 0;
  alignas(64) std::array<std::array<float, kMostPhasePairs>, 9> cells;
  alignas(64) std::array<std::array<float, kMostPhasePairs>, 3> coupling, repulsion;  // rec, LOD, distance
};

void EstimateFresh(const PhaseJob& job, Fresh& fresh) {
  const size_t padded = (fresh.count + kMostLanes - 1) / kMostLanes * kMostLanes;
  for (size_t cell = 0; cell < 9; ++cell) {
    float* to = fresh.cells[cell].data();
    for (size_t f = 0; f < fresh.count; ++f) {
      to[f] = static_cast<float>(job.cells[cell * kMostPhasePairs + fresh.pair[f]]);
    }
    std::fill(to + fresh.count, to + padded, 0.0f);
  }
  for (const Phases phase : {Phases::Coupling, Phases::Repulsion}) {
    auto& to = phase == Phases::Coupling ? fresh.coupling : fresh.repulsion;
    EstimateLanes(job.level, {job.population, kAnyPair, job.mappingFunction, fresh.cells[0].data(),
                              kMostPhasePairs, fresh.count, to[0].data(), to[1].data(), to[2].data(), phase});
  }
}

void ResolveFresh(RememberedPhases& phases, const PhaseJob& job, const Places& at, Fresh& fresh) {
  EstimateFresh(job, fresh);
  for (size_t f = 0; f < fresh.count; ++f) {
    const size_t k = fresh.pair[f], lane = k % kFour;
    const PairSlots slots = SlotsAt(at, k - lane);
    const auto &c = fresh.coupling, &r = fresh.repulsion;
    phases.coupling[slots.coupling.slot[lane]] = {slots.coupling.tag[lane], c[0][f], c[1][f], c[2][f]};
    phases.repulsion[slots.repulsion.slot[lane]] = {slots.repulsion.tag[lane], r[0][f], r[1][f], r[2][f]};
    const bool flip = c[0][f] > r[0][f];
    job.rec[k] = flip ? 1.0f - r[0][f] : c[0][f];
    job.lod[k] = flip ? r[1][f] : c[1][f];
    job.distance[k] = flip ? r[2][f] : c[2][f];
  }
}

}  // namespace

void OpenPhases(RememberedPhases& phases) {
  phases.coupling.assign(kSlots, PhaseEstimate{kNoTag, 0, 0, 0});
  phases.repulsion = phases.coupling;
}

void ResolvePhases(RememberedPhases& phases, const PhaseJob& job) {
  const PopulationRow& row = Population(job.population);
  const TwoClassPlaces cell = PlacesOf(row);
  const Places at = {job.cells + cell.both * kMostPhasePairs, job.cells + cell.mixed1 * kMostPhasePairs,
                     job.cells + cell.mixed2 * kMostPhasePairs, job.cells + cell.other * kMostPhasePairs};
  const auto step = static_cast<float>(row.step);
  Fresh fresh;
  for (size_t k = 0; k < job.count; k += kFour) {
    const PairSlots slots = SlotsAt(at, k);
    const Estimates coupling = At(phases.coupling, slots.coupling.slot),
                    repulsion = At(phases.repulsion, slots.repulsion.slot);
    StoreBetter(job, k, coupling, repulsion);
    Store4(job.crossovers + k,
           __builtin_convertvector(__builtin_bit_cast(Whole4, slots.mixed), Float4) * step);
    const Whole4 strange = (coupling.tag ^ __builtin_bit_cast(Whole4, slots.coupling.tag)) |
                           (repulsion.tag ^ __builtin_bit_cast(Whole4, slots.repulsion.tag));
    if (!Any<Float4>(strange != 0)) continue;
    for (size_t t = 0; t < std::min(kFour, job.count - k); ++t) {
      if (strange[t] != 0) fresh.pair[fresh.count++] = static_cast<uint32_t>(k + t);
    }
  }
  if (fresh.count != 0) ResolveFresh(phases, job, at, fresh);
}

}  // namespace recombination
