#include "host/importers/segregation_types.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "host/importers/clonal.h"

namespace importers {
namespace {

constexpr SegregationType kJoinMapTypes[] = {
    {"abxcd", "abcd", '\0'}, {"efxeg", "efeg", '\0'}, {"hkxhk", "hkhk", '\0'},
    {"lmxll", "lmll", '\0'}, {"nnxnp", "nnnp", '\0'}, {"abxac", "abac", '\0'},
    {"abxab", "abab", '\0'}, {"abxaa", "abaa", '\0'}, {"aaxab", "aaab", '\0'},
};
constexpr SegregationType kOneMapTypes[] = {
    {"A.1", "abcd", '\0'},  {"A.2", "abac", '\0'},   {"A.3", "abco", 'o'},    {"A.4", "aobo", 'o'},
    {"B1.5", "abao", 'o'},  {"B2.6", "aoab", 'o'},   {"B3.7", "abab", '\0'},  {"C.8", "aoao", 'o'},
    {"D1.9", "abcc", '\0'}, {"D1.10", "abaa", '\0'}, {"D1.11", "aboo", 'o'},  {"D1.12", "boaa", 'o'},
    {"D1.13", "aooo", 'o'}, {"D2.14", "ccab", '\0'}, {"D2.15", "aaab", '\0'}, {"D2.16", "ooab", 'o'},
    {"D2.17", "aabo", 'o'}, {"D2.18", "ooao", 'o'},
};

const SegregationType* Find(std::span<const SegregationType> types, std::string_view name) {
  const auto found = std::find_if(types.begin(), types.end(),
                                  [&](const SegregationType& type) { return type.name == name; });
  return found == types.end() ? nullptr : &*found;
}

bool IsMissing(std::string_view text) {
  constexpr std::string_view texts[] = {"-", "--", ".", "..", "u", "uu", "NA", "na", "U"};
  return std::find(std::begin(texts), std::end(texts), text) != std::end(texts);
}

}  // namespace

const SegregationType* FindJoinMapType(std::string_view name) { return Find(kJoinMapTypes, name); }
const SegregationType* FindOneMapType(std::string_view name) { return Find(kOneMapTypes, name); }

std::array<uint8_t, 4> SetsOf(const SegregationType& type) {
  std::array<uint8_t, 4> sets{};
  for (const std::size_t zygote : {0U, 1U, 2U, 3U}) {
    const std::string genotype{type.parents[zygote / 2], type.parents[2 + zygote % 2]};
    sets[zygote] = ZygotesOf(type.parents, genotype, type.null);
  }
  return sets;
}

TypedGenotype JoinMapGenotype(const SegregationType& type, std::string_view text) {
  if (IsMissing(text)) return {kNone, true};
  std::string genotype(text);
  for (char& c : genotype) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (genotype.size() != 2) return {kNone, false};
  if (genotype[1] != '-') {
    const uint8_t zygotes = ZygotesOf(type.parents, genotype, type.null);
    return {zygotes, zygotes != kNone};
  }
  uint8_t zygotes = kNone;  // "h-": hh or hk
  for (const char other : type.parents) {
    zygotes |= ZygotesOf(type.parents, std::string{genotype[0], other}, type.null);
  }
  return {zygotes, zygotes != kNone};
}

TypedGenotype OneMapGenotype(const SegregationType& type, std::string_view text) {
  if (IsMissing(text)) return {kNone, true};
  const uint8_t zygotes = ZygotesOf(type.parents, text, type.null);
  return {zygotes, zygotes != kNone};
}

}  // namespace importers
