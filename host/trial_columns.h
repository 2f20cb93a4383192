#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/trial_data.h"

namespace host {

using Headings = std::vector<std::string>;
using Column = std::optional<std::size_t>;  // from 0

inline constexpr std::size_t kTrialKeys = 3;  // environment, genotype, block
std::string_view KeyName(std::size_t key);    // "environment"

struct ChosenColumns {
  std::array<Column, kTrialKeys> keys;
  std::vector<std::size_t> traits;
  bool traitsGiven = false;
};

// Finds the columns that are wanted, by heading (in any case), or the usual ones. Failure InputWrong where
// one is missing or serves twice.
ChosenColumns ChooseColumns(const Headings& headings, const TrialColumns& wanted,
                            std::vector<std::string>& notes);

// Throws Failure InputWrong.
[[noreturn]] void Refuse(const std::string& why);
std::string InQuotes(std::string_view text);

}  // namespace host
