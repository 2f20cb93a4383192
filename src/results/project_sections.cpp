#include "results/project_sections.h"

#include <string>

#include "platform/unit.h"

namespace results {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

constexpr std::string_view kMapRemarks[] = {
    "!*****Chromosomes and Linkage Maps********************************************************",
    "!ChromosomeName       NumMarkers",
};
constexpr std::string_view kPlacesRemark =
    "!Linkage map (Marker name followed by position or the interval length)";

constexpr std::string_view kPhenotypeRemarks[] = {
    "!*****Phenotypic Data*********************************************************************",
    "!-100.0 is resevred for missing phenotypic values",
};

constexpr int32_t kPositions = 2, kCentimorgans = 1;  // the space type and unit that are always written

}  // namespace

void OpenResult(int32_t unit, std::string_view stem, std::string_view extension, std::string_view suffix) {
  platform::OpenUnit(unit, std::string(stem).append(extension).append(suffix), platform::OpenStatus::Replace);
}

void WriteLines(int32_t unit, std::span<const std::string_view> lines) {
  for (const std::string_view line : lines) {
    WriteRecord(unit, line);
  }
}

void WriteHeaderRow(int32_t unit, int32_t value, std::string_view remark) {
  WriteRecord(unit, Record(Edits("I10,2X,A"), {value, remark}));
}

void WriteTraitHeader(int32_t unit, int32_t populationType, int32_t mappingFunction, int32_t numChromosomes,
                      int32_t populationSize) {
  WriteHeaderRow(unit, populationType, "!Mapping Population Type (see remarks above)");
  WriteHeaderRow(unit, mappingFunction, kMappingFunctionRemark);
  WriteHeaderRow(unit, kPositions, kSpaceTypeRemark);
  WriteHeaderRow(unit, kCentimorgans, kSpaceUnitRemark);
  WriteHeaderRow(unit, numChromosomes, kChromosomesRemark);
  WriteHeaderRow(unit, populationSize, kSizeRemark);
  WriteHeaderRow(unit, 0, kTraitsRemark);
  WriteRecord(unit, "");
}

void WriteChromosomes(int32_t unit, const NewMap& map, std::span<const std::string_view> names,
                      const platform::EditList& place) {
  WriteLines(unit, kMapRemarks);
  for (int32_t c = 1; c <= map.numChromosomes; ++c) {
    WriteRecord(unit, Record(Edits("A19,1X,I12"), {ChromosomeNameAt(map, c), map.chromosomeMarkers[c - 1]}));
  }
  WriteRecord(unit, kPlacesRemark);
  ChromosomeWalk walk(map.numChromosomes, map.chromosomeMarkers);
  int32_t i = 0;
  for (const std::string_view name : names) {
    ++i;
    WriteRecord(unit, Record(place, {name, walk.At(i), PositionAt(map, i)}));
  }
  WriteRecord(unit, "");
}

void WriteEmptyPhenotypes(int32_t unit) {
  WriteLines(unit, kPhenotypeRemarks);
  WriteRecord(unit, "");
}

}  // namespace results
