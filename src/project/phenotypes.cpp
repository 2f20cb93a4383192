#include "project/phenotypes.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "platform/fatal.h"
#include "platform/text.h"
#include "project/reader.h"
#include "project/report.h"

namespace project {
namespace {

using platform::Edits;

constexpr auto kBlankShortName = Blank<ShortName>();
constexpr std::size_t kValueWidth = 20;
constexpr float kNumericMark = 100.0F;  // of the other sign
constexpr float kMarkTolerance = 1e-06F;

// Process-wide: a textual mark of a missing value was met in some file. Never turned off.
bool textMissingSeen = false;

std::string_view TrimmedToken(const std::string& tokens, std::size_t line) {
  const std::size_t at = line * kValueWidth;
  if (at >= tokens.size()) {
    return {};
  }
  const std::string_view token = std::string_view(tokens).substr(at, kValueWidth);
  return platform::WithoutTrailingBlanks(token);
}

bool IsTextualMark(std::string_view token) {
  return token == "NA" || token == "na" || token == "*" || token == ".";
}

bool HasTextualMark(const std::string& tokens, std::size_t size) {
  for (std::size_t line = 0; line < size && line * kValueWidth < tokens.size(); ++line) {
    if (IsTextualMark(TrimmedToken(tokens, line))) {
      return true;
    }
  }
  return false;
}

// A value as a token read of its own takes it from the text.
float Converted(std::string_view text, std::string_view trait) {
  float value = 0;
  if (!ReadRealFrom(text, value)) {
    platform::Fatal("the value '" + std::string(text) + "' of '" +
                    std::string(platform::WithoutTrailingBlanks(trait)) + "' is not a number");
  }
  return value;
}

void ConvertRow(const std::string& tokens, std::size_t size, std::string_view trait, bool textual,
                std::vector<float>& values) {
  for (std::size_t line = 0; line < size; ++line) {
    const std::string_view token = TrimmedToken(tokens, line);
    if (textual && IsTextualMark(token)) {
      values.push_back(kMissingPhenotype);
      continue;
    }
    const float value = Converted(token, trait);
    const bool missing = !textual && std::fabs(value + kNumericMark) < kMarkTolerance;
    values.push_back(missing ? kMissingPhenotype : value);
  }
}

}  // namespace

void ReadPhenotypeSection(int32_t unit, int32_t log, int32_t& status, int32_t rows, ProjectBlock& block) {
  Allocate(block.Phenotype, 0);
  Allocate(block.TraitFlag, 0);
  Allocate(block.TraitName, 0);
  NextDataRecord(unit);
  const auto size = static_cast<std::size_t>(std::max(block.Header.PopulationSize, 0));
  bool seen = textMissingSeen;
  auto name = Blank<ShortName>();  // nulls keep the row before
  std::string tokens;
  for (int32_t t = 1; t <= rows; ++t) {
    ShortName read{};  // NUL characters until the row names its trait
    const int32_t failed =
        ReadTokens(unit, {TextItem(read.data(), read.size()), CellItems(tokens, kValueWidth, size)});
    const bool named = read != ShortName{};
    if (named) {
      name = read;
    }
    if (failed != 0) {
      Report(log, status, "--Input error: cannot read phenotypic data!");
      ReportDetail(log, Edits("A,I8,1X,A"),
                   {"  TraitID, Trait Name = ", t, named ? Text(name) : Text(kBlankShortName)});
      platform::CloseUnit(unit);
      return;
    }
    if (!seen && HasTextualMark(tokens, size)) {
      seen = textMissingSeen = true;
    }
    ConvertRow(tokens, size, Text(name), seen, block.Phenotype.items);
    block.TraitName.items.push_back(name);
    block.TraitFlag.items.push_back(0);
  }
}

}  // namespace project
