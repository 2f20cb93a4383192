#pragma once

// An input error as the log tells it: a line of words, a detail line where there is a value to show, status
// -1.

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "platform/record.h"
#include "platform/unit.h"

namespace project {

inline void Report(int32_t log, int32_t& status, std::string_view words) {
  platform::WriteRecord(log, words);
  status = -1;
}

inline void ReportDetail(int32_t log, const platform::EditList& list,
                         std::initializer_list<platform::Value> values) {
  platform::WriteRecord(log, platform::Record(list, values));
}

}  // namespace project
