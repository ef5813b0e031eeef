// SPDX-License-Identifier: Apache-2.0
// The string tables that are shipped: every language has every text, with the same places for what
// is filled in, and the code asks for no text that there is not.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/standard_files.h"
#include "tests/support/source_tree.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;
using Table = std::map<std::string, std::string>;

const fs::path kRoot = sourceTree();
const fs::path kTables[] = {kRoot / "assets/kit/strings", kRoot / "assets/demo/strings"};

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

Table tableIn(const fs::path& file) {
  Table table;
  const ExactJsonReader reader;
  const JsonReader& json = reader;
  const auto value = json.parse(contentOf(file));
  if (!value || value->object() == nullptr) {
    ADD_FAILURE() << file << " is no object";
    return table;
  }
  for (const JsonMember& member : *value->object()) {
    EXPECT_NE(member.value.text(), nullptr) << file << ": " << member.name;
    if (member.value.text() == nullptr) continue;
    EXPECT_TRUE(table.emplace(member.name, *member.value.text()).second)
        << file << " has " << member.name << " twice";
  }
  return table;
}

// In their order: a translation is filled in like the original.
std::vector<std::string> placesIn(const std::string& text) {
  static const std::regex kPlace("%[0-9$l]*[a-zA-Z@%]");
  std::vector<std::string> places;
  for (std::sregex_iterator at(text.begin(), text.end(), kPlace), end; at != end; ++at) {
    places.push_back(at->str());
  }
  return places;
}

std::set<std::string> keysOf(const Table& table) {
  std::set<std::string> keys;
  for (const auto& entry : table) keys.insert(entry.first);
  return keys;
}

std::set<std::string> languagesIn(const fs::path& folder) {
  std::set<std::string> languages;
  for (const auto& entry : fs::directory_iterator(folder)) languages.insert(entry.path().stem());
  return languages;
}

TEST(SeatStrings, AreThereInSixLanguages) {
  const std::set<std::string> expected{"ar", "de", "en", "es", "fr", "ja"};
  for (const fs::path& folder : kTables) EXPECT_EQ(languagesIn(folder), expected) << folder;
}

TEST(SeatStrings, EveryLanguageHasEveryTextWithItsPlaces) {
  for (const fs::path& folder : kTables) {
    const Table english = tableIn(folder / "en.json");
    ASSERT_FALSE(english.empty());
    for (const std::string& language : languagesIn(folder)) {
      const Table table = tableIn(folder / (language + ".json"));
      EXPECT_EQ(keysOf(table), keysOf(english)) << language;
      for (const auto& [key, text] : table) {
        EXPECT_FALSE(text.empty()) << language << " " << key;
        EXPECT_NE(text, key) << language;
        const auto original = english.find(key);
        if (original == english.end()) continue;
        EXPECT_EQ(placesIn(text), placesIn(original->second)) << language << " " << key;
      }
    }
  }
}

// A translation that was forgotten looks like the original.
TEST(SeatStrings, TranslationsDifferFromEnglish) {
  const std::set<std::string> equal{"hv_layout_direction", "hv_common_ok",
                                    "hv_seat_picker_summary_format"};
  for (const fs::path& folder : kTables) {
    const Table english = tableIn(folder / "en.json");
    for (const std::string& language : languagesIn(folder)) {
      if (language == "en") continue;
      for (const auto& [key, text] : tableIn(folder / (language + ".json"))) {
        if (equal.count(key) > 0) continue;
        EXPECT_NE(text, english.at(key)) << language << " " << key;
      }
    }
  }
}

// The panel tells by this text whether to offer the settings.
TEST(SeatStrings, BeingForbiddenIsToldApart) {
  for (const std::string& language : languagesIn(kTables[0])) {
    Table all = tableIn(kTables[0] / (language + ".json"));
    all.merge(tableIn(kTables[1] / (language + ".json")));
    const auto count = std::count_if(all.begin(), all.end(), [&](const auto& entry) {
      return entry.second == all.at("bluetooth_notAuthorised");
    });
    EXPECT_EQ(count, 1) << language;
  }
}

TEST(SeatStrings, OnlyArabicReadsFromTheRight) {
  for (const std::string& language : languagesIn(kTables[0])) {
    const Table table = tableIn(kTables[0] / (language + ".json"));
    EXPECT_EQ(table.at("hv_layout_direction"), language == "ar" ? "rtl" : "ltr") << language;
  }
}

TEST(SeatStrings, EveryTextThatIsAskedForIsThereAndNoOther) {
  static const std::regex kKey("\"(hv_[a-zA-Z_]+)\"");
  std::set<std::string> asked;
  for (const char* folder : {"light", "engine", "seats", "host", "faces/qt"}) {
    for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
      const std::string ending = entry.path().extension();
      if (ending != ".cpp" && ending != ".h") continue;
      const std::string text = contentOf(entry.path());
      for (std::sregex_iterator at(text.begin(), text.end(), kKey), end; at != end; ++at) {
        asked.insert((*at)[1]);
      }
    }
  }
  std::set<std::string> there;
  for (const std::string& key : keysOf(tableIn(kTables[0] / "en.json"))) {
    if (key.compare(0, 3, "hv_") == 0) there.insert(key);
  }
  EXPECT_GT(asked.size(), 30U);
  EXPECT_EQ(asked, there);
}

TEST(SeatStrings, ABundleSpeaksTheUsersLanguage) {
  const ExactJsonReader json;
  const StandardFiles files;
  const std::string kit = (kRoot / "assets/kit").string();
  EXPECT_EQ(FolderBundle(files, kit, "kit", {"de-AT"}, json).localizedString("hv_seat_picker_back"),
            "Zurück");
  EXPECT_EQ(
      FolderBundle(files, kit, "kit", {"pt", "ja"}, json).localizedString("hv_seat_picker_back"),
      "戻る");
  EXPECT_EQ(FolderBundle(files, kit, "kit", {"pt"}, json).localizedString("hv_seat_picker_back"),
            "Back");
}

}  // namespace
}  // namespace halvora
