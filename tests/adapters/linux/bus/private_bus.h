// SPDX-License-Identifier: Apache-2.0
// A D-Bus bus of the test's own: a dbus-daemon with its socket in a temporary folder, gone with the
// object, and with the test program if that dies.
#pragma once

#include <string>

#include <sys/types.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {

class PrivateBus {
 public:
  PrivateBus() = default;
  ~PrivateBus() { stop(); }
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  /// False if it does not start. `policy` is XML that is added to one that allows everything.
  bool start(const std::string& policy = {});
  /// The last start failed because this machine has no dbus-daemon.
  bool isMissing() const { return isMissing_; }
  /// Kills it.
  void stop();

  /// The same for every start.
  std::string address() const { return "unix:path=" + folder_.path() + "/bus"; }

 private:
  TemporaryFolder folder_;
  pid_t process_ = 0;
  bool isMissing_ = false;
};

}  // namespace halvora
