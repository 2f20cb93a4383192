// The host's own look through project files beside the library's verdict on the same text.

#include "host/precheck.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <random>

#include "host/file_walk.h"
#include "host/precheck_report.h"
#include "host/text.h"
#include "tests/support/load.h"

namespace {

constexpr int32_t kBinRules = 101;

struct Sample {
  std::string module, text;
};

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

// The examples of the page of formats, by kind; those of genomic selection have no check.
std::vector<Sample> PageSamples() {
  const std::string page = support::ReadFile(SOURCE_DIR "/docs/formats.md");
  std::vector<Sample> samples;
  for (std::size_t at = page.find("\n```"); at != std::string::npos; at = page.find("\n```", at)) {
    const std::size_t begin = page.find('\n', at + 4), end = page.find("\n```\n", begin);
    const std::string kind = Upper(page.substr(at + 4, begin - at - 4));
    if (kind != "GS") samples.push_back({kind, page.substr(begin + 1, end - begin)});
    at = end + 4;
  }
  return samples;
}

std::vector<Sample> FileSamples() {
  std::vector<Sample> samples;
  for (const char* folder : {SOURCE_DIR "/examples", SOURCE_DIR "/tests/golden"}) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      const std::string extension = entry.path().extension().string();
      const std::string module = extension.empty() ? "" : Upper(extension.substr(1));
      const bool known = std::any_of(project::kModules.begin(), project::kModules.end(),
                                     [&](const project::ModuleRow& row) { return row.code == module; });
      if (known) samples.push_back({module, support::ReadFile(entry.path().string())});
    }
  }
  return samples;
}

enum class Verdict { Good, Refused, Stopped };

// In a process of its own, since a phenotype that is no number ends it.
Verdict LibraryVerdict(const Sample& sample) {
  const auto* row = std::find_if(project::kModules.begin(), project::kModules.end(),
                                 [&](const auto& candidate) { return candidate.code == sample.module; });
  const auto module = static_cast<project::Module>(row - project::kModules.begin());
  const int32_t code = row->moduleCode == project::kCallersCode ? kBinRules : row->moduleCode;
  const pid_t child = fork();
  if (child == 0) {
    if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(3);
    _exit(support::Load(module, code, sample.text) == "good" ? 10 : 11);
  }
  int status = 0;
  waitpid(child, &status, 0);
  const int exit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return exit == 10 ? Verdict::Good : exit == 11 ? Verdict::Refused : Verdict::Stopped;
}

std::string Findings(const Sample& sample) {
  return host::FindingsText("file", host::FindFaults(sample.text, sample.module, kBinRules), true);
}

TEST(Precheck, FindsNothingInWhatTheLibraryAccepts) {
  const support::ScratchFolder folder;
  std::vector<Sample> samples = PageSamples();
  const std::vector<Sample> files = FileSamples();
  samples.insert(samples.end(), files.begin(), files.end());
  std::map<std::string, int> good;
  for (const Sample& sample : samples) {
    const std::string findings = Findings(sample);
    if (LibraryVerdict(sample) == Verdict::Good) {
      EXPECT_EQ(findings, "") << sample.module << "\n" << sample.text.substr(0, 2000);
      EXPECT_TRUE(host::FindPitfalls(sample.text, sample.module, kBinRules).empty()) << sample.module;
      ++good[sample.module];
    } else {
      EXPECT_NE(findings, "") << sample.module << "\n" << sample.text.substr(0, 2000);
    }
  }
  EXPECT_EQ(good.size(), project::kModules.size()) << "a kind without a good file";
}

// Damages a text as people and programs do.
std::string Mutant(const std::string& text, std::mt19937& random) {
  const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  std::vector<std::string> lines;
  for (const std::string_view line : host::Lines(text)) lines.emplace_back(line);
  const std::size_t k = below(lines.size());
  std::string& line = lines[k];
  const char* const words[] = {"Q", "-1", "0", "x", "2.5", "''", "'a", "A/B", "3*A", "99", "NA", ",,"};
  switch (below(7)) {
    case 0:
      lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(k));
      break;
    case 1:
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(k), line);
      break;
    case 2:
      lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(k), "! a remark");
      break;
    case 3:
      line += std::string(" ") + words[below(std::size(words))];
      break;
    case 4:
      line = line.substr(0, line.find_last_of(' ') + 1);
      break;
    case 5:
      lines.resize(k + 1);
      break;
    default: {
      const std::size_t begin = line.empty() ? 0 : line.find_last_of(' ', below(line.size())) + 1;
      const std::size_t end = std::min(line.find(' ', begin), line.size());
      line.replace(begin, end - begin, words[below(std::size(words))]);
    }
  }
  std::string mutant;
  for (const std::string& row : lines) mutant += row + "\n";
  return mutant;
}

TEST(Precheck, FindsAFaultInWhatTheLibraryRefuses) {
  const support::ScratchFolder folder;
  std::mt19937 random(8);
  std::map<Verdict, int> met;
  for (const Sample& sample : PageSamples()) {
    const bool simulation =
        sample.text.find("imulation\n") != std::string::npos || sample.text.starts_with("2\n4");
    if (simulation && (sample.module == "BIP" || sample.module == "CSL")) continue;
    for (int round = 0; round < 60; ++round) {
      const Sample mutant{sample.module, Mutant(sample.text, random)};
      const Verdict verdict = LibraryVerdict(mutant);
      ++met[verdict];
      if (verdict != Verdict::Good) {
        EXPECT_NE(Findings(mutant), "") << mutant.module << "\n" << mutant.text;
      }
    }
  }
  EXPECT_EQ(met.size(), 3U);
  EXPECT_GT(met[Verdict::Refused], 300);
}

// A row that has lost its step does not draw the rows behind it along, as it does in the library's own reading.
TEST(Precheck, OneDamageIsFewFindings) {
  const std::string text = support::ReadFile(SOURCE_DIR "/examples/listeria.map");
  std::mt19937 random(3);
  int found = 0;
  for (int round = 0; round < 400; ++round) {
    const Sample mutant{"MAP", Mutant(text, random)};
    const std::vector<host::Finding> findings = host::FindFaults(mutant.text, "MAP", kBinRules);
    EXPECT_LE(findings.size(), 3U) << Findings(mutant);
    found += findings.empty() ? 0 : 1;
  }
  EXPECT_GT(found, 200);
}

}  // namespace
