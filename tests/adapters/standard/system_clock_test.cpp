// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/system_clock.h"

#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

namespace halvora {
namespace {

/// The process lives in a time zone for the length of a test.
class SystemCalendarTest : public testing::Test {
 protected:
  SystemCalendarTest() {
    if (const char* zone = getenv("TZ")) before_ = zone;
  }
  ~SystemCalendarTest() override {
    if (before_) {
      liveIn(before_->c_str());
    } else {
      unsetenv("TZ");
      tzset();
    }
  }
  static void liveIn(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
  }

  std::optional<std::string> before_;
  SystemCalendar calendar_;
};

TEST_F(SystemCalendarTest, TellsTheDayOfTheProcessTimeZone) {
  liveIn("UTC0");
  EXPECT_EQ(calendar_.componentsOf(Date{1767225599.5}), (DayComponents{2025, 12, 31}));
  EXPECT_EQ(calendar_.componentsOf(Date{1767225600}), (DayComponents{2026, 1, 1}));
  liveIn("XXX-2");
  EXPECT_EQ(calendar_.componentsOf(Date{1767225600 - 7200}), (DayComponents{2026, 1, 1}));
  EXPECT_EQ(calendar_.componentsOf(Date{1767225600 - 7201}), (DayComponents{2025, 12, 31}));
}

TEST_F(SystemCalendarTest, KnowsTheTimeBefore1970) {
  liveIn("UTC0");
  EXPECT_EQ(calendar_.componentsOf(Date{-0.5}), (DayComponents{1969, 12, 31}));
}

TEST_F(SystemCalendarTest, KnowsNoDayBeyondItsYears) {
  liveIn("UTC0");
  for (const double seconds : {1e300, -1e300, 9.3e18, std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(calendar_.componentsOf(Date{seconds}), DayComponents{}) << seconds;
  }
  EXPECT_EQ(calendar_.componentsOf(Date{std::numeric_limits<double>::quiet_NaN()}),
            (DayComponents{1970, 1, 1}));
}

// A result that all threads shared would be overwritten by the others.
TEST_F(SystemCalendarTest, AnswersEachThreadForItself) {
  liveIn("UTC0");
  constexpr double kDay = 86400;
  std::vector<std::thread> threads;
  for (int day = 1; day <= 4; ++day) {
    threads.emplace_back([this, day] {
      for (int turn = 0; turn < 2000; ++turn) {
        ASSERT_EQ(calendar_.componentsOf(Date{(day - 1) * kDay}), (DayComponents{1970, 1, day}));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace halvora
