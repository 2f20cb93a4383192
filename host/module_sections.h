#pragma once

// The sections of each kind of project file in order, for the host's own walk of a file.

#include <cstddef>
#include <span>
#include <string_view>

namespace host {

enum class Field {
  Indicator,
  PopulationType,
  MappingFunction,
  MarkerSpaceType,
  MarkerSpaceUnit,
  NumChromosomes,
  NumMarkers,
  PopulationSize,
  NumTraits,
  NumEnvironments,
  NumReplications,
  NumFamilies,
  TrainingSize,
  BreedingSize,
};
inline constexpr std::size_t kFields = 14;

enum class Section {
  Header,           // one field
  Families,         // name, size
  Chromosomes,      // name, number of markers
  Map,              // marker, chromosome, value
  Markers,          // name, a genotype a line
  Categorised,      // category, name, a genotype a line
  Anchors,          // name, group
  Phenotypes,       // a row a trait
  EnvironmentRows,  // a row an environment
  TraitSimulation,  // a trait after the other: a row a chromosome, then effects, indicator, value, mean
  LineValues,       // a row for each trait, environment and replication
  LineSimulation,   // three numbers, locations, effects
  Breeding,         // the markers of the breeding population
};
inline constexpr std::size_t kSections = 13;

struct Step {
  Section section;
  Field field = Field::Indicator;  // with Section::Header
  int indicator = 0;               // only in files with this Indicator; 0 in all
  constexpr Step(Section s, int only = 0) : section(s), indicator(only) {}
  constexpr Step(Field f, int only = 0) : section(Section::Header), field(f), indicator(only) {}
};
inline constexpr int kMapping = 1, kSimulation = 2;  // values of Indicator
inline constexpr int kTailRows = 4;                  // of a simulated trait, behind its chromosomes

struct ModuleSteps {
  std::string_view code;
  std::span<const Step> steps;
};

namespace steps {
inline constexpr Step kMarkerFile[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType, Field::NumMarkers,
    Field::PopulationSize, Section::Markers,       Section::Anchors,
};
inline constexpr Step kCategorisedFile[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType, Field::NumMarkers,
    Field::PopulationSize, Section::Categorised,   Section::Anchors,
};
inline constexpr Step kCmp[] = {
    Field::MarkerSpaceType, Field::MarkerSpaceUnit, Field::NumChromosomes, Section::Chromosomes, Section::Map,
};
inline constexpr Step kBip[] = {
    Field::Indicator,
    Field::PopulationType,
    Field::MappingFunction,
    Field::MarkerSpaceType,
    Field::MarkerSpaceUnit,
    Field::NumChromosomes,
    Field::PopulationSize,
    Field::NumTraits,
    Section::Chromosomes,
    Section::Map,
    Section::Markers,
    {Section::Phenotypes, kMapping},
    {Section::TraitSimulation, kSimulation},
};
inline constexpr Step kMet[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType,   Field::MarkerSpaceUnit,
    Field::NumChromosomes, Field::PopulationSize,  Field::NumEnvironments,   Section::Chromosomes,
    Section::Map,          Section::Markers,       Section::EnvironmentRows,
};
inline constexpr Step kNam[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType, Field::MarkerSpaceUnit,
    Field::NumChromosomes, Field::NumFamilies,     Field::NumTraits,       Section::Families,
    Section::Chromosomes,  Section::Map,           Section::Markers,       Section::Phenotypes,
};
inline constexpr Step kCsl[] = {
    Field::Indicator,
    Field::NumMarkers,
    Field::PopulationSize,
    {Field::NumTraits, kMapping},
    {Field::NumEnvironments, kMapping},
    {Field::NumReplications, kMapping},
    Section::Markers,
    {Section::LineValues, kMapping},
    {Section::LineSimulation, kSimulation},
};
inline constexpr Step kSdl[] = {
    Field::PopulationType,  Field::MappingFunction, Field::MarkerSpaceType,
    Field::MarkerSpaceUnit, Field::NumChromosomes,  Field::PopulationSize,
    Section::Chromosomes,   Section::Map,           Section::Markers,
};
inline constexpr Step kCategorisedTraits[] = {
    Field::PopulationType, Field::MappingFunction, Field::MarkerSpaceType, Field::MarkerSpaceUnit,
    Field::NumChromosomes, Field::PopulationSize,  Field::NumTraits,       Section::Chromosomes,
    Section::Map,          Section::Categorised,   Section::Phenotypes,
};
inline constexpr Step kSelection[] = {
    Field::NumMarkers, Field::TrainingSize, Field::BreedingSize, Field::NumTraits,
    Section::Markers,  Section::Phenotypes, Section::Breeding,
};
}  // namespace steps

inline constexpr ModuleSteps kModuleSteps[] = {
    {"MAP", steps::kMarkerFile},
    {"BIN", steps::kMarkerFile},
    {"CDM", steps::kCategorisedFile},
    {"PLM", steps::kCategorisedFile},
    {"CMP", steps::kCmp},
    {"BIP", steps::kBip},
    {"MET", steps::kMet},
    {"NAM", steps::kNam},
    {"CSL", steps::kCsl},
    {"SDL", steps::kSdl},
    {"CDQ", steps::kCategorisedTraits},
    {"PLQ", steps::kCategorisedTraits},
    {"GS", steps::kSelection},
};

}  // namespace host
