#include "host/map_report.h"

#include <algorithm>
#include <numeric>

#include "host/clonal_map.h"
#include "host/map_tables.h"
#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

constexpr float kDistorted = 0.01F;
constexpr int32_t kEightParentLines = 4;  // population type 8PRIL
// A lower LOD does not tell repulsion from chance in two markers that stand side by side.
constexpr float kTellingLod = 2;
constexpr std::size_t kPairsNamed = 5;
constexpr std::size_t kUnlinkedShown = 20;  // names in the summary; the table has them all

// Columns of the table by the kind of file, behind group and marker.
constexpr std::string_view kHeading = "group\tmarker\tposition\tinterval\trec\tlod\tsegregation_p\tmissing";
constexpr std::string_view kKindHeadings[] = {
    "",
    "\tcategory\tfemale_position\tmale_position\tfemale_phase\tmale_phase",
    "\tpattern",
};
constexpr std::string_view kBinHeading = "\tbin\tothers";

std::string Statistics(const std::string& p, double missing) { return '\t' + p + '\t' + Fixed(missing, 4); }

std::string StatisticsOf(const MapData& data, int32_t marker) {
  const bool tested = data.Tested(marker);
  return Statistics(tested ? Significant(Plain(data.SegregationP(marker))) : "", data.MissingShare(marker));
}

std::string PhaseWord(const ParentalPlace& place, std::size_t parent) {
  constexpr std::string_view words[][2] = {{"AB", "BA"}, {"CD", "DC"}};
  if (!place.onMap || place.phase == 0) return {};
  return std::string(words[parent][place.phase > 0 ? 0 : 1]);
}

// `place`: null for an unlinked marker.
std::string KindColumns(const MapData& data, int32_t marker, const MapPlace* place) {
  if (data.kind == TableKind::Map) return {};
  std::string text = '\t' + CategoryText(data, marker);
  if (data.kind == TableKind::Plm) return text;
  for (std::size_t parent = 0; parent < 2; ++parent) {
    text += '\t';
    if (place != nullptr && place->parent[parent].onMap) text += Fixed(place->parent[parent].position, 4);
  }
  for (std::size_t parent = 0; parent < 2; ++parent) {
    text += '\t';
    if (place != nullptr) text += PhaseWord(place->parent[parent], parent);
  }
  return text;
}

// The lines of a marker and of those in its bin.
struct TableRow {
  std::string group, ahead;  // ahead: position to LOD
  int32_t marker = 0;
  const MapPlace* place = nullptr;
};

using Bins = std::vector<std::vector<const BinnedMarker*>>;

std::string RowText(const MapRun& run, const Bins& bins, const TableRow& row) {
  const MapData& data = run.data;
  const std::string name = TableCell(data.Name(row.marker)), kind = KindColumns(data, row.marker, row.place);
  std::string text = row.group + '\t' + name + row.ahead + StatisticsOf(data, row.marker) + kind;
  if (!run.cleaning.rules.bin) return text + '\n';
  const auto& bin = bins[static_cast<std::size_t>(row.marker - 1)];
  std::string others;
  for (const BinnedMarker* binned : bin) others += (others.empty() ? "" : ";") + TableCell(binned->name);
  text += '\t' + (bin.empty() ? "" : name) + '\t' + others + '\n';
  for (const BinnedMarker* binned : bin) {
    const std::string p = binned->segregationP ? Significant(Plain(*binned->segregationP)) : "";
    const std::string place =
        row.place == nullptr ? "\t\t\t\t" : '\t' + Fixed(row.place->position, 4) + "\t0.0000\t\t";
    for (const std::string& part : {row.group + '\t', TableCell(binned->name), place,
                                    Statistics(p, binned->missing), kind, '\t' + name + "\t\n"}) {
      text += part;
    }
  }
  return text;
}

std::string Centimorgans(double length) { return Fixed(length, 1) + " cM"; }

std::string UnlinkedNames(const MapRun& run) {
  std::string names;
  const std::size_t shown = std::min(run.map.unlinked.size(), kUnlinkedShown);
  for (std::size_t i = 0; i < shown; ++i) names += (i > 0 ? ", " : ": ") + run.data.Name(run.map.unlinked[i]);
  if (shown < run.map.unlinked.size()) names += ", ...";
  return names;
}

