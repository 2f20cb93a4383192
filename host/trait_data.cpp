#include "host/trait_data.h"

#include <algorithm>
#include <utility>

#include "frame/exports.h"
#include "host/exit_code.h"
#include "host/isolated_call.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kTraitName = 19;

struct TraitCheckRow {
  std::string_view module;
  void (*check)(const int32_t*, const char*, int32_t*) noexcept;
};
constexpr TraitCheckRow kTraitChecks[] = {
    {"BIP", CHECKERRORBIP}, {"MET", CHECKERRORMET}, {"NAM", CHECKERRORNAM}, {"CSL", CHECKERRORCSL},
    {"SDL", CHECKERRORSDL}, {"CDQ", CHECKERRORCDQ}, {"PLQ", CHECKERRORPLQ},
};

const TraitCheckRow* RowOfModule(std::string_view module) {
  const auto* row = std::find_if(std::begin(kTraitChecks), std::end(kTraitChecks),
                                 [&](const TraitCheckRow& candidate) { return candidate.module == module; });
  return row == std::end(kTraitChecks) ? nullptr : row;
}

// Runs GSFINDTRAITNAMEBPS for the names; the count is that of the first pre-read.
LoadResult LoadTraitNames(const InputFile& file, SelectionData& data) {
  const std::size_t traits = static_cast<std::size_t>(std::max(data.numTraits, 0));
  SharedArray<int32_t> scalars(2), names(kTraitName * traits);
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    GSFINDTRAITNAMEBPS(&length, file.absolute.data(), &data.numTraits, names.data(), &scalars[0],
                       &scalars[1]);
    LeaveChild(call);
  }
  CallOutcome outcome = AwaitChild(call);
  data.breedingSize = scalars[0];
  if (scalars[1] == 0) data.traits = NarrowedNames(names.view(), traits, kTraitName);
  return {scalars[1] == 0, std::move(outcome.log)};
}

}  // namespace

bool HasTraitCheck(std::string_view module) { return RowOfModule(module) != nullptr; }

LoadResult CheckTraitFile(const InputFile& file, std::string_view module) {
  const TraitCheckRow* row = RowOfModule(module);
  SharedArray<int32_t> status(1);
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    row->check(&length, file.absolute.data(), &status[0]);
    LeaveChild(call);
  }
  try {
    CallOutcome outcome = AwaitChild(call);
    return {status[0] != kStatusWrong, std::move(outcome.log)};
  } catch (const LibraryStopped& stop) {
    if (!stop.words.starts_with(kNoNumber)) throw;
    return {false, {stop.words}};
  }
}

LoadResult CountMaps(const InputFile& file, MapCounts& counts) {
  SharedArray<int32_t> scalars(5);  // the four counts, Status
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    CMPFINDNUMMARKERS(&length, file.absolute.data(), &scalars[0], &scalars[1], &scalars[2], &scalars[3],
                      &scalars[4]);
    LeaveChild(call);
  }
  CallOutcome outcome = AwaitChild(call);
  counts = {scalars[0], scalars[1], scalars[2], scalars[3]};
  return {scalars[4] != kStatusWrong, std::move(outcome.log)};
}

LoadResult LoadSelection(const InputFile& file, SelectionData& data) {
  SharedArray<int32_t> scalars(2);  // NumTraits, Status
  const auto length = static_cast<int32_t>(file.absolute.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    GSFINDNUMTRAITS(&length, file.absolute.data(), &scalars[0], &scalars[1]);
    LeaveChild(call);
  }
  CallOutcome outcome = AwaitChild(call);
  data.numTraits = scalars[1] == 0 ? scalars[0] : 0;
  const LoadResult names = LoadTraitNames(file, data);
  data.breedingWrong = scalars[1] != 0 && names.good;
  return {scalars[1] == 0 && names.good, std::move(outcome.log)};
}

}  // namespace host
