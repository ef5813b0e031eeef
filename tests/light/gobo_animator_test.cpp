// SPDX-License-Identifier: Apache-2.0
#include "light/gobo_animator.h"

#include <filesystem>
#include <memory>
#include <set>
#include <utility>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_storage.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/light/light_room.h"

namespace halvora {
namespace {

const std::string kGobos = "host/HVAssets/Gobos/";

/// The gobo animator alone, with folders of its own: "bundle" stands for that of a host's bundle.
/// An event is the picture shown, relative to those folders ("-" for none, as it is where it is in
/// none of them), or the start of a fade of the gobo view.
class GoboRoom final : private ViewObserver {
 public:
  explicit GoboRoom(std::vector<std::uint32_t> draws = {}) : random(Rule::least, std::move(draws)) {
    views.setObserver(this);
    state.currentGobo = 3;
  }

  void build(std::initializer_list<const char*> names) {
    for (const std::string name : names) {
      const bool isBundled = name.starts_with("bundle/");
      files.write(isBundled ? kGobos + name.substr(7) : name, "");
    }
    gobo.build(std::make_shared<const std::string>(files.path() + "/documents"));
    events.clear();
  }
  /// Picks a picture for the gobo in force and says which.
  std::string change() {
    gobo.changeGobo();
    return shown();
  }
  std::string shown() const {
    const std::string& path = views.text(ViewId::goboImage);
    if (path.empty()) return "-";
    if (!path.starts_with(files.path() + "/")) return path;
    const std::string name = path.substr(files.path().size() + 1);
    return name.starts_with(kGobos) ? "bundle/" + name.substr(kGobos.size()) : name;
  }
  /// As a look with the gobo does before it pulses.
  void enter(std::uint32_t mode, int speed) {
    state.currentGoboMode = mode;
    state.currentGoboSpeed = speed;
  }
  Events runFor(long long ms) {
    loop.runFor(milliseconds(ms));
    return std::exchange(events, {});
  }

  TemporaryFolder files;
  VirtualRunLoop loop;
  TimerSet timers{loop};
  ViewStack views{timers};
  GoboState state;
  ScriptedRandom random;
  StandardFiles disk;
  FolderBundle host{disk, files.path() + "/host", "com.example.host"};
  GoboAnimator gobo{state, views, disk, host, random};
  Events events;

 private:
  void alphaChanged(ViewId view, double alpha, Duration duration) override {
    EXPECT_EQ(view, ViewId::goboView);
    events.push_back(textOf(loop.now()) + (alpha == 1 ? " in " : " out ") + textOf(duration));
  }
  void textChanged(ViewId view, const std::string& /*text*/) override {
    EXPECT_EQ(view, ViewId::goboImage);
    events.push_back(textOf(loop.now()) + " " + shown());
  }
};

TEST(GoboName, SaysHowManyVariantsItsSetHas) {
  EXPECT_EQ(variantsNamedBy("3_1_4.png", 3), 4);
  EXPECT_EQ(variantsNamedBy("3_1_12", 3), 12);
  EXPECT_EQ(variantsNamedBy("3_1_4x9.png", 3), 4) << "leading digits";
  EXPECT_EQ(variantsNamedBy("3_1_x.png", 3), 0);
  EXPECT_EQ(variantsNamedBy("3_1_", 3), 0);
  EXPECT_EQ(variantsNamedBy("1_10_2.png", 1), 2) << "only the beginning of the name counts";
  EXPECT_EQ(variantsNamedBy("3_17_5.png", 3), 5);
}

TEST(GoboName, OfAnotherGoboOrAnotherVariantIsNoBeginning) {
  for (const char* name : {"", "3", "3_", "3.png", "3_2_4.png", "13_1_4.png", "31_1_4.png",
                           " 3_1_4.png", "03_1_4.png", "x3_1_4.png", "3-1-4.png"}) {
    EXPECT_FALSE(variantsNamedBy(name, 3)) << name;
  }
}

TEST(GoboName, WithMoreOrFewerPartsIsABeginningThatSaysNothing) {
  for (const char* name : {"3_1", "3_1.png", "3_10.png", "3_1_4_.png", "3_1_4_5.png", "3_1__"}) {
    GoboRoom room;
    room.build({(std::string("documents/") + name).c_str(), "bundle/3.png"});
    EXPECT_TRUE(variantsNamedBy(name, 3)) << name;
    EXPECT_EQ(room.change(), "-") << name << ": a set of no variants is found all the same";
    EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{0}) << name;
  }
}

TEST(GoboChoice, SinglePictureOfTheDocumentsComesFirst) {
  GoboRoom room;
  room.build({"documents/3.png", "documents/3_1_2.png", "bundle/3_1_2.png", "bundle/3.png"});
  EXPECT_EQ(room.change(), "documents/3.png");
  EXPECT_EQ(room.random.log.entries.size(), 0U);
  EXPECT_EQ(room.state.currentRandomIndex, 0);
}

TEST(GoboChoice, VariantsOfTheDocumentsComeSecond) {
  GoboRoom room;
  room.build({"documents/3_1_2.png", "bundle/3_1_4.png", "bundle/3.png"});
  EXPECT_EQ(room.change(), "documents/3_1_2.png");
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{2});
}

