#include "host/cleaning.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <map>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "host/exit_code.h"
#include "host/isolated_call.h"
#include "host/map_tables.h"
#include "host/marker_data.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kTestedTogether = 400;  // markers; their pairs are estimated too, so not too many
constexpr std::size_t kDroppedShown = 10;

double MissingShareOf(const GenotypeTable& table, std::size_t marker) {
  const std::span<const uint8_t> row = table.Row(marker);
  const auto missing = std::count(row.begin(), row.end(), MissingCell(table.kind));
  return row.empty() ? 0 : static_cast<double>(missing) / static_cast<double>(row.size());
}

GenotypeTable Subset(const GenotypeTable& table, std::span<const std::size_t> markers) {
  GenotypeTable part{table.kind,
                     table.populationType,
                     table.mappingFunction,
                     table.markerSpaceType,
                     table.lines,
                     {},
                     table.lineNames,
                     {},
                     {},
                     {}};
  for (std::size_t m : markers) {
    part.markers.push_back(table.markers[m]);
    if (!table.categories.empty()) part.categories.push_back(table.categories[m]);
    part.anchors.push_back(table.anchors[m]);
    const std::span<const uint8_t> row = table.Row(m);
    part.cells.insert(part.cells.end(), row.begin(), row.end());
  }
  return part;
}

std::vector<float> SegregationOf(const GenotypeTable& table, std::span<const std::size_t> markers) {
  const ScratchFolder folder(std::filesystem::temp_directory_path(), "tessarmont-");
  const std::filesystem::path path = folder.Path() / ("part" + std::string(ExtensionOf(table.kind)));
  std::vector<float> p;
  for (std::size_t at = 0; at < markers.size(); at += kTestedTogether) {
    const auto part = markers.subspan(at, std::min(kTestedTogether, markers.size() - at));
    WriteGenotypes(path, Subset(table, part));
    MapData data;
    if (!LoadMarkers(OpenInput(path), table.kind, true, data).good) {
      throw Failure{ExitCode::Other, "a part of the markers could not be tested for segregation"};
    }
    p.insert(p.end(), data.segregationP.view().begin(), data.segregationP.view().end());
  }
  return p;
}

std::string Beyond(std::string_view what, double value, std::string_view side, double limit) {
  return std::string(what) + " " + Significant(value) + " " + std::string(side) + " " + Significant(limit);
}

DroppedMarker Dropped(const GenotypeTable& table, std::size_t marker, std::string reason) {
  return {table.markers[marker], static_cast<int32_t>(marker + 1), std::move(reason)};
}

// What stands between two markers of one bin beside their genotypes.
bool MayShare(const GenotypeTable& table, const std::vector<int32_t>& group, std::size_t a, std::size_t b) {
  const bool anchors = group[a] == 0 || group[b] == 0 || group[a] == group[b];
  return anchors && (table.categories.empty() || table.categories[a] == table.categories[b]);
}

// Whether `all` has every genotype of `part`.
bool Covers(const GenotypeTable& table, std::size_t all, std::size_t part) {
  const std::span<const uint8_t> a = table.Row(all), b = table.Row(part);
  const uint8_t missing = MissingCell(table.kind);
  for (std::size_t line = 0; line < a.size(); ++line) {
    if (b[line] != missing && a[line] != b[line]) return false;
  }
  return true;
}

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// The one bin that can take a marker, by its kept marker; kNone for none or several.
std::size_t BinFor(const GenotypeTable& table, const std::vector<int32_t>& group,
                   const std::vector<std::size_t>& heads, std::size_t marker) {
  std::size_t found = kNone;
  for (std::size_t head : heads) {
    if (!Covers(table, head, marker) || !MayShare(table, group, head, marker)) continue;
    if (found != kNone) return kNone;
    found = head;
  }
  return found;
}

