#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/input_file.h"
#include "host/isolated_call.h"
#include "host/linkage_map.h"
#include "host/marker_data.h"

namespace host {

// The files of a run. They are made in a folder of their own beside their final places and get their final
// names at the end, all together, so that no half-written result ever bears one.
struct ResultFiles {
  std::filesystem::path stem;  // final path without extension
  ScratchFolder folder;
};

// STEM, or the input's path without extension when it is empty. Failure: UsageWrong for a stem that names no
// file, Other when its folder is missing or not writable or when a result would replace the input.
ResultFiles OpenResults(const std::string& stem, const InputFile& input);

// The same for any command: a result takes one of the `extensions` behind the stem, and none of `inputs` may
// be replaced.
ResultFiles OpenResults(const std::filesystem::path& stem, const std::vector<std::filesystem::path>& inputs,
                        const std::vector<std::string>& extensions);
// Path of a result that is not published yet.
std::filesystem::path Unpublished(const ResultFiles& results, const std::string& extension);

// The three project files of the mapping engines, made by the library and looked through afterwards, since
// the library has no way to tell that it could not.
void WriteProjectFiles(const ResultFiles& results, const InputFile& input, const MapData& data,
                       const LinkageMap& map);

void WriteText(const ResultFiles& results, const std::string& extension, const std::string& text);

// Gives the files their final names; returns them.
std::vector<std::string> Publish(const ResultFiles& results);

}  // namespace host
