#include "host/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "host/exit_code.h"
#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kHeadBytes = 4096;  // enough to know a foreign format by

struct ForeignRow {
  std::string_view start;
  std::string_view kind;
};
constexpr ForeignRow kForeign[] = {
    {"\x1f\x8b", "a gzip-compressed file; unpack it first"},
    {"PK\x03\x04", "a zip archive or spreadsheet; save the table as plain text"},
    {"\xd0\xcf\x11\xe0", "an office document; save the table as plain text"},
    {"%PDF", "a PDF document"},
    {"\xff\xfe", "text in UTF-16; save it as plain text (UTF-8 or ASCII)"},
    {"\xfe\xff", "text in UTF-16; save it as plain text (UTF-8 or ASCII)"},
    {"\xef\xbb\xbf", "text with a byte order mark; save it as UTF-8 without one"},
    {"##fileformat=VCF", "a VCF file; \"tessarmont import vcf\" reads it"},
    {"<", "an HTML or XML document"},
    {"{", "a JSON document"},
    {"data type ", "a Mapmaker or OneMap file; \"tessarmont import raw\" reads it"},
    {"population_type", "an MSTmap file; \"tessarmont import mstmap\" reads it"},
};

[[noreturn]] void FailOnFile(const std::filesystem::path& path, const std::string& why) {
  throw Failure{ExitCode::Other, "cannot read " + path.string() + ": " + why};
}

struct Descriptor {
  explicit Descriptor(int number) : value(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (value >= 0) close(value);
  }
  int value;
};

}  // namespace

const ModuleRow* ModuleOfExtension(const std::filesystem::path& path) {
  const std::string extension = path.extension().string();
  for (const ModuleRow& row : kModules) {
    if (EqualIgnoringCase(extension, row.extension)) return &row;
  }
  return nullptr;
}

const ModuleRow* ModuleOfCode(std::string_view code) {
  for (const ModuleRow& row : kModules) {
    if (EqualIgnoringCase(code, row.code)) return &row;
  }
  return nullptr;
}

std::string CheckedModules() {
  std::string list;
  for (const ModuleRow& row : kModules) {
    if (!row.checked) continue;
    if (!list.empty()) list += ", ";
    list += std::string(row.code) + " (" + std::string(row.extension) + ")";
  }
  return list;
}

std::optional<std::string> ForeignKind(std::string_view head) {
  for (const ForeignRow& row : kForeign) {
    if (head.starts_with(row.start)) return std::string(row.kind);
  }
  if (head.find('\0') != std::string_view::npos) return "a binary file";
  return std::nullopt;
}

InputFile OpenInput(const std::filesystem::path& path) {
  // O_NONBLOCK: opening a pipe that nobody writes must not wait.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.value < 0) {
    FailOnFile(path, errno == ENOENT ? "there is no such file" : std::generic_category().message(errno));
  }
  struct stat facts {};
  if (fstat(file.value, &facts) != 0) FailOnFile(path, std::generic_category().message(errno));
  if (S_ISDIR(facts.st_mode)) FailOnFile(path, "it is a folder");
  if (!S_ISREG(facts.st_mode)) FailOnFile(path, "it is not a regular file");
  std::string head(kHeadBytes, '\0');
  const ssize_t got = read(file.value, head.data(), head.size());
  if (got < 0) FailOnFile(path, std::generic_category().message(errno));
  if (got == 0) throw Failure{ExitCode::InputWrong, path.string() + " is empty"};
  head.resize(static_cast<std::size_t>(got));
  if (const auto kind = ForeignKind(head)) {
    throw Failure{ExitCode::InputWrong, path.string() + " is not a project file: it looks like " + *kind};
  }
  const std::size_t ends = head.find('\r');
  if (head.find('\n') == std::string::npos && ends != std::string::npos && ends + 1 < head.size()) {
    throw Failure{
        ExitCode::InputWrong,
        path.string() + ": its lines end in CR alone, as of old spreadsheets; save it with LF or CR LF"};
  }
  const std::string absolute = std::filesystem::absolute(path).string();
  if (absolute.ends_with(' ')) {
    throw Failure{ExitCode::Other, "the name of " + path.string() +
                                       " ends in a blank, which the library cuts; rename the file"};
  }
  return {path, absolute, static_cast<double>(facts.st_size)};
}

void FailAt(const std::filesystem::path& path, std::size_t line, const std::string& why) {
  throw Failure{ExitCode::InputWrong, path.string() + ", line " + std::to_string(line) + ": " + why};
}

std::string ReadWhole(const std::filesystem::path& path) {
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (error) FailOnFile(path, error.message());
  std::ifstream file(path, std::ios::binary);
  std::string text(size, '\0');
  if (!file.read(text.data(), static_cast<std::streamsize>(size))) FailOnFile(path, "a read failed");
  return text;
}

}  // namespace host
