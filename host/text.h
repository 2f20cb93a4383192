#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

std::string Fixed(double value, int decimals);
// Four significant digits, exponent form where shorter: 0.01235, 3.2e-12.
std::string Significant(double value);
// The double nearest to the shortest decimal that reads back as this float: 0.2, not 0.20000000298.
double Plain(float value);
// "3.2 MB", in powers of 1000.
std::string Bytes(double count);
// "1 marker", "2 markers".
std::string Counted(int64_t count, std::string_view noun);
std::string Padded(std::string_view text, std::size_t width);
std::string RightAligned(std::string_view text, std::size_t width);
// Padded by characters of UTF-8 instead of bytes, for a terminal.
std::string PaddedColumn(std::string_view text, std::size_t width);
// "a, b, ..." of the first names.
std::string FirstNames(std::span<const std::string> names, std::size_t shown);
std::string_view WithoutTrailing(std::string_view text, std::string_view characters);
std::string_view Trimmed(std::string_view text);  // of blanks and tabs at both ends

// Words parted by blanks and tabs.
std::vector<std::string_view> BlankParted(std::string_view line);

// Lines at LF, a CR before it dropped; a last line without an end counts.
std::vector<std::string_view> Lines(std::string_view text);

}  // namespace host
