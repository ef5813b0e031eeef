// SPDX-License-Identifier: Apache-2.0
// What serves a need that a host leaves out: a quiet nothing each, the same for the whole process
// and never destroyed. They keep nothing, so any thread may call them. There is none for the run
// loop: without it there is no time.
#pragma once

#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class Application;
class Battery;
class BluetoothCentral;
class Calendar;
class Files;
class Haptics;
class HttpClient;
class ImageDecoder;
class JsonReader;
class MessageCodes;
class Random;
class Screen;
class SerialQueues;
class Torch;
class UserDefaults;
class VideoAssets;
class WallClock;
class Workers;
struct Bundles;
struct VideoPlayers;

/// One function for each need that may be left out.
namespace absent {

Application& application();          ///< Always active; has no page of settings.
const Battery& battery();            ///< Says nothing of its state.
BluetoothCentral& bluetooth();       ///< Allowed, and hears and reports nothing.
const Bundles& bundles();            ///< Two without a name, resources or texts; no documents.
Calendar& calendar();                ///< Every date is of the same day.
UserDefaults& defaults();            ///< Forgets what is set at once.
Files& files();                      ///< Nothing is there, and nothing can be written.
Haptics& haptics();                  ///< Nothing is felt.
HttpClient& http();                  ///< Sends nothing.
const ImageDecoder& images();        ///< Knows no picture.
const JsonReader& json();            ///< Takes every document for malformed.
const MessageCodes& codes();         ///< Has no cipher.
SerialQueues& queues();              ///< Take no task.
Random& random();                    ///< Always draws 0.
Screen& screen();                    ///< Of no size, at full brightness for good.
Torch& torch();                      ///< Neither torch nor flash.
const VideoAssets& videoAssets();    ///< Opens no file.
const VideoPlayers& videoPlayers();  ///< Are never ready.
WallClock& wallClock();              ///< Always the same moment.
Workers& workers();                  ///< One, which begins nothing.

}  // namespace absent

}  // namespace v0
}  // namespace halvora
