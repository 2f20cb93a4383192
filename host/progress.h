#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace host {

// "pairs 1200000 of 4498500, 27 %, 2.1 M/s, 2 s left"; rate and time left once a second has passed.
std::string ProgressText(std::string_view what, double done, double total, double seconds);

// How far a long job is, on standard error: on a terminal one line that rewrites itself and goes away at the
// end, elsewhere a plain line at long intervals, and nothing when quiet.
class ProgressLine {
 public:
  static constexpr std::chrono::seconds kPlainInterval{30};

  ProgressLine(std::string what, bool quiet, std::chrono::milliseconds plainInterval = kPlainInterval);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();
  bool Shown() const { return shown_; }
  void Update(double done, double total);

 private:
  std::string what_;
  bool shown_, terminal_;
  std::size_t width_ = 0;  // of the line that is on the terminal
  std::chrono::milliseconds plainInterval_;
  std::chrono::steady_clock::time_point start_, lastPlain_;
};

}  // namespace host
