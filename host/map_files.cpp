#include "host/map_files.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "frame/exports.h"
#include "host/exit_code.h"
#include "host/isolated_call.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kChromosomeName = 19;
constexpr int32_t kIntervals = 1;

// How many lines a file has beyond its fixed ones, which are remarks, header and headings.
enum class Grows {
  Project,    // a line a chromosome, two a place
  Places,     // a line a place
  Summary,    // a line a place (or an empty group), a chromosome and a marker left out
  PairTable,  // a line a place
};
enum class On { Whole, AB, CD };  // the map that the file is about

struct FileRow {
  TableKind kind;
  std::string_view extension;
  Grows grows;
  std::size_t fixedLines;
  On map = On::Whole;
  bool TableSwitches::*asked = nullptr;  // a pair table that is written on request
};
constexpr FileRow kFiles[] = {
    {TableKind::Map, ".bip", Grows::Project, 51},
    {TableKind::Map, ".met", Grows::Project, 50},
    {TableKind::Map, ".sdl", Grows::Project, 46},
    {TableKind::Cdm, ".cdq", Grows::Project, 37},
    {TableKind::Cdm, ".hap", Grows::Places, 1},
    {TableKind::Cdm, ".sum", Grows::Summary, 6},
    {TableKind::Cdm, ".sumf", Grows::Summary, 6, On::AB},
    {TableKind::Cdm, ".summ", Grows::Summary, 6, On::CD},
    {TableKind::Cdm, ".rec", Grows::PairTable, 1, On::Whole, &TableSwitches::rec},
    {TableKind::Cdm, ".recf", Grows::PairTable, 1, On::AB, &TableSwitches::rec},
    {TableKind::Cdm, ".recm", Grows::PairTable, 1, On::CD, &TableSwitches::rec},
    {TableKind::Cdm, ".lod", Grows::PairTable, 1, On::Whole, &TableSwitches::lod},
    {TableKind::Cdm, ".lodf", Grows::PairTable, 1, On::AB, &TableSwitches::lod},
    {TableKind::Cdm, ".lodm", Grows::PairTable, 1, On::CD, &TableSwitches::lod},
    {TableKind::Cdm, ".dis", Grows::PairTable, 1, On::Whole, &TableSwitches::distance},
    {TableKind::Cdm, ".disf", Grows::PairTable, 1, On::AB, &TableSwitches::distance},
    {TableKind::Cdm, ".dism", Grows::PairTable, 1, On::CD, &TableSwitches::distance},
    {TableKind::Plm, ".plq", Grows::Project, 29},
    {TableKind::Plm, ".sum", Grows::Summary, 6},
    {TableKind::Plm, ".rec", Grows::PairTable, 1, On::Whole, &TableSwitches::rec},
    {TableKind::Plm, ".lod", Grows::PairTable, 1, On::Whole, &TableSwitches::lod},
    {TableKind::Plm, ".dis", Grows::PairTable, 1, On::Whole, &TableSwitches::distance},
};

bool IsWritten(const FileRow& row, TableKind kind, const TableSwitches& tables) {
  return row.kind == kind && (row.asked == nullptr || tables.*row.asked);
}

// What the output exports take: places in map order, group after group.
struct FlatMap {
  std::string file, stem, chromosomeNames;
  int32_t fileLength = 0, stemLength = 0, places = 0, chromosomes = 0;
  std::vector<int32_t> counts, order, deleted;
  std::vector<float> values;
};

// MAP files ask for intervals or positions, the others take positions on the whole map.
FlatMap Flatten(const ResultFiles& results, const InputFile& input, const MapData& data,
                const LinkageMap& map) {
  FlatMap flat;
  flat.file = input.absolute;
  flat.stem = std::filesystem::absolute(Unpublished(results, "")).string();
  const bool intervals = data.kind == TableKind::Map && data.markerSpaceType == kIntervals;
  for (const LinkageGroup& group : map.groups) {
    flat.chromosomeNames += Padded(group.name, kChromosomeName);
    flat.counts.push_back(static_cast<int32_t>(group.places.size()));
    for (const MapPlace& place : group.places) {
      flat.order.push_back(place.marker);
      flat.values.push_back(intervals ? place.interval : place.position);
    }
  }
  flat.deleted = map.unlinked;
  flat.fileLength = static_cast<int32_t>(flat.file.size());
  flat.stemLength = static_cast<int32_t>(flat.stem.size());
  flat.places = static_cast<int32_t>(flat.order.size());
  flat.chromosomes = static_cast<int32_t>(flat.counts.size());
  return flat;
}

