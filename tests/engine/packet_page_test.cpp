// SPDX-License-Identifier: Apache-2.0
// The drawn packet of docs/packet.md is the one that its command prints, and its table has every
// field where it is read.
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/standard/standard_files.h"
#include "engine/broadcast.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

using testing::ElementsAreArray;
using testing::HasSubstr;

std::string page() { return readFile(sourceTree() + "/docs/packet.md", 1U << 20).value_or(""); }

/// What stands in the cells of the drawing's rows, one after the other; empty cells left out.
std::vector<std::string> drawnCells() {
  const std::string text = page();
  const std::size_t begin = text.find("\n```\n") + 5;
  std::istringstream drawing(text.substr(begin, text.find("\n```\n", begin) - begin));
  const std::string bar = "│";
  std::vector<std::string> cells;
  for (std::string line; std::getline(drawing, line);) {
    if (!line.starts_with(bar)) continue;
    for (std::size_t at = line.find(bar); at != std::string::npos; at = line.find(bar, at)) {
      at += bar.size();
      std::istringstream words(line.substr(at, line.find(bar, at) - at));
      for (std::string word; words >> word;) cells.push_back(word);
    }
  }
  return cells;
}

/// The packet that the page's first command is for.
Broadcast commandedPacket() {
  std::smatch command;
  const std::string text = page();
  if (!std::regex_search(text, command, std::regex("`halvora packet encode ([^`]*)`"))) return {};
  Broadcast packet;
  std::istringstream words(command[1]);
  std::string option;
  for (int value = 0; words >> option >> value;) {
    for (const BroadcastField& field : kBroadcastFields) {
      if (option == "--" + std::string(field.name)) field.value.set(packet, value);
    }
  }
  return packet;
}

TEST(PacketPage, DrawsThePacketThatItsCommandPrints) {
  std::string bytes;
  std::vector<std::string> names;
  for (const std::string& cell : drawnCells()) {
    if (std::regex_match(cell, std::regex("[0-9A-F]{2}"))) {
      bytes += cell;
    } else {
      names.push_back(cell);
    }
  }
  EXPECT_EQ(bytes, NSDataToHex(encodeBroadcast(commandedPacket())));
  std::vector<std::string> known;
  for (const BroadcastField& field : kBroadcastFields) known.emplace_back(field.name);
  EXPECT_THAT(names, ElementsAreArray(known));
}

TEST(PacketPage, HasARowForEveryField) {
  const std::string text = page();
  for (const BroadcastField& field : kBroadcastFields) {
    std::string place = std::to_string(field.offset);
    if (field.value.bytes() == 2) place += "–" + std::to_string(field.offset + 1);
    if (field.value == BroadcastValue(&Broadcast::transmitter)) place = "last";
    EXPECT_THAT(text, HasSubstr("| " + place + " | `" + field.name + "` |"));
  }
}

}  // namespace
}  // namespace halvora
