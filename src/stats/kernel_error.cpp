#include "stats/kernel_error.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace stats {

void PrintTerminalError(std::string_view routine, std::string_view message) {
  std::string line = " *** TERMINAL ERROR 5 from ";
  line += routine;
  line += ".  ";
  line += message;
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void TerminalError(std::string_view routine, std::string_view message) {
  PrintTerminalError(routine, message);
  std::exit(EXIT_FAILURE);  // runs the destructors that flush the open files
}

std::string Shown(float value) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

}  // namespace stats
