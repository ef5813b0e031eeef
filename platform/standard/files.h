// SPDX-License-Identifier: Apache-2.0
// Whole files, bounded. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace halvora {

/// The bytes of a regular file, or none when it is missing, unreadable, no regular file or larger
/// than `limit` bytes.
std::optional<std::string> readFile(const std::string& path, std::size_t limit);

}  // namespace halvora
