#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace reference {

// A pair table of all markers in the given order, field by field with the C library; the whole file.
void WritePairTablePlain(const std::string& name, const std::vector<int32_t>& order,
                         const std::vector<std::string>& names, const std::vector<float>& values);

}  // namespace reference
