#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace importers {

// How a marker segregates in a cross of two outbred parents, as formats name it.
struct SegregationType {
  std::string_view name;     // "<lmxll>" without its brackets, "D1.10"
  std::string_view parents;  // the alleles of both; 'o' is one that nobody sees where `null` is 'o'
  char null;
};
const SegregationType* FindJoinMapType(std::string_view name);
const SegregationType* FindOneMapType(std::string_view name);

// The sets of zygotes that the type's genotypes stand for.
std::array<uint8_t, 4> SetsOf(const SegregationType& type);

// A genotype of JoinMap: two letters, of which '-' may be any; 0 when missing or none of the type's.
struct TypedGenotype {
  uint8_t zygotes;
  bool known;  // false: the text is no genotype of this type
};
TypedGenotype JoinMapGenotype(const SegregationType& type, std::string_view text);
TypedGenotype OneMapGenotype(const SegregationType& type, std::string_view text);

}  // namespace importers
