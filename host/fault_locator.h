#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// A report of the library ("--Input error: ..." with its detail lines) and where it happened.
struct Fault {
  std::vector<std::string> report;
  std::vector<std::size_t> lines;  // empty where the place cannot be told
  std::string hint;                // one sentence without a line end, or empty
};

// Splits a log into its reports and finds their places in a file of a kind of kModuleSteps. Lines that are no
// report are dropped. `breeding`: what is said of marker rows is said of the breeding population's.
std::vector<Fault> LocateFaults(const std::vector<std::string>& log, std::string_view text,
                                std::string_view module, bool breeding = false);

}  // namespace host
