// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/csv_table.h"

#include <algorithm>
#include <utility>

#include "adapters/json/unicode_text.h"

namespace halvora {

namespace {

constexpr std::size_t kMostColumns = 1000;
constexpr std::string_view kMark = "\xEF\xBB\xBF";

std::string fieldText(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

char separatorOf(std::string_view text) {
  const std::string_view head = text.substr(0, text.find('\n'));
  char best = ',';
  for (const char candidate : {';', '\t'}) {
    if (std::ranges::count(head, candidate) > std::ranges::count(head, best)) best = candidate;
  }
  return best;
}

class CsvParse {
 public:
  explicit CsvParse(std::string_view text) : rest_(text), separator_(separatorOf(text)) {}

  // The next line that holds something; none at the end, or at a fault.
  std::optional<CsvRow> next() {
    while (!rest_.empty() && fault_.empty()) {
      CsvRow row{line_, {}};
      while (readField(row)) {
      }
      const bool holdsNothing = row.fields.size() == 1 && row.fields[0].empty();
      if (!holdsNothing && fault_.empty()) return row;
    }
    return std::nullopt;
  }
  const std::string& fault() const { return fault_; }
  std::size_t line() const { return line_; }

 private:
  // False after the last one of a line.
  bool readField(CsvRow& row) {
    std::string field;
    if (rest_.starts_with('"')) {
      readQuoted(field);
    } else {
      const std::size_t end = std::min(rest_.find_first_of(ends_), rest_.size());
      field = fieldText(std::string(rest_.substr(0, end)));
      rest_.remove_prefix(end);
    }
    if (row.fields.size() == kMostColumns) fault_ = "more than 1000 columns";
    if (!fault_.empty()) return false;
    row.fields.push_back(std::move(field));
    if (rest_.starts_with(separator_)) {
      rest_.remove_prefix(1);
      return true;
    }
    if (rest_.starts_with('\r')) rest_.remove_prefix(1);
    if (rest_.starts_with('\n')) rest_.remove_prefix(1);
    ++line_;
    return false;
  }

  void readQuoted(std::string& field) {
    rest_.remove_prefix(1);
    for (;;) {
      const std::size_t end = rest_.find('"');
      if (end == std::string_view::npos) {
        fault_ = "a quoted field without its end";
        return;
      }
      field += rest_.substr(0, end);
      line_ += static_cast<std::size_t>(std::ranges::count(rest_.substr(0, end), '\n'));
      rest_.remove_prefix(end + 1);
      if (!rest_.starts_with('"')) break;
      field += '"';
      rest_.remove_prefix(1);
    }
    if (!rest_.empty() && ends_.find(rest_.front()) == std::string::npos) {
      fault_ = "something behind the end of a quoted field";
    }
  }

  std::string_view rest_;
  const char separator_;
  /// Of a field without quotes.
  const std::string ends_{separator_, '\r', '\n'};
  std::size_t line_ = 1;
  std::string fault_;
};

// Phones read a map as UTF-8, and one that has other bytes in a name not at all.
std::optional<CsvFault> faultOfBytes(std::string_view text) {
  std::string storage;
  for (std::size_t line = 1; !text.empty(); ++line) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string_view bytes = text.substr(0, end);
    if (validUtf8(bytes, storage).data() != bytes.data()) {
      return CsvFault{line, "not UTF-8; save the table as \"CSV UTF-8\""};
    }
    text.remove_prefix(end);
  }
  return std::nullopt;
}

}  // namespace

std::variant<CsvTable, CsvFault> parseCsv(std::string_view text) {
  if (text.starts_with(kMark)) text.remove_prefix(kMark.size());
  if (auto fault = faultOfBytes(text)) return std::move(*fault);
  CsvParse parse(text);
  CsvTable table;
  if (auto head = parse.next()) table.columns = std::move(head->fields);
  while (auto row = parse.next()) {
    if (table.rows.size() == kMostTableRows)
      return CsvFault{row->line, "more than 2 million lines"};
    table.rows.push_back(std::move(*row));
  }
  if (!parse.fault().empty()) return CsvFault{parse.line(), parse.fault()};
  if (table.columns.empty()) return CsvFault{1, "no line that names the columns"};
  return table;
}

}  // namespace halvora
