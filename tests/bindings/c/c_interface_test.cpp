// SPDX-License-Identifier: Apache-2.0
// The C interface: what a host in C may do wrong, what it hears, and the panel and the wizard as
// state and actions. Whole shows are compared in recorded_shows.py.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "bindings/c/halvora.h"
#include "halvora/version.h"
#include "tests/engine/allocation_count.h"
#include "tests/support/source_tree.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// Of application 258 and transmitter 7: mode 1, orange, full brightness; the torch on.
const Bytes kOrange{0x09, 0xC9, 0x01, 0x02, 0x00, 0x07, 0x00, 0xFF, 0xFF, 0x80, 0x00, 0x01, 0x00,
                    0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x07};
constexpr std::int64_t kSecond = 1'000'000;

/// A host that writes down what it is told.
struct Recorder {
  halvora_phone* phone = nullptr;
  std::map<int, bool> switches;
  std::vector<int> events;
  std::vector<double> levels;
  std::string defaults;
  std::int64_t wakeAt = -1;
  int permission = 3;
  /// Closes the panel as soon as it hears of it.
  bool closesPanel = false;
  int asked = 0;
  int refusals = 0;

  static Recorder& of(void* context) { return *static_cast<Recorder*>(context); }

  halvora_callbacks callbacks() {
    halvora_callbacks made{};
    made.size = sizeof(made);
    made.context = this;
    made.wake_at = [](void* its, std::int64_t time) { of(its).wakeAt = time; };
    made.set = [](void* its, int which, int isOn) { of(its).switches[which] = isOn != 0; };
    made.event = [](void* its, int event) {
      Recorder& recorder = of(its);
      recorder.events.push_back(event);
      if (recorder.phone == nullptr) return;
      if (recorder.closesPanel && event == HALVORA_EVENT_PANEL_CHANGED) {
        halvora_panel_close(recorder.phone);
      }
      if (halvora_phone_free(recorder.phone) == HALVORA_BUSY) ++recorder.refusals;
      if (halvora_phone_run_until(recorder.phone, kSecond) == HALVORA_BUSY) ++recorder.refusals;
    };
    made.set_brightness = [](void* its, double level) { of(its).levels.push_back(level); };
    made.radio_permission = [](void* its) { return of(its).permission; };
    made.ask_radio_permission = [](void* its) { ++of(its).asked; };
    made.read_defaults = [](void* its, void* into, std::size_t room) -> std::int64_t {
      const std::string& kept = of(its).defaults;
      if (kept.empty()) return -1;
      kept.copy(static_cast<char*>(into), room);
      return static_cast<std::int64_t>(kept.size());
    };
    made.write_defaults = [](void* its, const void* bytes, std::size_t count) {
      of(its).defaults.assign(static_cast<const char*>(bytes), count);
      return 1;
    };
    return made;
  }
};

class CInterface : public testing::Test {
 protected:
  ~CInterface() override {
    recorder_.phone = nullptr;
    halvora_phone_free(phone_);
  }

  void make(halvora_options options = plain()) {
    const halvora_callbacks callbacks = recorder_.callbacks();
    ASSERT_EQ(halvora_phone_make(&callbacks, &options, &phone_), HALVORA_OK);
    recorder_.phone = phone_;
  }
  static halvora_options plain() {
    halvora_options options;
    halvora_options_init(&options, sizeof(options));
    options.languages = "en";
    return options;
  }
  void hear(const Bytes& packet) {
    EXPECT_EQ(halvora_phone_advertisement(phone_, packet.data(), packet.size()), HALVORA_OK);
  }
  void runUntil(std::int64_t time) { EXPECT_EQ(halvora_phone_run_until(phone_, time), HALVORA_OK); }
  std::string text(int part) {
    halvora_text found{};
    found.size = sizeof(found);
    const int status = halvora_part_text(phone_, part, &found);
    return status == HALVORA_OK ? found.text : "";
  }

  Recorder recorder_;
  halvora_phone* phone_ = nullptr;
};

