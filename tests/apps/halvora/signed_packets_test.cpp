// SPDX-License-Identifier: Apache-2.0
// Signed packets on the command line, with the vectors that are published for other makers.
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "adapters/nettle/nettle_codes.h"
#include "engine/broadcast.h"
#include "tests/apps/halvora/tool_runner.h"
#include "tests/support/source_tree.h"
#include "venue/show/scenario.h"

namespace halvora {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using Words = std::vector<std::string>;

struct Vector {
  const char* key;
  const char* epoch;
  const char* plain;
  const char* whole;
};

constexpr Vector kVectors[] = {
    {"000102030405060708090A0B0C0D0E0F", "29454480",
     "09C90102030405060708090A0B0C0D0E0F1011121314151617FE",
     "09C90102030405060708090A0B0C0D0E0F1011121314151617AFCF7CFE"},
    {"000102030405060708090A0B0C0D0E0F", "29454481",
     "09C90102030405060708090A0B0C0D0E0F1011121314151617FE",
     "09C90102030405060708090A0B0C0D0E0F1011121314151617C9A215FE"},
    {"000102030405060708090A0B0C0D0E0F", "0",
     "09C9000000000000000000000000000000000000000000000000",
     "09C90000000000000000000000000000000000000000000000D3192400"},
    {"2B7E151628AED2A6ABF7158809CF4F3C", "29454480",
     "09C9010200070064FF0000010000000000000000000000000107",
     "09C9010200070064FF00000100000000000000000000000001378F7207"},
    {"2B7E151628AED2A6ABF7158809CF4F3C", "4294967295",
     "09C9000000000000000000000000000000000000000000000000",
     "09C9000000000000000000000000000000000000000000000047553800"},
};

class ShowKeys : public testing::Test {
 protected:
  std::string keyFile(const std::string& text, mode_t mode = S_IRUSR | S_IWUSR) {
    const std::string path = folder_.write("show.key", text);
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return path;
  }
  ToolRun run(Words words) {
    ToolSetup setup;
    setup.codes = &codes_;
    return runTool(words, setup);
  }
  ToolRun encode(const std::string& plain, const std::string& file, const std::string& epoch) {
    const Broadcast fields = decodeBroadcast(bytesOfHex(plain).value());
    Words words{"packet", "encode", "--show-key", file, "--epoch", epoch};
    for (const BroadcastField& field : kBroadcastFields) {
      words.insert(words.end(),
                   {"--" + std::string(field.name), std::to_string(field.value.of(fields))});
    }
    return run(words);
  }

