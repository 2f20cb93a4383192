#include "results/clonal_results.h"

#include <string>
#include <utility>
#include <vector>

#include "platform/record.h"
#include "platform/text.h"
#include "platform/unit.h"
#include "results/map_summary.h"
#include "results/pair_table_writer.h"
#include "results/parental_maps.h"
#include "results/project_sections.h"
#include "results/recoding.h"

namespace results {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

constexpr std::size_t kGenotypeWidth = project::kTokenWidth;
constexpr int32_t kHapUnit = 30001, kCdqUnit = 30002, kSumUnit = 30003;  // the parents' summaries follow

// Texts stand letter for letter, trailing blanks and misspellings included: required as they stand.
constexpr std::string_view kRemarks[] = {
    kRemarkNote,
    kGeneralHeading,
    "!Assuming two heterzygouse parents have genotypes AB and CD, ",
    "!  four homozygouse parents have genotypes AA, BB, CC and DD. ",
    "!  1, Clonal F1, the progenies derived from the hybridization of AB and CD. ",
    "!     Linkage phases between linked loci are unknown before linkage analysis! ",
    "!  2, Double Cross, two hybirds are firstly made between AA and BB, and CC and DD. ",
    "!     The double cross is then made between the two hybrids. ",
    "!     Linkage phases are known if the four homozygouse parents are genotyped! ",
    "!     Linkage phases are unknown if the four parents are not genotyped! ",
    "!     For unknown phases, the double cross should be treated as clonal F1! ",
};
constexpr std::string_view kMarkerRemarks[] = {
    kMarkerHeading,
    "!Column 1 is marker category; 2 is marker name; 3 and on are marker types.",
    "!  For clonal F1, four categories are ABCD, A=B, C=D, AB=CD. Legal types are: ",
    "!    Category ABCD: AC, AD, BC, BD, XX; ",
    "!    Category A=B:  XC, XD, XX; Category C=D:  AX, BX, XX; ",
    "!    Category AB=CD:  AA, AB, BB, XX. ",
    "!  For double cross, five categories are ABCD, A=B, C=D, A=CB=D, A=DB=C. Legal types are: ",
    "!    Category ABCD: AC, AD, BC, BD, XX; ",
    "!    Category A=B:  XC, XD, XX; Category C=D:  AX, BX, XX; ",
    "!    Category A=CB=D and A=DB=C:  AA, AB, BB, XX. ",
};

// The places of a map with everything that the haplotype step finds out about their markers.
struct Haplotypes {
  std::vector<int32_t> phaseAB, phaseCD;
  std::vector<RecodedMarker> recoded;
  std::vector<std::string_view> names;
};

Haplotypes InferHaplotypes(const ClonalResults& results, const MarkerFile& file) {
  const PairArray<int32_t> phaseCode{results.phaseCode, results.fileMarkers};
  Haplotypes found;
  found.phaseAB = ParentPhases(results.map, file, kMapAB, phaseCode);
  found.phaseCD = ParentPhases(results.map, file, kMapCD, phaseCode);
  for (std::size_t p = 0; p < found.phaseAB.size(); ++p) {
    const int32_t marker = MarkerAt(results.map, static_cast<int32_t>(p) + 1);
    found.recoded.push_back(
        Recode(RowAt(file, marker), file.Header.PopulationType, found.phaseAB[p], found.phaseCD[p]));
    found.names.push_back(NameOf(file, marker));
  }
  return found;
}

// The alleles of a parent's two haplotypes at a marker of the given phase, from the names in order.
struct Alleles {
  std::string_view first, second;
};
Alleles AllelesOf(int32_t phase, std::string_view one, std::string_view other) {
  if (phase == 0) {
    return {"X", "X"};
  }
  return phase == 1 ? Alleles{one, other} : Alleles{other, one};
}

void WriteHap(const ClonalResults& results, const MarkerFile& file, const Haplotypes& found) {
  WriteRecord(kHapUnit, Record(Edits("A12,1X,A19,1X,A35,6A12"),
                               {"ChromosomeID", "ChromosomeName", "MarkerName", "Category", "HaploidA",
                                "HaploidB", "HaploidC", "HaploidD", "NewCategory"}));
  int32_t c = 0;
  for (const PlaceRun& run : GroupRuns(results.map)) {
    ++c;
    for (int32_t place = run.first; place <= run.last; ++place) {
      const auto p = static_cast<std::size_t>(place) - 1;
      const Alleles ab = AllelesOf(found.phaseAB[p], "A", "B");
      const Alleles cd = AllelesOf(found.phaseCD[p], "C", "D");
      WriteRecord(kHapUnit,
                  Record(Edits("I12,1X,A19,1X,A35,6A12"),
                         {c, platform::WithoutTrailingBlanks(ChromosomeNameAt(results.map, c)),
                          platform::WithoutTrailingBlanks(found.names[p]),
                          CategoryOf(file, MarkerAt(results.map, place)), ab.first, ab.second, cd.first,
                          cd.second, platform::WithoutTrailingBlanks(found.recoded[p].category)}));
    }
  }
}

void WriteCdq(const ClonalResults& results, const MarkerFile& file, const Haplotypes& found) {
  WriteLines(kCdqUnit, kRemarks);
  WriteTraitHeader(kCdqUnit, file.Header.PopulationType, file.Header.MappingFunction,
                   results.map.numChromosomes, file.Header.PopulationSize);
  WriteChromosomes(kCdqUnit, results.map, found.names, Edits("A35,1X,I3,F10.3"));
  WriteLines(kCdqUnit, kMarkerRemarks);
  for (std::size_t p = 0; p < found.recoded.size(); ++p) {
    const RecodedMarker& marker = found.recoded[p];
    std::string record = Record(Edits("A8,4X,1X,A35"), {marker.category, found.names[p]});
    for (std::size_t at = 0; at < marker.genotypes.size(); at += kGenotypeWidth) {
      record.append(1, ' ').append(marker.genotypes, at, kGenotypeWidth);
    }
    WriteRecord(kCdqUnit, record);
  }
  WriteRecord(kCdqUnit, "");
  WriteEmptyPhenotypes(kCdqUnit);
}

void WriteHaplotypes(std::string_view fileName, std::string_view stem, const ClonalResults& results) {
  const MarkerFile file = ReadMarkerFile(fileName, kGenotypeWidth);
  const Haplotypes found = InferHaplotypes(results, file);
  OpenResult(kHapUnit, stem, ".hap");
  WriteHap(results, file, found);
  platform::CloseUnit(kHapUnit);
  OpenResult(kCdqUnit, stem, ".cdq");
  WriteCdq(results, file, found);
  platform::CloseUnit(kCdqUnit);
}

MapSummary SummaryOf(ParentalMap which, const ClonalResults& results, const MarkerFile& file) {
  const PairArray<float> rec{results.recombination[which], results.fileMarkers};
  const PairArray<float> distance{results.distance[which], results.fileMarkers};
  std::vector<int32_t> deleted = DeletedMarkers(results.map, results.fileMarkers, results.deleted);
  return which == kWholeMap ? WholeMapSummary(results.map, rec, std::move(deleted))
                            : ParentSummary(results.map, file, which, rec, distance, std::move(deleted));
}

void WriteSummaries(std::string_view fileName, std::string_view stem, const ClonalResults& results) {
  const MarkerFile file = ReadMarkerFile(fileName, kGenotypeWidth);
  for (const ParentalMap which : {kWholeMap, kMapAB, kMapCD}) {
    const int32_t unit = kSumUnit + static_cast<int32_t>(which);
    OpenResult(unit, stem, ".sum", kParentalMaps[which].suffix);
    WriteMapSummary(unit, results.map, file, SummaryOf(which, results, file));
    platform::CloseUnit(unit);
  }
}

void WriteTables(std::string_view fileName, std::string_view stem, const ClonalResults& results) {
  const MarkerFile file = ReadMarkerFile(fileName, kGenotypeWidth);
  const std::array<const PairFamily*, 3> values = {&results.recombination, &results.lod, &results.distance};
  for (std::size_t f = 0; f < values.size(); ++f) {
    if (results.writeTables[f] != kWriteTable) {
      continue;
    }
    for (const ParentalMap which : {kWholeMap, kMapAB, kMapCD}) {
      const int32_t unit = kTableFamilies[f].unit + static_cast<int32_t>(which);
      OpenResult(unit, stem, kTableFamilies[f].extension, kParentalMaps[which].suffix);
      WritePairTable(unit, SelectMarkers(results.map, file, which),
                     {(*values[f])[which], results.fileMarkers});
      platform::CloseUnit(unit);
    }
  }
}

}  // namespace

void WriteClonalResults(std::string_view fileName, std::string_view stem, const ClonalResults& results) {
  WriteHaplotypes(fileName, stem, results);
  WriteSummaries(fileName, stem, results);
  WriteTables(fileName, stem, results);
}

}  // namespace results
