// SPDX-License-Identifier: Apache-2.0
#include <memory>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

/// A whole engine with its own torch, gobo, notices and clips, on a phone with an asset folder and
/// a documents folder.
class ShowPartsWiring : public testing::Test {
 protected:
  ShowPartsWiring() {
    for (const char* name : {"assets/HVAssets/Gobos/1.png", "assets/HVAssets/Gobos/3.png",
                             "assets/HVAssets/3.mp4", "assets/HVAssets/5.mp4",
                             "documents/arena/Gobo/3.png", "documents/Gobo/3.png", "Gobo/3.png"}) {
      files_.write(name, "");
    }
    phone_ = std::make_unique<VirtualPhone>(
        json_, VirtualPhoneSetup{.random = std::make_unique<ScriptedRandom>(),
                                 .documents = files_.path() + "/documents",
                                 .files = &disk_});
    phone_->mainBundle.folder = files_.path() + "/assets";
    engine_ = std::make_unique<ShowEngine>(phone_->platform());
  }

  void load(const char* bucket = nullptr) {
    if (bucket != nullptr) {
      phone_->defaults.setFromOutside("pairedBucketID", std::string(bucket));
    }
    engine_->viewDidLoad();
  }
  void startLoaded() {
    load();
    engine_->start();
  }
  void runTo(long long ms) { phone_->loop.runUntil(milliseconds(ms)); }

  void look(std::initializer_list<std::pair<BroadcastValue, int>> fields) {
    Broadcast broadcast;
    broadcast.applicationId = 258;
    for (const auto& [field, value] : fields) field.set(broadcast, value);
    engine_->processEffect(broadcast);
  }
  std::string gobo() const {
    const std::string& path = engine_->views().text(ViewId::goboImage);
    return path.empty() ? path : path.substr(files_.path().size() + 1);
  }
  std::string videoActs() {
    std::string text;
    for (const VideoEvent& event : phone_->videoLog.drain()) {
      constexpr const char* kNames[] = {" load ", " play", " pause", " seek "};
      text += (text.empty() ? "" : ", ") + std::string(1, event.player) +
              kNames[static_cast<std::size_t>(event.act)] + event.item;
      if (event.act == VideoAct::seek) text += std::to_string(event.position.count() / 1000);
    }
    return text;
  }
  ViewStack& views() { return engine_->views(); }

  TemporaryFolder files_;
  StandardFiles disk_;
  ExactJsonReader json_;
  std::unique_ptr<VirtualPhone> phone_;
  std::unique_ptr<ShowEngine> engine_;
};

using B = Broadcast;

TEST_F(ShowPartsWiring, TorchEffectsReachTheTorch) {
  startLoaded();
  look({{&B::ledMode, 5}, {&B::ledSpeed, 255}});
  runTo(50);
  EXPECT_TRUE(phone_->torch.isOn);
  runTo(60);
  EXPECT_FALSE(phone_->torch.isOn);
  look({{&B::ledMode, 1}});
  runTo(5000);
  EXPECT_TRUE(phone_->torch.isOn);
}

