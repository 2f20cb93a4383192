#include "platform/console.h"

#include <cstdio>

namespace platform {

void WriteConsole(std::string_view line) {
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  std::fflush(stdout);
}

}  // namespace platform
