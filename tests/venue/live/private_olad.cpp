// SPDX-License-Identifier: Apache-2.0
#include "tests/venue/live/private_olad.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <string_view>
#include <utility>

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace halvora {

namespace {

constexpr std::uint16_t kArtNetPort = 6454;
constexpr std::uint16_t kSacnPort = 5568;
constexpr uid_t kNobody = 65534;
constexpr std::size_t kMostLevels = 512;

sockaddr_in loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// The port that a socket gets there; 0 where it gets none.
std::uint16_t portBoundTo(std::uint16_t port, int type) {
  const int socket = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
  sockaddr_in address = loopback(port);
  socklen_t size = sizeof address;
  const bool isBound = bind(socket, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                       getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
  close(socket);
  return isBound ? ntohs(address.sin_port) : std::uint16_t{0};
}

// The daemon speaks sACN on an interface that is no loopback, whoever it then hears.
bool hasInterface() {
  ifaddrs* all = nullptr;
  if (getifaddrs(&all) != 0) return false;
  bool isThere = false;
  for (const ifaddrs* one = all; one != nullptr; one = one->ifa_next) {
    isThere = isThere || (one->ifa_addr != nullptr && one->ifa_addr->sa_family == AF_INET &&
                          (one->ifa_flags & IFF_UP) != 0 && (one->ifa_flags & IFF_LOOPBACK) == 0);
  }
  freeifaddrs(all);
  return isThere;
}

bool hasProgram(const char* path) { return access(path, X_OK) == 0; }

constexpr const char* kOlad = "/usr/bin/olad";

[[noreturn]] void becomeOlad(const std::string& folder, std::uint16_t port) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
  dup2(nothing, STDOUT_FILENO);
  dup2(nothing, STDERR_FILENO);
  // It refuses to be root.
  if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(1);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::string own = std::to_string(port);
  execl(kOlad, kOlad, "--config-dir", folder.c_str(), "--rpc-port", own.c_str(), "--no-http",
        "--no-register-with-dns-sd", nullptr);
  _exit(1);
}

void append(std::vector<std::uint8_t>& bytes, std::string_view text, std::size_t width) {
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.resize(bytes.size() + width - text.size());
}

void append16(std::vector<std::uint8_t>& bytes, std::size_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
  bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
}

// A length of sACN with its flags.
void appendLength(std::vector<std::uint8_t>& bytes, std::size_t length) {
  append16(bytes, 0x7000U | length);
}

}  // namespace

PrivateOlad::PrivateOlad(const std::vector<int>& artNet, int sacn) {
  if (!hasProgram(kOlad)) {
    whyNot_ = "olad is not installed (Debian's package ola)";
    return;
  }
  if (!hasInterface()) {
    whyNot_ = "this machine has the loopback alone, on which olad speaks no sACN";
    return;
  }
  const std::string lock = testing::TempDir() + "halvora-olad.lock";
  lock_ = ::open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  flock(lock_, LOCK_EX);
  if (portBoundTo(kArtNetPort, SOCK_DGRAM) == 0 || portBoundTo(kSacnPort, SOCK_DGRAM) == 0) {
    whyNot_ = "another program on this machine listens to Art-Net or sACN";
    return;
  }
  port_ = portBoundTo(0, SOCK_STREAM);
  writeSettings(artNet, sacn);
  start();
}

PrivateOlad::~PrivateOlad() {
  kill();
  close(lock_);
}

void PrivateOlad::writeSettings(const std::vector<int>& artNet, int sacn) const {
  for (const char* other : {"dummy", "espnet", "ftdidmx", "gpio", "karate", "kinet", "milinst",
                            "opendmx", "openpixelcontrol", "osc", "pathport", "renard", "sandnet",
                            "shownet", "spi", "stageprofi", "uartdmx", "usbdmx", "usbserial"}) {
    folder_.write(std::string("ola-") + other + ".conf", "enabled = false\n");
  }
  folder_.write("ola-artnet.conf",
                "enabled = true\nip = 127.0.0.1\nnet = 0\nsubnet = 0\nuse_loopback = true\n");
  folder_.write("ola-e131.conf", "enabled = true\ninput_ports = 1\n");
  // Plugin, device, input, port.
  std::string ports;
  for (std::size_t at = 0; at < artNet.size(); ++at) {
    ports += "2-1-I-" + std::to_string(at) + " = " + std::to_string(artNet[at]) + "\n";
  }
  folder_.write("ola-port.conf", ports + "11-1-I-0 = " + std::to_string(sacn) + "\n");
  if (geteuid() != 0) return;
  for (const auto& file : std::filesystem::directory_iterator(folder_.path())) {
    if (chown(file.path().c_str(), kNobody, kNobody) != 0) ADD_FAILURE() << file.path();
  }
  if (chown(folder_.path().c_str(), kNobody, kNobody) != 0) ADD_FAILURE() << folder_.path();
}

void PrivateOlad::start() {
  process_ = fork();
  if (process_ == 0) becomeOlad(folder_.path(), port_);
}

void PrivateOlad::kill() {
  const pid_t process = std::exchange(process_, 0);
  if (process <= 0) return;
  ::kill(process, SIGKILL);
  waitpid(process, nullptr, 0);
}

LoopbackDesk::LoopbackDesk() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}

