#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "host/line_words.h"
#include "host/precheck_rows.h"

namespace host {

constexpr std::size_t kMostWords = 5'000'000;  // of a row: repeats must not fill the memory

// What is at work while a file is looked through.
struct Scan {
  std::vector<std::string_view> lines;
  std::size_t next = 0;
  Sheet sheet;
  LineWords words, peeked;
  bool sizeConfirmed = false;  // rows of the length that the header tells were met
};

bool IsBlank(std::string_view line);
bool IsRemark(std::string_view line);

// The next line from `from` on that holds data; the number of lines when there is none.
std::size_t DataFrom(const Scan& scan, std::size_t from);

// The words of a line, from 0.
void Split(const Scan& scan, std::size_t line, LineWords& words, std::size_t most = kMostWords);

// The steps of the file as far as the header is known: an unknown indicator counts as mapping.
std::vector<Step> StepsOf(const Scan& scan);
std::size_t HeaderSize(const std::vector<Step>& steps);

// Takes the header and tells what is wrong in it; false when the file ends there.
bool TakeHeader(Scan& scan);

}  // namespace host
