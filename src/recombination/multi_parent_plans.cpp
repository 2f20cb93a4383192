#include "recombination/multi_parent_plans.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "recombination/multi_parent_estimator.h"
#include "recombination/multi_parent_tables.h"

namespace recombination {
namespace {

// The numbers of cells of a mix, a byte a kind, the first kind highest.
constexpr uint32_t Cell(size_t kind) { return 1U << 8 * (kParentKinds - 1 - kind); }
constexpr size_t KindOf(int32_t population, size_t i, size_t j) {
  if (i == j) return 0;
  const size_t kind = i / 2 == j / 2 ? 1 : i / 4 == j / 4 && population > k4PRIL ? 2 : 3;
  return Occurs(population, kind) ? kind : 3;
}

MixCells CellsOf(uint32_t key) {
  MixCells cells;
  for (float& of : cells) {
    of = static_cast<float>(static_cast<int32_t>(key >> 24));
    key <<= 8;
  }
  return cells;
}

constexpr std::array<uint32_t, 16> kParents = {0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4};
uint32_t KeyOf(const MixTable& table, size_t first, size_t second) {
  const uint32_t across =
      kParents[first & 15] * kParents[second >> 4] + kParents[first >> 4] * kParents[second & 15];
  return table.half[first & 15][second & 15] + table.half[first >> 4][second >> 4] + across * Cell(3);
}

// Mixes of more than one cell stand ahead.
uint32_t Order(uint32_t key) {
  constexpr uint32_t kSeveral = 1U << 30;  // no class has so many cells of the first kind
  return (key & (key - 1)) == 0 && (key & 0x01010101U) != 0 ? key : key | kSeveral;
}

constexpr size_t kHashed = 2048;
size_t SlotOf(const MixTable& table, uint32_t key) {
  size_t at = key * 0x9e3779b1U >> 21;
  while (table.keys[at] != key && table.keys[at] != 0) at = (at + 1) % kHashed;
  return at;
}

template <int32_t kPopulation>
float StartFrequency(const MixCells& cells) {
  float frequency[kParentKinds] = {};
  KindFrequencies<float, kPopulation>(0.25f, frequency);
  return ClassFrequency<float, kPopulation>(cells.data(), frequency);
}
float StartFrequency(int32_t population, const MixCells& cells) {
  switch (population) {
    case k4PDH:
      return StartFrequency<k4PDH>(cells);
    case k4PRIL:
      return StartFrequency<k4PRIL>(cells);
    case k8PDH:
      return StartFrequency<k8PDH>(cells);
    default:
      return StartFrequency<k8PRIL>(cells);
  }
}

// From all pairs of sets of half the parents, each shape once, and pairs of such.
std::vector<uint32_t> KeysThatOccur(int32_t population, MixTable& table) {
  using Half = std::array<uint32_t, 3>;  // a key, and the parents of the first and of the second set
  std::vector<Half> halves;
  for (uint32_t x = 0; x < 16; ++x) {
    for (uint32_t y = 0; y < 16; ++y) halves.push_back({table.half[x][y], kParents[x], kParents[y]});
  }
  std::sort(halves.begin(), halves.end());
  halves.erase(std::unique(halves.begin(), halves.end()), halves.end());
  const std::vector<Half> others = population <= k4PRIL ? std::vector<Half>{{0, 0, 0}} : halves;
  std::vector<uint32_t> found;
  for (const Half& low : halves) {
    for (const Half& high : others) {
      const uint32_t across = low[1] * high[2] + high[1] * low[2];
      const uint32_t key = low[0] + high[0] + across * Cell(3);
      if (key == 0) continue;
      uint32_t& slot = table.keys[SlotOf(table, key)];
      if (slot == 0) found.push_back(slot = key);
    }
  }
  std::sort(found.begin(), found.end(), [](uint32_t a, uint32_t b) { return Order(a) > Order(b); });
  return found;
}

}  // namespace

Pattern PatternOf(int32_t digits, size_t parents) {
  Pattern pattern;
  const auto count = static_cast<int32_t>(parents);
  std::array<int32_t, kMostParents> allele{};
  for (size_t k = 0; k < parents; ++k) {
    const int32_t digit = AlleleAt(digits, count, static_cast<int32_t>(k));
    size_t c = 0;
    while (c < pattern.classes && allele[c] != digit) ++c;
    if (c == pattern.classes) {
      allele[c] = digit;
      pattern.first[pattern.classes++] = static_cast<uint8_t>(k);
    }
    pattern.parents[c] = static_cast<uint8_t>(pattern.parents[c] | 1U << k);
  }
  return pattern;
}

MixTable MixTableOf(int32_t population) {
  MixTable table;
  for (size_t x = 0; x < 16; ++x) {
    for (size_t y = 0; y < 16; ++y) {
      for (size_t cell = 0; cell < 16; ++cell) {
        if ((x >> cell / 4 & y >> cell % 4 & 1) != 0)
          table.half[x][y] += Cell(KindOf(population, cell / 4, cell % 4));
      }
    }
  }
  for (size_t classes = 1; classes < table.uniform.size(); ++classes) {
    table.uniform[classes] = 1.0f / static_cast<float>(static_cast<int32_t>(classes));
  }
  table.keys.assign(kHashed, 0);
  table.numbers.assign(kHashed, 0);
  const std::vector<uint32_t> keys = KeysThatOccur(population, table);
  for (const uint32_t key : keys) {
    table.numbers[SlotOf(table, key)] = static_cast<uint16_t>(table.cells.size());
    table.cells.push_back(CellsOf(key));
    table.frequency.push_back(StartFrequency(population, table.cells.back()));
    table.several += Order(key) != key && key >= Cell(2) ? 1 : 0;
    if (Order(key) != key) {
      ++table.single;
    } else {
      table.kindOf[table.cells.size() - 1 - table.single] = static_cast<uint8_t>(std::countl_zero(key) / 8);
    }
  }
  for (size_t number = 0; number < table.several; ++number) {
    table.open[number / 64] |= uint64_t{1} << number % 64;
  }
  for (size_t set = 0; set < table.kinds.size(); ++set) {
    for (size_t k = 0; table.single + k < table.cells.size(); ++k) {
      if ((set >> k & 1) != 0)
        table.kinds[set] = static_cast<uint8_t>(table.kinds[set] | 1U << table.kindOf[k]);
    }
  }
  return table;
}

void MakeMixes(const MixTable& table, const Pattern& first, uint8_t parents, KnownNumbers& known,
               PatternMixes& mixes) {
  if (mixes.made[parents] != 0) return;
  mixes.made[parents] = 1;
  MixBits& occur = mixes.occur[parents];
  occur.fill(0);
  for (size_t x = 0; x < first.classes; ++x) {
    uint16_t& number = known[first.parents[x] * size_t{256} + parents];
    if (number == kUnknownNumber)
      number = table.numbers[SlotOf(table, KeyOf(table, first.parents[x], parents))];
    occur[number / 64] |= uint64_t{1} << number % 64;
    const bool asked =
        number < table.several || (number >= table.single && size_t{number} + 1 < table.cells.size());
    mixes.number[parents][x] = number;
    mixes.place[parents][x] = static_cast<uint16_t>(asked ? number : kMixPlaces + x);
  }
}

void NumbersOf(const Pattern& second, const PatternMixes& mixes, MixBits& bits) {
  bits = mixes.occur[second.parents[0]];
  for (size_t y = 1; y < second.classes; ++y) {
    const MixBits& more = mixes.occur[second.parents[y]];
    for (size_t w = 0; w < kMixWords; ++w) bits[w] |= more[w];
  }
}

bool Few(const MixBits& bits) {
  size_t count = 0;
  for (const uint64_t word : bits) {
    for (uint64_t left = word; left != 0; left &= left - 1) {
      if (++count > kMostPlanned) return false;
    }
  }
  return true;
}

namespace {

// Up to 64 bits from a number on.
uint64_t BitsFrom(const MixBits& bits, size_t number) {
  const size_t word = number / 64, shift = number % 64;
  const uint64_t above = shift == 0 || word + 1 == kMixWords ? 0 : bits[word + 1] << (64 - shift);
  return bits[word] >> shift | above;
}

}  // namespace

uint64_t SeveralOf(const MixTable& table, const MixBits& bits) {
  return BitsFrom(bits, table.several) & ((uint64_t{1} << (table.single - table.several)) - 1);
}
uint32_t SingleOf(const MixTable& table, const MixBits& bits) {
  return table.kinds[BitsFrom(bits, table.single) & 15];
}

bool Informative(const MixTable& table, const MixBits& bits, float uniform) {
  for (size_t w = 0; w < kMixWords; ++w) {
    for (uint64_t left = bits[w]; left != 0; left &= left - 1) {
      const float frequency = table.frequency[w * 64 + static_cast<size_t>(std::countr_zero(left))];
      if (!(std::fabs(frequency - uniform) <= kSettled)) return true;
    }
  }
  return false;
}

Plan PlanOf(const MixTable& table, const Pattern& first, const Pattern& second, const PatternMixes& mixes,
            const MixBits& bits, Models& models) {
  Plan plan;
  MixModel model{};
  uint64_t key = first.classes * second.classes;
  for (size_t w = 0; w < kMixWords; ++w) {
    for (uint64_t left = bits[w]; left != 0; left &= left - 1) {
      const size_t number = w * 64 + static_cast<size_t>(std::countr_zero(left));
      key = key << 9 | number;
      model.mixes += number < table.several ? 1 : 0;
      model.kind[model.all] =
          number < table.single ? uint8_t{kParentKinds} : table.kindOf[number - table.single];
      model.number[model.all++] = static_cast<uint16_t>(number);
    }
  }
  for (size_t y = 0; y < second.classes; ++y) {
    const auto& numbers = mixes.number[second.parents[y]];
    for (size_t x = 0; x < first.classes; ++x) {
      size_t at = 0;
      while (model.number[at] != numbers[x]) ++at;
      plan.shift[x * kMostParents + y] = static_cast<uint8_t>(16 * at);
    }
  }
  model.uniform = table.uniform[first.classes * second.classes];
  model.single = SingleOf(table, bits);
  model.several = SeveralOf(table, bits);
  const auto [at, added] = models.known.try_emplace(key, static_cast<uint16_t>(models.model.size()));
  if (added) models.model.push_back(model);
  plan.model = at->second;
  return plan;
}

}  // namespace recombination
