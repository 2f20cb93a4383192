#pragma once

// The store: the data of the last load of each module, process-wide, one block a module.
//
// Scalars keep their values between calls. Arrays are allocated by the load and released by the export, each
// for itself, so that a load stopped half-way leaves a store that the next load can use. They grow with the
// rows that the file really has: a count that the file merely claims takes no memory, and an entry not yet
// read is what it was initialised to (the accessors below).

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "project/header_fields.h"
#include "project/modules.h"

namespace project {

inline constexpr std::size_t kNameWidth = 35;

using NameText = std::array<char, kNameWidth>;  // blank-padded

using ShortName = std::array<char, 19>;  // of a chromosome, a trait, a family

template <std::size_t N>
std::string_view Text(const std::array<char, N>& name) {
  return {name.data(), name.size()};
}

template <class Name>
constexpr Name Blank() {
  Name name{};
  name.fill(' ');
  return name;
}

template <class T>
struct StoreArray {
  std::vector<T> items;
  bool allocated = false;
};

void AllocateOnce(bool& allocated);

// Marks an array as allocated and makes room for `expected` entries; one that was not released before ends
// the process, as there is no sense in a second load over it.
template <class T>
void Allocate(StoreArray<T>& array, std::size_t expected) {
  AllocateOnce(array.allocated);
  array.items.reserve(expected);
}

template <class T>
void Release(StoreArray<T>& array) {
  array = {};
}

// The markers of one chromosome, linkage group or map, in map order. Positions are in centimorgans.
struct ChromosomeTable {
  int32_t NumMarkers = 0;
  std::vector<NameText> MarkerName;
  std::vector<float> Position;
};

// What a simulation lays on one chromosome for one trait.
struct ChromosomeQTL {
  int32_t NumQTL = 0;
  std::vector<float> QTLPosition;  // centimorgans
  std::vector<float> QTLEffect;
};
struct SimulatedTrait {
  std::vector<ChromosomeQTL> TraitQTL;
  std::vector<float> EpistasisEffect;  // lower triangle with its diagonal, row by row
  int32_t HeritabilityIndicator = 0;   // 1 heritability, 2 error variance
  float Heritability = 0;
  float ErrorVariance = 0;
  float OverallMean = 0;
};

// The simulation of a closed set of lines, and what follows from it.
struct LineSimulation {
  int32_t NumQTL = 0;
  int32_t NumSimulations = 0;
  float Heritability = 0;
  StoreArray<int32_t> QTLLocation;  // running numbers of markers
  StoreArray<float> QTLEffect;
  StoreArray<float> MarkerEffect;    // a value a marker
  StoreArray<float> GenotypicValue;  // a value a line
  float GeneticVariance = 0;
  float ErrorVariance = 0;
  StoreArray<float> PVEGenetic, PVEPhenotypic;  // percent of the variance that a marker explains
};

struct ProjectBlock {
  ProjectHeader Header;

  StoreArray<ShortName> ChromName;
  StoreArray<ChromosomeTable> Chromosome;
  int32_t TotalMarkers = 0;  // of all chromosomes
  StoreArray<int32_t> MarkerCategory;
  StoreArray<NameText> MarkerName;
  StoreArray<char> Genotype;  // code letters, a marker's PopulationSize cells one behind the other
  StoreArray<int32_t> AnchorInfo;

  StoreArray<ShortName> FamilyName;
  StoreArray<int32_t> FamilySize;

  StoreArray<float> Phenotype;      // a trait's PopulationSize values one behind the other
  StoreArray<ShortName> TraitName;  // of the closed set of lines: a label for each row of values
  StoreArray<int32_t> TraitFlag;    // zeros
  StoreArray<SimulatedTrait> Simulation;
  LineSimulation Lines;

  std::array<StoreArray<int32_t>, 3> BinWork;  // BIN alone: zeros, for the binning of the host's engine
};

ProjectBlock& Store(Module module);
void ReleaseStore(Module module);

// Name, category and codes of marker m, from 1. Rows that were not read have blank names, category 1 and no
// codes; the row that a reader stopped in has the codes that it came to.
std::string_view MarkerNameAt(const ProjectBlock& block, int32_t m);
int32_t MarkerCategoryAt(const ProjectBlock& block, int32_t m);
std::string_view GenotypesAt(const ProjectBlock& block, int32_t m);

}  // namespace project
