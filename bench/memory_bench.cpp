// Peak memory of a check of a MAP file over the caller's arrays and the file's bytes, in a process of its own. The
// "ratio" is the allowance (1.5 bytes a genotype cell and 64 MB of remembered tables) over what was taken.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "bench/side_by_side.h"
#include "frame/exports.h"

namespace {

struct Size {
  int32_t population, markers, lines;
};

double PeakBytes() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (double kilobytes = 0; word == "VmHWM:" && status >> kilobytes) return 1024 * kilobytes;
  }
  std::abort();
}

// Markers in blocks of 50 linked ones, a fiftieth of the cells missing.
std::string File(const Size& size) {
  std::mt19937 random(1);
  const std::string codes = size.population == 7 ? "AHHB" : "AB";
  std::string line(static_cast<std::size_t>(size.lines), 'A'), text, anchors;
  text = std::to_string(size.population) + "\n1\n1\n" + std::to_string(size.markers) + "\n" +
         std::to_string(size.lines) + "\n";
  for (int32_t m = 0; m < size.markers; ++m) {
    text += "m" + std::to_string(m);
    for (char& code : line) {
      if (m % 50 == 0 || random() % 50 == 0) code = codes[random() % codes.size()];
      text += ' ';
      text += random() % 50 == 0 ? 'X' : code;
    }
    text += '\n';
    anchors += "m" + std::to_string(m) + " 0\n";
  }
  return text + anchors;
}

// The peak over the arrays, told through the pipe; in a process that has done nothing before.
[[noreturn]] void Check(int32_t markers, int pipe) {
  const auto n = static_cast<std::size_t>(markers), pairs = n * (n - 1) / 2;
  std::vector<int32_t> names(35 * n, 1), whole(6 * n, 1);
  std::vector<float> real(2 * n, 1), pair(4 * pairs, 1);
  const double before = PeakBytes();
  const int32_t length = 10;
  int32_t status = 0, header[4];
  int32_t* const w = whole.data();
  float* const p = pair.data();
  CHECKERRORMAP(&length, "memory.map", &markers, &status, header, header + 1, header + 2, header + 3,
                names.data(), w, w + n, w + 2 * n, w + 3 * n, w + 4 * n, w + 5 * n, real.data(),
                real.data() + n, p, p + pairs, p + 2 * pairs, p + 3 * pairs);
  const double taken = status == 0 ? PeakBytes() - before : -1;
  if (write(pipe, &taken, sizeof taken) != sizeof taken) _exit(1);
  _exit(0);
}

void Measure(benchmark::State& state, const Size& size) {
  std::string folder = std::filesystem::temp_directory_path() / "tessarmont-memory-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) std::abort();
  std::filesystem::current_path(folder);
  std::ofstream("memory.map") << File(size);
  const auto bytes = static_cast<double>(std::filesystem::file_size("memory.map"));
  double taken = -1;
  int ends[2];
  if (pipe(ends) != 0) std::abort();
  const pid_t child = fork();
  if (child == 0) {
    if (freopen("/dev/null", "w", stdout) == nullptr) _exit(1);
    execl("/proc/self/exe", "memory_bench", "--measure", std::to_string(size.markers).c_str(),
          std::to_string(ends[1]).c_str(), nullptr);
    _exit(1);
  }
  for (auto unused : state) {
    (void)unused;
    if (read(ends[0], &taken, sizeof taken) != sizeof taken || taken < 0) std::abort();
  }
  waitpid(child, nullptr, 0);
  close(ends[0]);
  close(ends[1]);
  std::filesystem::current_path("/");
  std::filesystem::remove_all(folder);
  const double cells = static_cast<double>(size.markers) * size.lines;
  constexpr double kTables = 64.0 * 1024 * 1024;
  state.counters["ratio"] = (1.5 * cells + kTables) / std::max(taken - bytes, 1.0);
  state.counters["library_s"] = std::max(taken - bytes, 1.0);
  state.counters["size"] = 0;
  state.counters["must"] = 1;
  state.counters["aim"] = 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::string(argv[1]) == "--measure") Check(std::stoi(argv[2]), std::stoi(argv[3]));
  for (const Size& size : {Size{7, 500, 20000}, Size{7, 2000, 200}, Size{7, 10000, 200}, Size{8, 5000, 500},
                           Size{3, 20000, 200}}) {
    const std::string name = "memory allowance over use, population " + std::to_string(size.population) +
                             ": " + std::to_string(size.markers) + " x " + std::to_string(size.lines);
    benchmark::RegisterBenchmark(name.c_str(), Measure, size)->Iterations(1);
  }
  return bench::Run(argc, argv);
}
