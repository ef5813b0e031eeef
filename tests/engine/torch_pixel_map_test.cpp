// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"

namespace halvora {
namespace {

using Pixels = std::vector<std::uint8_t>;

constexpr const char* kStill = "Maps/v7_m5_f3.jpg";

/// Whatever the bytes, they are this picture; none for the text "broken".
class OnePicture final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view bytes) const override {
    return bytes == "broken" ? std::nullopt : std::optional<Image>(image);
  }
  Image image;
};

/// A whole engine on a phone whose bundle has the still of venue 7, map 5, frame 3: one pixel.
class TorchPixelMap : public testing::Test {
 protected:
  TorchPixelMap() {
    phone_.mainBundle.resources[kStill] = "picture";
    engine_.viewDidLoad();
    picture(1, 1, {255, 255, 255, 255});
    seat("A", "0", "0");
  }

  void picture(std::uint32_t width, std::uint32_t height, Pixels rgba) {
    decoder_.image = {width, height, std::move(rgba)};
  }
  void seat(const char* section, const char* xPos, const char* yPos) {
    phone_.defaults.setFromOutside("selectedSection", std::string(section));
    phone_.defaults.setFromOutside("xPos", std::string(xPos));
    phone_.defaults.setFromOutside("yPos", std::string(yPos));
  }
  /// A look of torch mode 9 in that frame; the screen stays off.
  void look(int frame, int ledMode = 9) {
    Broadcast broadcast;
    broadcast.applicationId = 258;
    broadcast.venueId = 7;
    broadcast.pixelMapId = 5;
    broadcast.minutes = static_cast<std::uint8_t>(frame);
    broadcast.ledMode = static_cast<std::uint8_t>(ledMode);
    engine_.processEffect(broadcast);
  }
  /// The torch after a look of frame 3, begun with the torch in the other state.
  bool torchBeganFrom(bool before) {
    look(1, before ? 1 : 0);
    EXPECT_EQ(phone_.torch.isOn, before);
    look(3);
    EXPECT_EQ(engine_.state().torch.torchIsOn, phone_.torch.isOn);
    return phone_.torch.isOn;
  }
  bool isOnForSeat() { return torchBeganFrom(false); }
  bool isOffForSeat() { return !torchBeganFrom(true); }

  OnePicture decoder_;
  ExactJsonReader json_;
  VirtualPhone phone_{json_, {.random = nullptr, .images = &decoder_}};
  ShowEngine engine_{phone_.platform()};
};

TEST_F(TorchPixelMap, PureWhiteTurnsItOn) {
  EXPECT_TRUE(isOnForSeat());
  EXPECT_TRUE(engine_.state().torch.ledEffectOn);
}

TEST_F(TorchPixelMap, NearWhiteTurnsItOff) {
  for (const Pixels& nearWhite :
       {Pixels{254, 255, 255, 255}, {255, 254, 255, 255}, {255, 255, 254, 255}, {0, 0, 0, 255}}) {
    picture(1, 1, nearWhite);
    EXPECT_TRUE(isOffForSeat());
    EXPECT_FALSE(engine_.state().torch.ledEffectOn);
  }
}

TEST_F(TorchPixelMap, TranslucentWhiteIsNotPure) {
  picture(1, 1, {255, 255, 255, 254});
  EXPECT_TRUE(isOffForSeat());
}

TEST_F(TorchPixelMap, SeatIsColumnThenRow) {
  Pixels pixels(3 * 2 * 4, 0);
  for (std::size_t at = 0; at < 4; ++at) pixels[(1 * 3 + 2) * 4 + at] = 255;
  picture(3, 2, pixels);
  for (int column = 0; column < 3; ++column) {
    for (int row = 0; row < 2; ++row) {
      seat("A", std::to_string(column).c_str(), std::to_string(row).c_str());
      EXPECT_EQ(torchBeganFrom(false), column == 2 && row == 1) << column << " " << row;
    }
  }
}

TEST_F(TorchPixelMap, WithoutASectionTurnsItOff) {
  seat("", "0", "0");
  EXPECT_TRUE(isOffForSeat());
  phone_.defaults.setFromOutside("selectedSection", std::nullopt);
  EXPECT_TRUE(isOffForSeat());
}

TEST_F(TorchPixelMap, NegativeSeatTurnsItOff) {
  for (const auto& [x, y] : {std::pair{"-1", "0"}, {"0", "-1"}, {"-1", "-1"}}) {
    seat("A", x, y);
    EXPECT_TRUE(isOffForSeat()) << x << " " << y;
  }
}

TEST_F(TorchPixelMap, SeatOutsideThePictureTurnsItOff) {
  picture(2, 2, Pixels(16, 255));
  for (const auto& [x, y] : {std::pair{"2", "0"},
                             {"0", "2"},
                             {"9223372036854775807", "0"},
                             {"0", "99999999999999999999"},
                             {"4294967296", "0"}}) {
    seat("A", x, y);
    EXPECT_TRUE(isOffForSeat()) << x << " " << y;
  }
}

TEST_F(TorchPixelMap, MissingStillLeavesItAsItWas) {
  phone_.mainBundle.resources.clear();
  EXPECT_TRUE(torchBeganFrom(true));
  EXPECT_FALSE(torchBeganFrom(false));
}

TEST_F(TorchPixelMap, MissingStillLeavesItWithoutASeatToo) {
  phone_.mainBundle.resources.clear();
  seat("", "-1", "-1");
  EXPECT_TRUE(torchBeganFrom(true));
}

TEST_F(TorchPixelMap, BrokenOrEmptyStillLeavesItAsItWas) {
  phone_.mainBundle.resources[kStill] = "broken";
  EXPECT_TRUE(torchBeganFrom(true));
  EXPECT_FALSE(torchBeganFrom(false));
  phone_.mainBundle.resources[kStill] = "picture";
  picture(0, 0, {});
  testing::internal::CaptureStderr();
  EXPECT_TRUE(torchBeganFrom(true));
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("Context not created!"), 0U);
}

TEST_F(TorchPixelMap, EachFrameIsSampledAnew) {
  look(3);
  EXPECT_TRUE(phone_.torch.isOn);
  look(4);
  EXPECT_TRUE(phone_.torch.isOn) << "there is no still of frame 4";
  phone_.mainBundle.resources["Maps/v7_m5_f5.jpg"] = "picture";
  picture(1, 1, {0, 0, 0, 255});
  look(5);
  EXPECT_FALSE(phone_.torch.isOn);
}

TEST_F(TorchPixelMap, SameFrameIsNotSampledAgain) {
  look(3);
  picture(1, 1, {0, 0, 0, 255});
  look(3);
  EXPECT_TRUE(phone_.torch.isOn);
}

TEST_F(TorchPixelMap, PhoneWithoutATorchKeepsOnlyThePhase) {
  phone_.torch.isFitted = false;
  look(3);
  EXPECT_FALSE(phone_.torch.isOn);
  EXPECT_FALSE(engine_.state().torch.torchIsOn);
  EXPECT_TRUE(engine_.state().torch.ledEffectOn);
}

}  // namespace
}  // namespace halvora
