#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/precheck.h"

namespace host {

// "FILE: 3 faults in all" and a line each. Above 20 faults each kind shows its first ones and a summary of the
// others, unless `all`. Nothing where there is no fault.
std::string FindingsText(const std::string& file, const std::vector<Finding>& findings, bool all);

// {"count", "shown", "kinds": {kind: count}, "list": [{"kind", "lines", "words"}]}; the list as in the text.
nlohmann::json FindingsJson(const std::vector<Finding>& findings, bool all);

}  // namespace host
