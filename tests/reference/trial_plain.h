#pragma once

// The trial analysis as its definition tells it: names compared one by one, rows searched for every cell.
// Serves tests and the benchmark.

#include <cstdint>
#include <string>
#include <vector>

namespace reference {

// One plot as read: missing values are -9999.
struct Plot {
  std::string environment, genotype, block;
  std::vector<float> values;
};
struct Trial {
  std::vector<std::string> traits;
  std::vector<Plot> plots;
};

// The text of .aov, .egv, .frq, .qqp, .coe, .pca and .pcp. Nothing may end the process: at least three
// classes, no constant trait, no environment with one plot, no combined analysis over one error mean square.
struct TrialFiles {
  std::string text[7];
};
TrialFiles AnalyseTrialPlain(const Trial& trial, int32_t numClasses);

}  // namespace reference
