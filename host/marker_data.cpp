#include "host/marker_data.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iostream>
#include <limits>

#include "frame/exports.h"
#include "host/exit_code.h"
#include "host/file_walk.h"
#include "host/isolated_call.h"
#include "host/progress.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kNameLength = 35;
constexpr int32_t kStatusWrong = 100;
constexpr int32_t kLargeMarkers = 2000;          // from here on the size is told before the start
constexpr std::size_t kHeaderBytes = 1U << 20U;  // header and its remarks lie within the first MB
constexpr double kRoom = 64e6;                   // bytes for tables and code beyond the arrays

std::size_t Elements(int32_t count) { return static_cast<std::size_t>(count); }
std::size_t Pairs(int32_t markers) {
  return markers < 2 ? 0 : Elements(markers) * (Elements(markers) - 1) / 2;
}

std::vector<std::string> Narrowed(const SharedArray<int32_t>& wide, int32_t markers) {
  return NarrowedNames(wide.view(), Elements(markers), kNameLength);
}

// Genotype cells that the header declares, and a first look at counts that no memory can hold.
double DeclaredCells(const InputFile& file) {
  std::ifstream stream(file.absolute, std::ios::binary);
  std::string head(kHeaderBytes, '\0');
  stream.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<std::size_t>(stream.gcount()));
  const FileLayout layout = WalkFile(head, "MAP");
  return static_cast<double>(layout.TotalMarkers()) * static_cast<double>(layout.lines);
}

// A marker takes two rows, each at least a character and a line end.
void RefuseWhatCannotBeThere(const InputFile& file, int32_t markers) {
  if (4.0 * markers <= file.bytes) return;
  throw Failure{ExitCode::InputWrong, file.given.string() + " declares " + std::to_string(markers) +
                                          " markers, but a file of " + Bytes(file.bytes) +
                                          " cannot hold their rows"};
}

void RefuseWhatCannotFit(const InputFile& file, int32_t markers, double needed) {
  const double available = AvailableBytes();
  if (needed <= available) return;
  throw Failure{ExitCode::Other, file.given.string() + " declares " + std::to_string(markers) +
                                     " markers, which needs " + Bytes(needed) + " of memory; " +
                                     Bytes(available) + " are available"};
}

void TellSize(int32_t markers, double needed, bool quiet) {
  if (quiet || markers < kLargeMarkers) return;
  std::cerr << markers << " markers: " << Pairs(markers) << " pairs, about " << Bytes(needed)
            << " of memory\n";
}

void AllocateMap(int32_t markers, MapData& data) {
  data.numMarkers = markers;
  for (auto* array : {&data.anchor, &data.countA, &data.countH, &data.countB, &data.countX, &data.category}) {
    *array = SharedArray<int32_t>(Elements(markers));
  }
  data.chi = SharedArray<float>(Elements(markers));
  data.segregationP = SharedArray<float>(Elements(markers));
  for (auto* array : {&data.rec, &data.lod, &data.crossovers, &data.distance}) {
    *array = SharedArray<float>(Pairs(markers));
  }
}

// Pairs are written in their order, so the last of these probes that holds anything tells how far it is. A
// pair with frequency, LOD and distance all 0 does not exist where there is something to see.
double PairsDone(const MapData& data) {
  constexpr std::size_t probes = 200;
  const std::size_t pairs = data.rec.size();
  for (std::size_t k = probes; k > 0; --k) {
    const std::size_t place = (pairs - 1) / probes * k;
    if (data.rec[place] > 0 || data.lod[place] > 0) return static_cast<double>(place);
  }
  return 0;
}

struct PreRead {
  bool good;
  int32_t markers;
  std::vector<std::string> log;
};

PreRead FindNumMarkers(const InputFile& file, const int32_t* binCode) {
  SharedArray<int32_t> scalars(2);  // NumMarkers, Status
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    if (binCode != nullptr) {
      BINFINDNUMMARKERS(binCode, &length, file.absolute.data(), &scalars[0], &scalars[1]);
    } else {
      MAPFINDNUMMARKERS(&length, file.absolute.data(), &scalars[0], &scalars[1]);
    }
    LeaveChild(call);
  }
  CallOutcome outcome = AwaitChild(call);
  return {scalars[1] != kStatusWrong, scalars[0], std::move(outcome.log)};
}

