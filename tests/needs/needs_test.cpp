// SPDX-License-Identifier: Apache-2.0
// What the interfaces and the struct of needs do not let anybody write.
#include <type_traits>

#include "halvora/platform/application.h"
#include "halvora/platform/battery.h"
#include "halvora/platform/bluetooth.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/descriptors.h"
#include "halvora/platform/files.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/http.h"
#include "halvora/platform/image.h"
#include "halvora/platform/json.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/movie_writer.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/random.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/user_defaults.h"
#include "halvora/platform/video_asset.h"
#include "halvora/platform/video_player.h"
#include "halvora/platform/wall_clock.h"
#include "halvora/platform/workers.h"

namespace halvora {
namespace {

// Every interface has its row. `*radio = other` is what must not compile.
template <class Interface>
constexpr bool isSafe() {
  static_assert(std::is_base_of_v<Need, Interface>);
  static_assert(!std::is_copy_assignable_v<Interface>);
  static_assert(!std::is_move_assignable_v<Interface>);
  static_assert(std::has_virtual_destructor_v<Interface>);
  return true;
}

template <class... Interfaces>
constexpr bool kAreSafe = (isSafe<Interfaces>() && ...);

static_assert(
    kAreSafe<Application, Battery, BluetoothCentral, CentralManager, Bundle, Descriptors, Files,
             Haptics, HttpClient, ImageDecoder, JsonReader, MessageCode, MessageCodes, MovieWriter,
             MovieWriters, Random, RunLoop, Screen, SerialQueue, SerialQueues, Torch, UserDefaults,
             VideoFrame, FrameReader, FrameGenerator, VideoAsset, VideoAssets, VideoPlayer,
             WallClock, Calendar, Workers>);

// Nor does an object that serves a need slip by value into what refers to it.
class Lamp final : public Torch {
 public:
  bool hasTorch() const override { return true; }
  bool hasFlash() const override { return true; }
  void setOn(bool /*on*/) override {}
};

static_assert(!std::is_copy_constructible_v<Lamp>);
static_assert(std::is_constructible_v<NeedRef<Torch>, Lamp&>);
static_assert(!std::is_constructible_v<NeedRef<Torch>, Lamp>);
static_assert(!std::is_constructible_v<NeedRef<const JsonReader>, const JsonReader>);
static_assert(!std::is_constructible_v<NeedRef<Torch>, const Lamp&>);
static_assert(std::is_assignable_v<decltype(Platform::torch)&, Lamp&>);

// Without a run loop there is no platform, and it can be left at that.
static_assert(!std::is_default_constructible_v<Platform>);
static_assert(!std::is_default_constructible_v<NeedRef<RunLoop>>);

}  // namespace
}  // namespace halvora
