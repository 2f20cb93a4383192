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
#include "host/populations.h"
#include "host/progress.h"
#include "host/text.h"

namespace host {
namespace {

constexpr int32_t kLargeMarkers = 2000;          // from here on the size is told before the start
constexpr std::size_t kWatchedPairs = 100000;    // fewer are done at once
constexpr std::size_t kHeaderBytes = 1U << 20U;  // header and its remarks lie within the first MB
constexpr double kRoom = 64e6;                   // bytes for tables and code beyond the arrays

constexpr std::string_view kMapGenotypes[] = {"A", "H", "B"};  // D counts as A, R as B
constexpr std::string_view kClonalPopulations[] = {"clonal F1", "double cross"};
constexpr std::string_view kMultiParentPopulations[] = {"4PDH", "4PRIL", "8PDH", "8PRIL"};

struct CallRow {
  void (*preRead)(const int32_t*, const char*, int32_t*, int32_t*) noexcept;
  int numbersPerPair;
};
constexpr CallRow kCallRows[] = {
    // in the order of TableKind
    {MAPFINDNUMMARKERS, 4},
    {CDMFINDNUMMARKERS, 10},
    {PLMFINDNUMMARKERS, 4},
};
const CallRow& CallRowOf(TableKind kind) { return kCallRows[static_cast<std::size_t>(kind)]; }

std::size_t Elements(int32_t count) { return static_cast<std::size_t>(count); }
std::size_t Pairs(int32_t markers) {
  return markers < 2 ? 0 : Elements(markers) * (Elements(markers) - 1) / 2;
}

std::vector<std::string> Narrowed(const SharedArray<int32_t>& wide, int32_t markers) {
  return NarrowedNames(wide.view(), Elements(markers), kMarkerNameLength);
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

void AllocateMarkers(TableKind kind, int32_t markers, MapData& data) {
  data.kind = kind;
  data.numMarkers = markers;
  data.counts.clear();
  for (std::size_t k = 0; k < GenotypesOf(kind).size(); ++k) data.counts.emplace_back(Elements(markers));
  for (auto* array : {&data.anchor, &data.countX, &data.category}) {
    *array = SharedArray<int32_t>(Elements(markers));
  }
  for (auto* array : {&data.chi, &data.segregationP}) *array = SharedArray<float>(Elements(markers));
  const std::size_t pairs = Pairs(markers);
  for (auto* array : {&data.rec, &data.lod, &data.distance}) *array = SharedArray<float>(pairs);
  data.crossovers = SharedArray<float>(kind == TableKind::Map ? pairs : 0);
  const std::size_t parental = kind == TableKind::Cdm ? pairs : 0;
  for (PairTables& parent : data.parents) {
    for (auto* array : {&parent.rec, &parent.lod, &parent.distance}) *array = SharedArray<float>(parental);
  }
  data.phase = SharedArray<int32_t>(parental);
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

// `binCode`: of a BIN file, else null.
PreRead FindNumMarkers(const InputFile& file, TableKind kind, const int32_t* binCode) {
  SharedArray<int32_t> scalars(2);  // NumMarkers, Status
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    if (binCode != nullptr) {
      BINFINDNUMMARKERS(binCode, &length, file.absolute.data(), &scalars[0], &scalars[1]);
    } else {
      CallRowOf(kind).preRead(&length, file.absolute.data(), &scalars[0], &scalars[1]);
    }
    LeaveChild(call);
  }
  CallOutcome outcome = AwaitChild(call);
  return {scalars[1] != kStatusWrong, scalars[0], std::move(outcome.log)};
}

// In the child. `scalars`: Status, population type, mapping function, marker space type, population size.
void CheckMap(const InputFile& file, MapData& data, SharedArray<int32_t>& scalars, int32_t* names) {
  const auto length = static_cast<int32_t>(file.absolute.size());
  auto& n = data.counts;
  CHECKERRORMAP(&length, file.absolute.data(), &data.numMarkers, &scalars[0], &scalars[1], &scalars[2],
                &scalars[3], &scalars[4], names, data.anchor.data(), n[0].data(), n[1].data(), n[2].data(),
                data.countX.data(), data.category.data(), data.chi.data(), data.segregationP.data(),
                data.rec.data(), data.lod.data(), data.crossovers.data(), data.distance.data());
}

void CheckCdm(const InputFile& file, MapData& data, SharedArray<int32_t>& scalars, int32_t* names) {
  const auto length = static_cast<int32_t>(file.absolute.size());
  auto& n = data.counts;
  auto& [ab, cd] = data.parents;
  CHECKERRORCDM(&length, file.absolute.data(), &data.numMarkers, &scalars[0], &scalars[1], &scalars[2],
                &scalars[3], &scalars[4], names, data.anchor.data(), n[0].data(), n[1].data(), n[2].data(),
                n[3].data(), n[4].data(), n[5].data(), n[6].data(), n[7].data(), n[8].data(), n[9].data(),
                n[10].data(), data.countX.data(), data.chi.data(), data.segregationP.data(),
                data.category.data(), ab.rec.data(), cd.rec.data(), data.rec.data(), ab.lod.data(),
                cd.lod.data(), data.lod.data(), ab.distance.data(), cd.distance.data(), data.distance.data(),
                data.phase.data());
}

void CheckPlm(const InputFile& file, MapData& data, SharedArray<int32_t>& scalars, int32_t* names) {
  const auto length = static_cast<int32_t>(file.absolute.size());
  auto& n = data.counts;
  CHECKERRORPLM(&length, file.absolute.data(), &data.numMarkers, &scalars[0], &scalars[1], &scalars[2],
                &scalars[3], &scalars[4], names, data.anchor.data(), n[0].data(), n[1].data(), n[2].data(),
                n[3].data(), n[4].data(), n[5].data(), n[6].data(), n[7].data(), data.countX.data(),
                data.chi.data(), data.segregationP.data(), data.category.data(), data.rec.data(),
                data.lod.data(), data.distance.data());
}

CallOutcome Check(const InputFile& file, bool quiet, MapData& data, SharedArray<int32_t>& scalars) {
  SharedArray<int32_t> names(kMarkerNameLength * Elements(data.numMarkers));
  IsolatedCall call;
  if (EnterChild(call)) {
    switch (data.kind) {
      case TableKind::Map:
        CheckMap(file, data, scalars, names.data());
        break;
      case TableKind::Cdm:
        CheckCdm(file, data, scalars, names.data());
        break;
      case TableKind::Plm:
        CheckPlm(file, data, scalars, names.data());
        break;
    }
    LeaveChild(call);
  }
  ProgressLine progress("pairs", quiet || data.rec.size() < kWatchedPairs);
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

std::optional<TableKind> MarkerKindOf(std::string_view module) {
  for (const TableKind kind : {TableKind::Map, TableKind::Cdm, TableKind::Plm}) {
    if (module == ModuleOf(kind)) return kind;
  }
  return std::nullopt;
}

std::span<const std::string_view> GenotypesOf(TableKind kind) {
  if (kind == TableKind::Map) return kMapGenotypes;
  const auto codes = CodesOf(kind);
  return codes.first(codes.size() - 1);
}

std::string_view PopulationWords(TableKind kind, int64_t type) {
  std::span<const std::string_view> names = kClonalPopulations;
  if (kind == TableKind::Plm) names = kMultiParentPopulations;
  if (kind == TableKind::Map) return type >= 1 && type <= 20 ? kPopulations[type - 1].name : "unknown";
  const bool known = type >= 1 && type <= static_cast<int64_t>(names.size());
  return known ? names[static_cast<std::size_t>(type - 1)] : "unknown";
}

std::string CategoryText(const MapData& data, int32_t marker) {
  constexpr int32_t doubleCross = 2;
  constexpr std::string_view clonal[] = {"ABCD", "A=B", "C=D", "AB=CD", "A=DB=C"};
  const int32_t category = data.Category(marker);
  if (data.kind == TableKind::Map) return {};
  if (data.kind == TableKind::Plm) {
    std::string letters = std::to_string(category);  // a digit a parent, 1 for the first allele
    for (char& c : letters) c = static_cast<char>(c - '1' + 'A');
    return letters;
  }
  if (category == 4 && data.populationType == doubleCross) return "A=CB=D";
  return category >= 1 && category <= 5 ? std::string(clonal[category - 1]) : "";
}

double MapBytes(TableKind kind, int32_t markers, double fileBytes, double cells) {
  const double n = markers;
  const auto perMarker = static_cast<double>(kMarkerNameLength + 5 + CodesOf(kind).size());
  return n * (n - 1) / 2 * CallRowOf(kind).numbersPerPair * sizeof(float) + n * 4 * perMarker + cells +
         fileBytes + kRoom;
}

double AvailableBytes() {
  const double free = NumberIn("/proc/meminfo", "MemAvailable:") * 1024;  // told in KiB
  return std::min(free, NumberIn("/sys/fs/cgroup/memory.max", ""));
}

LoadResult LoadMarkers(const InputFile& file, TableKind kind, bool quiet, MapData& data) {
  PreRead before = FindNumMarkers(file, kind, nullptr);
  if (!before.good) return {false, std::move(before.log)};
  RefuseWhatCannotBeThere(file, before.markers);
  const double needed = MapBytes(kind, before.markers, file.bytes, DeclaredCells(file));
  RefuseWhatCannotFit(file, before.markers, needed);
  TellSize(before.markers, needed, quiet);
  AllocateMarkers(kind, before.markers, data);
  SharedArray<int32_t> scalars(5);
  CallOutcome outcome = Check(file, quiet, data, scalars);
  data.populationType = scalars[1];
  data.mappingFunction = scalars[2];
  data.markerSpaceType = scalars[3];
  data.populationSize = scalars[4];
  return {scalars[0] != kStatusWrong, std::move(outcome.log)};
}

LoadResult LoadBin(const InputFile& file, int32_t moduleCode, BinData& data) {
  PreRead before = FindNumMarkers(file, TableKind::Map, &moduleCode);
  if (!before.good) return {false, std::move(before.log)};
  RefuseWhatCannotBeThere(file, before.markers);
  const double cells = DeclaredCells(file);
  RefuseWhatCannotFit(file, before.markers,
                      MapBytes(TableKind::Map, 1, file.bytes, cells) + before.markers * 200.0);
  data.numMarkers = before.markers;
  data.anchor = SharedArray<int32_t>(Elements(before.markers));
  data.missingPercent = SharedArray<float>(Elements(before.markers));
  SharedArray<int32_t> names(kMarkerNameLength * Elements(before.markers)), status(1);
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
