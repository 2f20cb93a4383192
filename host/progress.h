#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace host {

// One line on standard error that rewrites itself; it exists only when that is a terminal.
class ProgressLine {
 public:
  ProgressLine(std::string what, bool quiet);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();  // wipes the line
  bool Shown() const { return shown_; }
  void Update(double done, double total);

 private:
  std::string what_;
  bool shown_;
  std::size_t width_ = 0;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace host
