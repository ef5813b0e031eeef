// SPDX-License-Identifier: Apache-2.0
// Small shows of which every number that a crowd reports is known.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <regex>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/broadcast.h"
#include "tests/venue/crowd/crowd_bench.h"
#include "tests/venue/plan/lut_folder.h"

namespace halvora {
namespace {

// Four places in a row of the map and of the video; the last one is a standing place.
constexpr const char* kMap = R"({"sections": [
  {"name": "A", "rows": [{"name": "1", "seats": [{"name": "1", "x": 0, "y": 0},
                                                 {"name": "2", "x": 1, "y": 0},
                                                 {"name": "3", "x": 2, "y": 0}]}]},
  {"name": "Standing", "rows": [{"name": "1", "seats": [{"name": "1", "x": 3, "y": 0}]}]}]})";

std::string packet(int at, const Broadcast& look, const std::string& more = "") {
  return "{\"at\": " + std::to_string(at / 1000.0) + ", \"packet\": \"" +
         NSDataToHex(encodeBroadcast(look)) + "\"" + more + "}\n";
}

Broadcast from(std::uint8_t transmitter, Broadcast look) {
  look.transmitter = transmitter;
  return look;
}

struct CrowdShow : testing::Test {
  CrowdShow() { folder.write("HVAssets/Maps/Venue-7/map.json", kMap); }

  /// The report but for its last line, which says how fast it was.
  std::string report(const std::string& show, const Words& options) {
    const bool hasOut = std::find(options.begin(), options.end(), "--out") != options.end();
    Words words{"crowd", "--assets",   folder.path().string(),           "--venue",
                "7",     "--scenario", folder.write("show.jsonl", show), "--size",
                "64x32"};
    words.insert(words.end(), options.begin(), options.end());
    if (!hasOut) words.insert(words.end(), {"--out", (folder.path() / "sheet.png").string()});
    const ToolRun run = runTool(words);
    EXPECT_EQ(run.status, 0) << run.error;
    return std::regex_replace(run.output, std::regex(",\n  \"simulatedSecondsPerSecond.*\n"), "\n");
  }

  const TestFolder folder;
};

TEST_F(CrowdShow, ALookThatReachesThePhonesOneAfterTheOther) {
  // Transmitter 1 reaches the first seat, 2 the first three, 3 all, 4 none. The first look takes 0,
  // 100, 100 and 350 ms; the third comes with the fourth, 250 ms later, and the fifth with the
  // sixth. Dark are all at 1.5 s, as the light only begins, three at 1.6, and the last one
  // until 1.9: 9 of 36 times 4. A phone that shows red from 1.6 s or 1.85 on is black at 4 s, and
  // so has one flash at most; the hall's is its rise to green at 3 s and that fall.
  std::string show = "{\"at\": 0, \"start\": true}\n";
  show += packet(1500, from(1, plainLook(1, 255)));
  show += packet(1600, from(2, plainLook(1, 255)));
  show += packet(1850, from(3, plainLook(1, 255)));
  show += packet(3000, from(3, plainLook(2, 0, 255)));
  show += packet(3100, from(4, plainLook(3, 0, 0, 255)));
  show += packet(3350, from(3, plainLook(4, 0, 0, 100)));
  show += packet(4000, from(4, plainLook(5, 9, 9, 9)));
  show += packet(4000, from(3, plainLook(6, 0)));
  EXPECT_EQ(report(show, {"--reach", "1@0,0,0.5", "--reach", "2@1,0,1", "--reach", "4@9,9,1",
                          "--fps", "10", "--until", "5"}),
            R"({
  "phones": 4,
  "seats": 4,
  "simulatedSeconds": 5,
  "frames": 51,
  "framesWritten": 24,
  "packets": {
    "sent": 8,
    "offered": 32,
    "heard": 20,
    "lost": 12
  },
  "looks": {
    "count": 6,
    "shownBy50": {
      "median": 0,
      "worst": 255,
      "never": 0
    },
    "shownBy95": {
      "median": 0,
      "worst": 351,
      "never": 0
    },
    "shownBy99": {
      "median": 0,
      "worst": 351,
      "never": 0
    }
  },
  "dark": {
    "share": 0.0625,
    "worst": 1,
    "worstAt": 1500
  },
  "pixelMap": {
    "frames": 0,
    "exact": 0,
    "squaredError": 0,
    "psnr": null,
    "perFrame": []
  },
  "flashes": {
    "phone": {
      "general": 1,
      "red": 0,
      "at": 2.6
    },
    "crowd": {
      "general": 1,
      "red": 0,
      "at": 3
    },
    "section": {
      "name": "A",
      "general": 1,
      "red": 0,
      "at": 3
    }
  },
  "mostTorches": 0
}
)");
}

