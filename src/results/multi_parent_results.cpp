#include "results/multi_parent_results.h"

#include <string>

#include "platform/record.h"
#include "platform/unit.h"
#include "results/map_summary.h"
#include "results/pair_table_writer.h"
#include "results/parental_maps.h"
#include "results/project_sections.h"

namespace results {
namespace {

using platform::Edits;
using platform::WriteRecord;

constexpr std::size_t kGenotypeWidth = 1;
constexpr int32_t kPlqUnit = 30002, kSumUnit = 30003;
constexpr int32_t kLastPopulation = 4;

// Texts stand letter for letter, the doubled number 1 and the misspellings included: required as they stand.
constexpr std::string_view kNote =
    "!**********************Note: lines staring with \"!\" are remarks and will be ignored in the "
    "program*************************";
constexpr std::string_view kHeading =
    "!****************************************** General Information "
    "***********************************************************";
constexpr std::string_view kParents =
    "!Assuming four homozygouse parents are AA, BB, CC, and DD; eight homozygouse parents are AA, BB, CC, "
    "DD, EE, FF, GG and HH.";
constexpr std::string_view kRemarks[] = {
    kNote,
    kHeading,
    kParents,
    "!Assuming eight homozygouse parents are AA, BB, CC, DD, EE, FF, GG and HH. ",
    "!Four types of populations that can analyzed in Zult are: ",
    "!  1, 4PDH: doubled haploid (DH) lines derived from double cross (AAxBB)x(CCxDD).",
    "!  1, doubled haploid (DH) lines derived from double cross (AAxBB)x(CCxDD). ",
    "!  3, 8PDH: DHs derived from eight-way cross [(AAxBB)x(CCxDD)]x[(EExFF)x(GGxHH)].",
    "!  4, 8PRIL: RILs derived from eight-way cross [(AAxBB)x(CCxDD)]x[(EExFF)x(GGxHH)].",
};
constexpr std::string_view kMarkerRemarks[] = {
    kMarkerHeading,
    "!Column 1 is marker category; 2 is marker name; 3 and on are marker types.",
    "!For 4PDH and 4PRIL, Legal marker types are A, B, C, D, X. ",
    "!For 8PDH and 8PRIL, Legal marker types are A, B, C, D, E, F, G, H, X. ",
};

void WritePlq(std::string_view fileName, std::string_view stem, const MultiParentResults& results) {
  const MarkerFile file = ReadMarkerFile(fileName, kGenotypeWidth);
  const TableSelection places = SelectMarkers(results.map, file, kWholeMap);
  OpenResult(kPlqUnit, stem, ".plq");
  WriteLines(kPlqUnit, kRemarks);
  WriteTraitHeader(kPlqUnit, file.Header.PopulationType, file.Header.MappingFunction,
                   results.map.numChromosomes, file.Header.PopulationSize);
  WriteChromosomes(kPlqUnit, results.map, places.names, Edits("A35,1X,I4,F12.4"));
  WriteLines(kPlqUnit, kMarkerRemarks);
  const bool named = file.Header.PopulationType >= 1 && file.Header.PopulationType <= kLastPopulation;
  for (const int32_t marker : places.markers) {
    const MarkerRecord& row = RowAt(file, marker);
    std::string record;
    if (named) {
      record =
          platform::Record(Edits("A8,4X,1X,A35"), {project::Text(row.category), project::Text(row.name)});
    }
    for (const char genotype : row.genotypes) {
      record.append(1, ' ').append(1, genotype);
    }
    WriteRecord(kPlqUnit, record);
  }
  WriteRecord(kPlqUnit, "");
  WriteEmptyPhenotypes(kPlqUnit);
  platform::CloseUnit(kPlqUnit);
}

void WriteSummary(std::string_view fileName, std::string_view stem, const MultiParentResults& results) {
  const MarkerFile file = ReadMarkerFile(fileName, kGenotypeWidth);
  const PairArray<float> rec{results.recombination, results.fileMarkers};
  OpenResult(kSumUnit, stem, ".sum");
  WriteMapSummary(
      kSumUnit, results.map, file,
      WholeMapSummary(results.map, rec, DeletedMarkers(results.map, results.fileMarkers, results.deleted)));
  platform::CloseUnit(kSumUnit);
}

void WriteTables(std::string_view fileName, std::string_view stem, const MultiParentResults& results) {
  const MarkerFile file = ReadMarkerFile(fileName, kGenotypeWidth);
  const std::array<const float*, 3> values = {results.recombination, results.lod, results.distance};
  for (std::size_t f = 0; f < values.size(); ++f) {
    if (results.writeTables[f] == kWriteTable) {
      OpenResult(kTableFamilies[f].unit, stem, kTableFamilies[f].extension);
      WritePairTable(kTableFamilies[f].unit, SelectMarkers(results.map, file, kWholeMap),
                     {values[f], results.fileMarkers});
      platform::CloseUnit(kTableFamilies[f].unit);
    }
  }
}

}  // namespace

void WriteMultiParentResults(std::string_view fileName, std::string_view stem,
                             const MultiParentResults& results) {
  WritePlq(fileName, stem, results);
  WriteSummary(fileName, stem, results);
  WriteTables(fileName, stem, results);
}

}  // namespace results
