#pragma once

// The modules whose project files are read: a row each, with the sections of its file in order. The loader
// walks the row; a new module is a new row.

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "project/header_fields.h"
#include "project/rule_sets.h"

namespace project {

inline constexpr int32_t kCallersCode = 0;  // BIN takes its rule set from the caller

enum class Module { Bip, Met, Nam, Csl, Sdl, Bin, Map, Cmp, Cdm, Cdq, Plm, Plq };

enum class Section {
  Header,       // one field
  MarkerTypes,  // as many markers as the header says, or as the chromosomes have
  Anchors,
  BinWork,
  Chromosomes,
  NameAgreement,
  Phenotypes,       // a row a trait
  EnvironmentRows,  // the same with a row an environment
  Families,
  TraitSimulation,
  LineValues,
  LineSimulation,
};

struct Step {
  Section section;
  Field field = Field::Indicator;  // with Section::Header
  int32_t onlyIndicator = 0;       // only in files whose Indicator has this value; 0 in all

  constexpr Step(Section s, int32_t indicator = 0) : section(s), onlyIndicator(indicator) {}
  constexpr Step(Field f, int32_t indicator = 0)
      : section(Section::Header), field(f), onlyIndicator(indicator) {}
};
inline constexpr int32_t kMapping = 1, kSimulation = 2;  // values of Indicator

struct ModuleRow {
  std::string_view code;  // as the log and the messages have it
  int32_t moduleCode;     // the rule set
  std::span<const Step> steps;
};

inline constexpr Step kBipSteps[] = {
    Field::Indicator,
    Field::PopulationType,
    Field::MappingFunction,
    Field::MarkerSpaceType,
    Field::MarkerSpaceUnit,
    Field::NumChromosomes,
    Field::PopulationSize,
    Field::NumTraits,
    Section::Chromosomes,
    Section::MarkerTypes,
    Section::NameAgreement,
    {Section::Phenotypes, kMapping},
    {Section::TraitSimulation, kSimulation},
};
inline constexpr Step kMetSteps[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType,   Field::MarkerSpaceUnit,
    Field::NumChromosomes, Field::PopulationSize,  Field::NumEnvironments,   Section::Chromosomes,
    Section::MarkerTypes,  Section::NameAgreement, Section::EnvironmentRows,
};
inline constexpr Step kNamSteps[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType, Field::MarkerSpaceUnit,
    Field::NumChromosomes, Field::NumFamilies,     Field::NumTraits,       Section::Families,
    Section::Chromosomes,  Section::MarkerTypes,   Section::NameAgreement, Section::Phenotypes,
};
inline constexpr Step kCslSteps[] = {
    Field::Indicator,
    Field::NumMarkers,
    Field::PopulationSize,
    {Field::NumTraits, kMapping},
    {Field::NumEnvironments, kMapping},
    {Field::NumReplications, kMapping},
    Section::MarkerTypes,
    {Section::LineValues, kMapping},
    {Section::LineSimulation, kSimulation},
};
inline constexpr Step kSdlSteps[] = {
    Field::PopulationType,  Field::MappingFunction, Field::MarkerSpaceType,
    Field::MarkerSpaceUnit, Field::NumChromosomes,  Field::PopulationSize,
    Section::Chromosomes,   Section::MarkerTypes,   Section::NameAgreement,
};
inline constexpr Step kTraitSteps[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType, Field::MarkerSpaceUnit,
    Field::NumChromosomes, Field::PopulationSize,  Field::NumTraits,       Section::Chromosomes,
    Section::MarkerTypes,  Section::NameAgreement, Section::Phenotypes,
};
// The header of a raw marker file: of MAP, BIN, CDM and PLM.
inline constexpr std::array<Field, 5> kRawFields = {Field::PopulationType, Field::MappingFunction,
                                                    Field::MarkerSpaceType, Field::NumMarkers,
                                                    Field::PopulationSize};
inline constexpr Step kMarkerSteps[] = {
    kRawFields[0], kRawFields[1],        kRawFields[2],    kRawFields[3],
    kRawFields[4], Section::MarkerTypes, Section::Anchors,
};
inline constexpr Step kBinSteps[] = {
    kRawFields[0], kRawFields[1],        kRawFields[2],    kRawFields[3],
    kRawFields[4], Section::MarkerTypes, Section::Anchors, Section::BinWork,
};

inline constexpr Step kCmpSteps[] = {
    Field::MarkerSpaceType,
    Field::MarkerSpaceUnit,
    Field::NumChromosomes,  // the number of maps
    Section::Chromosomes,
};

inline constexpr std::array<ModuleRow, 12> kModules = {{
    // in the order of enum Module
    {"BIP", 105, kBipSteps},
    {"MET", 106, kMetSteps},
    {"NAM", 108, kNamSteps},
    {"CSL", 107, kCslSteps},
    {"SDL", 104, kSdlSteps},
    {"BIN", kCallersCode, kBinSteps},
    {"MAP", kMapCode, kMarkerSteps},
    {"CMP", kConsensusCode, kCmpSteps},
    {"CDM", kClonalCode, kMarkerSteps},
    {"CDQ", kClonalCode, kTraitSteps},
    {"PLM", kMultiParentCode, kMarkerSteps},
    {"PLQ", kMultiParentCode, kTraitSteps},
}};

inline constexpr const ModuleRow& RowOf(Module module) { return kModules[static_cast<std::size_t>(module)]; }

}  // namespace project
