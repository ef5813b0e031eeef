// SPDX-License-Identifier: Apache-2.0
// Commands in the bytes that desks send, and what becomes of bytes that nobody should send.
#include "venue/live/osc_message.h"

#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "adapters/linux/poll_run_loop.h"
#include "venue/live/datagram_socket.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Padded with zeros to whole words, at least one.
std::string padded(std::string text) {
  do text += '\0';
  while (text.size() % 4 != 0);
  return text;
}
std::string message(const std::string& path, const std::string& types = "",
                    const std::string& arguments = "") {
  return padded(path) + padded("," + types) + arguments;
}
std::string bundle(const std::vector<std::string>& messages) {
  std::string text("#bundle\0\0\0\0\0\0\0\0\1", 16);
  for (const std::string& one : messages) {
    text += std::string("\0\0", 2) + static_cast<char>(one.size() >> 8) +
            static_cast<char>(one.size() & 0xFF) + one;
  }
  return text;
}
std::vector<std::string> commandsOf(const std::string& bytes) {
  return commandsOfOsc({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

TEST(OscMessage, AddressesAreCommands) {
  EXPECT_THAT(commandsOf(message("/halvora/go")), ElementsAre("go"));
  EXPECT_THAT(commandsOf(message("/halvora/panic")), ElementsAre("panic"));
  EXPECT_THAT(commandsOf(message("/halvora/goto", "s", padded("Last song"))),
              ElementsAre("goto Last song"));
  EXPECT_THAT(commandsOf(message("/halvora/goto", "i", std::string("\0\0\0\1", 4))),
              ElementsAre("goto"));
  EXPECT_THAT(commandsOf(message("/mixer/go")), ElementsAre("/mixer/go"));
}

TEST(OscMessage, AButtonThatIsLetGoIsNoCommand) {
  EXPECT_THAT(commandsOf(message("/halvora/go", "f", std::string("\x3F\x80\0\0", 4))),
              ElementsAre("go"));
  EXPECT_THAT(commandsOf(message("/halvora/go", "f", std::string("\0\0\0\0", 4))), IsEmpty());
  EXPECT_THAT(commandsOf(message("/halvora/go", "i", std::string("\0\0\0\0", 4))), IsEmpty());
  EXPECT_THAT(commandsOf(message("/halvora/go", "F")), IsEmpty());
  EXPECT_THAT(commandsOf(message("/halvora/go", "T")), ElementsAre("go"));
}

TEST(OscMessage, FourBundlesMayBeWithinEachOther) {
  std::string nested = message("/halvora/go");
  for (int level = 1; level <= 4; ++level) {
    nested = bundle({nested});
    EXPECT_THAT(commandsOf(nested), ElementsAre("go")) << level;
  }
  EXPECT_THAT(commandsOf(bundle({nested})), IsEmpty());
}

TEST(OscMessage, BundlesAreDoneInTheirOrder) {
  EXPECT_THAT(commandsOf(bundle({message("/halvora/go"), bundle({message("/halvora/hold")}),
                                 message("/halvora/resume")})),
              ElementsAre("go", "hold", "resume"));
  std::string deep = message("/halvora/go");
  for (int level = 0; level < 9; ++level) deep = bundle({deep});
  EXPECT_THAT(commandsOf(deep), IsEmpty());
}

TEST(OscMessage, OtherBytesAreNothing) {
  const std::string good = message("/halvora/goto", "s", padded("Song"));
  for (std::size_t size = 0; size < good.size(); ++size) {
    for (const std::string& command : commandsOf(good.substr(0, size))) {
      EXPECT_EQ(command, "goto");
    }
  }
  EXPECT_THAT(commandsOf(message("/halvora/go") + std::string(kLargestOsc, '\0')), IsEmpty());
  EXPECT_THAT(commandsOf(std::string("#bundle\0\0\0\0\0\0\0\0\1\xFF\xFF\xFF\xFF", 20)), IsEmpty());
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string bytes = round % 2 == 0 ? good : bundle({good, good});
    for (int change = 0; change < 3; ++change) {
      bytes[random() % bytes.size()] = static_cast<char>(random() & 0xFF);
    }
    commandsOf(bytes.substr(0, random() % (bytes.size() + 1)));
  }
}

TEST(DatagramSocket, HearsWhatIsSentToItsPort) {
  PollRunLoop loop;
  DatagramSocket socket;
  std::vector<std::string> heard;
  ASSERT_EQ(socket.open("127.0.0.1", 0, 8, loop,
                        [&](std::span<const std::uint8_t> datagram) {
                          heard.emplace_back(datagram.begin(), datagram.end());
                        }),
            "");
  ASSERT_NE(socket.port(), 0);
  const int sender = ::socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port = htons(socket.port());
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  for (const std::string text : {"one", "a long one"}) {
    EXPECT_GT(
        ::sendto(sender, text.data(), text.size(), 0, reinterpret_cast<sockaddr*>(&to), sizeof to),
        0);
  }
  ::close(sender);
  loop.runUntil([&] { return heard.size() == 2; }, std::chrono::seconds(30));
  EXPECT_THAT(heard, ElementsAre("one", "a long on"));

  DatagramSocket second;
  EXPECT_THAT(second.open("127.0.0.1", socket.port(), 8, loop, {}), HasSubstr("in use"));
  DatagramSocket nowhere;
  EXPECT_THAT(nowhere.open("localhost.example", 1, 8, loop, {}), HasSubstr("no address"));
}

}  // namespace
}  // namespace halvora
