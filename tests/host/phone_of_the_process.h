// SPDX-License-Identifier: Apache-2.0
// A virtual phone for the process's one engine: never destroyed, as that engine is not. Another
// test may have made that engine before, on a phone of its own, so no test may rely on this one
// being in use.
#pragma once

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"

namespace halvora {

inline Platform platformOfTheProcess() {
  static const ExactJsonReader kReader;
  static auto* const kPhone = new VirtualPhone(kReader);
  return kPhone->platform();
}

}  // namespace halvora