std::string GroupTable(const MapRun& run) {
  const bool clonal = run.data.kind == TableKind::Cdm;
  std::size_t width = 9;
  for (const LinkageGroup& group : run.map.groups) width = std::max(width, group.name.size() + 1);
  std::string text = Padded("group", width) + " markers        cM";
  text += clonal ? "  female    male  first and last marker\n" : "  first and last marker\n";
  for (const LinkageGroup& group : run.map.groups) {
    text += PaddedColumn(group.name, width) + RightAligned(std::to_string(group.places.size()), 8) +
            RightAligned(Fixed(group.length, 1), 10);
    for (std::size_t parent = 0; clonal && parent < 2; ++parent) {
      text += RightAligned(Fixed(ParentLength(group, parent), 1), 8);
    }
    text +=
        "  " + run.data.Name(group.places.front().marker) + ", " + run.data.Name(group.places.back().marker);
    if (group.gaps > 0) text += " (" + Counted(group.gaps, "gap") + ")";
    text += '\n';
  }
  return text;
}

// Where the markers came from and what was left out.
std::string InputText(const MapRun& run) {
  const MapData& data = run.data;
  std::string text = run.input + ": " + Counted(data.numMarkers, "marker") + " x " +
                     Counted(data.populationSize, "line") + ", population " +
                     std::to_string(data.populationType) + " (" +
                     std::string(PopulationWords(data.kind, data.populationType)) + "), " +
                     std::string(MapFunctionName(data.mappingFunction)) + " distances\n";
  if (run.cleaning.rules.Any()) {
    const std::string ledger = CleaningText(run.cleaning);  // whole on standard error
    text += ledger.substr(0, ledger.find('\n') + 1);
  }
  text += "missing genotypes " + Fixed(100 * MissingShare(data), 1) +
          " %, distorted segregation (p < 0.01) at " + Counted(DistortedMarkers(data), "marker") + "\n";
  text += "linked at LOD >= " + Significant(Plain(run.thresholds.minLod)) +
          " and recombination <= " + Significant(Plain(run.thresholds.maxRec)) + "\n";
  return run.cut.empty() ? text : text + run.cut + "\n";
}

int BridgedPlaces(const LinkageGroup& group) {
  return static_cast<int>(std::count_if(group.places.begin(), group.places.end(),
                                        [](const MapPlace& place) { return place.bridged; }));
}

// Markers of a clonal F1 that the project file for the mapping engine has under another category.
bool HasRecodedMarkers(const MapData& data, const LinkageMap& map) {
  constexpr int32_t clonalF1 = 1, intercross = 4;
  if (data.kind != TableKind::Cdm || data.populationType != clonalF1) return false;
  const auto recoded = [&](const MapPlace& place) { return data.Category(place.marker) == intercross; };
  return std::any_of(map.groups.begin(), map.groups.end(), [&](const LinkageGroup& group) {
    return std::any_of(group.places.begin(), group.places.end(), recoded);
  });
}

void WarnOfGroup(const MapData& data, const LinkageGroup& group, std::vector<std::string>& warnings) {
  std::vector<std::string> turned, weak;
  for (std::size_t k = 1; k < group.places.size(); ++k) {
    const MapPlace& place = group.places[k];
    if (place.rec <= 0.5F || place.interval >= kUnlinkedDistance) continue;
    (place.lod < kTellingLod ? weak : turned)
        .push_back(data.Name(group.places[k - 1].marker) + " and " + data.Name(place.marker));
  }
  const auto warn = [&](const std::vector<std::string>& pairs, const std::string& what) {
    if (pairs.empty()) return;
    warnings.push_back(group.name + ": " + Counted(static_cast<int64_t>(pairs.size()), "pair") +
                       " of neighbours " + what + ": " + FirstNames(pairs, kPairsNamed));
  };
  warn(turned, "in repulsion (frequency above 0.5), the parents' codes of some markers seem to be swapped");
  warn(weak, "that are hardly linked (frequency above 0.5 at a LOD below " + Significant(Plain(kTellingLod)) +
                 "), the order is doubtful there");
  if (group.gaps > 0) {
    warnings.push_back(
        group.name + ": " + Counted(group.gaps, "pair") +
        " of neighbours without linkage; each stands as 1000 cM in the files and is left out of "
        "the length");
  }
}

}  // namespace

