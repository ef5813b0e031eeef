// SPDX-License-Identifier: Apache-2.0
// The venue on the console: an operator sends a look, and looks at the phones that show it.
#include <set>

#include "tests/apps/console/venue_bench.h"
#include "tests/faces/qt/committed_picture.h"
#include "tests/faces/qt/event_wait.h"

namespace halvora {
namespace {

constexpr int kSeats = kVenueRows * kVenueColumns;

TEST_F(VenueTest, EverySeatHasAPhone) {
  EXPECT_FALSE(venue().isOpen());
  open();
  EXPECT_EQ(venue().phones(), kSeats);
  EXPECT_EQ(venue().seats(), kSeats);
  EXPECT_FALSE(item("venueReading").isVisible());
  EXPECT_FALSE(item("phone").isVisible());
  EXPECT_EQ(venue().nameOf(seat(1, 2)), QStringLiteral("Hall, Row 2, Seat 3"));
  std::set<std::pair<double, double>> places;
  for (int at = 0; at < kSeats; ++at) {
    const QPointF middle = surface().placeOf(at).center();
    places.insert({middle.x(), middle.y()});
  }
  EXPECT_EQ(places.size(), static_cast<std::size_t>(kSeats));
}

TEST_F(VenueTest, FewerPhonesLeaveNoRowEmpty) {
  venue().setPhones(kSeats / 3);
  open();
  EXPECT_EQ(venue().seats(), kSeats);
  EXPECT_NEAR(venue().phones(), kSeats / 3, kVenueRows);
  std::set<QString> rows;
  for (int at = 0; at < venue().phones(); ++at) {
    rows.insert(venue().nameOf(at).section(QStringLiteral(", "), 1, 1));
  }
  EXPECT_EQ(rows.size(), static_cast<std::size_t>(kVenueRows));
}

TEST_F(VenueTest, ALookColoursAllPhones) {
  open();
  for (const auto& [swatch, colour] : {std::pair("swatch2", "#ff2d20"), {"swatch7", "#1f5bff"}}) {
    show(swatch);
    const QImage seen = picture();
    for (int at = 0; at < kSeats; ++at) {
      expectNear(seen.pixelColor(middleOfSeat(at).toPoint()), onSeat(QColor(colour)));
    }
  }
}

TEST_F(VenueTest, WithEverythingLostNoPhoneShines) {
  desk.setLoss(100);
  open();
  show("swatch7");
  for (int at = 0; at < kSeats; ++at) {
    EXPECT_EQ(crowd().lights()[static_cast<std::size_t>(at)], CrowdLight());
    EXPECT_FALSE(crowd().obeyed(static_cast<std::size_t>(at)));
  }
  EXPECT_EQ(seatColour(0), onSeat(Qt::black));
  desk.setLoss(0);
  pass(milliseconds(1500));
  expectNear(seatColour(0), onSeat(QColor("#1f5bff")));
}

TEST_F(VenueTest, EachPhoneHasAnAirOfItsOwn) {
  open();
  show("swatch2");
  desk.setLoss(50);
  const auto shownBy = [this](int red) {
    int count = 0;
    for (const CrowdLight& light : crowd().lights()) count += light.red == red ? 1 : 0;
    return count;
  };
  desk.setColour(Qt::black);
  pass(milliseconds(100));
  static_cast<void>(picture());
  EXPECT_GT(shownBy(255), kSeats / 4);
  EXPECT_LT(shownBy(255), kSeats * 3 / 4);
  EXPECT_EQ(shownBy(255) + shownBy(0), kSeats);
}

TEST_F(VenueTest, APixelMapIsAnotherColourInAnotherSeat) {
  makeVideo();
  open();
  desk.set(QStringLiteral("pixelMapId"), 1);
  pass(milliseconds(1500));
  const QImage seen = picture();
  for (int at = 0; at < kSeats; ++at) {
    const auto index = static_cast<std::size_t>(at);
    EXPECT_EQ(crowd().phone(index).state().screen.currentMode, 21U);
    const CrowdLight own = crowd().phone(index).light();
    expectNear(seen.pixelColor(middleOfSeat(at).toPoint()),
               onSeat(QColor(own.red, own.green, own.blue)));
  }
  // Encoding may cost a few levels.
  const auto expectColour = [&](int row, int column, const QColor& expected) {
    const QColor colour = seen.pixelColor(middleOfSeat(seat(row, column)).toPoint());
    const QColor wanted = onSeat(expected);
    EXPECT_NEAR(colour.red(), wanted.red(), 8) << row << ", " << column;
    EXPECT_NEAR(colour.green(), wanted.green(), 8) << row << ", " << column;
    EXPECT_NEAR(colour.blue(), wanted.blue(), 8) << row << ", " << column;
  };
  expectColour(1, 1, Qt::red);
  expectColour(1, 14, Qt::green);
  expectColour(10, 1, Qt::blue);
  expectColour(10, 14, Qt::white);
}

TEST_F(VenueTest, ATorchIsAWhiteMiddle) {
  open();
  show("swatch2");
  click("torch1");
  pass(milliseconds(200));
  EXPECT_EQ(seatColour(seat(3, 3)), QColor(Qt::white));
  click("torch0");
  pass(milliseconds(200));
  expectNear(seatColour(seat(3, 3)), onSeat(QColor("#ff2d20")));
}

TEST_F(VenueTest, AClickLooksAtThatPhone) {
  open();
  show("swatch7");
  const int chosen = seat(5, 3);
  clickAt(middleOfSeat(chosen));
  EXPECT_EQ(venue().chosen(), chosen);
  arrive();
  EXPECT_EQ(item("chosenSeat").property("text"), QStringLiteral("Hall, Row 6, Seat 4"));
  EXPECT_EQ(item("chosenStatus").property("text"), QStringLiteral("shows mode 1, Steady"));
  EXPECT_EQ(item("chosenPacket").property("text").toString().remove(QLatin1Char(' ')),
            QString::fromStdString(NSDataToHex(encodeBroadcast(desk.packet()))));
  EXPECT_GT(surface().zoom(), 1);
  // Its seat is beside what shows the phone, and its screen shows its light.
  EXPECT_LT(middleOfSeat(chosen).x(), item("venuePhone").mapToScene(QPointF()).x());
  expectNear(seatColour(chosen), onSeat(QColor("#1f5bff")));
  expectNear(picture().pixelColor(middleOf("venuePhoneLight").toPoint()), QColor("#1f5bff"));
  EXPECT_EQ(item("chosenRing").mapRectToScene(item("chosenRing").boundingRect()).center(),
            middleOfSeat(chosen));

  // Both go on with the show.
  showSwatch("swatch2");
  expectNear(seatColour(chosen), onSeat(QColor("#ff2d20")));
  expectNear(picture().pixelColor(middleOf("venuePhoneLight").toPoint()), QColor("#ff2d20"));
}

TEST_F(VenueTest, APhoneThatMissesALookStillShowsTheOneBefore) {
  open();
  show("swatch7");
  venue().choose(seat(2, 2));
  const QVariant packet = item("chosenPacket").property("text");
  desk.setLoss(100);
  showSwatch("swatch2");
  EXPECT_EQ(item("chosenPacket").property("text"), packet);
  expectNear(picture().pixelColor(middleOf("venuePhoneLight").toPoint()), QColor("#1f5bff"));
}

TEST_F(VenueTest, AClickBesideTheSeatsChoosesNone) {
  open();
  clickAt(surface().mapToScene(QPointF(2, 2)));
  EXPECT_EQ(venue().chosen(), -1);
}

TEST_F(VenueTest, EscapeGoesBackStepByStep) {
  open();
  show("swatch7");
  wheel(middleOfSeat(seat(6, 8)), 2);
  arrive();
  const double zoom = surface().zoom();
  clickAt(middleOfSeat(seat(6, 8)));
  arrive();
  EXPECT_NE(surface().zoom(), zoom);
  key(Qt::Key_Escape);
  EXPECT_EQ(venue().chosen(), -1);
  EXPECT_TRUE(venue().isOpen());
  arrive();
  EXPECT_NEAR(surface().zoom(), zoom, 1e-6);
  // The crowd hears of that phone again.
  showSwatch("swatch2");
  expectNear(seatColour(seat(6, 8)), onSeat(QColor("#ff2d20")));

  key(Qt::Key_Escape);
  EXPECT_FALSE(venue().isOpen());
  EXPECT_TRUE(item("phone").isVisible());
  EXPECT_TRUE(window().isVisible());
  desk.setOnAir(false);
  key(Qt::Key_Escape);
  EXPECT_FALSE(window().isVisible());
}

TEST_F(VenueTest, NamesTheStageAndItsSections) {
  open();
  const QVariantList sections = surface().sections();
  ASSERT_EQ(sections.size(), 1);
  const QVariantMap hall = sections.front().toMap();
  EXPECT_EQ(hall.value(QStringLiteral("name")).toString(), QStringLiteral("Hall"));
  const QRectF place = hall.value(QStringLiteral("place")).toRectF();
  for (const int corner : {seat(0, 0), static_cast<int>(crowd().size()) - 1}) {
    EXPECT_TRUE(place.adjusted(-1, -1, 1, 1).contains(surface().placeOf(corner)));
  }
  EXPECT_NEAR(surface().stageEdge(), surface().placeOf(seat(0, 0)).top(), 1);
  EXPECT_EQ(item("sectionName").property("text").toString(), QStringLiteral("Hall"));
  // They go with the seats.
  surface().zoomAt(QPointF(10, 10), 2);
  const QRectF closer =
      surface().sections().front().toMap().value(QStringLiteral("place")).toRectF();
  EXPECT_NEAR(closer.width(), 2 * place.width(), 1);
}

TEST_F(VenueTest, OffAirItSaysWhyPhonesGoOn) {
  open();
  show("swatch7");
  desk.setOnAir(false);
  settle();
  EXPECT_TRUE(item("venueHint").property("text").toString().startsWith("Off air:"));
}

TEST_F(VenueTest, WhatTheWheelPointsAtStaysThere) {
  open();
  const QPointF place = middleOfSeat(seat(8, 11));
  wheel(place, 3);
  EXPECT_GT(surface().zoom(), 1.5);
  EXPECT_NEAR(middleOfSeat(seat(8, 11)).x(), place.x(), 0.01);
  EXPECT_NEAR(middleOfSeat(seat(8, 11)).y(), place.y(), 0.01);
  EXPECT_EQ(surface().seatAt(surface().mapFromScene(place)), seat(8, 11));
  wheel(place, -30);
  EXPECT_EQ(surface().zoom(), 1);
}

TEST_F(VenueTest, DraggingMovesAndChoosesNothing) {
  open();
  wheel(middleOfSeat(seat(6, 8)), 6);
  const QPointF before = middleOfSeat(seat(6, 8));
  drag(before, before + QPointF(40, -30));
  EXPECT_NEAR(middleOfSeat(seat(6, 8)).x(), before.x() + 40, 0.01);
  EXPECT_NEAR(middleOfSeat(seat(6, 8)).y(), before.y() - 30, 0.01);
  EXPECT_EQ(venue().chosen(), -1);
}

TEST_F(VenueTest, TheKeyboardReachesEverySeat) {
  open();
  surface().forceActiveFocus(Qt::TabFocusReason);
  settle();
  ASSERT_GE(surface().cursor(), 0);
  for (int at = 0; at < kVenueColumns; ++at) key(Qt::Key_Left);
  for (int at = 0; at < kVenueRows; ++at) key(Qt::Key_Up);
  EXPECT_EQ(surface().cursor(), seat(0, 0));
  std::set<int> reached;
  for (int row = 0; row < kVenueRows; ++row) {
    for (int at = 0; at < kVenueColumns; ++at) {
      reached.insert(surface().cursor());
      key(row % 2 == 0 ? Qt::Key_Right : Qt::Key_Left);
    }
    key(Qt::Key_Down);
  }
  EXPECT_EQ(reached.size(), static_cast<std::size_t>(kSeats));
}

TEST_F(VenueTest, TheKeyboardZoomsMovesAndChooses) {
  open();
  surface().forceActiveFocus(Qt::TabFocusReason);
  key(Qt::Key_Plus);
  key(Qt::Key_Plus);
  arrive();
  EXPECT_NEAR(surface().zoom(), 2.25, 1e-6);
  // Whoever is at the keyboard sees where they are.
  for (int at = 0; at < kVenueColumns; ++at) {
    key(Qt::Key_Right);
    arrive();
    EXPECT_TRUE(surface().boundingRect().contains(surface().cursorPlace().center())) << at;
  }
  EXPECT_TRUE(item("cursorRing").isVisible());
  key(Qt::Key_Minus);
  arrive();
  EXPECT_NEAR(surface().zoom(), 1.5, 1e-6);
  key(Qt::Key_0);
  arrive();
  EXPECT_EQ(surface().zoom(), 1);
  const int cursor = surface().cursor();
  key(Qt::Key_Return);
  EXPECT_EQ(venue().chosen(), cursor);
}

TEST_F(VenueTest, ScreenReadersAreToldWhereTheKeyboardIs) {
  open();
  EXPECT_EQ(spokenNameOf(item("view1")), QStringLiteral("view Venue"));
  EXPECT_EQ(spokenNameOf(surface()), QStringLiteral("Venue with 192 phones"));
  surface().forceActiveFocus(Qt::TabFocusReason);
  for (int at = 0; at < kVenueColumns; ++at) key(Qt::Key_Left);
  for (int at = 0; at < kVenueRows; ++at) key(Qt::Key_Up);
  EXPECT_EQ(spokenNameOf(surface()), QStringLiteral("Venue with 192 phones, Hall, Row 1, Seat 1"));
  EXPECT_TRUE(surface().activeFocusOnTab());
}

TEST_F(VenueTest, OnlySeatsThatHaveChangedAreDrawn) {
  open();
  show("swatch7");
  static_cast<void>(picture());
  const std::uint64_t pictures = surface().picturesDrawn();
  const std::uint64_t seats = surface().seatsDrawn();
  Broadcast other = desk.packet();
  other.sequence = static_cast<std::uint16_t>(other.sequence + 100);
  other.red = 10;
  crowd().phone(7).hear(encodeBroadcast(other));
  settle();
  EXPECT_EQ(surface().picturesDrawn(), pictures + 1);
  EXPECT_EQ(surface().seatsDrawn(), seats + 1);
}

TEST_F(VenueTest, ASteadyLookDrawsNothing) {
  open();
  show("swatch7");
  static_cast<void>(picture());
  const std::uint64_t pictures = surface().picturesDrawn();
  pass(milliseconds(5000));
  EXPECT_EQ(surface().picturesDrawn(), pictures);
}

TEST_F(VenueTest, ClosedItCostsNothingAndComesBack) {
  open();
  show("swatch7");
  click("view0");
  EXPECT_FALSE(venue().isOpen());
  EXPECT_EQ(venue().crowd(), nullptr);
  EXPECT_FALSE(surface().isVisible());
  EXPECT_FALSE(surface().isMoving());
  open();
  pass(milliseconds(1000));
  expectNear(seatColour(0), onSeat(QColor("#1f5bff")));
}

TEST_F(VenueTest, AnotherNumberOfPhonesCountsAtOnce) {
  open();
  show("swatch7");
  venue().choose(3);
  venue().setPhones(kSeats / 2);
  pass(milliseconds(200));
  EXPECT_TRUE(venue().isReady());
  EXPECT_EQ(venue().chosen(), -1);
  EXPECT_NEAR(venue().phones(), kSeats / 2, kVenueRows);
}

TEST_F(VenueTest, AVenueWithoutAMapSaysSo) {
  std::filesystem::remove(folder.path() + "/HVAssets/Maps/Venue-7/map.json");
  click("view1");
  pass(milliseconds(200));
  EXPECT_FALSE(venue().isReady());
  EXPECT_EQ(item("venueMessage").property("text"),
            QStringLiteral("This venue has no map that can be read"));
  EXPECT_FALSE(item("venueProgress").isVisible());
  click("venueCancel");
  EXPECT_FALSE(venue().isOpen());
}

TEST_F(VenueTest, LooksAsItDid) {
  makeVideo();
  open();
  desk.set(QStringLiteral("pixelMapId"), 1);
  pass(milliseconds(1500));
  desk.playMap(false);
  click("torch1");
  venue().choose(seat(5, 7));
  arrive();
  pass(milliseconds(1000));
  const QRectF place = surface().mapRectToScene(surface().boundingRect());
  expectPicture(picture().copy(place.toAlignedRect()), "venue");
}

// A window with nothing in it but the venue, so that whatever is painted is the venue's.
struct VenueAlone : VenueFolder, testing::Test {
  VenueAlone() {
    venue.emplace(
        VenueShow::Parts{loop, queues, libraries, phone.mainBundle, phone.kitBundle, {}, 7});
    venue->setPhones(0);
    window.resize(200, 160);
    surface = new VenueSurface;
    surface->setParentItem(window.contentItem());
    surface->setParent(window.contentItem());
    surface->setSize(QSizeF(200, 160));
    surface->setVenue(&*venue);
    light = new LightSurface;
    light->setParentItem(window.contentItem());
    light->setParent(window.contentItem());
    light->setSize(QSizeF(20, 20));
    window.show();
    letQtWorkUntil([this] { return window.isExposed(); });
    QObject::connect(&window, &QQuickWindow::frameSwapped, [this] { ++frames; });
  }
  ~VenueAlone() override {
    window.close();
    ConsoleTest::settle();
  }

