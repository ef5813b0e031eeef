// SPDX-License-Identifier: Apache-2.0
// A phone, or a desktop, as Qt and standard C++ see it, with the libraries that it is handed: every
// need of the kit, ready for an engine. Owned by whoever puts them together; main thread; needs an
// application object.
#pragma once

#include <memory>
#include <string>

#include "adapters/qt/qt_platform_services.h"
#include "halvora/engine.h"
#include "halvora/platform/absent.h"
#include "halvora/platform/files.h"
#include "halvora/platform/image.h"
#include "halvora/platform/json.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/need.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/video_asset.h"
#include "halvora/safety.h"

namespace halvora {

struct QtPlatformOptions {
  /// The folder that holds HVAssets and the host's strings; empty for "assets" beside the program.
  /// A text that neither these strings nor the kit's folder have is the one that is compiled in.
  std::string assets = {};
  /// The folder with the kit's strings; empty for those that are compiled in.
  std::string kit = {};
  /// Where defaults and seat tables are kept; empty for the user's folder for this application.
  std::string documents = {};
  /// Such as "com.example.host"; empty for the application's domain and name.
  std::string identifier = {};
  /// Empty ones are not sent, and ones of plain http only if that is allowed.
  UsageEndpoints usageEndpoints = {};
  /// Whether they are sent before the host says otherwise, such as while its user was not asked.
  bool usageReports = true;
  bool allowsPlainHttp = false;
  /// What a show may do to eyes, until the host says otherwise to its engine.
  LightLimits limits = {};
};

/// What is neither Qt's nor standard C++. They outlive the platform.
struct QtPlatformLibraries {
  NeedRef<const JsonReader> json;
  NeedRef<Files> files;
  NeedRef<const ImageDecoder> images = absent::images();
  NeedRef<const VideoAssets> videoAssets = absent::videoAssets();
  NeedRef<const MessageCodes> codes = absent::codes();
};

class QtPlatform {
 public:
  QtPlatform(const QtPlatformOptions& options, const QtPlatformLibraries& libraries);
  ~QtPlatform();
  QtPlatform(const QtPlatform&) = delete;
  QtPlatform& operator=(const QtPlatform&) = delete;

  RunLoop& runLoop();
  /// To be handed in before an engine is made. They are no options, as an adapter may need the run
  /// loop.
  void use(const QtPlatformServices& services);
  const Platform& platform() const;
  /// The application comes to its end, or the machine sleeps: as if the user had turned to another
  /// one, whether or not Qt has noticed.
  void setSuspended(bool isSuspended);
  /// What an engine on this platform is made with.
  const EngineOptions& engineOptions() const;

 private:
  struct Needs;

  std::unique_ptr<Needs> needs_;
};

}  // namespace halvora
