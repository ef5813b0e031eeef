// SPDX-License-Identifier: Apache-2.0
// A daemon of this machine, started on a private bus for a test: gone with the object, and with the
// test program if that dies. What it prints is kept. Owned by the test.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

#include "halvora/platform/descriptors.h"

namespace halvora {

class SystemDaemon {
 public:
  using Environment = std::vector<std::pair<std::string, std::string>>;

  SystemDaemon(Descriptors& descriptors, std::string program, Environment environment);
  ~SystemDaemon() { stop(); }
  SystemDaemon(const SystemDaemon&) = delete;
  SystemDaemon& operator=(const SystemDaemon&) = delete;

  bool isInstalled() const;
  bool start();
  void stop();
  /// So far.
  const std::string& printed() const { return printed_; }

 private:
  [[noreturn]] void become(int output) const;
  void read();

  Descriptors& descriptors_;
  const std::string program_;
  const Environment environment_;
  std::string printed_;
  pid_t process_ = 0;
  int output_ = -1;
  DescriptorWatch watch_;
};

}  // namespace halvora
