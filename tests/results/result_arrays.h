#pragma once

// The pair arrays that the golden result files were made from: a rule for each, over the place of the pair in
// the array, so that the generator of the files and the tests have the same values.

#include <cstdint>
#include <iterator>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "results/new_map.h"
#include "tests/support/load.h"

namespace result_arrays {

inline int32_t Pairs(int32_t markers) { return markers * (markers - 1) / 2; }

// which: 0 both parents, 1 AB, 2 CD.
inline std::vector<float> Rec(int32_t markers, int32_t which) {
  std::vector<float> values;
  for (int32_t p = 1; p <= Pairs(markers); ++p) {
    const int32_t step = (p * (7 + 2 * which) + which) % 33;
    values.push_back((p + which) % 4 == 0 ? 0.5F : static_cast<float>(step) / 64);
  }
  return values;
}

// Thirty-seconds: their fifth decimal is a tie to be rounded to even. One value is not a number.
inline std::vector<float> Lod(int32_t markers, int32_t which) {
  std::vector<float> values;
  for (int32_t p = 1; p <= Pairs(markers); ++p) {
    values.push_back(p == 5 + which ? std::numeric_limits<float>::quiet_NaN()
                                    : static_cast<float>(p * (29 + which) % 4096) / 32 - 4);
  }
  return values;
}

// Unlinked pairs, and one distance that is too wide for its field.
inline std::vector<float> Distance(int32_t markers, int32_t which) {
  std::vector<float> values;
  for (int32_t p = 1; p <= Pairs(markers); ++p) {
    const float distance = static_cast<float>(p * (37 + which) % 2048) / 32;
    values.push_back(p % 17 == which ? 1000.0F : p == 9 ? 12345678.0F : distance);
  }
  return values;
}

inline std::vector<int32_t> Phase(int32_t markers) {
  std::vector<int32_t> values;
  for (int32_t p = 1; p <= Pairs(markers); ++p) {
    values.push_back(p % 23 == 0 ? 9 : 1 + (p * 5 + p / 7) % 4);
  }
  return values;
}

// A map as a host holds it.
struct HostMap {
  std::vector<int32_t> places, order, deleted;
  std::vector<float> positions;
  std::string names;

  results::NewMap View(const std::string& prefix) {
    names.clear();
    for (std::size_t c = 1; c <= places.size(); ++c) {
      std::string name = prefix + std::to_string(c);
      names += name.append(19 - name.size(), ' ');
    }
    return {static_cast<int32_t>(order.size()),
            static_cast<int32_t>(places.size()),
            names.data(),
            places.data(),
            order.data(),
            positions.data()};
  }
};

// What a record of a table or a summary says, from its first word on.
inline std::vector<std::string> Words(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}
inline std::vector<std::string> Lines(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) {
    lines.push_back(line);
  }
  return lines;
}

// Loads a written project file once the user has filled in a trait; the log's text, or "good".
inline std::string LoadWithTrait(project::Module module, std::string text, int32_t lines) {
  const std::size_t count = text.find("0  !Number of traits");
  EXPECT_NE(count, std::string::npos);
  text.replace(count, 1, "1");
  text += "Yield " + std::to_string(lines) + "*-100.0\n";
  return support::Load(module, text);
}

}  // namespace result_arrays