LoopbackDesk::~LoopbackDesk() { close(socket_); }

void LoopbackDesk::send(const std::vector<std::uint8_t>& bytes, std::uint16_t port) const {
  const sockaddr_in address = loopback(port);
  EXPECT_EQ(sendto(socket_, bytes.data(), bytes.size(), 0,
                   reinterpret_cast<const sockaddr*>(&address), sizeof address),
            static_cast<ssize_t>(bytes.size()));
}

// An ArtDmx packet, whose sequence is not used.
void LoopbackDesk::sendArtNet(int address, std::span<const std::uint8_t> levels) const {
  std::vector<std::uint8_t> bytes;
  append(bytes, "Art-Net", 8);
  for (const int part : {0x00, 0x50, 0, 14, 0, 0, address & 0xFF, address >> 8}) {
    bytes.push_back(static_cast<std::uint8_t>(part));
  }
  append16(bytes, kMostLevels);
  bytes.insert(bytes.end(), levels.begin(), levels.end());
  bytes.resize(bytes.size() + kMostLevels - levels.size());
  send(bytes, kArtNetPort);
}

// A data packet of E1.31: root, frame and levels, each layer with the length of all that follows.
void LoopbackDesk::sendSacn(int universe, std::span<const std::uint8_t> levels) {
  constexpr std::size_t kLayers[] = {22, 77, 10};
  const std::size_t inner = 1 + kMostLevels;
  std::vector<std::uint8_t> bytes;
  append16(bytes, 0x10);
  append16(bytes, 0);
  append(bytes, "ASC-E1.17", 12);
  appendLength(bytes, kLayers[0] + kLayers[1] + kLayers[2] + inner);
  append16(bytes, 0);
  append16(bytes, 4);
  append(bytes, "a desk of a test", 16);
  appendLength(bytes, kLayers[1] + kLayers[2] + inner);
  append16(bytes, 0);
  append16(bytes, 2);
  append(bytes, "desk", 64);
  // Priority, no synchronisation, the number, no options.
  bytes.push_back(100);
  append16(bytes, 0);
  bytes.push_back(++sequence_);
  bytes.push_back(0);
  append16(bytes, static_cast<std::size_t>(universe));
  appendLength(bytes, kLayers[2] + inner);
  bytes.push_back(0x02);
  bytes.push_back(0xA1);
  append16(bytes, 0);
  append16(bytes, 1);
  append16(bytes, inner);
  bytes.push_back(0);
  bytes.insert(bytes.end(), levels.begin(), levels.end());
  bytes.resize(bytes.size() + kMostLevels - levels.size());
  send(bytes, kSacnPort);
}

}  // namespace halvora
