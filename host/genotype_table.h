#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The three kinds of project file that hold raw markers.
enum class TableKind { Map, Cdm, Plm };

// The genotypes of a population as its project file has them, or as an importer gathers them.
struct GenotypeTable {
  TableKind kind = TableKind::Map;
  int32_t populationType = 0;
  int32_t mappingFunction = 1;  // 1 Kosambi, 2 Haldane, 3 Morgan
  int32_t markerSpaceType = 2;  // 1 intervals, 2 positions
  std::size_t lines = 0;
  std::vector<std::string> markers;     // names, at most 35 characters
  std::vector<std::string> lineNames;   // empty, or one a line; files keep them in a remark
  std::vector<std::string> categories;  // CDM "A=B", PLM the parents' letters "ABAB"; empty for MAP
  std::vector<int32_t> anchors;         // group by marker, 0 for none
  std::vector<uint8_t> cells;           // a row of `lines` per marker: places in CodesOf(kind)
  std::size_t notShown = 0;             // MAP: genotypes that are missing since the population has none such

  std::span<const uint8_t> Row(std::size_t marker) const {
    return {cells.data() + marker * lines, lines};  // marker from 0
  }
};

// The texts that a cell stands for; missing is the last one.
std::span<const std::string_view> CodesOf(TableKind kind);
uint8_t MissingCell(TableKind kind);
// The place of a code's text in CodesOf; the missing cell when there is none.
uint8_t CellOf(TableKind kind, std::string_view code);

std::string_view ExtensionOf(TableKind kind);  // ".map"
std::string_view ModuleOf(TableKind kind);     // "MAP"

// Reads the text of a file that the library has accepted. Cells are as the library takes them: genotypes that
// the population cannot show are missing, letters of parents that share an allele are the first of them.
// Failure InputWrong where rows are missing.
GenotypeTable ReadGenotypes(std::string_view text, TableKind kind);

// The whole project file; ReadGenotypes gives the same table back.
std::string ProjectText(const GenotypeTable& table);

// A name as a row of a project file needs it: in quotes when it has blanks, commas, slashes, quotes or could
// be taken for a repeat or a remark.
std::string QuotedName(std::string_view name);

// The greatest length of a marker name that the library tells apart.
inline constexpr std::size_t kMarkerNameLength = 35;

}  // namespace host
