#include "host/result_files.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "host/exit_code.h"

namespace host {
namespace {

constexpr std::string_view kName = "result";  // of the files until they are published
std::filesystem::path Final(const std::filesystem::path& stem, const std::string& extension) {
  return stem.string() + extension;
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
