// SPDX-License-Identifier: Apache-2.0
// What the tests of planted faults share: which of an adapter's faults is in it, and whether the
// suite has said so.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "conformance/promises.h"

namespace halvora {

enum class Fault : std::uint8_t { first, second, third, fourth, fifth };

inline void expectSaid(const std::vector<conformance::BrokenPromise>& broken,
                       const std::string& promise) {
  const std::string said = conformance::textOf(broken);
  EXPECT_NE(said.find(promise), std::string::npos) << "not said: " << promise << "\n" << said;
}

}  // namespace halvora
