// SPDX-License-Identifier: Apache-2.0
#include "venue/air/system_loop.h"

#include <exception>

namespace halvora {

void runCommandUntil(PollRunLoop& loop, const std::function<bool()>& isDone) {
  constexpr Duration kLongestWait = milliseconds(200);
  const auto isOver = [&] { return isDone() || loop.failures() > 0; };
  while (!loop.runUntil(isOver, kLongestWait)) {
  }
  if (loop.failures() > 0) std::rethrow_exception(loop.firstFailure());
}

}  // namespace halvora
