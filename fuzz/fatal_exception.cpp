// Stands in for the fatal path of the library: what would end the process is thrown.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "fuzz/fuzzing.h"
#include "platform/fatal.h"
#include "platform/unit.h"
#include "project/loader.h"
#include "project/store.h"

namespace platform {

void Fatal(std::string_view /*what*/) { throw fuzzing::FatalPath(); }
void FatalException() { throw fuzzing::FatalPath(); }

}  // namespace platform

namespace fuzzing {

std::string_view ProjectFile(std::string_view text) {
  static const int file = memfd_create("project", 0);
  static const std::string name = "/proc/self/fd/" + std::to_string(file);
  if (file < 0 || ftruncate(file, 0) != 0 ||
      pwrite(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
    std::abort();
  }
  return name;
}

bool Lengthy(std::string_view text) {
  std::size_t digits = 0;
  for (const char c : text) {
    digits = c >= '0' && c <= '9' ? digits + 1 : 0;
    if (digits > 5) {
      return true;
    }
  }
  return false;
}

void CleanUp() {
  platform::CloseUnit(project::kProjectUnit);
  for (std::size_t m = 0; m < project::kModules.size(); ++m) {
    project::ReleaseStore(static_cast<project::Module>(m));
  }
}

}  // namespace fuzzing
