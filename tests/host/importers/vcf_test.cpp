// VCF: what a genotype means under the parents of each kind of cross.

#include <gtest/gtest.h>

#include <set>

#include "host/importers/calls.h"
#include "import_text.h"

namespace importers {
namespace {

using std::string;

// Rows of "CHROM POS ID FILTER FORMAT genotypes", blanks for tabs.
string Vcf(const string& samples, const string& rows) {
  string text = "##fileformat=VCFv4.2\n##source=test\n#CHROM\tPOS\tID\tREF\tALT\tQUAL\tFILTER\tINFO\tFORMAT";
  for (const char c : " " + samples) text += c == ' ' ? '\t' : c;
  text += '\n';
  int column = 0;
  for (const char c : rows) {
    if (c == ' ') ++column;
    if (c == ' ' && column == 3) text += "\tA\tC,G,T\t.";
    if (c == ' ' && column == 4) text += "\tDP=1";
    text += c == ' ' ? '\t' : c;
    if (c == '\n') column = 0;
  }
  return text;
}

struct VcfCase {
  string name, samples, rows, population;
  std::vector<string> parents;
  string outcome;
};

const VcfCase kCases[] = {
    {"all forms of a genotype",
     "P1 P2 a b c d e f g h",
     "1 10 s1 PASS GT 0/0 1/1 0/0 0/1 1|0 1|1 ./. . 1/2 0/.\n"
     "1 20 s2 PASS GT:DP 2|2:9 0/0:9 2/2:1 0|2:1:x 2/0 0/0:. ./.:0 .:1 0/0/2 0\n"
     "1 30 s3 PASS DP:GT 5:0/0 5:1/1 1:0/1 1:1/1 1:0/0 3:./. 4 4:0/0 5:1/1 5:0/1\n",
     "F2",
     {"P1", "P2"},
     "MAP 7 8 lines\ns1 A H H B X X X X\ns2 A H H B X X X X\ns3 H B A X X A B H\n"
     "missing 2: with an allele of no parent, or that the parents cannot give\n"
     "missing 1: with one allele only known\n"
     "missing 1: of a single allele in a population with heterozygous lines"},
    {"doubled haploids may have one allele",
     "P1 P2 a b c",
     "1 1 . . GT 0/0 1/1 0 1 0/1\n1 2 . . GT 1/1 0/0 0/0 1/1 .\n1 3 . . GT 1 0 0 1 0/0\n1 4 . . GT . 1 0 1 "
     "0/0\n",
     "F1DH",
     {"P1", "P2"},
     "MAP 3 3 lines\n1_1 A B X\n1_2 B A X\n1_3 B A B\ndropped 1: a parent has no genotype\nmissing 1: cannot "
     "be in the population"},
    {"parents stand anywhere, in their order",
     "a P2 b P1",
     "1 1 m . GT 0/0 1/1 1/1 0/0\n",
     "RIL",
     {"P1", "P2"},
     "MAP 4 2 lines\nm A B"},
    {"sites that say nothing",
     "P1 P2 a b",
     "1 1 het . GT 0/1 1/1 0/0 0/1\n1 2 same . GT 1/1 1/1 1/1 1/1\n1 3 none . GT ./. 1/1 0/0 0/1\n"
     "1 4 nogt . DP 1 2 3 4\nX 5 sex . GT 0/0 1/1 0/1 0/1\n1 6 empty . GT 0/0 1/1 ./. 2/2\n"
     "1 7 one . GT 0 1 0/0 0/1\n1 8 good q10 GT 0/0 1/1 0/0 0/1\n",
     "F2",
     {"P1", "P2"},
     "MAP 7 2 lines\ngood A H\ndropped 2: a parent has no genotype\ndropped 1: a parent is heterozygous\n"
     "dropped 1: the parents have the same allele\ndropped 1: the site has no genotypes (GT)\n"
     "dropped 1: on chromosome X, which recombines in one sex only\ndropped 1: no line has a genotype"},
    {"two outbred parents",
     "M F a b c d",
     "1 1 f . GT 0/1 0/0 0/0 0/1 0/0 1/1\n1 2 m . GT 1/1 0/1 0/1 1/1 ./. 0/1\n1 3 both . GT 0/1 1/0 0/0 0/1 "
     "1/1 1/0\n"
     "1 4 four . GT 0/1 2/3 0/2 0/3 1/2 3/1\n1 5 three . GT 0/2 0/1 0/0 0/1 2/0 1/2\n1 6 hom . GT 0/0 1/1 "
     "0/1 0/1 0/1 0/1\n"
     "1 9 o . GT 1|0 0/0 0/0 0/1 1/1 ./.\n1 7 one . GT 0/1 0/0 0/0 0/0 ./. 0/0\n1 8 g . GT 0/1 2/2 2/0 1/2 "
     "0/0 2/2\n",
     "ClonalF1",
     {"M", "F"},
     "CDM 1 4 lines\nC=D f AX BX AX XX\nA=B m XC XD XX XC\nAB=CD both AA AB BB AB\nABCD four AC AD BC BD\n"
     "ABCD three AC AD BC BD\nC=D o AX BX XX XX\nC=D g AX BX XX XX\n"
     "dropped 1: no parent is heterozygous\ndropped 1: all lines have the same genotype\n"
     "missing 4: with an allele of no parent, or that the parents cannot give"},
    {"four inbred parents, lines of the double cross",
     "A B C D a b c d",
     "1 1 m . GT 0/0 1/1 0/0 1/1 0/0 1/1 0/1 0/0\n1 2 n . GT 0/0 0/0 1/1 2/2 0/0 1/1 2/2 3/3\n"
     "1 3 k . GT 1/1 0/0 0/0 0/0 1 0 0 .\n1 4 same . GT 1/1 1/1 1/1 1/1 0/0 1/1 1/1 1/1\n",
     "4PRIL",
     {"A", "B", "C", "D"},
     "PLM 2 4 lines\nABAB m A B X A\nAACD n A C D X\nABBB k A B B X\ndropped 1: the parents have the same "
     "allele\n"
     "missing 1: cannot be in the population\n"
     "missing 1: with an allele of no parent, or that the parents cannot give"},
};

TEST(Vcf, GenotypesAreReadUnderTheirParents) {
  for (const VcfCase& c : kCases) {
    const Sandbox sandbox;
    const string text = Vcf(c.samples, c.rows);
    EXPECT_EQ(Outcome(sandbox, Format::Vcf, text, Asked(c.population, c.parents)), c.outcome) << c.name;
    // The same packed, in two members.
    const std::size_t half = text.size() / 2;
    EXPECT_EQ(Outcome(sandbox, Format::Vcf, Packed(text.substr(0, half)) + Packed(text.substr(half)),
                      Asked(c.population, c.parents)),
              c.outcome)
        << c.name;
  }
}

TEST(Vcf, FiltersAndChromosomesAreTakenWhenAsked) {
  const Sandbox sandbox;
  Request request = Asked("F2", {"P1", "P2"});
  request.passOnly = request.anchors = true;
  const string text =
      Vcf("P1 P2 a",
          "chr2 1 a PASS GT 0/0 1/1 0/1\nchr1 2 b . GT 0/0 1/1 0/1\nchr2 3 c q10 GT 0/0 1/1 0/1\n"
          "chr2 4 d PASS GT 0/0 1/1 0/1\n");
  EXPECT_EQ(Outcome(sandbox, Format::Vcf, text, request),
            "MAP 7 1 lines\na H in 1\nb H in 2\nd H in 1\ndropped 1: the site did not pass its filters");
}

// True when the code of a category of clonal markers holds for a zygote of the cross AB x CD.
bool Holds(const string& category, const string& code, const string& zygote) {
  if (code == "AX" || code == "BX") return code[0] == zygote[0];
  if (code == "XC" || code == "XD") return code[1] == zygote[1];
  if (category == "ABCD") return code == zygote;
  const string first = category == "A=DB=C" ? "AD" : "AC", last = category == "A=DB=C" ? "BC" : "BD";
  return code == (zygote == first ? "AA" : zygote == last ? "BB" : "AB");
}

// Every set of alleles that four inbred parents, or two outbred ones, can have.
TEST(Vcf, CodesOfClonalMarkersHoldForEveryZygote) {
  std::set<string> met;
  for (int population = 1; population <= 2; ++population) {
    for (unsigned alleles = 0; alleles < 256; ++alleles) {
      std::array<uint8_t, 4> a{};
      for (unsigned k = 0; k < 4; ++k) a[k] = (alleles >> (2 * k)) & 3U;
      if (population == 1 && (a[0] > a[1] || a[2] > a[3])) continue;
      Request request;
      request.kind = host::TableKind::Cdm;
      request.population = population;
      const std::vector<Call> parents = population == 1
                                            ? std::vector<Call>{CallOf(a[0], a[1]), CallOf(a[2], a[3])}
                                            : std::vector<Call>{CallOf(a[0], a[0]), CallOf(a[1], a[1]),
                                                                CallOf(a[2], a[2]), CallOf(a[3], a[3])};
      const SiteTable site = ReadSite(request, parents);
      EXPECT_EQ(site.drop.has_value(), a[0] == a[1] && a[2] == a[3]) << alleles;
      if (site.drop) continue;
      met.insert(site.category);
      for (const string zygote : {"AC", "AD", "BC", "BD"}) {
        const uint8_t one = a[static_cast<std::size_t>(zygote[0] - 'A')];
        const uint8_t other = a[static_cast<std::size_t>(zygote[1] - 'A')];
        for (const Call call : {CallOf(one, other), CallOf(other, one)}) {
          const string code(host::CodesOf(host::TableKind::Cdm)[site.cell[call]]);
          EXPECT_TRUE(Holds(site.category, code, zygote))
              << population << ' ' << alleles << ' ' << zygote << ' ' << code;
        }
      }
    }
  }
  EXPECT_EQ(met, (std::set<string>{"ABCD", "AB=CD", "A=CB=D", "A=DB=C", "A=B", "C=D"}));
}

TEST(Vcf, FaultsAreToldWithTheirLine) {
  const string good = Vcf("P1 P2 a b", "1 1 m . GT 0/0 1/1 0/1 0/1\n");
  const string row = "1\t1\tm\tA\tC\t.\t.\t.\tGT";
  struct Fault {
    string text;
    std::vector<string> parents;
    string words;
  };
  const Fault faults[] = {
      {"", {"P1", "P2"}, "in.txt: the file is empty"},
      {"chr1\t10\t.\tA\tC\n", {"P1", "P2"}, "line 1: a VCF begins with"},
      {"##fileformat=VCFv4.2\nchr1\n", {"P1", "P2"}, "line 2: a VCF begins with"},
      {"##fileformat=VCFv4.2\n", {"P1", "P2"}, "line 1: a VCF begins with"},
      {"#CHROM\tPOS\tID\tREF\tALT\tQUAL\tFILTER\tINFO\n",
       {"P1", "P2"},
       "line 1: the heading names no samples"},
      {good + row + "\t0/0\t1/1\t0/0\n", {"P1", "P2"}, "line 5: the heading has 4 samples"},
      {good + row + "\t0/0\t1/1\t0/0\t0/1\t0/1\n", {"P1", "P2"}, "line 5: the heading has 4 samples"},
      {good + row + "\t0/0\t1/1\tA/B\t0/1\n", {"P1", "P2"}, "line 5: the genotype of sample a is none"},
      {good + row + "\n", {"P1", "P2"}, "line 5: a site has nine columns"},
      {good + string("1\t\0", 3) + "\n", {"P1", "P2"}, "line 5: there is a byte that no text has"},
      {good,
       {},
       "needs --parents with 2 sample names, parted by commas; 0 are given. The samples of in.txt are P1, "
       "P2"},
      {good, {"P1", "P3"}, "--parents: P3 is not among the samples"},
      {good, {"P1", "P1"}, "--parents: P1 is named twice"},
      {good, {"P1", "a"}, "in.txt: none of 1 marker is left: 1: a parent is heterozygous"},
      {Vcf("P1 P2", "1 1 m . GT 0/0 1/1\n"), {"P1", "P2"}, "has no lines of the population"},
      {Vcf("P1 P2 a", ""), {"P1", "P2"}, "has no markers"},
      {"PK\x03\x04zip", {"P1", "P2"}, "zip archive or spreadsheet"},
  };
  const Sandbox sandbox;
  for (const Fault& fault : faults) {
    const string outcome = Outcome(sandbox, Format::Vcf, fault.text, Asked("F2", fault.parents));
    EXPECT_TRUE(outcome.starts_with("refused: ")) << outcome;
    EXPECT_NE(outcome.find(fault.words), string::npos) << outcome << "\nwanted: " << fault.words;
  }
}

TEST(Vcf, WrongParentsAreDoubted) {
  const Sandbox sandbox;
  const auto [table, ledger] =
      ImportText(sandbox, Format::Vcf, Vcf("M F a b c d", "1 1 m . GT 0/1 0/0 0/1 0/0 1/1 1/1\n"),
                 Asked("CP", {"M", "F"}));
  EXPECT_EQ(ledger.notes,
            std::vector<string>{
                "more than one genotype in ten cannot come of these parents; are they the parents?"});
}

TEST(Vcf, MostGenotypesMustFitThePopulation) {
  const Sandbox sandbox;
  const string rows = "1 1 m . GT 0/0 1/1 0/1 0/1 0/0\n1 2 n . GT 0/0 1/1 0/1 1/1 0/1\n";
  const string outcome = Outcome(sandbox, Format::Vcf, Vcf("P1 P2 a b c", rows), Asked("RIL", {"P1", "P2"}));
  EXPECT_NE(
      outcome.find("4 of 6 genotypes cannot be in population 4 (RIL), which shows AB; the file has A 1, H 4, "
                   "B 1. Is it another population? \"tessarmont populations\""),
      string::npos)
      << outcome;
}

}  // namespace
}  // namespace importers