  void pass(Duration time) {
    const Duration end = loop.now() + time;
    while (loop.now() < end) {
      // Work in the background is done when a turn ends.
      loop.soon([] {});
      ASSERT_TRUE(loop.runFor(milliseconds(20)));
      ConsoleTest::settle();
    }
  }
  void open() {
    venue->setOpen(true);
    pass(milliseconds(1500));
    ASSERT_TRUE(venue->isReady());
  }
  /// Has what has happened drawn.
  void draw() {
    static_cast<void>(window.grabWindow());
    ConsoleTest::settle();
    frames = 0;
  }
  void send(std::uint16_t sequence, std::uint8_t red, std::uint8_t mode = 1) {
    Broadcast look;
    look.applicationId = 4242;
    look.venueId = 7;
    look.master = 255;
    look.red = red;
    look.mode = mode;
    look.speed = 200;
    look.sequence = sequence;
    look.transmitter = 1;
    venue->hear(encodeBroadcast(look), 0);
  }

  VirtualRunLoop loop;
  VirtualQueues queues{loop};
  DemoLibraries libraries;
  DemoPhone phone{{}, folder.path(), loop, queues, libraries};
  std::optional<VenueShow> venue;
  QQuickWindow window;
  VenueSurface* surface = nullptr;
  LightSurface* light = nullptr;
  int frames = 0;
};

TEST_F(VenueAlone, ASteadyLookWakesNoWindow) {
  open();
  send(1, 200);
  ConsoleTest::settle();
  EXPECT_TRUE(surface->isMoving()) << "it fades in";
  pass(milliseconds(2000));
  draw();
  draw();
  EXPECT_FALSE(surface->isMoving());
  for (int at = 0; at < 50; ++at) {
    send(1, 200);
    pass(milliseconds(100));
  }
  EXPECT_EQ(frames, 0);
  send(2, 100);
  pass(milliseconds(100));
  EXPECT_GT(frames, 0);
}

TEST_F(VenueAlone, ASteadyPhoneThatIsLookedAtWakesNoWindow) {
  venue->showOn(light);
  open();
  send(1, 200);
  pass(milliseconds(2000));
  venue->choose(3);
  EXPECT_TRUE(surface->isMoving()) << "on the way to the phone";
  pass(milliseconds(1000));
  draw();
  draw();
  EXPECT_FALSE(surface->isMoving());
  EXPECT_GT(surface->zoom(), 1);
  pass(milliseconds(3000));
  EXPECT_EQ(frames, 0);
}

TEST_F(VenueAlone, GoesDuringAShow) {
  venue->showOn(light);
  open();
  send(1, 200, 17);
  pass(milliseconds(1500));
  venue->choose(3);
  pass(milliseconds(200));
  venue.reset();
  pass(milliseconds(1000));
  EXPECT_EQ(surface->venue(), nullptr);
  EXPECT_TRUE(surface->placeOf(0).isEmpty());
}

TEST_F(VenueAlone, ItsSurfacesGoDuringAShow) {
  venue->showOn(light);
  open();
  send(1, 200, 17);
  pass(milliseconds(1500));
  venue->choose(3);
  pass(milliseconds(200));
  delete light;
  pass(milliseconds(200));
  venue->choose(4);
  delete surface;
  pass(milliseconds(1000));
  EXPECT_EQ(venue->chosen(), 4);
  EXPECT_TRUE(venue->goBack());
  EXPECT_TRUE(venue->goBack());
  EXPECT_FALSE(venue->goBack());
}

TEST_F(VenueAlone, ReadingIsCalledOff) {
  makeVideo();
  venue->setOpen(true);
  EXPECT_FALSE(venue->isReady());
  venue->setOpen(false);
  pass(milliseconds(500));
  EXPECT_FALSE(venue->isReady());
  EXPECT_EQ(venue->seats(), 0);
  std::vector<double> shares;
  QObject::connect(&*venue, &VenueShow::progressChanged,
                   [&] { shares.push_back(venue->progress()); });
  open();
  ASSERT_GT(shares.size(), 3U);
  EXPECT_EQ(shares.front(), 0);
  EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
  EXPECT_EQ(shares.back(), 1);
}

TEST_F(VenueAlone, AShowThatIsReplayedIsNewToAllPhones) {
  open();
  send(900, 200);
  pass(milliseconds(2000));
  venue->becomeActive();
  pass(milliseconds(1000));
  send(1, 100);
  pass(milliseconds(2500));
  draw();
  EXPECT_EQ(venue->crowd()->lights()[5].red, 100);
}

}  // namespace
}  // namespace halvora