CallOutcome CheckMap(const InputFile& file, bool quiet, MapData& data, SharedArray<int32_t>& scalars) {
  SharedArray<int32_t> names(kNameLength * Elements(data.numMarkers));
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    CHECKERRORMAP(&length, file.absolute.data(), &data.numMarkers, &scalars[0], &scalars[1], &scalars[2],
                  &scalars[3], &scalars[4], names.data(), data.anchor.data(), data.countA.data(),
                  data.countH.data(), data.countB.data(), data.countX.data(), data.category.data(),
                  data.chi.data(), data.segregationP.data(), data.rec.data(), data.lod.data(),
                  data.crossovers.data(), data.distance.data());
    LeaveChild(call);
  }
  ProgressLine progress("pairs", quiet || data.rec.size() == 0);
  while (progress.Shown() && StillRunning(call)) {
    progress.Update(PairsDone(data), static_cast<double>(data.rec.size()));
  }
  CallOutcome outcome = AwaitChild(call);
  data.names = Narrowed(names, data.numMarkers);
  return outcome;
}

// A number after a key in a file of "Key: value unit" lines, or a lone number; infinity when there is none.
double NumberIn(const char* path, std::string_view key) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with(key)) continue;
    const std::size_t digits = line.find_first_of("0123456789");
    double value = 0;
    if (digits == std::string::npos) break;
    const auto result = std::from_chars(line.data() + digits, line.data() + line.size(), value);
    if (result.ec == std::errc{}) return value;
  }
  return std::numeric_limits<double>::infinity();
}

}  // namespace

std::vector<std::string> NarrowedNames(std::span<const int32_t> wide, std::size_t count, std::size_t width) {
  std::vector<std::string> names(count);
  for (std::size_t m = 0; m < count; ++m) {
    for (std::size_t c = 0; c < width; ++c) {
      names[m] += static_cast<char>(static_cast<unsigned char>(wide[c * count + m]));
    }
    names[m] = WithoutTrailing(names[m], " ");
  }
  return names;
}

double MapBytes(int32_t markers, double fileBytes, double cells) {
  const double n = markers;
  return n * (n - 1) / 2 * 4 * sizeof(float) + n * 4 * (kNameLength + 8) + cells + fileBytes + kRoom;
}

double AvailableBytes() {
  const double free = NumberIn("/proc/meminfo", "MemAvailable:") * 1024;  // told in KiB
  return std::min(free, NumberIn("/sys/fs/cgroup/memory.max", ""));
}

LoadResult LoadMap(const InputFile& file, bool quiet, MapData& data) {
  PreRead before = FindNumMarkers(file, nullptr);
  if (!before.good) return {false, std::move(before.log)};
  RefuseWhatCannotBeThere(file, before.markers);
  const double needed = MapBytes(before.markers, file.bytes, DeclaredCells(file));
  RefuseWhatCannotFit(file, before.markers, needed);
  TellSize(before.markers, needed, quiet);
  AllocateMap(before.markers, data);
  SharedArray<int32_t> scalars(5);  // Status, then the four of the header
  CallOutcome outcome = CheckMap(file, quiet, data, scalars);
  data.populationType = scalars[1];
  data.mappingFunction = scalars[2];
  data.markerSpaceType = scalars[3];
  data.populationSize = scalars[4];
  return {scalars[0] != kStatusWrong, std::move(outcome.log)};
}

LoadResult LoadBin(const InputFile& file, int32_t moduleCode, BinData& data) {
  PreRead before = FindNumMarkers(file, &moduleCode);
  if (!before.good) return {false, std::move(before.log)};
  RefuseWhatCannotBeThere(file, before.markers);
  const double cells = DeclaredCells(file);
  RefuseWhatCannotFit(file, before.markers, MapBytes(1, file.bytes, cells) + before.markers * 200.0);
  data.numMarkers = before.markers;
  data.anchor = SharedArray<int32_t>(Elements(before.markers));
  data.missingPercent = SharedArray<float>(Elements(before.markers));
  SharedArray<int32_t> names(kNameLength * Elements(before.markers)), status(1);
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    CHECKERRORBIN(&moduleCode, &length, file.absolute.data(), &data.numMarkers, names.data(),
                  data.anchor.data(), data.missingPercent.data(), &status[0]);
    LeaveChild(call);
  }
  CallOutcome outcome = AwaitChild(call);
  data.names = Narrowed(names, data.numMarkers);
  return {status[0] != kStatusWrong, std::move(outcome.log)};
}

}  // namespace host
