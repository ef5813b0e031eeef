// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_http.h"

#include <QByteArray>
#include <QSslSocket>
#include <QString>
#include <QTimer>

namespace halvora {

namespace {

constexpr quint16 kHttpPort = 80;
constexpr quint16 kHttpsPort = 443;
constexpr qint64 kMostOfAReply = 4096;

QByteArray requestTo(const QUrl& url) {
  QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
  if (target.isEmpty()) target = "/";
  if (url.hasQuery()) target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
  const QByteArray host =
      url.adjusted(QUrl::RemoveUserInfo).authority(QUrl::FullyEncoded).toLatin1();
  return "GET " + target + " HTTP/1.1\r\nHost: " + host + "\r\nConnection: close\r\n\r\n";
}

}  // namespace

bool QtHttp::isAllowed(const QUrl& url) const {
  if (!url.isValid() || url.host().isEmpty()) return false;
  return url.scheme() == QLatin1String("https") ||
         (allowsPlainHttp_ && url.scheme() == QLatin1String("http"));
}

void QtHttp::get(const std::string& url) {
  const QUrl address(QString::fromStdString(url), QUrl::StrictMode);
  if (!isAllowed(address) || underWay() >= kMostRequests) return;
  auto* socket = new QSslSocket(&requests_);
  underWay_.push_back(socket);
  socket->setReadBufferSize(kMostOfAReply);
  const auto send = [socket, request = requestTo(address)] { socket->write(request); };
  // Whoever answers has counted.
  QObject::connect(socket, &QSslSocket::readyRead, socket, [socket] {
    socket->readAll();
    socket->disconnectFromHost();
  });
  QObject::connect(socket, &QSslSocket::disconnected, &requests_,
                   [this, socket] { finish(*socket); });
  QObject::connect(socket, &QSslSocket::errorOccurred, &requests_,
                   [this, socket] { finish(*socket); });
  QTimer::singleShot(kTimeout, socket, [this, socket] { finish(*socket); });
  const bool isEncrypted = address.scheme() == QLatin1String("https");
  const auto port = static_cast<quint16>(address.port(isEncrypted ? kHttpsPort : kHttpPort));
  if (isEncrypted) {
    QObject::connect(socket, &QSslSocket::encrypted, socket, send);
    socket->connectToHostEncrypted(address.host(QUrl::FullyEncoded), port);
  } else {
    QObject::connect(socket, &QSslSocket::connected, socket, send);
    socket->connectToHost(address.host(QUrl::FullyEncoded), port);
  }
}

void QtHttp::cancelAll() {
  while (!underWay_.empty()) finish(*underWay_.back());
}

// Comes twice where an error also ends the connection.
void QtHttp::finish(QSslSocket& socket) {
  if (std::erase(underWay_, &socket) == 0) return;
  QObject::disconnect(&socket, nullptr, &requests_, nullptr);
  socket.abort();
  socket.deleteLater();
}

}  // namespace halvora
