// SPDX-License-Identifier: Apache-2.0
// A host that, from within a signal of the kit's, destroys the window, the engine or the phone, or
// puts another engine in its place.
#include <QAction>
#include <QObject>
#include <QUrl>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "faces/qt/halvora_view_item.h"
#include "faces/qt/impl/seat_wizard.h"
#include "faces/qt/impl/status_panel.h"
#include "tests/faces/qt/event_wait.h"
#include "tests/faces/qt/qml_bench.h"
#include "tests/faces/qt/status_bench.h"

namespace halvora {
namespace {

constexpr const char* kHost = R"(
    import QtQuick
    import Halvora
    Window {
        id: window
        width: 400; height: 800; color: "#0a3c14"; visible: true
        property int started: 0
        property string standing: light.isPermissionGranted + " " + light.isInsideVenue
        property bool isWhole: light.statusBarHidden
        HalvoraView {
            id: light
            objectName: "light"
            width: 400; height: 100
            onLightShowStarted: ++window.started
        }
        HalvoraStatusView {
            objectName: "status"
            y: 100; width: 400; height: implicitHeight
            reducedMotion: true
        }
    })";

/// A phone in venue 7, with its engine.
struct Phone {
  explicit Phone(const JsonReader& reader) : phone(reader) {
    phone.mainBundle.folder = "/host";
    phone.mainBundle.strings = {{"outside_venue", "Outside"}, {"inside_venue", "Inside"}};
    phone.virtualFiles.put("/host/HVAssets/Maps/Venue-7/map.json", mapWithStanding());
    phone.defaults.setFromOutside("venueID", std::int64_t{7});
    engine = std::make_unique<HalvoraViewController>(phone.platform());
    engine->viewDidLoad();
  }
  void hear(std::uint8_t mode) {
    Broadcast look;
    look.applicationId = 258;
    look.venueId = 7;
    look.mode = mode;
    look.master = 255;
    look.red = 200;
    look.sequence = ++sequence;
    phone.bluetooth.advertise(encodeBroadcast(look));
  }

  VirtualPhone phone;
  std::unique_ptr<HalvoraViewController> engine;
  std::uint16_t sequence = 0;
};

struct QmlDestroyedInside : testing::Test {
  QmlDestroyedInside() {
    qml.addImportPath(QStringLiteral("qrc:/qt/qml"));
    install(*first);
    placed = std::make_unique<QmlWindow>(qml, kHost);
    first->engine->start();
    first->phone.loop.runFor(milliseconds(1500));
    settle();
  }
  ~QmlDestroyedInside() override { placed.reset(); }

  void install(Phone& phone) { HalvoraHost::install(qml, phone.phone.platform(), *phone.engine); }
  static void settle() {
    for (int round = 0; round < 5; ++round) {
      QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
      QCoreApplication::processEvents();
    }
  }
  HalvoraViewItem& light() { return *placed->find<HalvoraViewItem>("light"); }
  StatusPanel& panel() { return *placed->find<StatusPanel>("statusPanel"); }
  /// The first phone is gone, and nothing in the window remembers it.
  void expectNothingOfTheFirst() {
    first.reset();
    settle();
    EXPECT_EQ(placed->colourAt(200, 50), QColor(10, 60, 20));
    EXPECT_EQ(panel().controller(), nullptr);
    EXPECT_FALSE(panel().statusTextLabel().shown());
    EXPECT_EQ(placed->find("status")->implicitHeight(), 0);
    light().start();
    light().setAllowedTransmitterIds({QStringLiteral("258:7")});
    EXPECT_FALSE(light().isPermissionGranted());
    panel().openSeatSelector();
    panel().initBluetoothPermission();
    panel().setProperty("statusTextFontSize", 30);
    panel().setProperty("textScale", 2);
    placed->window().resize(300, 700);
    settle();
    placed->find("light")->setParentItem(nullptr);
    placed.reset();
    settle();
  }

