// SPDX-License-Identifier: Apache-2.0
// Requests to a server in the same process. What arrives is counted there; what must not arrive is
// asked for before something that does.
#include "adapters/qt/qt_http.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace halvora {
namespace {

// Answers each request with the same text, or not at all.
class Server {
 public:
  Server() {
    EXPECT_TRUE(server_.listen(QHostAddress::LocalHost));
    QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
      QTcpSocket* socket = server_.nextPendingConnection();
      QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
        requests.push_back(socket->readAll().toStdString());
        if (!reply.isEmpty()) socket->write(reply);
      });
      QObject::connect(socket, &QTcpSocket::disconnected, socket, [this] { ++closed; });
    });
  }

  quint16 port() const { return server_.serverPort(); }
  std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port()) + path;
  }

  QByteArray reply = "HTTP/1.1 204 No Content\r\nContent-Length: 0\r\n\r\n";
  std::vector<std::string> requests;
  int closed = 0;

 private:
  QTcpServer server_;
};

// True once it is done; only a failure takes half a minute.
[[nodiscard]] bool waitUntil(const std::function<bool()>& isDone) {
  QTimer bound;
  bound.setSingleShot(true);
  bound.start(std::chrono::seconds(30));
  while (!isDone() && bound.isActive()) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  return isDone();
}

TEST(QtHttp, SaysNothingButWhatIsAskedOfWhom) {
  Server server;
  server.reply = "HTTP/1.1 204 No Content\r\nSet-Cookie: phone=1\r\nContent-Length: 0\r\n\r\n";
  QtHttp http(true);
  for (int request = 0; request < 2; ++request) {
    http.get(server.url("/?appID=com.example.host"));
    EXPECT_EQ(http.underWay(), 1);
    ASSERT_TRUE(waitUntil([&] { return http.underWay() == 0; }));
  }
  ASSERT_EQ(server.requests.size(), 2U);
  for (const std::string& request : server.requests) {
    EXPECT_EQ(request,
              "GET /?appID=com.example.host HTTP/1.1\r\n"
              "Host: 127.0.0.1:" +
                  std::to_string(server.port()) +
                  "\r\n"
                  "Connection: close\r\n\r\n");
  }
}

TEST(QtHttp, AnAddressIsOneLineWhateverItHolds) {
  Server server;
  QtHttp http(true);
  const std::string at = "127.0.0.1:" + std::to_string(server.port());
  for (const std::string& url : {"http://me:secret@" + at, "http://" + at + "/a%0D%0AX-Header:%201",
                                 "http://" + at + "/\u00E9?x=%20#end"}) {
    http.get(url);
    ASSERT_TRUE(waitUntil([&] { return http.underWay() == 0; })) << url;
  }
  ASSERT_EQ(server.requests.size(), 3U);
  const std::string rest = " HTTP/1.1\r\nHost: " + at + "\r\nConnection: close\r\n\r\n";
  EXPECT_EQ(server.requests[0], "GET /" + rest);
  EXPECT_EQ(server.requests[1], "GET /a%0D%0AX-Header:%201" + rest);
  EXPECT_EQ(server.requests[2], "GET /%C3%A9?x=%20" + rest);
}

TEST(QtHttp, PlainHttpIsNotSentUnlessTheHostAllowsIt) {
  Server server;
  QtHttp strict;
  strict.get(server.url("/strict"));
  EXPECT_EQ(strict.underWay(), 0);
  QtHttp lax(true);
  lax.get(server.url("/lax"));
  ASSERT_TRUE(waitUntil([&] { return lax.underWay() == 0; }));
  ASSERT_EQ(server.requests.size(), 1U);
  EXPECT_TRUE(server.requests[0].starts_with("GET /lax "));
}

TEST(QtHttp, WhatIsNoAddressIsNotSent) {
  QtHttp http(true);
  for (const char* url : {"", "nowhere", "http://", "https:///?appID=1", "ftp://127.0.0.1/",
                          "file:///etc/hosts", "http://a b/", "https://[::"}) {
    http.get(url);
    EXPECT_EQ(http.underWay(), 0) << url;
  }
}

TEST(QtHttp, AFailureIsForgotten) {
  std::string nowhere;
  {
    const Server server;
    nowhere = server.url("/");
  }
  QtHttp http(true);
  http.get(nowhere);
  EXPECT_EQ(http.underWay(), 1);
  ASSERT_TRUE(waitUntil([&] { return http.underWay() == 0; }));
  Server server;
  http.get(server.url("/"));
  ASSERT_TRUE(waitUntil([&] { return http.underWay() == 0; }));
  EXPECT_EQ(server.requests.size(), 1U);
}

