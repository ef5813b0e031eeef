// SPDX-License-Identifier: Apache-2.0
// The texts of a bundle: strings/<language>.json, one flat object of key to text each. Which table
// serves is settled when it is read. Values, any thread.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/platform/bundle.h"
#include "halvora/platform/json.h"

namespace halvora {

/// In bytes; a larger file is not read.
inline constexpr std::size_t kLargestStringTable = std::size_t{1} << 20;

using StringTable = std::map<std::string, std::string, std::less<>>;

/// `languages` are the user's, best first ("de-AT"): of the first one that has a table, exactly or
/// without its trailing parts, the texts are taken, and from English what that table lacks.
StringTable stringTableOf(const Bundle& bundle, const std::vector<std::string>& languages,
                          const JsonReader& json);

/// The text under a key; the key itself where there is none.
std::string textIn(const StringTable& table, std::string_view key);

/// Whether a text is letters, digits and hyphens, and so may name a file.
bool isLanguageTag(std::string_view tag);

}  // namespace halvora
