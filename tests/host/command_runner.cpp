#include "command_runner.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

std::filesystem::path NewFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "host-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the test");
  return {name};
}

std::string Contents(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

[[noreturn]] void BecomeCommand(const Sandbox& sandbox, const std::vector<std::string>& arguments,
                                const std::filesystem::path& out, const std::filesystem::path& err) {
  std::vector<char*> words{const_cast<char*>(TESSARMONT_COMMAND)};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  setenv("TMPDIR", sandbox.scratch.c_str(), 1);
  const int outFile = open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int errFile = open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(outFile, STDOUT_FILENO);
  dup2(errFile, STDERR_FILENO);
  if (chdir(sandbox.folder.c_str()) == 0) execv(TESSARMONT_COMMAND, words.data());
  _exit(127);
}

}  // namespace

Sandbox::Sandbox() : folder(NewFolder()), scratch(NewFolder()) {}

Sandbox::~Sandbox() {
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  std::filesystem::remove_all(scratch, ignored);
}

std::filesystem::path Sandbox::Write(const std::string& name, std::string_view text) const {
  std::filesystem::path path = folder / name;
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

std::string Sandbox::Read(const std::string& name) const { return Contents(folder / name); }

std::vector<std::string> Sandbox::Names(const std::string& below) const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder / below)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

CommandResult RunCommand(const Sandbox& sandbox, const std::vector<std::string>& arguments,
                         std::size_t largestFile) {
  const std::filesystem::path streams = NewFolder();
  const pid_t child = fork();
  if (child == 0 && largestFile > 0) {
    const rlimit limit{largestFile, largestFile};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN);  // a write beyond it fails instead
  }
  if (child == 0) BecomeCommand(sandbox, arguments, streams / "out", streams / "err");
  int status = 0;
  waitpid(child, &status, 0);
  CommandResult result{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                       Contents(streams / "out"), Contents(streams / "err")};
  std::filesystem::remove_all(streams);
  return result;
}
