// SPDX-License-Identifier: Apache-2.0
#include "adapters/standard/folder_bundle.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <stdlib.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/standard_files.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {
namespace {

using Languages = std::vector<std::string>;

class FolderBundleTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_.write("strings/en.json", R"({"hello": "Hello", "bye": "Bye", "only": "English"})");
    folder_.write("strings/de.json", R"({"hello": "Hallo", "bye": "Ade"})");
    folder_.write("strings/de-AT.json", R"({"hello": "Servus"})");
    folder_.write("strings/fr.json", R"({"hello": "Bonjour"})");
  }

  std::string hello(const Languages& languages) const {
    return FolderBundle(files_, folder_.path(), "id", languages, json_).localizedString("hello");
  }

  TemporaryFolder folder_;
  StandardFiles files_;
  ExactJsonReader json_;
};

TEST_F(FolderBundleTest, TakesTheTableOfTheExactLanguage) {
  EXPECT_EQ(hello({"de-AT"}), "Servus");
  EXPECT_EQ(hello({"fr"}), "Bonjour");
}

TEST_F(FolderBundleTest, TakesTheTableWithoutTheTrailingParts) {
  EXPECT_EQ(hello({"de-CH"}), "Hallo");
  EXPECT_EQ(hello({"de-AT-Latn"}), "Servus");
  EXPECT_EQ(hello({"fr-Latn-CA"}), "Bonjour");
}

TEST_F(FolderBundleTest, TakesTheFirstLanguageThatHasATable) {
  EXPECT_EQ(hello({"it", "fr", "de"}), "Bonjour");
  EXPECT_EQ(hello({"de", "fr"}), "Hallo");
}

TEST_F(FolderBundleTest, EnglishAsTheFirstLanguageIsNotOverruled) {
  EXPECT_EQ(hello({"en-GB", "de"}), "Hello");
}

TEST_F(FolderBundleTest, WithoutATableOfTheUsersItIsEnglish) {
  EXPECT_EQ(hello({"it"}), "Hello");
  EXPECT_EQ(hello({}), "Hello");
}

TEST_F(FolderBundleTest, EachKeyThatTheTableLacksIsEnglish) {
  const FolderBundle bundle(files_, folder_.path(), "id", {"de-AT", "fr"}, json_);
  EXPECT_EQ(bundle.localizedString("hello"), "Servus");
  EXPECT_EQ(bundle.localizedString("bye"), "Bye");
  EXPECT_EQ(bundle.localizedString("only"), "English");
}

TEST_F(FolderBundleTest, ALanguageBehindOneThatHasATableAddsNothing) {
  folder_.write("strings/fr.json", R"({"hello": "Bonjour", "evening": "Bonsoir"})");
  const FolderBundle bundle(files_, folder_.path(), "id", {"de", "fr"}, json_);
  EXPECT_EQ(bundle.localizedString("evening"), "evening");
}

TEST_F(FolderBundleTest, TablesAndNamesUpToTheirLimitsCountAndLongerOnesDoNot) {
  for (const std::size_t size : {63U, 64U, 65U}) {
    const std::string name(size, 'x');
    folder_.write("strings/" + name + ".json", R"({"hello": "Long"})");
    EXPECT_EQ(hello({name}), size <= 64 ? "Long" : "Hello") << size;
  }
  constexpr std::size_t kLargest = std::size_t{1} << 20;
  for (const std::size_t size : {kLargest - 1, kLargest, kLargest + 1}) {
    std::string table = R"({"hello": "Large"})";
    table.resize(size, ' ');
    folder_.write("strings/la.json", table);
    EXPECT_EQ(hello({"la"}), size <= kLargest ? "Large" : "Hello") << size;
  }
}

TEST_F(FolderBundleTest, AKeyThatNoTableHasIsItself) {
  const FolderBundle bundle(files_, folder_.path(), "id", {"de"}, json_);
  EXPECT_EQ(bundle.localizedString("none"), "none");
  EXPECT_EQ(bundle.localizedString(""), "");
}

TEST_F(FolderBundleTest, HostileLanguageNamesAreNobodysLanguage) {
  folder_.write("evil.json", R"({"hello": "Evil"})");
  folder_.write("strings/a b.json", R"({"hello": "Evil"})");
  folder_.write("strings/.json", R"({"hello": "Evil"})");
  const std::string absolute = folder_.path() + "/evil";
  for (const std::string& name :
       {std::string("../evil"), absolute, std::string("a b"), std::string(), std::string("-"),
        std::string("../evil-x"), std::string("en/../../evil"), std::string("..", 2),
        std::string("fr\0x", 4), std::string(1000, '-'), std::string(5000, 'a')}) {
    EXPECT_EQ(hello({name}), "Hello") << name.substr(0, 40);
  }
}

TEST_F(FolderBundleTest, ABrokenTableIsNoTable) {
  folder_.write("strings/it.json", R"({"hello": "Ciao",})");
  folder_.write("strings/es.json", R"(["hello", "Hola"])");
  EXPECT_EQ(hello({"it", "fr"}), "Bonjour");
  EXPECT_EQ(hello({"es", "fr"}), "Bonjour");
}

