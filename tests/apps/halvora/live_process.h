// SPDX-License-Identifier: Apache-2.0
// `halvora live` as a process of its own on this machine's clock and signals, with pipes for what
// it reads and says. Nothing waits for time: who waits, waits for a line, with a bound that only a
// failure reaches. It dies with the object, and with the test. One thread.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/types.h>

#include "venue/live/system_ground.h"

namespace halvora {

struct LiveProcessSetup {
  /// What stands behind "live".
  std::vector<std::string> words;
  /// Absent for no Bluetooth.
  MakeAdvertiser makeAdvertiser = {};
  /// Nobody reads what it says on standard error.
  bool isUnheard = false;
};

class LiveProcess {
 public:
  explicit LiveProcess(const LiveProcessSetup& setup);
  ~LiveProcess();
  LiveProcess(const LiveProcess&) = delete;
  LiveProcess& operator=(const LiveProcess&) = delete;

  /// A line on its standard input.
  void tell(const std::string& line);
  /// As much of that as the pipe takes at once.
  std::size_t pour(std::string_view bytes);
  /// Takes in what there is, after a wait of at most so long for more.
  void look(int milliseconds);
  /// Until that holds of what it has said; false after a minute.
  bool waitFor(const std::function<bool()>& isSo);
  bool waitForPackets(std::size_t count);
  bool waitForMessage(const std::string& text);
  void signal(int number) const;
  /// Its exit status, or minus the signal that ended it; takes in what it said until then.
  int end();

  /// Lines of standard output and of standard error so far.
  std::vector<std::string> packets;
  std::vector<std::string> messages;
  bool hasSaid(const std::string& text) const;

 private:
  pid_t process_ = -1;
  int input_ = -1;
  int output_ = -1;
  int errors_ = -1;
  bool isUnheard_ = false;
  /// Lines that have not ended yet.
  std::string begun_[2];
};

/// The sequence number of a line of standard output.
int numberIn(const std::string& line);

}  // namespace halvora
