// SPDX-License-Identifier: Apache-2.0
// Where the three usage counters are sent, each a root such as "https://opens.example"; part of a
// deployment. An empty one is not sent. A value, any thread.
#pragma once

#include <string>

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

struct UsageEndpoints {
  /// At every activation of the application.
  std::string appOpened;
  /// Once a calendar day.
  std::string device;
  /// Once a calendar day on which a transmitter was heard.
  std::string receivedSignal;
};

}  // namespace v0
}  // namespace halvora
