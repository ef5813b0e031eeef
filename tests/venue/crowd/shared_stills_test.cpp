// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/shared_stills.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/virtual/virtual_storage.h"
#include "text/asset_paths.h"

namespace halvora {
namespace {

/// "3" is a picture of three pixels with that level, anything else none.
class CountingDecoder final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view bytes) const override {
    ++decoded;
    if (bytes.size() != 1) return std::nullopt;
    const auto size = static_cast<std::uint8_t>(bytes[0] - '0');
    return Image{size, 1, std::vector<std::uint8_t>(std::size_t{size} * 4, size)};
  }
  mutable std::atomic<int> decoded{0};
};

/// A still is its own name, but for "missing".
class CountingBundle final : public Bundle {
 public:
  const std::string& identifier() const override { return name_; }
  std::optional<FileAttributes> attributes(std::string_view /*path*/) const override { return {}; }
  std::optional<std::vector<std::string>> list(std::string_view /*folder*/) const override {
    return {};
  }
  std::string location(std::string_view path) const override { return std::string(path); }
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override {
    ++reads;
    EXPECT_EQ(limit, kLargestPicture);
    if (path == "missing") return std::nullopt;
    return std::string(path);
  }
  std::string localizedString(std::string_view key) const override { return std::string(key); }
  mutable std::atomic<int> reads{0};

 private:
  const std::string name_ = "a name";
};

TEST(SharedStills, AreReadAndDecodedOnce) {
  const CountingBundle bundle;
  const CountingDecoder decoder;
  const SharedStills stills(bundle, decoder);
  for (int at = 0; at < 3; ++at) {
    const auto still = stills.find("3");
    ASSERT_TRUE(still && *still);
    EXPECT_EQ((*still)->width, 3U);
    EXPECT_EQ((*still)->rgba, std::vector<std::uint8_t>(12, 3));
    EXPECT_EQ(stills.find("3"), still);
    EXPECT_EQ((*stills.find("5"))->width, 5U);
  }
  EXPECT_EQ(bundle.reads, 2);
  EXPECT_EQ(decoder.decoded, 2);
}

TEST(SharedStills, TellAMissingOneFromABrokenOneAndAskForNeitherAgain) {
  const CountingBundle bundle;
  const CountingDecoder decoder;
  const SharedStills stills(bundle, decoder);
  for (int at = 0; at < 3; ++at) {
    EXPECT_FALSE(stills.find("missing").has_value());
    const auto broken = stills.find("no picture");
    ASSERT_TRUE(broken.has_value());
    EXPECT_EQ(*broken, nullptr);
  }
  EXPECT_EQ(bundle.reads, 2);
  EXPECT_EQ(decoder.decoded, 1);
}

TEST(RecentValues, ForgetWhatWasNotAskedForTheLongest) {
  RecentValues<int> values(4 + 3 * 10);
  int made = 0;
  const auto get = [&](const char* key) {
    return values.get(
        key, [&made] { return ++made; }, [](int /*value*/) { return std::size_t{10}; });
  };
  EXPECT_EQ(get("a"), 1);
  EXPECT_EQ(get("b"), 2);
  EXPECT_EQ(get("c"), 3);
  EXPECT_EQ(get("a"), 1);
  // Makes room for itself in place of b.
  EXPECT_EQ(get("d"), 4);
  EXPECT_EQ(get("a"), 1);
  EXPECT_EQ(get("c"), 3);
  EXPECT_EQ(get("b"), 5);
}

TEST(RecentValues, KeepOneThatIsTooLargeUntilTheNext) {
  RecentValues<int> values(1);
  int made = 0;
  const auto get = [&](const char* key) {
    return values.get(
        key, [&made] { return ++made; }, [](int /*value*/) { return std::size_t{10}; });
  };
  EXPECT_EQ(get("a"), 1);
  EXPECT_EQ(get("a"), 1);
  EXPECT_EQ(get("b"), 2);
  EXPECT_EQ(get("a"), 3);
}

TEST(SharedStillsThreads, AskSideBySide) {
  const CountingBundle bundle;
  const CountingDecoder decoder;
  const SharedStills stills(bundle, decoder);
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int at = 0; at < 200; ++at) {
        const auto still = stills.find(std::to_string(1 + at % 9));
        if (!still || (*still)->width != static_cast<std::uint32_t>(1 + at % 9)) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(decoder.decoded, 9);
}

}  // namespace
}  // namespace halvora
