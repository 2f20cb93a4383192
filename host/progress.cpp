#include "host/progress.h"

#include <unistd.h>

#include <iostream>
#include <utility>

#include "host/text.h"

namespace host {

ProgressLine::ProgressLine(std::string what, bool quiet)
    : what_(std::move(what)),
      shown_(!quiet && isatty(STDERR_FILENO) == 1),
      start_(std::chrono::steady_clock::now()) {}

ProgressLine::~ProgressLine() {
  if (width_ > 0) std::cerr << '\r' << std::string(width_, ' ') << '\r' << std::flush;
}

void ProgressLine::Update(double done, double total) {
  if (!shown_ || total <= 0) return;
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start_;
  std::string line = what_ + " " + Fixed(100 * done / total, 0) + " %";
  if (done > 0 && passed.count() > 1) {
    line += ", " + Fixed(passed.count() * (total - done) / done, 0) + " s left";
  }
  width_ = line.size() > width_ ? line.size() : width_;
  std::cerr << '\r' << Padded(line, width_) << std::flush;
}

}  // namespace host
