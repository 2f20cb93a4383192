#include "sample_reports.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "host/marker_data.h"
#include "host/reports/sha256.h"

using namespace reports;

namespace {

using Random = std::mt19937;

double Uniform(Random& random) { return static_cast<double>(random()) / 4294967296.0; }
// Near enough to normal for a picture, and the same on every machine.
double Normal(Random& random) {
  double sum = -6;
  for (int i = 0; i < 12; ++i) sum += Uniform(random);
  return sum;
}

RunFacts SampleRun(const std::string& title, const std::string& kind) {
  RunFacts run;
  run.title = title;
  run.kind = kind;
  run.facts = {{"Markers", "19"}, {"Lines", "60"}, {"LOD at least", "3"}, {"Map function", "Kosambi"}};
  run.versions = {{"tessarmont", "0.1.0"}};
  run.arguments = {"tessarmont", "map", "my cross.map", "--lod", "3"};
  run.inputs = {{"my cross.map", Sha256("a cross")}};
  run.ledger = {{"markers read", 21, ""}, {"markers dropped", 2, "more than 20 % <missing>"}};
  run.warnings = {"LG2: 1 pair of neighbours in repulsion",
                  "a pair with few informative lines: <m1> & \"m2\""};
  run.files = {"my cross.map.tsv", "my cross.bip"};
  return run;
}

ReportMarker SampleMarker(Random& random, const std::string& name) {
  ReportMarker marker;
  marker.name = name;
  marker.p = std::pow(Uniform(random), 1.5);
  marker.missing = 0.1 * Uniform(random);
  const double a = 0.25 + 0.05 * Normal(random), h = 0.5 + 0.05 * Normal(random);
  marker.shares = {a, h, 1 - a - h};
  return marker;
}

void FillPairs(SampleMap& sample, std::size_t lines, Random& random) {
  std::vector<std::pair<std::size_t, double>> places;  // group and position by running number
  for (std::size_t g = 0; g < sample.report.groups.size(); ++g) {
    for (const ReportMarker& marker : sample.report.groups[g].markers)
      places.emplace_back(g, marker.position);
  }
  const std::size_t n = places.size();
  sample.rec.resize(n * (n - 1) / 2);
  sample.lod.resize(sample.rec.size());
  const auto count = static_cast<double>(lines);
  for (std::size_t i = 1; i < n; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const bool linked = places[i].first == places[j].first;
      const double cm = std::abs(places[i].second - places[j].second);
      const double r = linked ? 0.5 * (1 - std::exp(-cm / 50)) : 0.5;
      const double seen = std::clamp(r + std::sqrt(r * (1 - r) / count) * 0.7 * Normal(random), 0.0, 0.6);
      const double s = std::clamp(seen, 1e-6, 1 - 1e-6);
      const std::size_t place = host::PairPlace(static_cast<int32_t>(i + 1), static_cast<int32_t>(j + 1));
      sample.rec[place] = static_cast<float>(seen);
      sample.lod[place] = static_cast<float>(
          std::max(0.0, count * (std::log10(2.0) + s * std::log10(s) + (1 - s) * std::log10(1 - s))));
    }
  }
  sample.report.rec = sample.rec;
  sample.report.lod = sample.lod;
}

void FillSweep(MapReport& report) {
  for (int cut = 2; cut <= 12; ++cut) {
    SweepStep step;
    step.lod = cut;
    for (const ReportGroup& group : report.groups) {
      const auto size = static_cast<int64_t>(group.markers.size());
      if (cut < 9 || size < 4) {
        step.sizes.push_back(size);
      } else {
        step.sizes.insert(step.sizes.end(), {size / 2, size - size / 2});
      }
    }
    std::sort(step.sizes.rbegin(), step.sizes.rend());
    step.single = cut / 3;
    report.sweep.push_back(step);
  }
  report.lodCut = 3;
}

