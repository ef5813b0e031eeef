// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/linux_haptics.h"

#include <memory>

#include <gmock/gmock.h>

#include "tests/adapters/linux/bus/garbage_bus.h"
#include "tests/adapters/linux/services/services_test.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kVibrate = "org.sigxcpu.Feedback.Haptic.Vibrate";
constexpr const char* kTrigger = "org.sigxcpu.Feedback.TriggerFeedback";
constexpr const char* kEnd = "org.sigxcpu.Feedback.EndFeedback";
constexpr const char* kMotor = "com.lomiri.hfd.Vibrator.vibrate";

class LinuxHapticsTest : public ServicesTest {
 protected:
  LinuxHapticsTest() {
    hfd.answers[kMotor] = agree;
    feedback.answers[kTrigger] = [](sd_bus_message* call) {
      return sd_bus_reply_method_return(call, "u", 77);
    };
    feedback.answers[kEnd] = agree;
  }
  void addVibrations() {
    feedback.answers[kVibrate] = [](sd_bus_message* call) {
      return sd_bus_reply_method_return(call, "b", 1);
    };
  }
  bool waitForPlayed(std::uint64_t count) {
    return waitFor([&] { return haptics.diagnostics().played >= count; });
  }

  FakeService feedback{loop, loop, bus.address(), "org.sigxcpu.Feedback"};
  FakeService hfd{loop, loop, bus.address(), "com.lomiri.hfd"};
  // However slow the machine is.
  static constexpr HapticsSettings kPatient{.latest = std::chrono::hours(1)};
  LinuxHaptics haptics{loop, buses, "com.example.host", kPatient};
};

TEST_F(LinuxHapticsTest, VibrationsHaveTheirStrengthAndLength) {
  addVibrations();
  feedback.appear();
  hfd.appear();
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitForPlayed(1));
  haptics.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitForPlayed(2));
  haptics.playSystemSound(kVibrationSound);
  ASSERT_TRUE(waitForPlayed(3));
  EXPECT_THAT(feedback.calls, ElementsAre("Vibrate(com.example.host, [[0.5, 15]])",
                                          "Vibrate(com.example.host, [[1, 40]])",
                                          "Vibrate(com.example.host, [[1, 400]])"));
  EXPECT_EQ(haptics.diagnostics().way, HapticsWay::vibration);
  EXPECT_THAT(hfd.calls, IsEmpty());
}

TEST_F(LinuxHapticsTest, ADaemonWithoutVibrationsIsToldOfEvents) {
  feedback.appear();
  hfd.appear();
  haptics.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitForPlayed(1));
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitForPlayed(2));
  EXPECT_THAT(feedback.calls, ElementsAre("Vibrate(com.example.host, [[1, 40]])",
                                          "TriggerFeedback(com.example.host, bell-terminal, "
                                          "[[profile, [quiet]]], -1)",
                                          "TriggerFeedback(com.example.host, button-pressed, "
                                          "[[profile, [quiet]]], -1)"));
  EXPECT_EQ(haptics.diagnostics().way, HapticsWay::event);
  EXPECT_THAT(hfd.calls, IsEmpty());
}

TEST_F(LinuxHapticsTest, WithoutAFeedbackDaemonTheMotorIsAsked) {
  hfd.appear();
  haptics.playSystemSound(kVibrationSound);
  ASSERT_TRUE(waitForPlayed(1));
  EXPECT_THAT(hfd.calls, ElementsAre("vibrate(400)"));
  EXPECT_EQ(haptics.diagnostics().way, HapticsWay::motor);
}

TEST_F(LinuxHapticsTest, OtherSoundsAreNotFelt) {
  addVibrations();
  feedback.appear();
  haptics.playSystemSound(1000);
  haptics.disposeSystemSound(1000);
  haptics.disposeSystemSound(kVibrationSound);
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitForPlayed(1));
  EXPECT_EQ(feedback.calls.size(), 1U);
}

TEST_F(LinuxHapticsTest, AVibrationIsEndedWithItsSound) {
  addVibrations();
  feedback.appear();
  haptics.playSystemSound(kVibrationSound);
  haptics.disposeSystemSound(kVibrationSound);
  ASSERT_TRUE(waitForCalls(feedback, 2));
  EXPECT_EQ(feedback.calls.back(), "Vibrate(com.example.host, [])");
}

TEST_F(LinuxHapticsTest, AVibrationThatIsAnEventIsEndedByItsNumber) {
  feedback.appear();
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitForPlayed(1));
  haptics.playSystemSound(kVibrationSound);
  haptics.disposeSystemSound(kVibrationSound);
  ASSERT_TRUE(waitForCalls(feedback, 4));
  EXPECT_EQ(feedback.calls.back(), "EndFeedback(77)");
}

TEST_F(LinuxHapticsTest, AVibrationThatIsDisposedOfBeforeItBeganNeverDoes) {
  feedback.appear();
  haptics.playSystemSound(kVibrationSound);
  haptics.disposeSystemSound(kVibrationSound);
  settle();
  EXPECT_THAT(feedback.calls, ElementsAre("Vibrate(com.example.host, [[1, 400]])"));
  haptics.impact(ImpactStyle::light);
  EXPECT_TRUE(waitForPlayed(1));
}

// A command's tap disposes of the vibration in the same breath.
TEST_F(LinuxHapticsTest, ATapGoesOnWhenTheVibrationBeforeItIsDisposedOf) {
  addVibrations();
  feedback.appear();
  haptics.playSystemSound(kVibrationSound);
  ASSERT_TRUE(waitForPlayed(1));
  haptics.impact(ImpactStyle::heavy);
  haptics.disposeSystemSound(kVibrationSound);
  ASSERT_TRUE(waitForPlayed(2));
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitForPlayed(3));
  EXPECT_THAT(feedback.calls, ElementsAre("Vibrate(com.example.host, [[1, 400]])",
                                          "Vibrate(com.example.host, [[1, 40]])",
                                          "Vibrate(com.example.host, [[0.5, 15]])"));
}

