// The pair tables of the result files: the library's writer against formatting each field with the C library.
// The files are compared first; the plain one also bounds what the disk takes.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/side_by_side.h"
#include "platform/unit.h"
#include "results/pair_table_writer.h"
#include "tests/reference/pair_table_plain.h"

namespace {

constexpr int32_t kUnit = 40001;

std::string FileIn(const char* name) {
  return (std::filesystem::temp_directory_path() / ("tessarmont-bench-" + std::string(name))).string();
}

// A map of `count` markers in random order, and frequencies of 200 lines.
struct Table {
  std::vector<int32_t> order;
  std::vector<std::string> names;
  std::vector<float> values;

  explicit Table(int64_t count) {
    std::mt19937 random(5);
    order.resize(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 1);
    std::shuffle(order.begin(), order.end(), random);
    for (int64_t m = 1; m <= count; ++m) {
      std::string name = "marker" + std::to_string(m);
      names.push_back(name.append(35 - name.size(), ' '));
    }
    for (int64_t p = 0; p < count * (count - 1) / 2; ++p) {
      values.push_back(static_cast<float>(random() % 201) / 200 / (1 + static_cast<float>(random() % 3)));
    }
  }
};

void WriteByLibrary(const Table& table) {
  results::TableSelection selection{table.order, {}};
  for (const int32_t marker : table.order) {
    selection.names.emplace_back(table.names[static_cast<std::size_t>(marker) - 1]);
  }
  platform::OpenUnit(kUnit, FileIn("library"), platform::OpenStatus::Replace);
  results::WritePairTable(kUnit, selection, {table.values.data(), static_cast<int32_t>(table.order.size())});
  platform::CloseUnit(kUnit);
}

void WritePlain(const Table& table) {
  std::filesystem::remove(FileIn("plain"));  // it is written at its end
  reference::WritePairTablePlain(FileIn("plain"), table.order, table.names, table.values);
}

std::string Content(const char* name) {
  std::ifstream file(FileIn(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Work {
  explicit Work(int64_t markers) : table(markers) {}
  ~Work() {
    std::filesystem::remove(FileIn("library"));
    std::filesystem::remove(FileIn("plain"));
  }
  void Plain() { WritePlain(table); }
  void Library() { WriteByLibrary(table); }
  bool Same() const { return Content("library") == Content("plain"); }

  Table table;
};

}  // namespace

int main(int argc, char** argv) {
  for (const int64_t markers : {1000, 2000, 3000}) {
    bench::Add<Work>("pair table files: " + std::to_string(markers), markers, static_cast<double>(markers),
                     {});
  }
  return bench::Run(argc, argv);
}
