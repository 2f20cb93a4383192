#include "project/families.h"

#include <algorithm>
#include <limits>

#include "project/reader.h"
#include "project/report.h"

namespace project {

using platform::Edits;

void ReadFamilies(int32_t unit, int32_t log, int32_t& status, ProjectBlock& block) {
  NextDataRecord(unit);
  Allocate(block.FamilyName, 0);
  Allocate(block.FamilySize, 0);
  auto name = Blank<ShortName>();  // scratch of the section: nulls keep the row before
  int32_t size = 0;
  int64_t sum = 0;
  for (int32_t f = 1; f <= block.Header.NumFamilies; ++f) {
    if (ReadTokens(unit, {TextItem(name.data(), name.size()), IntegerItem(size)}) != 0) {
      Report(log, status, "--Input error: cannot read family name, and family size!");
      ReportDetail(log, Edits("A,I8"), {"  FamliyID = ", f});  // required as it stands
      return;
    }
    if (size < 1) {
      Report(log, status, "--Input error: family size out of range!");
      ReportDetail(log, Edits("A,2I8"), {"  FamilyID, Family Size = ", f, size});
      return;
    }
    block.FamilyName.items.push_back(name);
    block.FamilySize.items.push_back(size);
    sum += size;
  }
  block.Header.PopulationSize =
      static_cast<int32_t>(std::min<int64_t>(sum, std::numeric_limits<int32_t>::max()));
}

}  // namespace project
