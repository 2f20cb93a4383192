#pragma once

#include <cstdint>
#include <string_view>

namespace trial {

// Reads a trial table (ReadTrialTable) and writes the seven result files beside it, named by the path less
// its last four characters. False when the table cannot be read, which the log is told; no file is made then.
bool RunTrialAnalysis(int32_t logUnit, int32_t numRows, int32_t numColumns, int32_t numClasses,
                      std::string_view path);

}  // namespace trial
