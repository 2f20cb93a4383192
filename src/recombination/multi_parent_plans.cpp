#include "recombination/multi_parent_plans.h"

#include <array>
#include <cmath>

#include "recombination/multi_parent_estimator.h"
#include "recombination/multi_parent_tables.h"

namespace recombination {
namespace {

constexpr uint32_t kMostModels = 65535;

// The numbers of cells of a class, a byte a kind, the first kind highest.
constexpr uint32_t Cell(size_t kind) { return 1U << 8 * (kParentKinds - 1 - kind); }
constexpr size_t KindOf(int32_t population, size_t i, size_t j) {
  if (i == j) return 0;
  const size_t kind = i / 2 == j / 2 ? 1 : i / 4 == j / 4 && population > k4PRIL ? 2 : 3;
  return Occurs(population, kind) ? kind : 3;
}
using CellTable = std::array<std::array<uint32_t, kMostParents>, kMostParents>;
constexpr std::array<CellTable, 4> kCells = [] {
  std::array<CellTable, 4> tables{};
  for (size_t p = 0; p < tables.size(); ++p) {
    for (size_t i = 0; i < kMostParents; ++i) {
      for (size_t j = 0; j < kMostParents; ++j) {
        tables[p][i][j] = Cell(KindOf(static_cast<int32_t>(p) + 1, i, j));
      }
    }
  }
  return tables;
}();

std::array<float, kParentKinds> CellsOf(uint32_t key) {
  std::array<float, kParentKinds> cells;
  for (float& of : cells) {
    of = static_cast<float>(static_cast<int32_t>(key >> 24));
    key <<= 8;
  }
  return cells;
}
bool IsSingle(uint32_t key) { return (key & (key - 1)) == 0 && (key & 0x01010101U) != 0; }

// Whether some class is not as frequent as the others where the iteration starts.
template <int32_t kPopulation>
bool Informative(const std::array<uint32_t, kMostMixes>& keys, size_t count, float uniform) {
  float frequency[kParentKinds] = {};
  KindFrequencies<float, kPopulation>(0.25f, frequency);
  for (size_t m = 0; m < count; ++m) {
    const auto cells = CellsOf(keys[m]);
    const float sum = ClassFrequency<float, kPopulation>(cells.data(), frequency);
    if (!(std::fabs(sum - uniform) <= kSettled)) return true;
  }
  return false;
}
bool Informative(int32_t population, const std::array<uint32_t, kMostMixes>& keys, size_t count,
                 float uniform) {
  switch (population) {
    case k4PDH:
      return Informative<k4PDH>(keys, count, uniform);
    case k4PRIL:
      return Informative<k4PRIL>(keys, count, uniform);
    case k8PDH:
      return Informative<k8PDH>(keys, count, uniform);
    default:
      return Informative<k8PRIL>(keys, count, uniform);
  }
}

uint32_t ModelOf(const std::array<uint32_t, kMostMixes>& keys, size_t count, size_t classes,
                 PlanMaker& maker) {
  if (count > kMostRemembered) return 0;
  std::vector<uint32_t> key(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(count));
  key.push_back(static_cast<uint32_t>(classes));
  if (maker.models.size() >= kMostModels) return 0;
  return maker.models.try_emplace(key, static_cast<uint32_t>(maker.models.size()) + 1).first->second;
}

}  // namespace

Pattern PatternOf(int32_t digits, size_t parents) {
  Pattern pattern;
  pattern.digits = digits;
  const auto count = static_cast<int32_t>(parents);
  for (size_t k = 0; k < parents; ++k) {
    size_t earlier = 0;
    while (AlleleAt(digits, count, static_cast<int32_t>(earlier)) !=
           AlleleAt(digits, count, static_cast<int32_t>(k))) {
      ++earlier;
    }
    if (earlier == k) pattern.first[pattern.classes++] = static_cast<uint8_t>(k);
    pattern.classOf[k] = earlier == k ? static_cast<uint8_t>(pattern.classes - 1) : pattern.classOf[earlier];
  }
  return pattern;
}

namespace {

// The distinct keys among the classes of a pair of patterns. Keys of more than one cell are marked and so stand
// before the others in descending order. Behind the last key zeros up to a multiple of kKeyBlock.
constexpr size_t kKeyBlock = 8;
struct Keys {
  size_t count = 0;
  std::array<int32_t, kMostMixes> key;
  std::array<uint8_t, kMostMixes> size;
  std::array<uint8_t, kMostMixes> of;  // class x, y at x * slots + y
};
constexpr uint32_t kSeveral = 1U << 30;  // no class has so many cells of the first kind

void FindKeys(const CellTable& cells, const Pattern& first, const Pattern& second, size_t slots,
              PlanMaker& maker, Keys& keys) {
  std::array<std::array<uint32_t, kMostParents>, kMostParents> rows, all;
  for (size_t x = 0; x < first.classes; ++x) {
    for (size_t j = 0; j < kMostParents; ++j) rows[x][j] = all[x][j] = 0;
  }
  for (size_t i = 0; i < slots; ++i) {
    for (size_t j = 0; j < kMostParents; ++j) rows[first.classOf[i]][j] += cells[i][j];
  }
  for (size_t x = 0; x < first.classes; ++x) {
    for (size_t j = 0; j < slots; ++j) all[x][second.classOf[j]] += rows[x][j];
  }
  if ((++maker.plans & 0xffffff) == 0) {
    maker.found.fill(0);
    ++maker.plans;
  }
  const uint32_t stamp = maker.plans << 8;
  for (size_t x = 0; x < first.classes; ++x) {
    for (size_t y = 0; y < second.classes; ++y) {
      const uint32_t several = IsSingle(all[x][y]) ? 0 : kSeveral;
      const auto key = static_cast<int32_t>(all[x][y] | several);
      uint32_t at = all[x][y] * 0x9e3779b1U >> 24;
      while ((maker.found[at] ^ stamp) < 256 && keys.key[maker.found[at] & 255] != key) at = (at + 1) & 255;
      if ((maker.found[at] ^ stamp) >= 256) {
        maker.found[at] = stamp | static_cast<uint32_t>(keys.count);
        keys.key[keys.count] = key;
        keys.size[keys.count++] = 0;
      }
      const uint32_t number = maker.found[at] & 255;
      keys.of[x * slots + y] = static_cast<uint8_t>(number);
      ++keys.size[number];
    }
  }
  for (size_t m = keys.count; m % kKeyBlock != 0; ++m) keys.key[m] = 0;
}

// Puts the keys in descending order.
void SortKeys(const Keys& keys, std::array<uint32_t, kMostMixes>& sorted,
              std::array<uint8_t, kMostMixes>& rank) {
  for (size_t m = 0; m < keys.count; ++m) {
    int32_t before = 0;
    for (size_t block = 0; block < keys.count; block += kKeyBlock) {
      for (size_t k = 0; k < kKeyBlock; ++k) before += keys.key[block + k] > keys.key[m] ? 1 : 0;
    }
    rank[m] = static_cast<uint8_t>(before);
    sorted[rank[m]] = static_cast<uint32_t>(keys.key[m]);
  }
}

// The classes of each mix together.
void PlaceClasses(const Pattern& first, const Pattern& second, size_t slots, const Keys& keys,
                  const std::array<uint8_t, kMostMixes>& rank, Plan& plan) {
  std::array<uint8_t, kMostMixes + 1> next{};
  for (size_t m = 0; m < keys.count; ++m) next[rank[m]] = keys.size[m];
  uint8_t begin = 0;
  for (size_t m = 0; m <= keys.count; ++m) {
    plan.begin[m] = begin;
    begin = static_cast<uint8_t>(begin + next[m]);
    next[m] = plan.begin[m];
  }
  for (size_t x = 0; x < first.classes; ++x) {
    for (size_t y = 0; y < second.classes; ++y) {
      const size_t c = x * slots + y;
      plan.classes[next[rank[keys.of[c]]]++] = static_cast<uint8_t>(c);
    }
  }
}

}  // namespace

void MakePlan(int32_t population, const Pattern& first, const Pattern& second, size_t slots, PlanMaker& maker,
              Plan& plan) {
  Keys keys;
  std::array<uint32_t, kMostMixes> sorted;
  std::array<uint8_t, kMostMixes> rank;
  FindKeys(kCells[static_cast<size_t>(population) - 1], first, second, slots, maker, keys);
  SortKeys(keys, sorted, rank);
  PlaceClasses(first, second, slots, keys, rank, plan);
  plan.all = keys.count;
  plan.mixes = 0;
  plan.single = 0;
  for (size_t m = 0; m < keys.count; ++m) {
    if ((sorted[m] & kSeveral) != 0) {
      sorted[m] &= ~kSeveral;
      plan.cells[plan.mixes++] = CellsOf(sorted[m]);
      continue;
    }
    const auto kind = static_cast<uint8_t>(__builtin_clz(sorted[m]) / 8);
    plan.kind[m - plan.mixes] = kind;
    plan.single |= 1U << kind;
  }
  const size_t classes = first.classes * second.classes;
  plan.uniform = 1.0f / static_cast<float>(classes);
  plan.informative =
      first.classes > 1 && second.classes > 1 && Informative(population, sorted, keys.count, plan.uniform);
  plan.model = ModelOf(sorted, keys.count, classes, maker);
}

}  // namespace recombination
