#include "trial/plain_row.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace trial {
namespace {

enum Kind : uint8_t { kInWord, kBlank, kSpecial };

constexpr std::array<uint8_t, 256> kKinds = [] {
  std::array<uint8_t, 256> kinds{};
  kinds[' '] = kinds['\t'] = kBlank;
  for (const char c : {',', '/', '\'', '"', '*'}) {
    kinds[static_cast<uint8_t>(c)] = kSpecial;
  }
  return kinds;
}();
uint8_t KindOf(char c) { return kKinds[static_cast<uint8_t>(c)]; }

const char* SkipBlanks(const char* p, const char* end) {
  while (p < end && KindOf(*p) == kBlank) {
    ++p;
  }
  return p;
}

// By length of a word: which characters of the name are its own, as bits.
constexpr auto kOwn = [] {
  std::array<Name, kNameWidth + 1> own{};
  for (std::size_t length = 0; length < own.size(); ++length) {
    std::fill_n(own[length].begin(), length, static_cast<char>(0xFF));
  }
  return own;
}();

template <class Word>
void PutPart(const char* word, const char* own, char* name) {
  Word part, mask;
  std::memcpy(&part, word, sizeof part);
  std::memcpy(&mask, own, sizeof mask);
  constexpr auto kBlanks = static_cast<Word>(0x2020202020202020U);
  part = static_cast<Word>((part & mask) | (kBlanks & ~mask));
  std::memcpy(name, &part, sizeof part);
}

// Cuts a word to a name. Where the record goes on far enough, by parts of the lengths in which names are
// compared, so that what is stored here is read back at once.
void PutName(const char* word, std::size_t length, const char* end, Name& name) {
  length = std::min(length, kNameWidth);
  if (static_cast<std::size_t>(end - word) < kNameWidth) {
    name.fill(' ');
    std::copy_n(word, length, name.begin());
    return;
  }
  const char* const own = kOwn[length].data();
  PutPart<uint64_t>(word, own, name.data());
  PutPart<uint64_t>(word + 8, own + 8, name.data() + 8);
  PutPart<uint16_t>(word + 16, own + 16, name.data() + 16);
  PutPart<uint8_t>(word + 18, own + 18, name.data() + 18);
}
static_assert(kNameWidth == 8 + 8 + 2 + 1);

// A number of a few digits: as a whole number below 2^24 and as a power of ten up to 10^10 its two parts are
// exact in a float, and their quotient is rounded once.
bool TakeNumber(const char*& p, const char* end, float& value) {
  static constexpr float kPowers[] = {1, 1e1F, 1e2F, 1e3F, 1e4F, 1e5F, 1e6F, 1e7F, 1e8F, 1e9F};
  const bool negative = p < end && *p == '-';
  const char* q = p + (negative ? 1 : 0);
  uint32_t digits = 0;
  const char* const first = q;
  const char* point = nullptr;
  for (; q < end; ++q) {
    const auto digit = static_cast<uint32_t>(static_cast<uint8_t>(*q)) - '0';
    if (digit <= 9) {
      digits = 10 * digits + digit;
    } else if (*q == '.' && point == nullptr && q > first) {
      point = q;
    } else {
      break;
    }
  }
  const auto length = static_cast<std::size_t>(q - first);
  constexpr std::size_t kMostCharacters = 9;  // digits and the point: no overflow
  if (length == 0 || length > kMostCharacters || digits >= 1U << 24 || (q < end && KindOf(*q) != kBlank)) {
    return false;
  }
  const auto number = static_cast<float>(static_cast<int32_t>(digits));
  value = point == nullptr ? number : number / kPowers[q - point - 1];
  if (negative) {
    value = -value;
  }
  p = q;
  return true;
}

}  // namespace

bool TakePlainRow(std::string_view record, std::span<Name> keys, std::span<float> values) {
  const char* p = record.data();
  const char* const end = p + record.size();
  for (Name& key : keys) {
    const char* const word = SkipBlanks(p, end);
    p = word;
    while (p < end && KindOf(*p) == kInWord) {
      ++p;
    }
    if (p == word || (p < end && KindOf(*p) == kSpecial)) {
      return false;
    }
    PutName(word, static_cast<std::size_t>(p - word), end, key);
  }
  for (float& value : values) {
    p = SkipBlanks(p, end);
    if (!TakeNumber(p, end, value)) {
      return false;
    }
  }
  return true;
}

}  // namespace trial
