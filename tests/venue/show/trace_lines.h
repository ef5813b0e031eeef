// SPDX-License-Identifier: Apache-2.0
// Traces as a test compares them: within one time the order of the lines carries no meaning, and a
// line may say more than was expected of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace halvora {

/// What differs between an expected trace and the one that was written, a line each, with "missing"
/// or "unexpected" before it; empty when nothing does. An expected `get` that begins with * stands
/// for any host.
std::vector<std::string> differences(std::string_view expected, std::string_view written);

/// What no trace may have: a line that is no object, or does not begin with a whole `t` followed by
/// a known key, or goes back in time. Empty when all is well.
std::vector<std::string> flawsOfTrace(std::string_view written);

}  // namespace halvora
