// SPDX-License-Identifier: Apache-2.0
// Everything the kit needs from the system that it runs on, as references to the needs. Whoever
// makes an engine owns these and keeps them alive for as long as the engine lives. They are called
// in the middle of its work: none of them may destroy an engine, a panel or a wizard within a call,
// but for the application, whose observers may. What it has to do then it posts to the run loop.
#pragma once

namespace halvora {

class Application;
class BluetoothCentral;
class Calendar;
class Files;
class Haptics;
class HttpClient;
class ImageDecoder;
class JsonReader;
class Random;
class RunLoop;
class Screen;
class SerialQueues;
class Torch;
class UserDefaults;
class VideoAssets;
class WallClock;
class Workers;
struct Bundles;
struct VideoPlayers;

struct Platform {
  RunLoop& runLoop;
  SerialQueues& queues;
  WallClock& wallClock;
  Calendar& calendar;
  Random& random;
  BluetoothCentral& bluetooth;
  Screen& screen;
  Haptics& haptics;
  Application& application;
  UserDefaults& defaults;
  const Bundles& bundles;
  HttpClient& http;
  const JsonReader& json;
  Torch& torch;
  const ImageDecoder& images;
  const VideoPlayers& videoPlayers;
  Files& files;
  const VideoAssets& videoAssets;
  Workers& workers;
};

}  // namespace halvora
