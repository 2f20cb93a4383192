#include "host/result_files.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "frame/exports.h"
#include "host/exit_code.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kChromosomeName = 19;
constexpr std::string_view kName = "result";  // of the files until they are published
constexpr int32_t kIntervals = 1;

// Lines of a project file beyond one per chromosome and two per marker: remarks, header and headings.
struct ProjectFileRow {
  const char* extension;
  std::size_t fixedLines;
};
constexpr ProjectFileRow kProjectFiles[] = {{".bip", 51}, {".met", 50}, {".sdl", 46}};
constexpr const char* kTable = ".map.tsv";

std::filesystem::path Final(const std::filesystem::path& stem, const std::string& extension) {
  return stem.string() + extension;
}

// What MAPOUTPUT takes: places in map order, group after group.
struct FlatMap {
  std::string chromosomeNames;
  std::vector<int32_t> counts, order;
  std::vector<float> values;
};

FlatMap Flatten(const LinkageMap& map, int32_t markerSpaceType) {
  FlatMap flat;
  for (const LinkageGroup& group : map.groups) {
    flat.chromosomeNames += Padded(group.name, kChromosomeName);
    flat.counts.push_back(static_cast<int32_t>(group.places.size()));
    for (const MapPlace& place : group.places) {
      flat.order.push_back(place.marker);
      flat.values.push_back(markerSpaceType == kIntervals ? place.interval : place.position);
    }
  }
  return flat;
}

void CheckWritten(const ResultFiles& results, const FlatMap& flat) {
  for (const ProjectFileRow& row : kProjectFiles) {
    const std::string text = ReadWhole(Unpublished(results, row.extension));
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    const std::size_t wanted = row.fixedLines + flat.counts.size() + 2 * flat.order.size();
    if (lines != wanted || !text.ends_with('\n')) {
      throw Failure{ExitCode::Other, std::string("the ") + row.extension + " file came out incomplete: " +
                                         std::to_string(lines) + " of " + std::to_string(wanted) + " lines"};
    }
  }
}

void RefuseToReplace(const std::filesystem::path& stem, const std::vector<std::filesystem::path>& inputs,
                     const std::vector<std::string>& extensions) {
  for (const std::string& extension : extensions) {
    const std::filesystem::path target = Final(stem, extension);
    std::error_code error;
    for (const std::filesystem::path& input : inputs) {
      if (!std::filesystem::equivalent(target, input, error)) continue;
      throw Failure{ExitCode::Other, target.string() + " is the input itself; choose another -o STEM"};
    }
    if (std::filesystem::is_directory(target, error)) {
      throw Failure{ExitCode::Other, "cannot write " + target.string() + ": it is a folder"};
    }
  }
}

std::filesystem::path FolderOf(const std::filesystem::path& stem) {
  std::filesystem::path folder = stem.has_parent_path() ? stem.parent_path() : ".";
  std::error_code error;
  if (!std::filesystem::is_directory(folder, error)) {
    throw Failure{ExitCode::Other, "cannot write results: there is no folder " + folder.string()};
  }
  return folder;
}

}  // namespace

ResultFiles OpenResults(const std::string& stem, const InputFile& input) {
  std::filesystem::path path = stem;
  if (stem.empty()) path = std::filesystem::path(input.given).replace_extension();
  std::vector<std::string> extensions{kTable};
  for (const ProjectFileRow& row : kProjectFiles) extensions.emplace_back(row.extension);
  return OpenResults(path, {input.absolute}, extensions);
}

ResultFiles OpenResults(const std::filesystem::path& stem, const std::vector<std::filesystem::path>& inputs,
                        const std::vector<std::string>& extensions) {
  const std::string name = stem.filename().string();
  if (name.empty() || name == "." || name == "..") {
    throw Failure{ExitCode::UsageWrong,
                  "-o needs a file name without extension; \"" + stem.string() + "\" names a folder"};
  }
  const std::filesystem::path folder = FolderOf(stem);
  RefuseToReplace(stem, inputs, extensions);
  return {stem, {folder, ".tessarmont-"}};
}

std::filesystem::path Unpublished(const ResultFiles& results, const std::string& extension) {
  return results.folder.Path() / (std::string(kName) + extension);
}

void WriteProjectFiles(const ResultFiles& results, const InputFile& input, const MapData& data,
                       const LinkageMap& map) {
  const FlatMap flat = Flatten(map, data.markerSpaceType);
  const std::string stem = std::filesystem::absolute(results.folder.Path() / kName).string();
  const auto nameLength = static_cast<int32_t>(input.absolute.size());
  const auto stemLength = static_cast<int32_t>(stem.size());
  const auto places = static_cast<int32_t>(flat.order.size());
  const auto chromosomes = static_cast<int32_t>(flat.counts.size());
  IsolatedCall call;
  if (EnterChild(call)) {
    MAPOUTPUT(&nameLength, input.absolute.data(), &stemLength, stem.data(), &places, &chromosomes,
              flat.chromosomeNames.data(), flat.counts.data(), flat.order.data(), flat.values.data());
    LeaveChild(call);
  }
  const CallOutcome outcome = AwaitChild(call);
  if (!outcome.log.empty()) {
    throw Failure{ExitCode::Other, "the input changed while it was used: " + outcome.log.front()};
  }
  CheckWritten(results, flat);
}

void WriteText(const ResultFiles& results, const std::string& extension, const std::string& text) {
  std::ofstream file(Unpublished(results, extension), std::ios::binary);
  file << text;
  file.close();
  if (!file) throw Failure{ExitCode::Other, "cannot write " + Final(results.stem, extension).string()};
}

std::vector<std::string> Publish(const ResultFiles& results) {
  if (CaughtSignal() != 0) throw Failure{ExitCode::Other, "interrupted; nothing was written"};
  std::vector<std::string> extensions;
  for (const auto& entry : std::filesystem::directory_iterator(results.folder.Path())) {
    extensions.push_back(entry.path().filename().string().substr(kName.size()));
  }
  std::sort(extensions.begin(), extensions.end());
  std::vector<std::string> written;
  for (const std::string& extension : extensions) {
    std::error_code error;
    std::filesystem::rename(Unpublished(results, extension), Final(results.stem, extension), error);
    if (error) {
      throw Failure{ExitCode::Other,
                    "cannot write " + Final(results.stem, extension).string() + ": " + error.message()};
    }
    written.push_back(Final(results.stem, extension).string());
  }
  return written;
}

}  // namespace host
