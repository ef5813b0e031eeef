// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "pixelmap/seat_lut_cache.h"
#include "tests/support/side_by_side.h"

namespace halvora {
namespace {

TEST(SeatLutCacheThreads, TablesAreFoundStoredAndForgottenSideBySide) {
  SeatLutCache cache;
  const SeatLut table(std::vector<std::uint32_t>(3, 7U));
  sideBySide(
      {[&] { cache.find("seat"); }, [&] { cache.store("seat", table); }, [&] { cache.clear(); }});
  cache.store("seat", table);
  EXPECT_TRUE(cache.find("seat") == table);
}

}  // namespace
}  // namespace halvora
