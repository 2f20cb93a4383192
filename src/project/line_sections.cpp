#include "project/line_sections.h"

#include <algorithm>

#include "project/reader.h"
#include "project/report.h"

namespace project {
namespace {

using platform::Edits;

// The effect of each marker, 0 but for the QTL; a location below 1 is no marker and has no effect.
void DeriveMarkerEffects(int32_t numMarkers, LineSimulation& lines) {
  lines.MarkerEffect.items.assign(static_cast<std::size_t>(numMarkers), 0.0F);
  for (std::size_t q = 0; q < lines.QTLLocation.items.size(); ++q) {
    const int32_t location = lines.QTLLocation.items[q];
    if (location >= 1) {
      lines.MarkerEffect.items[static_cast<std::size_t>(location) - 1] = lines.QTLEffect.items[q];
    }
  }
}

// A line has the effect of each marker with code A and its opposite with any other code. The sums run over
// all markers in order.
void DeriveGenotypicValues(const ProjectBlock& block, LineSimulation& lines) {
  std::vector<float>& values = lines.GenotypicValue.items;
  values.assign(static_cast<std::size_t>(block.Header.PopulationSize), 0.0F);
  for (int32_t m = 1; m <= block.Header.NumMarkers; ++m) {
    const float effect = lines.MarkerEffect.items[static_cast<std::size_t>(m) - 1];
    const std::string_view codes = GenotypesAt(block, m);
    for (std::size_t line = 0; line < codes.size(); ++line) {
      values[line] += codes[line] == 'A' ? effect : -effect;
    }
  }
}

void DeriveVariances(const ProjectBlock& block, LineSimulation& lines) {
  const auto size = static_cast<float>(block.Header.PopulationSize);
  float sum = 0;
  float squares = 0;
  for (const float value : lines.GenotypicValue.items) {
    sum += value;
    squares += value * value;
  }
  const float mean = sum / size;
  lines.GeneticVariance = squares / size - mean * mean;
  lines.ErrorVariance = lines.GeneticVariance * ((1 - lines.Heritability) / lines.Heritability);
  for (int32_t m = 1; m <= block.Header.NumMarkers; ++m) {
    const std::string_view codes = GenotypesAt(block, m);
    // The frequency is that of the missing cells: required as it stands.
    const float p = static_cast<float>(std::count(codes.begin(), codes.end(), 'X')) / size;
    const float a = lines.MarkerEffect.items[static_cast<std::size_t>(m) - 1];
    const float v = a * 4 * a * p * (1 - p);
    lines.PVEGenetic.items.push_back(v / lines.GeneticVariance * 100);
    lines.PVEPhenotypic.items.push_back(v / (lines.ErrorVariance + lines.GeneticVariance) * 100);
  }
}

void AllocateLines(LineSimulation& lines) {
  Allocate(lines.QTLLocation, 0);
  Allocate(lines.QTLEffect, 0);
  Allocate(lines.MarkerEffect, 0);
  Allocate(lines.GenotypicValue, 0);
  Allocate(lines.PVEGenetic, 0);
  Allocate(lines.PVEPhenotypic, 0);
}

}  // namespace

void ReadLineValues(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block) {
  NextDataRecord(unit);
  Allocate(block.TraitName, 0);
  Allocate(block.Phenotype, 0);
  const auto size = static_cast<std::size_t>(block.Header.PopulationSize);
  auto label = Blank<ShortName>();  // scratch of the section: nulls keep the row before
  std::vector<float> values;
  for (int32_t t = 1; t <= block.Header.NumTraits; ++t) {
    for (int32_t e = 1; e <= block.Header.NumEnvironments; ++e) {
      for (int32_t r = 1; r <= block.Header.NumReplications; ++r) {
        if (ReadTokens(unit, {TextItem(label.data(), label.size()), RealItems(values, size)}) != 0) {
          Report(log, status, "--Input error: cannot read trait values!");
          ReportDetail(log, Edits("A,3I8"), {"  TraitID, EnvID, RepID", t, e, r});
          return;
        }
        values.resize(size);  // a row cut short by a slash
        block.TraitName.items.push_back(label);
        block.Phenotype.items.insert(block.Phenotype.items.end(), values.begin(), values.end());
      }
    }
  }
}

void ReadLineSimulation(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block) {
  LineSimulation& lines = block.Lines;
  AllocateLines(lines);
  NextDataRecord(unit);
  if (ReadTokens(unit, {IntegerItem(lines.NumQTL), IntegerItem(lines.NumSimulations),
                        RealItem(lines.Heritability)}) != 0) {
    Report(log, status,
           "--Input error: cannot read the number of QTL, number of simulations, and heritability!");
    return;
  }
  const auto count = static_cast<std::size_t>(std::max(lines.NumQTL, 0));
  if (ReadTokens(unit, {IntegerItems(lines.QTLLocation.items, count)}) != 0) {
    Report(log, status, "--Input error: cannot read the locations of QTL!");
    return;
  }
  const std::vector<int32_t>& locations = lines.QTLLocation.items;
  if (std::any_of(locations.begin(), locations.end(),
                  [&](int32_t location) { return location > block.Header.NumMarkers; })) {
    Report(log, status, "--Input error: QTL locations out of range!");
    return;
  }
  if (ReadTokens(unit, {RealItems(lines.QTLEffect.items, count)}) != 0) {
    Report(log, status, "--Input error: cannot read the additive effects of QTLs!");
    return;
  }
  lines.QTLEffect.items.resize(locations.size(), 0.0F);  // effects that a slash left out
  DeriveMarkerEffects(block.Header.NumMarkers, lines);
  DeriveGenotypicValues(block, lines);
  DeriveVariances(block, lines);
}

}  // namespace project
