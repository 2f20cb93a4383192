#include "project/anchors.h"

#include <algorithm>

#include "project/reader.h"
#include "project/report.h"

namespace project {

using platform::Edits;

void ReadAnchorSection(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block) {
  NextDataRecord(unit);
  const auto numMarkers = static_cast<std::size_t>(std::max(block.Header.NumMarkers, 0));
  Allocate(block.AnchorInfo, std::min(numMarkers, platform::BytesLeft(unit) + 1));
  auto name = Blank<NameText>();  // scratch of the section: nulls keep the row before
  int32_t anchor = 0;
  for (std::size_t m = 1; m <= numMarkers; ++m) {
    const auto marker = static_cast<int32_t>(m);
    if (ReadTokens(unit, {TextItem(name.data(), kNameWidth), IntegerItem(anchor)}) != 0) {
      Report(log, status, "--Input error: cannot read AnchorInfo!");
      ReportDetail(log, Edits("A,I8"), {"  MarkerID = ", marker});
      return;
    }
    const std::string_view expected = MarkerNameAt(block, marker);
    if (Text(name) != expected) {
      Report(log, status, "--Input error: Name in AnchorInfo does not match name in Markertype!");
      ReportDetail(log, Edits("A,I8,1X,A,1X,A"),
                   {"  MarkerID, Name in Anchorinfo, Name in MarkerType = ", marker, Text(name), expected});
      return;
    }
    if (anchor < 0) {
      Report(log, status, "--Input error: Invalid anchor information!");
      ReportDetail(log, Edits("A,2I8"), {"  MarkerID, AnchorInfo = ", marker, anchor});
      return;
    }
    block.AnchorInfo.items.push_back(anchor);
  }
}

}  // namespace project
