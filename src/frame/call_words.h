#pragma once

// How a call ends, in words: a row for each export that reads a project file. Texts stand letter for letter.

#include <array>
#include <string_view>

#include "platform/fatal.h"
#include "project/modules.h"

namespace frame {

enum class Form {
  None,   // the line is not written
  Plain,  // the text
  Token,  // the text behind one blank, as a list of items is written
};

struct Line {
  Form form;
  std::string_view text;
};

// A check: CHECKERROR*. The lines of a success are the file name and " read successfully!", then the run
// line.
struct CheckWords {
  project::Module module;
  std::string_view logName;
  Line readInLog;      // text: what stands ahead of the file name
  Line readOnConsole;  // likewise
  Line runInLog;
  Line runOnConsole;
  Line failureInLog;
  Line failureOnConsole;
  bool failureClosesLog = false;  // also one that was open before the call
};
inline constexpr Line kNothing = {Form::None, ""};
inline constexpr Line kPlain = {Form::Plain, ""};
inline constexpr Line kToken = {Form::Token, ""};
// Texts that look odd (the doubled r of the marker modules, the words of MET and SDL): required as they
// stand.
inline constexpr std::array<CheckWords, 12> kCheckWords = {{
    {project::Module::Bip,
     "BIP.log",
     kPlain,
     kToken,
     {Form::Plain, " DLL CheckErrorBIP run successfully!"},
     kNothing,
     kNothing,
     {Form::Token, "--Error found. Please check BIP.log for details!"}},
    {project::Module::Csl,
     "CSL.log",
     kPlain,
     kToken,
     {Form::Plain, " DLL CheckErrorCSL run successfully!"},
     kNothing,
     kNothing,
     {Form::Token, "--Error found. Please check CSL.log for details!"}},
    {project::Module::Plq,
     "PLQ.log",
     kPlain,
     kToken,
     {Form::Plain, " DLL CheckErrorPLQ run successfully!"},
     kNothing,
     kNothing,
     {Form::Token, "--Error found. Please check PLQ.log for details!"}},
    {project::Module::Cdq,
     "CDQ.log",
     kPlain,
     kToken,
     {Form::Plain, " DLL CheckErrorCDQ run successfully!"},
     kNothing,
     kNothing,
     {Form::Token, "--Error found. Please check CDQ.log for details!"}},
    {project::Module::Nam,
     "NAM.log",
     kPlain,
     kNothing,
     {Form::Plain, " DLL CheckErrorNAM run successfully!"},
     kNothing,
     kNothing,
     {Form::Token, "--Error found. Please check NAM.log for details!"}},
    {project::Module::Sdl,
     "SDL.log",
     {Form::Token, "  "},
     {Form::Plain, "  "},
     {Form::Plain, "--DLL CheckErrorSDL run successfully!"},
     kNothing,
     {Form::Token, "--Error in the input file!"},
     {Form::Plain, "--Error in the input file. Please check SDL.log for details!"},
     true},
    {project::Module::Met,
     "MET.log",
     {Form::Token, "  "},
     {Form::Token, " "},
     {Form::Plain, "--DLL CheckErrorMET run successfully!"},
     kNothing,
     {Form::Token, "--Error in the input file!"},
     {Form::Plain, "--Error in the input file. Please check MET.log for details!"}},
    {project::Module::Cmp,
     "CMP.log",
     kPlain,
     kToken,
     {Form::Plain, "--DLL CheckErrorCMP run successfully!"},
     kNothing,
     kNothing,
     {Form::Token, "--Error found. Please check CMP.log for details!"}},
    {project::Module::Bin,
     "BIN.log",
     kPlain,
     kToken,
     {Form::Plain, "--DLL CheckErrorBIN run successfully!"},
     kNothing,
     kNothing,
     {Form::Token, "--Error found. Please check BIN.log for details!"}},
    {project::Module::Map,
     "MAP.log",
     kPlain,
     kToken,
     {Form::Plain, "  DLL CheckErrrorMAP run successfully!"},
     {Form::Plain, "  DLL CheckErrrorMAP run successfully!"},
     kNothing,
     {Form::Token, "--Error found. Please check MAP.log for details!"}},
    {project::Module::Cdm,
     "CDM.log",
     kPlain,
     kToken,
     {Form::Plain, "  DLL CheckErrrorCDM run successfully!"},
     {Form::Plain, "  DLL CheckErrrorCDM run successfully!"},
     kNothing,
     {Form::Token, "--Error found. Please check CDM.log for details!"}},
    {project::Module::Plm,
     "PLM.log",
     kPlain,
     kToken,
     {Form::Plain, "  DLL CheckErrrorPLM run successfully!"},
     {Form::Plain, "  DLL CheckErrrorPLM run successfully!"},
     kNothing,
     {Form::Token, "--Error found. Please check PLM.log for details!"}},
}};

// A pre-read: *FINDNUMMARKERS.
struct PreReadWords {
  project::Module module;
  std::string_view logName, run;
};
inline constexpr std::array<PreReadWords, 5> kPreReadWords = {{
    {project::Module::Bin, "BIN.log", "--DLL BINFindNumMarkers run successfully!"},
    {project::Module::Map, "MAP.log", "--DLL MAPFindNumMarkers run successfully!"},
    {project::Module::Cmp, "CMP.log",
     "--DLL BINFindNumMarkers run successfully!"},  // BIN: required as it stands
    {project::Module::Cdm, "CDM.log", "--DLL CDMFindNumMarkers run successfully!"},
    {project::Module::Plm, "PLM.log", "--DLL PLMFindNumMarkers run successfully!"},
}};

template <class Rows>
const auto& WordsOf(const Rows& rows, project::Module module) {
  for (const auto& row : rows) {
    if (row.module == module) {
      return row;
    }
  }
  platform::Fatal("a call has no words for its module");
}

}  // namespace frame
