#include "results/marker_file.h"

#include <algorithm>

#include "platform/text.h"
#include "platform/unit.h"
#include "project/header_fields.h"
#include "project/modules.h"
#include "project/reader.h"

namespace results {
namespace {

constexpr int32_t kInputUnit = 30000;

bool ReadHeader(MarkerFile& file) {
  for (const project::Field field : project::kRawFields) {
    project::NextDataRecord(kInputUnit);
    if (project::ReadTokens(kInputUnit, {project::IntegerItem(project::FieldOf(file.Header, field))}) != 0) {
      return false;
    }
  }
  return true;
}

void ReadRows(MarkerFile& file, std::size_t width) {
  project::NextDataRecord(kInputUnit);
  const auto size = static_cast<std::size_t>(std::max(file.Header.PopulationSize, 0));
  MarkerRecord row;  // scratch of the section: nulls keep the row before
  for (int32_t m = 1; m <= file.Header.NumMarkers; ++m) {
    if (project::ReadTokens(kInputUnit, {project::TextItem(row.category.data(), row.category.size()),
                                         project::TextItem(row.name.data(), row.name.size()),
                                         project::CellItems(row.genotypes, width, size)}) != 0) {
      return;
    }
    file.markers.push_back(row);
  }
}

}  // namespace

MarkerFile ReadMarkerFile(std::string_view fileName, std::size_t width) {
  MarkerFile file;
  platform::OpenUnit(kInputUnit, fileName, platform::OpenStatus::Old);
  if (ReadHeader(file)) {
    ReadRows(file, width);
  }
  platform::CloseUnit(kInputUnit);
  return file;
}

const MarkerRecord& RowAt(const MarkerFile& file, int32_t m) {
  static const MarkerRecord blank;
  const bool read = m >= 1 && static_cast<std::size_t>(m) <= file.markers.size();
  return read ? file.markers[static_cast<std::size_t>(m) - 1] : blank;
}

std::string_view NameOf(const MarkerFile& file, int32_t m) { return project::Text(RowAt(file, m).name); }

std::string_view CategoryOf(const MarkerFile& file, int32_t m) {
  return platform::WithoutTrailingBlanks(project::Text(RowAt(file, m).category));
}

}  // namespace results