std::string Numbered(const std::string& prefix, std::size_t number) {
  return prefix + std::to_string(number);
}

}  // namespace

SampleMap SampleMapReport(const MapShape& shape) {
  Random random(11);
  SampleMap sample;
  MapReport& report = sample.report;
  report.run = SampleRun("Linkage map of my cross.map", "bi-parental population, F2");
  report.codes = {"A", "H", "B"};
  report.expected = {0.25, 0.5, 0.25};
  int32_t number = 0;
  for (std::size_t g = 0; g < shape.groups.size(); ++g) {
    ReportGroup group{Numbered("LG", g + 1), 0, {}};
    double female = 0, male = 0;
    for (std::size_t k = 0; k < shape.groups[g]; ++k) {
      ReportMarker marker = SampleMarker(random, Numbered(shape.prefix, static_cast<std::size_t>(++number)));
      marker.number = number;
      marker.interval = k == 0 ? 0 : -shape.step * std::log(1 - Uniform(random));
      group.length += marker.interval;
      marker.position = group.length;
      female += marker.interval * 1.3;
      male += marker.interval * 0.7;
      if (shape.parents && number % 3 != 0) marker.female = female;
      if (shape.parents && number % 3 != 1) marker.male = male;
      if (g == 0) marker.p *= 0.002;
      group.markers.push_back(std::move(marker));
    }
    report.groups.push_back(std::move(group));
  }
  report.unlinked = {SampleMarker(random, "lonely")};
  for (std::size_t i = 0; i < shape.lines; ++i) {
    report.lines.push_back({Numbered("line ", i + 1), std::max(0.0, std::floor(12 + 4 * Normal(random))),
                            0.05 * Uniform(random)});
  }
  if (shape.lines > 20) report.lines[17].crossovers = 60;
  FillSweep(report);
  if (shape.pairs) FillPairs(sample, std::max<std::size_t>(shape.lines, 20), random);
  return sample;
}

ConsensusReport SampleConsensusReport(std::size_t maps, std::size_t markers) {
  Random random(5);
  ConsensusReport report;
  report.run = SampleRun("Consensus of three maps", "consensus map");
  for (std::size_t g = 0; g < 2; ++g) {
    JointGroup group;
    group.name = Numbered("chr ", g + 1);
    for (std::size_t m = 0; m < maps; ++m) {
      group.sources.push_back({Numbered("map ", m + 1), markers / 2, 0.97, m == 1});
    }
    for (std::size_t k = 0; k < markers; ++k) {
      JointMarker marker{Numbered("c", k + 1), 3.0 * static_cast<double>(k), {}};
      for (std::size_t m = 0; m < maps; ++m) {
        const double along =
            marker.position * (1 + 0.1 * static_cast<double>(m)) + (Uniform(random) < 0.08 ? 9 : 0);
        const double end = 3.3 * static_cast<double>(markers);
        const double place = m == 1 ? end - along : along;
        marker.positions.push_back(Uniform(random) < 0.7 ? place : kNone);
      }
      group.markers.push_back(marker);
    }
    group.conflicts = {{0, maps - 1, 3, 120}};
    report.groups.push_back(group);
  }
  return report;
}

namespace {

AnovaTable SampleAnova(const std::string& where, bool combined) {
  AnovaTable table{
      where, {}, {{"R-square, %", "81.2"}, {"LSD (0.05)", "0.91"}, {"heritability per mean", "0.74"}}};
  table.rows = {{"Model", 13, 120.5, 9.27, 8.1, 1e-5, kNone},
                {"Error", 22, 25.2, 1.15, kNone, kNone, 1.15},
                {"Total", 35, 145.7, kNone, kNone, kNone, kNone},
                {"Block", 2, 3.1, 1.55, 1.35, 0.28, 0.03},
                {"Genotype", 11, 117.4, 10.7, 9.3, 3.2e-6, 3.18}};
  if (combined) table.rows.push_back({"GE interaction", 33, 40.2, 1.2, 1.05, 0.41, 0.4});
  return table;
}

CorrelationMatrix SampleMatrix(Random& random, const std::string& title,
                               const std::vector<std::string>& names) {
  CorrelationMatrix matrix{title, names, std::vector<double>(names.size() * names.size(), 1.0)};
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const double r = std::clamp(0.5 + 0.5 * Normal(random), -0.95, 0.99);
      matrix.values[i * names.size() + j] = matrix.values[j * names.size() + i] =
          i == 3 && j == 1 ? kNone : r;
    }
  }
  return matrix;
}