TEST_F(CInterface, RefusesNullWhereItMayNotBe) {
  make();
  int number = 7;
  std::size_t count = 7;
  const char* title = nullptr;
  halvora_item item{};
  item.size = sizeof(item);
  halvora_text part{};
  part.size = sizeof(part);
  halvora_alert alert{};
  alert.size = sizeof(alert);
  const std::uint8_t byte = 0;
  const std::vector<int> withoutPhone{halvora_phone_start(nullptr),
                                      halvora_phone_run(nullptr),
                                      halvora_phone_run_until(nullptr, 0),
                                      halvora_phone_run_before(nullptr, 0),
                                      halvora_phone_advertisement(nullptr, &byte, 1),
                                      halvora_phone_radio_state(nullptr, 5),
                                      halvora_phone_active(nullptr, 1),
                                      halvora_phone_resize(nullptr, 1, 1),
                                      halvora_phone_allow(nullptr, ""),
                                      halvora_phone_inside_venue(nullptr, &number),
                                      halvora_phone_trust(nullptr, &number),
                                      halvora_phone_set_default(nullptr, "a", "b"),
                                      halvora_phone_look(nullptr, 1, 1, &count),
                                      halvora_phone_item(nullptr, 0, &item),
                                      halvora_phone_is_animating(nullptr, &number),
                                      halvora_panel_open(nullptr),
                                      halvora_panel_close(nullptr),
                                      halvora_part_text(nullptr, 0, &part),
                                      halvora_part_press(nullptr, 0),
                                      halvora_alert_look(nullptr, &alert),
                                      halvora_alert_press(nullptr),
                                      halvora_panel_tables(nullptr, &number),
                                      halvora_wizard_is_open(nullptr, &number),
                                      halvora_wizard_rows(nullptr, &count, &count),
                                      halvora_wizard_row(nullptr, 0, &title),
                                      halvora_wizard_select(nullptr, 0),
                                      halvora_wizard_is_standing(nullptr, &number),
                                      halvora_wizard_stand(nullptr, 0, 0)};
  EXPECT_EQ(withoutPhone, std::vector<int>(withoutPhone.size(), HALVORA_MISSING));
  const std::vector<int> withoutResult{halvora_options_init(nullptr, sizeof(halvora_options)),
                                       halvora_phone_make(nullptr, nullptr, nullptr),
                                       halvora_phone_advertisement(phone_, nullptr, 1),
                                       halvora_phone_inside_venue(phone_, nullptr),
                                       halvora_phone_trust(phone_, nullptr),
                                       halvora_phone_set_default(phone_, nullptr, "b"),
                                       halvora_phone_look(phone_, 1, 1, nullptr),
                                       halvora_phone_item(phone_, 0, nullptr),
                                       halvora_phone_is_animating(phone_, nullptr),
                                       halvora_part_text(phone_, 0, nullptr),
                                       halvora_alert_look(phone_, nullptr),
                                       halvora_panel_tables(phone_, nullptr),
                                       halvora_wizard_is_open(phone_, nullptr),
                                       halvora_wizard_rows(phone_, &count, nullptr),
                                       halvora_wizard_rows(phone_, nullptr, &count),
                                       halvora_wizard_row(phone_, 0, nullptr),
                                       halvora_wizard_is_standing(phone_, nullptr)};
  EXPECT_EQ(withoutResult, std::vector<int>(withoutResult.size(), HALVORA_MISSING));
  EXPECT_EQ(number, 7);
  EXPECT_EQ(count, 7U);
  EXPECT_EQ(halvora_phone_free(nullptr), HALVORA_OK);
}