TEST(GoboChoice, VariantsOfTheBundleComeThird) {
  GoboRoom room({2});
  room.build({"documents/4.png", "bundle/3_1_4.png", "bundle/3_3_4.png", "bundle/3.png"});
  EXPECT_EQ(room.change(), "bundle/3_3_4.png");
  EXPECT_EQ(room.state.currentRandomIndex, 3);
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{4});
}

TEST(GoboChoice, SinglePictureOfTheBundleComesLast) {
  GoboRoom room;
  room.build({"documents/4.png", "bundle/3_2_4.png", "bundle/3.png"});
  EXPECT_EQ(room.change(), "bundle/3.png") << "a set begins with its first variant";
  EXPECT_EQ(room.random.log.entries.size(), 0U);
}

TEST(GoboChoice, MissingPictureShowsNothing) {
  GoboRoom room;
  room.build({"bundle/1.png", "bundle/2.png"});
  room.state.currentGobo = 2;
  EXPECT_EQ(room.change(), "bundle/2.png");
  room.state.currentGobo = 3;
  EXPECT_EQ(room.change(), "-");
}

TEST(GoboChoice, MissingVariantShowsNothingAndLooksNowhereElse) {
  GoboRoom room({1});
  room.build({"documents/3_1_4.png", "bundle/3_2_4.png", "bundle/3.png"});
  EXPECT_EQ(room.change(), "-");
  EXPECT_EQ(room.state.currentRandomIndex, 2);
}

TEST(GoboChoice, WithoutFoldersShowsNothing) {
  GoboRoom room;
  const FolderBundle nowhere(room.disk, "", "com.example.host");
  GoboAnimator gobo(room.state, room.views, room.disk, nowhere, room.random);
  gobo.build(nullptr);
  gobo.changeGobo();
  EXPECT_EQ(room.shown(), "-");
}

TEST(GoboVariants, NeverTheSameTwiceRunning) {
  GoboRoom room({0, 0, 1, 3, 3, 2});
  room.build(
      {"documents/3_1_4.png", "documents/3_2_4.png", "documents/3_3_4.png", "documents/3_4_4.png"});
  Events shown;
  for (int change = 0; change < 6; ++change) shown.push_back(room.change());
  // Drawn again, the first gives way to the second, any other to the one before it.
  EXPECT_EQ(shown, (Events{"documents/3_1_4.png", "documents/3_2_4.png", "documents/3_1_4.png",
                           "documents/3_4_4.png", "documents/3_3_4.png", "documents/3_2_4.png"}));
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>(6, 4));
}

