// SPDX-License-Identifier: Apache-2.0
// Requests to a server in the same process. What arrives is counted there; what must not arrive is
// asked for before something that does.
#include "platform/qt/qt_http.h"

#include <QByteArray>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/qt/event_wait.h"

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

  std::string url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(server_.serverPort()) + path;
  }

  QByteArray reply = "HTTP/1.1 204 No Content\r\nContent-Length: 0\r\n\r\n";
  std::vector<std::string> requests;
  int closed = 0;

 private:
  QTcpServer server_;
};

void waitUntil(const std::function<bool()>& isDone) { letQtWorkUntil(isDone); }

TEST(QtHttp, GetsWithoutCookiesOrABody) {
  Server server;
  server.reply = "HTTP/1.1 204 No Content\r\nSet-Cookie: phone=1\r\nContent-Length: 0\r\n\r\n";
  QtHttp http(true);
  for (int request = 0; request < 2; ++request) {
    http.get(server.url("/?appID=com.example.host"));
    EXPECT_EQ(http.underWay(), 1);
    waitUntil([&] { return http.underWay() == 0; });
  }
  ASSERT_EQ(server.requests.size(), 2U);
  for (const std::string& request : server.requests) {
    EXPECT_TRUE(request.starts_with("GET /?appID=com.example.host HTTP/1.1\r\n")) << request;
    EXPECT_EQ(request.find("Cookie"), std::string::npos) << request;
    EXPECT_TRUE(request.ends_with("\r\n\r\n")) << request;
  }
}

TEST(QtHttp, PlainHttpIsNotSentUnlessTheHostAllowsIt) {
  Server server;
  QtHttp strict;
  strict.get(server.url("/strict"));
  EXPECT_EQ(strict.underWay(), 0);
  QtHttp lax(true);
  lax.get(server.url("/lax"));
  waitUntil([&] { return lax.underWay() == 0; });
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
  std::string url;
  {
    const Server server;
    url = server.url("/");
  }
  QtHttp http(true);
  http.get(url);
  waitUntil([&] { return http.underWay() == 0; });
}

TEST(QtHttp, ARequestBeyondTheMostIsDropped) {
  Server silent;
  silent.reply.clear();
  QtHttp http(true);
  for (int request = 0; request < 2 * QtHttp::kMostRequests; ++request) http.get(silent.url("/"));
  EXPECT_EQ(http.underWay(), QtHttp::kMostRequests);
}

TEST(QtHttp, ALongReplyIsCutOff) {
  Server server;
  server.reply = "HTTP/1.1 200 OK\r\n\r\n" + QByteArray(2 * QtHttp::kLargestReply, 'x');
  QtHttp http(true);
  http.get(server.url("/"));
  // The server never ends its reply.
  waitUntil([&] { return http.underWay() == 0 && server.closed == 1; });
}

TEST(QtHttp, MayGoWhileARequestIsUnderWay) {
  Server silent;
  silent.reply.clear();
  {
    QtHttp http(true);
    http.get(silent.url("/"));
    waitUntil([&] { return !silent.requests.empty(); });
  }
  waitUntil([&] { return silent.closed == 1; });
}

}  // namespace
}  // namespace halvora
