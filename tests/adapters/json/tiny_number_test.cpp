// SPDX-License-Identifier: Apache-2.0
// A number that is smaller than any double, in every kind of document that the kit reads: the
// document counts, and the number is zero.
#include <string>
#include <variant>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/standard_files.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "light/palettes.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/adapters/standard/temporary_folder.h"
#include "tests/seats/seat_map_lines.h"
#include "text/defaults_values.h"
#include "venue/show/scenario.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kTiny = "0." + std::string(60, '0') + "5e-300";
const std::string kAlone = "[" + kTiny + "]";

TEST(TinyNumber, InASeatMap) {
  EXPECT_THAT(linesOfDocument(kAlone), IsEmpty());
  EXPECT_THAT(linesOfDocument(R"([{"name": )" + kTiny + R"(, "rows": [{"seats": [{"x": )" + kTiny +
                              R"(, "y": 2}]}]}])"),
              ElementsAre("0 | Row 1 | Seat 1 0,2"));
}

TEST(TinyNumber, InAScenario) {
  const ExactJsonReader json;
  EXPECT_TRUE(std::holds_alternative<ScenarioError>(parseScenario(kAlone, json)));
  const auto read = parseScenario(R"({"at": )" + kTiny + R"(, "start": true})", json);
  ASSERT_TRUE(std::holds_alternative<Scenario>(read));
  EXPECT_EQ(std::get<Scenario>(read).lastAction(), Duration::zero());
}

TEST(TinyNumber, InThePalettes) {
  const auto palettesOf = [](const std::string& text) {
    const auto document = ExactJsonReader().parse(text, nullptr);
    EXPECT_TRUE(document) << text;
    return parsePalettes(document.value_or(JsonValue()));
  };
  EXPECT_THAT(palettesOf(kAlone), IsEmpty());
  const auto palettes =
      palettesOf(R"({"palettes": [{"id": )" + kTiny + R"(, "colours": ["#FF0000"]}]})");
  ASSERT_EQ(palettes.size(), 1U);
  EXPECT_EQ(palettes[0].id, 0);
}

TEST(TinyNumber, InAStringTable) {
  const TemporaryFolder folder;
  const ExactJsonReader json;
  folder.write("strings/de.json", kAlone);
  folder.write("strings/en.json", R"({"number": )" + kTiny + R"(, "text": "Hello"})");
  const StandardFiles files;
  const FolderBundle bundle(files, folder.path(), "id", {"de"}, json);
  EXPECT_EQ(bundle.localizedString("text"), "Hello");
  EXPECT_EQ(bundle.localizedString("number"), "number");
}

TEST(TinyNumber, InATablesMeta) {
  constexpr SeatPosition kSeat{1, 2};
  const std::string video = "/video";
  VirtualFiles files;
  const ExactJsonReader json;
  const SeatLutFiles luts(files, json, "/documents");
  files.put(video, "video", 0);
  files.put(luts.pixelMapSeatLUTDataURLForVideoURL(video, kSeat), std::string(4, '\0'));
  const std::string meta = luts.pixelMapSeatLUTMetaURLForVideoURL(video, kSeat);
  files.put(meta, kAlone);
  EXPECT_EQ(std::get<SeatLutFault>(luts.read(video, kSeat)), SeatLutFault::metaNotAnObject);
  files.put(meta, R"({"frameCount": 1, "fileSize": 5, "modifiedAt": )" + kTiny + "}");
  EXPECT_NE(luts.loadPersistedPixelMapSeatLUTForVideoURL(video, kSeat), nullptr);
}

TEST(TinyNumber, InTheDefaultsFile) {
  const std::string path = "/data/defaults.json";
  VirtualFiles files;
  const ExactJsonReader json;
  VirtualRunLoop loop;
  VirtualQueues queues(loop);
  files.put(path, kAlone);
  EXPECT_EQ(FileDefaults(path, {files, json, loop, queues}).find("key"), nullptr);
  EXPECT_EQ(files.read(path + ".damaged", 1000), kAlone);
  files.put(path, R"({"key": )" + kTiny + R"(, "other": 5})");
  const FileDefaults defaults(path, {files, json, loop, queues});
  ASSERT_NE(defaults.find("key"), nullptr);
  EXPECT_EQ(*defaults.find("key"), DefaultsValue(0.0));
  EXPECT_EQ(integerForKey(defaults, "other"), 5);
}

}  // namespace
}  // namespace halvora