TEST(GoboVariants, AreAllShownInTheLongRun) {
  GoboRoom room;
  room.build(
      {"documents/3_1_4.png", "documents/3_2_4.png", "documents/3_3_4.png", "documents/3_4_4.png"});
  SeededRandom random(1);
  GoboAnimator gobo(room.state, room.views, room.disk, room.host, random);
  gobo.build(std::make_shared<const std::string>(room.files.path() + "/documents"));
  std::set<std::string> all;
  std::string last;
  for (int change = 0; change < 200; ++change) {
    gobo.changeGobo();
    EXPECT_NE(room.shown(), last);
    last = room.shown();
    all.insert(last);
  }
  EXPECT_EQ(all.size(), 4U);
  EXPECT_EQ(all.count("-"), 0U);
}

TEST(GoboVariants, SetOfOneGoesDarkEverySecondTime) {
  GoboRoom room;
  room.build({"documents/3_1_1.png"});
  EXPECT_EQ(room.change(), "documents/3_1_1.png");
  EXPECT_EQ(room.change(), "-") << "its second variant, which it has not";
  EXPECT_EQ(room.state.currentRandomIndex, 2);
  EXPECT_EQ(room.change(), "documents/3_1_1.png");
}

TEST(GoboVariants, LastOneCountsForEveryGoboAlike) {
  GoboRoom room({1, 1});
  room.build(
      {"documents/3_1_4.png", "documents/3_2_4.png", "bundle/5_1_3.png", "bundle/5_2_3.png"});
  EXPECT_EQ(room.change(), "documents/3_2_4.png");
  room.state.currentGobo = 5;
  EXPECT_EQ(room.change(), "bundle/5_1_3.png") << "2 was shown last, of whatever gobo";
}

TEST(GoboVariants, TenthVariantCountsAsABeginningToo) {
  GoboRoom room({1});
  room.build({"documents/1_10_2.png", "documents/1_2_2.png", "bundle/1.png"});
  room.state.currentGobo = 1;
  EXPECT_EQ(room.change(), "documents/1_2_2.png");
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{2});
}

TEST(GoboVariants, GreatestNameSaysHowManyInWhateverOrderTheyCame) {
  for (const auto& names : {std::pair{"bundle/3_1_4.png", "bundle/3_1_9.png"},
                            std::pair{"bundle/3_1_9.png", "bundle/3_1_4.png"}}) {
    GoboRoom room;
    room.build({names.first, names.second, "bundle/3_10_7.png"});
    EXPECT_EQ(room.change(), "bundle/3_1_9.png");
  }
}

TEST(GoboVariants, NameThatSaysNothingDoesNotClearTheNumber) {
  GoboRoom room;
  room.build({"bundle/3_1_4.png", "bundle/3_1z.png", "bundle/3_1_5_6.png"});
  EXPECT_EQ(room.change(), "bundle/3_1_4.png");
}

TEST(GoboVariants, AbsurdNumbersShowNothing) {
  for (const char* name : {"documents/3_1_0.jpg", "documents/3_1_99999999999999999999.jpg",
                           "documents/3_1_4294967297.jpg", "documents/3_1_-4.jpg"}) {
    GoboRoom room;
    room.build({name, "bundle/3.png"});
    EXPECT_EQ(room.change(), "-") << name;
  }
}

// Of files that are on no disk: the same choice, and nothing else is asked.
TEST(GoboFolder, MayBeAnywhereThatFilesAre) {
  VirtualRunLoop loop;
  TimerSet timers(loop);
  ViewStack views(timers);
  GoboState state;
  ScriptedRandom random(Rule::least);
  VirtualFiles packed;
  VirtualBundle host("com.example.host");
  host.files = &packed;
  host.folder = "/packed";
  GoboAnimator gobo(state, views, packed, host, random);
  for (const char* name : {"/packed/HVAssets/Gobos/1.png", "/packed/HVAssets/Gobos/3_1_2.png",
                           "/packed/HVAssets/Gobos/3_2_2.png", "/packed/bucket/Gobo/4.png"}) {
    packed.put(name, "");
  }
  gobo.build(std::make_shared<const std::string>("/packed/bucket/Gobo"));
  EXPECT_EQ(views.text(ViewId::goboImage), "/packed/HVAssets/Gobos/1.png");
  state.currentGobo = 3;
  gobo.changeGobo();
  EXPECT_EQ(views.text(ViewId::goboImage), "/packed/HVAssets/Gobos/3_1_2.png");
  state.currentGobo = 4;
  gobo.changeGobo();
  EXPECT_EQ(views.text(ViewId::goboImage), "/packed/bucket/Gobo/4.png");
  state.currentGobo = 5;
  gobo.changeGobo();
  EXPECT_EQ(views.text(ViewId::goboImage), "");
}

