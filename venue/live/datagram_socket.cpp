// SPDX-License-Identifier: Apache-2.0
#include "venue/live/datagram_socket.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace halvora {

DatagramSocket::~DatagramSocket() {
  watch_.end();
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::string DatagramSocket::open(const std::string& address, std::uint16_t port,
                                 std::size_t largest, Descriptors& descriptors, Take take) {
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
    return address + " is no address of a machine, as 127.0.0.1";
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(found, freeaddrinfo);
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = ::socket(found->ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ < 0 || ::bind(descriptor_, found->ai_addr, found->ai_addrlen) != 0) {
    return address + " port " + std::to_string(port) + ": " + std::strerror(errno);
  }
  buffer_.resize(largest + 1);
  take_ = std::move(take);
  watch_ = {descriptors,
            descriptors.watch(descriptor_, DescriptorEvents::readable, [this] { read(); })};
  return {};
}

std::uint16_t DatagramSocket::port() const {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  // The port lies at one place in both families.
  static_assert(offsetof(sockaddr_in, sin_port) == offsetof(sockaddr_in6, sin6_port));
  return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
}

// One a turn, so that no flood keeps a show from its turns.
void DatagramSocket::read() {
  const ssize_t count = ::recv(descriptor_, buffer_.data(), buffer_.size(), 0);
  if (count > 0) take_({buffer_.data(), static_cast<std::size_t>(count)});
}

}  // namespace halvora
