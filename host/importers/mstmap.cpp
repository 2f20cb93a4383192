// MSTmap: settings "key value", then a heading "locus_name" and a row a marker, parted by tabs.

#include <map>

#include "host/file_walk.h"
#include "host/importers/codes.h"
#include "host/importers/formats.h"
#include "host/importers/sheet.h"
#include "host/populations.h"
#include "host/text.h"

namespace importers {
namespace {

struct Settings {
  std::map<std::string, std::string> values;
  std::size_t heading = 0;  // place of its line, from 0
};

Settings ReadSettings(const TextFile& file) {
  Settings settings;
  for (std::size_t at = 0; at < file.lines.size(); ++at) {
    const auto words = host::BlankParted(file.lines[at]);
    if (words.empty()) continue;
    if (host::EqualIgnoringCase(words[0], "locus_name")) {
      settings.heading = at;
      return settings;
    }
    if (words.size() > 2) break;
    settings.values[std::string(words[0])] = words.size() > 1 ? words[1] : std::string_view{};
  }
  ThrowAt(file.path, settings.values.size() + 1, "there is no heading that begins with locus_name");
}

// A count that the settings tell must be the one that is there: else rows were lost.
void RequireCount(const Sheet& sheet, const Settings& settings, const std::string& key, std::size_t found) {
  const auto told = settings.values.find(key);
  if (told == settings.values.end() || host::AsInteger(told->second) == static_cast<int64_t>(found)) return;
  ThrowAt(sheet.path, sheet.lines.front(),
          key + " says " + Excerpt(told->second) + ", but there are " + std::to_string(found));
}

// RIL2 are F2 plants, RIL3 the F3; DH stands for every population of two genotypes.
int32_t PopulationTold(const Settings& settings) {
  const auto type = settings.values.find("population_type");
  if (type == settings.values.end()) return 0;
  return type->second == "RIL2" ? 7 : type->second == "RIL3" ? 8 : 0;
}

}  // namespace

Import ReadMstMap(const TextFile& file, Request request) {
  const Settings settings = ReadSettings(file);
  const Sheet sheet = ReadSheet(file, settings.heading);
  Ledger notes;
  RequireKinds(request, file.path, "an MSTmap file", false);
  const auto type = settings.values.find("population_type");
  SettlePopulation(request, file.path, host::TableKind::Map, PopulationTold(settings),
                   type == settings.values.end() ? "MSTmap" : "population_type " + type->second, notes);
  RequireCount(sheet, settings, "number_of_loci", sheet.rows.size() - 1);
  RequireCount(sheet, settings, "number_of_individual", sheet.Width() - 1);
  Builder builder =
      StartTable(request, file.path, {sheet.rows[0].begin() + 1, sheet.rows[0].end()}, sheet.Width() - 1);
  builder.ledger.notes = notes.notes;
  const CodeBook book = BookOf(Vocabulary::MstMap, request);
  UnknownCodes unknown;
  for (std::size_t row = 1; row < sheet.rows.size(); ++row) {
    const auto& cells = sheet.rows[row];
    const std::vector<std::string_view> texts(cells.begin() + 1, cells.end());
    TakeTexts(builder, book, {cells[0], sheet.lines[row]}, texts, {&sheet.lines[row], 1}, unknown);
  }
  RefuseUnknown(file.path, book, unknown);
  return FinishTable(std::move(builder));
}

}  // namespace importers
