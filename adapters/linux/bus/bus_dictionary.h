// SPDX-License-Identifier: Apache-2.0
// Walks through the dictionaries of a bus message. Values, any thread.
#pragma once

#include <systemd/sd-bus.h>

namespace halvora {

/// What an attempt to enter a container says: there must be one, of that type.
constexpr bool entered(int result) { return result > 0; }
/// What an attempt to leave one says: nothing may be left in it.
constexpr bool left(int result) { return result >= 0; }

/// A dictionary whose keys are texts or object paths.
struct BusDictionary {
  const char* array;
  const char* entry;
};
inline constexpr BusDictionary kProperties{"{sv}", "sv"};
inline constexpr BusDictionary kInterfaces{"{sa{sv}}", "sa{sv}"};
inline constexpr BusDictionary kObjects{"{oa{sa{sv}}}", "oa{sa{sv}}"};

/// Calls `read` with each key; it must take the value, or skip it, and may end the walk by false.
/// False if it did, or if the dictionary is not as it should be.
template <class Read>
bool forEachEntry(sd_bus_message* message, const BusDictionary& dictionary, Read&& read) {
  if (!entered(sd_bus_message_enter_container(message, 'a', dictionary.array))) return false;
  int more = 0;
  while ((more = sd_bus_message_enter_container(message, 'e', dictionary.entry)) > 0) {
    const char* key = nullptr;
    if (sd_bus_message_read_basic(message, dictionary.entry[0], &key) <= 0 || !read(key) ||
        !left(sd_bus_message_exit_container(message))) {
      return false;
    }
  }
  return more == 0 && left(sd_bus_message_exit_container(message));
}

}  // namespace halvora