// What each of the four shows at some times of the fade and after it, from the pictures.
TEST_F(CrowdShow, EachPictureIsOfItsOwnTimeAndEachPlaceOfItsOwnPhone) {
  std::string show = "{\"at\": 0, \"start\": true}\n";
  show += packet(1500, from(1, plainLook(1, 255)));
  show += packet(1850, from(3, plainLook(1, 255)));
  show += packet(3000, from(3, plainLook(2, 0, 255)));
  const std::string frames = (folder.path() / "frames").string();
  report(show, {"--reach", "1@0,0,1", "--fps", "10", "--until", "5", "--out", frames});
  const auto greatest = [&](int frame, std::size_t channel) {
    const std::string bytes =
        contentsOf(frames + "/frame-" + std::to_string(1'000'000 + frame).substr(1) + ".png");
    const std::size_t head = std::string_view("P6 64 32 255\n").size();
    std::vector<int> levels;
    // The middles of the four places, 10 pixels apart.
    for (const std::size_t column : {17U, 27U, 37U, 47U}) {
      levels.push_back(static_cast<unsigned char>(bytes[head + (16 * 64 + column) * 3 + channel]));
    }
    return levels;
  };
  EXPECT_THAT(greatest(15, 0), testing::ElementsAre(26, 26, 26, 26));
  EXPECT_THAT(greatest(24, 0), testing::ElementsAre(230, 230, 122, 122));
  EXPECT_THAT(greatest(30, 0), testing::ElementsAre(255, 255, 255, 255));
  EXPECT_THAT(greatest(30, 1), testing::ElementsAre(26, 26, 26, 26));
  EXPECT_THAT(greatest(31, 0), testing::ElementsAre(26, 26, 26, 26));
  EXPECT_THAT(greatest(31, 1), testing::ElementsAre(255, 255, 255, 255));
}

// The chances of seed 5: the second phone goes at 1.49 s, before the show; the third at 6.14 s; the
// fourth comes at 2 s, listens a second later, as each does, and goes at 4.04 s. That makes 101
// packets offered, of which 28 are lost, come after their phone has gone or before it listens. A
// model of a few lines that knows only these rules gives the same times of the looks.
TEST_F(CrowdShow, PhonesThatComeLateAndGoEarly) {
  std::string show = "{\"at\": 0, \"start\": true}\n";
  for (std::uint16_t at = 0; at < 12; ++at) {
    Broadcast look =
        plainLook(static_cast<std::uint16_t>(at + 1), static_cast<std::uint8_t>(at % 2 * 200));
    look.ledMode = at % 3 == 0 ? 1 : 0;
    show += packet(1500 + at * 370, look);
  }
  EXPECT_EQ(report(show, {"--late", "0.5,2", "--leave", "0.5", "--jitter", "90", "--loss", "0.3",
                          "--seed", "5", "--fps", "4", "--interval", "150"}),
            R"({
  "phones": 4,
  "seats": 4,
  "simulatedSeconds": 7.57,
  "frames": 31,
  "framesWritten": 24,
  "packets": {
    "sent": 47,
    "offered": 101,
    "heard": 73,
    "lost": 28
  },
  "looks": {
    "count": 12,
    "shownBy50": {
      "median": 52,
      "worst": 207,
      "never": 0
    },
    "shownBy95": {
      "median": 183,
      "worst": 911,
      "never": 0
    },
    "shownBy99": {
      "median": 183,
      "worst": 911,
      "never": 0
    }
  },
  "dark": {
    "share": 0.1321,
    "worst": 1,
    "worstAt": 1500
  },
  "pixelMap": {
    "frames": 0,
    "exact": 0,
    "squaredError": 0,
    "psnr": null,
    "perFrame": []
  },
  "flashes": {
    "phone": {
      "general": 2,
      "red": 2,
      "at": 1.5583
    },
    "crowd": {
      "general": 2,
      "red": 1,
      "at": 3.7333
    },
    "section": {
      "name": "A",
      "general": 1,
      "red": 1,
      "at": 1.5583
    }
  },
  "mostTorches": 2
}
)");
}

