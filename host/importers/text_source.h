#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct gzFile_s;

namespace importers {

struct CloseText {
  void operator()(gzFile_s* file) const;
};

// The lines of a text file, plain or packed by gzip or bgzip (in as many members as it has), one after the
// other in bounded memory. A mark of UTF-8 at the begin is passed over.
class TextSource {
 public:
  // Failure Other when the file cannot be read, InputWrong for an empty one or one of a foreign kind.
  explicit TextSource(const std::filesystem::path& path);

  // The next line without its end (LF or CR LF), good until the next call; false behind the last one.
  // Failure InputWrong: the packed file is broken, a line holds a NUL or is longer than 268 MB.
  bool Next(std::string_view& line);
  std::size_t Line() const { return line_; }  // number of the last line given, from 1
  const std::string& Path() const { return path_; }

 private:
  bool Fill();
  [[noreturn]] void ThrowRead() const;

  std::string path_;
  std::unique_ptr<gzFile_s, CloseText> file_;
  std::vector<char> buffer_;
  std::size_t begin_ = 0, end_ = 0, line_ = 0;
  bool atEnd_ = false;
};

// "FILE: line 3: " and the words. Failure InputWrong.
[[noreturn]] void ThrowAt(std::string_view path, std::size_t line, std::string_view words);

// All lines of a file; line ends of CR alone, as old spreadsheets write them, are taken too. At most 4 GB.
struct TextFile {
  std::string path;
  std::vector<std::string> lines;
};
TextFile ReadLines(const std::filesystem::path& path);

// A piece of a line for a message: at most 40 characters, what cannot be printed as '?'.
std::string Excerpt(std::string_view text);

}  // namespace importers
