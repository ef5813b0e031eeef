// SPDX-License-Identifier: Apache-2.0
// Hears of the signals that ask a process to end (TERM, INT and HUP) in a turn of the run loop, so
// that the phone can be given back first. Once only: a second one ends the process, for whoever
// cannot wait. A signal that somebody else handles already is left to them. There is one of these
// in a process at a time, as there is one set of signals; a second one hears nothing. The host owns
// it; main thread.
#pragma once

#include <array>
#include <csignal>
#include <functional>

#include "halvora/platform/descriptors.h"

namespace halvora {

class TerminationWatch {
 public:
  using Told = std::function<void(int signal)>;

  TerminationWatch(Descriptors& descriptors, Told told);
  /// The signals do again what they did before.
  ~TerminationWatch();
  TerminationWatch(const TerminationWatch&) = delete;
  TerminationWatch& operator=(const TerminationWatch&) = delete;

 private:
  static constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

  void heard();
  void restore();

  const Told told_;
  int reading_ = -1;
  int writing_ = -1;
  bool isHandling_ = false;
  DescriptorWatch watch_;
};

}  // namespace halvora
