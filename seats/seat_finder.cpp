// SPDX-License-Identifier: Apache-2.0
#include "seats/seat_finder.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "seats/digits.h"
#include "seats/seat_names.h"
#include "seats/wizard_texts.h"

namespace halvora {

namespace {

constexpr std::size_t kLongestLine = 512;
/// A section's name may have so many words.
constexpr std::size_t kMostWords = 5;

std::string lowered(std::string_view text) {
  std::string lower(text);
  for (char& character : lower) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
  return lower;
}

// Letters beyond ASCII belong to words, whatever they are.
bool isOfWord(char character) {
  const bool isLetter = (character >= 'a' && character <= 'z') || isDigit(character);
  return isLetter || static_cast<unsigned char>(character) >= 0x80;
}

std::vector<std::string> wordsOf(std::string_view text) {
  std::vector<std::string> words;
  std::string word;
  for (const char character : lowered(text)) {
    if (isOfWord(character)) {
      word += character;
    } else if (!word.empty()) {
      words.push_back(std::exchange(word, {}));
    }
  }
  if (!word.empty()) words.push_back(word);
  return words;
}

std::string withoutZeros(const std::string& word) {
  const std::size_t first = word.find_first_not_of('0');
  const bool isNumber = std::all_of(word.begin(), word.end(), isDigit);
  if (!isNumber || first == 0) return word;
  return first == std::string::npos ? "0" : word.substr(first);
}

template <class Words>
std::string joined(const Words& words, std::size_t first, std::size_t count) {
  std::string text;
  for (std::size_t at = first; at < first + count; ++at) {
    if (!text.empty()) text += ' ';
    text += withoutZeros(words[at]);
  }
  return text;
}

bool has(const std::vector<std::string>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::optional<std::size_t> placeOf(const std::vector<std::string>& keys, const std::string& key) {
  const auto found = std::find(keys.begin(), keys.end(), key);
  if (found == keys.end()) return std::nullopt;
  return static_cast<std::size_t>(found - keys.begin());
}

FoundSeat missing(FoundSeat found, SeatPart part, std::string name) {
  found.missing = part;
  found.missingName = std::move(name);
  return found;
}

int depthOf(const FoundSeat& found) {
  return found.seat ? 3 : found.row ? 2 : found.section ? 1 : 0;
}

}  // namespace

TicketWords ticketWords(const Bundle& kit) {
  TicketWords words;
  static_assert(std::size(seat_selector::kTicketWords) == std::tuple_size_v<TicketWords>);
  for (std::size_t part = 0; part < words.size(); ++part) {
    const seat_selector::Text& text = seat_selector::kTicketWords[part];
    for (const std::string& list :
         {localizedText(kit, text.key, text.fallback), std::string(text.fallback)}) {
      for (std::string& word : wordsOf(list)) {
        if (!has(words[part], word)) words[part].push_back(std::move(word));
      }
    }
  }
  return words;
}

std::string withoutTicketWord(const TicketWords& words, SeatPart part, std::string_view name) {
  const std::size_t blank = name.find(' ');
  if (blank == std::string_view::npos || blank + 1 == name.size()) return std::string(name);
  const bool isLabel = has(words[static_cast<std::size_t>(part)], lowered(name.substr(0, blank)));
  return std::string(isLabel ? name.substr(blank + 1) : name);
}

SeatFinder::SeatFinder(const SeatMap& map, TicketWords words)
    : map_(map), words_(std::move(words)) {
  sectionKeys_.reserve(map_.sectionCount());
  for (std::size_t section = 0; section < map_.sectionCount(); ++section) {
    sectionKeys_.push_back(keyOf(SeatPart::section, map_.section(section).displayName()));
  }
}

// Without the word that says what it is, unless that is all there is.
std::string SeatFinder::keyOf(SeatPart part, std::string_view name) const {
  const std::vector<std::string> words = wordsOf(name);
  const std::size_t label =
      words.size() > 1 && has(words_[static_cast<std::size_t>(part)], words.front()) ? 1 : 0;
  return joined(words, label, words.size() - label);
}

std::optional<std::size_t> SeatFinder::sectionNamed(std::string_view name) const {
  return placeOf(sectionKeys_, keyOf(SeatPart::section, name));
}

std::optional<std::size_t> SeatFinder::rowNamed(std::size_t section, std::string_view name) const {
  const SeatMap::SectionItem rows = map_.section(section);
  const std::string key = keyOf(SeatPart::row, name);
  for (std::size_t row = 0; row < rows.rowCount(); ++row) {
    if (keyOf(SeatPart::row, rows.row(row).displayName()) == key) return row;
  }
  return std::nullopt;
}

std::optional<std::size_t> SeatFinder::seatNamed(std::size_t section, std::size_t row,
                                                 std::string_view name) const {
  const SeatMap::RowItem seats = map_.section(section).row(row);
  const std::string key = keyOf(SeatPart::seat, name);
  for (std::size_t seat = 0; seat < seats.seatCount(); ++seat) {
    if (keyOf(SeatPart::seat, seats.seat(seat).displayName) == key) return seat;
  }
  return std::nullopt;
}

FoundSeat SeatFinder::seat(const TicketSeat& asked) const {
  FoundSeat found;
  found.section = sectionNamed(asked.section);
  if (!found.section) return missing(found, SeatPart::section, asked.section);
  if (asked.row.empty()) return found;
  found.row = rowNamed(*found.section, asked.row);
  if (!found.row) return missing(found, SeatPart::row, asked.row);
  if (asked.seat.empty()) return found;
  found.seat = seatNamed(*found.section, *found.row, asked.seat);
  return found.seat ? found : missing(found, SeatPart::seat, asked.seat);
}

std::optional<SeatPart> SeatFinder::partNamedBy(std::string_view token) const {
  for (std::size_t part = 0; part < words_.size(); ++part) {
    if (has(words_[part], token)) return static_cast<SeatPart>(part);
  }
  return std::nullopt;
}

// "Row8" is as good as "Row 8".
SeatFinder::Tokens SeatFinder::tokensOf(std::string_view text) const {
  Tokens tokens;
  for (const std::string& word : wordsOf(text.substr(0, kLongestLine))) {
    const std::size_t number = word.find_first_of("0123456789");
    if (number != std::string::npos && number > 0 && partNamedBy(word.substr(0, number))) {
      tokens.push_back(word.substr(0, number));
      tokens.push_back(word.substr(number));
    } else {
      tokens.push_back(word);
    }
  }
  return tokens;
}

// Each with the word before it that says what it is, whatever else is on the ticket. The word that
// is nearest to the name counts: a "Section" may stand in a heading, too.
std::optional<TicketSeat> SeatFinder::labelled(const Tokens& tokens) const {
  TicketSeat asked;
  std::string* const names[] = {&asked.section, &asked.row, &asked.seat};
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
    const auto part = partNamedBy(tokens[at]);
    if (!part || partNamedBy(tokens[at + 1])) continue;
    std::string& name = *names[static_cast<std::size_t>(*part)];
    if (!name.empty()) continue;
    name = tokens[at + 1];
    // A section may be called by more than one word.
    for (std::size_t count = 2; *part == SeatPart::section && count <= kMostWords; ++count) {
      if (at + count >= tokens.size() || partNamedBy(tokens[at + count])) break;
      const std::string longer = joined(tokens, at + 1, count);
      if (sectionNamed(longer)) name = longer;
    }
  }
  if (asked.section.empty() || asked.row.empty() || asked.seat.empty()) return std::nullopt;
  return asked;
}

FoundSeat SeatFinder::inOrderFrom(const Tokens& tokens, std::size_t first,
                                  std::size_t words) const {
  const auto token = [&](std::size_t at) {
    return at < tokens.size() ? tokens[at] : std::string();
  };
  return seat({joined(tokens, first, words), token(first + words), token(first + words + 1)});
}

// Three names one after the other, wherever they begin: the first that are all there, else what
// comes nearest to that.
FoundSeat SeatFinder::inOrder(const Tokens& tokens) const {
  FoundSeat best = missing({}, SeatPart::section, tokens.empty() ? std::string() : tokens.front());
  for (std::size_t first = 0; first < tokens.size(); ++first) {
    for (std::size_t words = std::min(kMostWords, tokens.size() - first); words > 0; --words) {
      const FoundSeat found = inOrderFrom(tokens, first, words);
      if (depthOf(found) > depthOf(best)) best = found;
      if (best.isComplete()) return best;
    }
  }
  return best;
}

FoundSeat SeatFinder::line(std::string_view text) const {
  Tokens tokens = tokensOf(text);
  if (const auto asked = labelled(tokens)) return seat(*asked);
  std::erase_if(tokens, [this](const std::string& token) { return partNamedBy(token); });
  return inOrder(tokens);
}

}  // namespace halvora