  const NettleCodes codes_{};
  TestFolder folder_;
};

TEST_F(ShowKeys, EncodeThePublishedPackets) {
  const std::string page = contentsOf(std::filesystem::path(sourceTree()) / "docs" / "packet.md");
  for (const Vector& vector : kVectors) {
    const ToolRun made = encode(vector.plain, keyFile(vector.key), vector.epoch);
    EXPECT_EQ(made.status, 0) << made.error;
    EXPECT_EQ(made.output, std::string(vector.whole) + "\n");
    EXPECT_THAT(page, HasSubstr(vector.whole)) << "and the page has it";
  }
}

TEST_F(ShowKeys, DecodeSaysTheTagAndWhetherItIsGood) {
  const Vector& vector = kVectors[0];
  const std::string file = keyFile(vector.key);
  const auto decoded = [&](const std::string& epoch) {
    return run({"packet", "decode", "--show-key", file, "--epoch", epoch, vector.whole}).output;
  };
  EXPECT_THAT(decoded("29454480"), EndsWith("\"tag\":\"AFCF7C\",\"tagValid\":true}\n"));
  EXPECT_THAT(decoded("29454481"), EndsWith("\"tag\":\"AFCF7C\",\"tagValid\":false}\n"));
  EXPECT_THAT(run({"packet", "decode", vector.whole}).output, EndsWith("\"tag\":\"AFCF7C\"}\n"));
  EXPECT_THAT(run({"packet", "decode", vector.whole}).output, HasSubstr("\"transmitter\":254,"));
}

TEST_F(ShowKeys, EveryChangedByteMakesTheTagBad) {
  const Vector& vector = kVectors[3];
  const std::string file = keyFile(vector.key);
  const auto bytes = bytesOfHex(vector.whole).value();
  // But for the company's prefix, without which it is no packet.
  for (std::size_t at = 2; at < bytes.size(); ++at) {
    auto changed = bytes;
    changed[at] ^= 0x10;
    const ToolRun decoded = run(
        {"packet", "decode", "--show-key", file, "--epoch", vector.epoch, NSDataToHex(changed)});
    EXPECT_THAT(decoded.output, HasSubstr("\"tagValid\":false")) << at;
  }
}

TEST_F(ShowKeys, OnlyDataOfTheirLengthHasATag) {
  const std::string whole = kVectors[0].whole;
  const std::string file = keyFile(kVectors[0].key);
  for (const std::string& data : {whole.substr(0, 56), whole + "00", whole.substr(0, 52)}) {
    const ToolRun decoded =
        run({"packet", "decode", "--show-key", file, "--epoch", "29454480", data});
    EXPECT_EQ(decoded.status, 0) << decoded.error;
    EXPECT_THAT(decoded.output, Not(HasSubstr("tag"))) << data;
  }
}

TEST_F(ShowKeys, MayHaveWhiteSpaceAroundThemAndEitherCase) {
  const Vector& vector = kVectors[0];
  for (const char* text :
       {"000102030405060708090a0b0c0d0e0f\n", " \t000102030405060708090A0B0C0D0E0F\r\n"}) {
    EXPECT_EQ(encode(vector.plain, keyFile(text), vector.epoch).output,
              std::string(vector.whole) + "\n");
  }
}

TEST_F(ShowKeys, OfAnotherLengthOrWithOtherCharactersAreRefused) {
  const std::string whole = kVectors[0].key;
  for (const std::string& text :
       {std::string(), whole.substr(1), whole + "0", whole + whole, "0x" + whole.substr(2),
        whole.substr(0, 16) + " " + whole.substr(16), whole.substr(0, 31) + "G",
        std::string(300, ' ') + whole, whole + std::string(300, '0')}) {
    const ToolRun made = encode(kVectors[0].plain, keyFile(text), "1");
    EXPECT_EQ(flawOfRefusal(made), "") << text;
    EXPECT_THAT(made.error, HasSubstr("show.key"));
    EXPECT_THAT(made.error, Not(HasSubstr(whole.substr(4, 8)))) << "no part of it is told";
  }
}

TEST_F(ShowKeys, ThatOthersMayReadAreRefused) {
  for (const mode_t mode : {0644U, 0640U, 0604U, 0444U}) {
    const ToolRun made = encode(kVectors[0].plain, keyFile(kVectors[0].key, mode), "1");
    EXPECT_EQ(flawOfRefusal(made), "") << mode;
    EXPECT_THAT(made.error, HasSubstr("others may read"));
  }
}

TEST_F(ShowKeys, ThatCannotBeReadAreRefused) {
  const std::string folder = folder_.path().string();
  ASSERT_EQ(chmod(folder.c_str(), S_IRWXU), 0);
  for (const std::string& path : {folder + "/none", folder, std::string()}) {
    EXPECT_EQ(flawOfRefusal(encode(kVectors[0].plain, path, "1")), "") << path;
  }
}

// One that nobody writes to would otherwise be waited for, and the first signal be for nothing.
TEST_F(ShowKeys, OfAPipeThatNobodyWritesToAreRefusedAtOnce) {
  const std::string pipe = (folder_.path() / "pipe").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
  const ToolRun made = encode(kVectors[0].plain, pipe, "1");
  EXPECT_EQ(flawOfRefusal(made), "");
  EXPECT_THAT(made.error, HasSubstr("32 hexadecimal digits"));
}

// As a shell's <(command) does, for a key that is never on a disk.
TEST_F(ShowKeys, MayComeOutOfAPipe) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const Vector& vector = kVectors[0];
  const std::string path = "/proc/self/fd/" + std::to_string(ends[0]);
  std::thread writer([&] {
    for (const char digit : std::string(vector.key)) EXPECT_EQ(write(ends[1], &digit, 1), 1);
    close(ends[1]);
  });
  EXPECT_EQ(encode(vector.plain, path, vector.epoch).output, std::string(vector.whole) + "\n");
  writer.join();
  close(ends[0]);
}

// Typed by mistake, it must not come to stand in a log too.
TEST_F(ShowKeys, AreNeverTakenFromTheCommandLineNorTold) {
  const std::string key = kVectors[0].key;
  for (const std::string& text :
       {key, " " + key, std::string("000102030405060708090a0b0c0d0e0f")}) {
    const ToolRun made = encode(kVectors[0].plain, text, "1");
    EXPECT_EQ(flawOfRefusal(made), "");
    EXPECT_THAT(made.error, HasSubstr("--show-key takes the name of a file"));
    EXPECT_THAT(made.error, Not(testing::ContainsRegex("0[cC]0[dD]0[eE]")));
  }
}

TEST_F(ShowKeys, StandNowhereInWhatIsPrintedOfAPacket) {
  const Vector& vector = kVectors[3];
  const std::string file = keyFile(vector.key);
  const ToolRun made = encode(vector.plain, file, vector.epoch);
  const ToolRun read = run(
      {"packet", "decode", "--show-key", file, "--epoch", vector.epoch, std::string(vector.whole)});
  EXPECT_EQ(made.status + read.status, 0);
  EXPECT_THAT(made.output + read.output + made.error + read.error,
              Not(HasSubstr(std::string(vector.key).substr(4, 8))));
}

TEST_F(ShowKeys, GoWithAnEpochThatIsANumber) {
  const std::string file = keyFile(kVectors[0].key);
  for (const char* epoch : {"", "x", "-1", "4294967296", "1.5", "0x10", " 1"}) {
    EXPECT_EQ(flawOfRefusal(encode(kVectors[0].plain, file, epoch)), "") << epoch;
  }
  const std::string data = kVectors[0].whole;
  for (const Words& words :
       {Words{"packet", "encode", "--show-key", file}, Words{"packet", "encode", "--epoch", "1"},
        Words{"packet", "decode", "--show-key", file, data},
        Words{"packet", "decode", "--epoch", "1", data}}) {
    EXPECT_EQ(flawOfRefusal(run(words)), "") << words[1] << words[2];
  }
}

TEST_F(ShowKeys, NeedACipher) {
  const ToolRun made =
      runTool({"packet", "encode", "--show-key", keyFile(kVectors[0].key), "--epoch", "1"});
  EXPECT_EQ(made.status, 1);
  EXPECT_EQ(made.output, "");
  EXPECT_THAT(made.error, HasSubstr("no cipher"));
}

}  // namespace
}  // namespace halvora
