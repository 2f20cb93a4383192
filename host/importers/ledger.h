#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace importers {

// Why a marker was left out.
enum class Drop {
  ParentMissing,
  ParentHeterozygous,
  ParentsAlike,
  NoHeterozygousParent,
  NoGenotypes,
  Filtered,
  SexChromosome,
  NoCategory,
  NothingLeft,
  OneGenotype,
};
inline constexpr std::size_t kDrops = 10;

// Why a genotype that the file has became missing.
enum class Blank { NotInPopulation, NoParentsAllele, HalfCalled, Haploid, Dominance, NotInCategory };
inline constexpr std::size_t kBlanks = 6;

std::string_view WordsOf(Drop reason);
std::string_view WordsOf(Blank reason);

// What happened to what was read.
struct Ledger {
  struct Row {  // a marker that was dropped or got another name
    std::size_t line;
    std::string marker, writtenAs;  // writtenAs is empty for a dropped one
    std::string reason;
  };
  int64_t read = 0, renamed = 0;
  int64_t typed = 0;  // genotypes of kept markers that were not missing in the file
  std::array<int64_t, kDrops> dropped{};
  std::array<int64_t, kBlanks> blanked{};
  std::vector<Row> rows;
  struct Group {
    std::string chromosome;
    int64_t markers = 0;
  };
  std::vector<Group> groups;       // by anchor number, from 1
  std::vector<std::string> notes;  // what the user should know about how the file was taken

  int64_t Kept() const;
};

// The table OUT.import.tsv: totals, then reasons, then a row for each dropped or renamed marker.
std::string LedgerTable(const Ledger& ledger);
// The same without the single markers, for standard error.
std::string LedgerSummary(const Ledger& ledger);

}  // namespace importers
