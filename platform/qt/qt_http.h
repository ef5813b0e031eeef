// SPDX-License-Identifier: Apache-2.0
// HTTP GET on Qt's network library. Only https unless the host says otherwise; a reply is thrown
// away as it comes in, and whatever takes too long, too much or too many at once is given up. Owned
// by QtPlatform; main thread.
#pragma once

#include <QNetworkAccessManager>
#include <chrono>
#include <memory>

#include "platform/http.h"

class QNetworkReply;

namespace halvora {

class QtHttp final : public HttpClient {
 public:
  /// Further requests are dropped while so many are under way.
  static constexpr int kMostRequests = 8;
  static constexpr qint64 kLargestReply = 64 << 10;
  static constexpr std::chrono::milliseconds kTimeout = std::chrono::seconds(60);

  explicit QtHttp(bool allowsPlainHttp = false) : allowsPlainHttp_(allowsPlainHttp) {}
  void get(const std::string& url) override;

  int underWay() const { return underWay_; }

 private:
  bool isAllowed(const QUrl& url) const;

  const bool allowsPlainHttp_;
  int underWay_ = 0;
  /// Made with the first request: many hosts never send one.
  std::unique_ptr<QNetworkAccessManager> manager_;
};

}  // namespace halvora