TEST(GoboFolder, OfABundleThatHasNoneIsNamedWithinTheBundle) {
  GoboRoom room;
  VirtualBundle host("com.example.host");
  host.resources["HVAssets/Gobos/3.png"] = "a picture";
  GoboAnimator gobo(room.state, room.views, room.disk, host, room.random);
  gobo.build(nullptr);
  gobo.changeGobo();
  EXPECT_EQ(room.views.text(ViewId::goboImage), "HVAssets/Gobos/3.png");
}

TEST(GoboFolder, PipeIsNoPicture) {
  GoboRoom room;
  room.build({"bundle/1.png"});
  ASSERT_EQ(mkfifo((room.files.path() + "/" + kGobos + "3.png").c_str(), 0600), 0);
  EXPECT_EQ(room.change(), "-");
}

TEST(GoboFolder, ThatCannotBeListedHoldsNoSet) {
  GoboRoom room;
  room.build({"a_file", "bundle/3.png"});
  const std::string& root = room.files.path();
  std::filesystem::create_directory_symlink(root + "/loop", root + "/loop");
  for (const std::string& folder :
       {root + "/absent", root + "/a_file", root + "/loop", root + "/" + std::string(300, 'x')}) {
    room.gobo.build(std::make_shared<const std::string>(folder));
    EXPECT_EQ(room.change(), "bundle/3.png") << folder;
    const FolderBundle host(room.disk, folder, "com.example.host");
    GoboAnimator gobo(room.state, room.views, room.disk, host, room.random);
    gobo.build(std::make_shared<const std::string>(root + "/host/HVAssets/Gobos"));
    gobo.changeGobo();
    EXPECT_EQ(room.shown(), "bundle/3.png") << folder;
    gobo.build(nullptr);
    gobo.changeGobo();
    EXPECT_EQ(room.shown(), "-") << folder;
  }
}

TEST(GoboFolder, FolderIsNoPicture) {
  GoboRoom room;
  room.build({"documents/3.png/inside", "bundle/3_1_2.png/inside"});
  EXPECT_EQ(room.change(), "-");
  EXPECT_EQ(room.random.log.entries, std::vector<std::uint32_t>{2})
      << "as an entry its name counts all the same";
}

TEST(GoboFolder, MayHoldThousandsOfEntries) {
  GoboRoom room({2});
  for (int at = 0; at < 3000; ++at) room.files.write(kGobos + std::to_string(at) + ".txt", "");
  room.build({"bundle/3_1_3.png", "bundle/3_3_3.png"});
  EXPECT_EQ(room.change(), "bundle/3_3_3.png");
}

TEST(GoboFolder, MayHoldNamesThatAreNoText) {
  GoboRoom room;
  room.build({"bundle/\xFF\xFE\x80", "bundle/3_1_\xFF", "bundle/3_\n1", "bundle/3.png"});
  EXPECT_EQ(room.change(), "-") << "a set that says 0";
}

TEST(GoboBuild, ShowsTheFirstGoboOfTheBundle) {
  GoboRoom room;
  room.build({"bundle/1.png", "documents/1.png"});
  EXPECT_EQ(room.shown(), "bundle/1.png");
  EXPECT_EQ(room.views.alpha(ViewId::goboView), 0);
}

TEST(GoboBuild, ShowsNothingWhereTheBundleHasNoFirstGobo) {
  GoboRoom room;
  room.build({"bundle/2.png", "bundle/1_1_2.png", "documents/1.png"});
  EXPECT_EQ(room.shown(), "-");
}

