#include "host/importers/ledger.h"

#include <numeric>

#include "host/text.h"

namespace importers {
namespace {

constexpr std::array<std::string_view, kDrops> kDropWords = {
    "a parent has no genotype",
    "a parent is heterozygous",
    "the parents have the same allele",
    "no parent is heterozygous",
    "the site has no genotypes (GT)",
    "the site did not pass its filters",
    "on chromosome X, which recombines in one sex only",
    "no category of clonal markers fits its genotypes",
    "no line has a genotype",
    "all lines have the same genotype",
};
constexpr std::array<std::string_view, kBlanks> kBlankWords = {
    "cannot be in the population",
    "with an allele of no parent, or that the parents cannot give",
    "with one allele only known",
    "of a single allele in a population with heterozygous lines",
    "of a dominant code, beside co-dominant ones or where it tells nothing",
    "that the marker's category cannot show",
};

void Append(std::string& text, std::initializer_list<std::string_view> fields) {
  bool first = true;
  for (std::string_view field : fields) {
    if (!first) text += '\t';
    first = false;
    for (const char c : field) text += c == '\t' || c == '\n' ? ' ' : c;
  }
  text += '\n';
}

}  // namespace

std::string_view WordsOf(Drop reason) { return kDropWords[static_cast<std::size_t>(reason)]; }
std::string_view WordsOf(Blank reason) { return kBlankWords[static_cast<std::size_t>(reason)]; }

int64_t Ledger::Kept() const { return read - std::accumulate(dropped.begin(), dropped.end(), int64_t{0}); }

std::string LedgerTable(const Ledger& ledger) {
  std::string text = "action\tline\tmarker\twritten_as\tcount\treason\n";
  Append(text, {"read", "", "", "", std::to_string(ledger.read), "markers in the file"});
  Append(text, {"kept", "", "", "", std::to_string(ledger.Kept()), "markers written"});
  Append(text, {"renamed", "", "", "", std::to_string(ledger.renamed), "markers written under another name"});
  for (std::size_t k = 0; k < kDrops; ++k) {
    if (ledger.dropped[k] > 0) {
      Append(text, {"dropped", "", "", "", std::to_string(ledger.dropped[k]), kDropWords[k]});
    }
  }
  for (std::size_t k = 0; k < kBlanks; ++k) {
    if (ledger.blanked[k] == 0) continue;
    Append(text, {"missing", "", "", "", std::to_string(ledger.blanked[k]),
                  "genotypes " + std::string(kBlankWords[k])});
  }
  for (const std::string& note : ledger.notes) Append(text, {"note", "", "", "", "", note});
  for (std::size_t g = 0; g < ledger.groups.size(); ++g) {
    Append(text, {"group", "", "", std::to_string(g + 1), std::to_string(ledger.groups[g].markers),
                  "chromosome " + ledger.groups[g].chromosome});
  }
  for (const Ledger::Row& row : ledger.rows) {
    const std::string_view action = row.writtenAs.empty() ? "dropped" : "renamed";
    Append(text, {action, std::to_string(row.line), row.marker, row.writtenAs, "1", row.reason});
  }
  return text;
}

std::string LedgerSummary(const Ledger& ledger) {
  std::string text = "read " + host::Counted(ledger.read, "marker") + ", kept " +
                     std::to_string(ledger.Kept()) + ", dropped " +
                     std::to_string(ledger.read - ledger.Kept()) + ", renamed " +
                     std::to_string(ledger.renamed) + '\n';
  for (std::size_t k = 0; k < kDrops; ++k) {
    if (ledger.dropped[k] == 0) continue;
    text += "  dropped " + std::to_string(ledger.dropped[k]) + ": " + std::string(kDropWords[k]) + '\n';
  }
  for (std::size_t k = 0; k < kBlanks; ++k) {
    if (ledger.blanked[k] == 0) continue;
    text += "  set to missing: " + host::Counted(ledger.blanked[k], "genotype") + ' ' +
            std::string(kBlankWords[k]) + '\n';
  }
  for (const std::string& note : ledger.notes) text += "  note: " + note + '\n';
  return text;
}

}  // namespace importers
