// SPDX-License-Identifier: Apache-2.0
// Pictures over the light under the flash limit: what they do to the mean of a screen is found out
// on a queue, and until then nothing is shown that nobody has judged.
#include "light/gobo_means.h"

#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "light/display_list.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/support/step_queue.h"

namespace halvora {
namespace {

constexpr Size kContainer{390, 844};
constexpr std::uint8_t kGrey = 128;

/// Knows whether it is asked from a queue's task.
struct WatchedDecoder final : ImageDecoder {
  std::optional<Image> decode(std::string_view bytes) const override {
    ++(isOnQueue ? onQueue : inTurns);
    if (hasNoMemory) throw std::bad_alloc();
    return plain.decode(bytes);
  }

  PixmapDecoder plain;
  bool isOnQueue = false;
  bool hasNoMemory = false;
  mutable int onQueue = 0;
  mutable int inTurns = 0;
};

/// One queue for all, whose tasks run when the test says so.
struct StepQueues final : SerialQueues {
  struct Line final : SerialQueue {
    explicit Line(StepQueue& theQueue) : queue(theQueue) {}
    const std::string& label() const override { return queue.label(); }
    bool dispatch(Task task) override { return queue.dispatch(std::move(task)); }
    StepQueue& queue;
  };
  std::unique_ptr<SerialQueue> make(std::string_view) override {
    return std::make_unique<Line>(queue);
  }
  StepQueue queue;
};

struct CountingFace final : LightObserver {
  void lightChanged() override { ++told; }
  void lightEnds() override {}
  int told = 0;
};

struct GoboMeansTest : testing::Test {
  GoboMeansTest() {
    const std::string picture = pixmapOf(4, 4, kGrey, kGrey, kGrey);
    for (const char* name : {"1.png", "2.png", "3.png"}) {
      phone.virtualFiles.put(std::string("/assets/HVAssets/Gobos/") + name, picture);
    }
    phone.mainBundle.files = &phone.files;
    phone.mainBundle.folder = "/assets";
  }

  static VirtualPhoneSetup setupOf(const ImageDecoder& images) {
    VirtualPhoneSetup setup;
    setup.images = &images;
    return setup;
  }
  void begin(const LightLimits& limits, PictureMeans* shared = nullptr) {
    Platform platform = phone.platform();
    platform.queues = queues;
    ShowEngineOptions options;
    options.limits = limits;
    options.pictures = shared;
    engine.emplace(platform, std::move(options));
    engine->viewDidLoad();
  }
  void show(std::uint8_t gobo, std::uint8_t level = 255) {
    Broadcast look;
    look.applicationId = 1;
    look.master = 255;
    look.red = look.green = look.blue = level;
    look.mode = 1;
    look.gobo = gobo;
    EXPECT_EQ(engine->processEffect(look), PacketFate::processed);
  }
  void pass(int time) { EXPECT_TRUE(phone.loop.runFor(milliseconds(time))); }
  /// As a face does, until the light has faded in.
  void playFrames() {
    for (int frame = 0; frame < 125; ++frame) {
      pass(16);
      showsAPicture();
    }
  }
  void decodeAll() {
    images.isOnQueue = true;
    queues.queue.runAll();
    images.isOnQueue = false;
    pass(0);
  }
  double shown() { return engine->shownScreen().green; }
  bool showsAPicture() {
    for (const DisplayItem& item : displayListOf(engine->views(), kContainer)) {
      if (item.content == ViewContent::image && item.opacity > 0) return true;
    }
    return false;
  }

