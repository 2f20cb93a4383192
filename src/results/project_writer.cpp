#include "results/project_writer.h"

#include <array>
#include <string>
#include <vector>

#include "platform/record.h"
#include "platform/unit.h"
#include "project/header_fields.h"
#include "project/loader.h"
#include "project/marker_types.h"
#include "project/rule_sets.h"
#include "project/store.h"
#include "results/project_sections.h"

namespace results {
namespace {

using platform::Edits;
using platform::Record;
using platform::WriteRecord;

enum FileKind : uint8_t { kSdl = 1, kBip = 2, kMet = 4 };

struct FileRow {
  FileKind kind;
  std::string_view extension;
  int32_t unit;
};
constexpr std::array<FileRow, 3> kCreated = {
    {{kBip, ".bip", 10001000}, {kMet, ".met", 10001001}, {kSdl, ".sdl", 10001002}}};
constexpr std::array<FileRow, 3> kWritten = {kCreated[2], kCreated[0], kCreated[1]};

// Texts stand letter for letter, trailing blanks and misspellings included: required as they stand.
constexpr std::string_view kRemarks[] = {
    kRemarkNote,
    kGeneralHeading,
    "!Assuming F1 = P1 x P2, populations available in QTL Tessarmont are: ",
    "!  1, P1BC1F1 = P1 x F1, the first backcrossing where P1 is used as the recurrent parent;",
    "!  2, P2BC1F1 = P2 x F1, the first backcrossing where P2 is used as the recurrent parent;",
    "!  3, F1DH, F1-derived doubled haploids; ",
    "!  4, RIL or F1RIL, recombination inbred lines through the repeated selfing of F1;",
    "!  5, P1BC1RIL, recombination inbred lines through the repeated selfing of P1BC1F1;",
    "!  6, P2BC1RIL, recombination inbred lines through the repeated selfing of P2BC1F1;",
    "!  7, F2, the selfing generation of F1;",
    "!  8, F3, the selfing generation of F2;",
    "!  9, P1BC2F1, the second backcrossing where P1 is used as the recurrent parent; ",
    "! 10, P2BC2F1, the second backcrossing where P2 is used as the recurrent parent;",
    "! 11, P1BC2RIL, recombination inred lines through the repeated selfing of P1BC2F1; ",
    "! 12, P2BC2RIL, recombination inred lines through the repeated selfing of P2BC2F1; ",
    "! 13, P1BC1F2, the selfing generation of P1BC1F1; ",
    "! 14, P2BC1F2, the selfing generation of P2BC1F1; ",
    "! 15, P1BC2F2, the selfing generation of P1BC2F1; ",
    "! 16, P2BC2F2, the selfing generation of P2BC2F1; ",
    "! 17, P1BC1DH, P1BC1F1-derived doubled haploids; ",
    "! 18, P2BC1DH, P2BC1F1-derived doubled haploids; ",
    "! 19, P1BC2DH, P1BC2F1-derived doubled haploids; ",
    "! 20, P2BC2DH, P2BC2F1-derived doubled haploids; ",
};

// A header row: its value is a field of the input, the number of chromosomes, or fixed.
enum class Source { Field, Chromosomes, Fixed };
struct HeaderRow {
  uint8_t files;  // that have the row
  Source source;
  project::Field field;
  int32_t fixed;
  std::string_view remark;
};
constexpr uint8_t kAll = kSdl | kBip | kMet;
constexpr project::Field kNone = project::Field::Indicator;  // for a row whose value is no field of the input
constexpr HeaderRow kHeaderRows[] = {
    {kBip, Source::Fixed, kNone, 1, "!Indicator: 1 for mapping; 2 for simulation"},
    {kAll, Source::Field, project::Field::PopulationType, 0, "!Mapping Population (see remarks above)"},
    {kAll, Source::Field, project::Field::MappingFunction, 0, kMappingFunctionRemark},
    {kAll, Source::Field, project::Field::MarkerSpaceType, 0, kSpaceTypeRemark},
    {kAll, Source::Fixed, kNone, 1, kSpaceUnitRemark},
    {kAll, Source::Chromosomes, kNone, 0, kChromosomesRemark},
    {kAll, Source::Field, project::Field::PopulationSize, 0, kSizeRemark},
    {kBip, Source::Fixed, kNone, 0, kTraitsRemark},
    {kMet, Source::Fixed, kNone, 0, "!Number of environments"},
};

constexpr std::string_view kMarkerRemarks[] = {
    kMarkerHeading,
    "!Co-dominant marker:  When heterozygote F1 is present, ",
    "!  P1 is coded as 2 (=A or AA), F1 is coded as 1 (=H or AB), and P2 is coded as 0 (=B or BB); ",
    "!  Otherwise, P1 is coded as 2 (=A or AA), and P2 is coded as 0 (=B or BB). ",
    "!Dominant marker: When heterozygote F1 is present, ",
    "!  P1 and F1 are coded as 12 (=D or AX), and P2 is coded as 0 (=B or BB); ",
    "!  Otherwise, P1 is coded as 2 (=A or AA), and P2 is coded as 0 (=B or BB). ",
    "!Recessive markers: When heterozygote F1 is present, ",
    "!  P1 is coded as 2 (=A or AA), and F1 and P2 are coded as 10 (=R or XB); ",
    "!  Otherwise, P1 is coded as 2 (=A or AA), and P2 is coded as 0 (=B or BB). ",
    "!Missing marker is coded as -1 (=X or XX). ",
};

void WriteHeader(const FileRow& file, const NewMap& map, project::ProjectHeader header) {
  for (const HeaderRow& row : kHeaderRows) {
    if ((row.files & file.kind) == 0) {
      continue;
    }
    int32_t value = row.fixed;
    if (row.source == Source::Field) {
      value = project::FieldOf(header, row.field);
    } else if (row.source == Source::Chromosomes) {
      value = map.numChromosomes;
    }
    const bool wide = row.source == Source::Chromosomes && file.kind == kBip;  // required as it stands
    if (wide) {
      WriteRecord(file.unit, Record(Edits("I10,3X,A"), {value, row.remark}));
    } else {
      WriteHeaderRow(file.unit, value, row.remark);
    }
  }
  WriteRecord(file.unit, "");
}

std::vector<std::string_view> PlaceNames(const NewMap& map, const project::ProjectBlock& markers) {
  std::vector<std::string_view> names;
  for (int32_t i = 1; i <= map.numMarkers; ++i) {
    names.push_back(project::MarkerNameAt(markers, MarkerAt(map, i)));
  }
  return names;
}

void WriteMarkerTypes(int32_t unit, const NewMap& map, const project::ProjectBlock& markers) {
  WriteLines(unit, kMarkerRemarks);
  std::string record;
  for (int32_t i = 1; i <= map.numMarkers; ++i) {
    record = Record(Edits("A35"), {project::MarkerNameAt(markers, MarkerAt(map, i))});
    record += ' ';
    for (const char code : project::GenotypesAt(markers, MarkerAt(map, i))) {
      record += ' ';
      record += code;
    }
    WriteRecord(unit, record);
  }
  WriteRecord(unit, "");
}

// The header and the marker types of the input; later readers do not run after an error.
void ReadInput(std::string_view fileName, project::ProjectBlock& block) {
  int32_t status = 0;
  platform::OpenUnit(project::kProjectUnit, fileName, platform::OpenStatus::Old);
  for (const project::Field field : project::kRawFields) {
    if ((status & 1) == 0) {
      project::ReadField(project::kMapCode, project::kProjectUnit, project::kLogUnit, status, field,
                         project::FieldOf(block.Header, field));
    }
  }
  if ((status & 1) == 0) {
    project::ReadMarkerTypes(project::kMapCode, project::kProjectUnit, project::kLogUnit, status,
                             block.Header.NumMarkers, block);
  }
}

}  // namespace

void WriteProjectFiles(std::string_view fileName, std::string_view stem, const NewMap& map) {
  project::ProjectBlock block;
  ReadInput(fileName, block);
  for (const FileRow& file : kCreated) {
    platform::OpenUnit(file.unit, std::string(stem) + std::string(file.extension),
                       platform::OpenStatus::Replace);
  }
  const std::vector<std::string_view> names = PlaceNames(map, block);
  for (const FileRow& file : kWritten) {
    WriteLines(file.unit, kRemarks);
    WriteHeader(file, map, block.Header);
    WriteChromosomes(file.unit, map, names, Edits("A35,1X,I4,F12.4"));
    WriteMarkerTypes(file.unit, map, block);
    if (file.kind != kSdl) {
      WriteEmptyPhenotypes(file.unit);
    }
  }
  platform::CloseUnit(project::kProjectUnit);
  for (const FileRow& file : kCreated) {
    platform::CloseUnit(file.unit);
  }
}

}  // namespace results
