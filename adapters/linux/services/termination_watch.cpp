// SPDX-License-Identifier: Apache-2.0
#include "adapters/linux/services/termination_watch.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace halvora {

namespace {

// A handler knows nothing but what it finds in the process: where to write.
std::atomic<int> writingEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void handle(int signal) {
  const int error = errno;
  const auto byte = static_cast<std::uint8_t>(signal);
  // A pipe that is full has said it already.
  if (write(writingEnd.load(), &byte, 1) != 1) std::signal(signal, SIG_DFL);
  errno = error;
}

bool hasUsualAction(int signal) {
  struct sigaction present {};
  return sigaction(signal, nullptr, &present) == 0 && (present.sa_flags & SA_SIGINFO) == 0 &&
         present.sa_handler == SIG_DFL;
}

bool isHandled(int signal) {
  struct sigaction present {};
  return sigaction(signal, nullptr, &present) == 0 && present.sa_handler == handle;
}

}  // namespace

TerminationWatch::TerminationWatch(Descriptors& descriptors, Told told) : told_(std::move(told)) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  reading_ = ends[0];
  writing_ = ends[1];
  int none = -1;
  if (!writingEnd.compare_exchange_strong(none, writing_)) return;
  isHandling_ = true;
  watch_ = DescriptorWatch(
      descriptors, descriptors.watch(reading_, DescriptorEvents::readable, [this] { heard(); }));
  struct sigaction once {};
  once.sa_handler = handle;
  once.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  for (const int signal : kSignals) {
    if (hasUsualAction(signal)) sigaction(signal, &once, nullptr);
  }
}

TerminationWatch::~TerminationWatch() {
  restore();
  if (isHandling_) writingEnd = -1;
  watch_.end();
  if (reading_ >= 0) close(reading_);
  if (writing_ >= 0) close(writing_);
}

void TerminationWatch::restore() {
  if (!isHandling_) return;
  for (const int signal : kSignals) {
    if (isHandled(signal)) std::signal(signal, SIG_DFL);
  }
}

void TerminationWatch::heard() {
  std::uint8_t signal = 0;
  if (read(reading_, &signal, 1) != 1) return;
  // From now on they end the process.
  restore();
  // It may destroy this.
  const Told told = told_;
  if (told) told(signal);
}

}  // namespace halvora
