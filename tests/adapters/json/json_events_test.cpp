// SPDX-License-Identifier: Apache-2.0
// Documents event by event, and the places where the scanner changes its stride.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"

namespace halvora {
namespace {

using testing::ElementsAre;

/// Writes down what it hears; passes over members and elements of a given name.
class Recorder final : public JsonEvents {
 public:
  explicit Recorder(std::string passedOver = "-") : passedOver_(std::move(passedOver)) {}

  bool begin(std::string_view name, JsonContainer container) override {
    heard.push_back(std::string(name) + (container == JsonContainer::object ? "{" : "["));
    return name != passedOver_;
  }
  void end() override { heard.emplace_back("end"); }
  void scalar(std::string_view name, const JsonScalar& value) override {
    constexpr const char* kKinds[] = {"null", "boolean", "integer", "real", "text"};
    heard.push_back(std::string(name) + " " + kKinds[static_cast<std::size_t>(value.kind)] + " " +
                    std::string(value.text));
    scalars.push_back(value);
    scalars.back().text = {};
  }

  std::vector<std::string> heard;
  std::vector<JsonScalar> scalars;

 private:
  std::string passedOver_;
};

// In a block of its own, so that reading beyond the text is found out.
bool read(std::string_view text, JsonEvents& events, std::string* reason = nullptr) {
  const auto block = std::make_unique<char[]>(text.size());
  std::copy(text.begin(), text.end(), block.get());
  return ExactJsonReader().read({block.get(), text.size()}, events, reason);
}

std::vector<std::string> heard(std::string_view text) {
  Recorder recorder;
  EXPECT_TRUE(read(text, recorder)) << text;
  return recorder.heard;
}

TEST(JsonEvents, ComeInTheOrderOfTheDocument) {
  EXPECT_THAT(heard(R"({"a": [1, "x", null, {}], "b": {"c": true, "a": []}, "a": -2.5})"),
              ElementsAre("{", "a[", " integer 1", " text x", " null null", "{", "end", "end", "b{",
                          "c boolean true", "a[", "end", "end", "a real -2.5", "end"));
}

TEST(JsonEvents, NamesAndTextsAreUnescaped) {
  EXPECT_THAT(heard(R"({"\u0061\n": "\ud83d\ude00b", "": "\u0000"})"),
              ElementsAre("{",
                          "a\n text \xF0\x9F\x98\x80"
                          "b",
                          std::string(" text \0", 7), "end"));
}

TEST(JsonEvents, WhatIsPassedOverIsNotReportedButChecked) {
  Recorder recorder("no");
  EXPECT_TRUE(read(R"({"no": {"a": [1, {"b": 2}], "no": {}}, "c": 3, "no": [[4]], "d": {"e": 5}})",
                   recorder));
  EXPECT_THAT(recorder.heard,
              ElementsAre("{", "no{", "c integer 3", "no[", "d{", "e integer 5", "end", "end"));
  for (const char* fault : {"[1,]", "{\"a\"}", "[01]", "[\"\\ud800\"]", "[1", "[tru]", "[-]"}) {
    Recorder other("no");
    EXPECT_FALSE(read("{\"no\": " + std::string(fault) + "}", other)) << fault;
  }
}

TEST(JsonEvents, TheWholeDocumentMayBePassedOver) {
  Recorder recorder("");
  EXPECT_TRUE(read(R"({"a": [1, 2]})", recorder));
  EXPECT_THAT(recorder.heard, ElementsAre("{"));
}

TEST(JsonEvents, AMalformedEndShowsAfterTheEventsBeforeIt) {
  Recorder recorder;
  std::string reason;
  EXPECT_FALSE(read("[1, 2", recorder, &reason));
  EXPECT_FALSE(reason.empty());
  Recorder second;
  EXPECT_FALSE(read("[1, 2}", second));
  EXPECT_THAT(second.heard, ElementsAre("[", " integer 1", " integer 2"));
}

TEST(JsonEvents, NumbersComeAsTheyAreWritten) {
  EXPECT_THAT(heard("[0, -0, 7.50, 1E+3, 9223372036854775807, 9223372036854775808, -12e-1]"),
              ElementsAre("[", " integer 0", " integer -0", " real 7.50", " real 1E+3",
                          " integer 9223372036854775807", " real 9223372036854775808",
                          " real -12e-1", "end"));
}

TEST(JsonEvents, BooleansAreNumbers) {
  Recorder recorder;
  EXPECT_TRUE(read("[true, false]", recorder));
  ASSERT_EQ(recorder.scalars.size(), 2U);
  EXPECT_TRUE(recorder.scalars[0].isNumber());
  EXPECT_EQ(recorder.scalars[0].wholeNumber(), 1);
  EXPECT_EQ(recorder.scalars[1].wholeNumber(), 0);
}

TEST(JsonStride, IntegersOfEveryLengthAreExact) {
  std::string digits;
  for (int length = 1; length <= 18; ++length) {
    digits += static_cast<char>('0' + (length * 7 + 2) % 10);
    for (const std::string& sign : {std::string(), std::string("-")}) {
      const std::string number = sign + digits;
      // Once with text behind it to look ahead in, once at the very end.
      for (const std::string& text : {"[" + number + ",                1]", "[" + number + "]"}) {
        Recorder recorder;
        ASSERT_TRUE(read(text, recorder)) << text;
        EXPECT_EQ(recorder.scalars[0].kind, JsonScalar::Kind::integer) << text;
        EXPECT_EQ(recorder.scalars[0].integer, std::stoll(number)) << text;
      }
    }
  }
}

TEST(JsonStride, WhatFollowsADigitIsMinded) {
  for (const char* after : {"a", "-", "+", ".", "e", "E", "\"", "/", ":", "x", "{", "[", "\x80"}) {
    for (const char* number : {"0", "5", "12345", "1234567", "12345678", "123456789"}) {
      const std::string text = std::string("[") + number + after + "               ]";
      Recorder recorder;
      EXPECT_FALSE(read(text, recorder)) << text;
    }
  }
}

TEST(JsonStride, LeadingZerosRejectAtEveryLength) {
  for (const char* number : {"00", "01", "-01", "0123456", "01234567", "012345678", "-00.5"}) {
    Recorder recorder;
    EXPECT_FALSE(read(std::string("[") + number + ",               1]", recorder)) << number;
    EXPECT_FALSE(read(std::string("[") + number + "]", recorder)) << number;
  }
}

TEST(JsonStride, EveryCharacterOfATextIsLookedAt) {
  // A character that must not be, or that must be seen, at every place of texts of every length.
  struct Case {
    const char* inserted;
    bool isGood;
  };
  constexpr Case kCases[] = {
      {"\n", false},      {"\x1F", false},         {"\xFF", false},
      {"\xC3", false},    {"\xED\xA0\x80", false}, {"\\x", false},
      {"\\", false},      {"\xC3\xA4", true},      {"\xF0\x9F\x98\x80", true},
      {"\\u00e4", true},  {"\x7F", true},          {"\\\"", true},
      {"\\ud83d", false}, {"\\u12g", false}};
  for (const Case& entry : kCases) {
    for (std::size_t length = 0; length < 20; ++length) {
      for (std::size_t place = 0; place <= length; ++place) {
        std::string text(length, 'a');
        text.insert(place, entry.inserted);
        // A backslash at the end takes the quotation mark with it.
        if (entry.inserted == std::string("\\") && place < length) continue;
        Recorder value;
        EXPECT_EQ(read("[\"" + text + "\", 1]", value), entry.isGood) << text;
        Recorder name;
        EXPECT_EQ(read("{\"" + text + "\": 1}", name), entry.isGood) << text;
      }
    }
  }
}

TEST(JsonStride, BlanksOfEveryLengthAreSkipped) {
  for (std::size_t length = 0; length < 40; ++length) {
    for (const char* blank : {" ", "\n", "\t", "\r"}) {
      std::string blanks(length, ' ');
      blanks.insert(length / 2, blank);
      const std::string text = blanks + "{" + blanks + "\"a\"" + blanks + ":" + blanks + "1" +
                               blanks + "," + blanks + "\"b\":[" + blanks + "]" + blanks + "}" +
                               blanks;
      EXPECT_THAT(heard(text), ElementsAre("{", "a integer 1", "b[", "end", "end"));
    }
  }
  for (const char* blank : {"\v", "\f", "\xC2\xA0", "\x1F", "\b"}) {
    Recorder recorder;
    EXPECT_FALSE(read(std::string("[") + blank + "]", recorder));
    EXPECT_FALSE(read(std::string("[]") + blank, recorder));
    EXPECT_FALSE(read(blank + std::string("[]"), recorder));
  }
}

TEST(JsonStride, NoPartOfADocumentIsADocument) {
  const std::string document =
      R"( {"name": "ab\u00e4\"c",
           "long name of more than eight": [1, -2.5e3, true, null, {"x": []}],
          "last": "a text of more than eight",
          "end": {"a": 12345678901, "b": [[1], [2]]}} )";
  const std::size_t end = document.size() - 1;
  for (std::size_t size = 0; size < end; ++size) {
    Recorder recorder;
    EXPECT_FALSE(read(std::string_view(document).substr(0, size), recorder)) << size;
  }
  Recorder recorder;
  EXPECT_TRUE(read(std::string_view(document).substr(0, end), recorder));
}

