#include "stats/sorts.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "stats/kernel_error.h"

namespace stats {
namespace {

// One-based view of the keys and of the permutation that moves with them.
template <class Key>
struct Keyed {
  Key* keys;
  std::int32_t* permutation;
  Key& At(std::int32_t i) const { return keys[static_cast<std::size_t>(i) - 1]; }
  void Swap(std::int32_t i, std::int32_t j) const {
    std::swap(At(i), At(j));
    std::swap(permutation[static_cast<std::size_t>(i) - 1], permutation[static_cast<std::size_t>(j) - 1]);
  }
};

struct Segment {
  std::int32_t first, last;
};

// Straight insertion of first..last. The element before the segment is its sentinel; the test against 1 is
// for keys that are not numbers, which break the order that the sentinel stands for.
template <class Key>
void InsertionSort(const Keyed<Key>& data, Segment segment) {
  for (std::int32_t i = segment.first + 1; i <= segment.last; ++i) {
    for (std::int32_t k = i; k > 1 && data.At(k - 1) > data.At(k); --k) data.Swap(k - 1, k);
  }
}

// Splits the segment around the median of three elements, the middle one at the fraction r of the segment.
template <class Key>
std::pair<Segment, Segment> Partition(const Keyed<Key>& data, Segment segment, float r) {
  const auto [i, j] = segment;
  const std::int32_t t = i + static_cast<std::int32_t>(static_cast<float>(j - i) * r);
  if (data.At(i) > data.At(t)) data.Swap(i, t);
  if (data.At(j) < data.At(t)) {
    data.Swap(t, j);
    if (data.At(i) > data.At(t)) data.Swap(i, t);
  }
  const Key pivot = data.At(t);
  std::int32_t low = i, high = j;
  for (;;) {
    do --high;
    while (high > i && data.At(high) > pivot);
    do ++low;
    while (low < j && data.At(low) < pivot);
    if (low > high) break;
    if (data.At(low) != data.At(high)) data.Swap(low, high);
  }
  return {{i, high}, {low, j}};
}

// Singleton's quicksort: the fraction r wanders so that no input is always bad; the larger part waits on the
// stack, so 21 places serve any n.
template <class Key>
void SingletonSort(std::int32_t n, const Keyed<Key>& data) {
  Segment waiting[21];
  int count = 0;
  Segment segment{1, n};
  float r = 0.375F;
  for (;;) {
    const bool split = segment.last - segment.first >= 11 || segment.first == 1;
    if (split && segment.first < segment.last) {
      r = r <= 0.5898437F ? r + 0.0390625F : r - 0.21875F;
      const auto [left, right] = Partition(data, segment, r);
      const bool leftWaits = left.last - left.first > right.last - right.first;
      waiting[count++] = leftWaits ? left : right;
      segment = leftWaits ? right : left;
      continue;
    }
    InsertionSort(data, segment);
    if (count == 0) return;
    segment = waiting[--count];
  }
}

template <class Key>
void Sort(std::int32_t n, const Key* values, Key* sorted, std::int32_t* permutation) {
  if (values != sorted) std::copy_n(values, n, sorted);
  SingletonSort(n, Keyed<Key>{sorted, permutation});
}

}  // namespace

void SVIGP(std::int32_t n, const std::int32_t* values, std::int32_t* sorted, std::int32_t* permutation) {
  if (n < 1) {
    TerminalError(
        "SVIGP",
        "The length of vectors IA, IB, and IPERM must be greater than or equal to one.  On input the "
        "length, N, is given as " +
            std::to_string(n) + ".");
  }
  Sort(n, values, sorted, permutation);
}

void SVRGP(std::int32_t n, const float* values, float* sorted, std::int32_t* permutation) {
  if (n < 1) {
    TerminalError("SVRGP",
                  "The length of vectors RA, RB and IPERM must be greater than or equal to one. On input the "
                  "length, N, is given as " +
                      std::to_string(n) + ".");
  }
  Sort(n, values, sorted, permutation);
}

}  // namespace stats
