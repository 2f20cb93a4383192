#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Doubled haploid lines of an F1 with markers at equal steps, as text of a MAP project file. The markers
// stand in a shuffled order; their names tell chromosome and place: "c1m01", "c1m02", ...
struct SimulatedCross {
  std::vector<int> markersPerChromosome = {};
  int lines = 150;
  double step = 10;   // centimorgans, Haldane
  int spaceType = 2;  // 1 intervals, 2 positions
  uint32_t seed = 7;
  std::string lineEnd = "\n";
  std::string longName = {};      // given to the first marker of the first chromosome when not empty
  std::vector<int> anchors = {};  // by chromosome; the first marker of each chromosome bears it
};

std::string MapFileText(const SimulatedCross& cross);
