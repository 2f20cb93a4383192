#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

enum class FindingKind { Header, Count, Row, Remark, Name, Genotype, Marker, Map, Anchor, Value };

// One fault that the host found by itself.
struct Finding {
  FindingKind kind;
  std::vector<std::size_t> lines;  // of the file, from 1
  std::string words;               // a sentence without a line end
  std::string code;                // of FindingKind::Genotype: what stands there, and how often
  std::size_t times = 0;
};

// Lists what is wrong in a file of a kind of kModuleSteps that the library refuses, line by line, where the
// library stops at the first fault. A row that has lost its step does not draw those behind it along. What
// stands behind the last table that has a form of its own (simulations) is not looked at.
std::vector<Finding> FindFaults(std::string_view text, std::string_view module, int32_t moduleCode);

// What the library takes from a good file without a word, but hardly as it was meant: genotypes behind the last
// line of the population, which it drops, and empty ones between two commas, for which it takes the row before.
std::vector<Finding> FindPitfalls(std::string_view text, std::string_view module, int32_t moduleCode);

}  // namespace host
