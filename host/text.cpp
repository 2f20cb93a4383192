#include "host/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <system_error>

namespace host {

std::string Fixed(double value, int decimals) {
  std::array<char, 512> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
  return {buffer.data(), end.ptr};
}

std::string Significant(double value) {
  std::array<char, 64> buffer{};
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 4);
  return {buffer.data(), end.ptr};
}

double Plain(float value) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  double plain = value;
  std::from_chars(buffer.data(), end.ptr, plain);
  return plain;
}

std::string Bytes(double count) {
  constexpr std::string_view units[] = {"bytes", "kB", "MB", "GB", "TB", "PB", "EB"};
  std::size_t unit = 0;
  for (; count >= 1000 && unit + 1 < std::size(units); ++unit) count /= 1000;
  return Fixed(count, unit == 0 ? 0 : 1) + " " + std::string(units[unit]);
}

std::string Counted(int64_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string Padded(std::string_view text, std::size_t width) {
  std::string padded(text);
  if (padded.size() < width) padded.resize(width, ' ');
  return padded;
}

std::string PaddedColumn(std::string_view text, std::size_t width) {
  const auto inside = std::count_if(text.begin(), text.end(),
                                    [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; });
  return Padded(text, width + static_cast<std::size_t>(inside));
}

std::string RightAligned(std::string_view text, std::size_t width) {
  return std::string(text.size() < width ? width - text.size() : 0, ' ') + std::string(text);
}

std::string FirstNames(std::span<const std::string> names, std::size_t shown) {
  std::string list;
  for (const std::string& name : names.first(std::min(shown, names.size()))) {
    list += (list.empty() ? "" : ", ") + name;
  }
  return names.size() > shown ? list + ", ..." : list;
}

std::string_view WithoutTrailing(std::string_view text, std::string_view characters) {
  return text.substr(0, text.find_last_not_of(characters) + 1);
}

std::string_view Trimmed(std::string_view text) {
  text = WithoutTrailing(text, " \t");
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text;
}

std::vector<std::string_view> BlankParted(std::string_view line) {
  constexpr std::string_view separators = " \t";
  std::vector<std::string_view> words;
  for (std::size_t at = line.find_first_not_of(separators); at != std::string_view::npos;) {
    const std::size_t end = line.find_first_of(separators, at);
    words.push_back(line.substr(at, end == std::string_view::npos ? end : end - at));
    at = line.find_first_not_of(separators, end);
  }
  return words;
}

std::vector<std::string_view> Lines(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.push_back(line);
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace host