TEST(GoboPulse, HiddenGoboIsChangedAndFadedInThenOutAndChangedAndInAgain) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(11, 255);
  room.gobo.goboPulse();
  EXPECT_EQ(room.runFor(600), (Events{"0 bundle/3.png", "0 in 200", "200 out 200",
                                      "400 bundle/3.png", "400 in 200", "600 out 200"}));
}

TEST(GoboPulse, VisibleGoboIsFadedOutBeforeItIsChanged) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.views.setAlpha(ViewId::goboView, 1);
  room.events.clear();
  room.enter(11, 255);
  room.gobo.goboPulse();
  EXPECT_EQ(room.runFor(399), (Events{"0 out 200", "200 bundle/3.png", "200 in 200"}));
}

TEST(GoboPulse, HalfVisibleGoboCountsAsHidden) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.views.setAlpha(ViewId::goboView, 0.99);
  room.events.clear();
  room.enter(11, 255);
  room.gobo.goboPulse();
  EXPECT_EQ(room.events, (Events{"0 bundle/3.png", "0 in 200"}));
}

TEST(GoboPulse, FadesFollowTheSpeed) {
  // q × 48 + 200 with q = 0, 33, 50, 100.
  for (const auto& [p, fade] : {std::pair{0, 200}, {33, 1784}, {50, 2600}, {100, 5000}}) {
    GoboRoom room;
    room.build({"bundle/3.png"});
    room.enter(11, speedOf(p));
    room.gobo.goboPulse();
    const std::string length = std::to_string(fade);
    EXPECT_EQ(room.runFor(fade),
              (Events{"0 bundle/3.png", "0 in " + length, length + " out " + length}));
  }
}

TEST(GoboPulse, CycleKeepsTheFadeItBeganWith) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.views.setAlpha(ViewId::goboView, 1);
  room.events.clear();
  room.enter(11, 255);
  room.gobo.goboPulse();
  room.runFor(100);
  room.enter(11, 128);
  EXPECT_EQ(room.runFor(300), (Events{"200 bundle/3.png", "200 in 200", "400 out 2600"}))
      << "a new speed counts from the next cycle";
}

TEST(GoboPulse, EachCycleShowsAnotherVariant) {
  GoboRoom room({0, 0, 0});
  room.build({"bundle/3_1_2.png", "bundle/3_2_2.png"});
  room.enter(11, 255);
  room.gobo.goboPulse();
  EXPECT_EQ(room.runFor(801),
            (Events{"0 bundle/3_1_2.png", "0 in 200", "200 out 200", "400 bundle/3_2_2.png",
                    "400 in 200", "600 out 200", "800 bundle/3_1_2.png", "800 in 200"}));
}

TEST(GoboPulse, ChangeOfModeEndsTheChainWithTheCycle) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(11, 255);
  room.gobo.goboPulse();
  room.runFor(250);
  room.enter(12, 255);
  EXPECT_EQ(room.runFor(9000), (Events{"400 bundle/3.png", "400 in 200"}));
  EXPECT_FALSE(room.state.goboIsAnimating);
}

TEST(GoboPulse, RemovedFadeOutIsFollowedByTheFadeInAllTheSame) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(11, 255);
  room.gobo.goboPulse();
  room.runFor(250);
  room.views.removeAnimations(ViewId::goboView);
  EXPECT_EQ(room.runFor(200), (Events{"250 bundle/3.png", "250 in 200", "450 out 200"}));
}

TEST(GoboPulse, RemovedFadeInEndsTheChain) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(11, 255);
  room.gobo.goboPulse();
  room.runFor(100);
  EXPECT_TRUE(room.state.goboIsAnimating);
  room.views.removeAnimations(ViewId::goboView);
  EXPECT_EQ(room.runFor(9000), Events{});
  EXPECT_FALSE(room.state.goboIsAnimating) << "in every case";
}

