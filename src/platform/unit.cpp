#include "platform/unit.h"

#include <sys/mman.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

#include "platform/fatal.h"

namespace platform {
namespace {

using OpenFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

struct FileUnit {
  std::string name;
  std::string path;  // from the root: the host may change its folder
  dev_t device = 0;  // with inode: the file, by whatever name
  ino_t inode = 0;
  std::string text;           // an input file, read at once; a record is a view into it
  std::size_t next = 0;       // where the next read begins
  std::size_t lastBegin = 0;  // of the record read last: met again in no time after a step back
  std::size_t lastEnd = 0;    // without its line end
  std::size_t lastNext = 0;   // 0 before the first read
  bool pastEnd = false;       // a read has met the end of the file
  bool flushRecords = false;  // a default file: nobody closes it, so each record is written out at once
  OpenFile in{nullptr, &std::fclose};  // held while connected, or its inode could go to a new file
  OpenFile out{nullptr, &std::fclose};
};

// Process-wide: the unit table. Destroying it at the end of the process writes out what is still open.
std::map<int32_t, FileUnit>& Units() {
  static std::map<int32_t, FileUnit> units;
  return units;
}

[[noreturn]] void FatalFile(const char* what, std::string_view name, const char* why) {
  std::string line = what;
  line += " '";
  line += name;
  line += "': ";
  line += why;
  Fatal(line);
}

std::string FromTheRoot(const std::string& name) {
  std::error_code failed;
  const std::filesystem::path path = std::filesystem::absolute(name, failed);
  return failed ? name : path.lexically_normal().string();
}

bool IsFileOf(const FileUnit& unit, const std::string& name) {
  struct stat status = {};
  return unit.path == FromTheRoot(name) ||
         (stat(name.c_str(), &status) == 0 && status.st_dev == unit.device && status.st_ino == unit.inode);
}

void KeepIdentity(FileUnit& unit, std::FILE* file) {
  struct stat status = {};
  if (fstat(fileno(file), &status) == 0) {
    unit.device = status.st_dev;
    unit.inode = status.st_ino;
  }
  unit.path = FromTheRoot(unit.name);
}

// The name as the file system takes it; a name with a NUL inside names no file.
std::string SystemName(std::string_view name) {
  if (name.find('\0') != std::string_view::npos) {
    FatalFile("cannot open", name.substr(0, name.find('\0')), "its name holds a NUL character");
  }
  return std::string(name);
}

// Asks for large pages under a large text, which saves the better part of the time to have its memory. Advice
// only: nothing depends on it.
void AdviseLargePages(std::string& text) {
  constexpr std::size_t kPage = 4096, kLarge = std::size_t{1} << 22;
  void* place = text.data();
  std::size_t bytes = text.capacity();
  if (bytes >= kLarge && std::align(kPage, kPage, place, bytes) != nullptr) {
    madvise(place, bytes / kPage * kPage, MADV_HUGEPAGE);
  }
}

void ReadWhole(FileUnit& unit) {
  struct stat status = {};
  if (stat(unit.name.c_str(), &status) != 0) {
    FatalFile("cannot open", unit.name, std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    FatalFile("cannot open", unit.name, "not a regular file");
  }
  unit.in.reset(std::fopen(unit.name.c_str(), "rb"));
  std::FILE* const file = unit.in.get();
  if (file == nullptr) {
    FatalFile("cannot open", unit.name, std::strerror(errno));
  }
  KeepIdentity(unit, file);
  // To the end, wherever that is by now: the size may be that of a file that still grows.
  constexpr std::size_t kGrowth = 65536;
  const auto size = static_cast<std::size_t>(status.st_size);
  unit.text.reserve(size + 1);
  AdviseLargePages(unit.text);
  std::size_t got = 0;
  while (std::feof(file) == 0) {
    unit.text.resize(got < size ? size + 1 : got + kGrowth);
    got += std::fread(unit.text.data() + got, 1, unit.text.size() - got, file);
    if (std::ferror(file) != 0) {
      FatalFile("cannot read", unit.name, std::strerror(errno));
    }
  }
  unit.text.resize(got);
}

void OpenForWriting(FileUnit& unit) {
  unit.out.reset(std::fopen(unit.name.c_str(), "w"));
  if (!unit.out) {
    FatalFile("cannot write", unit.name, std::strerror(errno));
  }
  KeepIdentity(unit, unit.out.get());
}

FileUnit& Connected(int32_t unit) {
  const auto found = Units().find(unit);
  if (found == Units().end()) {
    Fatal("read from unit " + std::to_string(unit) + ", which has no file");
  }
  return found->second;
}

// Two units may read one file; a file that is written has one unit.
void RefuseFileInUse(const std::string& name, OpenStatus status) {
  for (const auto& [number, connected] : Units()) {
    const bool bothRead = status == OpenStatus::Old && !connected.out;
    if (!bothRead && IsFileOf(connected, name)) {
      FatalFile("cannot open", name, "it is in use already");
    }
  }
}

FileUnit& ConnectDefaultFile(int32_t number) {
  FileUnit unit;
  unit.name = "fort." + std::to_string(number);
  RefuseFileInUse(unit.name, OpenStatus::Replace);
  unit.flushRecords = true;
  OpenForWriting(unit);
  return Units().emplace(number, std::move(unit)).first->second;
}

}  // namespace

void OpenUnit(int32_t number, std::string_view name, OpenStatus status) {
  CloseUnit(number);
  FileUnit unit;
  unit.name = SystemName(name);
  RefuseFileInUse(unit.name, status);
  if (status == OpenStatus::Old) {
    ReadWhole(unit);
  } else {
    OpenForWriting(unit);
  }
  Units().emplace(number, std::move(unit));
}

void CloseUnit(int32_t number) {
  const auto found = Units().find(number);
  if (found == Units().end()) {
    return;
  }
  FileUnit unit = std::move(found->second);
  Units().erase(found);
  if (unit.out && std::fclose(unit.out.release()) != 0) {
    FatalFile("cannot write", unit.name, std::strerror(errno));
  }
}

std::size_t BytesLeft(int32_t number) {
  const FileUnit& unit = Connected(number);
  return unit.text.size() - unit.next;
}

bool IsConnected(int32_t unit) { return Units().contains(unit); }

bool IsConnected(std::string_view name) {
  const std::string systemName = SystemName(name);
  for (const auto& [number, unit] : Units()) {
    if (IsFileOf(unit, systemName)) {
      return true;
    }
  }
  return false;
}

bool ReadRecord(int32_t number, std::string_view& record) {
  FileUnit& unit = Connected(number);
  const std::string_view text = unit.text;
  if (unit.next >= text.size()) {
    unit.pastEnd = true;
    return false;
  }
  if (unit.lastNext == 0 || unit.next != unit.lastBegin) {
    const std::size_t end = text.find('\n', unit.next);
    unit.lastBegin = unit.next;
    unit.lastEnd = end == std::string_view::npos ? text.size() : end;
    unit.lastNext = end == std::string_view::npos ? text.size() : end + 1;
  }
  record = text.substr(unit.lastBegin, unit.lastEnd - unit.lastBegin);
  if (!record.empty() && record.back() == '\r') {
    record.remove_suffix(1);
  }
  unit.next = unit.lastNext;
  return true;
}

void StepBack(int32_t number) {
  FileUnit& unit = Connected(number);
  if (unit.pastEnd) {
    unit.pastEnd = false;  // the end of the file is the record stepped over
    return;
  }
  if (unit.next == unit.lastNext) {
    unit.next = unit.lastBegin;
    return;
  }
  if (unit.next == 0) {
    return;
  }
  // The record before `next` ends there; the line end before its own is where it begins.
  const std::size_t before = unit.next < 2 ? std::string::npos : unit.text.rfind('\n', unit.next - 2);
  unit.next = before == std::string::npos ? 0 : before + 1;
}

void WriteRecord(int32_t number, std::string_view record) {
  const auto found = Units().find(number);
  FileUnit& unit = found == Units().end() ? ConnectDefaultFile(number) : found->second;
  if (!unit.out) {
    FatalFile("cannot write", unit.name, "it is open for reading");
  }
  std::FILE* out = unit.out.get();
  const bool written = std::fwrite(record.data(), 1, record.size(), out) == record.size() &&
                       std::fputc('\n', out) != EOF && (!unit.flushRecords || std::fflush(out) == 0);
  if (!written) {
    FatalFile("cannot write", unit.name, std::strerror(errno));
  }
}

}  // namespace platform
