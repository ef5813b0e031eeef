// SPDX-License-Identifier: Apache-2.0
// All fuzz targets of this build, as a table. Values, any thread.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "tests/fuzz/fuzz_target.h"

namespace halvora {

struct FuzzTarget {
  const char* name;
  /// Returns 0; throws FuzzFailure for an input that breaks a rule.
  int (*run)(FuzzBytes);
  /// Longer inputs find nothing that shorter ones do not.
  std::size_t longest;
  /// Random inputs that an ordinary test tries besides the kept ones.
  int testRuns;
  /// The file of words in tests/fuzz/words; null for none.
  const char* words;
};

/// Targets whose libraries this build lacks are left out.
std::span<const FuzzTarget> fuzzTargets();
/// Null for none of that name.
const FuzzTarget* fuzzTargetOf(std::string_view name);

int fuzzPacket(FuzzBytes);
int fuzzScanner(FuzzBytes);
int fuzzAir(FuzzBytes);
int fuzzValues(FuzzBytes);
int fuzzJson(FuzzBytes);
int fuzzPalettes(FuzzBytes);
int fuzzStrings(FuzzBytes);
int fuzzVersions(FuzzBytes);
int fuzzSeatMap(FuzzBytes);
int fuzzStanding(FuzzBytes);
int fuzzDefaults(FuzzBytes);
int fuzzTables(FuzzBytes);
int fuzzScenario(FuzzBytes);
int fuzzShow(FuzzBytes);
int fuzzTickets(FuzzBytes);
int fuzzGobos(FuzzBytes);
int fuzzEngine(FuzzBytes);
int fuzzFlashes(FuzzBytes);
int fuzzPicture(FuzzBytes);
int fuzzOutline(FuzzBytes);
int fuzzVideo(FuzzBytes);
int fuzzBus(FuzzBytes);

}  // namespace halvora
