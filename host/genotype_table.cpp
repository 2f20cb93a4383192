#include "host/genotype_table.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/exit_code.h"
#include "host/file_walk.h"
#include "host/item_scanner.h"
#include "host/populations.h"
#include "host/text.h"

namespace host {
namespace {

constexpr std::string_view kMapCodes[] = {"A", "H", "B", "D", "R", "X"};
constexpr std::string_view kCdmCodes[] = {"AC", "AD", "BC", "BD", "XC", "XD",
                                          "AX", "BX", "AA", "AB", "BB", "XX"};
constexpr std::string_view kPlmCodes[] = {"A", "B", "C", "D", "E", "F", "G", "H", "X"};

struct KindRow {
  std::string_view extension, module;
  std::span<const std::string_view> codes;
};
constexpr KindRow kKinds[] = {
    // in the order of TableKind
    {".map", "MAP", kMapCodes},
    {".cdm", "CDM", kCdmCodes},
    {".plm", "PLM", kPlmCodes},
};
const KindRow& TableRowOf(TableKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

// The other ways to write a genotype of a bi-parental population.
struct OtherCode {
  std::string_view token, code;
};
constexpr OtherCode kOtherCodes[] = {
    {"2", "A"},  {"AA", "A"}, {"1", "H"},  {"AB", "H"}, {"BA", "H"}, {"0", "B"},  {"BB", "B"},
    {"12", "D"}, {"AH", "D"}, {"HA", "D"}, {"AX", "D"}, {"XA", "D"}, {"A*", "D"}, {"*A", "D"},
    {"A_", "D"}, {"_A", "D"}, {"10", "R"}, {"BH", "R"}, {"HB", "R"}, {"BX", "R"}, {"XB", "R"},
    {"B*", "R"}, {"*B", "R"}, {"B_", "R"}, {"_B", "R"},
};

constexpr std::size_t kTokenLength = 2, kCategoryLength = 8;
constexpr std::string_view kLineNames = "!Line names:";
constexpr std::string_view kClassLetters = "ABCDEFGH";

// A genotype that the population cannot show counts as missing: D in a backcross to P1, H in inbred lines.
bool Shows(int32_t population, std::string_view code) {
  if (population < 1 || population > 20) return true;
  const std::string_view shows = kPopulations[population - 1].shows;
  if (code == "D" || code == "R") return shows.size() == 3;
  return shows.find(code) != std::string_view::npos;
}

// What a row does to the parents' letters: those of parents that share an allele become that of the first of
// them, allele by allele in the order of the parent that bears its own letter.
std::string FoldedLetters(std::string_view category, std::size_t parents) {
  std::string pattern(category.substr(0, parents)), letters(kClassLetters);
  pattern.resize(kClassLetters.size(), 'X');
  for (std::size_t i = 0; i < parents; ++i) {
    const char shared = pattern[i];
    if (shared != kClassLetters[i]) continue;
    const char first = kClassLetters[pattern.find(shared)];
    for (std::size_t k = 0; k < parents; ++k) {
      if (pattern[k] != shared) continue;
      std::replace(letters.begin(), letters.end(), kClassLetters[k], first);
    }
  }
  return letters;
}

std::size_t Key(std::string_view token) {
  const auto first = static_cast<unsigned char>(token.empty() ? ' ' : token[0]);
  const auto second = static_cast<unsigned char>(token.size() < 2 ? ' ' : token[1]);
  return std::size_t{256} * first + second;
}

// The cell of every token of two characters, so that a cell costs one look.
std::vector<uint8_t> CellsByToken(TableKind kind, int32_t population) {
  std::vector<uint8_t> cells(std::size_t{256} * 256, MissingCell(kind));
  for (const std::string_view code : CodesOf(kind)) cells[Key(code)] = CellOf(kind, code);
  if (kind != TableKind::Map) return cells;
  for (const OtherCode& spelling : kOtherCodes) cells[Key(spelling.token)] = CellOf(kind, spelling.code);
  for (uint8_t& cell : cells) {
    if (!Shows(population, CodesOf(kind)[cell])) cell = MissingCell(kind);
  }
  return cells;
}

[[noreturn]] void ThrowShort(std::string_view what) {
  throw Failure{ExitCode::InputWrong, "the project file ends within its " + std::string(what)};
}

int64_t TakeNumber(ItemScanner& scanner) {
  std::vector<Word> word(1);
  if (!ToData(scanner) || !TakeRow(scanner, 1, word).complete) ThrowShort("header");
  const auto value = word[0].quoted ? std::nullopt : AsInteger(word[0].text);
  if (!value || *value < 1) throw Failure{ExitCode::InputWrong, "the project file's header is wrong"};
  return *value;
}

std::vector<std::string> LineNamesIn(const ItemScanner& scanner, std::size_t from, std::size_t lines) {
  for (std::size_t at = from; at < scanner.next; ++at) {
    if (!scanner.lines[at].starts_with(kLineNames)) continue;
    ItemScanner names{{scanner.lines[at].substr(kLineNames.size())}};
    std::vector<Word> words(lines);
    if (!TakeRow(names, lines, words).complete) return {};
    std::vector<std::string> result;
    result.reserve(lines);
    for (Word& word : words) result.push_back(std::move(word.text));
    return result;
  }
  return {};
}

// A genotype of a bi-parental population, whether this one shows it or not.
bool IsMapGenotype(std::string_view token) {
  const auto same = [&](std::string_view spelling) { return Key(spelling) == Key(token); };
  const auto codes = CodesOf(TableKind::Map).first(CodesOf(TableKind::Map).size() - 1);
  return std::any_of(codes.begin(), codes.end(), same) ||
         std::any_of(std::begin(kOtherCodes), std::end(kOtherCodes),
                     [&](const OtherCode& other) { return same(other.token); });
}

void TakeMarkers(ItemScanner& scanner, std::size_t markers, GenotypeTable& table) {
  const bool categorised = table.kind != TableKind::Map;
  const std::size_t first = categorised ? 2 : 1;
  const std::vector<uint8_t> cells = CellsByToken(table.kind, table.populationType);
  std::vector<Word> words(first + table.lines);
  for (std::size_t m = 0; m < markers; ++m) {
    if (!TakeRow(scanner, words.size(), words).complete) ThrowShort("marker types");
    table.markers.push_back(words[first - 1].text.substr(0, kMarkerNameLength));
    if (categorised) table.categories.push_back(words[0].text.substr(0, kCategoryLength));
    std::string letters;
    if (table.kind == TableKind::Plm) {
      letters = FoldedLetters(table.categories.back(), table.populationType <= 2 ? 4 : 8) + 'X';
    }
    for (std::size_t i = first; i < words.size(); ++i) {
      std::string_view token = std::string_view(words[i].text).substr(0, kTokenLength);
      if (table.kind == TableKind::Plm) token = token.substr(0, 1);
      const uint8_t cell = cells[Key(token)];
      if (!categorised && cell == MissingCell(table.kind) && IsMapGenotype(token)) ++table.notShown;
      table.cells.push_back(letters.empty() ? cell : CellOf(table.kind, {&letters[cell], 1}));
    }
  }
}

void TakeAnchors(ItemScanner& scanner, GenotypeTable& table) {
  ToData(scanner);
  std::vector<Word> words(2);
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    if (!TakeRow(scanner, 2, words).complete) ThrowShort("anchors");
    table.anchors.push_back(static_cast<int32_t>(AsInteger(words[1].text).value_or(0)));
  }
}

void AppendField(std::string& text, std::string_view remark, int64_t value) {
  text += remark;
  text += '\n' + std::to_string(value) + '\n';
}

std::string Header(const GenotypeTable& table) {
  std::string text;
  AppendField(text, "!Population type", table.populationType);
  AppendField(text, "!Mapping function (1 for Kosambi; 2 for Haldane; 3 for Morgan)", table.mappingFunction);
  AppendField(text, "!Marker space type (1 for intervals; 2 for positions)", table.markerSpaceType);
  AppendField(text, "!Number of markers", static_cast<int64_t>(table.markers.size()));
  AppendField(text, "!Population size", static_cast<int64_t>(table.lines));
  if (table.lineNames.empty()) return text;
  text += kLineNames;
  for (const std::string& name : table.lineNames) text += ' ' + QuotedName(name);
  return text + '\n';
}

}  // namespace

std::span<const std::string_view> CodesOf(TableKind kind) { return TableRowOf(kind).codes; }
uint8_t MissingCell(TableKind kind) { return static_cast<uint8_t>(CodesOf(kind).size() - 1); }
std::string_view ExtensionOf(TableKind kind) { return TableRowOf(kind).extension; }
std::string_view ModuleOf(TableKind kind) { return TableRowOf(kind).module; }

uint8_t CellOf(TableKind kind, std::string_view code) {
  const auto codes = CodesOf(kind);
  const auto found = std::find(codes.begin(), codes.end(), code);
  return found == codes.end() ? MissingCell(kind) : static_cast<uint8_t>(found - codes.begin());
}

GenotypeTable ReadGenotypes(std::string_view text, TableKind kind) {
  ItemScanner scanner{Lines(text)};
  GenotypeTable table;
  table.kind = kind;
  table.populationType = static_cast<int32_t>(TakeNumber(scanner));
  table.mappingFunction = static_cast<int32_t>(TakeNumber(scanner));
  table.markerSpaceType = static_cast<int32_t>(TakeNumber(scanner));
  const auto markers = static_cast<std::size_t>(TakeNumber(scanner));
  table.lines = static_cast<std::size_t>(TakeNumber(scanner));
  // A row has a character and a separator for each line at least: counts beyond that are no sizes to allocate.
  if (markers > text.size() || table.lines > text.size()) ThrowShort("marker types");
  const std::size_t headerEnd = scanner.next;
  ToData(scanner);
  table.lineNames = LineNamesIn(scanner, headerEnd, table.lines);
  TakeMarkers(scanner, markers, table);
  TakeAnchors(scanner, table);
  return table;
}

std::string ProjectText(const GenotypeTable& table) {
  std::string text = Header(table);
  const auto codes = CodesOf(table.kind);
  text.reserve(text.size() + table.cells.size() * 3 + table.markers.size() * 2 * (kMarkerNameLength + 12));
  text += "!Marker types\n";
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    if (!table.categories.empty()) text += QuotedName(table.categories[m]) + ' ';
    text += QuotedName(table.markers[m]);
    for (const uint8_t cell : table.Row(m)) {
      text += ' ';
      text += codes[cell];
    }
    text += '\n';
  }
  text += "!Marker name followed by anchor group\n";
  for (std::size_t m = 0; m < table.markers.size(); ++m) {
    text += QuotedName(table.markers[m]) + ' ' + std::to_string(table.anchors.empty() ? 0 : table.anchors[m]);
    text += '\n';
  }
  return text;
}

std::string QuotedName(std::string_view name) {
  const std::size_t star = name.find_first_not_of("0123456789");
  const bool repeats = star != std::string_view::npos && star > 0 && name[star] == '*';
  const bool plain = !name.empty() && name.find_first_of(" \t,/'\"") == std::string_view::npos && !repeats;
  if (plain && name.front() != '!') return std::string(name);
  std::string quoted = "'";
  for (const char c : name) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

}  // namespace host
