#include "host/population_catalogue.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "host/populations.h"

namespace host {
namespace {

using enum Finish;
constexpr TableKind kMap = TableKind::Map, kCdm = TableKind::Cdm, kPlm = TableKind::Plm;

constexpr CatalogueRow kCatalogue[] = {
    {kMap, 1, "P1BC1F1", "", 1, 1, None, "F1 crossed back to P1 once"},
    {kMap, 2, "P2BC1F1", "", 2, 1, None, "F1 crossed back to P2 once"},
    {kMap, 3, "F1DH", "DH", 0, 0, DoubledHaploids, "doubled haploids of the F1"},
    {kMap, 4, "RIL", "F1RIL", 0, 0, InbredLines, "inbred lines by repeated selfing from the F1"},
    {kMap, 5, "P1BC1RIL", "", 1, 1, InbredLines, "inbred lines by repeated selfing from P1BC1F1"},
    {kMap, 6, "P2BC1RIL", "", 2, 1, InbredLines, "inbred lines by repeated selfing from P2BC1F1"},
    {kMap, 7, "F2", "", 0, 0, Selfed, "F1 selfed once, or two F1 plants crossed"},
    {kMap, 8, "F3", "", 0, 0, SelfedTwice, "F1 selfed twice, one plant a family"},
    {kMap, 9, "P1BC2F1", "", 1, 2, None, "F1 crossed back to P1 twice"},
    {kMap, 10, "P2BC2F1", "", 2, 2, None, "F1 crossed back to P2 twice"},
    {kMap, 11, "P1BC2RIL", "", 1, 2, InbredLines, "inbred lines by repeated selfing from P1BC2F1"},
    {kMap, 12, "P2BC2RIL", "", 2, 2, InbredLines, "inbred lines by repeated selfing from P2BC2F1"},
    {kMap, 13, "P1BC1F2", "", 1, 1, Selfed, "P1BC1F1 selfed once"},
    {kMap, 14, "P2BC1F2", "", 2, 1, Selfed, "P2BC1F1 selfed once"},
    {kMap, 15, "P1BC2F2", "", 1, 2, Selfed, "P1BC2F1 selfed once"},
    {kMap, 16, "P2BC2F2", "", 2, 2, Selfed, "P2BC2F1 selfed once"},
    {kMap, 17, "P1BC1DH", "", 1, 1, DoubledHaploids, "doubled haploids of P1BC1F1"},
    {kMap, 18, "P2BC1DH", "", 2, 1, DoubledHaploids, "doubled haploids of P2BC1F1"},
    {kMap, 19, "P1BC2DH", "", 1, 2, DoubledHaploids, "doubled haploids of P1BC2F1"},
    {kMap, 20, "P2BC2DH", "", 2, 2, DoubledHaploids, "doubled haploids of P2BC2F1"},
    {kCdm, 1, "ClonalF1", "CP", 0, 0, None, "progeny of two heterozygous parents, phases not known"},
    {kCdm, 2, "DoubleCross", "DC", 0, 0, None,
     "cross of two hybrids whose four inbred parents are genotyped"},
    {kPlm, 1, "4PDH", "", 0, 0, DoubledHaploids, "doubled haploids of a cross of two hybrids"},
    {kPlm, 2, "4PRIL", "", 0, 0, InbredLines, "inbred lines of a cross of two hybrids"},
    {kPlm, 3, "8PDH", "", 0, 0, DoubledHaploids, "doubled haploids of an eight-way cross"},
    {kPlm, 4, "8PRIL", "", 0, 0, InbredLines, "inbred lines of an eight-way cross"},
};

constexpr std::string_view kClonalDiagram =
    "  AB  x  CD\n"
    "      |\n"
    "  AC, AD, BC, BD\n";
constexpr std::string_view kDoubleCrossDiagram =
    "  AA x BB    CC x DD\n"
    "     |          |\n"
    "    AB    x    CD\n"
    "          |\n"
    "   AC, AD, BC, BD\n";
constexpr std::string_view kFourWay =
    "  AA x BB    CC x DD\n"
    "     |          |\n"
    "    AB    x    CD\n";
constexpr std::string_view kEightWay =
    "  AA x BB    CC x DD    EE x FF    GG x HH\n"
    "     |          |          |          |\n"
    "    AB    x    CD         EF    x    GH\n"
    "          |                     |\n"
    "        ABCD         x       EFGH\n";

// Words at the arrow to the last generation.
std::string_view ArrowOf(Finish finish) {
  constexpr std::string_view words[] = {"", "selfed once", "selfed twice", "gametes doubled",
                                        "selfed to inbred lines"};
  return words[static_cast<std::size_t>(finish)];
}

// A word with its middle at a column.
std::string Centred(std::string_view word, std::size_t column) {
  return std::string(column - word.size() / 2, ' ') + std::string(word);
}

std::string BiParentalDiagram(const CatalogueRow& row) {
  constexpr std::size_t middle = 6;
  const std::string parent = row.recurrent == 2 ? "P2" : "P1", arrow = Centred("|", middle);
  std::string text = "  P1  x  P2\n" + arrow + '\n', last = "F1";
  for (int k = 1; k <= row.backcrosses; ++k) {
    text.append(Centred(last, middle)).append("  x  ").append(parent).append("\n").append(arrow).append("\n");
    last = parent + "BC" + std::to_string(k) + "F1";
  }
  text += Centred(last, middle) + '\n';
  if (row.finish == None) return text;
  return text + arrow + "  " + std::string(ArrowOf(row.finish)) + '\n' + Centred(row.name, middle) + '\n';
}

std::string MultiParentDiagram(const CatalogueRow& row) {
  const bool eight = row.id > 2;
  const std::size_t middle = eight ? 21 : 10;
  return std::string(eight ? kEightWay : kFourWay) + Centred("|", middle) + "  " +
         std::string(ArrowOf(row.finish)) + '\n' + Centred(row.name, middle) + '\n';
}

}  // namespace

std::span<const CatalogueRow> PopulationCatalogue() { return kCatalogue; }

const CatalogueRow* FindInCatalogue(std::string_view text) {
  for (const CatalogueRow& row : kCatalogue) {
    const bool number = row.kind == kMap && text == std::to_string(row.id);
    if (number || EqualIgnoringCase(text, row.name) ||
        (!row.alias.empty() && EqualIgnoringCase(text, row.alias))) {
      return &row;
    }
  }
  return nullptr;
}

const CatalogueRow& CatalogueRowOf(TableKind kind, int32_t id) {
  return *std::find_if(std::begin(kCatalogue), std::end(kCatalogue) - 1,
                       [&](const CatalogueRow& row) { return row.kind == kind && row.id == id; });
}

ExpectedRatio RatioOf(const CatalogueRow& row) {
  // Counted in 64ths: two backcrosses and two selfings stay whole.
  int recurrent = 0, h = 64, other = 0;
  for (int k = 0; k < row.backcrosses; ++k) {
    recurrent += h / 2;
    h /= 2;
  }
  const int selfings = row.finish == Selfed ? 1 : row.finish == SelfedTwice ? 2 : 0;
  for (int k = 0; k < selfings; ++k) {
    recurrent += h / 4;
    other += h / 4;
    h /= 2;
  }
  if (row.finish == DoubledHaploids || row.finish == InbredLines) {
    recurrent += h / 2;
    other += h / 2;
    h = 0;
  }
  const int unit = std::gcd(std::gcd(recurrent, h), other);
  if (row.recurrent == 2) std::swap(recurrent, other);
  return {recurrent / unit, h / unit, other / unit};
}

std::string ExpectedWords(const CatalogueRow& row) {
  if (row.kind == kCdm) return "AC 1 : AD 1 : BC 1 : BD 1";
  if (row.kind == kPlm) return "each parent's allele " + std::string(row.id <= 2 ? "1/4" : "1/8");
  const ExpectedRatio ratio = RatioOf(row);
  std::string text;
  for (const auto& [code, share] : {std::pair{"A", ratio.a}, {"H", ratio.h}, {"B", ratio.b}}) {
    if (share > 0) text += (text.empty() ? "" : " : ") + std::string(code) + ' ' + std::to_string(share);
  }
  return text;
}

std::string CrossingDiagram(const CatalogueRow& row) {
  if (row.kind == kPlm) return MultiParentDiagram(row);
  if (row.kind == kCdm) return std::string(row.id == 1 ? kClonalDiagram : kDoubleCrossDiagram);
  return BiParentalDiagram(row);
}

}  // namespace host
