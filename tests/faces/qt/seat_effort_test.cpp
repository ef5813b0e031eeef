// SPDX-License-Identifier: Apache-2.0
// What a seat costs its user in a venue of 20,000, counted in taps, keys and actions, from the
// panel to the stored seat, for each way there is, and the seconds that a model of users makes of
// them. The table in docs/accessibility.md has these numbers.
#include <QAccessible>
#include <cmath>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "tests/faces/qt/access_tree.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

// Twenty sections of 25 rows of 40 seats.
std::string largeHall() {
  std::string text = R"({"sections": [)";
  for (int section = 201; section <= 220; ++section) {
    text += (section > 201 ? "," : "") + (R"({"name": "Section )" + std::to_string(section)) +
            R"(", "rows": [)";
    for (int row = 1; row <= 25; ++row) {
      text +=
          (row > 1 ? "," : "") + (R"({"name": "Row )" + std::to_string(row)) + R"(", "seats": [)";
      for (int seat = 1; seat <= 40; ++seat) {
        text += (seat > 1 ? "," : "") + (R"({"name": "Seat )" + std::to_string(seat)) +
                R"(", "x": )" + std::to_string(seat) + R"(, "y": )" +
                std::to_string(section * 30 + row) + "}";
      }
      text += "]}";
    }
    text += "]}";
  }
  return text + "]}";
}

constexpr SeatPoint kSeat{33, 214 * 30 + 18};

// The keystroke-level model of Card, Moran and Newell (Communications of the ACM 23, 1980), in
// seconds: a key of an average typist, a point that is aimed at and pressed, and a thought before
// each part of a task. It knows nothing of listening, nor of a phone's small keys.
constexpr double kKey = 0.28;
constexpr double kTap = 1.1 + 0.1;
constexpr double kThought = 1.35;

struct Effort {
  int taps = 0;
  int keys = 0;
  int thoughts = 0;
  friend bool operator==(const Effort&, const Effort&) = default;

  double seconds() const { return taps * kTap + keys * kKey + thoughts * kThought; }
};

std::ostream& operator<<(std::ostream& out, const Effort& effort) {
  return out << effort.taps << " taps, " << effort.keys << " keys, " << effort.thoughts
             << " thoughts, " << effort.seconds() << " s";
}

struct SeatEffort : testing::Test {
  SeatEffort() : bench(setup()) {}
  static StatusBenchSetup setup() {
    StatusBenchSetup setup;
    setup.map = largeHall();
    return setup;
  }
  void key(Qt::Key key) {
    bench.key(key);
    ++cost.keys;
  }
  void type(const char* text) {
    bench.type(QString::fromLatin1(text));
    cost.keys += static_cast<int>(std::string(text).size());
  }
  void tap(QPointF place) {
    bench.clickAt(place);
    ++cost.taps;
  }
  void tap(const char* name) { tap(bench.frame(name).center()); }
  // The first of what a filter has left, below the picker's middle.
  void tapFirstMatch() {
    const QQuickItem& view = *bench.item("pickerView");
    const double row = view.height() / view.property("visibleItemCount").toInt();
    tap(bench.frame("pickerView").center() + QPointF(0, row));
  }
  void press(const char* name) {
    const AccessNodes nodes = accessTree(bench.window());
    const AccessNode* node = withName(nodes, QString::fromLatin1(name));
    ASSERT_NE(node, nullptr) << name;
    ASSERT_TRUE(node->act(QAccessibleActionInterface::pressAction())) << name;
    bench.turn([] {});
    ++cost.keys;
  }
  void think() { ++cost.thoughts; }
  /// `seconds` as the table rounds them.
  void expectSeat(const Effort& expected, int seconds) {
    bench.waitUntil([&] { return bench.stored().has_value(); });
    EXPECT_EQ(bench.stored(), kSeat);
    EXPECT_EQ(cost, expected);
    EXPECT_EQ(std::lround(cost.seconds()), seconds);
  }

  StatusBench bench;
  Effort cost;
};

TEST_F(SeatEffort, ByKeys) {
  think();
  key(Qt::Key_Tab);
  key(Qt::Key_Return);
  for (const char* part : {"214", "18", "33"}) {
    think();
    type(part);
    key(Qt::Key_Return);
  }
  expectSeat({.keys = 12, .thoughts = 4}, 9);
}

TEST_F(SeatEffort, ByOneLine) {
  think();
  key(Qt::Key_Tab);
  key(Qt::Key_Return);
  think();
  type("214 18 33");
  key(Qt::Key_Return);
  key(Qt::Key_Return);
  expectSeat({.keys = 13, .thoughts = 2}, 6);
}

TEST_F(SeatEffort, ByTouch) {
  think();
  tap("seatSelectionButton");
  bench.waitUntil([&] { return bench.isShown("seatSheetContent"); });
  bench.settle();
  for (const char* part : {"214", "18", "33"}) {
    think();
    tap("seatFilter");
    type(part);
    tapFirstMatch();
    tap("nextButton");
  }
  expectSeat({.taps = 10, .keys = 7, .thoughts = 4}, 19);
}

TEST_F(SeatEffort, ByALink) {
  bench.turn([&] { bench.face().openLink("https://t.example/?section=214&row=18&seat=33"); });
  expectSeat({}, 0);
}

TEST_F(SeatEffort, ByAScreenReader) {
  think();
  press("Select Seat");
  bench.settle();
  const char* const parts[][2] = {
      {"214", "Section 214, 1 of 1"}, {"18", "Row 18, 1 of 1"}, {"33", "Seat 33, 1 of 1"}};
  const char* const buttons[] = {"Next", "Next", "Confirm Seat"};
  for (int step = 0; step < 3; ++step) {
    think();
    type(parts[step][0]);
    press(parts[step][1]);
    press(buttons[step]);
  }
  expectSeat({.keys = 14, .thoughts = 4}, 9);
}

}  // namespace
}  // namespace halvora