  ExactJsonReader json;
  WatchedDecoder images;
  VirtualPhone phone{json, setupOf(images)};
  StepQueues queues;
  std::optional<ShowEngine> engine;
};

TEST_F(GoboMeansTest, NoTurnOfAShowDecodesAPicture) {
  begin({.flash = FlashPolicy::limited});
  for (std::uint8_t gobo = 1; gobo <= 3; ++gobo) {
    show(gobo);
    playFrames();
    decodeAll();
    playFrames();
    EXPECT_TRUE(showsAPicture());
    EXPECT_NEAR(shown(), kGrey / 255.0, 1e-9);
  }
  EXPECT_EQ(images.inTurns, 0);
  // Each once, however often it was asked for.
  EXPECT_EQ(images.onQueue, 3);
}

TEST_F(GoboMeansTest, WhatNobodyHasJudgedWaitsWithTheLightThatWasThere) {
  begin({.flash = FlashPolicy::limited});
  decodeAll();
  show(0, 50);
  playFrames();
  const double before = shown();
  EXPECT_GT(before, 0);
  show(2);
  pass(100);
  EXPECT_EQ(shown(), before);
  EXPECT_FALSE(showsAPicture());
  decodeAll();
  playFrames();
  EXPECT_NEAR(shown(), kGrey / 255.0, 1e-9);
  EXPECT_TRUE(showsAPicture());
}

TEST_F(GoboMeansTest, DarknessDoesNotWaitForAPicture) {
  begin({.flash = FlashPolicy::limited});
  decodeAll();
  show(0, 200);
  playFrames();
  show(2);
  pass(20);
  EXPECT_GT(shown(), 0);
  engine->leave();
  EXPECT_EQ(shown(), 0);
  EXPECT_EQ(images.inTurns, 0);
}

// Nothing of what it shows is known then.
TEST_F(GoboMeansTest, ALimitThatBeginsUnderAPictureIsBlackUntilItIsKnown) {
  begin({});
  show(2);
  pass(1000);
  EXPECT_TRUE(showsAPicture());
  engine->setLimits({.flash = FlashPolicy::limited});
  EXPECT_EQ(shown(), 0);
  EXPECT_FALSE(showsAPicture());
  decodeAll();
  EXPECT_NEAR(shown(), kGrey / 255.0, 1e-9);
  EXPECT_EQ(images.inTurns, 0);
}

TEST_F(GoboMeansTest, AFaceIsToldWhenThePictureMayBeShown) {
  begin({.flash = FlashPolicy::limited});
  decodeAll();
  show(2);
  pass(100);
  CountingFace face;
  const Light light(engine->views());
  light.setObserver(&face);
  decodeAll();
  EXPECT_GT(face.told, 0);
  light.setObserver(nullptr);
}

// As it was before there were queues: late, but never wrong.
TEST_F(GoboMeansTest, WithoutAThreadItIsMadeAtOnce) {
  queues.queue.isRefusing = true;
  begin({.flash = FlashPolicy::limited});
  show(2);
  playFrames();
  EXPECT_NEAR(shown(), kGrey / 255.0, 1e-9);
  EXPECT_GT(images.inTurns, 0);
}

TEST_F(GoboMeansTest, APictureWithoutMemoryIsAskedForAgainAfterAnother) {
  begin({.flash = FlashPolicy::limited});
  const auto showAndDecode = [this](std::uint8_t gobo) {
    show(gobo);
    playFrames();
    decodeAll();
    playFrames();
    decodeAll();
  };
  images.hasNoMemory = true;
  showAndDecode(2);
  // As for a picture that cannot be read: a face has no memory for it either.
  EXPECT_EQ(shown(), 1);
  EXPECT_EQ(images.onQueue, 1);
  images.hasNoMemory = false;
  showAndDecode(3);
  showAndDecode(2);
  EXPECT_EQ(images.onQueue, 3);
  EXPECT_EQ(images.inTurns, 0);
  EXPECT_NEAR(shown(), kGrey / 255.0, 1e-9);
}

TEST_F(GoboMeansTest, AnEngineMayGoWithAPictureOnItsWay) {
  begin({.flash = FlashPolicy::limited});
  show(2);
  pass(0);
  EXPECT_GT(queues.queue.waiting(), 0U);
  engine.reset();
  decodeAll();
  EXPECT_EQ(images.onQueue, 0);
}

TEST_F(GoboMeansTest, WithoutALimitNobodyLooksIntoPictures) {
  begin({.mostBrightness = 0.6});
  show(2);
  pass(1000);
  EXPECT_TRUE(showsAPicture());
  EXPECT_EQ(images.onQueue + images.inTurns, 0);
  EXPECT_EQ(queues.queue.waiting(), 0U);
}

TEST_F(GoboMeansTest, EnginesThatSharePicturesHaveThemInTheCall) {
  Platform platform = phone.platform();
  PictureMeans shared{Pictures(platform)};
  begin({.flash = FlashPolicy::limited}, &shared);
  show(2);
  playFrames();
  EXPECT_NEAR(shown(), kGrey / 255.0, 1e-9);
  EXPECT_EQ(queues.queue.waiting(), 0U);
}

}  // namespace
}  // namespace halvora
