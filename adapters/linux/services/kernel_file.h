// SPDX-License-Identifier: Apache-2.0
// The small files in which the kernel shows one value each. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace halvora {

/// The first line of a small file; longer ones are none of the kernel's. Never waits, whatever the
/// file is.
std::string firstLineOf(const std::string& path);
/// The number in it, where there is one of at most that.
std::optional<std::uint32_t> numberIn(const std::string& path, std::uint32_t most);

}  // namespace halvora
