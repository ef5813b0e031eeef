// SPDX-License-Identifier: Apache-2.0
#include "venue/show/show_key.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "venue/base/input_text.h"

namespace halvora {

namespace {

/// More than any key with white space around it that somebody means.
constexpr std::size_t kLongestFile = 256;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

/// A file's first bytes, wiped when they go.
struct KeyText {
  KeyText() = default;
  ~KeyText() { explicit_bzero(bytes.data(), bytes.size()); }
  KeyText(const KeyText&) = delete;
  KeyText& operator=(const KeyText&) = delete;

  std::string_view text() const { return {bytes.data(), size}; }

  std::array<char, kLongestFile> bytes{};
  std::size_t size = 0;
};

/// False, with the system's reason in `errno`, where it cannot be read. A pipe is waited for as
/// long as somebody may write to it and nobody ends the command.
bool readInto(KeyText& key, int file) {
  while (key.size < key.bytes.size()) {
    const ssize_t count = read(file, key.bytes.data() + key.size, key.bytes.size() - key.size);
    if (count == 0) return true;
    pollfd wanted{file, POLLIN, 0};
    if (count < 0 && (errno != EAGAIN || poll(&wanted, 1, -1) < 0)) return false;
    if (count > 0) key.size += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

std::variant<ShowKey, CommandResult> readShowKey(const std::string& path) {
  // Whoever gives the key itself has shown it to every list of processes, and is not to find it in
  // a log besides.
  if (ShowKey::ofText(path)) {
    return unusable(
        "--show-key takes the name of a file with the key, never the key, which others could read "
        "in the list of processes; a file of such a name is ./NAME");
  }
  // Not blocking, because a pipe that nobody writes to could not even be opened.
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  struct stat facts {};
  if (file.number() < 0 || fstat(file.number(), &facts) != 0) {
    return unusable(path + ": " + std::strerror(errno) + " (--show-key)");
  }
  if ((facts.st_mode & (S_IRGRP | S_IROTH)) != 0) {
    return unusable(path +
                    ": others may read this show key; allow only its owner, as by chmod 600");
  }
  KeyText text;
  if (!readInto(text, file.number())) {
    if (errno == EINTR) return interrupted();
    return unusable(path + ": " + std::strerror(errno) + " (--show-key)");
  }
  if (const auto key = ShowKey::ofText(text.text())) return *key;
  return unusable(path + ": a show key is 32 hexadecimal digits and nothing else");
}

std::variant<std::unique_ptr<MessageCode>, CommandResult> readShowCode(const std::string& path,
                                                                       const MessageCodes* codes) {
  auto key = readShowKey(path);
  if (auto* refusal = std::get_if<CommandResult>(&key)) return std::move(*refusal);
  auto code = codes != nullptr ? codes->withKey(std::get<ShowKey>(key)) : nullptr;
  if (code == nullptr) return failed("this build has no cipher for show keys");
  return code;
}

std::variant<std::uint32_t, CommandResult> readEpoch(const std::string& text) {
  const auto value = decimal(text, std::numeric_limits<std::uint32_t>::max());
  if (value) return static_cast<std::uint32_t>(*value);
  return unusable("--epoch must be whole minutes since 1970, 0 to 4294967295, not \"" + text +
                  "\"");
}

}  // namespace halvora
