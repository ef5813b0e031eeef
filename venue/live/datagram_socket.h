// SPDX-License-Identifier: Apache-2.0
// A socket that datagrams come in at, on one address of this machine. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "halvora/platform/descriptors.h"

namespace halvora {

class DatagramSocket {
 public:
  using Take = std::function<void(std::span<const std::uint8_t> datagram)>;

  DatagramSocket() = default;
  ~DatagramSocket();
  DatagramSocket(const DatagramSocket&) = delete;
  DatagramSocket& operator=(const DatagramSocket&) = delete;

  /// Begins to listen; `address` is a number, as 127.0.0.1 or ::1. Empty, or why not. Datagrams
  /// above that size come cut to one byte more.
  std::string open(const std::string& address, std::uint16_t port, std::size_t largest,
                   Descriptors& descriptors, Take take);
  /// The one that it listens at.
  std::uint16_t port() const;

 private:
  void read();

  int descriptor_ = -1;
  std::vector<std::uint8_t> buffer_;
  Take take_;
  DescriptorWatch watch_;
};

}  // namespace halvora
