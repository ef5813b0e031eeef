// SPDX-License-Identifier: Apache-2.0
#include "venue/live/ola_input.h"

#include <utility>

#include <ola/Callback.h>
#include <ola/DmxBuffer.h>
#include <ola/client/OlaClient.h>
#include <ola/io/SelectServer.h>
#include <ola/network/SocketAddress.h>
#include <ola/network/TCPSocket.h>

namespace halvora {

namespace {

class OlaDaemon final : public OlaInput {
 public:
  OlaDaemon(unsigned universe, RunLoop& loop, OlaListener listener, std::uint16_t port)
      : universe_(universe), port_(port), loop_(loop), listener_(std::move(listener)) {
    connect();
    listener_.changed(client_ != nullptr);
    look_ = {loop_, loop_.every(kLook, [this] { look(); })};
  }
  ~OlaDaemon() override { disconnect(); }
  OlaDaemon(const OlaDaemon&) = delete;
  OlaDaemon& operator=(const OlaDaemon&) = delete;

 private:
  void connect() {
    triedAt_ = loop_.now();
    socket_.reset(ola::network::TCPSocket::Connect(
        ola::network::IPV4SocketAddress(ola::network::IPV4Address::Loopback(), port_)));
    if (!socket_) return;
    server_ = std::make_unique<ola::io::SelectServer>();
    isClosed_ = false;
    client_ = std::make_unique<ola::client::OlaClient>(socket_.get());
    server_->AddReadDescriptor(socket_.get());
    if (!client_->Setup()) return disconnect();
    client_->SetCloseHandler(ola::NewSingleCallback(this, &OlaDaemon::closed));
    client_->SetDMXCallback(ola::NewCallback(this, &OlaDaemon::take));
    client_->RegisterUniverse(universe_, ola::client::REGISTER,
                              static_cast<ola::client::SetCallback*>(nullptr));
  }

  void disconnect() {
    if (client_) client_->Stop();
    client_.reset();
    // What has closed is still waited for there, and the next socket, which gets its number, would
    // not be heard in its place.
    server_.reset();
    socket_.reset();
  }

  void look() {
    if (client_) {
      server_->RunOnce(ola::TimeInterval(0, 0));
      if (!isClosed_) return;
      disconnect();
      listener_.changed(false);
    } else if (loop_.now() - triedAt_ >= kRetry) {
      connect();
      if (client_) listener_.changed(true);
    }
  }

  // Within the server's own turn, so what it works on stays until that has ended.
  void closed() { isClosed_ = true; }

  void take(const ola::client::DMXMetadata& metadata, const ola::DmxBuffer& levels) {
    if (metadata.universe != universe_) return;
    listener_.levels({levels.GetRaw(), levels.Size()});
  }

  const unsigned universe_;
  const std::uint16_t port_;
  RunLoop& loop_;
  OlaListener listener_;
  std::unique_ptr<ola::io::SelectServer> server_;
  std::unique_ptr<ola::network::TCPSocket> socket_;
  std::unique_ptr<ola::client::OlaClient> client_;
  bool isClosed_ = false;
  Duration triedAt_{};
  Timer look_;
};

}  // namespace

std::unique_ptr<OlaInput> OlaInput::open(unsigned universe, RunLoop& loop, OlaListener listener,
                                         std::uint16_t port) {
  return std::make_unique<OlaDaemon>(universe, loop, std::move(listener), port);
}

}  // namespace halvora
