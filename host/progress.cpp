#include "host/progress.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <utility>

#include "host/text.h"

namespace host {
namespace {

// "850/s", "2.1 M/s"
std::string Rate(double perSecond) {
  if (perSecond < 1e4) return Fixed(perSecond, 0) + "/s";
  if (perSecond < 1e6) return Fixed(perSecond / 1e3, 0) + " k/s";
  return Fixed(perSecond / 1e6, 1) + " M/s";
}

}  // namespace

std::string ProgressText(std::string_view what, double done, double total, double seconds) {
  std::string line = std::string(what) + " " + Fixed(done, 0) + " of " + Fixed(total, 0) + ", " +
                     Fixed(100 * done / total, 0) + " %";
  if (done > 0 && seconds > 1) {
    line += ", " + Rate(done / seconds) + ", " + Fixed(seconds * (total - done) / done, 0) + " s left";
  }
  return line;
}

ProgressLine::ProgressLine(std::string what, bool quiet, std::chrono::milliseconds plainInterval)
    : what_(std::move(what)),
      shown_(!quiet),
      terminal_(isatty(STDERR_FILENO) == 1),
      plainInterval_(plainInterval),
      start_(std::chrono::steady_clock::now()),
      lastPlain_(start_) {}

ProgressLine::~ProgressLine() {
  if (width_ > 0) std::cerr << '\r' << std::string(width_, ' ') << '\r' << std::flush;
}

void ProgressLine::Update(double done, double total) {
  if (!shown_ || total <= 0) return;
  const auto now = std::chrono::steady_clock::now();
  if (!terminal_ && now - lastPlain_ < plainInterval_) return;
  const std::chrono::duration<double> passed = now - start_;
  const std::string line = ProgressText(what_, done, total, passed.count());
  if (!terminal_) {
    lastPlain_ = now;
    std::cerr << "tessarmont: " << line << std::endl;
    return;
  }
  width_ = std::max(width_, line.size());
  std::cerr << '\r' << Padded(line, width_) << std::flush;
}

}  // namespace host
