// SPDX-License-Identifier: Apache-2.0
// The process lives in a country that writes 1.234.567,5 for as long as one of these does: what the
// standard library prints and reads in no locale of its own, and, where the machine can make a
// German locale, what the C library does too. Owned by a test, on its thread.
#pragma once

#include <locale>
#include <string>

namespace halvora {

class OtherCountry {
 public:
  OtherCountry();
  ~OtherCountry();
  OtherCountry(const OtherCountry&) = delete;
  OtherCountry& operator=(const OtherCountry&) = delete;

  /// Whether the C library writes a comma too.
  bool isWhole() const { return isWhole_; }

 private:
  std::locale before_;
  std::string beforeInC_;
  bool isWhole_;
};

}  // namespace halvora
