// SPDX-License-Identifier: Apache-2.0
// Small parts of a phone that are wrong, three a need, and defaults that do not survive: the
// conformance suite says of each which promise it breaks.
#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/system_clock.h"
#include "conformance/crash_promises.h"
#include "conformance/phone_promises.h"
#include "tests/conformance/planted.h"

namespace halvora {
namespace {

using namespace conformance;  // NOLINT(google-build-using-namespace): nothing else is tested here

/// Never goes out while it is lit; forgets a lamp that was lit already; stays lit when it goes.
class FaultyTorch final : public Torch {
 public:
  FaultyTorch(Fault fault, bool& lamp) : fault_(fault), lamp_(lamp) {}
  ~FaultyTorch() override {
    if (fault_ == Fault::third) lamp_ = true;
  }
  FaultyTorch(const FaultyTorch&) = delete;
  FaultyTorch& operator=(const FaultyTorch&) = delete;
  bool hasTorch() const override { return true; }
  bool hasFlash() const override { return true; }
  void setOn(bool on) override {
    if (fault_ == Fault::first && !on) return;
    lamp_ = fault_ == Fault::second && lamp_ ? false : on;
  }

 private:
  const Fault fault_;
  bool& lamp_;
};

TEST(PlantedFaults, OfATorchAreSaid) {
  const auto ofTorch = [](Fault fault) {
    return checkTorch([fault] {
      auto lamp = std::make_shared<bool>(false);
      bool& its = *lamp;
      return TorchUnderTest{std::move(lamp), std::make_unique<FaultyTorch>(fault, its), [] {},
                            [&its] { return its; }};
    });
  };
  expectSaid(ofTorch(Fault::first), "the lamp is out when it was switched off");
  expectSaid(ofTorch(Fault::second), "switching on what is on leaves it lit");
  expectSaid(ofTorch(Fault::third), "is out, though the torch goes at once");
  bool lamp = false;
  expectSaid(checkNoTorch([&] { return std::make_unique<FaultyTorch>(Fault::first, lamp); }),
             "a phone without a lamp has neither torch nor flash");
}

/// Moves twice at a heavy impact, when a sound ends, or never after one has ended.
class FaultyHaptics final : public Haptics {
 public:
  explicit FaultyHaptics(Fault fault) : fault_(fault) {}
  void impact(ImpactStyle style) override {
    if (isOver_ && fault_ == Fault::third) return;
    felt += style == ImpactStyle::heavy && fault_ == Fault::first ? 2 : 1;
  }
  void playSystemSound(std::uint32_t /*sound*/) override { ++felt; }
  void disposeSystemSound(std::uint32_t /*sound*/) override {
    isOver_ = true;
    if (fault_ == Fault::second) ++felt;
  }
  int felt = 0;

 private:
  const Fault fault_;
  bool isOver_ = false;
};

TEST(PlantedFaults, OfHapticsAreSaid) {
  const auto ofHaptics = [](Fault fault) {
    return checkHaptics([fault] {
      auto haptics = std::make_unique<FaultyHaptics>(fault);
      FaultyHaptics& its = *haptics;
      return HapticsUnderTest{nullptr, std::move(haptics), [] {}, [&its] { return its.felt; }};
    });
  };
  expectSaid(ofHaptics(Fault::first), "an impact is felt once");
  expectSaid(ofHaptics(Fault::second), "disposing of a sound is not felt");
  expectSaid(ofHaptics(Fault::third), "a sound that was disposed of takes no impact with it");
}

/// Never removes, tells an observer that is gone, does not tell who presents something.
class FaultyApplication final : public Application {
 public:
  explicit FaultyApplication(Fault fault) : fault_(fault) {}
  void addObserver(ApplicationObserver& observer) override { observers_.push_back(&observer); }
  void removeObserver(ApplicationObserver& observer) override {
    if (fault_ != Fault::first) std::erase(observers_, &observer);
  }
  void setIdleTimerDisabled(bool /*disabled*/) override {}
  void setStatusBarHidden(bool /*hidden*/) override {}
  void dismissPresentedScreens() override {
    if (fault_ != Fault::third) tell(&ApplicationObserver::presentedScreensDismissed);
  }
  bool canOpenSettings() const override { return false; }
  void openSettings() override {}
  void useAudioPlaybackCategory() override {}
  void tell(void (ApplicationObserver::*what)()) {
    // A copy still has who goes meanwhile.
    const std::vector<ApplicationObserver*> told = observers_;
    for (ApplicationObserver* observer : told) {
      if (fault_ == Fault::second || isThere(observer)) (observer->*what)();
    }
  }

