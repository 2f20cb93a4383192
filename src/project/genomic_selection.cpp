#include "project/genomic_selection.h"

#include <algorithm>

#include "project/loader.h"
#include "project/reader.h"
#include "project/report.h"

namespace project {
namespace {

using platform::Edits;
using platform::WriteRecord;

struct Counts {
  int32_t NumMarkers = 0;
  int32_t TrainingPopulationSize = 0;
};

bool ReadCount(std::string_view report, int32_t& count) {
  NextDataRecord(kProjectUnit);
  if (ReadTokens(kProjectUnit, {IntegerItem(count)}) != 0) {
    WriteRecord(kLogUnit, report);
    return false;
  }
  return true;
}

// The four counts that stand ahead of the tables.
bool ReadCounts(Counts& counts, int32_t& breedingSize, int32_t& numTraits) {
  return ReadCount("--Input error: cannot read number of markers", counts.NumMarkers) &&
         ReadCount("--Input error: cannot read number of population size for training population",
                   counts.TrainingPopulationSize) &&
         ReadCount("--Input error: cannot read number of population size for breeding population",
                   breedingSize) &&
         ReadCount("--Input error: cannot read number of traits", numTraits);
}

std::size_t Extent(int32_t count) { return static_cast<std::size_t>(std::max(count, 0)); }

// Rows of a marker name and a genotype for each individual; the names are kept. Where another table went
// before, a name that differs from its own is told and passes.
bool ReadMarkerTable(int32_t rows, int32_t size, std::vector<NameText>& names,
                     const std::vector<NameText>* before = nullptr) {
  NextDataRecord(kProjectUnit);
  auto name = Blank<NameText>();  // scratch of the section: nulls keep the row before
  std::vector<int32_t> genotypes;
  for (int32_t m = 1; m <= rows; ++m) {
    if (ReadTokens(kProjectUnit,
                   {TextItem(name.data(), name.size()), IntegerItems(genotypes, Extent(size))}) != 0) {
      WriteRecord(kLogUnit, "--Input error: cannot read MarkerType!");
      ReportDetail(kLogUnit, Edits("A,I8"), {"  MarkerID = ", m});
      return false;
    }
    if (before != nullptr && name != (*before)[names.size()]) {
      WriteRecord(kLogUnit, "--Input error: MarkerType are not matched!");
    }
    names.push_back(name);
  }
  return true;
}

bool ReadTraitTable(std::string_view report, int32_t rows, int32_t size, std::vector<ShortName>& names) {
  NextDataRecord(kProjectUnit);
  auto name = Blank<ShortName>();
  std::vector<float> phenotypes;
  for (int32_t t = 1; t <= rows; ++t) {
    if (ReadTokens(kProjectUnit, {TextItem(name.data(), name.size()), RealItems(phenotypes, Extent(size))}) !=
        0) {
      WriteRecord(kLogUnit, report);
      ReportDetail(kLogUnit, Edits("A,I8"), {"  TraitID = ", t});
      return false;
    }
    names.push_back(name);
  }
  return true;
}

}  // namespace

bool ReadSelectionTraits(std::string_view fileName, int32_t& numTraits) {
  platform::OpenUnit(kProjectUnit, fileName, platform::OpenStatus::Old);
  Counts counts;
  int32_t breedingSize = 0;
  std::vector<NameText> training;
  std::vector<NameText> breeding;
  std::vector<ShortName> traits;
  if (!ReadCounts(counts, breedingSize, numTraits) ||
      !ReadMarkerTable(counts.NumMarkers, counts.TrainingPopulationSize, training) ||
      !ReadTraitTable("--Input error: cannot read PhenoType!", numTraits, counts.TrainingPopulationSize,
                      traits) ||
      !ReadMarkerTable(counts.NumMarkers, breedingSize, breeding, &training)) {
    return false;
  }
  platform::CloseUnit(kProjectUnit);
  return true;
}

bool ReadSelectionNames(std::string_view fileName, std::vector<ShortName>& traitNames,
                        int32_t& breedingSize) {
  platform::OpenUnit(kProjectUnit, fileName, platform::OpenStatus::Old);
  Counts counts;
  int32_t numTraits = 0;
  std::vector<NameText> training;
  if (!ReadCounts(counts, breedingSize, numTraits) ||
      !ReadMarkerTable(counts.NumMarkers, counts.TrainingPopulationSize, training) ||
      !ReadTraitTable("--Input error: cannot read phenotype!", numTraits, counts.TrainingPopulationSize,
                      traitNames)) {
    return false;
  }
  platform::CloseUnit(kProjectUnit);
  return true;
}

}  // namespace project
