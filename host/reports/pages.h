#pragma once

// The report pages and their figures. All functions are pure: the same data gives the same bytes.

#include <string>
#include <vector>

#include "host/reports/report_data.h"

namespace reports {

struct Figure {
  std::string name;     // of the file without extension, and the anchor in the page: "map_ladder"
  std::string title;    // one line
  std::string caption;  // what is shown, with counts
  std::string svg;      // a document of its own
};

// The figures that the data allow, in page order.
std::vector<Figure> MapFigures(const MapReport& report);
std::vector<Figure> ConsensusFigures(const ConsensusReport& report);
std::vector<Figure> TrialFigures(const TrialReport& report);

// One self-contained HTML page: no script, nothing loaded from elsewhere. `figures` are those of the same
// report, so that a caller who also saves them one by one draws them once.
std::string MapPage(const MapReport& report, const std::vector<Figure>& figures);
std::string ConsensusPage(const ConsensusReport& report, const std::vector<Figure>& figures);
std::string TrialPage(const TrialReport& report, const std::vector<Figure>& figures);

}  // namespace reports
