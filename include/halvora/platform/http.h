// SPDX-License-Identifier: Apache-2.0
// HTTP GET, fire and forget: the reply and every failure are ignored, nothing is retried. Main
// thread; never blocks.
#pragma once

#include <string>

namespace halvora {

class HttpClient {
 public:
  virtual ~HttpClient() = default;
  virtual void get(const std::string& url) = 0;
  /// Gives up whatever is under way.
  virtual void cancelAll() {}
};

}  // namespace halvora
