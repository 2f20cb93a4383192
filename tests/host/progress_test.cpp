#include "host/progress.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

TEST(Progress, TextTellsDoneRateAndTimeLeft) {
  const struct {
    double done, total, seconds;
    const char* text;
  } cases[] = {{0, 4498500, 9, "pairs 0 of 4498500, 0 %"},
               {1200000, 4498500, 0.5, "pairs 1200000 of 4498500, 27 %"},
               {2400000, 4498500, 2, "pairs 2400000 of 4498500, 53 %, 1.2 M/s, 2 s left"},
               {50, 200, 10, "pairs 50 of 200, 25 %, 5/s, 30 s left"},
               {500000, 500000, 20, "pairs 500000 of 500000, 100 %, 25 k/s, 0 s left"}};
  for (const auto& test : cases) {
    EXPECT_EQ(host::ProgressText("pairs", test.done, test.total, test.seconds), test.text);
  }
}

// Standard error of a test is no terminal.
TEST(Progress, PlainLinesAtIntervals) {
  testing::internal::CaptureStderr();
  {
    host::ProgressLine often("pairs", false, 0ms), seldom("markers", false), quiet("lines", true, 0ms);
    for (double done : {1.0, 2.0}) {
      for (host::ProgressLine* line : {&often, &seldom, &quiet}) line->Update(done, 4);
    }
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "tessarmont: pairs 1 of 4, 25 %\ntessarmont: pairs 2 of 4, 50 %\n");
}

}  // namespace
