// SPDX-License-Identifier: Apache-2.0
// Any bytes as a seat map document: the direct parse gives what the rules give on a tree of values,
// the kit's reader accepts what RapidJSON accepts, and reads nothing beyond the document's end.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "platform/json/rapid_json_reader.h"
#include "seats/seat_map_document.h"
#include "tests/seats/plain_seat_map.h"
#include "tests/seats/seat_map_lines.h"

namespace {

struct NoHandler : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, NoHandler> {
  bool Default() { return true; }
};

bool rapidJsonAccepts(std::string_view text) {
  rapidjson::MemoryStream stream(text.data(), text.size());
  rapidjson::Reader reader;
  NoHandler handler;
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag |
                              rapidjson::kParseNumbersAsStringsFlag |
                              rapidjson::kParseValidateEncodingFlag;
  return !reader.Parse<kFlags>(stream, handler).IsError();
}

/// Whether there are so many digits in a row.
bool hasDigits(std::string_view text, std::size_t count) {
  std::size_t run = 0;
  for (const char character : text) {
    run = character >= '0' && character <= '9' ? run + 1 : 0;
    if (run >= count) return true;
  }
  return false;
}

// What the two are known to take differently: other encodings and marks, zeros, halves of pairs,
// documents that are no container, deep ones, and numbers of hundreds of digits.
bool isComparable(std::string_view text) {
  const std::size_t begin = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  if (begin == text.size() || (text[begin] != '{' && text[begin] != '[')) return false;
  if (text.find('\0') != text.npos || text.find('\xED') != text.npos) return false;
  if (text.find("\\ud") != text.npos || text.find("\\uD") != text.npos) return false;
  const auto opened = std::count_if(text.begin(), text.end(),
                                    [](char character) { return (character & 0xDF) == '['; });
  return opened < 500 && !hasDigits(text, 300);
}

void check(bool isTrue) {
  if (!isTrue) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const halvora::RapidJsonReader json;
  const auto tree = json.parse(text, nullptr);
  if (isComparable(text)) check(tree.has_value() == rapidJsonAccepts(text));

  const halvora::SeatMap map = halvora::parseSeatMapSectionsFromJSON(text, {}, json);
  if (!tree) {
    check(map.isEmpty());
  } else if (!hasDigits(text, 19)) {
    // An integer beyond 64 bits is rounded in a tree of values; as a name it stays as written.
    check(halvora::linesOf(map) == halvora::plainSeatMapLines(*tree, {}));
  }
  for (std::size_t at = 0; at < map.sectionCount(); ++at) {
    const auto section = map.section(at);
    check(section.rowCount() > 0);
    for (std::size_t row = 0; row < section.rowCount(); ++row) {
      check(section.row(row).seatCount() > 0);
    }
  }
  return 0;
}