TEST(GoboPulse, RemovesTheFadeThatRunsFirst) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  int removed = 0;
  room.views.animateAlpha({{ViewId::goboView, 1}}, {.duration = milliseconds(1000)},
                          [&removed](bool finished) { removed += finished ? 0 : 1; });
  room.runFor(500);
  room.enter(11, 255);
  room.gobo.goboPulse();
  EXPECT_DOUBLE_EQ(room.views.shownAlpha(ViewId::goboView), 1) << "the fade out begins at its end";
  EXPECT_EQ(room.runFor(200), (Events{"500 out 200", "700 bundle/3.png", "700 in 200"}));
  EXPECT_EQ(removed, 1);
}

TEST(GoboPulse, SecondPulseReplacesTheFirst) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(11, 255);
  room.gobo.goboPulse();
  room.runFor(100);
  room.gobo.goboPulse();
  EXPECT_EQ(room.runFor(600), (Events{"100 out 200", "300 bundle/3.png", "300 in 200",
                                      "500 out 200", "700 bundle/3.png", "700 in 200"}));
}

TEST(GoboPulse, FlagIsDownAtTheEndOfTheFirstCycleThoughTheNextHasBegun) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(11, 255);
  room.gobo.goboPulse();
  room.runFor(199);
  EXPECT_TRUE(room.state.goboIsAnimating);
  room.runFor(1);
  EXPECT_FALSE(room.state.goboIsAnimating);
  EXPECT_EQ(room.views.alpha(ViewId::goboView), 0) << "the next cycle fades out";
}

TEST(GoboRandomPulse, DelaysTheFirstFadeInAndNothingAfterIt) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(12, 255);
  room.state.goboDelay = 1.5F;
  room.gobo.goboPulseRandom();
  EXPECT_EQ(room.runFor(2300),
            (Events{"0 bundle/3.png", "0 in 200", "1700 out 200", "1900 bundle/3.png",
                    "1900 in 200", "2100 out 200", "2300 bundle/3.png", "2300 in 200"}));
  EXPECT_EQ(room.state.goboDelay, 0);
}

TEST(GoboRandomPulse, DelaysTheFirstFadeOutOfAVisibleGobo) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.views.setAlpha(ViewId::goboView, 1);
  room.events.clear();
  room.enter(12, 255);
  room.state.goboDelay = 1.234F;
  room.gobo.goboPulseRandom();
  EXPECT_EQ(room.runFor(1834), (Events{"0 out 200", "1434 bundle/3.png", "1434 in 200",
                                       "1634 out 200", "1834 bundle/3.png", "1834 in 200"}));
}

TEST(GoboRandomPulse, BeginsAtWhatIsShown) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.views.animateAlpha({{ViewId::goboView, 1}}, {.duration = milliseconds(1000)});
  room.runFor(500);
  room.enter(12, 255);
  room.state.goboDelay = 1;
  room.gobo.goboPulseRandom();
  EXPECT_DOUBLE_EQ(room.views.shownAlpha(ViewId::goboView), 0.5);
  room.runFor(1000);
  EXPECT_DOUBLE_EQ(room.views.shownAlpha(ViewId::goboView), 0.5) << "until the delay is over";
}

TEST(GoboRandomPulse, ChangeOfModeEndsTheChainAndKeepsTheDelay) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(12, 255);
  room.state.goboDelay = 0.5F;
  room.gobo.goboPulseRandom();
  room.runFor(100);
  room.enter(11, 255);
  EXPECT_EQ(room.runFor(9000), Events{});
  EXPECT_EQ(room.state.goboDelay, 0.5F);
  EXPECT_FALSE(room.state.goboIsAnimating);
}

TEST(GoboRandomPulse, RemovedFadeInEndsTheChainAndLeavesTheFlag) {
  GoboRoom room;
  room.build({"bundle/3.png"});
  room.enter(12, 255);
  room.gobo.goboPulseRandom();
  room.runFor(100);
  room.views.removeAnimations(ViewId::goboView);
  EXPECT_EQ(room.runFor(9000), Events{});
  EXPECT_TRUE(room.state.goboIsAnimating) << "only a finished fade clears it";
}

}  // namespace
}  // namespace halvora
