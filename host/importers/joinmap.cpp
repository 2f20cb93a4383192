// JoinMap .loc: settings "name = value", then for each locus its name, a segregation type, phases and classes in
// brackets, and a genotype a line, over as many lines of the file as it takes. ';' begins a remark.

#include <algorithm>
#include <map>
#include <optional>

#include "host/file_walk.h"
#include "host/importers/codes.h"
#include "host/importers/formats.h"
#include "host/importers/segregation_types.h"
#include "host/populations.h"
#include "host/text.h"

namespace importers {
namespace {

struct PlacedWord {
  std::string_view text;
  std::size_t line;
};

// "popt=F2", "popt = F2" and "popt =F2" are the same words.
std::vector<PlacedWord> Words(const TextFile& file) {
  std::vector<PlacedWord> words;
  for (std::size_t at = 0; at < file.lines.size(); ++at) {
    const std::string_view line = std::string_view(file.lines[at]).substr(0, file.lines[at].find(';'));
    for (std::string_view word : host::BlankParted(line)) {
      for (std::size_t end = word.find('='); end != std::string_view::npos; end = word.find('=')) {
        if (end > 0) words.push_back({word.substr(0, end), at + 1});
        words.push_back({word.substr(end, 1), at + 1});
        word.remove_prefix(end + 1);
      }
      if (!word.empty()) words.push_back({word, at + 1});
    }
  }
  return words;
}

struct Reading {
  const TextFile& file;
  std::vector<PlacedWord> words;
  std::size_t next = 0;
  std::map<std::string, std::string, std::less<>> settings;
  std::size_t loci = 0, lines = 0;

