#pragma once

// Runs a trial analysis on a text, also in a child process where it may end by a terminal message.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "platform/unit.h"
#include "tests/support/scratch.h"
#include "trial/analysis.h"

namespace support {

inline constexpr std::string_view kExtensions[] = {".aov", ".egv", ".frq", ".qqp", ".coe", ".pca", ".pcp"};

// Writes t.txt and analyses it: the log, or "good".
inline std::string Analyse(const std::string& text, int32_t rows, int32_t columns, int32_t classes = 3) {
  WriteFile("t.txt", text);
  platform::OpenUnit(2004, "ANOVA.log", platform::OpenStatus::Replace);
  const bool good = trial::RunTrialAnalysis(2004, rows, columns, classes, "t.txt");
  platform::CloseUnit(2004);
  const std::string log = ReadFile("ANOVA.log");
  EXPECT_EQ(good, log.empty());
  return good ? "good" : log;
}

// The exit code of `body` in a child process, or -1 when a signal ended it; standard error goes to
// stderr.txt.
template <class Body>
int InChild(Body body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    if (std::freopen("stderr.txt", "w", stderr) == nullptr) {
      _exit(99);
    }
    std::exit(body());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// The records of a file that begin with these fields, blanks squeezed.
inline std::vector<std::string> Records(const std::string& file, const std::string& begin) {
  std::vector<std::string> found;
  std::string squeezed;
  for (const char c : ReadFile(file)) {
    if (c == '\n') {
      squeezed =
          !squeezed.empty() && squeezed.back() == ' ' ? squeezed.substr(0, squeezed.size() - 1) : squeezed;
      if (squeezed.starts_with(begin)) {
        found.push_back(squeezed);
      }
      squeezed.clear();
    } else if (c != ' ' || (!squeezed.empty() && squeezed.back() != ' ')) {
      squeezed += c;
    }
  }
  return found;
}

}  // namespace support
