#pragma once

// What the report pages show, as plain numbers and names. The commands fill these; nothing here reads a file.

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace reports {

// A number that is not there. Figures leave a gap for it, tables show a dash.
inline constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

struct Fact {
  std::string label, value;
};

// A line of the ledger: what was done to how many of what, and why. count below 0 is not shown.
struct LedgerRow {
  std::string what;  // "markers read", "markers dropped"
  int64_t count = -1;
  std::string why;  // "more than 20 % missing", may be empty
};

struct ReportInput {
  std::string name;
  std::string checksum;  // sha256 in hexadecimal, see Sha256()
};

// What every page tells of its run. No time and no path of the machine belongs here: the same input gives the
// same bytes.
struct RunFacts {
  std::string title;                   // "Linkage map of listeria.map"
  std::string kind;                    // "bi-parental population F2", "field trial"
  std::vector<Fact> facts;             // shown on top: markers, lines, groups, length, thresholds ...
  std::vector<Fact> versions;          // "tessarmont", "0.1.0"
  std::vector<std::string> arguments;  // as given, the program's name first
  std::vector<ReportInput> inputs;
  std::vector<LedgerRow> ledger;
  std::vector<std::string> warnings;
  std::vector<std::string> files;  // results of the run
};

// ---- linkage maps

struct ReportMarker {
  std::string name;
  int32_t number = 0;          // running number in the file, from 1: the key to the pair arrays; 0 without
  double position = 0;         // centimorgans along the group; an unlinked neighbour is 1000 further on
  double interval = 0;         // to the marker before, 0 at the first
  double rec = kNone;          // with the marker before
  double lod = kNone;          // with the marker before
  double p = kNone;            // of the segregation test
  double missing = 0;          // share of the lines without a genotype, 0 to 1
  std::vector<double> shares;  // of the typed lines, by MapReport::codes
  double female = kNone, male = kNone;  // positions on the maps of the parents, centimorgans
};

struct ReportGroup {
  std::string name;
  double length = 0;                  // centimorgans, without gaps
  std::vector<ReportMarker> markers;  // in map order
};

// A cut of the sweep and the groups that it makes, single markers left out.
struct SweepStep {
  double lod = 0;
  std::vector<int64_t> sizes;  // markers of each group, largest first
  int64_t single = 0;          // markers linked to no other
};

struct ReportLine {
  std::string name;
  double crossovers = kNone;
  double missing = kNone;  // share of the markers, 0 to 1
};

struct MapReport {
  RunFacts run;
  std::vector<ReportGroup> groups;
  std::vector<ReportMarker> unlinked;  // their positions are not read
  std::vector<std::string> codes;      // genotype codes: "A", "H", "B"
  std::vector<double> expected;   // shares that the population expects, by code; empty when markers differ
  std::vector<SweepStep> sweep;   // ascending cuts; may be empty
  double lodCut = kNone;          // the cut that was used
  std::vector<ReportLine> lines;  // may be empty
  std::string femaleName = "female", maleName = "male";  // headings of the parental maps
  // Frequency and LOD of each pair of the file's markers, in the order (2,1), (3,1), (3,2), (4,1), ...; both
  // empty when there is no table. They must outlive the call.
  std::span<const float> rec, lod;
};

// ---- consensus maps

struct SourceMap {
  std::string name;
  std::size_t shared = 0;  // markers on this map and the consensus
  double tau = kNone;      // Kendall's tau-b with the consensus
  bool reversed = false;   // runs against the consensus
};

struct JointMarker {
  std::string name;
  double position = 0;            // on the consensus, centimorgans
  std::vector<double> positions;  // on each source, kNone where it is not on the map
};

struct JointConflict {
  std::size_t first = 0, second = 0;  // sources, from 0
  int64_t opposed = 0, pairs = 0;     // marker pairs in opposite order, of how many
};

struct JointGroup {
  std::string name;  // may be empty when there is but one
  std::vector<SourceMap> sources;
  std::vector<JointMarker> markers;  // in consensus order
  std::vector<JointConflict> conflicts;
};

struct ConsensusReport {
  RunFacts run;
  std::vector<JointGroup> groups;
};

// ---- field trials

// A row of an analysis of variance; what does not apply is kNone.
struct AnovaRow {
  std::string source;  // "Model", "Genotype", "Block/Env" ...
  double df = kNone, ss = kNone, ms = kNone, f = kNone, p = kNone, variance = kNone;
};

struct AnovaTable {
  std::string where;  // environment, or "Combined"
  std::vector<AnovaRow> rows;
  std::vector<Fact> facts;  // R-square, LSD, heritabilities, Bartlett's test
};

// Residuals of an environment beside the normal quantiles of their ranks: two lists of one length.
struct QuantileSet {
  std::string where;
  std::vector<double> quantiles, observed;
};

struct Histogram {
  std::string where;  // environment, "environment, block 1", "Combined predictions"
  std::vector<double> middles, counts;
};

// Square and symmetric; row by row, kNone where nothing is known.
struct CorrelationMatrix {
  std::string title;  // "Environments, trait yield", "Traits, environment E1"
  std::vector<std::string> names;
  std::vector<double> values;  // names.size() squared
};

struct BiplotScore {
  std::string name;
  double mean = 0, axis1 = 0, axis2 = 0;
};

struct Biplot {
  std::string model;                      // "GGE" or "AMMI"
  std::string centred;                    // what was taken off the means: "environment means"
  double share1 = kNone, share2 = kNone;  // of the sum of squares, 0 to 1
  std::vector<BiplotScore> genotypes, environments;
};

struct TraitReport {
  std::string name;
  std::vector<std::vector<double>> plots;  // by TrialReport::environments; without missing values
  std::vector<double> means;  // genotype * environments.size() + environment; kNone for an empty cell
  std::vector<QuantileSet> quantiles;
  std::vector<Histogram> histograms;
  std::vector<AnovaTable> anova;
  std::vector<CorrelationMatrix> correlations;  // between environments
  std::vector<Biplot> biplots;
  std::vector<std::string> notes;  // "environment E3: no error degrees of freedom, not analysed"
};

struct TrialReport {
  RunFacts run;
  std::vector<std::string> environments, genotypes;
  std::vector<TraitReport> traits;
  std::vector<CorrelationMatrix> correlations;  // between traits, by environment
};

}  // namespace reports
