#pragma once

// The figures one by one. Each returns a figure without a drawing (`svg` empty) when its data are not there.

#include <string>
#include <string_view>
#include <vector>

#include "host/reports/drawing.h"
#include "host/reports/pages.h"

namespace reports {

// Width of most figures; pages show them no wider.
inline constexpr double kFigureWidth = 1000;

// "1 marker", "2 markers".
std::string CountText(std::size_t count, std::string_view noun);

// Closes a drawing; the caption serves as the description too.
Figure MadeFigure(const Drawing& drawing, std::string name, std::string title, std::string caption);

// Groups as bars with density strips; `named` adds the markers' names, thinned where they do not fit.
Figure MapLadder(const MapReport& report, bool named);
Figure PairHeatMap(const MapReport& report);
Figure SweepFigure(const MapReport& report);
Figure SegregationFigure(const MapReport& report);
Figure MissingFigure(const MapReport& report);
Figure GenotypeShares(const MapReport& report);
Figure LineFigure(const MapReport& report);
Figure ParentalMaps(const MapReport& report);

// A group of a consensus with its sources; `number` of the group, from 1, names the figure.
Figure ConsensusFigure(const JointGroup& group, std::size_t number);

// Of trait t (from 0).
Figure BoxPlots(const TrialReport& report, std::size_t t);
Figure MeanHeatMap(const TrialReport& report, std::size_t t);
Figure QuantilePlots(const TrialReport& report, std::size_t t);
Figure Histograms(const TrialReport& report, std::size_t t);
Figure VarianceBars(const TrialReport& report, std::size_t t);
// Correlations as circles; `name` of the figure, and what the matrices stand for.
Figure CorrelationFigure(const std::vector<CorrelationMatrix>& matrices, const std::string& name,
                         const std::string& title);
// Two panels: for "GGE" which genotype wins where, and mean against stability; for others the first axis
// against the mean, and the second axis against the first.
Figure BiplotFigure(const Biplot& biplot, const std::string& trait, std::size_t t);

}  // namespace reports
