#include "project/loader.h"

#include "platform/unit.h"
#include "project/anchors.h"
#include "project/chromosomes.h"
#include "project/families.h"
#include "project/line_sections.h"
#include "project/marker_types.h"
#include "project/phenotypes.h"
#include "project/store.h"
#include "project/trait_simulation.h"

namespace project {
namespace {

void AllocateBinWork(ProjectBlock& block) {
  for (auto& work : block.BinWork) {
    Allocate(work, 0);
    work.items.assign(block.AnchorInfo.items.size(), 0);
  }
}

// The markers of the genotype table: those of the map where the file has one.
int32_t MarkerRows(const ProjectBlock& block) {
  return block.Chromosome.allocated ? block.TotalMarkers : block.Header.NumMarkers;
}

void ReadSection(const Step& step, int32_t moduleCode, int32_t& status, ProjectBlock& block) {
  switch (step.section) {
    case Section::Header:
      return ReadField(moduleCode, kProjectUnit, kLogUnit, status, step.field,
                       FieldOf(block.Header, step.field));
    case Section::MarkerTypes:
      return ReadMarkerTypes(moduleCode, kProjectUnit, kLogUnit, status, MarkerRows(block), block);
    case Section::Anchors:
      return ReadAnchorSection(kProjectUnit, kLogUnit, status, block);
    case Section::BinWork:
      return AllocateBinWork(block);
    case Section::Chromosomes:
      return ReadChromosomeSection(moduleCode, kProjectUnit, kLogUnit, status, block);
    case Section::NameAgreement:
      return CheckNameAgreement(kLogUnit, status, block);
    case Section::Phenotypes:
      return ReadPhenotypeSection(kProjectUnit, kLogUnit, status, block.Header.NumTraits, block);
    case Section::EnvironmentRows:
      return ReadPhenotypeSection(kProjectUnit, kLogUnit, status, block.Header.NumEnvironments, block);
    case Section::Families:
      return ReadFamilies(kProjectUnit, kLogUnit, status, block);
    case Section::TraitSimulation:
      return ReadTraitSimulation(kProjectUnit, kLogUnit, status, block);
    case Section::LineValues:
      return ReadLineValues(kProjectUnit, kLogUnit, status, block);
    case Section::LineSimulation:
      return ReadLineSimulation(kProjectUnit, kLogUnit, status, block);
  }
}

}  // namespace

void LoadModule(Module module, int32_t moduleCode, std::string_view fileName, int32_t& status) {
  platform::OpenUnit(kProjectUnit, fileName, platform::OpenStatus::Old);
  ProjectBlock& block = Store(module);
  for (const Step& step : RowOf(module).steps) {
    if ((status & 1) == 0 && (step.onlyIndicator == 0 || step.onlyIndicator == block.Header.Indicator)) {
      ReadSection(step, moduleCode, status, block);
    }
  }
  platform::CloseUnit(kProjectUnit);
}

}  // namespace project
