// SPDX-License-Identifier: Apache-2.0
// HTTP GET over a plain or encrypted socket: an address, a host and not a word more, because what
// Qt's own client adds (the user's language, a browser's name) tells phones apart. Only https
// unless the host says otherwise; nobody reads the reply, and whatever takes too long or is too
// many at once is given up. Owned by QtPlatform; main thread.
#pragma once

#include <QObject>
#include <QUrl>
#include <chrono>
#include <string>
#include <vector>

#include "halvora/platform/http.h"

class QSslSocket;

namespace halvora {

class QtHttp final : public HttpClient {
 public:
  /// Further requests are dropped while so many are under way.
  static constexpr int kMostRequests = 8;
  static constexpr std::chrono::milliseconds kTimeout = std::chrono::seconds(60);

  explicit QtHttp(bool allowsPlainHttp = false) : allowsPlainHttp_(allowsPlainHttp) {}
  void get(const std::string& url) override;
  void cancelAll() override;

  int underWay() const { return static_cast<int>(underWay_.size()); }

 private:
  bool isAllowed(const QUrl& url) const;
  void finish(QSslSocket& socket);

  const bool allowsPlainHttp_;
  std::vector<QSslSocket*> underWay_;
  /// The sockets are its children.
  QObject requests_;
};

}  // namespace halvora
