#include "host/trial_run.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "frame/exports.h"
#include "host/exit_code.h"
#include "host/genotype_table.h"
#include "host/isolated_call.h"
#include "host/text.h"

namespace host {
namespace {

constexpr const char* kLibraryTable = ".txt";  // four characters, which the library cuts off
constexpr const char* kMissingText = " -9999";
constexpr const char* kResultName = "result";
constexpr std::size_t kNameField = 20, kSourceField = 16, kValueField = 12;
constexpr int32_t kKeyColumns = 3;
constexpr double kCellBytes = 40, kTraitCellBytes = 16;  // at work in one trait; kept for every trait

void WriteOut(std::ofstream& file, std::string& text) {
  file << text;
  text.clear();
}

std::vector<std::string> QuotedNames(const std::vector<std::string>& names) {
  std::vector<std::string> quoted;
  quoted.reserve(names.size());
  for (const std::string& name : names) quoted.push_back(QuotedName(name) + " ");
  return quoted;
}

void AppendNumber(std::string& text, float value) {
  if (std::isnan(value)) {
    text += kMissingText;
    return;
  }
  char digits[32];  // the shortest that reads back as this float
  digits[0] = ' ';
  text.append(digits, std::to_chars(digits + 1, digits + sizeof digits, value).ptr);
}

void WriteTable(const std::filesystem::path& path, const TrialData& data) {
  constexpr std::size_t kPiece = 1 << 20;
  std::ofstream file(path, std::ios::binary);
  std::string text = "Environment Genotype Block";
  for (const std::string& trait : data.traits) text += " " + QuotedName(trait);
  text += '\n';
  const std::vector<std::string> environments = QuotedNames(data.environments),
                                 genotypes = QuotedNames(data.genotypes);
  std::vector<std::vector<std::string>> blocks;
  for (const std::vector<std::string>& names : data.blocks) {
    blocks.emplace_back();
    for (const std::string& name : names) blocks.back().push_back(QuotedName(name));
  }
  for (std::size_t p = 0; p < data.Plots(); ++p) {
    const auto e = static_cast<std::size_t>(data.environment[p]);
    text += environments[e];
    text += genotypes[static_cast<std::size_t>(data.genotype[p])];
    text += blocks[e][static_cast<std::size_t>(data.block[p])];
    for (const std::vector<float>& values : data.values) AppendNumber(text, values[p]);
    text += '\n';
    if (text.size() > kPiece) WriteOut(file, text);
  }
  WriteOut(file, text);
  file.close();
  if (!file)
    throw Failure{ExitCode::Other,
                  "cannot write the table for the library beside the results: the disk may be full"};
}

void CallLibrary(const ResultFiles& files, const TrialRun& run, int32_t classes) {
  IsolatedCall call;
  // The library takes 256 characters of a path at most.
  std::filesystem::create_directory_symlink(std::filesystem::absolute(files.folder.Path()),
                                            call.folder.Path() / "out");
  const std::string name = std::string("out/") + kResultName + run.word + kLibraryTable;
  const auto length = static_cast<int32_t>(name.size());
  const auto rows = static_cast<int32_t>(run.data.Plots());
  const auto columns = static_cast<int32_t>(run.data.traits.size()) + kKeyColumns;
  SharedArray<int32_t> status(1);
  if (EnterChild(call)) {
    TOOLANOVA(&length, name.data(), &rows, &columns, &classes, &status[0]);
    LeaveChild(call);
  }
  const CallOutcome outcome = AwaitChild(call);
  if (status[0] <= 0) return;
  throw Failure{ExitCode::Other,
                "the library did not take the table: " + (outcome.log.empty() ? "" : outcome.log.front())};
}

// ---- the analyses of variance

double* FigureNamed(VarianceTable& table, std::string_view label) {
  if (label == "R-square(%)") return &table.rSquare;
  if (label == "LSD(0.05)") return &table.lsd05;
  if (label == "LSD(0.01)") return &table.lsd01;
  if (label == "H^2_per_plot") return &table.h2Plot;
  if (label == "H^2_per_mean") return &table.h2Mean;
  return nullptr;
}

VarianceSource SourceOf(std::string_view line, std::string_view label) {
  VarianceSource source{std::string(label)};
  std::size_t at = 2 * kNameField + kSourceField;
  for (double* figure : {&source.df, &source.ss, &source.ms, &source.f, &source.p, &source.variance}) {
    *figure = NumberAt(line, at, kSourceField);
    at += kSourceField;
  }
  if (label == "Error") source.variance = source.ms;  // its own estimate
  return source;
}

std::size_t TraitNamed(const TrialData& data, std::string_view name) {
  const auto found = std::find(data.traits.begin(), data.traits.end(), name);
  if (found == data.traits.end())
    throw Failure{ExitCode::Other, "a result has an unknown trait " + std::string(name)};
  return static_cast<std::size_t>(found - data.traits.begin());
}

// A table is two headings, each with rows; Bartlett's test follows a combined one.
void ReadVariances(std::string_view text, TrialRun& run) {
  std::size_t headings = 0, begun = 0;
  VarianceTable* table = nullptr;
  for (const std::string_view line : Lines(text)) {
    const std::string_view label = FieldAt(line, 2 * kNameField, kSourceField);
    if (label == "Source") {
      ++headings;
      continue;
    }
    if (table == nullptr || (headings + 1) / 2 > begun) {
      begun = (headings + 1) / 2;
      table = &run.results[TraitNamed(run.data, FieldAt(line, 0, kNameField))].tables.emplace_back();
      table->where = FieldAt(line, kNameField, kNameField);
    }
    const double value = NumberAt(line, 2 * kNameField + kSourceField, kSourceField);
    if (label == "BartlettTest") {
      table->combined = true;
      table->bartlett = value;
      table->bartlettP = NumberAt(line, 2 * (kNameField + kSourceField), kSourceField);
    } else if (double* figure = FigureNamed(*table, label)) {
      *figure = value;
    } else {
      table->sources.push_back(SourceOf(line, label));
    }
  }
}

// ---- the predictions

// The columns of a record: the trait's genotypes at their places, but those between the first and the second
// of them are not filled.
std::vector<double> ByGenotype(const std::vector<double>& fields, const TraitFacts& facts,
                               std::size_t genotypes) {
  std::vector<double> values(genotypes, kNoFigure);
  for (std::size_t k = 0; k < facts.genotypes.size(); ++k) {
    const auto place = static_cast<std::size_t>(facts.genotypes[k]);
    const std::size_t shift =
        k == 0 ? 0 : static_cast<std::size_t>(facts.genotypes[1] - facts.genotypes[0] - 1);
    if (place - shift < fields.size()) values[place] = fields[place - shift];
  }
  return values;
}

// A trait's prediction is its last record, and an environment of that name comes before.
void ReadPredictions(std::string_view text, TrialRun& run) {
  std::size_t records = 0, trait = run.data.traits.size();
  for (const std::string_view line : Lines(text.substr(text.find('\n') + 1))) {
    const std::size_t t = TraitNamed(run.data, FieldAt(line, 0, kNameField));
    records = t == trait ? records + 1 : 1;
    trait = t;
    if (records != run.facts[t].environments.size() + 2) continue;
    run.results[t].predictions =
        ByGenotype(NumbersFrom(line, 2 * kNameField, kValueField), run.facts[t], run.data.genotypes.size());
  }
}

}  // namespace

std::string_view FieldAt(std::string_view record, std::size_t begin, std::size_t width) {
  if (begin >= record.size()) return {};
  std::string_view field = WithoutTrailing(record.substr(begin, width), " ");
  field.remove_prefix(std::min(field.find_first_not_of(' '), field.size()));
  return field;
}

double NumberAt(std::string_view record, std::size_t begin, std::size_t width) {
  const std::string_view field = FieldAt(record, begin, width);
  double value = kNoFigure;
  const auto result = std::from_chars(field.data(), field.data() + field.size(), value);
  return result.ec == std::errc() && result.ptr == field.data() + field.size() && std::isfinite(value)
             ? value
             : kNoFigure;
}

std::vector<double> NumbersFrom(std::string_view record, std::size_t begin, std::size_t width) {
  std::vector<double> numbers;
  for (std::size_t at = begin; at < record.size(); at += width)
    numbers.push_back(NumberAt(record, at, width));
  return numbers;
}

std::vector<double> CellMeans(const TrialData& data, std::size_t trait) {
  std::vector<double> sums(data.genotypes.size() * data.environments.size(), 0), counts(sums.size(), 0);
  for (std::size_t p = 0; p < data.Plots(); ++p) {
    const float value = data.values[trait][p];
    if (std::isnan(value)) continue;
    const std::size_t cell = static_cast<std::size_t>(data.environment[p]) * data.genotypes.size() +
                             static_cast<std::size_t>(data.genotype[p]);
    sums[cell] += static_cast<double>(value);
    counts[cell] += 1;
  }
  for (std::size_t cell = 0; cell < sums.size(); ++cell)
    sums[cell] /= counts[cell];  // 0 by 0 where it is empty
  return sums;
}

double TrialBytes(const TrialData& data) {
  const double cells =
      static_cast<double>(data.genotypes.size()) * static_cast<double>(data.environments.size());
  return cells * (kCellBytes + kTraitCellBytes * static_cast<double>(data.traits.size()));
}

void RunTrialAnalysis(const ResultFiles& files, int32_t classes, TrialRun& run) {
  const std::filesystem::path table = Unpublished(files, run.word + kLibraryTable);
  WriteTable(table, run.data);
  CallLibrary(files, run, classes);
  std::filesystem::remove(table);
  run.results.resize(run.data.traits.size());
  ReadVariances(ReadWhole(Unpublished(files, run.word + ".aov")), run);
  ReadPredictions(ReadWhole(Unpublished(files, run.word + ".egv")), run);
}

}  // namespace host
