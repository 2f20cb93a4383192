#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ordering {

// A list read by signed places, as tours and their kernels count them.
template <class T>
struct Places : std::vector<T> {
  using std::vector<T>::vector;
  T& operator[](std::int32_t place) { return this->data()[static_cast<std::size_t>(place)]; }
  const T& operator[](std::int32_t place) const { return this->data()[static_cast<std::size_t>(place)]; }
};

}  // namespace ordering
