// SPDX-License-Identifier: Apache-2.0
// A bus that lets everybody in and then says nothing that is a message. It breaks off a connection
// whose calls are still to be answered. Owned by the test; one thread with the client.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "halvora/platform/descriptors.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {

class GarbageBus {
 public:
  explicit GarbageBus(Descriptors& descriptors)
      : descriptors_(descriptors),
        listening_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    const std::string path = folder_.path() + "/bus";
    path.copy(place.sun_path, sizeof place.sun_path - 1);
    bind(listening_, reinterpret_cast<const sockaddr*>(&place), sizeof place);
    listen(listening_, 4);
    arrivals_ = {descriptors_,
                 descriptors_.watch(listening_, DescriptorEvents::readable, [this] { letIn(); })};
  }
  ~GarbageBus() {
    leave();
    arrivals_.end();
    close(listening_);
  }
  GarbageBus(const GarbageBus&) = delete;
  GarbageBus& operator=(const GarbageBus&) = delete;

  std::string address() const { return "unix:path=" + folder_.path() + "/bus"; }

 private:
  void letIn() {
    leave();
    client_ = accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client_ < 0) return;
    words_ = {descriptors_,
              descriptors_.watch(client_, DescriptorEvents::readable, [this] { answer(); })};
  }
  void answer() {
    std::array<char, 4096> bytes;
    const ssize_t size = ::read(client_, bytes.data(), bytes.size());
    if (size <= 0) return leave();
    heard_.append(bytes.data(), static_cast<std::size_t>(size));
    say("AUTH", "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n");
    say("Hello", std::string(1000, 'x'));
  }
  // Once for each client, when it has said the word.
  void say(std::string_view word, std::string_view text) {
    const std::size_t at = heard_.find(word);
    if (at == std::string::npos) return;
    heard_.erase(0, at + word.size());
    [[maybe_unused]] const auto written = write(client_, text.data(), text.size());
  }
  void leave() {
    words_.end();
    heard_.clear();
    if (client_ >= 0) close(client_);
    client_ = -1;
  }

  Descriptors& descriptors_;
  TemporaryFolder folder_;
  const int listening_;
  int client_ = -1;
  std::string heard_;
  DescriptorWatch arrivals_;
  DescriptorWatch words_;
};

}  // namespace halvora
