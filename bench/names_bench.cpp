// The check of marker names: the library's index against comparing each name with all before it. The pairs
// found are compared first.

#include <string>
#include <utility>
#include <vector>

#include "bench/side_by_side.h"
#include "project/name_index.h"
#include "tests/reference/names_plain.h"

namespace {

std::vector<std::string> Names(int64_t count) {
  std::vector<std::string> names;
  for (int64_t k = 0; k < count; ++k) {
    std::string name = "chr" + std::to_string(k % 10) + "_" + std::to_string(k == count - 1 ? 5 : k);
    names.push_back(name.append(35 - name.size(), ' '));  // the last is the sixth once more, or nearly
  }
  return names;
}

using Pairs = std::vector<std::pair<int32_t, int32_t>>;

Pairs ByIndex(const std::vector<std::string>& names) {
  Pairs pairs;
  project::NameIndex index;
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (const int32_t earlier : project::AddName(index, names[i])) {
      pairs.emplace_back(earlier, static_cast<int32_t>(i) + 1);
    }
  }
  return pairs;
}

struct Work {
  explicit Work(int64_t count) : names(Names(count)) {}
  void Plain() { plain = reference::EqualNames({names.begin(), names.end()}); }
  void Library() { fast = ByIndex(names); }
  bool Same() const { return plain == fast; }

  std::vector<std::string> names;
  Pairs plain, fast;
};

}  // namespace

int main(int argc, char** argv) {
  for (const int64_t count : {5000, 20000, 50000}) {
    bench::Add<Work>("names: " + std::to_string(count), count, static_cast<double>(count), {});
  }
  return bench::Run(argc, argv);
}