TEST(QtHttp, AServerThatCannotProveItsNameIsToldNothing) {
  Server plain;
  QtHttp http;
  http.get("https://127.0.0.1:" + std::to_string(plain.port()) + "/?appID=com.example.host");
  ASSERT_TRUE(waitUntil([&] { return http.underWay() == 0; }));
  for (const std::string& request : plain.requests) {
    EXPECT_EQ(request.find("appID"), std::string::npos);
  }
}

// To a server whose name is vouched for by an authority that the process trusts for now.
TEST(QtHttp, AnEncryptedRequestSaysTheSame) {
  const QTemporaryDir folder;
  const QString key = folder.filePath(QStringLiteral("key.pem"));
  const QString name = folder.filePath(QStringLiteral("name.pem"));
  const int status = QProcess::execute(
      QStringLiteral("openssl"),
      {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1",
       "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", name});
  if (status != 0) GTEST_SKIP() << "openssl makes no certificate here";
  QFile keyFile(key);
  ASSERT_TRUE(keyFile.open(QIODevice::ReadOnly));
  const QList<QSslCertificate> names = QSslCertificate::fromPath(name);
  ASSERT_EQ(names.size(), 1);
  QSslConfiguration serving = QSslConfiguration::defaultConfiguration();
  serving.setLocalCertificate(names.front());
  serving.setPrivateKey(QSslKey(&keyFile, QSsl::Rsa));
  QSslServer server;
  server.setSslConfiguration(serving);
  std::string request;
  ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
  QObject::connect(&server, &QTcpServer::pendingConnectionAvailable, &server, [&] {
    QTcpSocket* socket = server.nextPendingConnection();
    QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket, &request] {
      request += socket->readAll().toStdString();
      socket->write("HTTP/1.1 204 No Content\r\n\r\n");
    });
  });
  const std::string at = "127.0.0.1:" + std::to_string(server.serverPort());
  QtHttp http;
  http.get("https://" + at + "/?appID=unknown");
  ASSERT_TRUE(waitUntil([&] { return http.underWay() == 0; }));
  EXPECT_EQ(request, "") << "nobody vouches for it yet";

  const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
  QSslConfiguration trusting = before;
  trusting.addCaCertificates(names);
  QSslConfiguration::setDefaultConfiguration(trusting);
  http.get("https://" + at + "/?appID=com.example.host");
  const bool isOver = waitUntil([&] { return http.underWay() == 0; });
  QSslConfiguration::setDefaultConfiguration(before);
  ASSERT_TRUE(isOver);
  EXPECT_EQ(request, "GET /?appID=com.example.host HTTP/1.1\r\nHost: " + at +
                         "\r\nConnection: close\r\n\r\n");
}

TEST(QtHttp, ARequestBeyondTheMostIsDropped) {
  Server silent;
  silent.reply.clear();
  QtHttp http(true);
  for (int request = 0; request < 2 * QtHttp::kMostRequests; ++request) http.get(silent.url("/"));
  EXPECT_EQ(http.underWay(), QtHttp::kMostRequests);
  ASSERT_TRUE(waitUntil([&] { return silent.requests.size() == QtHttp::kMostRequests; }));
  EXPECT_EQ(http.underWay(), QtHttp::kMostRequests);
}

TEST(QtHttp, WhatIsCancelledIsOverAtOnceAndOthersMayFollow) {
  Server server;
  server.reply.clear();
  QtHttp http(true);
  http.cancelAll();
  http.get(server.url("/heard"));
  ASSERT_TRUE(waitUntil([&] { return server.requests.size() == 1; }));
  http.get(server.url("/never sent"));
  http.get(server.url("/not%20sent"));
  http.cancelAll();
  EXPECT_EQ(http.underWay(), 0);
  ASSERT_TRUE(waitUntil([&] { return server.closed >= 1; }));
  server.reply = "HTTP/1.1 204 No Content\r\n\r\n";
  http.get(server.url("/later"));
  ASSERT_TRUE(waitUntil([&] { return http.underWay() == 0; }));
  ASSERT_EQ(server.requests.size(), 2U);
  EXPECT_TRUE(server.requests[1].starts_with("GET /later "));
}

TEST(QtHttp, ALongReplyIsNotHeardToItsEnd) {
  Server server;
  server.reply = "HTTP/1.1 200 OK\r\n\r\n" + QByteArray(1 << 20, 'x');
  QtHttp http(true);
  http.get(server.url("/"));
  // The server never ends its reply.
  EXPECT_TRUE(waitUntil([&] { return http.underWay() == 0 && server.closed == 1; }));
}

TEST(QtHttp, MayGoWhileARequestIsUnderWay) {
  Server silent;
  silent.reply.clear();
  {
    QtHttp http(true);
    http.get(silent.url("/"));
    ASSERT_TRUE(waitUntil([&] { return !silent.requests.empty(); }));
  }
  EXPECT_TRUE(waitUntil([&] { return silent.closed == 1; }));
}

}  // namespace
}  // namespace halvora
