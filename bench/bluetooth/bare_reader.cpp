// SPDX-License-Identifier: Apache-2.0
#include "bench/bluetooth/bare_reader.h"

#include <array>
#include <chrono>
#include <thread>

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvora {

namespace {

/// The fixed part of a bus message's header, and the rest of one that carries an advertisement.
constexpr std::size_t kHead = 24;
constexpr std::size_t kRest = 264;

double processorMicroseconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto microseconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
  };
  return microseconds(usage.ru_utime) + microseconds(usage.ru_stime);
}

bool write(int socket, int wakesASecond, int wakes) {
  const std::array<char, kHead + kRest> message{};
  auto next = std::chrono::steady_clock::now();
  for (int count = 0; count < wakes; ++count) {
    next += std::chrono::microseconds(1'000'000 / wakesASecond);
    std::this_thread::sleep_until(next);
    if (send(socket, message.data(), message.size(), MSG_NOSIGNAL) < 0) return false;
  }
  return true;
}

bool readOne(int socket) {
  std::array<char, kRest> bytes;
  pollfd polled{socket, POLLIN, 0};
  if (poll(&polled, 1, -1) != 1) return false;
  if (recv(socket, bytes.data(), kHead, MSG_DONTWAIT) != kHead ||
      recv(socket, bytes.data(), kRest, MSG_DONTWAIT) != kRest) {
    return false;
  }
  // Whoever reads until nothing is left asks once more.
  [[maybe_unused]] const auto more = recv(socket, bytes.data(), 1, MSG_DONTWAIT | MSG_PEEK);
  return true;
}

}  // namespace

double bareReaderCost(int wakesASecond, int seconds) {
  std::array<int, 2> sockets{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) return -1;
  const int wakes = wakesASecond * seconds;
  const pid_t writer = fork();
  if (writer == 0) _exit(write(sockets[1], wakesASecond, wakes) ? 0 : 1);
  close(sockets[1]);
  const double before = processorMicroseconds();
  int read = 0;
  while (read < wakes && readOne(sockets[0])) ++read;
  const double spent = processorMicroseconds() - before;
  close(sockets[0]);
  int status = 0;
  waitpid(writer, &status, 0);
  return read == wakes && status == 0 ? spent / wakes : -1;
}

}  // namespace halvora
