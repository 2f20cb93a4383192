#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/importers/table_builder.h"

namespace importers {

// The letters that a format uses for genotypes.
enum class Vocabulary { Rqtl, Mapmaker, OneMap, MstMap, JoinMap, Plain };

// What each text of a file means: a cell of a bi-parental table, or for a clonal one its zygotes.
struct CodeBook {
  std::map<std::string, uint8_t, std::less<>> codes;
  bool zygotes = false;
  std::string words;  // "A, H, B": what a message names
};

// The codes of a format for the kind and population of the request, with its own codes for missing.
CodeBook BookOf(Vocabulary vocabulary, const Request& request);

// Genotypes that no code book has, gathered over a file.
struct UnknownCodes {
  std::vector<std::string> examples;
  int64_t count = 0;
};

// A marker with a text for each line; `lines` are the places in the file, one for all or one for each.
void TakeTexts(Builder& builder, const CodeBook& book, const MarkerSource& source,
               std::span<const std::string_view> texts, std::span<const std::size_t> lines,
               UnknownCodes& unknown);
// A marker of a clonal table with zygotes for each line (0 is missing). With `types`, its category is the one
// that fits them, else the one that fits the lines best.
void TakeZygotes(Builder& builder, const MarkerSource& source, std::span<const uint8_t> zygotes,
                 std::span<const uint8_t> types);

// Failure InputWrong with the first of them, when there are any.
void RefuseUnknown(const std::string& path, const CodeBook& book, const UnknownCodes& unknown);

// Failure InputWrong: the format cannot hold such a population.
void RequireKinds(const Request& request, const std::string& path, std::string_view format, bool clonal);

}  // namespace importers
