#include "host/isolated_call.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>
#include <thread>

namespace host {
namespace {

constexpr int kLongestSleep = 100;  // ms; a progress line need not be fresher
constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
volatile std::sig_atomic_t caughtSignal = 0;

extern "C" void NoteSignal(int signal) { caughtSignal = signal; }

std::filesystem::path TemporaryFolder() {
  std::error_code error;
  std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) {
    throw Failure{ExitCode::Other, "no folder for temporary files (TMPDIR): " + error.message()};
  }
  return folder;
}

std::string Contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void AppendLines(const std::filesystem::path& path, std::vector<std::string>& lines) {
  const std::string text = Contents(path);
  for (std::string_view line : Lines(text)) lines.emplace_back(line);
}

void Reap(IsolatedCall& call) {
  while (waitpid(call.child, &call.waitStatus, 0) < 0 && errno == EINTR) {
  }
  call.child = -1;
}

void StopIfInterrupted(IsolatedCall& call) {
  if (caughtSignal == 0) return;
  kill(call.child, SIGKILL);
  Reap(call);
  throw Failure{ExitCode::Other, "interrupted; nothing was written"};
}

void Redirect(int stream, const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0 || dup2(file, stream) < 0) _exit(static_cast<int>(ExitCode::Other));
  close(file);
}

std::string LastWords(const IsolatedCall& call) {
  const std::string said = Contents(call.folder.Path() / "stderr");
  const std::string_view words = WithoutTrailing(said, "\r\n ");
  if (!words.empty()) return std::string(words);
  if (WIFSIGNALED(call.waitStatus)) {
    return std::string("ended by signal ") + strsignal(WTERMSIG(call.waitStatus));
  }
  return "ended with exit code " + std::to_string(WEXITSTATUS(call.waitStatus)) + " and no message";
}

}  // namespace

ScratchFolder::ScratchFolder(const std::filesystem::path& parent, std::string_view prefix) {
  std::string name = (parent / (std::string(prefix) + "XXXXXX")).string();
  if (mkdtemp(name.data()) == nullptr) {
    throw Failure{ExitCode::Other, "cannot write in the folder " + parent.string() + ": " +
                                       std::generic_category().message(errno)};
  }
  path_ = name;
}

ScratchFolder::~ScratchFolder() {
  if (path_.empty()) return;  // handed on
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

IsolatedCall::IsolatedCall() : folder(TemporaryFolder(), "tessarmont-") {}

IsolatedCall::~IsolatedCall() {
  if (child <= 0) return;
  kill(child, SIGKILL);
  Reap(*this);
}

bool EnterChild(IsolatedCall& call) {
  std::cout.flush();
  std::cerr.flush();
  std::fflush(nullptr);  // else the child would print what waits in the buffers once more
  call.child = fork();
  if (call.child < 0) {
    throw Failure{ExitCode::Other, "cannot start a process: " + std::generic_category().message(errno)};
  }
  if (call.child > 0) return false;
  for (int signal : kSignals) std::signal(signal, SIG_DFL);
  if (chdir(call.folder.Path().c_str()) != 0) _exit(static_cast<int>(ExitCode::Other));
  Redirect(STDOUT_FILENO, "stdout");
  Redirect(STDERR_FILENO, "stderr");
  return true;
}

void LeaveChild(IsolatedCall& call) {
  std::cout.flush();
  std::fflush(nullptr);
  call.finished[0] = 1;
  _exit(0);
}

bool StillRunning(IsolatedCall& call) {
  const pid_t ended = waitpid(call.child, &call.waitStatus, WNOHANG);
  if (ended == call.child) {
    call.child = -1;
    return false;
  }
  StopIfInterrupted(call);
  std::this_thread::sleep_for(std::chrono::milliseconds(call.nextSleep));
  call.nextSleep = std::min(2 * call.nextSleep, kLongestSleep);
  return true;
}

CallOutcome AwaitChild(IsolatedCall& call) {
  while (call.child > 0) {
    StopIfInterrupted(call);
    if (waitpid(call.child, &call.waitStatus, 0) == call.child) call.child = -1;
  }
  if (call.finished[0] != 1) {
    const std::string words = LastWords(call);
    throw LibraryStopped{{ExitCode::Other, "the library stopped: " + words}, words};
  }
  CallOutcome outcome;
  for (const auto& entry : std::filesystem::directory_iterator(call.folder.Path())) {
    if (entry.path().extension() == ".log") AppendLines(entry.path(), outcome.log);
  }
  AppendLines(call.folder.Path() / "fort.100", outcome.log);
  return outcome;
}

void CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = NoteSignal;  // without SA_RESTART: waiting must end
  for (int signal : kSignals) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
  }
}

int CaughtSignal() { return caughtSignal; }

}  // namespace host