  const ExactJsonReader reader;
  std::unique_ptr<Phone> first = std::make_unique<Phone>(reader);
  Phone second{reader};
  QQmlEngine qml;
  std::unique_ptr<QmlWindow> placed;
};

TEST_F(QmlDestroyedInside, AnotherEngineIsInstalledAndTheOldOneDestroyedInTheStartedSignal) {
  QObject::connect(&light(), &HalvoraViewItem::lightShowStarted, qApp, [this] {
    install(second);
    first->engine.reset();
  });
  first->hear(3);
  first->phone.loop.runFor(milliseconds(3000));
  EXPECT_EQ(first->engine, nullptr);
  expectNothingOfTheFirst();
}

// Qt itself ends a process in which an item is deleted, and not destroyed, within its own handler;
// the engine may go there.
TEST_F(QmlDestroyedInside, AnotherEngineIsInstalledAndTheOldOneDestroyedInAHandlerOfQml) {
  QAction act;
  QObject::connect(&act, &QAction::triggered, qApp, [this] {
    install(second);
    first->engine.reset();
  });
  QObject::connect(&placed->window(), SIGNAL(startedChanged()), &act, SLOT(trigger()));
  first->hear(3);
  first->phone.loop.runFor(milliseconds(3000));
  EXPECT_EQ(first->engine, nullptr);
  expectNothingOfTheFirst();
}

TEST_F(QmlDestroyedInside, TheEngineAloneIsDestroyedInTheStartedSignal) {
  QObject::connect(&light(), &HalvoraViewItem::lightShowStarted, qApp,
                   [this] { first->engine.reset(); });
  first->hear(3);
  first->phone.loop.runFor(milliseconds(3000));
  settle();
  EXPECT_EQ(first->engine, nullptr);
  EXPECT_EQ(placed->colourAt(200, 50), QColor(10, 60, 20));
  EXPECT_EQ(placed->window().property("standing"), QStringLiteral("false false"));
  EXPECT_EQ(placed->window().property("isWhole"), false);
  light().start();
  light().setAllowedTransmitterIds({QStringLiteral("258:7")});
  EXPECT_TRUE(light().usageReports());
  light().setUsageReports(false);
  panel().initBluetoothPermission();
  panel().openSeatSelector();
  first->phone.loop.runFor(milliseconds(1000));
  placed->window().resize(300, 700);
  settle();
  // A document that comes now is dark as well.
  QmlWindow late(qml, kHost);
  EXPECT_EQ(late.colourAt(200, 50), QColor(10, 60, 20));
  install(second);
  expectNothingOfTheFirst();
}

TEST_F(QmlDestroyedInside, TheEngineIsDestroyedInItsOwnCallback) {
  first->engine->setLightShowStartedCallback([this] { first->engine.reset(); });
  first->hear(3);
  EXPECT_EQ(first->engine, nullptr);
  settle();
  EXPECT_EQ(placed->colourAt(200, 50), QColor(10, 60, 20));
  first->phone.loop.runFor(milliseconds(1000));
  install(second);
  expectNothingOfTheFirst();
}

TEST_F(QmlDestroyedInside, AnotherEngineIsInstalledWhileTheWizardIsOnScreen) {
  panel().openSeatSelector();
  settle();
  ASSERT_TRUE(panel().wizard()->isPresented());
  panel().wizard()->pick(1);
  panel().wizard()->next();
  settle();
  install(second);
  EXPECT_FALSE(panel().wizard()->isPresented());
  EXPECT_FALSE(panel().wizard()->isLoaded());
  first->engine.reset();
  expectNothingOfTheFirst();
}

TEST_F(QmlDestroyedInside, TheWindowGoesWithTheWholeScreenThatTheOldEngineHad) {
  first->hear(3);
  first->phone.loop.runFor(milliseconds(1500));
  ASSERT_EQ(placed->window().property("isWhole"), true);
  QObject::connect(&light(), &HalvoraViewItem::statusBarHiddenChanged, qApp,
                   [this] { placed.reset(); });
  install(second);
  EXPECT_EQ(placed, nullptr);
  first.reset();
  settle();
  EXPECT_EQ(&HalvoraHost::of(qml).controller(), second.engine.get());
}

TEST_F(QmlDestroyedInside, TheWindowGoesWithTheWordOfAKeyThatCannotBeRead) {
  bool hasHeard = false;
  QObject::connect(&light(), &HalvoraViewItem::airChanged, qApp, [&] { hasHeard = true; });
  QObject::connect(&light(), &HalvoraViewItem::showKeyErrorChanged, qApp,
                   [this] { placed.reset(); });
  light().setShowKeyFile(QUrl::fromLocalFile(QStringLiteral("/nowhere/show.key")));
  EXPECT_EQ(placed, nullptr);
  EXPECT_FALSE(hasHeard) << "nobody is left to say it";
}

TEST_F(QmlDestroyedInside, AnEngineIsInstalledWhileAnotherItemTakesTheView) {
  first->hear(3);
  first->phone.loop.runFor(milliseconds(1500));
  ASSERT_EQ(placed->window().property("isWhole"), true);
  QObject::connect(&light(), &HalvoraViewItem::statusBarHiddenChanged, qApp,
                   [this] { install(second); });
  QmlWindow late(qml, kHost);
  EXPECT_EQ(&HalvoraHost::of(qml).controller(), second.engine.get());
  first.reset();
  settle();
  placed.reset();
}

TEST_F(QmlDestroyedInside, AThirdEngineIsInstalledByWhoeverHearsOfTheSecond) {
  Phone third(reader);
  first->hear(3);
  first->phone.loop.runFor(milliseconds(1500));
  QObject::connect(&light(), &HalvoraViewItem::statusBarHiddenChanged, qApp,
                   [&] { install(third); });
  install(second);
  EXPECT_EQ(&HalvoraHost::of(qml).controller(), third.engine.get());
  expectNothingOfTheFirst();
}

TEST_F(QmlDestroyedInside, ADocumentThatComesAfterwardsHasTheNewEngine) {
  install(second);
  first.reset();
  QmlWindow late(qml, kHost);
  second.engine->start();
  second.phone.loop.runFor(milliseconds(1500));
  second.hear(1);
  second.phone.loop.runFor(milliseconds(1500));
  settle();
  EXPECT_EQ(late.colourAt(200, 50), QColor(200, 0, 0));
  EXPECT_TRUE(late.find<StatusPanel>("statusPanel")->statusTextLabel().shown());
  placed.reset();
}

TEST_F(QmlDestroyedInside, ThePanelMayOutliveItsQmlEngine) {
  auto other = std::make_unique<QQmlEngine>();
  other->addImportPath(QStringLiteral("qrc:/qt/qml"));
  HalvoraHost::install(*other, second.phone.platform(), *second.engine);
  auto late = std::make_unique<QmlWindow>(*other, kHost);
  other.reset();
  second.phone.loop.runFor(milliseconds(2000));
  settle();
  late.reset();
  settle();
}

// Every signal of the panel and of its wizard, at each time that it is sent while a user goes
// through a choice, brings the end of the window.
using Listen = std::function<void(StatusPanel&, const std::function<void()>&)>;

struct Signal {
  const char* name;
  Listen listen;
};

void PrintTo(const Signal& signal, std::ostream* out) { *out << signal.name; }

const Signal kSignals[] = {
    {"changed",
     [](StatusPanel& panel, const auto& act) {
       QObject::connect(&panel, &StatusPanel::changed, qApp, act);
     }},
    {"pulsed", [](StatusPanel& panel,
                  const auto& act) { QObject::connect(&panel, &StatusPanel::pulsed, qApp, act); }},
    {"layoutWidthChanged",
     [](StatusPanel& panel, const auto& act) {
       QObject::connect(&panel, &StatusPanel::layoutWidthChanged, qApp, act);
     }},
    {"wizardPresented",
     [](StatusPanel& panel, const auto& act) {
       QObject::connect(panel.wizard(), &SeatWizard::presentedChanged, qApp, act);
     }},
    {"wizardChanged",
     [](StatusPanel& panel, const auto& act) {
       QObject::connect(panel.wizard(), &SeatWizard::changed, qApp, act);
     }},
    {"pickerMoved",
     [](StatusPanel& panel, const auto& act) {
       QObject::connect(panel.wizard(), &SeatWizard::pickerMoved, qApp, [act](int) { act(); });
     }},
};

class WindowDestroyedInside : public testing::TestWithParam<Signal> {
 protected:
  // As a user would go on, but without Qt's own handlers, in which nothing may be deleted.
  static const std::vector<std::function<void(StatusBench&)>>& walk() {
    static const std::vector<std::function<void(StatusBench&)>> kSteps = {
        [](StatusBench& bench) {
          bench.phone.defaults.setFromOutside("bluetoothStatus", std::string("A\nB\nC"));
          bench.tick();
        },
        [](StatusBench& bench) { bench.face().setProperty("viewWidth", 200); },
        [](StatusBench& bench) { bench.face().setProperty("viewWidth", 0); },
        [](StatusBench& bench) { bench.face().setProperty("textScale", 2); },
        [](StatusBench& bench) { bench.tick(); },
        [](StatusBench& bench) { bench.face().openSeatSelector(); },
        [](StatusBench& bench) { bench.wizard().pick(2); },
        [](StatusBench& bench) { bench.wizard().next(); },
        [](StatusBench& bench) { bench.wizard().back(); },
        [](StatusBench& bench) { bench.wizard().next(); },
        [](StatusBench& bench) { bench.wizard().pick(1); },
        [](StatusBench& bench) { bench.wizard().next(); },
        [](StatusBench& bench) { bench.wizard().pick(1); },
        [](StatusBench& bench) { bench.wizard().next(); },
        [](StatusBench& bench) { bench.tick(); },
        [](StatusBench& bench) { bench.face().openSeatSelector(); },
        [](StatusBench& bench) {
          bench.turn([&] { bench.phone.application.dismissPresentedScreens(); });
        },
        [](StatusBench& bench) { bench.tick(); },
        [](StatusBench& bench) { bench.panel().showSeatLUTPrecomputeProgressWithDone(0, 3, "1"); },
        [](StatusBench& bench) { bench.panel().showSeatLUTPrecomputeProgressWithDone(1, 3, "1"); },
        [](StatusBench& bench) {
          bench.phone.loop.runFor(milliseconds(10));
          bench.panel().showSeatLUTPrecomputeProgressWithDone(2, 3, "1");
        },
    };
    return kSteps;
  }
};

TEST_P(WindowDestroyedInside, EachTimeThatItIsSent) {
  StatusBenchSetup setup;
  setup.map = mapWithStanding();
  int acts = 0;
  for (int at = 1; at <= acts + 1; ++at) {
    StatusBench bench(setup);
    int seen = 0;
    bool isGone = false;
    GetParam().listen(bench.face(), [&] {
      if (++seen != at) return;
      ++acts;
      isGone = true;
      bench.destroyWindow();
    });
    for (const auto& step : walk()) {
      if (isGone) break;
      step(bench);
      bench.settle();
    }
    bench.phone.loop.runFor(milliseconds(2000));
    bench.settle();
  }
  EXPECT_GT(acts, 1);
}

INSTANTIATE_TEST_SUITE_P(, WindowDestroyedInside, testing::ValuesIn(kSignals),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace halvora
