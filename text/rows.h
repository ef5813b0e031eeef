// SPDX-License-Identifier: Apache-2.0
// Tables that check themselves: a row carries the number that it is found under, and a table whose
// rows stand elsewhere does not compile. Any thread.
#pragma once

#include <cstddef>

namespace halvora {

/// Whether each row stands at the place of its key, a number or an enumerator from 0 on.
template <class Table, class Row, class Key>
constexpr bool areInOrder(const Table& rows, Key Row::*key) {
  for (std::size_t at = 0; at < rows.size(); ++at) {
    if (rows[at].*key != static_cast<Key>(at)) return false;
  }
  return true;
}

}  // namespace halvora
