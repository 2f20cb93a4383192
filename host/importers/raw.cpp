// The .raw files of Mapmaker and OneMap: "data type ...", counts, in OneMap's the names of the lines, then records
// that begin with '*': markers, in OneMap's with a segregation type, then *CHROM, *POS and traits.

#include <algorithm>
#include <optional>

#include "host/exit_code.h"
#include "host/file_walk.h"
#include "host/importers/codes.h"
#include "host/importers/formats.h"
#include "host/importers/segregation_types.h"
#include "host/populations.h"
#include "host/text.h"

namespace importers {
namespace {

struct Word {
  std::string_view text;
  std::size_t line;
};
struct Record {  // from a '*' to the next
  std::string_view name;
  std::size_t line = 0;
  std::vector<Word> words;
};
struct RawFile {
  const std::string& path;
  std::string type;  // of the data: "f2 intercross"
  std::size_t lines = 0, markers = 0;
  std::vector<std::pair<std::string, std::string>> symbols;
  std::vector<std::string> lineNames;
  std::vector<Record> records;
};

struct DataType {
  std::string_view words;
  int32_t population;
};
constexpr DataType kDataTypes[] = {
    {"f2 intercross", 7}, {"f2 backcross", 1}, {"backcross", 1}, {"ri self", 4}, {"f2", 7}};

std::string Joined(std::span<const std::string_view> words) {
  std::string text;
  for (std::string_view word : words) text += (text.empty() ? "" : " ") + std::string(word);
  return text;
}

// Words parted by blanks or commas; none of a remark.
std::vector<std::string_view> WordsOf(std::string_view line) {
  constexpr std::string_view separators = " \t,";
  std::vector<std::string_view> words;
  if (line.starts_with('#')) return words;
  for (std::size_t at = line.find_first_not_of(separators); at < line.size();) {
    const std::size_t end = std::min(line.find_first_of(separators, at), line.size());
    words.push_back(line.substr(at, end - at));
    at = line.find_first_not_of(separators, end);
  }
  return words;
}

void ReadCounts(RawFile& raw, std::span<const std::string_view> words, std::size_t line) {
  std::array<std::size_t*, 2> counts{&raw.lines, &raw.markers};
  for (std::size_t k = 0; k < counts.size(); ++k) {
    const auto value = k < words.size() ? host::AsInteger(words[k]) : std::nullopt;
    if (!value || *value < 1) {
      ThrowAt(raw.path, line,
              "the numbers of lines and of markers belong here; here is \"" + Excerpt(Joined(words)) + "\"");
    }
    *counts[k] = static_cast<std::size_t>(*value);
  }
  // "symbols 1=A 2=H": the file's own letters.
  for (std::string_view word : words) {
    if (word.size() == 3 && word[1] == '=') raw.symbols.emplace_back(word.substr(0, 1), word.substr(2));
  }
}

void TakeLine(RawFile& raw, const std::vector<std::string_view>& words, std::size_t line) {
  if (raw.type.empty()) {
    if (words.size() < 3 || !host::EqualIgnoringCase(words[0], "data") ||
        !host::EqualIgnoringCase(words[1], "type")) {
      ThrowAt(
          raw.path, line,
          "a raw file begins with \"data type\" and its type; here is \"" + Excerpt(Joined(words)) + "\"");
    }
    raw.type = Joined(std::span(words).subspan(2));
  } else if (raw.lines == 0) {
    ReadCounts(raw, words, line);
  } else if (words.front().starts_with('*')) {
    raw.records.push_back({words.front().substr(1), line, {}});
    for (std::string_view word : std::span(words).subspan(1))
      raw.records.back().words.push_back({word, line});
  } else if (raw.records.empty()) {
    raw.lineNames.insert(raw.lineNames.end(), words.begin(), words.end());
  } else {
    for (std::string_view word : words) raw.records.back().words.push_back({word, line});
  }
}

RawFile ReadRecords(const TextFile& file) {
  RawFile raw{file.path, {}, 0, 0, {}, {}, {}};
  for (std::size_t at = 0; at < file.lines.size(); ++at) {
    const auto words = WordsOf(file.lines[at]);
    if (!words.empty()) TakeLine(raw, words, at + 1);
  }
  if (raw.lines == 0) ThrowAt(file.path, file.lines.size(), "the file ends ahead of its counts");
  if (raw.records.size() < raw.markers) {
    ThrowAt(file.path, file.lines.size(),
            "the file ends behind " + host::Counted(static_cast<int64_t>(raw.records.size()), "marker") +
                " of " + std::to_string(raw.markers));
  }
  if (!raw.lineNames.empty() && raw.lineNames.size() != raw.lines) {
    ThrowAt(file.path, raw.records.front().line - 1,
            std::to_string(raw.lineNames.size()) +
                " names of lines stand ahead of the markers, but there are " +
                host::Counted(static_cast<int64_t>(raw.lines), "line"));
  }
  return raw;
}

// *CHROM has a word a marker.
std::vector<std::string_view> ChromosomesOf(const RawFile& raw) {
  std::vector<std::string_view> chromosomes(raw.markers);
  for (const Record& record : raw.records) {
    if (record.name != "CHROM" || record.words.size() != raw.markers) continue;
    for (std::size_t m = 0; m < raw.markers; ++m) {
      if (record.words[m].text != "NA") chromosomes[m] = record.words[m].text;
    }
  }
  return chromosomes;
}

struct Genotypes {
  std::vector<std::string_view> texts;
  std::vector<std::size_t> lines;
};

// A letter a line, with or without blanks between them.
Genotypes Letters(std::span<const Word> words) {
  Genotypes genotypes;
  for (const Word& word : words) {
    for (std::size_t i = 0; i < word.text.size(); ++i) {
      genotypes.texts.push_back(word.text.substr(i, 1));
      genotypes.lines.push_back(word.line);
    }
  }
  return genotypes;
}

Genotypes Texts(std::span<const Word> words) {
  Genotypes genotypes;
  for (const Word& word : words) {
    genotypes.texts.push_back(word.text);
    genotypes.lines.push_back(word.line);
  }
  return genotypes;
}

bool IsInbredType(std::string_view word) {
  constexpr std::string_view types[] = {"A.H.B", "C.A", "D.B", "A.H", "A.B"};
  return std::find(std::begin(types), std::end(types), word) != std::end(types);
}

void RequireLines(const RawFile& raw, const Record& record, std::size_t found) {
  if (found == raw.lines) return;
  ThrowAt(raw.path, record.line,
          "marker " + Excerpt(record.name) + " has " +
              host::Counted(static_cast<int64_t>(found), "genotype") + " for " +
              host::Counted(static_cast<int64_t>(raw.lines), "line"));
}

void TakeOutcross(Builder& builder, const RawFile& raw, const Record& record, std::string_view chromosome) {
  const SegregationType* type = record.words.empty() ? nullptr : FindOneMapType(record.words.front().text);
  if (type == nullptr) {
    ThrowAt(raw.path, record.line,
            "marker " + Excerpt(record.name) + " of an outcross needs a segregation type such as D1.10");
  }
  const Genotypes genotypes = Texts(std::span(record.words).subspan(1));
  RequireLines(raw, record, genotypes.texts.size());
  std::vector<uint8_t> zygotes;
  for (std::size_t i = 0; i < raw.lines; ++i) {
    const TypedGenotype genotype = OneMapGenotype(*type, genotypes.texts[i]);
    if (!genotype.known) {
      ThrowAt(raw.path, genotypes.lines[i],
              "marker " + Excerpt(record.name) + ": \"" + Excerpt(genotypes.texts[i]) +
                  "\" is no genotype of type " + std::string(type->name));
    }
    zygotes.push_back(genotype.zygotes);
  }
  TakeZygotes(builder, {record.name, record.line, chromosome}, zygotes, SetsOf(*type));
}

void TakeInbred(Builder& builder, const RawFile& raw, const Record& record, std::string_view chromosome,
                const CodeBook& maker, const CodeBook& oneMap, UnknownCodes& unknown) {
  const bool typed = !record.words.empty() && IsInbredType(record.words.front().text);
  const Genotypes genotypes = typed ? Texts(std::span(record.words).subspan(1)) : Letters(record.words);
  RequireLines(raw, record, genotypes.texts.size());
  TakeTexts(builder, typed ? oneMap : maker, {record.name, record.line, chromosome}, genotypes.texts,
            genotypes.lines, unknown);
}

// Mapmaker's "symbols" put other letters in the place of the usual ones.
void TakeSymbols(const RawFile& raw, CodeBook& book) {
  const CodeBook usual = book;
  for (const auto& [symbol, meaning] : raw.symbols) {
    const auto found = usual.codes.find(meaning);
    if (found != usual.codes.end()) book.codes.insert_or_assign(symbol, found->second);
  }
}

void Settle(Request& request, const RawFile& raw, bool outcross, Ledger& notes) {
  RequireKinds(request, raw.path, "a raw file", true);
  const auto* told = std::find_if(std::begin(kDataTypes), std::end(kDataTypes), [&](const DataType& type) {
    return host::EqualIgnoringCase(type.words, raw.type);
  });
  const int32_t population = outcross ? 1 : told == std::end(kDataTypes) ? 0 : told->population;
  SettlePopulation(request, raw.path, outcross ? host::TableKind::Cdm : host::TableKind::Map, population,
                   "data type " + raw.type, notes);
  if (host::EqualIgnoringCase(raw.type, "ri sib")) {
    notes.notes.emplace_back("lines by sib-mating have no population here; distances will be wrong");
  }
}

}  // namespace

Import ReadRaw(const TextFile& file, Request request) {
  const RawFile raw = ReadRecords(file);
  const bool outcross = host::EqualIgnoringCase(raw.type, "outcross");
  Ledger notes;
  Settle(request, raw, outcross, notes);
  Builder builder = StartTable(request, file.path, raw.lineNames, raw.lines);
  builder.ledger.notes.insert(builder.ledger.notes.end(), notes.notes.begin(), notes.notes.end());
  CodeBook maker = BookOf(Vocabulary::Mapmaker, request);
  const CodeBook oneMap = BookOf(Vocabulary::OneMap, request);
  TakeSymbols(raw, maker);
  UnknownCodes unknown;
  const std::vector<std::string_view> chromosomes = ChromosomesOf(raw);
  for (std::size_t m = 0; m < raw.markers; ++m) {
    if (outcross) {
      TakeOutcross(builder, raw, raw.records[m], chromosomes[m]);
    } else {
      TakeInbred(builder, raw, raw.records[m], chromosomes[m], maker, oneMap, unknown);
    }
  }
  RefuseUnknown(file.path, maker, unknown);
  return FinishTable(std::move(builder));
}

}  // namespace importers
