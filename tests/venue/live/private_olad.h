// SPDX-License-Identifier: Apache-2.0
// The real daemon of lighting desks, on this machine's loopback and for one test: a folder of
// settings of its own, a port of its own, and only the ways of desks that the test uses. Those have
// one UDP port a machine, so one test has them at a time. Main thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include <netinet/in.h>
#include <sys/types.h>

#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {

class PrivateOlad {
 public:
  /// Of Art-Net, patched to these universes in their order, and of sACN, to that one.
  PrivateOlad(const std::vector<int>& artNet, int sacn);
  ~PrivateOlad();
  PrivateOlad(const PrivateOlad&) = delete;
  PrivateOlad& operator=(const PrivateOlad&) = delete;

  /// Why there is none, for a test that is skipped then; empty where it runs.
  const std::string& whyNot() const { return whyNot_; }
  std::uint16_t port() const { return port_; }
  /// As a power cut does.
  void kill();
  void start();

 private:
  void writeSettings(const std::vector<int>& artNet, int sacn) const;

  TemporaryFolder folder_;
  std::string whyNot_;
  std::uint16_t port_ = 0;
  int lock_ = -1;
  pid_t process_ = 0;
};

/// A lighting desk on the loopback.
class LoopbackDesk {
 public:
  LoopbackDesk();
  ~LoopbackDesk();
  LoopbackDesk(const LoopbackDesk&) = delete;
  LoopbackDesk& operator=(const LoopbackDesk&) = delete;

  /// To an Art-Net address: net, subnet and universe in 15 bits.
  void sendArtNet(int address, std::span<const std::uint8_t> levels) const;
  void sendSacn(int universe, std::span<const std::uint8_t> levels);

 private:
  void send(const std::vector<std::uint8_t>& bytes, std::uint16_t port) const;

  int socket_;
  std::uint8_t sequence_ = 0;
};

}  // namespace halvora