TEST_F(ShowPartsWiring, ResetTurnsTheTorchOffAndEndsItsEffect) {
  startLoaded();
  runTo(1000);
  look({{&B::ledMode, 6}, {&B::mode, 1}});
  runTo(1100);
  phone_->application.becomeActive();
  runTo(2000);
  EXPECT_FALSE(phone_->torch.isOn);
  const std::size_t writes = phone_->torch.log.entries.size();
  runTo(20'000);
  EXPECT_EQ(phone_->torch.log.entries.size(), writes);
}

TEST_F(ShowPartsWiring, FirstGoboOfTheBundleIsThereFromTheStart) {
  load();
  EXPECT_EQ(gobo(), "assets/HVAssets/Gobos/1.png");
}

TEST_F(ShowPartsWiring, GoboOfTheBucketComesBeforeTheBundles) {
  load("arena");
  look({{&B::mode, 1}, {&B::gobo, 3}});
  EXPECT_EQ(gobo(), "documents/arena/Gobo/3.png");
}

TEST_F(ShowPartsWiring, BucketsThatLeadOutOfTheDocumentsHoldNothing) {
  const std::string absolute = files_.path() + "/documents/arena";
  for (const char* bucket :
       {"", "..", "/", "../documents/arena", "nobody", "arena/../arena", absolute.c_str()}) {
    engine_ = std::make_unique<ShowEngine>(phone_->platform());
    load(bucket);
    look({{&B::mode, 1}, {&B::gobo, 3}});
    EXPECT_EQ(gobo(), "assets/HVAssets/Gobos/3.png") << bucket;
  }
}

TEST_F(ShowPartsWiring, BucketMayBeAnyFolderWithinTheDocuments) {
  for (const char* bucket : {"arena/", "./arena", "arena/."}) {
    engine_ = std::make_unique<ShowEngine>(phone_->platform());
    load(bucket);
    look({{&B::mode, 1}, {&B::gobo, 3}});
    EXPECT_TRUE(gobo().starts_with("documents/")) << bucket << ": " << gobo();
  }
}

TEST_F(ShowPartsWiring, BucketIsTheOneOfTheStart) {
  load();
  phone_->defaults.setFromOutside("pairedBucketID", std::string("arena"));
  look({{&B::mode, 1}, {&B::gobo, 3}});
  EXPECT_EQ(gobo(), "assets/HVAssets/Gobos/3.png");
}

TEST_F(ShowPartsWiring, MissingGoboShowsNothing) {
  load();
  look({{&B::mode, 1}, {&B::gobo, 9}});
  EXPECT_EQ(gobo(), "");
  EXPECT_EQ(views().alpha(ViewId::goboView), 1);
}

TEST_F(ShowPartsWiring, Gobo0FadesOutInMode10AndHidesAtOnceInOthers) {
  load();
  look({{&B::mode, 1}, {&B::gobo, 3}});
  look({{&B::mode, 10}, {&B::speed, 255}});
  EXPECT_EQ(views().alpha(ViewId::goboView), 0);
  EXPECT_EQ(views().shownAlpha(ViewId::goboView), 1) << "it fades";
  runTo(300);
  look({{&B::mode, 1}, {&B::gobo, 3}});
  look({{&B::mode, 2}});
  EXPECT_EQ(views().shownAlpha(ViewId::goboView), 0) << "it does not";
}

TEST_F(ShowPartsWiring, NoticesHaveTheKitsTexts) {
  phone_->kitBundle.strings = {{"hv_map_no_seat_overlay_message", "Kein Platz"},
                               {"hv_low_light_hint", "Weiter geht's"}};
  phone_->mainBundle.strings = {{"hv_low_light_hint", "of the host"}};
  load();
  EXPECT_EQ(views().text(ViewId::mapNoSeatOverlayLabel), "Kein Platz");
  EXPECT_EQ(views().text(ViewId::lowLightHintLabel), "Weiter geht's");
}

TEST_F(ShowPartsWiring, NoticesFallBackToEnglish) {
  phone_->kitBundle.strings = {{"hv_map_no_seat_overlay_message", ""}};
  load();
  EXPECT_EQ(views().text(ViewId::mapNoSeatOverlayLabel),
            "No seat selected for this part of the light show.\n"
            "Keep the app open to continue taking part.");
  EXPECT_EQ(views().text(ViewId::lowLightHintLabel),
            "Light show active. Please keep the app open.");
}

TEST_F(ShowPartsWiring, DarkLookBringsTheHintAndTheNextBrightPollTakesIt) {
  load();
  look({{&B::mode, 1}, {&B::red, 14}, {&B::green, 14}, {&B::blue, 14}});
  runTo(5499);
  EXPECT_TRUE(views().isHidden(ViewId::lowLightHintLabel));
  runTo(5500);
  EXPECT_FALSE(views().isHidden(ViewId::lowLightHintLabel));
  look({{&B::mode, 1}, {&B::red, 15}});
  runTo(6000);
  EXPECT_TRUE(views().isHidden(ViewId::lowLightHintLabel));
}

TEST_F(ShowPartsWiring, NoticeOfMode50KeepsTheHintAwayUntilTheNextMode) {
  load();
  look({{&B::mode, 3}, {&B::pixelMapId, 2}});
  EXPECT_FALSE(views().isHidden(ViewId::mapNoSeatOverlayView));
  runTo(20'000);
  EXPECT_TRUE(views().isHidden(ViewId::lowLightHintLabel));
  look({{&B::mode, 22}});
  runTo(20'120);
  EXPECT_TRUE(views().isHidden(ViewId::mapNoSeatOverlayView));
  runTo(25'499);
  EXPECT_TRUE(views().isHidden(ViewId::lowLightHintLabel));
  runTo(25'500);
  EXPECT_FALSE(views().isHidden(ViewId::lowLightHintLabel));
}

TEST_F(ShowPartsWiring, LowLightPollEndsWithTheEngine) {
  load();
  engine_.reset();
  runTo(60'000);
  EXPECT_EQ(phone_->loop.turns(), 0U);
}

TEST_F(ShowPartsWiring, NoClipStartsWithinFourSecondsOfTheStart) {
  startLoaded();
  look({{&B::mode, 1}, {&B::videoStatus, 1}, {&B::seconds, 12}, {&B::hundredths, 34}});
  engine_->playVideo("3");
  EXPECT_EQ(videoActs(), "A load 3, B pause");
  runTo(3999);
  EXPECT_EQ(videoActs(), "");
  runTo(4000);
  EXPECT_EQ(videoActs(), "A seek 13000, A play");
}

TEST_F(ShowPartsWiring, PositionsWithinASecondBeginAtTheSameOne) {
  startLoaded();
  runTo(5000);
  for (const int hundredths : {34, 99}) {
    look({{&B::mode, 1}, {&B::videoStatus, 1}, {&B::seconds, 12}, {&B::hundredths, hundredths}});
    EXPECT_EQ(engine_->state().video.currentVideoMilliseconds, 12'000 + 10 * hundredths);
    engine_->playVideo("3");
    runTo(5000 + 10 * hundredths);
    EXPECT_NE(videoActs().find("seek 13000"), std::string::npos) << hundredths;
  }
}

TEST_F(ShowPartsWiring, BroadcastStartsNoClip) {
  startLoaded();
  runTo(5000);
  for (const int video : {1, 3, 10, 11, 255}) {
    look({{&B::mode, 1}, {&B::videoStatus, 1}, {&B::videoId, video}});
    runTo(5000 + 100 * video);
    EXPECT_EQ(engine_->state().video.currentVideoId, 0) << video;
  }
  EXPECT_EQ(videoActs(), "");
}

TEST_F(ShowPartsWiring, NextLookFadesTheClipOutAndThenPausesIt) {
  startLoaded();
  runTo(5000);
  look({{&B::mode, 1}, {&B::videoStatus, 1}});
  engine_->playVideo("3");
  runTo(6500);
  EXPECT_EQ(views().alpha(ViewId::playerViewA), 1);
  videoActs();
  look({{&B::mode, 1}, {&B::blue, 1}});
  EXPECT_EQ(views().alpha(ViewId::playerViewA), 0);
  runTo(6999);
  EXPECT_EQ(videoActs(), "");
  runTo(7000);
  EXPECT_EQ(videoActs(), "A pause, B pause");
}

TEST_F(ShowPartsWiring, NextLookEndsTheWaitOfAClip) {
  startLoaded();
  engine_->playVideo("3");
  look({{&B::mode, 1}, {&B::videoStatus, 1}});
  videoActs();
  runTo(20'000);
  EXPECT_EQ(videoActs(), "A pause, B pause");
}

TEST_F(ShowPartsWiring, ResetPausesBothPlayersAndClearsTheClip) {
  startLoaded();
  runTo(4500);
  look({{&B::mode, 1}, {&B::videoStatus, 1}, {&B::seconds, 9}});
  engine_->playVideo("9");
  EXPECT_EQ(videoActs(), "A load 9, B pause") << "there is no such clip";
  phone_->application.becomeActive();
  runTo(5000);
  EXPECT_EQ(videoActs(), "A pause, B pause");
  const VideoState& video = engine_->state().video;
  EXPECT_FALSE(video.videoCanPlay);
  EXPECT_FALSE(video.isCatchingUp);
  EXPECT_EQ(video.currentVideoId, 0);
  EXPECT_EQ(video.currentVideoStatus, 0);
  EXPECT_EQ(video.currentVideoMilliseconds, 0);
  EXPECT_EQ(video.videoPlayTimer, TimerId{0});
}

TEST_F(ShowPartsWiring, NoClipStartsWithinFourSecondsOfAReset) {
  startLoaded();
  runTo(4500);
  phone_->application.becomeActive();
  runTo(5000);
  videoActs();
  look({{&B::mode, 1}, {&B::videoStatus, 1}});
  engine_->playVideo("3");
  runTo(8999);
  EXPECT_EQ(videoActs(), "A load 3, B pause");
  runTo(9000);
  EXPECT_EQ(videoActs(), "A seek 0, A play");
}

TEST_F(ShowPartsWiring, SeekThatCompletesAfterTheEngineIsGonePlaysNothing) {
  startLoaded();
  runTo(5000);
  look({{&B::mode, 1}, {&B::videoStatus, 1}});
  phone_->playerA.holdsSeeks = true;
  engine_->playVideo("3");
  runTo(5010);
  EXPECT_EQ(videoActs(), "A load 3, B pause, A seek 0");
  engine_.reset();
  phone_->playerA.completeSeek();
  EXPECT_EQ(videoActs(), "");
}

// Where no path leads to: the phone's own files are all that is asked.
TEST(ShowPartsInMemory, GobosAndClipsAreFoundThere) {
  const ExactJsonReader json;
  VirtualPhone phone(json, {.random = nullptr, .documents = "/documents"});
  phone.mainBundle.folder = "/packed";
  for (const char* name : {"/packed/HVAssets/Gobos/1.png", "/packed/HVAssets/Gobos/3.png",
                           "/packed/HVAssets/3.mp4", "/documents/arena/Gobo/4.png"}) {
    phone.virtualFiles.put(name, "");
  }
  phone.defaults.setFromOutside("pairedBucketID", std::string("arena"));
  ShowEngine engine(phone.platform());
  engine.viewDidLoad();
  const auto shown = [&engine] { return engine.views().text(ViewId::goboImage); };
  EXPECT_EQ(shown(), "/packed/HVAssets/Gobos/1.png");
  engine.processEffect({.applicationId = 258, .mode = 1, .gobo = 3});
  EXPECT_EQ(shown(), "/packed/HVAssets/Gobos/3.png");
  engine.processEffect({.applicationId = 258, .mode = 1, .gobo = 4});
  EXPECT_EQ(shown(), "/documents/arena/Gobo/4.png");
  for (const char* clip : {"3", "5"}) engine.playVideo(clip);
  EXPECT_EQ(phone.playerB.item().path + "|" + phone.playerA.item().path, "|/packed/HVAssets/3.mp4");
}

}  // namespace
}  // namespace halvora
