#include "host/importers/text_source.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <system_error>

#include "host/exit_code.h"
#include "host/input_file.h"

namespace importers {
namespace {

using host::ExitCode;
using host::Failure;

constexpr std::size_t kFirstBuffer = std::size_t{1} << 17U, kLongestLine = std::size_t{1} << 28U;
constexpr std::size_t kLargestText = std::size_t{1} << 32U;
constexpr unsigned kPackedBuffer = 1U << 16U;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF", kGzip = "\x1F\x8B";

// Of what the host knows as no project file, these are texts that importers read.
constexpr std::string_view kReadable[] = {kGzip, kUtf8Mark, "##fileformat=VCF", "data type ",
                                          "population_type"};

[[noreturn]] void ThrowFile(const std::string& path, const std::string& words) {
  throw Failure{ExitCode::InputWrong, path + ": " + words};
}

[[noreturn]] void ThrowSystem(const std::string& path, const std::string& words) {
  throw Failure{ExitCode::Other, "cannot read " + path + ": " + words};
}

// The empty block with which bgzip ends a file; without it whole blocks at the end may be lost.
constexpr std::string_view kBgzipEnd(
    "\x1F\x8B\x08\x04\0\0\0\0\0\xFF\x06\0BC\x02\0\x1B\0\x03\0\0\0\0\0\0\0\0\0", 28);

void RequireBgzipEnd(const std::filesystem::path& path, std::ifstream& file, std::string_view head) {
  const bool bgzip = head.starts_with("\x1F\x8B\x08\x04") && head.size() > 14 && head.substr(12, 2) == "BC";
  if (!bgzip) return;
  std::array<char, kBgzipEnd.size()> tail{};
  file.clear();
  file.seekg(-static_cast<std::streamoff>(tail.size()), std::ios::end);
  file.read(tail.data(), tail.size());
  if (file && std::string_view(tail.data(), tail.size()) == kBgzipEnd) return;
  ThrowFile(path.string(), "the file is packed by bgzip, but its end mark is missing: it is cut short");
}

void Judge(const std::filesystem::path& path) {
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (!std::filesystem::exists(status)) ThrowSystem(path.string(), "there is no such file");
  if (std::filesystem::is_directory(status)) ThrowSystem(path.string(), "it is a folder");
  if (!std::filesystem::is_regular_file(status)) ThrowSystem(path.string(), "it is not a regular file");
  std::array<char, 512> bytes{};
  std::ifstream file(path, std::ios::binary);
  if (!file) ThrowSystem(path.string(), std::generic_category().message(errno));
  file.read(bytes.data(), bytes.size());
  const std::string_view head(bytes.data(), static_cast<std::size_t>(file.gcount()));
  RequireBgzipEnd(path, file, head);
  for (std::string_view start : kReadable) {
    if (head.starts_with(start)) return;
  }
  if (const auto kind = host::ForeignKind(head))
    ThrowFile(path.string(), "no importer reads it: it looks like " + *kind);
}

}  // namespace

void ThrowAt(std::string_view path, std::size_t line, std::string_view words) {
  throw Failure{ExitCode::InputWrong,
                std::string(path) + ": line " + std::to_string(line) + ": " + std::string(words)};
}

TextSource::TextSource(const std::filesystem::path& path) : path_(path.string()), buffer_(kFirstBuffer) {
  Judge(path);
  file_.reset(gzopen(path.c_str(), "rb"));
  if (file_ == nullptr) ThrowSystem(path_, std::generic_category().message(errno));
  gzbuffer(file_.get(), kPackedBuffer);
  if (!Fill()) ThrowFile(path_, "the file is empty");
  if (std::string_view(buffer_.data(), end_).starts_with(kUtf8Mark)) begin_ = kUtf8Mark.size();
}

void CloseText::operator()(gzFile_s* file) const { gzclose(file); }

void TextSource::ThrowRead() const {
  int code = Z_OK;
  const std::string words = gzerror(file_.get(), &code);
  if (code == Z_ERRNO) ThrowSystem(path_, "a read failed");
  const std::string place = " behind line " + std::to_string(line_);
  if (code == Z_BUF_ERROR) ThrowFile(path_, "the packed file is cut short" + place + ": it ends too early");
  ThrowFile(path_, "the packed file is broken" + place + ": " + words);
}

// Moves what is left to the front and reads more behind it; false when nothing came.
bool TextSource::Fill() {
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  if (end_ == buffer_.size()) {
    if (end_ >= kLongestLine) ThrowAt(path_, line_ + 1, "a line of more than 268 MB is no row of markers");
    buffer_.resize(2 * buffer_.size());
  }
  const std::size_t room = std::min(buffer_.size() - end_, kFirstBuffer);
  const int got = gzread(file_.get(), buffer_.data() + end_, static_cast<unsigned>(room));
  int code = Z_OK;
  gzerror(file_.get(), &code);
  if (got < 0 || (got == 0 && code == Z_BUF_ERROR)) ThrowRead();
  end_ += static_cast<std::size_t>(got);
  return got > 0;
}

bool TextSource::Next(std::string_view& line) {
  std::size_t seen = begin_;
  for (;;) {
    const void* found = std::memchr(buffer_.data() + seen, '\n', end_ - seen);
    if (found != nullptr) {
      const auto stop = static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data());
      line = {buffer_.data() + begin_, stop - begin_};
      begin_ = stop + 1;
      break;
    }
    seen = end_ - begin_;
    if (atEnd_ || !Fill()) {
      atEnd_ = true;
      if (begin_ == end_) return false;
      line = {buffer_.data() + begin_, end_ - begin_};
      begin_ = end_;
      break;
    }
  }
  ++line_;
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (std::memchr(line.data(), '\0', line.size()) != nullptr) {
    ThrowAt(path_, line_, "there is a byte that no text has; the file is binary or damaged");
  }
  return true;
}

TextFile ReadLines(const std::filesystem::path& path) {
  TextSource source(path);
  TextFile file{path.string(), {}};
  std::size_t bytes = 0;
  for (std::string_view line; source.Next(line);) {
    bytes += line.size();
    if (bytes > kLargestText)
      ThrowAt(file.path, source.Line(), "more than 4 GB of text; only vcf reads such files");
    for (std::size_t end = line.find('\r'); end != std::string_view::npos; end = line.find('\r')) {
      file.lines.emplace_back(line.substr(0, end));
      line.remove_prefix(end + 1);
    }
    file.lines.emplace_back(line);
  }
  return file;
}

std::string Excerpt(std::string_view text) {
  constexpr std::size_t most = 40;
  std::string shown(text.substr(0, most));
  for (char& c : shown) {
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = '?';
  }
  return shown + (text.size() > most ? "..." : "");
}

}  // namespace importers
