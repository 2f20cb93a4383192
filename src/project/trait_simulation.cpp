#include "project/trait_simulation.h"

#include <algorithm>
#include <charconv>

#include "project/chromosomes.h"
#include "project/reader.h"
#include "project/report.h"

namespace project {
namespace {

using platform::Edits;

// The trait at hand, with where its reports go.
struct TraitReader {
  int32_t unit, log;
  int32_t& status;
  int32_t trait;
  ShortName name;

  void Tell(std::string_view words) {
    Report(log, status, words);
    ReportDetail(log, Edits("A,I8,1X,A"), {"  TraitID, TraitName = ", trait, Text(name)});
  }
  void TellChromosome(std::string_view words, int32_t chromosome) {
    Report(log, status, words);
    ReportDetail(log, Edits("A,2I8,1X,A"),
                 {"  TraitID, ChromID, TraitName = ", trait, chromosome, Text(name)});
  }
};

// A chromosome's row is read twice: for the number of QTL, and whole.
bool ReadChromosomeQTL(TraitReader& reader, int32_t chromosome, int32_t spaceUnit, ChromosomeQTL& qtl) {
  NextDataRecord(reader.unit);
  if (ReadTokens(reader.unit, {IntegerItem(qtl.NumQTL)}) != 0) {
    reader.TellChromosome("--Input error: cannot read the number of QTL!", chromosome);
    return false;
  }
  platform::StepBack(reader.unit);
  const auto count = static_cast<std::size_t>(std::max(qtl.NumQTL, 0));
  if (ReadTokens(reader.unit, {IntegerItem(qtl.NumQTL), RealItems(qtl.QTLPosition, count),
                               RealItems(qtl.QTLEffect, count)}) != 0) {
    reader.TellChromosome("--Input error: cannot read QTL positions!", chromosome);
    return false;
  }
  // Strict, where markers may share a position. Positions that a slash left out are 0, so two of them end it.
  const auto position = [&](std::size_t k) { return k < qtl.QTLPosition.size() ? qtl.QTLPosition[k] : 0.0F; };
  for (std::size_t k = 1; k < count && k <= qtl.QTLPosition.size() + 1; ++k) {
    if (position(k) <= position(k - 1)) {
      Report(reader.log, reader.status, "--Input error: QTL positions must be in the ascending order!");
      ReportDetail(reader.log, Edits("A,3I8,1X,A"),
                   {"  TraitID, ChromID, QTLID, TraitName = ", reader.trait, chromosome,
                    static_cast<int32_t>(k), Text(reader.name)});
      return false;
    }
  }
  ScaleToCentimorgans(spaceUnit, qtl.QTLPosition);
  return true;
}

// The triangle of effects and the three values behind it stand in records of their own, without remarks.
bool ReadTraitValues(TraitReader& reader, int64_t totalQTL, SimulatedTrait& trait) {
  const int64_t entries = totalQTL > 0 ? totalQTL * (totalQTL + 1) / 2 : 0;
  if (ReadTokens(reader.unit, {RealItems(trait.EpistasisEffect, static_cast<std::size_t>(entries))}) != 0) {
    reader.Tell("--Input error: cannot read lower triangular matrix of QTL effects!");
    return false;
  }
  if (ReadTokens(reader.unit, {IntegerItem(trait.HeritabilityIndicator)}) != 0) {
    reader.Tell("--Input error: cannot read the indicator for heritability (1) or error variance (2)!");
    return false;
  }
  float& value = trait.HeritabilityIndicator == 1 ? trait.Heritability : trait.ErrorVariance;
  if (ReadTokens(reader.unit, {RealItem(value)}) != 0) {
    reader.Tell("--Input error: cannot read heritability or error variance!");
    return false;
  }
  if (ReadTokens(reader.unit, {RealItem(trait.OverallMean)}) != 0) {
    reader.Tell("--Input error: cannot read the overall mean of phenotype!");
    return false;
  }
  return true;
}

bool ReadTrait(TraitReader& reader, const ProjectHeader& header, SimulatedTrait& trait) {
  int64_t totalQTL = 0;
  for (int32_t c = 1; c <= header.NumChromosomes; ++c) {
    ChromosomeQTL& qtl = trait.TraitQTL.emplace_back();
    if (!ReadChromosomeQTL(reader, c, header.MarkerSpaceUnit, qtl)) {
      return false;
    }
    totalQTL += qtl.NumQTL;
  }
  return ReadTraitValues(reader, totalQTL, trait);
}

}  // namespace

void ReadTraitSimulation(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block) {
  Allocate(block.TraitName, 0);
  Allocate(block.Simulation, 0);
  for (int32_t t = 1; t <= block.Header.NumTraits; ++t) {
    auto name = Blank<ShortName>();
    std::to_chars(name.data(), name.data() + name.size(), t);
    block.TraitName.items.push_back(name);
    TraitReader reader{unit, log, status, t, name};
    if (!ReadTrait(reader, block.Header, block.Simulation.items.emplace_back())) {
      return;
    }
  }
}

}  // namespace project
