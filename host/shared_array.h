#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <span>
#include <type_traits>
#include <utility>

#include "host/exit_code.h"
#include "host/text.h"

namespace host {

// Zeroed memory that a child process writes and its parent reads. Pages come into being when they are
// touched.
template <typename T>
class SharedArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  SharedArray() = default;
  explicit SharedArray(std::size_t count) : count_(count) {
    if (count == 0) return;
    void* place = mmap(nullptr, count * sizeof(T), PROT_READ | PROT_WRITE,
                       MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (place == MAP_FAILED) {
      throw Failure{ExitCode::Other,
                    "out of memory: cannot have " + Bytes(static_cast<double>(count * sizeof(T)))};
    }
    data_ = static_cast<T*>(place);
  }
  SharedArray(SharedArray&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), count_(std::exchange(other.count_, 0)) {}
  SharedArray& operator=(SharedArray&& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(count_, other.count_);
    return *this;
  }
  SharedArray(const SharedArray&) = delete;
  SharedArray& operator=(const SharedArray&) = delete;
  ~SharedArray() {
    if (data_ != nullptr) munmap(data_, count_ * sizeof(T));
  }

  T* data() { return data_; }
  std::size_t size() const { return count_; }
  T& operator[](std::size_t i) { return data_[i]; }
  const T& operator[](std::size_t i) const { return data_[i]; }
  std::span<const T> view() const { return {data_, count_}; }

 private:
  T* data_ = nullptr;
  std::size_t count_ = 0;
};

}  // namespace host
