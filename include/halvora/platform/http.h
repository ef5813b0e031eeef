// SPDX-License-Identifier: Apache-2.0
// HTTP GET, fire and forget: the reply and every failure are ignored, nothing is retried. Main
// thread; never blocks.
#pragma once

#include <string>

#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class HttpClient : public Need {
 public:
  /// Asks for that address and forgets it; what is no address that may be asked is dropped.
  virtual void get(const std::string& url) = 0;
  /// Gives up whatever is under way.
  virtual void cancelAll() {}
};

}  // namespace v0
}  // namespace halvora
