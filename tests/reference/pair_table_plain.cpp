#include "tests/reference/pair_table_plain.h"

#include <algorithm>
#include <cstdio>

namespace reference {

void WritePairTablePlain(const std::string& name, const std::vector<int32_t>& order,
                         const std::vector<std::string>& names, const std::vector<float>& values) {
  std::FILE* out = std::fopen(name.c_str(), "w");
  std::fprintf(out, "%12s %35s", "MarkerID", "MarkerName");
  for (std::size_t k = 1; k <= order.size(); ++k) {
    std::fprintf(out, "%12zu", k);
  }
  std::fputc('\n', out);
  for (std::size_t i = 0; i < order.size(); ++i) {
    std::fprintf(out, "%12zu %35s", i + 1, names[static_cast<std::size_t>(order[i]) - 1].c_str());
    for (std::size_t j = 0; j < i; ++j) {
      const auto high = static_cast<std::size_t>(std::max(order[i], order[j]));
      const auto low = static_cast<std::size_t>(std::min(order[i], order[j]));
      std::fprintf(out, "%12.4f", static_cast<double>(values[(high - 2) * (high - 1) / 2 + low - 1]));
    }
    std::fputc('\n', out);
  }
  std::fclose(out);
}

}  // namespace reference
