#include "host/reports/figures.h"

#include <utility>

#include "host/text.h"

namespace reports {
namespace {

void Keep(std::vector<Figure>& figures, Figure figure) {
  if (!figure.svg.empty()) figures.push_back(std::move(figure));
}

}  // namespace

std::string CountText(std::size_t count, std::string_view noun) {
  return host::Counted(static_cast<int64_t>(count), noun);
}

Figure MadeFigure(const Drawing& drawing, std::string name, std::string title, std::string caption) {
  std::string svg = Document(drawing, name, title, caption);
  return {std::move(name), std::move(title), std::move(caption), std::move(svg)};
}

std::vector<Figure> MapFigures(const MapReport& report) {
  std::vector<Figure> figures;
  Keep(figures, MapLadder(report, false));
  Keep(figures, MapLadder(report, true));
  Keep(figures, ParentalMaps(report));
  Keep(figures, PairHeatMap(report));
  Keep(figures, SweepFigure(report));
  Keep(figures, SegregationFigure(report));
  Keep(figures, GenotypeShares(report));
  Keep(figures, MissingFigure(report));
  Keep(figures, LineFigure(report));
  return figures;
}

std::vector<Figure> ConsensusFigures(const ConsensusReport& report) {
  std::vector<Figure> figures;
  for (std::size_t g = 0; g < report.groups.size(); ++g)
    Keep(figures, ConsensusFigure(report.groups[g], g + 1));
  return figures;
}

std::vector<Figure> TrialFigures(const TrialReport& report) {
  std::vector<Figure> figures;
  for (std::size_t t = 0; t < report.traits.size(); ++t) {
    const TraitReport& trait = report.traits[t];
    Keep(figures, BoxPlots(report, t));
    Keep(figures, MeanHeatMap(report, t));
    Keep(figures, VarianceBars(report, t));
    for (const Biplot& biplot : trait.biplots) Keep(figures, BiplotFigure(biplot, trait.name, t));
    Keep(figures, CorrelationFigure(trait.correlations, "correlations_" + std::to_string(t + 1),
                                    trait.name + ": correlations between environments"));
    Keep(figures, QuantilePlots(report, t));
    Keep(figures, Histograms(report, t));
  }
  Keep(figures, CorrelationFigure(report.correlations, "trait_correlations", "Correlations between traits"));
  return figures;
}

}  // namespace reports
