// SPDX-License-Identifier: Apache-2.0
#include "venue/live/osc_message.h"

#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include <lo/lo.h>

namespace halvora {

namespace {

constexpr std::string_view kBundle{"#bundle\0", 8};
constexpr std::string_view kPrefix = "/halvora/";
constexpr std::size_t kBundleHead = 16;
constexpr int kDeepestBundle = 4;

using Message = std::unique_ptr<void, decltype(&lo_message_free)>;

// Of the first argument, where it is a number.
bool isLetGo(lo_message message) {
  if (lo_message_get_argc(message) < 1) return false;
  const char type = lo_message_get_types(message)[0];
  lo_arg* const argument = lo_message_get_argv(message)[0];
  if (type == 'F') return true;
  if (!lo_is_numerical_type(static_cast<lo_type>(type))) return false;
  return lo_hires_val(static_cast<lo_type>(type), argument) == 0;
}

void addMessage(std::span<const std::uint8_t> data, std::vector<std::string>& commands) {
  // The library reads through pointers that are not const; it gets bytes of its own.
  std::vector<std::uint8_t> bytes(data.begin(), data.end());
  int result = 0;
  const Message message(lo_message_deserialise(bytes.data(), bytes.size(), &result),
                        lo_message_free);
  if (message == nullptr) return;
  const char* const path = lo_get_path(bytes.data(), static_cast<ssize_t>(bytes.size()));
  if (path == nullptr) return;
  std::string command = path;
  if (command.starts_with(kPrefix)) command.erase(0, kPrefix.size());
  if (command == "goto") {
    const bool hasText =
        lo_message_get_argc(message.get()) == 1 &&
        lo_is_string_type(static_cast<lo_type>(lo_message_get_types(message.get())[0]));
    if (hasText) command += " " + std::string(&lo_message_get_argv(message.get())[0]->s);
  } else if (isLetGo(message.get())) {
    return;
  }
  commands.push_back(std::move(command));
}

std::uint32_t sizeAt(std::span<const std::uint8_t> data) {
  return static_cast<std::uint32_t>(data[0]) << 24 | static_cast<std::uint32_t>(data[1]) << 16 |
         static_cast<std::uint32_t>(data[2]) << 8 | data[3];
}

// Times of bundles count for nothing: what an operator asks for is done now.
void add(std::span<const std::uint8_t> data, int depth, std::vector<std::string>& commands) {
  const bool isBundle =
      data.size() >= kBundleHead && std::memcmp(data.data(), kBundle.data(), kBundle.size()) == 0;
  if (!isBundle) return addMessage(data, commands);
  data = data.subspan(kBundleHead);
  while (depth < kDeepestBundle && data.size() >= 4) {
    const std::uint32_t size = sizeAt(data);
    data = data.subspan(4);
    if (size > data.size()) return;
    add(data.first(size), depth + 1, commands);
    data = data.subspan(size);
  }
}

}  // namespace

bool readsOsc() { return true; }

std::vector<std::string> commandsOfOsc(std::span<const std::uint8_t> datagram) {
  std::vector<std::string> commands;
  if (datagram.size() <= kLargestOsc) add(datagram, 0, commands);
  return commands;
}

}  // namespace halvora
