#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>

#include "host/text.h"
#include "host/trial_data.h"

namespace host {
namespace {

constexpr float kNoValue = -100.0F;  // which its whole-trait statistics pass over
constexpr uint32_t kAnyMissing = 0x7fc00000;
constexpr std::size_t kShown = 3;  // environments named in a message
constexpr int32_t kMostPlots =
    1 << 23;  // of an environment: beyond, the last normal quantile has probability 1

// Gives names that are left new places, in order of first appearance.
struct Renumbering {
  std::vector<int32_t> place;  // new by old, -1 when not met
  std::vector<std::string> names;
  explicit Renumbering(std::size_t count) : place(count, -1) {}
};
int32_t NewPlace(Renumbering& list, int32_t old, const std::vector<std::string>& names) {
  int32_t& place = list.place[static_cast<std::size_t>(old)];
  if (place < 0) {
    place = static_cast<int32_t>(list.names.size());
    list.names.push_back(names[static_cast<std::size_t>(old)]);
  }
  return place;
}

std::string Named(const TrialData& data, const std::vector<int32_t>& environments) {
  std::vector<std::string> names;
  names.reserve(environments.size());
  for (const int32_t environment : environments) {
    names.push_back(data.environments[static_cast<std::size_t>(environment)]);
  }
  return FirstNames(names, kShown);
}

// Bartlett's test over a single environment has no degrees of freedom, and the library ends there.
bool EndsInBartlett(const TraitFacts& facts, std::vector<int32_t>& tested) {
  int64_t whole = 0;
  for (const TraitFacts::AtEnvironment& at : facts.environments) {
    whole += facts.ErrorDf(at);
    if (facts.ErrorDf(at) > 0) tested.push_back(at.place);
  }
  return facts.environments.size() > 1 && whole > 0 && tested.size() == 1;
}

// The bounds of the classes, as the library has them.
bool HasClasses(const TrialData& data, std::size_t trait, const TraitFacts& facts, int32_t classes) {
  float least = std::numeric_limits<float>::infinity(), most = -least;
  const auto take = [&](float value) {
    least = std::min(least, value);
    most = std::max(most, value);
  };
  for (const float value : data.values[trait]) {
    if (!std::isnan(value) && value != kNoValue) take(value);
  }
  if (facts.missing > 0) take(kMissing);
  const float step = (most - least) / static_cast<float>(2 * int64_t{classes} - 2);
  return least + step < most + step;
}

std::vector<int32_t> MarkedPlaces(const std::vector<char>& marks) {
  std::vector<int32_t> places;
  for (std::size_t k = 0; k < marks.size(); ++k) {
    if (marks[k] != 0) places.push_back(static_cast<int32_t>(k));
  }
  return places;
}

}  // namespace

std::vector<std::size_t> RepeatedPlots(const TrialData& data) {
  const auto bits = [](float value) {
    return std::isnan(value) ? kAnyMissing : std::bit_cast<uint32_t>(value);
  };
  const auto same = [&](std::size_t a, std::size_t b) {
    return data.environment[a] == data.environment[b] && data.genotype[a] == data.genotype[b] &&
           data.block[a] == data.block[b] &&
           std::all_of(data.values.begin(), data.values.end(),
                       [&](const std::vector<float>& values) { return bits(values[a]) == bits(values[b]); });
  };
  std::vector<std::size_t> repeated;
  std::unordered_multimap<uint64_t, std::size_t> met;
  met.reserve(data.Plots());
  for (std::size_t p = 0; p < data.Plots(); ++p) {
    uint64_t hash = 0;
    const auto mix = [&](uint32_t part) { hash = (hash ^ part) * 0x9e3779b97f4a7c15ULL, hash ^= hash >> 29; };
    for (const auto* key : {&data.environment, &data.genotype, &data.block})
      mix(static_cast<uint32_t>((*key)[p]));
    bool any = false;
    for (const std::vector<float>& values : data.values) {
      mix(bits(values[p]));
      any = any || !std::isnan(values[p]);
    }
    if (!any) continue;
    const auto [from, to] = met.equal_range(hash);
    if (std::any_of(from, to, [&](const auto& one) { return same(one.second, p); })) {
      repeated.push_back(p);
    } else {
      met.emplace(hash, p);
    }
  }
  return repeated;
}

TrialData Selected(const TrialData& data, const std::vector<std::size_t>& traits) {
  TrialData selected;
  Renumbering environments(data.environments.size()), genotypes(data.genotypes.size());
  std::vector<Renumbering> blocks;
  for (const std::vector<std::string>& names : data.blocks) blocks.emplace_back(names.size());
  selected.values.resize(traits.size());
  for (const std::size_t t : traits) selected.traits.push_back(data.traits[t]);
  for (std::size_t p = 0; p < data.Plots(); ++p) {
    const bool any = std::any_of(traits.begin(), traits.end(),
                                 [&](std::size_t t) { return !std::isnan(data.values[t][p]); });
    if (!any) continue;
    const auto e = static_cast<std::size_t>(data.environment[p]);
    selected.environment.push_back(NewPlace(environments, data.environment[p], data.environments));
    selected.genotype.push_back(NewPlace(genotypes, data.genotype[p], data.genotypes));
    selected.block.push_back(NewPlace(blocks[e], data.block[p], data.blocks[e]));
    for (std::size_t k = 0; k < traits.size(); ++k) selected.values[k].push_back(data.values[traits[k]][p]);
  }
  selected.blocks.resize(environments.names.size());
  for (std::size_t e = 0; e < data.environments.size(); ++e) {
    if (environments.place[e] < 0) continue;
    selected.blocks[static_cast<std::size_t>(environments.place[e])] = std::move(blocks[e].names);
  }
  selected.environments = std::move(environments.names);
  selected.genotypes = std::move(genotypes.names);
  return selected;
}

int64_t TraitFacts::ErrorDf(const AtEnvironment& at) const {
  return int64_t{at.plots} - at.blocks - (static_cast<int64_t>(genotypes.size()) - 1);
}

TraitFacts FactsOf(const TrialData& data, std::size_t trait) {
  TraitFacts facts;
  const std::vector<float>& values = data.values[trait];
  std::vector<char> genotypes(data.genotypes.size(), 0),
      cells(genotypes.size() * data.environments.size(), 0);
  std::vector<std::vector<char>> blocks;
  for (const std::vector<std::string>& names : data.blocks) blocks.emplace_back(names.size(), 0);
  std::vector<int32_t> plots(data.environments.size(), 0);
  facts.least = std::numeric_limits<float>::infinity();
  facts.most = -facts.least;
  std::vector<double> sums(plots.size(), 0);
  for (std::size_t p = 0; p < values.size(); ++p) {
    const float value = values[p];
    if (std::isnan(value)) {
      ++facts.missing;
      continue;
    }
    const auto e = static_cast<std::size_t>(data.environment[p]),
               g = static_cast<std::size_t>(data.genotype[p]);
    genotypes[g] = cells[e * genotypes.size() + g] = 1;
    blocks[e][static_cast<std::size_t>(data.block[p])] = 1;
    ++plots[e];
    ++facts.plots;
    facts.hundreds += value == kNoValue ? 1 : 0;
    facts.least = std::min(facts.least, value);
    facts.most = std::max(facts.most, value);
    sums[e] += static_cast<double>(value);
  }
  facts.mean = std::accumulate(sums.begin(), sums.end(), 0.0) / static_cast<double>(facts.plots);
  facts.genotypes = MarkedPlaces(genotypes);
  for (std::size_t e = 0; e < plots.size(); ++e) {
    if (plots[e] == 0) continue;
    const auto present = static_cast<int32_t>(std::count(blocks[e].begin(), blocks[e].end(), 1));
    const bool gap =
        std::find(blocks[e].begin(), blocks[e].begin() + present, 0) != blocks[e].begin() + present;
    facts.environments.push_back({static_cast<int32_t>(e), plots[e], present, gap, sums[e] / plots[e]});
  }
  const auto filled = static_cast<std::size_t>(std::count(cells.begin(), cells.end(), 1));
  facts.emptyCells = facts.genotypes.size() * facts.environments.size() - filled;
  return facts;
}

std::string FaultOf(const TrialData& data, std::size_t trait, const TraitFacts& facts, int32_t classes) {
  if (facts.plots == 0) return "no plot has a value";
  if (facts.least == facts.most) {
    return "every plot has the same value, " + Significant(static_cast<double>(facts.least));
  }
  std::vector<int32_t> single, tested;
  for (const TraitFacts::AtEnvironment& at : facts.environments) {
    if (at.plots == 1) single.push_back(at.place);
    if (at.plots > kMostPlots) {
      return "more than " + std::to_string(kMostPlots) + " plots in environment " + Named(data, {at.place});
    }
  }
  if (!single.empty()) {
    return "one plot only has a value in " + Counted(static_cast<int64_t>(single.size()), "environment") +
           " (" + Named(data, single) + "), and two are needed";
  }
  if (EndsInBartlett(facts, tested)) {
    return "of its " + std::to_string(facts.environments.size()) + " environments only " +
           Named(data, tested) +
           " has error degrees of freedom (plots - blocks - genotypes + 1 above 0), and error variances "
           "cannot be "
           "compared; analyse that environment alone, or add replication";
  }
  if (!HasClasses(data, trait, facts, classes)) {
    return "its values, from " + Significant(static_cast<double>(facts.least)) + " to " +
           Significant(static_cast<double>(facts.most)) + ", cannot be parted into classes";
  }
  return {};
}

}  // namespace host
