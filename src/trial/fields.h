#pragma once

// Records of names and as many values as there are, built field by field.

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "platform/record.h"

namespace trial {

// The value fields F12.4 behind the names of a record.
inline void AppendValues(std::string& record, std::span<const float> values) {
  platform::AppendReals(record, 12, 4, values);
}

// The column heading 1X,A11.
inline void AppendHeading(std::string& record, std::string_view text) {
  platform::AppendText(record, 1, " ");
  platform::AppendText(record, 11, text);
}

}  // namespace trial
