#include "host/report_places.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <system_error>

namespace host {
namespace {

// What the numbers of a detail line say about the row.
enum class Address {
  Row,        // number 1 is the row
  MapPlace,   // chromosome, place on it
  Expected,   // chromosome as read, place, the chromosome that was due
  OddMapRow,  // place on a chromosome that is not told for sure
  Agreement,  // chromosome, running number: a row of the map and one of the markers
  TraitRow,   // trait, chromosome
  TraitTail,  // trait; `row` tells which of the rows behind the chromosomes
  LineValue,  // trait, environment, replication
  Fixed,      // no number: `row`
};

struct ReportRow {
  std::string_view text;  // first line behind "--Input error: "
  Address address;
  Section section;
  std::size_t row = 0;
};
constexpr ReportRow kReports[] = {
    {"cannot read family name, and family size!", Address::Row, Section::Families},
    {"family size out of range!", Address::Row, Section::Families},
    {"cannot read chromosome name and number of markers!", Address::Row, Section::Chromosomes},
    {"Number of Markers out of range!", Address::Row, Section::Chromosomes},
    {"cannot read marker name and interval!", Address::MapPlace, Section::Map},
    {"cannot read marker name and position!", Address::OddMapRow, Section::Map},
    {"chromosome and marker info does not match!", Address::Expected, Section::Map},
    {"two markers have same name on linkage maps!", Address::MapPlace, Section::Map},
    {"two markers are in wrong order!", Address::MapPlace, Section::Map},
    {"Different names on chromosome and markertype!", Address::Agreement, Section::Map},
    {"cannot read AnchorInfo!", Address::Row, Section::Anchors},
    {"Name in AnchorInfo does not match name in Markertype!", Address::Row, Section::Anchors},
    {"Invalid anchor information!", Address::Row, Section::Anchors},
    {"cannot read phenotypic data!", Address::Row, Section::Phenotypes},
    {"cannot read PhenoType!", Address::Row, Section::Phenotypes},
    {"cannot read phenotype!", Address::Row, Section::Phenotypes},
    {"cannot read trait values!", Address::LineValue, Section::LineValues},
    {"cannot read the number of QTL!", Address::TraitRow, Section::TraitSimulation},
    {"cannot read QTL positions!", Address::TraitRow, Section::TraitSimulation},
    {"QTL positions must be in the ascending order!", Address::TraitRow, Section::TraitSimulation},
    {"cannot read lower triangular matrix of QTL effects!", Address::TraitTail, Section::TraitSimulation, 1},
    {"cannot read the indicator for heritability (1) or error variance (2)!", Address::TraitTail,
     Section::TraitSimulation, 2},
    {"cannot read heritability or error variance!", Address::TraitTail, Section::TraitSimulation, 3},
    {"cannot read the overall mean of phenotype!", Address::TraitTail, Section::TraitSimulation, 4},
    {"cannot read the number of QTL, number of simulations, and heritability!", Address::Fixed,
     Section::LineSimulation, 1},
    {"cannot read the locations of QTL!", Address::Fixed, Section::LineSimulation, 2},
    {"QTL locations out of range!", Address::Fixed, Section::LineSimulation, 2},
    {"cannot read the additive effects of QTLs!", Address::Fixed, Section::LineSimulation, 3},
};
// Any other report speaks of a marker's genotypes.
constexpr ReportRow kMarkerReport = {"", Address::Row, Section::Markers};
constexpr std::string_view kStart = "--Input error: ";

struct FieldWords {
  Field field;
  std::string_view word;  // of a report about the field
};
constexpr FieldWords kFieldWords[] = {
    {Field::Indicator, "indicator for mapping"},
    {Field::PopulationType, "Population Type"},
    {Field::MappingFunction, "Mapping Function"},
    {Field::MarkerSpaceType, "Marker Space Type"},
    {Field::MarkerSpaceUnit, "Marker Space Uni"},
    {Field::MarkerSpaceUnit, "Marker Space Uint"},
    {Field::NumChromosomes, "Number of Chromosomes"},
    {Field::NumMarkers, "Number of Markers"},
    {Field::PopulationSize, "Population Size"},
    {Field::NumTraits, "Number of Traits"},
    {Field::NumEnvironments, "Number of Environments"},
    {Field::NumReplications, "Number of Replications"},
    {Field::NumFamilies, "Number of Families"},
    // of genomic-selection files
    {Field::TrainingSize, "for training population"},
    {Field::BreedingSize, "for breeding population"},
    {Field::NumTraits, "cannot read number of traits"},
    {Field::NumMarkers, "cannot read number of markers"},
};

constexpr std::size_t kWidth = 8;  // columns of a number in a detail line

using Numbers = std::array<std::size_t, 3>;

// Up to three numbers side by side behind the text of a detail line; 0 for one that is not there or below 1.
Numbers NumbersOf(std::string_view detail) {
  constexpr std::string_view unparted[] = {"RepID", "ChromI"};  // texts without "="
  std::size_t at = std::string_view::npos;
  if (const std::size_t equals = detail.find('='); equals != std::string_view::npos) {
    at = equals + (detail.substr(equals).starts_with("= ") && !detail.starts_with("ChromID") ? 2 : 1);
  }
  for (const std::string_view text : unparted) {
    if (at == std::string_view::npos && detail.find(text) != std::string_view::npos) {
      at = detail.find(text) + text.size();
    }
  }
  Numbers numbers{};
  for (std::size_t k = 0; k < numbers.size() && at < detail.size(); ++k, at += kWidth) {
    const std::string_view column = detail.substr(at, kWidth);
    const std::size_t begin = std::min(column.find_first_not_of(' '), column.size());
    const auto value = AsInteger(column.substr(begin));
    if (!value) break;
    numbers[k] = *value < 1 ? 0 : static_cast<std::size_t>(*value);
  }
  return numbers;
}

// Row of the map that is place k of chromosome c; 0 when the chromosome has no such place.
std::size_t MapRow(const FileLayout& layout, std::size_t c, std::size_t k) {
  if (c < 1 || c > layout.chromosomeMarkers.size() || k < 1) return 0;
  std::size_t before = 0;
  for (std::size_t i = 0; i + 1 < c; ++i) before += static_cast<std::size_t>(layout.chromosomeMarkers[i]);
  return k > static_cast<std::size_t>(layout.chromosomeMarkers[c - 1]) ? 0 : before + k;
}

// The library stops at the first row that it cannot read, and so did the walk note it.
std::size_t OddMapRow(const FileLayout& layout, std::size_t k) {
  for (std::size_t c = 1; c <= layout.chromosomeMarkers.size(); ++c) {
    const std::size_t row = MapRow(layout, c, k);
    if (row != 0 && row == layout.firstOddMapRow) return row;
  }
  return 0;
}

std::size_t Count(const FileLayout& layout, Field field) {
  return static_cast<std::size_t>(std::max<int64_t>(layout.Value(field).value_or(0), 0));
}

std::size_t RowAt(const ReportRow& report, const Numbers& n, const FileLayout& layout) {
  const std::size_t traitRows = Count(layout, Field::NumChromosomes) + kTailRows;
  switch (report.address) {
    case Address::Row:
      return n[0];
    case Address::MapPlace:
      return MapRow(layout, n[0], n[1]);
    case Address::Expected:
      return MapRow(layout, n[2], n[1]);
    case Address::OddMapRow:
      return OddMapRow(layout, n[1]);
    case Address::Agreement:
      return n[1];
    case Address::TraitRow:
      return n[0] * n[1] == 0 ? 0 : (n[0] - 1) * traitRows + n[1];
    case Address::TraitTail:
      return n[0] == 0 ? 0 : (n[0] - 1) * traitRows + traitRows - kTailRows + report.row;
    case Address::LineValue:
      return n[0] * n[1] * n[2] == 0 ? 0
                                     : ((n[0] - 1) * Count(layout, Field::NumEnvironments) + n[1] - 1) *
                                               Count(layout, Field::NumReplications) +
                                           n[2];
    case Address::Fixed:
      return report.row;
  }
  return 0;
}

const ReportRow& RowOfReport(std::string_view report) {
  if (report.starts_with(kStart)) report.remove_prefix(kStart.size());
  for (const ReportRow& row : kReports) {
    if (report == row.text) return row;
  }
  return kMarkerReport;
}

bool HasSection(const FileLayout& layout, Section section) { return layout.Rows(section).words > 0; }

// Markers with categories and rows an environment are sections of their own in the walk.
Section InFile(const FileLayout& layout, Section section) {
  if (section == Section::Markers && HasSection(layout, Section::Categorised)) return Section::Categorised;
  if (section == Section::Phenotypes && HasSection(layout, Section::EnvironmentRows)) {
    return Section::EnvironmentRows;
  }
  return section;
}

}  // namespace

std::optional<Field> FieldOfReport(std::string_view report, const FileLayout& layout,
                                   std::string_view module) {
  const bool chromosomeRow = module != "CSL" && layout.Value(Field::NumChromosomes).has_value();
  for (const FieldWords& row : kFieldWords) {
    if (report.find(row.word) == std::string_view::npos) continue;
    if (row.field == Field::NumMarkers && chromosomeRow) return std::nullopt;
    // A NAM file has no environments: the words stand for its families.
    if (row.field == Field::NumEnvironments && module == "NAM") return Field::NumFamilies;
    return row.field;
  }
  return std::nullopt;
}

bool HasDetails(std::string_view report) { return RowOfReport(report).address != Address::Fixed; }

std::vector<RowPlace> PlacesOfReport(std::string_view report, std::string_view detail,
                                     const FileLayout& layout) {
  const ReportRow& row = RowOfReport(report);
  const std::size_t at = RowAt(row, NumbersOf(detail), layout);
  if (at == 0) return {};
  std::vector<RowPlace> places{{InFile(layout, row.section), at}};
  if (row.address == Address::Agreement) places.push_back({InFile(layout, Section::Markers), at});
  return places;
}

}  // namespace host