  bool Ended() const { return next >= words.size(); }
  std::size_t Line() const { return words.empty() ? 1 : words[std::min(next, words.size() - 1)].line; }
};

void ReadSettings(Reading& reading) {
  for (; reading.next + 2 < reading.words.size() && reading.words[reading.next + 1].text == "=";
       reading.next += 3) {
    reading.settings[std::string(reading.words[reading.next].text)] = reading.words[reading.next + 2].text;
  }
  for (const auto& [key, count] : {std::pair{"nloc", &reading.loci}, {"nind", &reading.lines}}) {
    const auto found = reading.settings.find(key);
    const auto value = found == reading.settings.end() ? std::nullopt : host::AsInteger(found->second);
    if (!value || *value < 1) {
      ThrowAt(reading.file.path, reading.Line(),
              std::string("the heading needs \"") + key + " = \" and a number above 0 ahead of the loci");
    }
    *count = static_cast<std::size_t>(*value);
  }
  if (!reading.settings.contains("popt")) {
    ThrowAt(reading.file.path, reading.Line(), "the heading needs \"popt = \" and the type of population");
  }
  if (reading.lines > reading.words.size()) {
    ThrowAt(reading.file.path, reading.Line(), "nind says more lines than the file has genotypes");
  }
}

struct PopulationType {
  std::string_view popt;
  int32_t population;  // bi-parental
};
constexpr PopulationType kTypes[] = {{"BC1", 1},  {"F2", 7},  {"DH", 3},  {"DH1", 3}, {"HAP", 3},
                                     {"HAP1", 3}, {"RI2", 7}, {"RI3", 8}, {"RI6", 4}, {"RI7", 4},
                                     {"RI8", 4},  {"RI9", 4}, {"RI10", 4}};

int32_t BiParentalOf(std::string_view popt) {
  const auto* found = std::find_if(std::begin(kTypes), std::end(kTypes), [&](const PopulationType& type) {
    return host::EqualIgnoringCase(type.popt, popt);
  });
  return found == std::end(kTypes) ? 0 : found->population;
}

// What stands between a locus' name and its genotypes: <type>, {phases}, (classes).
std::string_view TakeBrackets(Reading& reading) {
  std::string_view type;
  while (!reading.Ended()) {
    const std::string_view text = reading.words[reading.next].text;
    if (!text.starts_with('<') && !text.starts_with('{') && !text.starts_with('(')) break;
    if (text.starts_with('<')) type = text.substr(1, text.find('>') - 1);
    // "(a,b,h)" may have blanks inside.
    const char close = text.front() == '<' ? '>' : text.front() == '{' ? '}' : ')';
    while (!reading.Ended() && reading.words[reading.next].text.find(close) == std::string_view::npos)
      ++reading.next;
    ++reading.next;
  }
  return type;
}

struct Locus {
  PlacedWord name;
  std::string_view type;
  std::vector<std::string_view> texts;
  std::vector<std::size_t> lines;
};

Locus TakeLocus(Reading& reading, std::size_t number) {
  if (reading.Ended()) {
    ThrowAt(reading.file.path, reading.Line(),
            "the file ends behind " + host::Counted(static_cast<int64_t>(number), "marker") +
                " of nloc = " + std::to_string(reading.loci));
  }
  Locus locus{reading.words[reading.next++], {}, {}, {}};
  locus.type = TakeBrackets(reading);
  for (std::size_t i = 0; i < reading.lines; ++i, ++reading.next) {
    if (reading.Ended()) {
      ThrowAt(reading.file.path, locus.name.line,
              "locus " + Excerpt(locus.name.text) + " has " + std::to_string(i) +
                  " genotypes of nind = " + std::to_string(reading.lines));
    }
    locus.texts.push_back(reading.words[reading.next].text);
    locus.lines.push_back(reading.words[reading.next].line);
  }
  return locus;
}

void TakeTyped(Builder& builder, const Reading& reading, const Locus& locus) {
  const SegregationType* type = FindJoinMapType(locus.type);
  if (type == nullptr) {
    ThrowAt(reading.file.path, locus.name.line,
            "locus " + Excerpt(locus.name.text) +
                " of a CP population needs a segregation type such as <lmxll>; it "
                "has <" +
                Excerpt(locus.type) + ">");
  }
  std::vector<uint8_t> zygotes;
  for (std::size_t i = 0; i < locus.texts.size(); ++i) {
    const TypedGenotype genotype = JoinMapGenotype(*type, locus.texts[i]);
    if (!genotype.known) {
      ThrowAt(reading.file.path, locus.lines[i],
              "locus " + Excerpt(locus.name.text) + ": \"" + Excerpt(locus.texts[i]) +
                  "\" is no genotype of <" + std::string(type->name) + ">");
    }
    zygotes.push_back(genotype.zygotes);
  }
  TakeZygotes(builder, {locus.name.text, locus.name.line}, zygotes, SetsOf(*type));
}

// Behind the loci: "individual names:" and a name a line. Read ahead of them, as lines are told by name.
std::vector<std::string> LineNames(const Reading& reading) {
  for (std::size_t at = 0; at + 1 + reading.lines < reading.words.size(); ++at) {
    if (reading.words[at].text != "individual" || reading.words[at + 1].text != "names:") continue;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < reading.lines; ++i) {
      if (at + 2 + i >= reading.words.size()) return {};
      names.emplace_back(reading.words[at + 2 + i].text);
    }
    return names;
  }
  return {};
}

}  // namespace

Import ReadJoinMap(const TextFile& file, Request request) {
  Reading reading{file, Words(file), 0, {}, 0, 0};
  ReadSettings(reading);
  const std::string popt = reading.settings["popt"];
  const bool outbred = host::EqualIgnoringCase(popt, "CP");
  Ledger notes;
  RequireKinds(request, file.path, "a JoinMap file", true);
  SettlePopulation(request, file.path, outbred ? host::TableKind::Cdm : host::TableKind::Map,
                   outbred ? 1 : BiParentalOf(popt), "popt = " + popt, notes);
  Builder builder = StartTable(request, file.path, LineNames(reading), reading.lines);
  builder.ledger.notes.insert(builder.ledger.notes.end(), notes.notes.begin(), notes.notes.end());
  const CodeBook book = BookOf(Vocabulary::JoinMap, request);
  UnknownCodes unknown;
  for (std::size_t m = 0; m < reading.loci; ++m) {
    const Locus locus = TakeLocus(reading, m);
    if (outbred) {
      TakeTyped(builder, reading, locus);
    } else {
      TakeTexts(builder, book, {locus.name.text, locus.name.line}, locus.texts, locus.lines, unknown);
    }
  }
  RefuseUnknown(file.path, book, unknown);
  const bool more = !reading.Ended() && reading.words[reading.next].text != "individual";
  if (more)
    ThrowAt(file.path, reading.Line(), "there is more behind the last locus; is nloc or nind too small?");
  return FinishTable(std::move(builder));
}

}  // namespace importers
