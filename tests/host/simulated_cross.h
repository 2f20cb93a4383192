#pragma once

#include <cstdint>
#include <map>
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

// The progeny of two heterozygous parents in phases by chance, as text of a CDM project file. The categories
// come in turn: ABCD, A=B, C=D, AB=CD of a clonal F1; with A=CB=D and A=DB=C instead of the last in coupling of
// a double cross. The truth is kept beside it.
struct SimulatedClonal {
  std::vector<int> markersPerChromosome = {};
  int lines = 200;
  double step = 5;  // centimorgans, Haldane, both parents
  bool doubleCross = false;
  uint32_t seed = 3;
};
struct ClonalText {
  std::string text;
  // By marker: whether the parent's alleles stand the other way round.
  std::map<std::string, bool> flippedAB, flippedCD;
};
ClonalText ClonalFileText(const SimulatedClonal& cross);

// Doubled haploids of (AxB)x(CxD) as text of a PLM file; all letters differ (ABCD) at every other marker, the
// others have two alleles (AACC, ABAB, ABBA in turn), and different ones tell nothing about each other.
struct SimulatedParents {
  std::vector<int> markersPerChromosome = {};
  int lines = 200;
  double step = 5;
  uint32_t seed = 3;
};
std::string MultiParentFileText(const SimulatedParents& cross);
