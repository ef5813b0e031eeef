// SPDX-License-Identifier: Apache-2.0
// A folder with videos and documents for one test of `halvora lut`, and what the kit would say
// about the tables in it, worked out without the kit's own code.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include "tests/apps/halvora/tool_runner.h"

namespace halvora {

using Words = std::vector<std::string>;

/// Three pixels beside two, four frames; pixel (x, y) of frame f has the word 0xFF, f, x, y.
inline const std::string kPlaces =
    "words 3 2 4\n"
    "FF000000 FF000100 FF000200 FF000001 FF000101 FF000201\n"
    "FF010000 FF010100 FF010200 FF010001 FF010101 FF010201\n"
    "FF020000 FF020100 FF020200 FF020001 FF020101 FF020201\n"
    "FF030000 FF030100 FF030200 FF030001 FF030101 FF030201\n";

/// What the kit's private name of a folder stands for: base64 with "-" and "_", without "=".
inline std::string decodedName(const std::string& name) {
  std::string text;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char digit : name) {
    const std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    const std::size_t value = digits.find(digit);
    if (value == std::string_view::npos) return "not base64: " + name;
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    text += static_cast<char>(static_cast<std::uint8_t>(bits >> count));
  }
  return text;
}

/// The words of a table's bytes, as upper-case hexadecimal text.
inline Words wordsOf(const std::string& bytes) {
  Words words;
  for (std::size_t at = 0; at + 4 <= bytes.size(); at += 4) {
    std::string word;
    for (std::size_t byte = 4; byte-- > 0;) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(bytes[at + byte]));
      word += digits;
    }
    words.push_back(word);
  }
  if (bytes.size() % 4 != 0) words.emplace_back("and a part of a word");
  return words;
}

inline rapidjson::Document jsonOf(const std::string& text) {
  rapidjson::Document json;
  json.Parse<rapidjson::kParseFullPrecisionFlag>(text.c_str());
  return json;
}

struct LutFolder {
  TestFolder folder;
  std::string video = folder.write("places.mp4", kPlaces);
  std::string documents = (folder.path() / "documents").string();

  std::string at(const std::string& name) const { return (folder.path() / name).string(); }

  ToolRun build(const Words& options, const ToolSetup& setup = {}) const {
    Words words{"lut", "build", video};
    words.insert(words.end(), options.begin(), options.end());
    return runTool(words, setup);
  }
  ToolRun buildSeat(const std::string& seat, const ToolSetup& setup = {}) const {
    return build({"--seat", seat, "--documents", documents}, setup);
  }
  ToolRun show(const std::string& seat) const {
    return runTool({"lut", "show", video, "--seat", seat, "--documents", documents});
  }

  /// Every file and folder there is now, from this folder on.
  Words contents() const {
    Words found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
      found.push_back(std::filesystem::relative(entry.path(), folder.path()).string());
    }
    std::sort(found.begin(), found.end());
    return found;
  }
};

}  // namespace halvora
