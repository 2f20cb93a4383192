#include "simulated_cross.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace {

struct Marker {
  std::string name, genotypes;
  int anchor;
};

std::vector<Marker> Simulate(const SimulatedCross& cross, std::mt19937& generator) {
  const double recombination = 0.5 * (1 - std::exp(-cross.step / 50));
  std::uniform_real_distribution<double> uniform(0, 1);
  std::vector<Marker> markers;
  for (std::size_t c = 0; c < cross.markersPerChromosome.size(); ++c) {
    std::vector<bool> parental(static_cast<std::size_t>(cross.lines));
    for (int m = 1; m <= cross.markersPerChromosome[c]; ++m) {
      std::string name = "c";
      name += std::to_string(c + 1) + (m < 10 ? "m0" : "m") + std::to_string(m);
      if (c == 0 && m == 1 && !cross.longName.empty()) name = cross.longName;
      std::string genotypes;
      for (auto&& line : parental) {
        if (uniform(generator) < (m == 1 ? 0.5 : recombination)) line = !line;
        genotypes += line ? " A" : " B";
      }
      markers.push_back({name, genotypes, m == 1 && c < cross.anchors.size() ? cross.anchors[c] : 0});
    }
  }
  std::shuffle(markers.begin(), markers.end(), generator);
  return markers;
}

}  // namespace

std::string MapFileText(const SimulatedCross& cross) {
  std::mt19937 generator(cross.seed);
  const std::vector<Marker> markers = Simulate(cross, generator);
  const std::string& end = cross.lineEnd;
  std::string text = "!Population" + end + "3" + end + "2" + end + std::to_string(cross.spaceType) + end +
                     std::to_string(markers.size()) + " !markers" + end + std::to_string(cross.lines) + end;
  for (const Marker& marker : markers) text += marker.name + marker.genotypes + end;
  text += "!Marker name followed by anchor group" + end;
  for (const Marker& marker : markers) text += marker.name + " " + std::to_string(marker.anchor) + end;
  return text;
}
