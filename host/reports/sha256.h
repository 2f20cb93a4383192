#pragma once

#include <string>
#include <string_view>

namespace reports {

// The SHA-256 digest of the bytes as 64 hexadecimal digits, as `sha256sum` prints it.
std::string Sha256(std::string_view bytes);

}  // namespace reports
