#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "host/fault_locator.h"
#include "host/input_file.h"

namespace host {

// The library's own lines, each report followed by its place in the file and what is to be seen there.
std::string FaultText(const InputFile& file, const std::vector<Fault>& faults);
// The reports of a file that the library has refused; never empty.
std::vector<Fault> FaultsOf(const InputFile& file, std::string_view module,
                            const std::vector<std::string>& log);

// {"report": [...], "lines": [...], "hint": "..."}
nlohmann::json FaultJson(const Fault& fault);

}  // namespace host
