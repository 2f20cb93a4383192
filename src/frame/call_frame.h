#pragma once

// The frame of a call: the file name, the log's life, the words at its end, and the copying of names.

#include <cstdint>
#include <string_view>
#include <vector>

#include "project/modules.h"
#include "project/store.h"
#include "results/consensus.h"

namespace frame {

inline constexpr int32_t kReportedFailure = 100;  // Status, when the log tells why

// The characters that count: a length below 0 is 0, trailing blanks are cut.
std::string_view FileText(const int32_t* length, const char* text);

// A check from the opening of its log to the end of its load. When it failed, the closing words are written,
// the log is closed unless it was open before, the store is released and Status is 100.
struct Check {
  project::Module module;
  std::string_view fileName;
  bool logWasOpen;
  int32_t flag;  // of the readers: -1 after a report
};
inline bool Failed(const Check& check) { return (check.flag & 1) != 0; }
Check BeginCheck(project::Module module, int32_t moduleCode, std::string_view fileName, int32_t* Status);
void TellRead(const Check& check);  // "<file> read successfully!", in the log and on standard output
void TellRun(const Check& check);   // "... run successfully!"
void CloseLog(const Check& check);  // unless it was open before the call

// A consensus check, from end to end: the load, the union of its maps, the caller's tables, and the order,
// which is written after the log is closed.
void CheckMaps(std::string_view fileName, const results::ConsensusTables& tables, int32_t* names,
               int32_t* Status);

// The whole load of several maps, for their counts; false after a report.
bool PreReadMaps(std::string_view fileName, project::ProjectHeader& header, int32_t& totalMarkers);

// The trial analysis, from end to end. Its log is one of its own and always new.
inline constexpr int32_t kTrialPathField = 256;  // characters of the path that count
void RunTrialTool(std::string_view path, int32_t numRows, int32_t numColumns, int32_t numClasses,
                  int32_t* Status);

// A check that hands nothing back, from end to end.
void PlainCheck(project::Module module, std::string_view fileName, int32_t* Status);

// A pre-read of the header, up to NumMarkers, which is written even when it is refused.
void PreRead(project::Module module, int32_t moduleCode, std::string_view fileName, int32_t* NumMarkers,
             int32_t* Status);

// What of the store the caller's arrays take: the markers that both have.
int32_t MarkersToCopy(const project::ProjectBlock& block, int32_t callersMarkers);

// One int32 a character: character c of marker m at element (c-1)*callersMarkers + m.
void WidenNames(const project::ProjectBlock& block, int32_t callersMarkers, int32_t* names);
void WidenTraitNames(const std::vector<project::ShortName>& names, int32_t callersTraits, int32_t* out);
void CopyAnchors(const project::ProjectBlock& block, int32_t callersMarkers, int32_t* anchors);

}  // namespace frame
