#pragma once

#include <cstdint>

#include "project/store.h"

namespace project {

// Reads what a simulation of a bi-parental population lays on its map: for each of Header.NumTraits traits
// the QTL of every chromosome, the triangle of their effects, heritability or error variance, and the mean.
// Fills Simulation, and TraitName with the traits' numbers.
void ReadTraitSimulation(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block);

}  // namespace project
