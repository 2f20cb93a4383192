#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/reports/report_data.h"

// Report data as a run would fill them, of any size, with every field set.

struct MapShape {
  std::vector<std::size_t> groups = {12, 7};  // markers of each
  std::size_t lines = 60;
  bool parents = false;
  bool pairs = true;
  std::string prefix = "m";  // of the markers' names
  double step = 4;           // mean interval, centimorgans
};

// The pair arrays live beside the report that looks at them.
struct SampleMap {
  reports::MapReport report;
  std::vector<float> rec, lod;
};
SampleMap SampleMapReport(const MapShape& shape);

reports::ConsensusReport SampleConsensusReport(std::size_t maps, std::size_t markers);

struct TrialShape {
  std::size_t environments = 4, genotypes = 12, blocks = 3, traits = 2;
  std::string prefix = "G";
};
reports::TrialReport SampleTrialReport(const TrialShape& shape);