TEST(JsonReal, ShortAndLongDecimalsAreTheNearestDoubles) {
  for (const char* number :
       {"0.1", "-0.1", "12.5", "0.000001", "123456789.12345", "1.0", "99999999999999.9",
        "0.30000000000000004", "2.2250738585072014e-308", "1.7976931348623157e308", "5e-324",
        "-7.0", "100.00", "9007199254740993.0", "0.0000000000000000000000000000000", "0e999",
        "-0.00000000000000000000000e-5", "0.00000000000000000000000005",
        "0.123456789012345678901234567890"}) {
    Recorder recorder;
    ASSERT_TRUE(read("[" + std::string(number) + "]", recorder)) << number;
    EXPECT_EQ(recorder.scalars[0].real, std::strtod(number, nullptr)) << number;
  }
}

TEST(JsonReal, OneBeyondTheRangeRejectsTheDocument) {
  for (const char* number : {"1e400", "-1e400", "1.5e99999999999999999999", "2e308"}) {
    Recorder recorder;
    EXPECT_FALSE(read("[" + std::string(number) + "]", recorder)) << number;
    Recorder passingOver("no");
    EXPECT_FALSE(read("{\"no\": [" + std::string(number) + "]}", passingOver)) << number;
  }
  Recorder recorder;
  EXPECT_FALSE(read("[" + std::string(400, '9') + ".5]", recorder));
}

TEST(JsonReal, OneTooSmallIsZero) {
  Recorder recorder;
  ASSERT_TRUE(read("[1e-400, 1e-99999999999999999999]", recorder));
  EXPECT_EQ(recorder.scalars[0].real, 0);
  EXPECT_EQ(recorder.scalars[1].real, 0);
}

}  // namespace
}  // namespace halvora