int32_t DistortedMarkers(const MapData& data) {
  int32_t count = 0;
  for (int32_t m = 1; m <= data.numMarkers; ++m) {
    if (data.Tested(m) && data.SegregationP(m) < kDistorted) ++count;
  }
  return count;
}

double MissingShare(const MapData& data) {
  double sum = 0;
  for (int32_t m = 1; m <= data.numMarkers; ++m) sum += data.MissingShare(m);
  return data.numMarkers > 0 ? sum / data.numMarkers : 0;
}

std::string MapTable(const MapRun& run) {
  std::string text(kHeading);
  text += kKindHeadings[static_cast<std::size_t>(run.data.kind)];
  if (run.cleaning.rules.bin) text += kBinHeading;
  text += '\n';
  const Bins bins = BinMembers(run.cleaning);
  for (const LinkageGroup& group : run.map.groups) {
    for (const MapPlace& place : group.places) {
      std::string ahead = '\t' + Fixed(place.position, 4) + '\t' + Fixed(place.interval, 4) + '\t';
      const bool told = &place != &group.places.front() && !place.bridged;
      ahead += told ? Fixed(place.rec, 5) + '\t' + Fixed(place.lod, 3) : "\t";
      text += RowText(run, bins, {group.name, ahead, place.marker, &place});
    }
  }
  for (int32_t marker : run.map.unlinked)
    text += RowText(run, bins, {"unlinked", "\t\t\t\t", marker, nullptr});
  return text;
}

std::vector<std::string> MapWarnings(const MapData& data, const LinkageMap& map) {
  std::vector<std::string> warnings;
  int bridged = 0;
  for (const LinkageGroup& group : map.groups) {
    WarnOfGroup(data, group, warnings);
    bridged += BridgedPlaces(group);
  }
  if (bridged > 0) {
    warnings.push_back(Counted(bridged, "pair") +
                       " of neighbours that no line compares; their intervals follow from the markers that "
                       "both are linked to");
  }
  if (data.kind == TableKind::Plm && data.populationType == kEightParentLines) {
    warnings.emplace_back(
        "frequencies of 8PRIL pairs come out too high (about 0.08 for neighbours at 0.05, 0.23 without "
        "linkage): "
        "the map is several times too long");
  }
  if (HasRecodedMarkers(data, map)) {
    warnings.emplace_back(
        "the .cdq file codes AB=CD markers by their phases (A=CB=D, A=DB=C), which a reader takes of a "
        "double "
        "cross only: set its population type to 2 there when you add the traits");
  }
  int32_t untested = 0;
  for (int32_t m = 1; m <= data.numMarkers; ++m) untested += data.Tested(m) ? 0 : 1;
  if (untested > 0) warnings.push_back(Counted(untested, "marker") + " without any genotype");
  return warnings;
}

std::string MapSummary(const MapRun& run) {
  double length = 0;
  std::size_t placed = 0;
  for (const LinkageGroup& group : run.map.groups) {
    length += group.length;
    placed += group.places.size();
  }
  std::string text = InputText(run) + '\n' + GroupTable(run) + '\n';
  text += Counted(static_cast<int64_t>(run.map.groups.size()), "group") + ", " +
          Counted(static_cast<int64_t>(placed), "marker") + ", " + Centimorgans(length) + "; " +
          std::to_string(run.map.unlinked.size()) + " unlinked" + UnlinkedNames(run) + "\n";
  const bool intervals = run.data.kind == TableKind::Map && run.data.markerSpaceType == 1;
  text += std::string("written (") + (intervals ? "intervals" : "positions") + "):";
  for (const std::string& file : run.written) text += " " + file;
  return text + "\n";
}

std::string SweepTable(const MapRun& run) {
  std::string text = "lod\tgroups\tmarkers\tunlinked\tsizes\n";
  for (const SweepRow& row : run.sweep) {
    std::vector<int32_t> sizes = LargeSizes(row, run.minGroup);
    const int32_t markers = std::accumulate(sizes.begin(), sizes.end(), 0);
    text += Significant(Plain(row.lod)) + '\t' + std::to_string(sizes.size()) + '\t' +
            std::to_string(markers) + '\t' + std::to_string(run.data.numMarkers - markers) + '\t';
    for (std::size_t i = 0; i < sizes.size(); ++i) text += (i > 0 ? "," : "") + std::to_string(sizes[i]);
    text += '\n';
  }
  return text;
}

}  // namespace host