// The kept marker of each marker's bin, itself where it is kept; by place in the table.
std::map<std::size_t, std::size_t> BinsOf(const GenotypeTable& table, std::vector<std::size_t> markers) {
  std::unordered_map<std::size_t, double> missing;
  for (std::size_t m : markers) missing.emplace(m, MissingShareOf(table, m));
  std::stable_sort(markers.begin(), markers.end(),
                   [&](std::size_t a, std::size_t b) { return missing.at(a) < missing.at(b); });
  std::map<std::size_t, std::size_t> headOf;
  std::vector<std::size_t> heads;
  std::vector<int32_t> group = table.anchors;                      // a kept marker takes over that of its bin
  std::unordered_map<std::string, std::vector<std::size_t>> same;  // heads by their genotypes
  for (std::size_t m : markers) {
    const std::span<const uint8_t> row = table.Row(m);
    std::vector<std::size_t>& equals = same[std::string(row.begin(), row.end())];
    const auto equal = std::find_if(equals.begin(), equals.end(),
                                    [&](std::size_t head) { return MayShare(table, group, head, m); });
    std::size_t head = kNone;
    if (equal != equals.end()) head = *equal;
    if (head == kNone && missing.at(m) > 0) head = BinFor(table, group, heads, m);
    headOf[m] = head == kNone ? m : head;
    if (head == kNone) {
      heads.push_back(m);
      equals.push_back(m);
    } else {
      group[head] = std::max(group[head], group[m]);
    }
  }
  return headOf;
}

void DropMissing(const GenotypeTable& table, CleaningLedger& ledger, std::vector<std::size_t>& markers) {
  const double limit = *ledger.rules.maxMissing;
  std::erase_if(markers, [&](std::size_t m) {
    const double share = MissingShareOf(table, m);
    if (share <= limit) return false;
    ledger.tooMissing.push_back(Dropped(table, m, Beyond("missing", share, "above", limit)));
    return true;
  });
}

std::unordered_map<std::size_t, float> DropDistorted(const GenotypeTable& table, CleaningLedger& ledger,
                                                     std::vector<std::size_t>& markers) {
  const double limit = *ledger.rules.minSegregationP;
  const std::vector<float> tested = SegregationOf(table, markers);
  std::unordered_map<std::size_t, float> p;
  for (std::size_t k = 0; k < markers.size(); ++k) p.emplace(markers[k], tested[k]);
  std::erase_if(markers, [&](std::size_t m) {
    if (p.at(m) >= limit) return false;  // a value that is not a number is dropped
    const bool tells = MissingShareOf(table, m) < 1;
    ledger.distorted.push_back(
        Dropped(table, m, tells ? Beyond("segregation p", p.at(m), "below", limit) : "no genotype to test"));
    return true;
  });
  return p;
}

void Bin(const GenotypeTable& table, const std::unordered_map<std::size_t, float>& p, CleaningLedger& ledger,
         std::vector<std::size_t>& markers) {
  const std::map<std::size_t, std::size_t> headOf = BinsOf(table, markers);
  std::erase_if(markers, [&](std::size_t m) { return headOf.at(m) != m; });
  for (const auto& [m, head] : headOf) {
    if (head == m) continue;
    const auto place = std::lower_bound(markers.begin(), markers.end(), head) - markers.begin();
    BinnedMarker marker{table.markers[m], static_cast<int32_t>(m + 1), static_cast<int32_t>(place + 1),
                        MissingShareOf(table, m), std::nullopt};
    if (const auto found = p.find(m); found != p.end()) marker.segregationP = found->second;
    ledger.binned.push_back(std::move(marker));
  }
}

template <typename Marker>
std::string CountedNames(const std::vector<Marker>& markers) {
  std::string text = Counted(static_cast<int64_t>(markers.size()), "marker");
  const std::size_t shown = std::min(markers.size(), kDroppedShown);
  for (std::size_t i = 0; i < shown; ++i) text += (i > 0 ? ", " : ": ") + markers[i].name;
  return text + (shown < markers.size() ? ", ..." : "") + "\n";
}

}  // namespace

