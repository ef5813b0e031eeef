// SPDX-License-Identifier: Apache-2.0
#include "adapters/json/json_scanner.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>

#include "adapters/json/real_number.h"
#include "adapters/json/unicode_text.h"
#include "text/numbers.h"

namespace halvora {

namespace {

constexpr const char* kUnended = "The document ends too early.";
constexpr const char* kUnclosed = "The document does not end with a brace or a bracket.";
constexpr const char* kLoneSurrogate = "Half a surrogate pair.";

constexpr bool isBlank(char character) {
  return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

constexpr bool isDigit(char character) { return character >= '0' && character <= '9'; }

// Eight characters are looked at together, as one number. Where the first of them is not its lowest
// byte, they are looked at one by one.
constexpr bool kWordsAreInOrder = std::endian::native == std::endian::little;
constexpr std::ptrdiff_t kWordBytes = 8;
constexpr std::uint64_t kOnes = 0x0101010101010101;

std::uint64_t wordAt(const char* at) {
  std::uint64_t word = 0;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// What a text may hold as it is, of ASCII.
constexpr auto kIsPlain = [] {
  std::array<bool, 256> isPlain{};
  for (std::size_t byte = 0x20; byte < 0x80; ++byte) isPlain[byte] = byte != '"' && byte != '\\';
  return isPlain;
}();

// Of eight characters, the highest bit of each one that ends a plain text. What lies above the
// lowest such bit may be wrong.
constexpr std::uint64_t plainTextEnds(std::uint64_t word) {
  constexpr std::uint64_t kHighBits = kOnes << 7;
  const std::uint64_t quotes = word ^ (kOnes * '"');
  const std::uint64_t backslashes = word ^ (kOnes * '\\');
  return ((quotes - kOnes) | (backslashes - kOnes) | (word - kOnes * 0x20) | word) & kHighBits;
}

// The number that the first `count` of eight digits spell, 1 to 8 of them. The first digit is the
// lowest byte.
constexpr std::uint64_t numberOfDigits(std::uint64_t digits, int count) {
  digits <<= 64 - 8 * count;
  // Neighbours are joined to pairs, pairs to fours, fours to the number.
  digits = (digits & 0x0F0F0F0F0F0F0F0F) * (10 << 8 | 1) >> 8;
  digits = (digits & 0x00FF00FF00FF00FF) * (100 << 16 | 1) >> 16;
  return (digits & 0x0000FFFF0000FFFF) * (std::uint64_t{10000} << 32 | 1) >> 32;
}

// Of eight characters, the highest bit of each one that is no digit. What lies above the lowest
// such bit may be wrong.
constexpr std::uint64_t nonDigits(std::uint64_t word) {
  const std::uint64_t digits = word ^ (kOnes * '0');
  return ((digits + kOnes * (0x80 - 10)) | digits) & (kOnes << 7);
}

constexpr bool goesOn(char afterDigits) {
  return afterDigits == '.' || afterDigits == 'e' || afterDigits == 'E';
}

constexpr std::string_view between(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

}  // namespace

JsonScanner::JsonScanner(std::string_view text, JsonEvents& events)
    : events_(events), begin_(text.data()), end_(text.data() + text.size()) {
  while (end_ != begin_ && isBlank(end_[-1])) --end_;
}

bool JsonScanner::scan() {
  At at = begin_;
  if (at == end_) return refuse("The document is empty.") != nullptr;
  if (end_[-1] != '}' && end_[-1] != ']') return refuse(kUnclosed) != nullptr;
  at = skipBlanks(at);
  if (*at != '{' && *at != '[') return refuse("Neither an object nor an array.") != nullptr;
  at = container(at, {});
  if (at != nullptr && at != end_) at = refuse("Something follows the document.");
  return at != nullptr;
}

JsonScanner::At JsonScanner::container(At at, std::string_view name) {
  if (depth_ == kDeepestNesting) return refuse("Nested too deeply.");
  const bool isObject = *at == '{';
  const bool wasWanted = isWanted_;
  isWanted_ =
      isWanted_ && events_.begin(name, isObject ? JsonContainer::object : JsonContainer::array);
  ++depth_;
  at = skipBlanks(at + 1);
  at = isObject ? members(at) : elements(at);
  if (at == nullptr) return at;
  --depth_;
  if (isWanted_) events_.end();
  isWanted_ = wasWanted;
  return depth_ > 0 && at == end_ ? refuse(kUnended) : at;
}

JsonScanner::At JsonScanner::members(At at) {
  if (*at == '}') return at + 1;
  for (;;) {
    std::string_view name;
    if (*at != '"') return refuse("A member without a name.");
    at = memberName(at + 1, name);
    if (at == nullptr) return at;
    at = skipBlanks(at);
    if (*at != ':') return refuse("A name without a colon.");
    at = value(skipBlanks(at + 1), name);
    if (at == nullptr) return at;
    at = skipBlanks(at);
    if (*at == '}') return at + 1;
    if (*at != ',') return refuse("Neither a comma nor the end of an object.");
    at = skipBlanks(at + 1);
  }
}

JsonScanner::At JsonScanner::elements(At at) {
  if (*at == ']') return at + 1;
  for (;;) {
    at = value(at, {});
    if (at == nullptr) return at;
    at = skipBlanks(at);
    if (*at == ']') return at + 1;
    if (*at != ',') return refuse("Neither a comma nor the end of an array.");
    at = skipBlanks(at + 1);
  }
}

JsonScanner::At JsonScanner::value(At at, std::string_view name) {
  switch (*at) {
    case '{':
    case '[':
      return container(at, name);
    case '"': {
      JsonScalar scalar;
      scalar.kind = JsonScalar::Kind::text;
      at = text(at + 1, textStorage_, scalar.text);
      if (at != nullptr) report(name, scalar);
      return at;
    }
    case 't':
      return word(at, "true", name, {.kind = JsonScalar::Kind::boolean, .integer = 1});
    case 'f':
      return word(at, "false", name, {.kind = JsonScalar::Kind::boolean});
    case 'n':
      return word(at, "null", name, {});
    default:
      return number(at, name);
  }
}

JsonScanner::At JsonScanner::word(At at, std::string_view expected, std::string_view name,
                                  JsonScalar scalar) {
  if (!rest(at).starts_with(expected)) return refuse("Not a value.");
  scalar.text = expected;
  report(name, scalar);
  return at + expected.size();
}

// Short whole numbers, which most are, at one go.
JsonScanner::At JsonScanner::number(At at, std::string_view name) {
  const bool isNegative = *at == '-';
  const At digits = isNegative ? at + 1 : at;
  if (!kWordsAreInOrder || end_ - digits < kWordBytes) return anyNumber(at, name);
  const std::uint64_t word = wordAt(digits);
  const std::uint64_t ends = nonDigits(word);
  const int count = std::countr_zero(ends) / 8;
  const At end = digits + count;
  if (ends == 0 || count == 0 || (*digits == '0' && count > 1) || goesOn(*end)) {
    return anyNumber(at, name);
  }
  if (!isWanted_) return end;
  const auto magnitude = static_cast<std::int64_t>(numberOfDigits(word, count));
  JsonScalar scalar;
  scalar.kind = JsonScalar::Kind::integer;
  scalar.integer = isNegative ? -magnitude : magnitude;
  scalar.text = between(at, end);
  events_.scalar(name, scalar);
  return end;
}

JsonScanner::At JsonScanner::anyNumber(At at, std::string_view name) {
  const At begin = at;
  if (*at == '-') ++at;
  if (!isDigit(*at)) return refuse("Not a value.");
  if (*at == '0' && isDigit(at[1])) return refuse("A number begins with a zero.");
  at = digits(at);
  const bool isWhole = !goesOn(*at);
  if (*at == '.') at = digits(at + 1);
  if (at != nullptr && (*at == 'e' || *at == 'E')) {
    ++at;
    at = digits(*at == '+' || *at == '-' ? at + 1 : at);
  }
  if (at == nullptr) return at;
  JsonScalar scalar;
  scalar.text = between(begin, at);
  scalar.integer = integerValue(scalar.text);
  const bool isSaturated = (scalar.integer == INT64_MAX && scalar.text != "9223372036854775807") ||
                           (scalar.integer == INT64_MIN && scalar.text != "-9223372036854775808");
  const bool isInteger = isWhole && !isSaturated;
  scalar.kind = isInteger ? JsonScalar::Kind::integer : JsonScalar::Kind::real;
  if (!isInteger) scalar.real = realNumber(scalar.text);
  if (!isWhole && !std::isfinite(scalar.real)) return refuse("A number beyond all measure.");
  report(name, scalar);
  return at;
}

JsonScanner::At JsonScanner::digits(At at) {
  if (!isDigit(*at)) return refuse("A number lacks a digit.");
  while (isDigit(*at)) ++at;
  return at;
}

// Most blanks are a line's end and the next one's indentation.
JsonScanner::At JsonScanner::endOfBlanks(At at) const {
  while (isBlank(*at)) {
    ++at;
    while (isIndentation(at)) at += kWordBytes;
  }
  return at;
}

bool JsonScanner::isIndentation(At at) const {
  return end_ - at >= kWordBytes && wordAt(at) == kOnes * ' ';
}

JsonScanner::At JsonScanner::endOfPlainText(At at) const {
  for (; kWordsAreInOrder && end_ - at >= kWordBytes; at += kWordBytes) {
    const std::uint64_t ends = plainTextEnds(wordAt(at));
    if (ends != 0) return at + std::countr_zero(ends) / 8;
  }
  while (at != end_ && kIsPlain[static_cast<std::uint8_t>(*at)]) ++at;
  return at;
}

JsonScanner::At JsonScanner::text(At at, std::string& storage, std::string_view& result) {
  const At begin = at;
  at = endOfPlainText(at);
  if (at == end_ || *at != '"') return otherText(begin, at, storage, result);
  result = between(begin, at);
  return at + 1;
}

// Names repeat from object to object. Character by character the processor guesses where one ends,
// and goes on before it knows.
JsonScanner::At JsonScanner::memberName(At at, std::string_view& result) {
  const At begin = at;
  while (at != end_ && kIsPlain[static_cast<std::uint8_t>(*at)]) ++at;
  if (at == end_ || *at != '"') return otherText(begin, at, nameStorage_, result);
  result = between(begin, at);
  return at + 1;
}

// Goes on at the first character that is not plain: beyond ASCII, escaped, or an error.
JsonScanner::At JsonScanner::otherText(At begin, At at, std::string& storage,
                                       std::string_view& result) {
  storage.clear();
  for (; at != end_; at = endOfPlainText(at)) {
    if (*at == '"') {
      result = between(begin, at);
      if (!storage.empty()) result = storage += result;
      return at + 1;
    }
    if (*at == '\\') {
      storage += between(begin, at);
      at = begin = escape(at + 1, storage);
      if (at == nullptr) return at;
    } else {
      const std::size_t length = utf8Length(rest(at));
      if (length == 0) return refuse("A text holds what is no character.");
      at += length;
    }
  }
  return refuse(kUnended);
}

JsonScanner::At JsonScanner::escape(At at, std::string& storage) {
  // What may stand behind a backslash, and what it stands for.
  constexpr std::string_view kLetters = "\"\\/bfnrt";
  constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
  if (*at == 'u') return unicodeEscape(at + 1, storage);
  const std::size_t found = kLetters.find(*at);
  if (found == std::string_view::npos) return refuse("An unknown escape.");
  storage += kMeanings[found];
  return at + 1;
}

JsonScanner::At JsonScanner::unicodeEscape(At at, std::string& storage) {
  std::uint32_t character = 0;
  at = hexUnit(at, character);
  if (at == nullptr) return at;
  if (isLowSurrogate(character)) return refuse(kLoneSurrogate);
  if (isHighSurrogate(character)) {
    if (!rest(at).starts_with("\\u")) return refuse(kLoneSurrogate);
    std::uint32_t low = 0;
    at = hexUnit(at + 2, low);
    if (at == nullptr) return at;
    if (!isLowSurrogate(low)) return refuse(kLoneSurrogate);
    character = characterOfPair(character, low);
  }
  appendUtf8(storage, character);
  return at;
}

JsonScanner::At JsonScanner::hexUnit(At at, std::uint32_t& unit) {
  for (int digit = 0; digit < 4; ++digit, ++at) {
    const int value = at == end_ ? -1 : hexDigit(*at);
    if (value < 0) return refuse("A character's number lacks a digit.");
    unit = unit << 4 | static_cast<std::uint32_t>(value);
  }
  return at;
}

}  // namespace halvora
