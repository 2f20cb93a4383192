// The text formats other than VCF: codes, layouts, segregation types, and what they refuse.

#include <gtest/gtest.h>

#include <map>

#include "host/importers/segregation_types.h"
#include "host/importers/sheet.h"
#include "import_text.h"

namespace importers {
namespace {

using std::string;

struct Case {
  string name;
  Format format;
  string text, population;
  std::vector<string> parents;
  string outcome;  // or a part of the words of a refusal
};

void ExpectOutcomes(std::span<const Case> cases) {
  for (const Case& c : cases) {
    const Sandbox sandbox;
    sandbox.Write("x_map.csv", "marker,chr,pos\nm1,1,0\nm2,X,5\n");
    const string outcome = Outcome(sandbox, c.format, c.text, Asked(c.population, c.parents), "x_gen.csv");
    if (c.outcome.starts_with("refused: ")) {
      EXPECT_TRUE(outcome.starts_with("refused: ")) << c.name << ": " << outcome;
      EXPECT_NE(outcome.find(c.outcome.substr(9)), string::npos) << c.name << ": " << outcome;
    } else {
      EXPECT_EQ(outcome, c.outcome) << c.name;
    }
  }
}

TEST(Formats, Rqtl) {
  const Case cases[] = {
      {"csv with positions, names and a phenotype",
       Format::RqtlCsv,
       "yield,ID,m1,m2,mx\n,,1,2,X\n,,0.0,5.5,1\n4.1,ind1,A,D,A\nNA,ind2,H,B,A\n3,ind3,-,NA,A\n2,ind4,B,D,"
       "B\n",
       "F2",
       {},
       "MAP 7 4 lines\nm1 A H X B\nm2 D B X D\ndropped 1: on chromosome X, which recombines in one sex only"},
      {"semicolons, quotes, no positions, codes mixed",
       Format::RqtlCsv,
       "\"p\";\"m;1\";m2\r\n;1;1\r\n1,5;H;C\r\n2;\"A\";\r\n3;B;A\r\n4;D;H\r\n",
       "F2",
       {},
       "MAP 7 4 lines\nm;1 H A B X\nm2 X X A H\nmissing 2: of a dominant code, beside co-dominant ones or "
       "where it tells nothing"},
      {"csvr",
       Format::RqtlCsvr,
       "p,,,1,2,3\nid,,,x,y,z\nm1,1,0,A,H,-\nm2,1,7.5,H,H,A\n",
       "P1BC1F1",
       {},
       "MAP 1 3 lines\nm1 A H X\nm2 H H A"},
      {"tidy, with its map beside it",
       Format::RqtlTidy,
       "id,i1,i2\nm1,A,B\nm2,A,B\nm3,B,\n",
       "RIL",
       {},
       "MAP 4 2 lines\nm1 A B\nm3 B X\ndropped 1: on chromosome X, which recombines in one sex only"},
      {"four-way codes",
       Format::RqtlCsv,
       "p,a,b,c,d,e,f\n,1,1,1,1,1,1\n1,1,5,7,1,2,1\n1,2,6,8,10,9,5\n1,3,5,8,4,3,2\n1,4,6,7,10,9,11\n",
       "CP",
       {},
       "CDM 1 4 lines\nABCD a AC BC AD BD\nC=D b AX BX AX BX\nA=B c XC XD XD XC\nAB=CD d AA AB BB AB\n"
       "AB=CD e BB AB AA AB\nC=D f AX AX BX XX\nmissing 1: that the marker's category cannot show"},
      {"inbred lines: not A is B, not B is A",
       Format::RqtlCsv,
       "p,m\n,1\n1,C\n1,D\n1,A\n",
       "F1DH",
       {},
       "MAP 3 3 lines\nm B A A"},
      {"backcross to P2: not B is H",
       Format::RqtlCsv,
       "p,m\n,1\n1,D\n1,H\n1,B\n1,C\n",
       "P2BC1F1",
       {},
       "MAP 2 4 lines\nm H H B X\nmissing 1: of a dominant code, beside co-dominant ones or where it tells "
       "nothing"},
      {"no phenotype column",
       Format::RqtlCsv,
       "m1,m2\n1,1\nA,H\n",
       "F2",
       {},
       "refused: x_gen.csv: line 2: the chromosomes begin below the first column"},
      {"a short row",
       Format::RqtlCsv,
       "p,m1,m2\n,1,1\n1,A,H\n1,A\n",
       "F2",
       {},
       "refused: line 4: the row has 2 fields, the first row has 3"},
      {"an unknown code",
       Format::RqtlCsv,
       "id,m1,m2\n,1,1\nl1,A,H\nl2,A,Q\nl3,A,7\n",
       "F2",
       {},
       "refused: 2 genotypes are none of A, B, H, AB, C, D, AA, BB or missing (-, NA; --missing names "
       "further "
       "codes)\n  line 4: marker m2, l2: \"Q\"\n  line 5: marker m2, l3: \"7\""},
      {"no population", Format::RqtlCsv, "p,m\n,1\n1,A\n", "", {}, "refused: does not tell the population"},
      {"several parents",
       Format::RqtlCsv,
       "p,m\n,1\n1,A\n",
       "4PDH",
       {},
       "refused: cannot hold population 4PDH"},
      {"positions and no lines",
       Format::RqtlCsv,
       "p,m\n,1\n,0\n",
       "F2",
       {},
       "refused: there are no lines below"},
  };
  ExpectOutcomes(cases);
}

TEST(Formats, MapmakerAndOneMap) {
  const Case cases[] = {
      {"Mapmaker: rows run on, letters touch, remarks, traits",
       Format::Raw,
       "data type f2 intercross\n4 2 1\n\n*m1 AHB-\n# a remark\n*m2 A H\n C B\n*trait 1 2 - 4\n",
       "",
       {},
       "MAP 7 4 lines\nm1 A H B X\nm2 A H X B\nmissing 1: of a dominant code, beside co-dominant ones or "
       "where it tells nothing"},
      {"Mapmaker: other symbols",
       Format::Raw,
       "data type f2 backcross\n3 1 0 symbols 1=A 2=H 0=-\n*m1 120\n",
       "",
       {},
       "MAP 1 3 lines\nm1 A H X"},
      {"OneMap: names, chromosomes, types",
       Format::Raw,
       "data type f2 intercross\n4 3 1 1 1\nI1 I2 I3 I4\n*m1 A.H.B a ab b -\n*m2 C.A a c c -\n*m3 D.B d b d "
       "-\n"
       "*CHROM 1 X NA\n*POS 1 2 3\n*y 1 2 3 4\n",
       "",
       {},
       "MAP 7 4 lines\nm1 A H B X\nm3 D B D X\ndropped 1: on chromosome X, which recombines in one sex only"},
      {"OneMap: inbred lines",
       Format::Raw,
       "data type ri self\n3 1\n*m1 A.B a b -\n",
       "",
       {},
       "MAP 4 3 lines\nm1 A B X"},
      {"sib-mated lines",
       Format::Raw,
       "data type ri sib\n2 1\n*m A.B a b\n",
       "",
       {},
       "refused: (data type ri sib) does not tell the population"},
      {"too few markers",
       Format::Raw,
       "data type f2 intercross\n2 2 0\n*m AH\n",
       "",
       {},
       "refused: line 3: the file ends behind 1 marker of 2"},
      {"too many genotypes",
       Format::Raw,
       "data type f2 intercross\n2 1 0\n*m AHB\n",
       "",
       {},
       "refused: line 3: marker m has 3 genotypes for 2 lines"},
      {"too many names",
       Format::Raw,
       "data type f2 intercross\n2 1\na b c\n*m AH\n",
       "",
       {},
       "refused: line 3: 3 names of lines"},
      {"no counts",
       Format::Raw,
       "data type f2 intercross\nmany 1\n",
       "",
       {},
       "refused: line 2: the numbers of lines and of markers belong here"},
      {"another kind of cross",
       Format::Raw,
       "data type outcross\n2 1\n*m D1.10 a ab\n",
       "F2",
       {},
       "refused: holds data type outcross, which --population F2 is not"},
      {"an outcross without a type",
       Format::Raw,
       "data type outcross\n2 1\n*m a ab\n",
       "",
       {},
       "refused: line 3: marker m of an outcross needs a segregation type"},
      {"a genotype of no such type",
       Format::Raw,
       "data type outcross\n2 1\n*m D1.10 a b\n",
       "",
       {},
       "refused: line 3: marker m: \"b\" is no genotype of type D1.10"},
      {"not a raw file",
       Format::Raw,
       "marker,a,b\n",
       "",
       {},
       "refused: line 1: a raw file begins with \"data type\""},
  };
  ExpectOutcomes(cases);
}

const string kMst =
    "population_type DH\npopulation_name t\nnumber_of_loci 2\nnumber_of_individual 3\n\n"
    "locus_name\ti1\ti2\ti3\t\nm1\tA\tB\t-\t\nm2\tb\ta\tU\t\n";

TEST(Formats, MstMapAndJoinMap) {
  const Case cases[] = {
      {"MSTmap", Format::MstMap, kMst, "F1DH", {}, "MAP 3 3 lines\nm1 A B X\nm2 B A X"},
      {"MSTmap: a backcross", Format::MstMap, kMst, "P1BC1F1", {}, "MAP 1 3 lines\nm1 A H X\nm2 H A X"},
      {"MSTmap: a backcross to P2", Format::MstMap, kMst, "P2BC1F1", {}, "MAP 2 3 lines\nm1 H B X\nm2 B H X"},
      {"MSTmap: an F2",
       Format::MstMap,
       "population_type RIL2\nlocus_name\ta\tb\tc\nm\tA\tX\tB\n",
       "",
       {},
       "MAP 7 3 lines\nm A H B"},
      {"MSTmap: who is it",
       Format::MstMap,
       kMst,
       "",
       {},
       "refused: (population_type DH) does not tell the population"},
      {"MSTmap: rows are lost",
       Format::MstMap,
       kMst.substr(0, kMst.rfind("m2")),
       "RIL",
       {},
       "refused: number_of_loci says 2, but there are 1"},
      {"MSTmap: no heading",
       Format::MstMap,
       "population_type DH\nx 1\n",
       "RIL",
       {},
       "refused: line 3: there is no heading"},
      {"JoinMap: F2 in blocks, remarks, names",
       Format::JoinMap,
       "; a remark\nname = t\npopt=F2\nnloc = 2\nnind= 7\n\nm1 (a,h,b) ; co-dominant\n a h b - .\n u h\nm2 "
       "(a, c)\nacc\n",
       "",
       {},
       "refused: locus m2 has 1 genotypes of nind = 7"},
      {"JoinMap: F2",
       Format::JoinMap,
       "name = t\npopt = F2\nnloc = 2\nnind = 6\nm1 (a,h,b)\n a h b - .\n u\nm2 (a, c) a c\n c c - a\n"
       "individual names:\n1\n2\n3\n4\n5\n6\n",
       "",
       {},
       "MAP 7 6 lines\nm1 A H B X X X\nm2 A R R R X A"},
      {"JoinMap: BC1",
       Format::JoinMap,
       "name = t\npopt = BC1\nnloc = 1\nnind = 3\nm a h -\n",
       "",
       {},
       "MAP 1 3 lines\nm A H X"},
      {"JoinMap: RI of few generations",
       Format::JoinMap,
       "name = t\npopt = RI4\nnloc = 1\nnind = 1\nm a\n",
       "",
       {},
       "refused: popt = RI4) does not tell"},
      {"JoinMap: more than nloc",
       Format::JoinMap,
       "name = t\npopt = F2\nnloc = 1\nnind = 2\nm a h\nn a h\n",
       "",
       {},
       "refused: line 6: there is more behind"},
      {"JoinMap: less than nloc",
       Format::JoinMap,
       "name = t\npopt = F2\nnloc = 2\nnind = 2\nm a h\n",
       "",
       {},
       "refused: the file ends behind 1 marker of nloc = 2"},
      {"JoinMap: no nind",
       Format::JoinMap,
       "name = t\npopt = F2\nnloc = 2\nm a h\n",
       "",
       {},
       "refused: the heading needs \"nind = \""},
      {"JoinMap: CP without a type",
       Format::JoinMap,
       "name = t\npopt = CP\nnloc = 1\nnind = 1\nm ll\n",
       "",
       {},
       "refused: line 5: locus m of a CP population needs"},
      {"JoinMap: CP with a wrong genotype",
       Format::JoinMap,
       "name = t\npopt = CP\nnloc = 1\nnind = 1\nm <lmxll>\nmm\n",
       "",
       {},
       "refused: line 6: locus m: \"mm\" is no genotype of <lmxll>"},
  };
  ExpectOutcomes(cases);
}

TEST(Formats, PlainTables) {
  const Case cases[] = {
      {"markers in rows, tabs, chromosomes",
       Format::Table,
       "marker\tchr\tpos\ti1\ti2\ti3\nm1\t1\t0\t2\t1\t0\nm2\tX\t0\tA\tA\tH\n",
       "F2",
       {},
       "MAP 7 3 lines\nm1 A H B\ndropped 1: on chromosome X, which recombines in one sex only"},
      {"headings as people write them",
       Format::Table,
       "Marker;Chr.;Position (cM);Linkage_group;CM 105;b\nm1;1;2;2;A;B\n",
       "RIL",
       {},
       "MAP 4 2 lines\nm1 A B"},
      {"markers in columns",
       Format::Table,
       "line,m1,m2\ni1,A,D\ni2,AB,B\ni3,BB,NA\n",
       "F2",
       {},
       "MAP 7 3 lines\nm1 A H B\nm2 D B X"},
      {"blanks", Format::Table, "x a b c\nm1  A B  -1\n", "RIL", {}, "MAP 4 3 lines\nm1 A B X"},
      {"names are made fit",
       Format::Table,
       "marker;a;b\nm 1;A;B\nm_1;A;B\nm/1;A;B\n!x;A;B\nthis_name_is_longer_than_thirty_five_characters;A;B\n"
       "this_name_is_longer_than_thirty_five_chars;A;B\n;A;B\n",
       "RIL",
       {},
       "MAP 4 2 lines\nm_1 A B\nm_1_2 A B\nm_1_3 A B\n_x A B\nthis_name_is_longer_than_thirty_fiv A B\n"
       "this_name_is_longer_than_thirty_f_2 A B\nmarker_7 A B"},
      {"a cleared row, row names without a heading",
       Format::Table,
       "i1,i2\nm1,A,B\n,,\nm2,B,A,\n\"\",,\n",
       "RIL",
       {},
       "MAP 4 2 lines\nm1 A B\nm2 B A"},
      {"letters of two bytes are not cut in two",
       Format::Table,
       "marker,a,b\näöüßäöüßäöüßäöüßäö,A,B\näöüßäöüßäöüßäöüßäü,B,A\n",
       "RIL",
       {},
       "MAP 4 2 lines\näöüßäöüßäöüßäöüßä A B\näöüßäöüßäöüßäöüß_2 B A"},
      {"a made name may be another's",
       Format::Table,
       "marker,a,b\nm_2,A,B\nm,A,B\nm,B,A\n",
       "RIL",
       {},
       "MAP 4 2 lines\nm_2 A B\nm A B\nm_3 B A"},
      {"alleles under parents",
       Format::Table,
       "snp,P1,P2,a,b,c,d\ns1,A,G,A,R,G,N\ns2,CC,TT,CT,T/T,C|C,--\ns3,A,A,A,A,A,A\n",
       "F2",
       {"P1", "P2"},
       "MAP 7 4 lines\ns1 A H B X\ns2 H B A X\ndropped 1: the parents have the same allele"},
      {"clonal codes",
       Format::Table,
       "marker,a,b,c,d\nm1,AC,AD,BD,XX\nm2,AA,AB,BB,AB\nm3,XC,XD,-,XC\nm4,AX,AX,XX,XX\n",
       "CP",
       {},
       "CDM 1 4 lines\nABCD m1 AC AD BD XX\nAB=CD m2 AA AB BB AB\nA=B m3 XC XD XX XC\ndropped 1: all lines "
       "have the same genotype"},
      {"alleles that are none",
       Format::Table,
       "snp,P1,P2,a\ns1,A,G,AGT\n",
       "F2",
       {"P1", "P2"},
       "refused: line 2: marker s1, a: \"AGT\" is none of alleles"},
      {"one column", Format::Table, "marker\nm1\n", "F2", {}, "refused: line 1: a table has a heading row"},
      {"several parents without their columns",
       Format::Table,
       "m,a,b\nx,A,B\n",
       "4PDH",
       {},
       "refused: cannot hold population 4PDH"},
  };
  ExpectOutcomes(cases);
  const Sandbox sandbox;
  const auto twice = ImportText(sandbox, Format::Table, "marker,a,b,a,b\nm,A,B,A,B\n", Asked("RIL"));
  EXPECT_EQ(twice.ledger.notes, std::vector<string>{"two lines or more have one name: a"});
  Request request = Asked("F2");
  request.missing = {"nd", "H"};
  request.markers = Direction::Columns;
  EXPECT_EQ(Outcome(sandbox, Format::Table, "x,m1\ni1,A\ni2,nd\ni3,H\n", request), "MAP 7 3 lines\nm1 A X X");
}

// A row of a selfing population that mixes codes of dominance with others keeps what says more.
TEST(Formats, MixedDominanceIsSettledRowByRow) {
  const std::pair<string, string> rows[] = {
      {"D B D -", "D B D X"}, {"A C C -", "A R R X"}, {"A H C D", "A H X X"},
      {"B C D D", "B X D D"}, {"A C C D", "A R R X"}, {"A B D C", "A B X X"},
  };
  for (const auto& [texts, cells] : rows) {
    const Sandbox sandbox;
    string outcome =
        Outcome(sandbox, Format::Raw, "data type f2 intercross\n4 1 0\n*m " + texts + "\n", Asked("F2"));
    outcome = outcome.substr(0, outcome.find("\nmissing"));
    EXPECT_EQ(outcome, "MAP 7 4 lines\nm " + cells) << texts;
  }
}

// Each segregation type with all its genotypes, as they become codes of a clonal cross.
TEST(Formats, SegregationTypesOfOutbredCrosses) {
  struct Type {
    string name, texts, row;
  };
  const Type joinMap[] = {
      {"<abxcd>", "ac ad bc bd --", "ABCD m AC AD BC BD XX"},
      {"<efxeg>", "ee eg ef fg .", "ABCD m AC AD BC BD XX"},
      {"<hkxhk>", "hh hk kk h- k-", "AB=CD m AA AB BB XX XX"},
      {"<lmxll>", "ll lm ml -- ll", "C=D m AX BX BX XX AX"},
      {"<nnxnp>", "nn np pn u nn", "A=B m XC XD XD XX XC"},
      {"<abxac>", "aa ac ba cb --", "ABCD m AC AD BC BD XX"},
      {"<abxab>", "aa ab bb -- aa", "AB=CD m AA AB BB XX AA"},
      {"<abxaa>", "aa ab -- aa ab", "C=D m AX BX XX AX BX"},
      {"<aaxab>", "aa ab -- aa ab", "A=B m XC XD XX XC XD"},
  };
  for (const Type& type : joinMap) {
    const Sandbox sandbox;
    const string text =
        "name = t\npopt = CP\nnloc = 1\nnind = 5\nm " + type.name + " {00} (x, y)\n" + type.texts + "\n";
    const string outcome = Outcome(sandbox, Format::JoinMap, text, {});
    EXPECT_EQ(outcome.substr(0, outcome.find("\nmissing")), "CDM 1 5 lines\n" + type.row) << type.name;
  }
  const Type oneMap[] = {
      {"A.1", "ac ad bc bd -", "ABCD m AC AD BC BD XX"},  {"A.2", "a ac ba bc -", "ABCD m AC AD BC BD XX"},
      {"A.3", "ac a bc b -", "ABCD m AC AD BC BD XX"},    {"A.4", "ab a b o -", "ABCD m AC AD BC BD XX"},
      {"B1.5", "a ab b a -", "C=D m AX BX BX AX XX"},     {"B2.6", "a ab b a -", "A=B m XC XD XD XC XX"},
      {"B3.7", "a ab b ab -", "AB=CD m AA AB BB AB XX"},  {"D1.9", "ac bc ac - bc", "C=D m AX BX AX XX BX"},
      {"D1.10", "a ab a - ab", "C=D m AX BX AX XX BX"},   {"D1.11", "a b a - b", "C=D m AX BX AX XX BX"},
      {"D1.12", "ab a ab - a", "C=D m AX BX AX XX BX"},   {"D1.13", "a o a - o", "C=D m AX BX AX XX BX"},
      {"D2.14", "ac bc ac - bc", "A=B m XC XD XC XX XD"}, {"D2.15", "a ab a - ab", "A=B m XC XD XC XX XD"},
      {"D2.16", "a b a - b", "A=B m XC XD XC XX XD"},     {"D2.17", "ab a ab - a", "A=B m XC XD XC XX XD"},
      {"D2.18", "a o a - o", "A=B m XC XD XC XX XD"},
  };
  for (const Type& type : oneMap) {
    const Sandbox sandbox;
    const string text =
        "data type outcross\n5 1 0 0 0\nI1 I2 I3 I4 I5\n*m " + type.name + " " + type.texts + "\n";
    EXPECT_EQ(Outcome(sandbox, Format::Raw, text, {}), "CDM 1 5 lines\n" + type.row) << type.name;
  }
  const Sandbox sandbox;
  EXPECT_NE(Outcome(sandbox, Format::Raw, "data type outcross\n2 1\n*m C.8 a o\n", {}).find("no category"),
            string::npos);
}

TEST(Formats, AreToldByTheirContent) {
  const std::pair<Format, string> cases[] = {
      {Format::Vcf, "##fileformat=VCFv4.2\n"},
      {Format::Vcf, Packed("##fileformat=VCFv4.2\n")},
      {Format::Raw, "# remark\nData Type f2 backcross\n"},
      {Format::MstMap, kMst},
      {Format::JoinMap, "; remark\n\nname=x\n"},
      {Format::RqtlCsv, "p,m1\n,1\n1,A\n"},
      {Format::RqtlCsvr, "p,,1\nm1,1,A\n"},
      {Format::Table, "marker,a,b\nm1,A,B\n"},
      {Format::Table, "x a b\nm A B\n"},
  };
  const Sandbox sandbox;
  for (const auto& [format, text] : cases)
    EXPECT_EQ(DetectFormat(sandbox.Write("f.txt", text)), format) << text;
  EXPECT_EQ(DetectFormat(sandbox.Write("a_gen.csv", "id,a\nm,A\n")), Format::RqtlTidy);
}

TEST(Formats, OldLineEndsAndMarksOfUtf8AreNoMatter) {
  const Sandbox sandbox;
  for (const string text :
       {"marker,a,b\rm1,A,B\r", "\xEF\xBB\xBFmarker,a,b\r\nm1,A,B", "marker,a,b\n\n \nm1,A,B,,\n\n"}) {
    EXPECT_EQ(Outcome(sandbox, Format::Table, text, Asked("RIL")), "MAP 4 2 lines\nm1 A B") << text;
  }
}

}  // namespace
}  // namespace importers
