#include "host/precheck_report.h"

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>

#include "host/text.h"

namespace host {
namespace {

constexpr std::size_t kFindingsShown = 20;  // findings of a file
constexpr std::size_t kCodesShown = 6;      // in the summary of the genotypes

struct FaultWords {
  std::string_view word, plural;
};
constexpr std::array<FaultWords, 10> kFaultWords = {{
    // in the order of enum FindingKind
    {"header", "header values"},
    {"count", "counts"},
    {"row", "rows"},
    {"remark", "remarks between rows"},
    {"name", "repeated names"},
    {"genotype", "genotypes"},
    {"marker", "markers"},
    {"map", "rows of the map"},
    {"anchor", "anchors"},
    {"value", "values"},
}};
std::size_t Place(FindingKind kind) { return static_cast<std::size_t>(kind); }

using KindCounts = std::array<std::size_t, kFaultWords.size()>;

KindCounts CountKinds(const std::vector<Finding>& findings) {
  KindCounts counts{};
  for (const Finding& finding : findings) ++counts[Place(finding.kind)];
  return counts;
}

// How many of each kind are shown: all, or an even share of what is shown of a file.
KindCounts Quota(const KindCounts& counts, bool all) {
  std::size_t sum = 0, kinds = 0;
  for (const std::size_t count : counts) {
    sum += count;
    kinds += count > 0 ? 1 : 0;
  }
  if (all || sum <= kFindingsShown) return counts;
  KindCounts quota{};
  for (std::size_t k = 0; k < counts.size(); ++k)
    quota[k] = std::min(counts[k], std::max<std::size_t>(1, kFindingsShown / kinds));
  return quota;
}

std::vector<const Finding*> Shown(const std::vector<Finding>& findings, KindCounts quota) {
  std::vector<const Finding*> shown;
  for (const Finding& finding : findings) {
    if (quota[Place(finding.kind)] == 0) continue;
    --quota[Place(finding.kind)];
    shown.push_back(&finding);
  }
  return shown;
}

// `"Q" 12 times, "Z" 3 times`, the most frequent first.
std::string CodesOf(const std::vector<Finding>& findings) {
  std::map<std::string, std::size_t> times;
  for (const Finding& finding : findings) {
    if (finding.kind == FindingKind::Genotype) times[finding.code] += finding.times;
  }
  std::vector<std::pair<std::string, std::size_t>> codes(times.begin(), times.end());
  std::stable_sort(codes.begin(), codes.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  std::string text;
  for (std::size_t k = 0; k < codes.size() && k < kCodesShown; ++k) {
    text += (k > 0 ? ", \"" : "\"") + codes[k].first + "\" " +
            Counted(static_cast<int64_t>(codes[k].second), "time");
  }
  return codes.size() > kCodesShown ? text + ", ..." : text;
}

std::string LinesText(const std::vector<std::size_t>& lines) {
  std::string text = lines.size() == 1 ? "line " : "lines ";
  for (std::size_t i = 0; i < lines.size(); ++i) text += (i > 0 ? " and " : "") + std::to_string(lines[i]);
  return text;
}

}  // namespace

std::string FindingsText(const std::string& file, const std::vector<Finding>& findings, bool all) {
  if (findings.empty()) return {};
  const KindCounts counts = CountKinds(findings), quota = Quota(counts, all);
  std::string text = file + ": " + Counted(static_cast<int64_t>(findings.size()), "fault") + " in all\n";
  for (const Finding* finding : Shown(findings, quota)) {
    text += "  " + LinesText(finding->lines) + ": " + finding->words + '\n';
  }
  for (std::size_t k = 0; k < counts.size(); ++k) {
    if (quota[k] == counts[k]) continue;
    text +=
        "  and " + std::to_string(counts[k] - quota[k]) + " more of " + std::string(kFaultWords[k].plural);
    if (k == Place(FindingKind::Genotype)) text += "; in the whole file " + CodesOf(findings);
    text += "; --all lists them\n";
  }
  return text;
}

nlohmann::json FindingsJson(const std::vector<Finding>& findings, bool all) {
  const KindCounts counts = CountKinds(findings);
  nlohmann::json list = nlohmann::json::array(), kinds = nlohmann::json::object();
  for (const Finding* finding : Shown(findings, Quota(counts, all))) {
    list.push_back({{"kind", kFaultWords[Place(finding->kind)].word},
                    {"lines", finding->lines},
                    {"words", finding->words}});
  }
  for (std::size_t k = 0; k < counts.size(); ++k) {
    if (counts[k] > 0) kinds[std::string(kFaultWords[k].word)] = counts[k];
  }
  return {{"count", findings.size()}, {"shown", list.size()}, {"kinds", kinds}, {"list", list}};
}

}  // namespace host
