// SPDX-License-Identifier: Apache-2.0
#include "conformance/phone_promises.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>
#include <string>
#include <utility>

namespace halvora::conformance {

namespace {

/// Writes down what an application tells, one letter a telling.
struct Watcher : ApplicationObserver {
  explicit Watcher(Application& its) : application(its) { application.addObserver(*this); }
  ~Watcher() override { leave(); }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  void handleOrientationChange() override { told += 'o'; }
  void appDidBecomeActive() override {
    told += 'a';
    if (takesOff != nullptr) takesOff->leave();
  }
  void appWillResignActive() override { told += 'r'; }
  void presentedScreensDismissed() override { told += 'd'; }
  void leave() {
    if (std::exchange(isThere, false)) application.removeObserver(*this);
  }

  Application& application;
  std::string told;
  bool isThere = true;
  /// Is taken off when this one is told.
  Watcher* takesOff = nullptr;
};

void checkTelling(const ApplicationUnderTest& its, Promises& promises) {
  Watcher first(*its.application);
  Watcher second(*its.application);
  its.becomeActive();
  its.resignActive();
  its.becomeActive();
  promises.expect(first.told == "ara" && second.told == "ara",
                  "every observer is told once when the application becomes active, and once when "
                  "it resigns",
                  first.told + ", " + second.told);
  first.told.clear();
  second.leave();
  second.told.clear();
  its.application->dismissPresentedScreens();
  promises.expect(first.told == "d", "dismissing what is presented tells who presents it",
                  first.told);
  promises.expect(second.told.empty(), "an observer that was removed is told nothing more",
                  second.told);
}

void checkLeaving(const ApplicationUnderTest& its, Promises& promises) {
  Watcher first(*its.application);
  Watcher second(*its.application);
  Watcher third(*its.application);
  first.takesOff = &second;
  third.takesOff = &third;
  its.becomeActive();
  its.resignActive();
  promises.expect(second.told.empty(),
                  "an observer that another one removes while it is told is told nothing more",
                  second.told);
  promises.expect(first.told == "ar" && third.told == "a",
                  "an observer may remove itself while it is told, and the others are told",
                  first.told + ", " + third.told);
}

/// Nothing is to happen that can be seen, and nothing may end the process.
void checkSettings(const ApplicationUnderTest& its, Promises& promises) {
  Application& application = *its.application;
  const Watcher watcher(application);
  const bool had = application.canOpenSettings();
  for (const bool isWanted : {true, true, false, false}) {
    application.setIdleTimerDisabled(isWanted);
    application.setStatusBarHidden(isWanted);
  }
  application.useAudioPlaybackCategory();
  promises.expect(watcher.told.empty(), "what is set tells no observer anything", watcher.told);
  promises.expect(application.canOpenSettings() == had,
                  "whether there is a page of settings does not depend on what was set");
  if (!had) application.openSettings();
}

/// RFC 4493's own key and messages.
constexpr std::array<std::uint8_t, 16> kKey{0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                                            0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
constexpr std::array<std::uint8_t, 40> kMessage{
    0x6b, 0xc1, 0xbe, 0xe2, 0x2e, 0x40, 0x9f, 0x96, 0xe9, 0x3d, 0x7e, 0x11, 0x73, 0x93,
    0x17, 0x2a, 0xae, 0x2d, 0x8a, 0x57, 0x1e, 0x03, 0xac, 0x9c, 0x9e, 0xb7, 0x6f, 0xac,
    0x45, 0xaf, 0x8e, 0x51, 0x30, 0xc8, 0x1c, 0x46, 0xa3, 0x5c, 0xe4, 0x11};
struct KnownCode {
  std::size_t length;
  MessageCode::Code code;
};
constexpr std::array<KnownCode, 3> kCodes{{
    {0,
     {0xbb, 0x1d, 0x69, 0x29, 0xe9, 0x59, 0x37, 0x28, 0x7f, 0xa3, 0x7d, 0x12, 0x9b, 0x75, 0x67,
      0x46}},
    {16,
     {0x07, 0x0a, 0x16, 0xb4, 0x6b, 0x4d, 0x41, 0x44, 0xf7, 0x9b, 0xdd, 0x9d, 0xd0, 0x4a, 0x28,
      0x7c}},
    {40,
     {0xdf, 0xa6, 0x67, 0x47, 0xde, 0x9a, 0xe6, 0x30, 0x30, 0xca, 0x32, 0x61, 0x14, 0x97, 0xc8,
      0x27}},
}};

}  // namespace

std::vector<BrokenPromise> checkTorch(const std::function<TorchUnderTest()>& make) {
  Promises promises("Torch");
  TorchUnderTest its = make();
  promises.expect(its.torch->hasTorch(), "a phone with a lamp has a torch");
  promises.expect(its.torch->hasFlash(), "a phone with a lamp has a flash");
  const auto isLitAfter = [&its](std::initializer_list<bool> writes) {
    for (const bool on : writes) its.torch->setOn(on);
    its.settle();
    return its.isLit();
  };
  promises.expect(isLitAfter({true}), "the lamp is lit when it was switched on");
  promises.expect(isLitAfter({true}), "switching on what is on leaves it lit");
  promises.expect(!isLitAfter({false}), "the lamp is out when it was switched off");
  promises.expect(isLitAfter({true, false, true}), "of several writes the last one counts");
  promises.expect(!isLitAfter({true, false}), "of several writes the last one counts");
  promises.expect(isLitAfter({true}), "a lamp is lit again after it was out");
  its.torch->setOn(false);
  its.torch.reset();
  its.settle();
  promises.expect(!its.isLit(),
                  "a lamp that was switched off is out, though the torch goes at once");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkNoTorch(const std::function<std::unique_ptr<Torch>()>& make) {
  Promises promises("Torch");
  const std::unique_ptr<Torch> torch = make();
  torch->setOn(true);
  torch->setOn(false);
  promises.expect(!torch->hasTorch() && !torch->hasFlash(),
                  "a phone without a lamp has neither torch nor flash");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkHaptics(const std::function<HapticsUnderTest()>& make) {
  Promises promises("Haptics");
  const HapticsUnderTest its = make();
  const auto feltAt = [&its](const std::function<void(Haptics&)>& act) {
    const int before = its.felt();
    act(*its.haptics);
    its.settle();
    return its.felt() - before;
  };
  for (const ImpactStyle style : {ImpactStyle::light, ImpactStyle::heavy, ImpactStyle::heavy}) {
    const int times = feltAt([style](Haptics& haptics) { haptics.impact(style); });
    promises.expect(times == 1, "an impact is felt once", std::to_string(times) + " times");
  }
  const int vibrations = feltAt([](Haptics& haptics) { haptics.playSystemSound(kVibrationSound); });
  promises.expect(vibrations == 1, "the sound that vibrates is felt once",
                  std::to_string(vibrations) + " times");
  const int afterwards =
      feltAt([](Haptics& haptics) { haptics.disposeSystemSound(kVibrationSound); });
  promises.expect(afterwards == 0, "disposing of a sound is not felt",
                  std::to_string(afterwards) + " times");
  const int unknown = feltAt([](Haptics& haptics) { haptics.disposeSystemSound(1000); });
  promises.expect(unknown == 0, "a sound that never played may be disposed of");
  const int again = feltAt([](Haptics& haptics) { haptics.impact(ImpactStyle::light); });
  promises.expect(again == 1, "a sound that was disposed of takes no impact with it");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkApplication(const std::function<ApplicationUnderTest()>& make) {
  Promises promises("Application");
  checkTelling(make(), promises);
  checkLeaving(make(), promises);
  checkSettings(make(), promises);
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkFixedScreen(const std::function<std::unique_ptr<Screen>()>& make) {
  Promises promises("Screen");
  const std::unique_ptr<Screen> screen = make();
  const double first = screen->brightness();
  promises.expect(first >= 0 && first <= 1, "the level is from 0 to 1", std::to_string(first));
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  for (const double level : {0.0, 0.25, 1.0, -1.0, 2.0, kInfinite, std::nan("")}) {
    screen->setBrightness(level);
    // What nobody sees on the screen must not be said of it either: not a number equals nothing.
    promises.expect(screen->brightness() == first,
                    "a screen that cannot be set keeps its level, whatever is written",
                    std::to_string(screen->brightness()) + " after " + std::to_string(level));
  }
  promises.expect(screen->currentEDRHeadroom() >= 1, "the headroom is at least 1");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkRandom(const std::function<std::unique_ptr<Random>()>& make) {
  Promises promises("Random");
  const std::unique_ptr<Random> random = make();
  promises.expect(random->below(0) == 0 && random->below(1) == 0,
                  "of no number and of one number the draw is 0");
  constexpr std::uint32_t kBound = 7;
  constexpr int kDraws = 7'000;
  std::array<int, kBound> counts{};
  for (int draw = 0; draw < kDraws; ++draw) {
    const std::uint32_t drawn = random->below(kBound);
    promises.expect(drawn < kBound, "a draw is below its bound", std::to_string(drawn));
    if (drawn < kBound) ++counts[drawn];
  }
  // 1,000 are expected with a deviation of 29: a fair one never leaves these bounds.
  promises.expect(
      *std::ranges::min_element(counts) > 700 && *std::ranges::max_element(counts) < 1'300,
      "every number is drawn, and about as often as each other one",
      std::to_string(*std::ranges::min_element(counts)) + " to " +
          std::to_string(*std::ranges::max_element(counts)) + " times of 1000");
  constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
  bool isLarge = false;
  for (int draw = 0; draw < 100; ++draw) isLarge = isLarge || random->below(kMost) > kMost / 2;
  promises.expect(isLarge, "a bound of 32 bits is drawn from as a whole");
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkCalendar(const std::function<std::unique_ptr<Calendar>()>& make) {
  Promises promises("Calendar");
  const std::unique_ptr<Calendar> calendar = make();
  // Noon of universal time is the same day from 12 hours west to 11 hours east of it.
  const auto dayOf = [&](double seconds) { return calendar->componentsOf(Date{seconds}); };
  const auto said = [](const DayComponents& day) {
    return std::to_string(day.year) + "-" + std::to_string(day.month) + "-" +
           std::to_string(day.day);
  };
  constexpr double kDay = 86'400;
  constexpr double kLeapNoon = 1'709'208'000;  // 2024-02-29
  const DayComponents leap = dayOf(kLeapNoon);
  promises.expect(leap.year == 2024 && leap.month >= 2 && leap.month <= 3 && leap.day >= 1,
                  "months and days are counted from 1, years as people say them", said(leap));
  promises.expect(leap == DayComponents{2024, 2, 29} || leap == DayComponents{2024, 3, 1},
                  "the day is the user's, of the calendar with leap years", said(leap));
  promises.expect(dayOf(kLeapNoon + kDay) != leap && dayOf(kLeapNoon + 0.5) == leap,
                  "a day later it is another day, and half a second later it is not");
  const DayComponents old = dayOf(-kDay * 365 + kDay / 2);  // 1969-01-01
  promises.expect(old.year == 1969 && old.month == 1, "dates before 1970 are dates", said(old));
  return std::move(promises).broken();
}

std::vector<BrokenPromise> checkCodes(const std::function<std::unique_ptr<MessageCodes>()>& make) {
  Promises promises("MessageCodes");
  const std::unique_ptr<MessageCodes> codes = make();
  const std::unique_ptr<MessageCode> code = codes->withKey(ShowKey(std::span(kKey)));
  promises.expect(code != nullptr, "there are codes for a key");
  if (code == nullptr) return std::move(promises).broken();
  for (const KnownCode& known : kCodes) {
    promises.expect(code->of(std::span(kMessage).first(known.length)) == known.code,
                    "a code is AES-CMAC's, of any length of bytes",
                    std::to_string(known.length) + " bytes");
  }
  promises.expect(code->of(std::span(kMessage).first(16)) == kCodes[1].code,
                  "a code depends on nothing that was asked before");
  std::array<std::uint8_t, 16> otherKey = kKey;
  otherKey.back() ^= 1;
  const std::unique_ptr<MessageCode> other = codes->withKey(ShowKey(std::span(otherKey)));
  promises.expect(other != nullptr && other->of({}) != kCodes[0].code,
                  "each key has codes of its own");
  promises.expect(code->of({}) == kCodes[0].code, "a key stays when another one comes");
  return std::move(promises).broken();
}

}  // namespace halvora::conformance
