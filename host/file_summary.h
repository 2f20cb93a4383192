#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace host {

// What a file with a linkage map holds, as far as the host's own walk gets: "2 chromosomes, 30 markers x 100
// lines, 1 trait (yield), population 4 (RIL), ...". For files that the library has called good.
struct FileSummary {
  std::string sentence;
  nlohmann::json facts = nlohmann::json::object();
};
FileSummary SummaryOf(std::string_view text, std::string_view module);

}  // namespace host