 private:
  bool isThere(const ApplicationObserver* observer) const {
    return std::ranges::find(observers_, observer) != observers_.end();
  }

  const Fault fault_;
  std::vector<ApplicationObserver*> observers_;
};

TEST(PlantedFaults, OfAnApplicationAreSaid) {
  const auto ofApplication = [](Fault fault) {
    return checkApplication([fault] {
      auto application = std::make_unique<FaultyApplication>(fault);
      FaultyApplication& its = *application;
      return ApplicationUnderTest{nullptr, std::move(application),
                                  [&its] { its.tell(&ApplicationObserver::appDidBecomeActive); },
                                  [&its] { its.tell(&ApplicationObserver::appWillResignActive); }};
    });
  };
  expectSaid(ofApplication(Fault::first), "an observer that was removed is told nothing more");
  expectSaid(ofApplication(Fault::second),
             "an observer that another one removes while it is told is told nothing more");
  expectSaid(ofApplication(Fault::third), "dismissing what is presented tells who presents it");
}

/// Says what was written though nobody sees it, goes dark, counts to 255.
class FaultyFixedScreen final : public Screen {
 public:
  explicit FaultyFixedScreen(Fault fault) : fault_(fault) {}
  Size bounds() const override { return {390, 844}; }
  double brightness() const override { return level_; }
  void setBrightness(double level) override {
    if (fault_ == Fault::first) level_ = level;
    if (fault_ == Fault::second) level_ = 0;
  }
  float currentEDRHeadroom() const override { return 1; }

 private:
  const Fault fault_;
  double level_ = fault_ == Fault::third ? 255 : 1;
};

TEST(PlantedFaults, OfAScreenThatCannotBeSetAreSaid) {
  const auto ofScreen = [](Fault fault) {
    return checkFixedScreen([fault] { return std::make_unique<FaultyFixedScreen>(fault); });
  };
  expectSaid(ofScreen(Fault::first), "a screen that cannot be set keeps its level");
  expectSaid(ofScreen(Fault::second), "a screen that cannot be set keeps its level");
  expectSaid(ofScreen(Fault::third), "the level is from 0 to 1");
}

/// Counts up, draws its bound, has 15 bits.
class FaultyRandom final : public Random {
 public:
  explicit FaultyRandom(Fault fault) : fault_(fault) {}
  std::uint32_t below(std::uint32_t bound) override {
    if (bound == 0) return 0;
    ++drawn_;
    if (fault_ == Fault::first) return bound < 2 ? 0 : drawn_ % 2;
    if (fault_ == Fault::second) return bound < 2 ? 0 : drawn_ % bound + 1;
    return drawn_ % 32'768 % bound;
  }

 private:
  const Fault fault_;
  std::uint32_t drawn_ = 0;
};

TEST(PlantedFaults, OfChanceAreSaid) {
  const auto ofRandom = [](Fault fault) {
    return checkRandom([fault] { return std::make_unique<FaultyRandom>(fault); });
  };
  expectSaid(ofRandom(Fault::first), "every number is drawn");
  expectSaid(ofRandom(Fault::second), "a draw is below its bound");
  expectSaid(ofRandom(Fault::third), "a bound of 32 bits is drawn from as a whole");
}

/// Counts months from 0, years from 1900, and knows no leap years.
class FaultyCalendar final : public Calendar {
 public:
  explicit FaultyCalendar(Fault fault) : fault_(fault) {}
  DayComponents componentsOf(Date date) const override {
    DayComponents day = calendar_.componentsOf(date);
    if (fault_ == Fault::first) --day.month;
    if (fault_ == Fault::second) day.year -= 1900;
    if (fault_ == Fault::third && day.month == 2 && day.day == 29) return {day.year, 3, 2};
    return day;
  }

