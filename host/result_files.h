#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/input_file.h"
#include "host/isolated_call.h"

namespace host {

// The files of a run. They are made in a folder of their own beside their final places and get their final
// names at the end, all together, so that no half-written result ever bears one.
struct ResultFiles {
  std::filesystem::path stem;  // final path without extension
  ScratchFolder folder;
};

// A result takes one of the `extensions` behind the stem. Failure: UsageWrong for a stem that names no file,
// Other when its folder is missing or not writable or when a result would replace one of the `inputs`.
ResultFiles OpenResults(const std::filesystem::path& stem, const std::vector<std::filesystem::path>& inputs,
                        const std::vector<std::string>& extensions);
// Path of a result that is not published yet.
std::filesystem::path Unpublished(const ResultFiles& results, const std::string& extension);

void WriteText(const ResultFiles& results, const std::string& extension, const std::string& text);

// Gives the files their final names; returns them.
std::vector<std::string> Publish(const ResultFiles& results);

}  // namespace host
