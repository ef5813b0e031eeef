// SPDX-License-Identifier: Apache-2.0
// A host's window on this machine: the real needs of a Qt host, the kit's QML types in a real
// window, and in place of the radio one that a benchmark advertises on. Owned by a benchmark. Main
// thread.
#pragma once

#include <QColor>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/qt/qt_platform.h"
#include "adapters/virtual/virtual_bluetooth.h"
#include "bench/window/counting_run_loop.h"
#include "bench/window/frame_log.h"
#include "engine/broadcast.h"
#include "halvora/engine.h"

namespace halvora {

class BenchWindow {
 public:
  /// The window that the QML text describes, once it has shown its first frame.
  BenchWindow(const std::string& assets, const QString& text);
  ~BenchWindow();
  BenchWindow(const BenchWindow&) = delete;
  BenchWindow& operator=(const BenchWindow&) = delete;

  QQuickWindow& window() { return *window_; }
  QQuickItem* item(const char* name);
  template <class T>
  T& find(const char* name) {
    return *root_->findChild<T*>(QString::fromLatin1(name));
  }
  /// What the window system shows in the window's middle.
  QColor shown();

  /// Puts the look on the air under the next sequence number; true if the kit heard it.
  bool advertise(Broadcast look);
  /// From now on the last look comes ten times a second, as from a transmitter.
  void repeatLook();
  /// And beside it so many advertisements a second of other makers.
  void advertiseForeign(int aSecond);
  std::uint64_t foreign() const { return foreign_; }
  std::uint64_t repeats() const { return repeats_; }

  void waitUntil(const std::function<bool()>& isSo);
  void run(std::chrono::milliseconds time);
  /// Listens, and shows a plain colour that has faded in.
  void beginShow();

 private:
  QTemporaryDir documents_;
  const ExactJsonReader json_;
  LinuxFiles files_;
  const PictureDecoder images_;
  const FfmpegVideoAssets videos_;
  QtPlatform phone_;
  CountingRunLoop loop_{phone_.runLoop()};
  VirtualBluetooth radio_{loop_};
  std::optional<HalvoraViewController> engine_;
  QQmlEngine qml_;
  std::unique_ptr<QObject> root_;
  QQuickWindow* window_ = nullptr;
  std::optional<FrameLog> frames_;
  BroadcastBytes last_{};
  std::uint16_t sequence_ = 0;
  std::uint64_t foreign_ = 0;
  std::uint64_t repeats_ = 0;
  Moment foreignBegan_;
  QTimer repeatTimer_;
  QTimer foreignTimer_;

 public:
  FrameLog& frames() { return *frames_; }
  HalvoraViewController& engine() { return *engine_; }
  std::uint64_t turns() const { return loop_.turns(); }
};

/// The light over the whole window.
QString lightWindow();
/// The light, and over it the status panel, as the example host has them.
QString hostWindow();

/// A steady colour that differs from that of the next thousand numbers.
Broadcast steadyLook(std::uint64_t number);

}  // namespace halvora
