// SPDX-License-Identifier: Apache-2.0
#include "seats/ticket_link.h"

#include <cstddef>
#include <string>

namespace halvora {

namespace {

constexpr std::size_t kLongestLink = 2048;
constexpr std::size_t kLongestName = 64;

int hexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  const char lower = static_cast<char>(character | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> decoded(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '%') {
      plain += text[at] == '+' ? ' ' : text[at];
      continue;
    }
    if (text.size() - at < 3) return std::nullopt;
    const int high = hexDigit(text[at + 1]);
    const int low = hexDigit(text[at + 2]);
    if (high < 0 || low < 0 || high * 16 + low < ' ') return std::nullopt;
    plain += static_cast<char>(high * 16 + low);
    at += 2;
  }
  if (plain.empty() || plain.size() > kLongestName) return std::nullopt;
  return plain;
}

std::optional<std::string> queryItem(std::string_view query, std::string_view name) {
  while (!query.empty()) {
    const std::string_view item = query.substr(0, query.find('&'));
    query.remove_prefix(item.size() == query.size() ? item.size() : item.size() + 1);
    if (item.size() > name.size() && item.starts_with(name) && item[name.size()] == '=') {
      return decoded(item.substr(name.size() + 1));
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<TicketSeat> ticketSeatOf(std::string_view link) {
  const std::size_t begin = link.find('?');
  if (link.size() > kLongestLink || begin == std::string_view::npos) return std::nullopt;
  std::string_view query = link.substr(begin + 1);
  query = query.substr(0, query.find('#'));
  const auto section = queryItem(query, "section");
  const auto row = queryItem(query, "row");
  const auto seat = queryItem(query, "seat");
  if (!section || !row || !seat) return std::nullopt;
  return TicketSeat{*section, *row, *seat};
}

}  // namespace halvora
