#include "project/chromosomes.h"

#include <algorithm>

#include "project/name_index.h"
#include "project/reader.h"
#include "project/report.h"
#include "project/rule_sets.h"

namespace project {
namespace {

using platform::Edits;

constexpr int32_t kIntervals = 1;

bool ReadChromosomeNames(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block) {
  auto name = Blank<ShortName>();  // scratch of the section: nulls keep the row before
  int32_t markers = 0;
  for (int32_t c = 1; c <= block.Header.NumChromosomes; ++c) {
    if (ReadTokens(unit, {TextItem(name.data(), name.size()), IntegerItem(markers)}) != 0) {
      Report(log, status, "--Input error: cannot read chromosome name and number of markers!");
      ReportDetail(log, Edits("A,I8"), {"  ChromI", c});  // cut to eight characters: required as it stands
      return false;
    }
    if (markers < 1) {
      Report(log, status, "--Input error: Number of Markers out of range!");
      ReportDetail(log, Edits("A,2I8"), {"  ChromID, Number of Markers = ", c, markers});
      return false;
    }
    block.ChromName.items.push_back(name);
    block.Chromosome.items.emplace_back().NumMarkers = markers;
  }
  return true;
}

// A row of the map; the scratch lives for the section, so nulls keep the row before.
struct MapRow {
  NameText name = Blank<NameText>();
  int32_t chromosome = 0;
  float value = 0;
};

bool ReadMapRow(int32_t unit, int32_t log, int32_t& status, int32_t spaceType, int32_t c, int32_t k,
                MapRow& row) {
  const int32_t failed = ReadTokens(
      unit, {TextItem(row.name.data(), kNameWidth), IntegerItem(row.chromosome), RealItem(row.value)});
  if (failed != 0 && spaceType == kIntervals) {
    Report(log, status, "--Input error: cannot read marker name and interval!");
    ReportDetail(log, Edits("A,2I8"), {"  ChromID, MarkerID = ", c, k});
    return false;
  }
  if (failed != 0) {
    Report(log, status, "--Input error: cannot read marker name and position!");
    // No blanks around the text, and the number as the row left it: required as it stands.
    ReportDetail(log, Edits("A,2I8"), {"ChromID, MarkerID =", row.chromosome, k});
    return false;
  }
  if (row.chromosome != c) {
    Report(log, status, "--Input error: chromosome and marker info does not match!");
    ReportDetail(log, Edits("A,3I8"),
                 {"  Input ChromID, Input MarkerID, Expected ChromID= ", row.chromosome, k, c});
    return false;
  }
  return true;
}

void ToCentimorgans(const ProjectHeader& header, std::vector<float>& places) {
  if (header.MarkerSpaceType == kIntervals) {
    for (std::size_t k = 1; k < places.size(); ++k) {
      places[k] = places[k - 1] + places[k];
    }
  }
  ScaleToCentimorgans(header.MarkerSpaceUnit, places);
}

bool ReadMap(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block) {
  MapRow row;
  int32_t c = 0;
  for (ChromosomeTable& chromosome : block.Chromosome.items) {
    ++c;
    for (int32_t k = 1; k <= chromosome.NumMarkers; ++k) {
      if (!ReadMapRow(unit, log, status, block.Header.MarkerSpaceType, c, k, row)) {
        return false;
      }
      chromosome.MarkerName.push_back(row.name);
      chromosome.Position.push_back(row.value);
    }
    ToCentimorgans(block.Header, chromosome.Position);
  }
  return true;
}

// Equal names, each marker's turn by turn: first its namesakes on earlier chromosomes, then on its own.
void CheckNames(int32_t log, int32_t& status, const std::vector<ChromosomeTable>& chromosomes) {
  struct Place {
    int32_t chromosome, marker;
  };
  std::vector<Place> places = {{0, 0}};
  NameIndex index;
  int32_t c = 0;
  for (const ChromosomeTable& chromosome : chromosomes) {
    ++c;
    int32_t k = 0;
    for (const NameText& text : chromosome.MarkerName) {
      places.push_back({c, ++k});
      const std::string_view name = Text(text);
      for (const int32_t earlier : AddName(index, name)) {
        const Place first = places[static_cast<std::size_t>(earlier)];
        Report(log, status, "--Input error: two markers have same name on linkage maps!");
        ReportDetail(log, Edits("A,2I8,1X,A"),
                     {"  ChromID, MarkerID, Name of 1st marker = ", first.chromosome, first.marker, name});
        ReportDetail(log, Edits("A,2I8,1X,A"), {"  ChromID, MarkerID, Name of 2nd marker = ", c, k, name});
      }
    }
  }
}

bool CheckOrder(int32_t log, int32_t& status, const std::vector<ChromosomeTable>& chromosomes) {
  int32_t c = 0;
  for (const ChromosomeTable& chromosome : chromosomes) {
    ++c;
    const std::vector<float>& position = chromosome.Position;
    for (std::size_t k = 1; k < position.size(); ++k) {
      if (position[k - 1] > position[k]) {
        const auto place = static_cast<int32_t>(k);
        Report(log, status, "--Input error: two markers are in wrong order!");
        ReportDetail(log, Edits("A,2I8,F8.2"),
                     {"  ChromID, MarkerID, Position of 1st marker = ", c, place, position[k - 1]});
        ReportDetail(log, Edits("A,2I8,F8.2"),
                     {"  ChromID, MarkerID, Position of 2nd marker = ", c, place + 1, position[k]});
        return false;
      }
    }
  }
  return true;
}

}  // namespace

void ScaleToCentimorgans(int32_t spaceUnit, std::vector<float>& places) {
  constexpr int32_t kMorgan = 2;
  if (spaceUnit == kMorgan) {
    for (float& place : places) {
      place *= 100.0F;
    }
  }
}

void ReadChromosomeSection(int32_t moduleCode, int32_t unit, int32_t log, int32_t& status,
                           ProjectBlock& block) {
  NextDataRecord(unit);
  Allocate(block.ChromName, 0);
  Allocate(block.Chromosome, 0);
  if (!ReadChromosomeNames(unit, log, status, block)) {
    return;
  }
  NextDataRecord(unit);
  if (!ReadMap(unit, log, status, block)) {
    return;
  }
  if (moduleCode != kConsensusCode) {
    CheckNames(log, status, block.Chromosome.items);
  }
  if (!CheckOrder(log, status, block.Chromosome.items)) {
    return;
  }
  block.TotalMarkers = 0;
  for (const ChromosomeTable& chromosome : block.Chromosome.items) {
    block.TotalMarkers += chromosome.NumMarkers;
  }
}

void CheckNameAgreement(int32_t log, int32_t& status, const ProjectBlock& block) {
  int32_t c = 0;
  int32_t m = 0;
  for (const ChromosomeTable& chromosome : block.Chromosome.items) {
    ++c;
    for (const NameText& name : chromosome.MarkerName) {
      const std::string_view expected = MarkerNameAt(block, ++m);
      if (Text(name) != expected) {
        Report(log, status, "--Input error: Different names on chromosome and markertype!");
        ReportDetail(
            log, Edits("A,2I8,1X,A,1X,A"),
            {"  ChromID, MarkerID, Name on Chromosome, Name on Markertype = ", c, m, Text(name), expected});
      }
    }
  }
}

}  // namespace project
