// SPDX-License-Identifier: Apache-2.0
#include <memory>

#include <gtest/gtest.h>

#include "adapters/nettle/nettle_codes.h"
#include "conformance/phone_promises.h"

namespace halvora {
namespace {

TEST(ConformanceOfCodes, HoldsForNettle) {
  const auto broken = conformance::checkCodes([] { return std::make_unique<NettleCodes>(); });
  EXPECT_TRUE(broken.empty()) << conformance::textOf(broken);
}

}  // namespace
}  // namespace halvora