TEST_F(LinuxHapticsTest, ADaemonThatHangsIsAskedOnceAndOnlyTheNewestTouchWaits) {
  addVibrations();
  feedback.isHanging = true;
  feedback.appear();
  haptics.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitForCalls(feedback, 1));
  for (int tap = 0; tap < 1000; ++tap) haptics.impact(ImpactStyle::heavy);
  haptics.impact(ImpactStyle::light);
  feedback.isHanging = false;
  feedback.answerKept();
  ASSERT_TRUE(waitForPlayed(2));
  EXPECT_THAT(feedback.calls, ElementsAre("Vibrate(com.example.host, [[1, 40]])",
                                          "Vibrate(com.example.host, [[0.5, 15]])"));
  EXPECT_EQ(haptics.diagnostics().dropped, 1000U);
}

TEST_F(LinuxHapticsTest, ADaemonThatDiesGivesWayToTheMotor) {
  addVibrations();
  feedback.appear();
  hfd.appear();
  haptics.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitForPlayed(1));
  feedback.die();
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitForPlayed(2));
  EXPECT_THAT(hfd.calls, ElementsAre("vibrate(15)"));
  hfd.die();
  feedback.appear();
  haptics.impact(ImpactStyle::light);
  ASSERT_TRUE(waitForPlayed(3));
  EXPECT_EQ(haptics.diagnostics().way, HapticsWay::vibration);
}

TEST_F(LinuxHapticsTest, WhereNothingVibratesTouchesAreDropped) {
  haptics.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitFor([&] { return haptics.diagnostics().dropped == 1; }));
  // It is left alone for a while.
  feedback.appear();
  for (int tap = 0; tap < 100; ++tap) haptics.impact(ImpactStyle::heavy);
  settle();
  EXPECT_EQ(haptics.diagnostics().played, 0U);
  EXPECT_EQ(haptics.diagnostics().way, std::nullopt);
}

TEST_F(LinuxHapticsTest, ATouchThatComesTooLateIsDropped) {
  addVibrations();
  feedback.appear();
  LinuxHaptics hasty(loop, buses, "com.example.host", {.latest = milliseconds(-1)});
  hasty.impact(ImpactStyle::heavy);
  EXPECT_EQ(hasty.diagnostics().dropped, 1U);
  settle();
  EXPECT_THAT(feedback.calls, IsEmpty());
}

TEST_F(LinuxHapticsTest, AfterItsSilenceAllWaysAreAskedAgain) {
  LinuxHaptics eager(loop, buses, "com.example.host",
                     {.latest = std::chrono::hours(1), .silence = Duration::zero()});
  eager.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitFor([&] { return eager.diagnostics().dropped == 1; }));
  hfd.appear();
  eager.impact(ImpactStyle::heavy);
  EXPECT_TRUE(waitFor([&] { return eager.diagnostics().played == 1; }));
}

TEST_F(LinuxHapticsTest, ABusThatIsLostIsQuiet) {
  addVibrations();
  feedback.isHanging = true;
  feedback.appear();
  haptics.impact(ImpactStyle::heavy);
  ASSERT_TRUE(waitForCalls(feedback, 1));
  feedback.die();
  bus.stop();
  EXPECT_TRUE(waitFor([&] { return haptics.diagnostics().dropped >= 1; }));
  haptics.impact(ImpactStyle::heavy);
  haptics.disposeSystemSound(kVibrationSound);
  EXPECT_EQ(haptics.diagnostics().played, 0U);
}

TEST_F(LinuxHapticsTest, ABusThatBreaksOffInACallCostsTheTouchesOfThatMoment) {
  GarbageBus garbage(loop);
  Buses garbled(loop, loop, {garbage.address(), garbage.address()});
  LinuxHaptics broken(loop, garbled, "com.example.host", kPatient);
  broken.impact(ImpactStyle::heavy);
  broken.impact(ImpactStyle::light);
  EXPECT_TRUE(waitFor([&] { return broken.diagnostics().dropped == 1; }));
  settle();
  EXPECT_EQ(broken.diagnostics().played, 0U);
  // Each later touch looks again, and is lost alike.
  EXPECT_TRUE(waitFor([&] {
    broken.impact(ImpactStyle::heavy);
    return broken.diagnostics().dropped >= 4;
  }));
}

TEST_F(LinuxHapticsTest, AnswersOfAnyShapeDoNoHarm) {
  const FakeService::Answer kAnswers[] = {
      agree,
      [](sd_bus_message* call) { return sd_bus_reply_method_return(call, "s", "77"); },
      [](sd_bus_message* call) { return sd_bus_reply_method_return(call, "v", "u", 77); },
      [](sd_bus_message* call) {
        const std::string text(100'000, 'x');
        return sd_bus_reply_method_return(call, "sas", text.c_str(), 1, text.c_str());
      },
  };
  feedback.appear();
  std::uint64_t played = 0;
  for (const FakeService::Answer& answer : kAnswers) {
    feedback.answers[kTrigger] = answer;
    haptics.playSystemSound(kVibrationSound);
    ASSERT_TRUE(waitForPlayed(++played));
    haptics.disposeSystemSound(kVibrationSound);
    settle();
    // No number was given, so none can be ended.
    EXPECT_NE(feedback.calls.back(), "EndFeedback(77)");
  }
}

}  // namespace
}  // namespace halvora
