// The load of a MAP file of 20,000 markers x 500 lines against splitting the same bytes at blanks. The counts
// are compared first: the splitter must find as many tokens as the file has values.

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "bench/side_by_side.h"
#include "platform/unit.h"
#include "project/loader.h"
#include "project/store.h"

namespace {

constexpr int kLines = 500;

std::string Text(int markers) {
  std::mt19937 random(1);
  std::string file = "7\n1\n1\n" + std::to_string(markers) + "\n" + std::to_string(kLines) + "\n";
  std::string anchors;
  for (int m = 0; m < markers; ++m) {
    file += "marker" + std::to_string(m);
    for (int line = 0; line < kLines; ++line) {
      file += ' ';
      file += "AHBX"[random() % 4];
    }
    file += '\n';
    anchors += "marker" + std::to_string(m) + " 0\n";
  }
  return file + anchors;
}

std::size_t Split(const std::string& text) {
  std::size_t tokens = 0;
  unsigned sum = 0;
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    while (p < end && (*p == ' ' || *p == '\n')) {
      ++p;
    }
    const char* const begin = p;
    while (p < end && *p != ' ' && *p != '\n') {
      ++p;
    }
    if (p > begin) {
      ++tokens;
      sum += static_cast<unsigned char>(*begin);
    }
  }
  benchmark::DoNotOptimize(sum);
  return tokens;
}

struct Work {
  explicit Work(int count) : markers(count), text(Text(count)) {
    std::ofstream(file, std::ios::binary) << text;
    platform::OpenUnit(project::kLogUnit, log, platform::OpenStatus::Replace);
  }
  ~Work() {
    platform::CloseUnit(project::kLogUnit);
    std::filesystem::remove(file);
    std::filesystem::remove(log);
  }
  void Plain() { tokens = Split(text); }
  void Library() {
    int32_t status = 0;
    project::LoadModule(project::Module::Map, project::kMapCode, file, status);
    good =
        status == 0 && project::GenotypesAt(project::Store(project::Module::Map), markers).size() == kLines;
    project::ReleaseStore(project::Module::Map);
  }
  bool Same() const { return good && tokens == 5U + static_cast<std::size_t>(markers) * (kLines + 3); }

  int markers;
  std::string text;
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  const std::string file = folder / "tessarmont_load_bench.map", log = folder / "tessarmont_load_bench.log";
  std::size_t tokens = 0;
  bool good = false;
};

}  // namespace

int main(int argc, char** argv) {
  for (const int markers : {5000, 10000, 20000}) {
    bench::Add<Work>("load over splitting: " + std::to_string(markers), markers, markers, {1.0 / 3, 1.0 / 3});
  }
  return bench::Run(argc, argv);
}