// Two frames do not reach the last two places, which go on showing the one before: 12,357 and
// 165,677 off in the first, 56,714 and 34,994 in the second, and two pictures of each.
TEST_F(CrowdShow, APixelMapOfWhichSomePhonesMissFrames) {
  folder.write("HVAssets/Maps/Venue-7/1/video.mp4",
               "words 4 1 3\n"
               "FF000000 FF102030 FF405060 FFFFFFFF\n"
               "FFFF0000 FF00FF00 FF0000FF FF808080\n"
               "FF0A0B0C FF0D0E0F FF101112 FF131415\n");
  std::string show = "{\"at\": 0, \"start\": true}\n";
  for (std::uint16_t at = 0; at < 6; ++at) {
    Broadcast look = plainLook(static_cast<std::uint16_t>(at + 1), 0);
    look.pixelMapId = 1;
    look.minutes = static_cast<std::uint8_t>(at + 1);
    look.transmitter = static_cast<std::uint8_t>(at == 2 || at == 3 ? 2 : 1);
    show += packet(1500 + at * 500, look);
  }
  EXPECT_EQ(report(show, {"--reach", "2@0,0,1", "--fps", "4", "--until", "5"}), R"({
  "phones": 4,
  "seats": 4,
  "simulatedSeconds": 5,
  "frames": 21,
  "framesWritten": 21,
  "packets": {
    "sent": 6,
    "offered": 24,
    "heard": 20,
    "lost": 4
  },
  "looks": {
    "count": 6,
    "shownBy50": {
      "median": 0,
      "worst": 0,
      "never": 0
    },
    "shownBy95": {
      "median": 0,
      "worst": 1007,
      "never": 0
    },
    "shownBy99": {
      "median": 0,
      "worst": 1007,
      "never": 0
    }
  },
  "dark": {
    "share": 0.0667,
    "worst": 1,
    "worstAt": 1500
  },
  "pixelMap": {
    "frames": 15,
    "exact": 11,
    "squaredError": 539484,
    "psnr": 13.3637,
    "worstSeat": {
      "section": "Standing",
      "x": 3,
      "y": 0,
      "t": 2500,
      "levels": 407.0344
    },
    "perFrame": [{
        "t": 1500,
        "frame": 1,
        "psnr": null,
        "worst": 0
      }, {
        "t": 1750,
        "frame": 1,
        "psnr": null,
        "worst": 0
      }, {
        "t": 2000,
        "frame": 2,
        "psnr": null,
        "worst": 0
      }, {
        "t": 2250,
        "frame": 2,
        "psnr": null,
        "worst": 0
      }, {
        "t": 2500,
        "frame": 0,
        "psnr": 6.4176,
        "worst": 407.0344
      }, {
        "t": 2750,
        "frame": 0,
        "psnr": 6.4176,
        "worst": 407.0344
      }, {
        "t": 3000,
        "frame": 1,
        "psnr": 9.2985,
        "worst": 238.147
      }, {
        "t": 3250,
        "frame": 1,
        "psnr": 9.2985,
        "worst": 238.147
      }, {
        "t": 3500,
        "frame": 2,
        "psnr": null,
        "worst": 0
      }, {
        "t": 3750,
        "frame": 2,
        "psnr": null,
        "worst": 0
      }, {
        "t": 4000,
        "frame": 0,
        "psnr": null,
        "worst": 0
      }, {
        "t": 4250,
        "frame": 0,
        "psnr": null,
        "worst": 0
      }, {
        "t": 4500,
        "frame": 0,
        "psnr": null,
        "worst": 0
      }, {
        "t": 4750,
        "frame": 0,
        "psnr": null,
        "worst": 0
      }, {
        "t": 5000,
        "frame": 0,
        "psnr": null,
        "worst": 0
      }]
  },
  "flashes": {
    "phone": {
      "general": 1,
      "red": 1,
      "at": 1.5083
    },
    "crowd": {
      "general": 1,
      "red": 0,
      "at": 3
    },
    "section": {
      "name": "A",
      "general": 1,
      "red": 0,
      "at": 3
    }
  },
  "mostTorches": 0
}
)");
}

}  // namespace
}  // namespace halvora
