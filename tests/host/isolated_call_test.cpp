#include "host/isolated_call.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "host/exit_code.h"

namespace host {
namespace {

// What AwaitChild says about a child that was not able to finish; empty when it was.
std::string Complaint(IsolatedCall& call) {
  try {
    AwaitChild(call);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.code, ExitCode::Other);
    return failure.message;
  }
  return {};
}

TEST(IsolatedCall, KeepsPrintsAndFilesApartAndHandsBackLogAndMemory) {
  SharedArray<int32_t> result(1);
  std::filesystem::path folder;
  {
    IsolatedCall call;
    folder = call.folder.Path();
    if (EnterChild(call)) {
      std::ofstream("MAP.log") << "first\r\nsecond";
      std::ofstream("fort.100") << "third\n";
      std::puts("not for the user");
      result[0] = 42;
      LeaveChild(call);
    }
    EXPECT_EQ(AwaitChild(call).log, (std::vector<std::string>{"first", "second", "third"}));
    EXPECT_TRUE(std::filesystem::exists(folder / "MAP.log"));
  }
  EXPECT_EQ(result[0], 42);
  EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST(IsolatedCall, TellsHowAChildEnded) {
  {
    IsolatedCall call;
    if (EnterChild(call)) {
      std::fputs("no such unit\n", stderr);
      std::exit(0);  // an end before the call is done is none that counts
    }
    EXPECT_EQ(Complaint(call), "the library stopped: no such unit");
  }
  {
    IsolatedCall call;
    if (EnterChild(call)) _exit(9);
    EXPECT_EQ(Complaint(call), "the library stopped: ended with exit code 9 and no message");
  }
  {
    IsolatedCall call;
    if (EnterChild(call)) {
      raise(SIGKILL);
      _exit(0);
    }
    EXPECT_NE(Complaint(call).find("ended by signal"), std::string::npos);
  }
}

TEST(IsolatedCall, ASignalEndsTheWaitingAndTheChild) {
  // In a process of its own, since the caught signal stays noted.
  const auto interrupted = [] {
    CatchInterrupts();
    bool good = false;
    {
      IsolatedCall call;
      if (EnterChild(call)) {
        for (;;) pause();
      }
      raise(SIGTERM);
      good = Complaint(call).starts_with("interrupted") && call.child < 0 && CaughtSignal() == SIGTERM;
    }
    _exit(good ? 0 : 1);
  };
  EXPECT_EXIT(interrupted(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace host
