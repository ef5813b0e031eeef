// SPDX-License-Identifier: Apache-2.0
#include "platform/qt/qt_http.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>

namespace halvora {

bool QtHttp::isAllowed(const QUrl& url) const {
  if (!url.isValid() || url.host().isEmpty()) return false;
  return url.scheme() == QLatin1String("https") ||
         (allowsPlainHttp_ && url.scheme() == QLatin1String("http"));
}

void QtHttp::get(const std::string& url) {
  const QUrl address(QString::fromStdString(url), QUrl::StrictMode);
  if (!isAllowed(address) || underWay_ >= kMostRequests) return;
  if (!manager_) {
    manager_ = std::make_unique<QNetworkAccessManager>();
    manager_->setTransferTimeout(static_cast<int>(kTimeout.count()));
  }
  QNetworkRequest request(address);
  // A counter is to count phones, not to know them again.
  request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  QNetworkReply* reply = manager_->get(request);
  ++underWay_;
  QObject::connect(reply, &QNetworkReply::readyRead, reply, [reply, read = qint64{0}]() mutable {
    read += reply->readAll().size();
    if (read > kLargestReply) reply->abort();
  });
  QObject::connect(reply, &QNetworkReply::finished, manager_.get(), [this, reply] {
    --underWay_;
    reply->deleteLater();
  });
}

}  // namespace halvora
