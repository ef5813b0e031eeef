// SPDX-License-Identifier: Apache-2.0
// Comma-separated values as ticket offices export them: separators by what the first line has most
// of, quoted fields, any line ends, a byte order mark. Values, any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace halvora {

inline constexpr std::size_t kLargestTable = std::size_t{256} << 20;
inline constexpr std::size_t kMostTableRows = 2'000'000;

struct CsvRow {
  /// Of the file, from 1; of its beginning, where a quoted field goes over several.
  std::size_t line = 0;
  std::vector<std::string> fields;
};

struct CsvTable {
  std::vector<std::string> columns;
  std::vector<CsvRow> rows;
};

struct CsvFault {
  std::size_t line = 0;
  std::string what;
};

/// The first line names the columns; lines that hold nothing are left out.
std::variant<CsvTable, CsvFault> parseCsv(std::string_view text);

}  // namespace halvora
