#include "platform/fatal.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>

namespace platform {

void Fatal(std::string_view what) {
  constexpr std::string_view kName = "tessarmont: ";  // no memory is taken here: there may be none
  std::fwrite(kName.data(), 1, kName.size(), stderr);
  std::fwrite(what.data(), 1, what.size(), stderr);
  std::fputc('\n', stderr);
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
