#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/exit_code.h"
#include "host/shared_array.h"

namespace host {

// A folder of its own, removed with all that is in it.
class ScratchFolder {
 public:
  // Makes PARENT/PREFIXxxxxxx. Failure: Other.
  ScratchFolder(const std::filesystem::path& parent, std::string_view prefix);
  ScratchFolder(ScratchFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// The library writes its log in the current directory, prints on standard output, ends the process on a fatal
// error and must not be entered twice. So a call runs in a child process in a scratch folder:
//
//   IsolatedCall call;
//   if (EnterChild(call)) {
//     EXPORT(...);  // results go to SharedArrays
//     LeaveChild(call);
//   }
//   const CallOutcome outcome = AwaitChild(call);
struct IsolatedCall {
  IsolatedCall();
  IsolatedCall(const IsolatedCall&) = delete;
  IsolatedCall& operator=(const IsolatedCall&) = delete;
  ~IsolatedCall();  // a child that still runs is ended

  ScratchFolder folder;
  SharedArray<int32_t> finished{1};
  pid_t child = -1;
  int waitStatus = 0;
  int nextSleep = 1;  // milliseconds
};

// Thrown when the library ended its process; `words` is what it said last.
struct LibraryStopped : Failure {
  std::string words;
};
// What `Status` becomes when the input is wrong.
inline constexpr int32_t kStatusWrong = 100;
// How its words begin where a file has a phenotype that is no number, for which there is no report.
inline constexpr std::string_view kNoNumber = "tessarmont: the value '";

struct CallOutcome {
  std::vector<std::string> log;  // of the Module's log, then of the default file
};

bool EnterChild(IsolatedCall& call);
[[noreturn]] void LeaveChild(IsolatedCall& call);
// Waits a little (1 to 100 ms, longer each time); false when the child has ended.
bool StillRunning(IsolatedCall& call);
// Waits for the end. A child that did not reach LeaveChild throws LibraryStopped (Other) with what it said
// last.
CallOutcome AwaitChild(IsolatedCall& call);

// After this, SIGINT, SIGTERM and SIGHUP end the waiting with a Failure, so that folders are cleaned up.
void CatchInterrupts();
int CaughtSignal();  // 0 for none

}  // namespace host
