// SPDX-License-Identifier: Apache-2.0
// What a host in C may do wrong with decoders, its players of clips, and shows that sign their
// packets. Decoders themselves are tested where there are some.
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/standard/system_clock.h"
#include "bindings/c/halvora.h"
#include "bindings/c/host_loop.h"
#include "bindings/c/host_media.h"
#include "conformance/media_promises.h"
#include "engine/broadcast.h"
#include "engine/signed_broadcast.h"

namespace halvora {
namespace {

int opensNothing(void*, const char*, void**, double*) { return HALVORA_NONE; }

halvora_media emptyMedia() {
  halvora_media media{};
  media.size = sizeof(media);
  return media;
}

halvora_options plainOptions() {
  halvora_options options{};
  halvora_options_init(&options, sizeof(options));
  return options;
}

TEST(CMedia, HalfADecoderIsRefused) {
  halvora_media media = emptyMedia();
  halvora_options options = plainOptions();
  options.media = &media;
  halvora_phone* phone = nullptr;
  EXPECT_EQ(halvora_phone_make(nullptr, &options, &phone), HALVORA_OK);
  EXPECT_EQ(halvora_phone_free(phone), HALVORA_OK);
  phone = nullptr;
  // It can open a video, and neither read nor close it.
  media.open_video = &opensNothing;
  EXPECT_EQ(halvora_phone_make(nullptr, &options, &phone), HALVORA_MISSING);
  media = emptyMedia();
  media.load_clip = [](void*, int, const char*, const char*) {};
  EXPECT_EQ(halvora_phone_make(nullptr, &options, &phone), HALVORA_MISSING);
  media = emptyMedia();
  media.size = offsetof(halvora_media, picture);
  EXPECT_EQ(halvora_phone_make(nullptr, &options, &phone), HALVORA_MISSING);
  EXPECT_EQ(phone, nullptr);
}

TEST(CMedia, AHostFromBeforeThereWereDecodersIsServed) {
  halvora_options options{};
  constexpr std::size_t kOld = offsetof(halvora_options, media);
  ASSERT_EQ(halvora_options_init(&options, kOld), HALVORA_OK);
  // What lies behind its struct is not its own.
  options.media = reinterpret_cast<const halvora_media*>(std::uintptr_t{1});
  options.authentication = 77;
  halvora_phone* phone = nullptr;
  ASSERT_EQ(halvora_phone_make(nullptr, &options, &phone), HALVORA_OK);
  EXPECT_EQ(halvora_phone_free(phone), HALVORA_OK);
  EXPECT_EQ(halvora_options_init(&options, kOld - 1), HALVORA_MISSING);
}

TEST(CMedia, WantOfMemoryIsNoFaultOfAFile) {
  halvora_media media = emptyMedia();
  media.picture = [](void*, const void*, std::size_t, halvora_take_picture, void*) -> int {
    return HALVORA_NO_MEMORY;
  };
  media.open_video = [](void*, const char*, void**, double*) -> int { return HALVORA_NO_MEMORY; };
  EXPECT_THROW(HostPictures(media).decode("a picture"), std::bad_alloc);
  EXPECT_THROW(HostVideos(media).open("a.mp4", nullptr), std::bad_alloc);
}

TEST(CMedia, PicturesOfNoSizeAndOfTooMuchAreNone) {
  halvora_media media = emptyMedia();
  struct Given {
    std::uint32_t width;
    std::uint32_t height;
    const std::uint8_t* rgba;
  } given{};
  media.context = &given;
  media.picture = [](void* context, const void*, std::size_t, halvora_take_picture take,
                     void* into) -> int {
    const Given& its = *static_cast<Given*>(context);
    take(into, its.width, its.height, its.rgba);
    return HALVORA_OK;
  };
  constexpr std::array<std::uint8_t, 8> kPixels{1, 2, 3, 4, 5, 6, 7, 8};
  given = {2, 1, kPixels.data()};
  const auto image = HostPictures(media).decode("x");
  ASSERT_TRUE(image);
  EXPECT_EQ(image->rgba, std::vector<std::uint8_t>(kPixels.begin(), kPixels.end()));
  for (const Given& bad : {Given{0, 1, kPixels.data()}, Given{2, 1, nullptr},
                           Given{UINT32_MAX, UINT32_MAX, kPixels.data()}}) {
    given = bad;
    EXPECT_FALSE(HostPictures(media).decode("x"));
  }
}

/// Two clips' places in a host.
struct Clips {
  std::array<std::string, 2> paths;
  std::string acts;
};

halvora_media mediaOf(Clips& clips) {
  halvora_media media = emptyMedia();
  media.context = &clips;
  media.load_clip = [](void* its, int player, const char* name, const char* path) {
    auto& clip = *static_cast<Clips*>(its);
    clip.paths.at(static_cast<std::size_t>(player)) = path;
    clip.acts += std::string("load ") + name + " ";
  };
  media.play_clip = [](void* its, int, int isPlaying) {
    static_cast<Clips*>(its)->acts += isPlaying != 0 ? "play " : "pause ";
  };
  media.seek_clip = [](void* its, int, std::int64_t position) {
    static_cast<Clips*>(its)->acts += "seek " + std::to_string(position) + " ";
  };
  media.is_clip_ready = [](void* its, int player) -> int {
    const std::string& path = static_cast<Clips*>(its)->paths.at(static_cast<std::size_t>(player));
    return path == "3.mp4" ? 1 : 0;
  };
  return media;
}

TEST(CMedia, AHostsPlayersKeepWhatTheConformanceSuiteAsks) {
  struct World {
    Clips clips;
    halvora_media media = mediaOf(clips);
    HostLoop loop;
  };
  const auto broken = conformance::checkPlayer([] {
    auto world = std::make_shared<World>();
    World& its = *world;
    const auto work = [&its] { its.loop.runUntil(its.loop.now() + milliseconds(10)); };
    return conformance::PlayerUnderTest{
        std::move(world), std::make_unique<HostPlayer>(its.loop, its.media, 1),      {"3", "3.mp4"},
        {"9", "9.mp4"},   [work](const std::function<bool()>& /*isSo*/) { work(); }, work};
  });
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

TEST(CMedia, AHostHearsWhatItsPlayersAreToDo) {
  Clips clips;
  const halvora_media media = mediaOf(clips);
  HostLoop loop;
  HostPlayer player(loop, media, 0);
  player.load({"3", "3.mp4"});
  player.seek(milliseconds(250), [] {});
  player.play();
  player.pause();
  EXPECT_EQ(clips.acts, "load 3 seek 250000 play pause ");
  EXPECT_EQ(clips.paths[0], "3.mp4");
}

/// Not a cipher, but a code that needs the key and every byte.
void codeOf(void*, const std::uint8_t* key, const std::uint8_t* message, std::size_t count,
            std::uint8_t* code) {
  std::uint32_t state = 2'166'136'261U;
  for (std::size_t round = 0; round < 16; ++round) {
    for (std::size_t at = 0; at < 16; ++at) state = (state ^ key[at]) * 16'777'619U;
    for (std::size_t at = 0; at < count; ++at) state = (state ^ message[at]) * 16'777'619U;
    code[round] = static_cast<std::uint8_t>(state >> 24);
  }
}

class SignedShows : public testing::Test {
 protected:
  SignedShows() {
    callbacks.size = sizeof(callbacks);
    callbacks.code = &codeOf;
    options.show_key = key.data();
    options.authentication = 2;
  }
  ~SignedShows() override { halvora_phone_free(phone); }
  SignedShows(const SignedShows&) = delete;
  SignedShows& operator=(const SignedShows&) = delete;

  void hearSigned(std::uint8_t red) {
    struct Signer final : MessageCode {
      Code of(std::span<const std::uint8_t> message) override {
        Code code{};
        codeOf(nullptr, its.data(), message.data(), message.size(), code.data());
        return code;
      }
      std::array<std::uint8_t, 16> its;
    } signer;
    signer.its = signingKey;
    // The tag is for this minute, give or take one, so that the hour does not matter.
    const auto minute =
        static_cast<std::uint32_t>(std::floor(SystemWallClock().now().secondsSince1970 / 60));
    Broadcast look;
    look.applicationId = 258;
    look.venueId = 7;
    look.transmitter = 7;
    look.master = 255;
    look.mode = 1;
    look.red = red;
    look.sequence = ++sequence;
    const auto packet = signBroadcast(look, minute, signer);
    halvora_phone_advertisement(phone, packet.data(), packet.size());
    halvora_phone_run_until(phone, 1'500'000 + 1'000'000 * sequence);
  }
  void start() {
    ASSERT_EQ(halvora_phone_make(&callbacks, &options, &phone), HALVORA_OK);
    halvora_phone_start(phone);
    halvora_phone_run_until(phone, 1'500'000);
  }
  float red() {
    std::size_t count = 0;
    halvora_item light{};
    light.size = sizeof(light);
    halvora_phone_look(phone, 390, 844, &count);
    return halvora_phone_item(phone, 0, &light) == HALVORA_OK ? light.red : -1;
  }
  int trust() {
    int found = -1;
    EXPECT_EQ(halvora_phone_trust(phone, &found), HALVORA_OK);
    return found;
  }

  const std::array<std::uint8_t, 16> key{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  std::array<std::uint8_t, 16> signingKey = key;
  halvora_callbacks callbacks{};
  halvora_options options = plainOptions();
  halvora_phone* phone = nullptr;
  std::uint16_t sequence = 0;
};

TEST_F(SignedShows, AreHeardWithTheKeyAndAHostsCode) {
  start();
  EXPECT_EQ(trust(), 0);
  hearSigned(255);
  EXPECT_EQ(red(), 1.0F);
  EXPECT_EQ(trust(), 1);
}

TEST_F(SignedShows, OfAnotherKeyAreNotHeard) {
  signingKey[15] ^= 1;
  start();
  hearSigned(255);
  EXPECT_LT(red(), 0.5F);
  EXPECT_EQ(trust(), 0);
}

TEST_F(SignedShows, AreNotHeardWithoutACode) {
  callbacks.code = nullptr;
  start();
  hearSigned(255);
  EXPECT_LT(red(), 0.5F);
}

TEST_F(SignedShows, WhatAKeyIsForIsOneOfThree) {
  options.authentication = 3;
  EXPECT_EQ(halvora_phone_make(&callbacks, &options, &phone), HALVORA_RANGE);
  options.authentication = -1;
  EXPECT_EQ(halvora_phone_make(&callbacks, &options, &phone), HALVORA_RANGE);
  EXPECT_EQ(phone, nullptr);
}

}  // namespace
}  // namespace halvora
