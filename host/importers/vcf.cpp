// VCF: a site a line, parted by tabs; the genotype of a sample is the GT field of its column.

#include <algorithm>
#include <array>
#include <cstring>

#include "host/importers/calls.h"
#include "host/importers/formats.h"
#include "host/importers/parents.h"
#include "host/text.h"

namespace importers {
namespace {

constexpr std::size_t kFixed = 9;  // CHROM POS ID REF ALT QUAL FILTER INFO FORMAT
constexpr std::size_t kChrom = 0, kPos = 1, kId = 2, kFilter = 6, kFormat = 8;

std::vector<std::string> Parted(std::string_view line) {
  std::vector<std::string> fields;
  for (;;) {
    const std::size_t end = line.find('\t');
    fields.emplace_back(line.substr(0, end));
    if (end == std::string_view::npos) return fields;
    line.remove_prefix(end + 1);
  }
}

// Reads up to the heading line; the names of the samples.
std::vector<std::string> ReadSamples(TextSource& source) {
  std::string_view line;
  bool first = true;
  while (source.Next(line)) {
    if (line.starts_with("#CHROM")) {
      std::vector<std::string> fields = Parted(line);
      if (fields.size() <= kFixed) {
        ThrowAt(source.Path(), source.Line(), "the heading names no samples, so there are no genotypes");
      }
      return {fields.begin() + kFixed, fields.end()};
    }
    if (!line.starts_with("##") || (first && !line.starts_with("##fileformat=VCF"))) break;
    first = false;
  }
  if (source.Line() == 0) ThrowAt(source.Path(), 1, "the file is empty");
  ThrowAt(source.Path(), source.Line(),
          "a VCF begins with \"##fileformat=VCF\" and has a heading \"#CHROM\" with tabs ahead of its sites; "
          "here "
          "is \"" +
              Excerpt(line) + "\"");
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsSplit(char c) { return c == '/' || c == '|'; }

// One allele; moves on. A number that is too large to be told apart is "another allele".
bool TakeAllele(std::string_view& text, uint8_t& allele) {
  if (text.starts_with('.')) {
    allele = kUnknown;
    text.remove_prefix(1);
    return true;
  }
  std::size_t digits = 0;
  unsigned value = 0;
  for (; digits < text.size() && IsDigit(text[digits]); ++digits) {
    value = std::min(value * 10 + static_cast<unsigned>(text[digits] - '0'), 1000U);
  }
  allele = value < kMostAlleles ? static_cast<uint8_t>(value) : kOtherAllele;
  text.remove_prefix(digits);
  return digits > 0;
}

// A GT field of any form; false when it is none.
bool ReadCall(std::string_view text, Call& call) {
  uint8_t first = kUnknown, second = kSingle;
  if (text.empty()) return false;
  if (IsSplit(text.front())) text.remove_prefix(1);  // the phase of the first allele
  if (!TakeAllele(text, first)) return false;
  if (!text.empty()) {
    if (!IsSplit(text.front())) return false;
    text.remove_prefix(1);
    if (!TakeAllele(text, second)) return false;
  }
  call = CallOf(first, second);
  while (!text.empty()) {  // more than two alleles: no genotype of these crosses
    if (!IsSplit(text.front())) return false;
    text.remove_prefix(1);
    if (!TakeAllele(text, second)) return false;
    call = CallOf(kOtherAllele, kOtherAllele);
  }
  return true;
}

// The piece number `place` between colons; what stands behind a short field is missing.
std::string_view Piece(std::string_view field, std::size_t place) {
  for (; place > 0; --place) {
    const std::size_t end = field.find(':');
    if (end == std::string_view::npos) return ".";
    field.remove_prefix(end + 1);
  }
  return field.substr(0, field.find(':'));
}

// Where GT stands in FORMAT; its number of fields when it does not.
std::size_t PlaceOfGt(std::string_view format) {
  std::size_t place = 0;
  for (;; ++place) {
    const std::size_t end = format.find(':');
    if (format.substr(0, end) == "GT") return place;
    if (end == std::string_view::npos) return place + 1;
    format.remove_prefix(end + 1);
  }
}

struct Site {
  std::array<std::string_view, kFixed> fixed;
  const char* samples = nullptr;  // begin of the first sample's column
  const char* end = nullptr;
};

bool SplitFixed(std::string_view line, Site& site) {
  const char* at = line.data();
  site.end = line.data() + line.size();
  for (std::string_view& field : site.fixed) {
    const void* found = std::memchr(at, '\t', static_cast<std::size_t>(site.end - at));
    if (found == nullptr) return false;
    const char* tab = static_cast<const char*>(found);
    field = {at, static_cast<std::size_t>(tab - at)};
    at = tab + 1;
  }
  site.samples = at;
  return true;
}

enum class Fault { None, Count, Genotype };

// The calls of a site's samples. Most columns are "0/1" with or without more behind a colon.
Fault ReadCalls(const Site& site, std::size_t gt, std::vector<Call>& calls, std::size_t& sample) {
  const char* at = site.samples;
  const char* const end = site.end;
  for (sample = 0; sample < calls.size(); ++sample) {
    if (at > end) return Fault::Count;
    const bool plain = gt == 0 && end - at >= 3 && IsDigit(at[0]) && IsSplit(at[1]) && IsDigit(at[2]) &&
                       (end - at == 3 || at[3] == '\t' || at[3] == ':');
    const char* from = plain ? at + 3 : at;
    const void* found =
        from < end && *from == '\t' ? from : std::memchr(from, '\t', static_cast<std::size_t>(end - from));
    const char* stop = found == nullptr ? end : static_cast<const char*>(found);
    if (plain) {
      calls[sample] = CallOf(static_cast<uint8_t>(at[0] - '0'), static_cast<uint8_t>(at[2] - '0'));
    } else if (!ReadCall(Piece({at, static_cast<std::size_t>(stop - at)}, gt), calls[sample])) {
      return Fault::Genotype;
    }
    at = stop + 1;
  }
  return at == end + 1 ? Fault::None : Fault::Count;
}

void ThrowFault(const TextSource& source, Fault fault, const std::vector<std::string>& samples,
                std::size_t sample) {
  if (fault == Fault::None) return;
  if (fault == Fault::Genotype) {
    ThrowAt(source.Path(), source.Line(), "the genotype of sample " + samples[sample] + " is none");
  }
  ThrowAt(source.Path(), source.Line(),
          "the heading has " + host::Counted(static_cast<int64_t>(samples.size()), "sample") +
              ", this line has another number of columns");
}

// The work arrays of a run, so that no site allocates.
struct VcfReading {
  SampleColumns columns;
  std::vector<Call> calls, parents, lines;
  std::vector<uint8_t> cells;
  std::string madeName;
};

VcfReading StartReading(SampleColumns columns, std::size_t samples) {
  VcfReading reading{std::move(columns), {}, {}, {}, {}, {}};
  reading.calls.resize(samples);
  reading.parents.resize(reading.columns.parents.size());
  reading.lines.resize(reading.columns.lines.size());
  reading.cells.resize(reading.columns.lines.size());
  return reading;
}

void TakeSite(const TextSource& source, const Site& site, const std::vector<std::string>& samples,
              VcfReading& reading, Builder& builder) {
  std::string_view name = site.fixed[kId];
  if (name == "." || name.empty()) {
    reading.madeName.assign(site.fixed[kChrom]).append("_").append(site.fixed[kPos]);
    name = reading.madeName;
  }
  const MarkerSource marker{name, source.Line(), site.fixed[kChrom]};
  const std::size_t gt = PlaceOfGt(site.fixed[kFormat]);
  const std::string_view filter = site.fixed[kFilter];
  if (builder.request.passOnly && filter != "PASS" && filter != ".") {
    return DropMarker(builder, marker, Drop::Filtered);
  }
  if (gt >
      static_cast<std::size_t>(std::count(site.fixed[kFormat].begin(), site.fixed[kFormat].end(), ':'))) {
    return DropMarker(builder, marker, Drop::NoGenotypes);
  }
  std::size_t sample = 0;
  const Fault fault = ReadCalls(site, gt, reading.calls, sample);
  ThrowFault(source, fault, samples, sample);
  for (std::size_t p = 0; p < reading.parents.size(); ++p) {
    reading.parents[p] = reading.calls[reading.columns.parents[p]];
  }
  for (std::size_t i = 0; i < reading.lines.size(); ++i) {
    reading.lines[i] = reading.calls[reading.columns.lines[i]];
  }
  const SiteTable table = ReadSite(builder.request, reading.parents);
  if (table.drop) return DropMarker(builder, marker, *table.drop);
  TakeCalls(table, reading.lines, reading.cells, builder.pending);
  AddMarker(builder, marker, reading.cells, table.category);
}

}  // namespace

Import ReadVcf(const std::filesystem::path& path, Request request) {
  TextSource source(path);
  const std::vector<std::string> samples = ReadSamples(source);
  Ledger notes;
  SettlePopulation(request, source.Path(), request.kind, 0, "VCF", notes);
  VcfReading reading = StartReading(PartSamples(request, source.Path(), samples), samples.size());
  std::vector<std::string> names;
  for (const std::size_t line : reading.columns.lines) names.push_back(samples[line]);
  Builder builder = StartTable(request, source.Path(), std::move(names), reading.columns.lines.size());
  for (std::string_view line; source.Next(line);) {
    if (line.empty() || line.starts_with('#')) continue;
    Site site;
    if (!SplitFixed(line, site)) {
      ThrowAt(source.Path(), source.Line(),
              "a site has nine columns and the samples, parted by tabs; here is \"" + Excerpt(line) + "\"");
    }
    TakeSite(source, site, samples, reading, builder);
  }
  return FinishTable(std::move(builder));
}

}  // namespace importers
