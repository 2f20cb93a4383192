#include "platform/fatal.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace platform {

void Fatal(std::string_view what) {
  std::string line = "tessarmont: ";
  line += what;
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::exit(EXIT_FAILURE);  // runs the destructors that flush the open files
}

void FatalException() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    Fatal("not enough memory");
  } catch (const std::length_error&) {
    Fatal("not enough memory");
  } catch (const std::exception& error) {
    Fatal(error.what());
  } catch (...) {
    Fatal("unknown failure");
  }
}

}  // namespace platform
