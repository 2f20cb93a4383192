#pragma once

// A test's own working folder, and files in it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace support {

// Enters a new empty folder; leaves and removes it at the end.
class ScratchFolder {
 public:
  ScratchFolder() : before_(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "tessarmont-XXXXXX").string();
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
    std::filesystem::current_path(folder_);
  }
  ~ScratchFolder() {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(folder_);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return folder_; }

 private:
  std::filesystem::path before_, folder_;
};

inline void WriteFile(const std::string& name, const std::string& text) {
  std::ofstream(name, std::ios::binary) << text;
}

inline std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  EXPECT_TRUE(file) << name;
  return {std::istreambuf_iterator<char>(file), {}};
}

inline bool Exists(const std::string& name) { return std::filesystem::exists(name); }

}  // namespace support
