// SPDX-License-Identifier: Apache-2.0
// The kit's tables of texts as they are compiled in; the build makes their source from
// assets/kit/strings. Any thread.
#pragma once

#include <span>
#include <string_view>

namespace halvora {

struct KitTable {
  /// Within the kit's bundle.
  std::string_view path;
  /// A flat JSON object.
  std::string_view text;
};

std::span<const KitTable> kitTables();

}  // namespace halvora
