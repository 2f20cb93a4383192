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

// Gametes of one heterozygous plant along a chromosome: which of its two chromosomes each one carries.
struct Gametes {
  Gametes(int lines, double step, std::mt19937& draw)
      : second(static_cast<std::size_t>(lines)),
        recombination(0.5 * (1 - std::exp(-step / 50))),
        generator(draw) {}

  // Goes on to the next marker; the first one of a chromosome is drawn anew.
  void Step(bool first) {
    std::uniform_real_distribution<double> uniform(0, 1);
    for (auto&& line : second) {
      if (uniform(generator) < (first ? 0.5 : recombination)) line = !line;
    }
  }
  std::vector<bool> second;
  double recombination;
  std::mt19937& generator;
};

std::string NameOf(std::size_t chromosome, int marker) {
  return "c" + std::to_string(chromosome + 1) + (marker < 10 ? "m0" : "m") + std::to_string(marker);
}

std::string ClonalGenotype(const std::string& category, bool ab, bool cd) {
  const std::string a = ab ? "B" : "A", c = cd ? "D" : "C";
  if (category == "ABCD") return a + c;
  if (category == "A=B") return "X" + c;
  if (category == "C=D") return a + "X";
  const bool other = category == "A=DB=C" ? !cd : cd;
  const int count = static_cast<int>(ab) + static_cast<int>(other);
  return count == 0 ? "AA" : count == 1 ? "AB" : "BB";
}

std::string FileOf(int population, int lines, std::vector<std::pair<std::string, std::string>> rows,
                   std::mt19937& generator) {
  std::shuffle(rows.begin(), rows.end(), generator);
  std::string text = std::to_string(population) + "\n2\n2\n" + std::to_string(rows.size()) + "\n" +
                     std::to_string(lines) + "\n";
  for (const auto& [name, row] : rows) text += row + "\n";
  for (const auto& [name, row] : rows) text += name + " 0\n";
  return text;
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

ClonalText ClonalFileText(const SimulatedClonal& cross) {
  const std::vector<std::string> categories =
      cross.doubleCross ? std::vector<std::string>{"ABCD", "A=B", "A=CB=D", "C=D", "A=DB=C"}
                        : std::vector<std::string>{"ABCD", "A=B", "C=D", "AB=CD"};
  std::mt19937 generator(cross.seed);
  ClonalText result;
  std::vector<std::pair<std::string, std::string>> rows;
  for (std::size_t c = 0; c < cross.markersPerChromosome.size(); ++c) {
    Gametes ab(cross.lines, cross.step, generator), cd(cross.lines, cross.step, generator);
    for (int m = 1; m <= cross.markersPerChromosome[c]; ++m) {
      ab.Step(m == 1);
      cd.Step(m == 1);
      const std::string& category = categories[static_cast<std::size_t>(m - 1) % categories.size()];
      const std::string name = NameOf(c, m);
      const bool flipAB = !cross.doubleCross && generator() % 2 == 0,
                 flipCD = !cross.doubleCross && generator() % 2 == 0;
      result.flippedAB[name] = flipAB;
      result.flippedCD[name] = flipCD;
      std::string row = category;
      row += " " + name;
      for (std::size_t line = 0; line < ab.second.size(); ++line) {
        row += " " + ClonalGenotype(category, ab.second[line] != flipAB, cd.second[line] != flipCD);
      }
      rows.emplace_back(name, row);
    }
  }
  result.text = FileOf(cross.doubleCross ? 2 : 1, cross.lines, rows, generator);
  return result;
}

std::string MultiParentFileText(const SimulatedParents& cross) {
  const std::string patterns[] = {"ABCD", "AACC", "ABCD", "ABAB", "ABCD", "ABBA"};
  std::mt19937 generator(cross.seed);
  std::vector<std::pair<std::string, std::string>> rows;
  for (std::size_t c = 0; c < cross.markersPerChromosome.size(); ++c) {
    Gametes ab(cross.lines, cross.step, generator), cd(cross.lines, cross.step, generator),
        last(cross.lines, cross.step, generator);  // of A x B, of C x D, of the cross of the two
    for (int m = 1; m <= cross.markersPerChromosome[c]; ++m) {
      for (Gametes* gametes : {&ab, &cd, &last}) gametes->Step(m == 1);
      const std::string& pattern = patterns[static_cast<std::size_t>(m - 1) % std::size(patterns)];
      std::string row = pattern;
      row += " " + NameOf(c, m);
      for (std::size_t line = 0; line < last.second.size(); ++line) {
        const bool half = last.second[line];
        const bool parent = half ? cd.second[line] : ab.second[line];
        row +=
            std::string(" ") + pattern[2 * static_cast<std::size_t>(half) + static_cast<std::size_t>(parent)];
      }
      rows.emplace_back(NameOf(c, m), row);
    }
  }
  return FileOf(1, cross.lines, rows, generator);
}
