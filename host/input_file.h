#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// The kinds of project file, told by extension. `kind` says what is inside, in words for a message.
struct ModuleRow {
  std::string_view code;       // "MAP"
  std::string_view extension;  // ".map"
  std::string_view kind;
  bool checked;  // a check of it exists
};
inline constexpr ModuleRow kModules[] = {
    {"MAP", ".map", "markers of a bi-parental population", true},
    {"BIN", ".bin", "markers for binning", true},
    {"CDM", ".cdm", "markers of a clonal F1 or double cross", true},
    {"PLM", ".plm", "markers of a multi-parent population", true},
    {"CMP", ".cmp", "maps for a consensus", true},
    {"BIP", ".bip", "map, markers and traits of a bi-parental population", true},
    {"MET", ".met", "map, markers and traits in several environments", true},
    {"NAM", ".nam", "map, markers and traits of nested families", true},
    {"CSL", ".csl", "a closed set of lines", true},
    {"SDL", ".sdl", "map and markers for segregation distortion", true},
    {"CDQ", ".cdq", "map, markers and traits of a clonal F1 or double cross", true},
    {"PLQ", ".plq", "map, markers and traits of a multi-parent population", true},
};

const ModuleRow* ModuleOfExtension(const std::filesystem::path& path);  // any case; null when unknown
const ModuleRow* ModuleOfCode(std::string_view code);                   // any case; null when unknown
std::string CheckedModules();                                           // "MAP (.map), BIN (.bin)"

struct InputFile {
  std::filesystem::path given;  // as the user wrote it, for messages
  std::string absolute;         // as the library gets it
  double bytes;
};

// Throws Failure before the library could stop on the file: missing, a folder, not a regular file, not
// readable, no rights (Other); empty or plainly of another kind (InputWrong).
InputFile OpenInput(const std::filesystem::path& path);

// Throws the Failure InputWrong "PATH, line N: WHY".
[[noreturn]] void FailAt(const std::filesystem::path& path, std::size_t line, const std::string& why);

// The whole file. Failure: Other.
std::string ReadWhole(const std::filesystem::path& path);

// What the first bytes of a file look like, when they cannot be a project file.
std::optional<std::string> ForeignKind(std::string_view head);

}  // namespace host
