#include "host/importers/codes.h"

#include <algorithm>
#include <cctype>

#include "host/exit_code.h"
#include "host/importers/clonal.h"
#include "host/importers/text_source.h"
#include "host/population_catalogue.h"
#include "host/populations.h"
#include "host/text.h"

namespace importers {
namespace {

using host::TableKind;

constexpr unsigned Bit(Vocabulary vocabulary) { return 1U << static_cast<unsigned>(vocabulary); }
constexpr unsigned kRqtl = Bit(Vocabulary::Rqtl), kMaker = Bit(Vocabulary::Mapmaker),
                   kOneMap = Bit(Vocabulary::OneMap), kMst = Bit(Vocabulary::MstMap),
                   kJoin = Bit(Vocabulary::JoinMap), kPlain = Bit(Vocabulary::Plain);
constexpr unsigned kAll = kRqtl | kMaker | kOneMap | kMst | kJoin | kPlain;

struct CodeRow {
  std::string_view text;  // upper case; lower case means the same
  std::string_view code;  // of the table
  unsigned where;
};
constexpr CodeRow kCodes[] = {
    {"A", "A", kAll},
    {"B", "B", kAll},
    {"H", "H", kAll & ~kMst},
    {"X", "H", kMst},
    {"AB", "H", kAll & ~kMst},
    {"C", "R", kAll & ~kMst},  // not A
    {"D", "D", kAll & ~kMst},  // not B
    {"AA", "A", kRqtl | kOneMap | kPlain},
    {"BB", "B", kRqtl | kOneMap | kPlain},
    {"BA", "H", kOneMap | kPlain},
    {"2", "A", kPlain},
    {"1", "H", kPlain},
    {"0", "B", kPlain},
    {"12", "D", kPlain},
    {"10", "R", kPlain},
    {"R", "R", kPlain},
    {"AH", "D", kPlain},
    {"HA", "D", kPlain},
    {"AX", "D", kPlain},
    {"A_", "D", kPlain},
    {"A*", "D", kPlain},
    {"BH", "R", kPlain},
    {"HB", "R", kPlain},
    {"BX", "R", kPlain},
    {"B_", "R", kPlain},
    {"B*", "R", kPlain},
};
struct MissingRow {
  std::string_view text;
  unsigned where;
};
constexpr MissingRow kMissing[] = {
    {"-", kAll},         {"NA", kAll},   {"", kRqtl | kPlain}, {".", kAll},    {"--", kAll},
    {"U", kMst | kJoin}, {"X", kPlain},  {"XX", kPlain},       {"-1", kPlain}, {"*", kPlain},
    {"**", kPlain},      {"NN", kPlain}, {"N", kPlain},        {"?", kPlain},  {"./.", kPlain},
};

struct ZygoteRow {
  std::string_view text;
  uint8_t zygotes;
  unsigned where;
};
constexpr ZygoteRow kZygotes[] = {
    {"1", kAC, kRqtl},          {"2", kBC, kRqtl},          {"3", kAD, kRqtl},
    {"4", kBD, kRqtl},          {"5", kAC | kAD, kRqtl},    {"6", kBC | kBD, kRqtl},
    {"7", kAC | kBC, kRqtl},    {"8", kAD | kBD, kRqtl},    {"9", kAC | kBD, kRqtl},
    {"10", kAD | kBC, kRqtl},   {"11", kAny & ~kAC, kRqtl}, {"12", kAny & ~kBC, kRqtl},
    {"13", kAny & ~kAD, kRqtl}, {"14", kAny & ~kBD, kRqtl}, {"AC", kAC, kPlain},
    {"AD", kAD, kPlain},        {"BC", kBC, kPlain},        {"BD", kBD, kPlain},
    {"AX", kAC | kAD, kPlain},  {"BX", kBC | kBD, kPlain},  {"XC", kAC | kBC, kPlain},
    {"XD", kAD | kBD, kPlain},  {"AA", kAC, kPlain},        {"AB", kAD | kBC, kPlain},
    {"BB", kBD, kPlain},
};

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

void Put(CodeBook& book, std::string_view text, uint8_t meaning, bool named) {
  if (named) book.words += (book.words.empty() ? "" : ", ") + std::string(text);
  book.codes.insert_or_assign(std::string(text), meaning);
  book.codes.insert_or_assign(Lower(text), meaning);
}

// Two letters for the two genotypes of a backcross, whatever they are: the recurrent parent's keeps its own.
void TakeBackcrossLetters(CodeBook& book, int32_t population) {
  const std::string_view shows = host::kPopulations[population - 1].shows;
  const uint8_t heterozygote = host::CellOf(TableKind::Map, "H");
  if (shows == "AH") Put(book, "B", heterozygote, false);
  if (shows == "HB") Put(book, "A", heterozygote, false);
}

}  // namespace

CodeBook BookOf(Vocabulary vocabulary, const Request& request) {
  CodeBook book;
  const unsigned bit = Bit(vocabulary);
  book.zygotes = request.kind == TableKind::Cdm;
  const uint8_t missing = book.zygotes ? static_cast<uint8_t>(kNone) : host::MissingCell(TableKind::Map);
  for (const MissingRow& row : kMissing) {
    if ((row.where & bit) != 0) Put(book, row.text, missing, false);
  }
  if (book.zygotes) {
    for (const ZygoteRow& row : kZygotes) {
      if ((row.where & bit) != 0) Put(book, row.text, row.zygotes, true);
    }
  } else {
    for (const CodeRow& row : kCodes) {
      if ((row.where & bit) != 0) Put(book, row.text, host::CellOf(TableKind::Map, row.code), true);
    }
    if (vocabulary == Vocabulary::MstMap) TakeBackcrossLetters(book, request.population);
  }
  for (const std::string& text : request.missing) book.codes.insert_or_assign(text, missing);
  return book;
}

void TakeTexts(Builder& builder, const CodeBook& book, const MarkerSource& source,
               std::span<const std::string_view> texts, std::span<const std::size_t> lines,
               UnknownCodes& unknown) {
  constexpr std::size_t kExamples = 3;
  std::vector<uint8_t> cells(texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const auto found = book.codes.find(texts[i]);
    if (found != book.codes.end()) {
      cells[i] = found->second;
    } else if (++unknown.count <= static_cast<int64_t>(kExamples)) {
      const std::string line = std::to_string(lines[lines.size() == 1 ? 0 : i]);
      const auto& names = builder.table.lineNames;
      unknown.examples.push_back(
          "line " + line + ": marker " + Excerpt(source.name) + ", " +
          (names.empty() ? "line number " + std::to_string(i + 1) : Excerpt(names[i])) + ": \"" +
          Excerpt(texts[i]) + "\"");
    }
  }
  if (unknown.count > 0) return;  // the file is refused at its end
  if (book.zygotes) return TakeZygotes(builder, source, cells, {});
  AddMarker(builder, source, cells);
}

void TakeZygotes(Builder& builder, const MarkerSource& source, std::span<const uint8_t> zygotes,
                 std::span<const uint8_t> types) {
  ZygoteCounts counts{};
  for (const uint8_t set : types.empty() ? zygotes : types) ++counts[set];
  counts[kNone] = counts[kAny] = 0;
  const ClonalCategory* category = CategoryFor(counts, builder.request.population);
  if (category == nullptr) {
    const bool any = std::any_of(zygotes.begin(), zygotes.end(), [](uint8_t set) { return set != kNone; });
    return DropMarker(builder, source, any ? Drop::NoCategory : Drop::NothingLeft);
  }
  const auto byZygotes = CellsByZygotes(*category);
  const uint8_t missing = host::MissingCell(TableKind::Cdm);
  // A type that is dominant in both parents would keep one of its genotypes only.
  const bool whole =
      std::none_of(types.begin(), types.end(), [&](uint8_t set) { return byZygotes[set] == missing; });
  if (!whole) return DropMarker(builder, source, Drop::NoCategory);
  std::vector<uint8_t> cells;
  for (const uint8_t set : zygotes) {
    cells.push_back(byZygotes[set]);
    if (set != kNone && cells.back() == missing) {
      ++builder.pending[static_cast<std::size_t>(Blank::NotInCategory)];
    }
  }
  AddMarker(builder, source, cells, category->text);
}

void RefuseUnknown(const std::string& path, const CodeBook& book, const UnknownCodes& unknown) {
  if (unknown.count == 0) return;
  std::string words = path + ": " + host::Counted(static_cast<int64_t>(unknown.count), "genotype") +
                      (unknown.count == 1 ? " is" : " are") + " none of " + book.words +
                      " or missing (-, NA; --missing names further codes)";
  for (const std::string& example : unknown.examples) words += "\n  " + example;
  throw host::Failure{host::ExitCode::InputWrong, words};
}

void RequireKinds(const Request& request, const std::string& path, std::string_view format, bool clonal) {
  const bool good = request.kind == TableKind::Map || (clonal && request.kind == TableKind::Cdm);
  if (good || request.population == 0) return;
  throw host::Failure{host::ExitCode::InputWrong,
                      path + ": " + std::string(format) + " cannot hold population " +
                          std::string(host::CatalogueRowOf(request.kind, request.population).name) +
                          "; use vcf, or a table with --parents"};
}

}  // namespace importers
