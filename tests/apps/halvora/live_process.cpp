// SPDX-License-Identifier: Apache-2.0
#include "tests/apps/halvora/live_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "adapters/standard/stopwatch.h"
#include "apps/halvora/commands.h"
#include "apps/halvora/interruption.h"
#include "apps/halvora/spoken_lines.h"
#include "apps/halvora/whole_lines.h"
#include "engine/broadcast.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/venue/plan/word_videos.h"

namespace halvora {

namespace {

constexpr Duration kLimit = milliseconds(60'000);

// In the child, as the program's own main does it.
[[noreturn]] void playLive(const LiveProcessSetup& setup) {
  std::vector<const char*> words{"halvora", "live"};
  for (const std::string& word : setup.words) words.push_back(word.c_str());
  const PixmapDecoder images;
  const WordVideos videos;
  Outside outside{images, videos, interruptedBySignals()};
  outside.openLive = [&setup] { return openSystemGround(setup.makeAdvertiser); };
  SpokenLines spoken(STDERR_FILENO);
  outside.messages = [&spoken](std::string_view lines) {
    spoken.say(lines);
    return true;
  };
  WholeLines output(STDOUT_FILENO);
  const CommandResult result =
      runCommand(static_cast<int>(words.size()), words.data(), outside,
                 [&output](std::string_view text) { return output.write(text); });
  if (!result.error.empty()) std::fprintf(stderr, "halvora: %s\n", result.error.c_str());
  std::fflush(stderr);
  _exit(result.status);
}

void beChild(int input, int output, int errors) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  constexpr int kMostDescriptors = 256;
  for (int other = STDERR_FILENO + 1; other < kMostDescriptors; ++other) ::close(other);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(number, SIG_DFL);
}

void takeLines(std::string& begun, std::string_view bytes, std::vector<std::string>& lines) {
  begun += bytes;
  for (std::size_t end = 0; (end = begun.find('\n')) != std::string::npos;) {
    lines.push_back(begun.substr(0, end));
    begun.erase(0, end + 1);
  }
}

}  // namespace

LiveProcess::LiveProcess(const LiveProcessSetup& setup) {
  int input[2];
  int output[2];
  int errors[2];
  if (pipe2(input, O_CLOEXEC) != 0) return;
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) return;
  process_ = fork();
  if (process_ == 0) {
    beChild(input[0], output[1], errors[1]);
    playLive(setup);
  }
  ::close(input[0]);
  ::close(output[1]);
  ::close(errors[1]);
  input_ = input[1];
  output_ = output[0];
  errors_ = errors[0];
  for (const int own : {input_, output_, errors_}) {
    if (own >= 0) fcntl(own, F_SETFL, fcntl(own, F_GETFL) | O_NONBLOCK);
  }
  isUnheard_ = setup.isUnheard;
}

LiveProcess::~LiveProcess() {
  if (process_ > 0) {
    ::kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  for (const int own : {input_, output_, errors_}) {
    if (own >= 0) ::close(own);
  }
}

void LiveProcess::tell(const std::string& line) {
  const std::string bytes = line + "\n";
  std::size_t done = 0;
  waitFor([&] { return (done += pour(std::string_view(bytes).substr(done))) == bytes.size(); });
}

std::size_t LiveProcess::pour(std::string_view bytes) {
  const ssize_t count = ::write(input_, bytes.data(), bytes.size());
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void LiveProcess::look(int milliseconds) {
  const int own[] = {output_, isUnheard_ ? -1 : errors_};
  std::vector<std::string>* const lines[] = {&packets, &messages};
  pollfd watched[] = {{own[0], POLLIN, 0}, {own[1], POLLIN, 0}};
  poll(watched, std::size(watched), milliseconds);
  for (std::size_t at = 0; at < std::size(own); ++at) {
    std::array<char, 65536> bytes{};
    const ssize_t count = own[at] >= 0 ? ::read(own[at], bytes.data(), bytes.size()) : 0;
    if (count > 0) {
      takeLines(begun_[at], {bytes.data(), static_cast<std::size_t>(count)}, *lines[at]);
    }
  }
}

bool LiveProcess::waitFor(const std::function<bool()>& isSo) {
  const Stopwatch watch;
  while (!isSo()) {
    if (watch.elapsed() > kLimit) return false;
    look(10);
  }
  return true;
}

bool LiveProcess::waitForPackets(std::size_t count) {
  return waitFor([&] { return packets.size() >= count; });
}

bool LiveProcess::hasSaid(const std::string& text) const {
  return std::ranges::any_of(
      messages, [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

bool LiveProcess::waitForMessage(const std::string& text) {
  return waitFor([&] { return hasSaid(text); });
}

void LiveProcess::signal(int number) const {
  if (process_ > 0) ::kill(process_, number);
}

int LiveProcess::end() {
  int status = 0;
  const bool hasEnded =
      process_ > 0 && waitFor([&] { return waitpid(process_, &status, WNOHANG) == process_; });
  if (!hasEnded) return -1000;
  process_ = -1;
  for (std::size_t before = ~std::size_t{0}; before != packets.size() + messages.size();) {
    before = packets.size() + messages.size();
    look(0);
  }
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

int numberIn(const std::string& line) {
  constexpr std::string_view kKey = "\"packet\":\"";
  const std::size_t at = line.find(kKey);
  if (at == std::string::npos) return -1;
  return std::stoi(line.substr(at + kKey.size() + 2 * kSequenceOffset, 4), nullptr, 16);
}

}  // namespace halvora
