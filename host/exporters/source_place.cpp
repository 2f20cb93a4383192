#include "host/exporters/source_place.h"

namespace exporters {

std::optional<SourcePlace> SourceOf(std::string_view name) {
  const std::size_t mark = name.find_last_of("_:");
  if (mark == std::string_view::npos || mark == 0 || mark + 1 == name.size()) return std::nullopt;
  const std::string_view position = name.substr(mark + 1);
  if (position.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  return SourcePlace{name.substr(0, mark), position};
}

}  // namespace exporters
