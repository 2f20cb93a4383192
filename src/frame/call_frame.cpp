#include "frame/call_frame.h"

#include <algorithm>
#include <string>

#include "frame/call_words.h"
#include "ordering/consensus_order.h"
#include "platform/console.h"
#include "platform/text.h"
#include "platform/unit.h"
#include "project/loader.h"
#include "trial/analysis.h"

namespace frame {
namespace {

constexpr std::string_view kReadText = " read successfully!";

// The line of a form, made of parts that stand one behind the other.
std::string Joined(Form form, std::string_view first, std::string_view second = {},
                   std::string_view third = {}) {
  std::string line = form == Form::Token ? " " : "";
  return line.append(first).append(second).append(third);
}

void WriteLog(const Line& line) {
  if (line.form != Form::None) {
    platform::WriteRecord(project::kLogUnit, Joined(line.form, line.text));
  }
}

void WriteOnConsole(const Line& line) {
  if (line.form != Form::None) {
    platform::WriteConsole(Joined(line.form, line.text));
  }
}

// The header of a pre-read: the fields ahead of the count, which nobody keeps, then the count, straight into the caller's place.
bool ReadHeader(int32_t moduleCode, int32_t& numMarkers) {
  project::ProjectHeader scratch;
  int32_t status = 0;
  for (const project::Field field : project::kRawFields) {
    int32_t& place = field == project::Field::NumMarkers ? numMarkers : project::FieldOf(scratch, field);
    project::ReadField(moduleCode, project::kProjectUnit, project::kLogUnit, status, field, place);
    if ((status & 1) != 0 || field == project::Field::NumMarkers) {
      break;
    }
  }
  return (status & 1) == 0;
}

// A log that was open before the call stays as it is, and stays open.
void OpenLog(std::string_view name, bool wasOpen) {
  if (!wasOpen) {
    platform::OpenUnit(project::kLogUnit, name, platform::OpenStatus::Replace);
  }
}

void CloseLog(bool wasOpen) {
  if (!wasOpen) {
    platform::CloseUnit(project::kLogUnit);
  }
}

// The union of the maps that were loaded; nothing after a report.
results::Consensus UniteMaps(int32_t& flag) {
  results::Consensus consensus;
  if ((flag & 1) == 0) {
    results::BuildConsensus(project::Store(project::Module::Cmp), project::kLogUnit, flag, consensus);
  }
  return consensus;
}

// One int32 a character: character c of name k at element (c-1)*stride + k.
void Widen(std::string_view name, int32_t k, int32_t stride, int32_t* out) {
  int32_t* place = out + (k - 1);
  for (const char character : name) {
    *place = static_cast<unsigned char>(character);
    place += stride;
  }
}

Check LoadForCheck(project::Module module, int32_t moduleCode, std::string_view fileName) {
  const CheckWords& words = WordsOf(kCheckWords, module);
  Check check{module, fileName, platform::IsConnected(words.logName), 0};
  OpenLog(words.logName, check.logWasOpen);
  project::LoadModule(module, moduleCode, fileName, check.flag);
  return check;
}

void EndIfFailed(Check& check, int32_t* Status) {
  if (!Failed(check)) {
    return;
  }
  const CheckWords& words = WordsOf(kCheckWords, check.module);
  *Status = kReportedFailure;
  WriteLog(words.failureInLog);
  WriteOnConsole(words.failureOnConsole);
  if (words.failureClosesLog) {
    platform::CloseUnit(project::kLogUnit);
  }
  CloseLog(check);
  project::ReleaseStore(check.module);
}

}  // namespace

std::string_view FileText(const int32_t* length, const char* text) {
  const std::string_view name(text, static_cast<std::size_t>(std::max(*length, 0)));
  return platform::WithoutTrailingBlanks(name);
}

Check BeginCheck(project::Module module, int32_t moduleCode, std::string_view fileName, int32_t* Status) {
  Check check = LoadForCheck(module, moduleCode, fileName);
  EndIfFailed(check, Status);
  return check;
}

void CheckMaps(std::string_view fileName, const results::ConsensusTables& tables, int32_t* names,
               int32_t* Status) {
  Check check = LoadForCheck(project::Module::Cmp, project::kConsensusCode, fileName);
  const results::Consensus consensus = UniteMaps(check.flag);
  EndIfFailed(check, Status);
  if (Failed(check)) {
    return;
  }
  TellRead(check);
  TellRun(check);
  const int32_t rows = results::FillTables(consensus, tables);
  for (int32_t row = 1; row <= rows; ++row) {
    Widen(project::Text(consensus.names[static_cast<std::size_t>(row) - 1]), row, tables.rows, names);
  }
  project::ReleaseStore(project::Module::Cmp);
  CloseLog(check);
  ordering::CmpByAnchorOrder(rows, tables.mapCount, tables.distance, tables.mapIndex, tables.position);
}

bool PreReadMaps(std::string_view fileName, project::ProjectHeader& header, int32_t& totalMarkers) {
  const PreReadWords& words = WordsOf(kPreReadWords, project::Module::Cmp);
  const bool logWasOpen = platform::IsConnected(project::kLogUnit);
  OpenLog(words.logName, logWasOpen);
  int32_t flag = 0;
  project::LoadModule(project::Module::Cmp, project::kConsensusCode, fileName, flag);
  const project::ProjectBlock& block = project::Store(project::Module::Cmp);
  UniteMaps(flag);
  if ((flag & 1) == 0) {
    header = block.Header;
    totalMarkers = block.TotalMarkers;
    platform::WriteRecord(project::kLogUnit, words.run);
  }
  project::ReleaseStore(project::Module::Cmp);
  CloseLog(logWasOpen);
  return (flag & 1) == 0;
}

void TellRead(const Check& check) {
  const CheckWords& words = WordsOf(kCheckWords, check.module);
  platform::WriteRecord(project::kLogUnit,
                        Joined(words.readInLog.form, words.readInLog.text, check.fileName, kReadText));
  if (words.readOnConsole.form != Form::None) {
    platform::WriteConsole(
        Joined(words.readOnConsole.form, words.readOnConsole.text, check.fileName, kReadText));
  }
}

void TellRun(const Check& check) {
  WriteLog(WordsOf(kCheckWords, check.module).runInLog);
  WriteOnConsole(WordsOf(kCheckWords, check.module).runOnConsole);
}

void CloseLog(const Check& check) { CloseLog(check.logWasOpen); }

void PreRead(project::Module module, int32_t moduleCode, std::string_view fileName, int32_t* NumMarkers,
             int32_t* Status) {
  const PreReadWords& words = WordsOf(kPreReadWords, module);
  platform::OpenUnit(project::kProjectUnit, fileName, platform::OpenStatus::Old);
  const bool logWasOpen = platform::IsConnected(project::kLogUnit);
  OpenLog(words.logName, logWasOpen);
  const bool good = ReadHeader(moduleCode, *NumMarkers);
  platform::CloseUnit(project::kProjectUnit);
  if (good) {
    platform::WriteRecord(project::kLogUnit, words.run);
  } else {
    *Status = kReportedFailure;
  }
  CloseLog(logWasOpen);
}

int32_t MarkersToCopy(const project::ProjectBlock& block, int32_t callersMarkers) {
  return std::min(block.Header.NumMarkers, callersMarkers);
}

void WidenNames(const project::ProjectBlock& block, int32_t callersMarkers, int32_t* names) {
  for (int32_t m = 1; m <= MarkersToCopy(block, callersMarkers); ++m) {
    Widen(project::MarkerNameAt(block, m), m, callersMarkers, names);
  }
}

void WidenTraitNames(const std::vector<project::ShortName>& names, int32_t callersTraits, int32_t* out) {
  int32_t t = 0;
  for (const project::ShortName& name : names) {
    if (++t <= callersTraits) {
      Widen(project::Text(name), t, callersTraits, out);
    }
  }
}

void CopyAnchors(const project::ProjectBlock& block, int32_t callersMarkers, int32_t* anchors) {
  std::copy_n(block.AnchorInfo.items.begin(), std::max(MarkersToCopy(block, callersMarkers), 0), anchors);
}

void PlainCheck(project::Module module, std::string_view fileName, int32_t* Status) {
  const Check check = BeginCheck(module, project::RowOf(module).moduleCode, fileName, Status);
  if (Failed(check)) {
    return;
  }
  TellRead(check);
  TellRun(check);
  project::ReleaseStore(module);
  CloseLog(check);
}

void RunTrialTool(std::string_view path, int32_t numRows, int32_t numColumns, int32_t numClasses,
                  int32_t* Status) {
  constexpr int32_t kTrialLog = 2004;
  platform::OpenUnit(kTrialLog, "ANOVA.log", platform::OpenStatus::Replace);
  *Status = 0;
  if (trial::RunTrialAnalysis(kTrialLog, numRows, numColumns, numClasses, path)) {
    platform::WriteRecord(kTrialLog, Joined(Form::Plain, path, " runs successfully!"));
    platform::WriteConsole(Joined(Form::Token, path, " runs successfully!"));
  } else {
    *Status = kReportedFailure;
    // The log is ANOVA.log: required as it stands.
    platform::WriteConsole(Joined(Form::Token, "--Error found. Please check AVOVA.log for details!"));
  }
  platform::CloseUnit(kTrialLog);
}

}  // namespace frame
