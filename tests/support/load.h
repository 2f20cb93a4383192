#pragma once

// Loads a text as a project file of a module, with its reports caught in a log.

#include <string>

#include "platform/unit.h"
#include "project/loader.h"
#include "project/store.h"
#include "tests/support/scratch.h"

namespace support {

// The log's text, or "good". The store keeps what was loaded, until the next load of the module.
inline std::string Load(project::Module module, int32_t moduleCode, const std::string& text) {
  project::ReleaseStore(module);
  std::filesystem::remove("in.txt");  // new files cost the file system less than ones cut to nothing
  std::filesystem::remove("load.log");
  WriteFile("in.txt", text);
  platform::OpenUnit(project::kLogUnit, "load.log", platform::OpenStatus::Replace);
  int32_t status = 0;
  project::LoadModule(module, moduleCode, "in.txt", status);
  platform::CloseUnit(project::kLogUnit);
  EXPECT_FALSE(platform::IsConnected(project::kProjectUnit));
  const std::string log = ReadFile("load.log");
  EXPECT_EQ(status, log.empty() ? 0 : -1) << log;
  return log.empty() ? "good" : log;
}

inline std::string Load(project::Module module, const std::string& text) {
  return Load(module, project::RowOf(module).moduleCode, text);
}

// Fields as reports have them.
inline std::string Integer8(int32_t value) {
  const std::string digits = std::to_string(value);
  return std::string(8 - digits.size(), ' ') + digits;
}
inline std::string Padded(std::string text, std::size_t width) {
  return text.append(width - text.size(), ' ');
}
inline std::string NameField(const std::string& text) { return Padded(text, project::kNameWidth); }

}  // namespace support
