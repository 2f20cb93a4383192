#include "project/name_index.h"

#include <algorithm>

namespace project {

std::vector<int32_t> AddName(NameIndex& index, std::string_view name) {
  int32_t& latest = index.latest[name];
  index.before.push_back(latest);
  std::vector<int32_t> namesakes;
  for (int32_t entry = latest; entry != 0; entry = index.before[static_cast<std::size_t>(entry)]) {
    namesakes.push_back(entry);
  }
  latest = static_cast<int32_t>(index.before.size()) - 1;
  std::reverse(namesakes.begin(), namesakes.end());
  return namesakes;
}

}  // namespace project
