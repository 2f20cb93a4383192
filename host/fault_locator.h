#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// Where the parts of a marker file (MAP, BIN) stand, as far as a plain walk can tell. Lines are counted
// from 1. The walk ends where a token may mean more than itself (a slash, quote, comma or repeat), since the
// rows behind it may take more or fewer lines than they seem to.
struct MarkerRow {
  std::size_t line;       // of the row's first token
  std::size_t firstLine;  // tokens on that line, the name among them
};
struct FileLayout {
  std::vector<std::size_t> header;  // line of each header field that is there
  std::optional<int64_t> values[5];
  std::vector<MarkerRow> markers, anchors;
  std::size_t lines = 0;
  bool endsEarly = false;    // the file ends before its last row, and nothing before that is doubtful
  int leadingNumbers = 0;    // data lines at the top with nothing but an integer
  std::string firstRowWord;  // first token behind them
};
FileLayout WalkMarkerFile(std::string_view text);

// A report of the library ("--Input error: ..." with its detail lines) and where it happened.
struct Fault {
  std::vector<std::string> report;
  std::vector<std::size_t> lines;  // empty where the place cannot be told
  std::string hint;                // one sentence without a line end, or empty
};
// Splits a log into its reports and finds their places. Lines that are no report are dropped.
std::vector<Fault> LocateFaults(const std::vector<std::string>& log, std::string_view text);

}  // namespace host
