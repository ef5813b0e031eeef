// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_names.h"

#include <cstddef>
#include <optional>

#include "seats/digits.h"

namespace halvora {

namespace {

struct UpperCase {
  std::string_view letter;
  std::string_view upper;
};

// The letters beyond ASCII whose upper case puts an S, T, A, N, D, I or G where the word could have
// it: sharp s, dotless i, long s and the two ligatures of s and t.
constexpr UpperCase kBeyondAscii[] = {{"\xC3\x9F", "SS"},
                                      {"\xC4\xB1", "I"},
                                      {"\xC5\xBF", "S"},
                                      {"\xEF\xAC\x85", "ST"},
                                      {"\xEF\xAC\x86", "ST"}};

const UpperCase* beyondAscii(std::string_view text) {
  for (const UpperCase& row : kBeyondAscii) {
    if (text.starts_with(row.letter)) return &row;
  }
  return nullptr;
}

// Follows the word through a text, a character at a time.
class WordFinder {
 public:
  void read(char character) {
    if (isFound()) return;
    // The word begins with its only S, so what breaks it can at most begin it anew.
    if (character != kWord[at_]) at_ = 0;
    if (character == kWord[at_]) ++at_;
  }
  bool isFound() const { return at_ == kWord.size(); }

 private:
  static constexpr std::string_view kWord = "STANDING";
  std::size_t at_ = 0;
};

// One place in a format, from its percent sign on.
struct Place {
  std::size_t length;
  bool isPercentSign;
  /// Counted from 1; none takes the next in turn.
  std::optional<std::size_t> argument;
};

std::optional<Place> placeAt(std::string_view text) {
  std::size_t at = 1;
  if (text.substr(at).starts_with('%')) return Place{2, true, {}};
  std::size_t number = 0;
  while (at < text.size() && isDigit(text[at])) {
    // More than any argument's number is as good as a million.
    if (number < 1'000'000) number = number * 10 + static_cast<std::size_t>(text[at] - '0');
    ++at;
  }
  std::optional<std::size_t> argument;
  if (at > 1) {
    if (!text.substr(at).starts_with('$')) return std::nullopt;
    argument = number;
    ++at;
  }
  while (at < text.size() && std::string_view("hlqz").find(text[at]) != std::string_view::npos) {
    ++at;
  }
  if (at == text.size() || std::string_view("@diu").find(text[at]) == std::string_view::npos) {
    return std::nullopt;
  }
  return Place{at + 1, false, argument};
}

}  // namespace

bool isStandingName(std::string_view name) {
  WordFinder word;
  while (!name.empty() && !word.isFound()) {
    const char character = name.front();
    const bool isAscii = static_cast<unsigned char>(character) < 0x80;
    const UpperCase* row = isAscii ? nullptr : beyondAscii(name);
    if (row != nullptr) {
      for (const char upper : row->upper) word.read(upper);
      name.remove_prefix(row->letter.size());
      continue;
    }
    const bool isLower = character >= 'a' && character <= 'z';
    word.read(isLower ? static_cast<char>(character - 'a' + 'A') : character);
    name.remove_prefix(1);
  }
  return word.isFound();
}

std::string localizedText(const Bundle& bundle, std::string_view key, std::string_view fallback) {
  std::string text = bundle.localizedString(key);
  return text.empty() || text == key ? std::string(fallback) : text;
}

std::string v0::formatted(std::string_view format,
                          std::initializer_list<std::string_view> arguments) {
  std::string text;
  std::size_t next = 1;
  while (!format.empty()) {
    const std::size_t plain = format.find('%');
    text += format.substr(0, plain);
    if (plain == std::string_view::npos) break;
    format.remove_prefix(plain);
    const std::optional<Place> place = placeAt(format);
    if (!place || place->isPercentSign) {
      text += '%';
    } else {
      const std::size_t argument = place->argument ? *place->argument : next++;
      if (argument >= 1 && argument <= arguments.size()) text += arguments.begin()[argument - 1];
    }
    format.remove_prefix(place ? place->length : 1);
  }
  return text;
}

}  // namespace halvora
