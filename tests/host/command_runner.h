#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// A folder of the test's own, with helpers to fill it and to run the built command in it.
struct Sandbox {
  Sandbox();
  Sandbox(const Sandbox&) = delete;
  Sandbox& operator=(const Sandbox&) = delete;
  ~Sandbox();

  std::filesystem::path Write(const std::string& name, std::string_view text) const;
  std::string Read(const std::string& name) const;
  // Names in the folder (or one below it), sorted; hidden ones too.
  std::vector<std::string> Names(const std::string& below = "") const;

  std::filesystem::path folder;   // the current directory of the command
  std::filesystem::path scratch;  // its TMPDIR, outside of the folder
};

struct CommandResult {
  int code = -1;
  std::string out, err;
};

// largestFile limits the bytes of every file that the command writes; 0 for no limit.
CommandResult RunCommand(const Sandbox& sandbox, const std::vector<std::string>& arguments,
                         std::size_t largestFile = 0);
