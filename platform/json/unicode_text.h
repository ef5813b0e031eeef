// SPDX-License-Identifier: Apache-2.0
// Brings a JSON document of any Unicode encoding to UTF-8. Stateless; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvora {

/// The document without its byte order mark. UTF-8 is answered as it is (and not checked); UTF-16
/// and UTF-32, with a mark or told by the zeros among the first bytes, are converted into
/// `storage`, which must outlive the answer. None for text that ends within a character or holds
/// half a surrogate pair.
std::optional<std::string_view> utf8Of(std::string_view document, std::string& storage);

}  // namespace halvora