// In the child.
void CallOutput(const FlatMap& flat, MapData& data, const TableSwitches& tables) {
  const int32_t rec = tables.rec ? 1 : 0, lod = tables.lod ? 1 : 0, distance = tables.distance ? 1 : 0;
  auto& [ab, cd] = data.parents;
  switch (data.kind) {
    case TableKind::Map:
      MAPOUTPUT(&flat.fileLength, flat.file.data(), &flat.stemLength, flat.stem.data(), &flat.places,
                &flat.chromosomes, flat.chromosomeNames.data(), flat.counts.data(), flat.order.data(),
                flat.values.data());
      return;
    case TableKind::Cdm:
      CDMOUTPUT(&rec, &lod, &distance, &flat.fileLength, flat.file.data(), &flat.stemLength, flat.stem.data(),
                &flat.places, &flat.chromosomes, flat.chromosomeNames.data(), flat.counts.data(),
                flat.order.data(), flat.values.data(), &data.numMarkers, flat.deleted.data(), ab.rec.data(),
                cd.rec.data(), data.rec.data(), ab.lod.data(), cd.lod.data(), data.lod.data(),
                ab.distance.data(), cd.distance.data(), data.distance.data(), data.phase.data());
      return;
    case TableKind::Plm:
      PLMOUTPUT(&rec, &lod, &distance, &flat.fileLength, flat.file.data(), &flat.stemLength, flat.stem.data(),
                &flat.places, &flat.chromosomes, flat.chromosomeNames.data(), flat.counts.data(),
                flat.order.data(), flat.values.data(), &data.numMarkers, flat.deleted.data(), data.rec.data(),
                data.lod.data(), data.distance.data());
      return;
  }
}

bool IsOn(const MapPlace& place, On map) {
  return map == On::Whole || place.parent[map == On::AB ? 0 : 1].onMap;
}

std::size_t LinesOf(const FileRow& row, const LinkageMap& map) {
  std::size_t kept = 0, places = 0, empty = 0;
  for (const LinkageGroup& group : map.groups) {
    const auto on =
        static_cast<std::size_t>(std::count_if(group.places.begin(), group.places.end(),
                                               [&](const MapPlace& place) { return IsOn(place, row.map); }));
    kept += on;
    places += group.places.size();
    empty += on == 0 ? 1 : 0;
  }
  const std::size_t groups = map.groups.size();
  switch (row.grows) {
    case Grows::Project:
      return row.fixedLines + groups + 2 * places;
    case Grows::Summary:
      return row.fixedLines + kept + empty + groups + (places - kept) + map.unlinked.size();
    case Grows::Places:
    case Grows::PairTable:
      break;
  }
  return row.fixedLines + kept;
}

void CheckWritten(const ResultFiles& results, const LinkageMap& map, const FileRow& row) {
  const std::string text = ReadWhole(Unpublished(results, std::string(row.extension)));
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  const std::size_t wanted = LinesOf(row, map);
  if (lines == wanted && text.ends_with('\n')) return;
  throw Failure{ExitCode::Other, "the " + std::string(row.extension) + " file came out incomplete: " +
                                     std::to_string(lines) + " of " + std::to_string(wanted) + " lines"};
}

}  // namespace

TableSwitches ReadTableSwitches(const std::string& words) {
  TableSwitches tables;
  std::string_view rest = words;
  while (!rest.empty()) {
    const std::string_view word = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(word.size() + 1, rest.size()));
    bool* table = word == "rec" ? &tables.rec : word == "lod" ? &tables.lod : nullptr;
    if (word == "dis") table = &tables.distance;
    if (table == nullptr) {
      throw Failure{ExitCode::UsageWrong,
                    "--tables takes rec, lod and dis, parted by commas, not \"" + std::string(word) + "\""};
    }
    *table = true;
  }
  return tables;
}

std::vector<std::string> ResultExtensions(TableKind kind, const TableSwitches& tables) {
  std::vector<std::string> extensions;
  for (const FileRow& row : kFiles) {
    if (IsWritten(row, kind, tables)) extensions.emplace_back(row.extension);
  }
  return extensions;
}

void WriteResultFiles(const ResultFiles& results, const InputFile& input, MapData& data,
                      const LinkageMap& map, const TableSwitches& tables) {
  const FlatMap flat = Flatten(results, input, data, map);
  IsolatedCall call;
  if (EnterChild(call)) {
    CallOutput(flat, data, tables);
    LeaveChild(call);
  }
  const CallOutcome outcome = AwaitChild(call);
  if (!outcome.log.empty()) {
    throw Failure{ExitCode::Other, "the input changed while it was used: " + outcome.log.front()};
  }
  for (const FileRow& row : kFiles) {
    if (IsWritten(row, data.kind, tables)) CheckWritten(results, map, row);
  }
}

}  // namespace host
