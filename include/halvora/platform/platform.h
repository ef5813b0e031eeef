// SPDX-License-Identifier: Apache-2.0
// Everything the kit needs from the system that it runs on. The run loop is given, the rest is
// absent until it is given by name:
//
//   Platform platform{.runLoop = loop};
//   platform.bluetooth = radio;
//
// Whoever makes an engine owns the objects and keeps them alive for as long as the engine lives.
// They are called in the middle of its work: none of them may destroy an engine, a panel or a
// wizard within a call, but for the application, whose observers may. What it has to do then it
// posts to the run loop.
#pragma once

#include "halvora/platform/absent.h"
#include "halvora/platform/need.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

class RunLoop;

struct Platform {
  /// Must be given: without it there is no time.
  NeedRef<RunLoop> runLoop;
  /// Absent: no background work, so no tables are built and no seat map is read.
  NeedRef<SerialQueues> queues = absent::queues();
  /// Absent: it is always the same moment of the same day.
  NeedRef<WallClock> wallClock = absent::wallClock();
  /// Absent: every date is of the same day.
  NeedRef<Calendar> calendar = absent::calendar();
  /// Absent: always 0.
  NeedRef<Random> random = absent::random();
  /// Absent: the user is asked nothing, and nothing is ever heard or reported.
  NeedRef<BluetoothCentral> bluetooth = absent::bluetooth();
  /// Absent: of no size and full brightness.
  NeedRef<Screen> screen = absent::screen();
  /// Absent: nothing is felt.
  NeedRef<Haptics> haptics = absent::haptics();
  /// Absent: always active, and without a page of settings.
  NeedRef<Application> application = absent::application();
  /// Absent: forgets at once.
  NeedRef<UserDefaults> defaults = absent::defaults();
  /// Absent: nobody tells.
  NeedRef<const Battery> battery = absent::battery();
  /// Absent: two bundles without a name, resources or texts.
  NeedRef<const Bundles> bundles = absent::bundles();
  /// Absent: no usage counter is sent.
  NeedRef<HttpClient> http = absent::http();
  /// Absent: no document is well-formed, so there are neither palettes nor seats.
  NeedRef<const JsonReader> json = absent::json();
  /// Absent: there is no lamp.
  NeedRef<Torch> torch = absent::torch();
  /// Absent: no picture is known: no stills, no plan, no overlay.
  NeedRef<const ImageDecoder> images = absent::images();
  /// Absent: never ready.
  NeedRef<const VideoPlayers> videoPlayers = absent::videoPlayers();
  /// Absent: no file is there, and none can be written, so no table outlives the process.
  NeedRef<Files> files = absent::files();
  /// Absent: no video is known, so no pixel map is shown.
  NeedRef<const VideoAssets> videoAssets = absent::videoAssets();
  /// Absent: nothing is done side by side.
  NeedRef<Workers> workers = absent::workers();
  /// Absent: no tag of a packet is good.
  NeedRef<const MessageCodes> codes = absent::codes();
};

}  // namespace v0
}  // namespace halvora
