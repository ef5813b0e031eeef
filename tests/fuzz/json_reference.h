// SPDX-License-Identifier: Apache-2.0
// What another reader of JSON says of a document, where the two are meant to agree. Stateless.
#pragma once

#include <cstddef>
#include <string_view>

namespace halvora {

/// Whether there are so many digits in a row.
bool hasDigits(std::string_view text, std::size_t count);

bool rapidJsonAccepts(std::string_view text);

/// Not what the two are known to take differently: other encodings and marks, zeros, halves of
/// pairs, documents that are no container, deep ones, and numbers of hundreds of digits.
bool isComparableJson(std::string_view text);

}  // namespace halvora
