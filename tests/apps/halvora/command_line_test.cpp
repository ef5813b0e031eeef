// SPDX-License-Identifier: Apache-2.0
// What a command gets of its options, with a command of the test's own that prints it.
#include "apps/halvora/command_line.h"

#include <array>
#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/pixmap_decoder.h"
#include "tests/venue/plan/word_videos.h"

namespace halvora {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class OpenCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("DOOR", door_, "which door");
    options.required("--key", keys_, "a key that may fit");
    options.optional("--hand", hand_, "the hand that turns it");
    options.optional("--knock", knocks_, "a knock before");
    options.optional("--word", word_, "the word to say", "sesame");
    options.flag("--wide", isWide_, "as far as it goes");
    options.footer("Mind the step.");
  }
  CommandResult run(const Call& call) override {
    return writeAll("door=" + door_ + " keys=" + joined(keys_) + " hand=" + hand_ + " knocks=" +
                        joined(knocks_) + " word=" + (word_ ? "\"" + *word_ + "\"" : "none") +
                        (isWide_ ? " wide" : "") + "\n",
                    call.output);
  }

 private:
  static std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += "<" + text + ">";
    return all;
  }

  std::string door_;
  std::vector<std::string> keys_;
  std::string hand_ = "left";
  std::vector<std::string> knocks_;
  std::optional<std::string> word_;
  bool isWide_ = false;
};

class CountCommand final : public ToolCommand {
 public:
  void describe(CommandOptions& options) override {
    options.required("THING", things_, "what to count");
  }
  CommandResult run(const Call& call) override {
    return writeAll(std::to_string(things_.size()) + "\n", call.output);
  }

 private:
  std::vector<std::string> things_;
};

template <class Command>
std::unique_ptr<ToolCommand> make() {
  return std::make_unique<Command>();
}

constexpr CommandGroup kHouse{"house", "all about a house"};
constexpr std::array kRows = {
    CommandRow{&kHouse, "open", "open a door", make<OpenCommand>},
    CommandRow{nullptr, "count", "count things", make<CountCommand>},
    CommandRow{&kHouse, "tour", "count rooms", make<CountCommand>},
};

ToolRun run(const std::vector<std::string>& arguments, bool isOutputClosed = false) {
  std::vector<const char*> words{"halvora"};
  for (const std::string& argument : arguments) words.push_back(argument.c_str());
  const PixmapDecoder images;
  const WordVideos videos;
  const std::atomic<bool> isInterrupted{false};
  const Outside outside{images, videos, isInterrupted};
  ToolRun run;
  const Output output = [&](std::string_view text) {
    run.output += text;
    return !isOutputClosed;
  };
  const CommandResult result = runCommandLine("Keeps a house.", kRows, {words, outside, output});
  run.status = result.status;
  run.error = result.error;
  return run;
}

std::string printed(const std::vector<std::string>& arguments) {
  const ToolRun done = run(arguments);
  EXPECT_EQ(done.status, 0) << done.error;
  EXPECT_EQ(done.error, "");
  return done.output;
}

TEST(CommandLine, LeavesWhatIsNotGiven) {
  EXPECT_EQ(printed({"house", "open", "front", "--key", "a"}),
            "door=front keys=<a> hand=left knocks= word=none\n");
}

TEST(CommandLine, TakesWhatIsGiven) {
  EXPECT_EQ(printed({"house", "open", "--wide", "--word=please", "--hand", "right", "--knock", "1",
                     "--key", "a", "back"}),
            "door=back keys=<a> hand=right knocks=<1> word=\"please\" wide\n");
}

TEST(CommandLine, TellsAnEmptyTextFromNone) {
  EXPECT_EQ(printed({"house", "open", "front", "--key", "a", "--word", "", "--hand", ""}),
            "door=front keys=<a> hand= knocks= word=\"\"\n");
}

TEST(CommandLine, TakesOneValueEachTimeThatAnOptionIsGiven) {
  EXPECT_EQ(printed({"house", "open", "--key", "a", "--knock", "1", "--key", "b", "front",
                     "--knock", "2"}),
            "door=front keys=<a><b> hand=left knocks=<1><2> word=none\n");
  EXPECT_EQ(flawOfRefusal(run({"house", "open", "--key", "a", "front", "back"})), "");
  EXPECT_EQ(
      flawOfRefusal(run({"house", "open", "front", "--key", "a", "--hand", "l", "--hand", "r"})),
      "");
}

TEST(CommandLine, TakesAllArgumentsInAPlaceForSeveral) {
  EXPECT_EQ(printed({"count", "a", "b", "c"}), "3\n");
  EXPECT_EQ(printed({"house", "tour", "hall"}), "1\n");
}

TEST(CommandLine, RefusesInOneLineAndRunsNothing) {
  const std::vector<std::vector<std::string>> unusableLines = {
      {},
      {"house"},
      {"garden"},
      {"open", "front"},
      {"house", "count", "a"},
      {"count"},
      {"count", "a", "--wide"},
      {"house", "open", "front", "--key", "a", "back\ndoor"},
      {"house", "open", "--key", "a"},
      {"house", "open", "front"},
      {"house", "open", "front", "--key"},
      {"house", "open", "front", "--key", "a", "--loud"},
  };
  for (const auto& arguments : unusableLines) {
    const ToolRun refused = run(arguments);
    EXPECT_EQ(flawOfRefusal(refused), "") << testing::PrintToString(arguments);
    EXPECT_THAT(refused.error, testing::EndsWith(" (see --help)"));
  }
}

TEST(CommandLine, NamesWhatIsMissing) {
  EXPECT_THAT(run({"house", "open", "--key", "a"}).error, StartsWith("DOOR is required"));
  EXPECT_THAT(run({"house", "open", "front"}).error, StartsWith("--key is required"));
}

TEST(CommandLine, HelpListsCommandsOfAGroupTogether) {
  const std::string all = printed({"--help"});
  EXPECT_THAT(all, StartsWith("Keeps a house."));
  EXPECT_THAT(all, HasSubstr("all about a house"));
  EXPECT_THAT(all, HasSubstr("count things"));
  EXPECT_THAT(all, Not(HasSubstr("open a door")));
  const std::string house = printed({"house", "--help"});
  EXPECT_LT(house.find("open a door"), house.find("count rooms"));
  EXPECT_NE(house.find("count rooms"), std::string::npos);
}

TEST(CommandLine, HelpSaysWhatACommandTakes) {
  const std::string help = printed({"house", "open", "--help"});
  for (const char* part :
       {"open a door", "which door", "a key that may fit", "the hand that turns it",
        "a knock before", "=sesame", "the word to say", "as far as it goes", "Mind the step."}) {
    EXPECT_THAT(help, HasSubstr(part));
  }
}

TEST(CommandLine, HelpThatCannotBeWrittenIsAFailure) {
  const ToolRun failure = run({"--help"}, true);
  EXPECT_EQ(failure.status, 1);
  EXPECT_EQ(failure.error, "standard output cannot be written");
}

}  // namespace
}  // namespace halvora
