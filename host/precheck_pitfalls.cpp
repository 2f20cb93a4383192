#include <algorithm>
#include <span>

#include "host/file_walk.h"
#include "host/genotype_rules.h"
#include "host/precheck.h"
#include "host/precheck_scan.h"
#include "host/text.h"

namespace host {
namespace {

// No line has more words than marks between words, and one; unless a star repeats them, or a null stands there.
std::size_t MostWords(std::string_view line) {
  if (line.find('*') != std::string_view::npos || line.find(',') != std::string_view::npos) return kMostWords;
  std::size_t marks = 0;
  for (const char mark : {' ', '\t'})
    marks += static_cast<std::size_t>(std::count(line.begin(), line.end(), mark));
  return marks + 1;
}

// Rows of a good file that are hardly as they were meant.
struct Pitfall {
  int64_t rows = 0;
  std::size_t line = 0, times = 0;  // of the first row; words in all rows
};

void Note(std::size_t line, std::size_t times, Pitfall& pitfall) {
  if (times == 0) return;
  if (pitfall.rows++ == 0) pitfall.line = line;
  pitfall.times += times;
}

// Words behind a row; none where one of them is no genotype: that is a remark.
std::size_t SurplusGenotypes(const LineWords& words, std::size_t wanted, Rules rules) {
  const auto extra = std::span(words.words).subspan(std::min(wanted, words.words.size()));
  const bool genotypes = std::all_of(extra.begin(), extra.end(), [&](std::string_view word) {
    return word.size() <= 2 && IsGenotype(rules, word);
  });
  return genotypes ? extra.size() : 0;
}

std::size_t EmptyWords(const LineWords& words, std::size_t wanted) {
  std::size_t count = 0;
  for (std::size_t k = 0; k < std::min(wanted, words.words.size()); ++k) count += words.IsNull(k) ? 1 : 0;
  return count;
}

}  // namespace

std::vector<Finding> FindPitfalls(std::string_view text, std::string_view module, int32_t moduleCode) {
  const Rules rules = RulesOf(module, moduleCode);
  const FileLayout layout = WalkFile(text, module);
  const bool categories = !layout.Rows(Section::Categorised).lines.empty();
  const SectionRows& rows = layout.Rows(categories ? Section::Categorised : Section::Markers);
  if (!layout.complete || HasCategory(rules) != categories) return {};
  const std::vector<std::string_view> lines = Lines(text);
  LineWords words;
  Pitfall surplus, empty;
  for (std::size_t m = 0; m < rows.lines.size(); ++m) {
    const std::size_t line = rows.lines[m];
    const bool lone = m + 1 == rows.lines.size() || rows.lines[m + 1] == line + 1;
    if (!lone || MostWords(lines[line - 1]) <= rows.words) continue;
    Clear(words);
    AddWords(lines[line - 1], kMostWords, words);
    Note(line, SurplusGenotypes(words, rows.words, rules), surplus);
    Note(line, EmptyWords(words, rows.words), empty);
  }
  std::vector<Finding> findings;
  if (surplus.rows > 0) {
    findings.push_back({FindingKind::Row,
                        {surplus.line},
                        Counted(surplus.rows, "marker row") + " with genotypes behind those of the " +
                            Counted(layout.lines, "line") + " of the population; they are not read",
                        {},
                        surplus.times});
  }
  if (empty.rows > 0) {
    findings.push_back(
        {FindingKind::Genotype,
         {empty.line},
         Counted(empty.rows, "marker row") +
             " with nothing between two commas, where the row before is taken; write X for missing",
         {},
         empty.times});
  }
  return findings;
}

}  // namespace host
