#pragma once

#include <string>
#include <vector>

#include "host/fault_locator.h"
#include "host/input_file.h"

namespace host {

// The library's own lines, each report followed by its place in the file and what is to be seen there.
std::string FaultText(const InputFile& file, const std::vector<Fault>& faults);
// The reports of a file that the library has refused; never empty.
std::vector<Fault> FaultsOf(const InputFile& file, const std::vector<std::string>& log);

}  // namespace host
