// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/shared_stills.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/virtual/virtual_storage.h"

namespace halvora {
namespace {

/// "3" is a picture of three pixels with that level, anything else none.
class CountingDecoder final : public ImageDecoder {
 public:
  std::optional<Image> decode(std::string_view bytes) const override {
    ++decoded;
    if (bytes.size() != 1) return std::nullopt;
    const auto size = static_cast<std::uint32_t>(bytes[0] - '0');
    return Image{size, 1, std::vector<std::uint8_t>(size * 4, static_cast<std::uint8_t>(size))};
  }
  mutable std::atomic<int> decoded{0};
};

class CountingBundle final : public Bundle {
 public:
  const std::string& identifier() const override { return name_; }
  const std::string& resourcePath() const override { return name_; }
  std::optional<std::string> readResource(std::string_view path, std::size_t limit) const override {
    ++reads;
    if (path == "missing" || path.size() > limit) return std::nullopt;
    return std::string(path);
  }
  std::string localizedString(std::string_view key) const override {
    return "a text for " + std::string(key);
  }
  mutable int reads = 0;

 private:
  const std::string name_ = "a name";
};

TEST(SharedPictures, AreDecodedOnce) {
  const CountingDecoder decoder;
  const SharedPictures pictures(decoder);
  for (int at = 0; at < 3; ++at) {
    const auto picture = pictures.decode("3");
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(picture->width, 3U);
    EXPECT_EQ(picture->rgba, std::vector<std::uint8_t>(12, 3));
    EXPECT_FALSE(pictures.decode("no picture").has_value());
    EXPECT_EQ(pictures.decode("5")->width, 5U);
  }
  EXPECT_EQ(decoder.decoded, 3);
}

TEST(SharedResources, AreReadOnce) {
  const CountingBundle bundle;
  const SharedResources resources(bundle);
  for (int at = 0; at < 3; ++at) {
    EXPECT_EQ(resources.readResource("still", 100), "still");
    EXPECT_EQ(resources.readResource("missing", 100), std::nullopt);
    EXPECT_EQ(resources.readResource("still", 2), std::nullopt);
  }
  EXPECT_EQ(bundle.reads, 3);
  EXPECT_EQ(resources.identifier(), "a name");
  EXPECT_EQ(resources.resourcePath(), "a name");
  EXPECT_EQ(resources.localizedString("key"), "a text for key");
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

TEST(SharedPicturesThreads, AskSideBySide) {
  const CountingDecoder decoder;
  const SharedPictures pictures(decoder);
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int at = 0; at < 200; ++at) {
        const char name = static_cast<char>('1' + at % 9);
        const auto picture = pictures.decode(std::string_view(&name, 1));
        if (!picture || picture->width != static_cast<std::uint32_t>(name - '0')) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(decoder.decoded, 9);
}

}  // namespace
}  // namespace halvora
