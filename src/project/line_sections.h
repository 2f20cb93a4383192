#pragma once

#include <cstdint>

#include "project/store.h"

namespace project {

// A closed set of lines, for mapping: a row of a label and Header.PopulationSize values for each trait,
// environment and replication, in that nesting. Fills TraitName with the labels and Phenotype with the
// values.
void ReadLineValues(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block);

// The same set, for simulation: number of QTL, number of simulations and heritability; the markers that the
// QTL are; their effects. Fills Lines, and derives genotypic values, variances and explained shares from
// them.
void ReadLineSimulation(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block);

}  // namespace project
