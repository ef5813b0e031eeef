// SPDX-License-Identifier: Apache-2.0
// Numbers and paths as a person types them. Any thread, no locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace halvora {

/// Decimal digits and nothing else, up to `largest`.
std::optional<std::uint64_t> decimal(std::string_view text, std::uint64_t largest);
/// The same with a minus sign allowed.
std::optional<std::int64_t> wholeNumber(std::string_view text);

/// A plain decimal number, fraction and exponent allowed, and nothing around it.
std::optional<double> plainNumber(const std::string& text);

/// The path from the root, without empty names, "." and "..". Links stay as they are, and so does a
/// ".." behind one: it leads elsewhere than the names suggest. Empty for an empty path.
std::string absolutePath(std::string_view path);

/// Whether a folder is there, or could be made there.
bool mayBeFolder(const std::string& path);

}  // namespace halvora