TEST_F(CInterface, RefusesNumbersThatAreNone) {
  make();
  std::size_t count = 0;
  const double nothing = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(halvora_phone_run_until(phone_, -1), HALVORA_RANGE);
  EXPECT_EQ(halvora_phone_run_until(phone_, std::numeric_limits<std::int64_t>::max()),
            HALVORA_RANGE);
  EXPECT_EQ(halvora_phone_radio_state(phone_, 6), HALVORA_RANGE);
  EXPECT_EQ(halvora_phone_radio_state(phone_, -1), HALVORA_RANGE);
  EXPECT_EQ(halvora_phone_resize(phone_, nothing, 1), HALVORA_RANGE);
  EXPECT_EQ(halvora_phone_look(phone_, -1, 1, &count), HALVORA_RANGE);
  EXPECT_EQ(halvora_wizard_stand(phone_, nothing, 0), HALVORA_RANGE);
  EXPECT_EQ(halvora_phone_advertisement(phone_, kOrange.data(), 100'000), HALVORA_RANGE);
  halvora_options options = plain();
  options.width = 0;
  halvora_phone* other = nullptr;
  EXPECT_EQ(halvora_phone_make(nullptr, &options, &other), HALVORA_RANGE);
  options = plain();
  options.size = 4;
  EXPECT_EQ(halvora_phone_make(nullptr, &options, &other), HALVORA_MISSING);
  EXPECT_EQ(other, nullptr);
}

TEST_F(CInterface, WorksWithoutAnyCallback) {
  ASSERT_EQ(halvora_phone_make(nullptr, nullptr, &phone_), HALVORA_OK);
  EXPECT_EQ(halvora_phone_start(phone_), HALVORA_OK);
  runUntil(2 * kSecond);
  hear(kOrange);
  runUntil(4 * kSecond);
  std::size_t count = 0;
  ASSERT_EQ(halvora_phone_look(phone_, 390, 844, &count), HALVORA_OK);
  ASSERT_GT(count, 0U);
}

TEST_F(CInterface, TellsAHostWhatAShowDoes) {
  make();
  ASSERT_EQ(halvora_phone_start(phone_), HALVORA_OK);
  runUntil(2 * kSecond);
  EXPECT_TRUE(recorder_.switches[HALVORA_SWITCH_SCAN]);
  hear(kOrange);
  runUntil(4 * kSecond);
  EXPECT_TRUE(recorder_.switches[HALVORA_SWITCH_TORCH]);
  EXPECT_FALSE(recorder_.levels.empty());
  EXPECT_EQ(std::count(recorder_.events.begin(), recorder_.events.end(),
                       static_cast<int>(HALVORA_EVENT_SHOW_STARTED)),
            1);
  std::size_t count = 0;
  ASSERT_EQ(halvora_phone_look(phone_, 390, 844, &count), HALVORA_OK);
  ASSERT_GT(count, 0U);
  halvora_item light{};
  light.size = sizeof(light);
  ASSERT_EQ(halvora_phone_item(phone_, 0, &light), HALVORA_OK);
  EXPECT_EQ(light.content, HALVORA_CONTENT_FILL);
  EXPECT_FLOAT_EQ(light.red, 1);
  EXPECT_NEAR(light.green, 0.502, 0.001);
  EXPECT_FLOAT_EQ(light.blue, 0);
  EXPECT_DOUBLE_EQ(light.width, 390);
  EXPECT_EQ(halvora_phone_item(phone_, count, &light), HALVORA_NONE);
  int isInside = 0;
  ASSERT_EQ(halvora_phone_inside_venue(phone_, &isInside), HALVORA_OK);
  EXPECT_EQ(isInside, 1);
}

TEST_F(CInterface, APacketThatChangesNothingTakesNothingFromTheHeap) {
  if (!halvora::countsAllocations()) GTEST_SKIP() << "a sanitizer owns the heap";
  ASSERT_EQ(halvora_phone_make(nullptr, nullptr, &phone_), HALVORA_OK);
  halvora_phone_start(phone_);
  runUntil(2 * kSecond);
  hear(kOrange);
  std::uint64_t allocations = 0;
  {
    const halvora::AllocationCount count;
    for (int time = 0; time < 100; ++time) {
      halvora_phone_advertisement(phone_, kOrange.data(), kOrange.size());
    }
    allocations = count.allocations();
  }
  EXPECT_EQ(allocations, 0U);
}

TEST_F(CInterface, WhatIsThrownWithinIsACode) {
  halvora_callbacks callbacks = recorder_.callbacks();
  callbacks.radio_permission = [](void* /*its*/) -> int { throw std::runtime_error("host"); };
  ASSERT_EQ(halvora_phone_make(&callbacks, nullptr, &phone_), HALVORA_OK);
  EXPECT_EQ(halvora_phone_start(phone_), HALVORA_FAILED);
  ASSERT_EQ(halvora_phone_free(std::exchange(phone_, nullptr)), HALVORA_OK);

  callbacks.radio_permission = [](void* /*its*/) -> int { throw std::bad_alloc(); };
  ASSERT_EQ(halvora_phone_make(&callbacks, nullptr, &phone_), HALVORA_OK);
  EXPECT_EQ(halvora_phone_start(phone_), HALVORA_NO_MEMORY);
  // And it works on.
  runUntil(2 * kSecond);
}

TEST_F(CInterface, IsNotTakenApartWithinACallback) {
  make();
  halvora_phone_start(phone_);
  runUntil(2 * kSecond);
  hear(kOrange);
  ASSERT_FALSE(recorder_.events.empty());
  EXPECT_EQ(recorder_.refusals, 2 * static_cast<int>(recorder_.events.size()));
}

TEST_F(CInterface, SaysWhenItIsToBeCalledAgain) {
  make();
  EXPECT_EQ(halvora_phone_start(phone_), HALVORA_OK);
  const std::int64_t first = recorder_.wakeAt;
  EXPECT_GE(first, 0);
  EXPECT_LT(first, kSecond + 1);
  runUntil(first);
  EXPECT_GT(recorder_.wakeAt, first);
}

TEST_F(CInterface, WritesNoMoreOfAStructThanItsHostKnows) {
  make();
  std::array<halvora_options, 2> options{};
  options[1].width = 5;
  EXPECT_EQ(halvora_options_init(options.data(), offsetof(halvora_options, media) - 1),
            HALVORA_MISSING);
  EXPECT_EQ(halvora_options_init(options.data(), sizeof(halvora_options)), HALVORA_OK);
  EXPECT_DOUBLE_EQ(options[1].width, 5);
  // A host of an earlier version, whose callbacks ended with the torch's.
  halvora_callbacks earlier = recorder_.callbacks();
  earlier.size = offsetof(halvora_callbacks, haptic);
  halvora_phone* other = nullptr;
  recorder_.levels.clear();
  ASSERT_EQ(halvora_phone_make(&earlier, nullptr, &other), HALVORA_OK);
  halvora_phone_start(other);
  halvora_phone_run_until(other, 2 * kSecond);
  halvora_phone_advertisement(other, kOrange.data(), kOrange.size());
  EXPECT_TRUE(recorder_.levels.empty());
  EXPECT_TRUE(recorder_.switches[HALVORA_SWITCH_TORCH]);
  halvora_phone_free(other);
}

TEST_F(CInterface, KeepsDefaultsWhereItsHostPutsThem) {
  make();
  ASSERT_EQ(halvora_phone_set_default(phone_, "selectedSection", "Stalls"), HALVORA_OK);
  recorder_.phone = nullptr;
  halvora_phone_free(std::exchange(phone_, nullptr));
  EXPECT_NE(recorder_.defaults.find("Stalls"), std::string::npos);
  make();
  ASSERT_EQ(halvora_phone_set_default(phone_, "row", "3"), HALVORA_OK);
  recorder_.phone = nullptr;
  halvora_phone_free(std::exchange(phone_, nullptr));
  EXPECT_NE(recorder_.defaults.find("Stalls"), std::string::npos);
  EXPECT_NE(recorder_.defaults.find("row"), std::string::npos);
}

TEST_F(CInterface, AsksForPermissionByThePanelsButton) {
  recorder_.permission = 0;
  make();
  EXPECT_EQ(halvora_part_press(phone_, HALVORA_PANEL_JOIN_BUTTON), HALVORA_NONE);
  ASSERT_EQ(halvora_panel_open(phone_), HALVORA_OK);
  EXPECT_FALSE(text(HALVORA_PANEL_JOIN_BUTTON).empty());
  EXPECT_EQ(recorder_.asked, 0);
  ASSERT_EQ(halvora_part_press(phone_, HALVORA_PANEL_JOIN_BUTTON), HALVORA_OK);
  EXPECT_EQ(recorder_.asked, 1);
}

TEST_F(CInterface, APanelMayBeClosedWhileItOpens) {
  recorder_.closesPanel = true;
  make();
  ASSERT_EQ(halvora_panel_open(phone_), HALVORA_OK);
  EXPECT_TRUE(text(HALVORA_PANEL_STATUS).empty());
  recorder_.closesPanel = false;
  ASSERT_EQ(halvora_panel_open(phone_), HALVORA_OK);
  halvora_phone_start(phone_);
  runUntil(2 * kSecond);
  EXPECT_FALSE(text(HALVORA_PANEL_STATUS).empty());
}

TEST_F(CInterface, ShowsNoBareKeyWithoutAnyFile) {
  make();
  ASSERT_EQ(halvora_panel_open(phone_), HALVORA_OK);
  halvora_phone_start(phone_);
  runUntil(2 * kSecond);
  EXPECT_NE(text(HALVORA_PANEL_STATUS).find("You are not at the venue yet"), std::string::npos)
      << text(HALVORA_PANEL_STATUS);
}

TEST_F(CInterface, HasASeatChosen) {
  const std::string assets = halvora::sourceTree() + "/assets/demo";
  halvora_options options = plain();
  options.assets = assets.c_str();
  options.default_venue = 7;
  make(options);
  ASSERT_EQ(halvora_panel_open(phone_), HALVORA_OK);
  runUntil(2 * kSecond);
  ASSERT_EQ(halvora_part_press(phone_, HALVORA_PANEL_SEAT_BUTTON), HALVORA_OK);
  int isOpen = 0;
  std::vector<std::string> chosen;
  ASSERT_EQ(halvora_wizard_is_open(phone_, &isOpen), HALVORA_OK);
  ASSERT_EQ(isOpen, 1);
  // Without a choice it goes no further.
  EXPECT_EQ(halvora_part_press(phone_, HALVORA_WIZARD_NEXT_BUTTON), HALVORA_NONE);
  for (int step = 0; step < 3; ++step) {
    std::size_t rows = 0;
    std::size_t selected = 9;
    ASSERT_EQ(halvora_wizard_rows(phone_, &rows, &selected), HALVORA_OK);
    ASSERT_GT(rows, 1U);
    const char* title = nullptr;
    ASSERT_EQ(halvora_wizard_row(phone_, rows - 1, &title), HALVORA_OK);
    chosen.emplace_back(title);
    EXPECT_EQ(halvora_wizard_row(phone_, rows, &title), HALVORA_NONE);
    ASSERT_EQ(halvora_wizard_select(phone_, rows - 1), HALVORA_OK);
    ASSERT_EQ(halvora_part_press(phone_, HALVORA_WIZARD_NEXT_BUTTON), HALVORA_OK) << step;
  }
  ASSERT_EQ(halvora_wizard_is_open(phone_, &isOpen), HALVORA_OK);
  EXPECT_EQ(isOpen, 0) << text(HALVORA_WIZARD_STEP) << testing::PrintToString(chosen);
  for (const std::string& part : chosen) {
    EXPECT_NE(text(HALVORA_PANEL_SEAT).find(part), std::string::npos) << part;
  }
}

TEST(CInterfaceTexts, HasASentenceForEachStatus) {
  EXPECT_STREQ(halvora_version(), HALVORA_VERSION);
  for (int status = -1; status < 9; ++status) {
    EXPECT_FALSE(std::string_view(halvora_status_text(status)).empty());
  }
}

}  // namespace