void WriteGenotypes(const std::filesystem::path& path, const GenotypeTable& table) {
  std::ofstream file(path, std::ios::binary);
  file << ProjectText(table);
  file.close();
  if (!file) throw Failure{ExitCode::Other, "cannot write " + path.string()};
}

CleaningLedger CleanMarkers(const GenotypeTable& table, const CleaningRules& rules) {
  CleaningLedger ledger;
  ledger.rules = rules;
  ledger.read = static_cast<int32_t>(table.markers.size());
  std::vector<std::size_t> markers(table.markers.size());
  for (std::size_t m = 0; m < markers.size(); ++m) markers[m] = m;
  if (rules.maxMissing) DropMissing(table, ledger, markers);
  std::unordered_map<std::size_t, float> p;
  if (rules.minSegregationP && !markers.empty()) p = DropDistorted(table, ledger, markers);
  if (rules.bin) Bin(table, p, ledger, markers);
  for (std::size_t m : markers) ledger.kept.push_back(static_cast<int32_t>(m + 1));
  return ledger;
}

std::vector<std::vector<const BinnedMarker*>> BinMembers(const CleaningLedger& ledger) {
  std::vector<std::vector<const BinnedMarker*>> members(ledger.kept.size());
  for (const BinnedMarker& binned : ledger.binned) {
    members[static_cast<std::size_t>(binned.kept - 1)].push_back(&binned);
  }
  return members;
}

GenotypeTable KeptTable(const GenotypeTable& table, const CleaningLedger& ledger) {
  std::vector<std::size_t> markers;
  for (int32_t number : ledger.kept) markers.push_back(static_cast<std::size_t>(number - 1));
  GenotypeTable kept = Subset(table, markers);
  for (const BinnedMarker& binned : ledger.binned) {
    int32_t& anchor = kept.anchors[static_cast<std::size_t>(binned.kept - 1)];
    if (anchor == 0) anchor = table.anchors[static_cast<std::size_t>(binned.number - 1)];
  }
  return kept;
}

void AddCleaned(const CleaningLedger& ledger, MarkerNumbers& numbers) {
  for (const auto* dropped : {&ledger.tooMissing, &ledger.distorted}) {
    for (const DroppedMarker& marker : *dropped) numbers.emplace(marker.name, 0);
  }
  for (const BinnedMarker& marker : ledger.binned) numbers.emplace(marker.name, marker.kept);
}

std::string DroppedTable(const CleaningLedger& ledger, const std::vector<std::string>& keptNames) {
  std::map<int32_t, std::pair<std::string, std::string>> rows;
  for (const auto* dropped : {&ledger.tooMissing, &ledger.distorted}) {
    for (const DroppedMarker& marker : *dropped) rows[marker.number] = {marker.name, marker.reason};
  }
  for (const BinnedMarker& marker : ledger.binned) {
    rows[marker.number] = {marker.name, "bin of " + keptNames[static_cast<std::size_t>(marker.kept - 1)]};
  }
  std::string text = "marker\treason\n";
  for (const auto& [number, row] : rows) text += TableCell(row.first) + '\t' + TableCell(row.second) + '\n';
  return text;
}

std::string CleaningText(const CleaningLedger& ledger) {
  std::string text = "cleaning: " + Counted(ledger.read, "marker") + " read, " +
                     std::to_string(ledger.kept.size()) + " kept\n";
  const CleaningRules& rules = ledger.rules;
  if (rules.maxMissing) {
    text += "  missing above " + Significant(*rules.maxMissing) + ": " + CountedNames(ledger.tooMissing);
  }
  if (rules.minSegregationP) {
    text += "  segregation p below " + Significant(*rules.minSegregationP) + ": " +
            CountedNames(ledger.distorted);
  }
  if (rules.bin) text += "  in the bin of another marker: " + CountedNames(ledger.binned);
  return text;
}

}  // namespace host