 private:
  const Fault fault_;
  const SystemCalendar calendar_;
};

TEST(PlantedFaults, OfACalendarAreSaid) {
  const auto ofCalendar = [](Fault fault) {
    return checkCalendar([fault] { return std::make_unique<FaultyCalendar>(fault); });
  };
  expectSaid(ofCalendar(Fault::first), "months and days are counted from 1");
  expectSaid(ofCalendar(Fault::second), "years as people say them");
  expectSaid(ofCalendar(Fault::third), "of the calendar with leap years");
}

/// Sums that pass for codes: of no key, of the bytes alone, one that goes on where it was.
class FaultyCodes final : public MessageCodes {
 public:
  explicit FaultyCodes(Fault fault) : fault_(fault) {}
  std::unique_ptr<MessageCode> withKey(const ShowKey& key) const override {
    struct Sum final : MessageCode {
      Code of(std::span<const std::uint8_t> message) override {
        if (!goesOn) state = 0;
        for (const std::uint8_t byte : message) state = static_cast<std::uint8_t>(state + byte);
        Code code{};
        code.fill(static_cast<std::uint8_t>(state + start));
        return code;
      }
      bool goesOn = false;
      std::uint8_t state = 0;
      std::uint8_t start = 0;
    };
    if (fault_ == Fault::first) return nullptr;
    auto sum = std::make_unique<Sum>();
    sum->goesOn = fault_ == Fault::third;
    if (fault_ == Fault::third) sum->start = key.bytes()[0];
    return sum;
  }

 private:
  const Fault fault_;
};

TEST(PlantedFaults, OfCodesAreSaid) {
  const auto ofCodes = [](Fault fault) {
    return checkCodes([fault] { return std::make_unique<FaultyCodes>(fault); });
  };
  expectSaid(ofCodes(Fault::first), "there are codes for a key");
  expectSaid(ofCodes(Fault::second), "a code is AES-CMAC's");
  expectSaid(ofCodes(Fault::third), "a code depends on nothing that was asked before");
}

/// Defaults on a disk in memory. What a killed process leaves there is the fault.
class MortalDefaults final : public UserDefaults {
 public:
  using Disk = DefaultsDictionary;

  explicit MortalDefaults(Disk& disk) : disk_(disk), values_(disk) {}
  const DefaultsValue* find(std::string_view key) const override {
    const auto found = std::ranges::find(values_, key, &DefaultsMember::key);
    return found != values_.end() ? &found->value : nullptr;
  }
  void set(std::string_view key, DefaultsValue value) override {
    remove(key);
    values_.push_back({std::string(key), std::move(value)});
  }
  void remove(std::string_view key) override {
    std::erase_if(values_, [key](const DefaultsMember& one) { return one.key == key; });
  }
  void synchronize() override { disk_ = values_; }

 private:
  Disk& disk_;
  DefaultsDictionary values_;
};

struct Killed : std::runtime_error {
  Killed() : std::runtime_error("killed") {}
};

/// `damage` is what the third write of each process comes to.
std::vector<BrokenPromise> afterCrashes(
    const std::function<void(const DefaultsDictionary& old, DefaultsDictionary& disk)>& damage) {
  DefaultsDictionary disk;
  const auto killAWriter = [&] {
    MortalDefaults defaults(disk);
    DefaultsDictionary old;
    try {
      writeForEver(defaults, [&, writes = 0]() mutable {
        if (++writes == 3) throw Killed();
        old = disk;
      });
    } catch (const Killed&) {
      damage(old, disk);
    }
  };
  return checkDefaultsAfterCrashes(
      {[&disk] { return std::make_unique<MortalDefaults>(disk); }, killAWriter}, 3);
}

TEST(PlantedFaults, OfDefaultsAfterACrashAreSaid) {
  const auto kept = afterCrashes([](const auto&, const auto&) {});
  EXPECT_TRUE(kept.empty()) << textOf(kept);
  const auto undone = afterCrashes([](const auto& old, auto& disk) { disk = old; });
  EXPECT_TRUE(undone.empty()) << textOf(undone);

  const auto torn = afterCrashes([](const auto&, auto& disk) {
    for (DefaultsMember& one : disk) {
      if (auto* text = std::get_if<std::string>(&one.value.storage)) text->resize(4096);
    }
  });
  expectSaid(torn, "a value is the whole old one or the whole new one");
  const auto mixed = afterCrashes([](const auto& old, auto& disk) { disk.back() = old.back(); });
  expectSaid(mixed, "after a crash the values are those of one moment");
  const auto emptied = afterCrashes([](const auto&, auto& disk) { disk.clear(); });
  expectSaid(emptied, "what was made lasting outlives a crash");
}

}  // namespace
}  // namespace halvora
