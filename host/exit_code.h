#pragma once

#include <string>

namespace host {

// What the command returns to the shell; --help lists the same four.
enum class ExitCode { Good = 0, InputWrong = 1, UsageWrong = 2, Other = 3 };

// Thrown where a subcommand cannot go on. The message is one sentence without a line end.
struct Failure {
  ExitCode code;
  std::string message;
};

inline ExitCode Worse(ExitCode a, ExitCode b) { return a > b ? a : b; }

}  // namespace host