TEST_F(FolderBundleTest, OnlyTextsCountAndOfEqualKeysTheFirst) {
  folder_.write("strings/it.json", R"({"hello": 7, "bye": null, "twice": "a", "twice": "b"})");
  const FolderBundle bundle(files_, folder_.path(), "id", {"it"}, json_);
  EXPECT_EQ(bundle.localizedString("hello"), "Hello");
  EXPECT_EQ(bundle.localizedString("bye"), "Bye");
  EXPECT_EQ(bundle.localizedString("twice"), "a");
}

TEST_F(FolderBundleTest, ATableTooLargeToBeOneIsLeftOut) {
  folder_.write("strings/it.json", R"({"hello": ")" + std::string(2'000'000, 'x') + R"("})");
  EXPECT_EQ(hello({"it"}), "Hello");
}

TEST_F(FolderBundleTest, ReadsResourcesUpToTheLimit) {
  folder_.write("a/b.bin", "12345");
  const FolderBundle bundle(files_, folder_.path(), "com.example.host", {}, json_);
  EXPECT_EQ(bundle.identifier(), "com.example.host");
  EXPECT_EQ(bundle.location("a/b.bin"), folder_.path() + "/a/b.bin");
  EXPECT_EQ(bundle.readResource("a/b.bin", 5), "12345");
  EXPECT_EQ(bundle.readResource("a/b.bin", 4), std::nullopt);
  EXPECT_EQ(bundle.readResource("a/c.bin", 5), std::nullopt);
  EXPECT_EQ(bundle.readResource("a", 5), std::nullopt);
}

TEST_F(FolderBundleTest, AMissingFolderHasNothing) {
  const FolderBundle bundle(files_, folder_.path() + "/missing", "id", {"de"}, json_);
  EXPECT_EQ(bundle.localizedString("hello"), "hello");
  EXPECT_EQ(bundle.readResource("strings/en.json", 1000), std::nullopt);
}

TEST_F(FolderBundleTest, AnEmptyFolderNameIsNoFolderAndNotTheRoot) {
  const FolderBundle bundle(files_, "", "id", {"de"}, json_);
  EXPECT_EQ(bundle.location("a/b.bin"), "");
  EXPECT_EQ(bundle.attributes("etc"), std::nullopt);
  EXPECT_EQ(bundle.list("etc"), std::nullopt);
  EXPECT_EQ(bundle.localizedString("hello"), "hello");
  EXPECT_EQ(bundle.readResource("etc/passwd", 1'000'000), std::nullopt);
}

using Variables = std::map<std::string, std::string>;

/// Sets the four variables of the user's language, and puts back what was there.
class Environment {
 public:
  explicit Environment(const Variables& values) {
    for (const char* name : kNames) {
      const char* before = getenv(name);
      before_.emplace_back(before == nullptr ? std::nullopt : std::optional<std::string>(before));
      const auto value = values.find(name);
      set(name, value == values.end() ? std::nullopt : std::optional(value->second));
    }
  }
  ~Environment() {
    for (std::size_t at = 0; at < before_.size(); ++at) set(kNames[at], before_[at]);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  static constexpr const char* kNames[] = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
  static void set(const char* name, const std::optional<std::string>& value) {
    if (value) {
      setenv(name, value->c_str(), 1);
    } else {
      unsetenv(name);
    }
  }
  std::vector<std::optional<std::string>> before_;
};

TEST(LanguagesOfEnvironment, AreNoneWithoutVariables) {
  const Environment environment(Variables{});
  EXPECT_EQ(languagesOfEnvironment(), Languages{});
}

TEST(LanguagesOfEnvironment, DropTheEncodingAndTheModifier) {
  const Environment environment(Variables{{"LANG", "de_AT.UTF-8"}});
  EXPECT_EQ(languagesOfEnvironment(), Languages{"de-AT"});
  const Environment other(Variables{{"LANG", "ca_ES@valencia"}});
  EXPECT_EQ(languagesOfEnvironment(), Languages{"ca-ES"});
}

TEST(LanguagesOfEnvironment, ComeBestFirst) {
  const Environment environment(Variables{{"LANG", "en_US.UTF-8"},
                                          {"LC_MESSAGES", "fr_FR"},
                                          {"LC_ALL", "it"},
                                          {"LANGUAGE", "de_AT:de"}});
  EXPECT_EQ(languagesOfEnvironment(), (Languages{"de-AT", "de", "it", "fr-FR", "en-US"}));
}

TEST(LanguagesOfEnvironment, LeaveOutWhatIsNoLanguage) {
  const Environment environment(Variables{{"LANGUAGE", "::../../etc:a/b:de:"}, {"LANG", ""}});
  EXPECT_EQ(languagesOfEnvironment(), Languages{"de"});
}

}  // namespace
}  // namespace halvora
