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

namespace absent {

Application& application();
const Battery& battery();
BluetoothCentral& bluetooth();
const Bundles& bundles();
Calendar& calendar();
UserDefaults& defaults();
Files& files();
Haptics& haptics();
HttpClient& http();
const ImageDecoder& images();
const JsonReader& json();
const MessageCodes& codes();
SerialQueues& queues();
Random& random();
Screen& screen();
Torch& torch();
const VideoAssets& videoAssets();
const VideoPlayers& videoPlayers();
WallClock& wallClock();
Workers& workers();

}  // namespace absent

}  // namespace v0
}  // namespace halvora