Biplot SampleBiplot(Random& random, const TrialReport& report, const std::string& model) {
  Biplot biplot{
      model, model == "GGE" ? "environment means" : "genotype and environment means", 0.62, 0.21, {}, {}};
  for (const std::string& name : report.genotypes)
    biplot.genotypes.push_back({name, 40 + 3 * Normal(random), 1.4 * Normal(random), Normal(random)});
  for (const std::string& name : report.environments) {
    biplot.environments.push_back(
        {name, 40 + 5 * Normal(random), 1.5 + 0.5 * Normal(random), Normal(random)});
  }
  return biplot;
}

TraitReport SampleTrait(Random& random, const TrialShape& shape, const TrialReport& report,
                        const std::string& name) {
  TraitReport trait;
  trait.name = name;
  const std::size_t columns = shape.environments;
  trait.plots.resize(columns);
  trait.means.assign(shape.genotypes * columns, kNone);
  std::vector<double> base(shape.genotypes);
  for (double& value : base) value = 40 + 4 * Normal(random);
  for (std::size_t e = 0; e < columns; ++e) {
    QuantileSet set{report.environments[e], {}, {}};
    for (std::size_t g = 0; g < shape.genotypes; ++g) {
      const double cell = base[g] + 3.0 * static_cast<double>(e % 7) + 2 * Normal(random);
      for (std::size_t b = 0; b < shape.blocks; ++b) {
        const double off = Normal(random);
        trait.plots[e].push_back(cell + off);
        set.observed.push_back(off);
        set.quantiles.push_back(off * 0.95 + 0.05 * Normal(random));
      }
      if (g != 1 || e != 1) trait.means[g * columns + e] = cell;
    }
    trait.quantiles.push_back(set);
    trait.histograms.push_back({report.environments[e], {30, 35, 40, 45, 50}, {2, 9, 14, 7, 1}});
    trait.anova.push_back(SampleAnova(report.environments[e], false));
  }
  trait.anova.push_back(SampleAnova("Combined", true));
  trait.correlations = {SampleMatrix(random, "Environments, " + name, report.environments)};
  trait.biplots = {SampleBiplot(random, report, "GGE"), SampleBiplot(random, report, "AMMI")};
  trait.notes = {"environment " + report.environments[0] + ": one plot is missing"};
  return trait;
}

}  // namespace

TrialReport SampleTrialReport(const TrialShape& shape) {
  Random random(3);
  TrialReport report;
  report.run = SampleRun("Field trial wheat.txt", "field trial");
  for (std::size_t e = 0; e < shape.environments; ++e)
    report.environments.push_back(Numbered(shape.environments > 6 ? "Location " : "E", e + 1));
  for (std::size_t g = 0; g < shape.genotypes; ++g) report.genotypes.push_back(Numbered(shape.prefix, g + 1));
  std::vector<std::string> traits;
  for (std::size_t t = 0; t < shape.traits; ++t)
    traits.push_back(t == 0 ? "yield" : Numbered("trait ", t + 1));
  for (const std::string& name : traits) report.traits.push_back(SampleTrait(random, shape, report, name));
  for (std::size_t e = 0; e < std::min<std::size_t>(shape.environments, 3); ++e) {
    report.correlations.push_back(SampleMatrix(random, "Traits, " + report.environments[e], traits));
  }
  return report;
}
