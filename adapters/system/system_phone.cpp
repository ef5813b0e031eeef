// SPDX-License-Identifier: Apache-2.0
#include "adapters/system/system_phone.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QObject>
#include <QStandardPaths>
#include <QString>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "faces/qt/halvora_host.h"
#include "halvora/platform/absent.h"
#ifdef HALVORA_HAS_CIPHER
#include "adapters/nettle/nettle_codes.h"
#endif

namespace halvora {

#ifdef HALVORA_HAS_BLUETOOTH
namespace {

// Whoever limits what a show does to its audience wants their phones back as they were, too.
QtLinuxOptions withGivingBack(const QtPlatformOptions& options, QtLinuxOptions services) {
  if (options.limits.flash != FlashPolicy::limited) return services;
  services.endsBySignals = true;
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  if (services.journal.empty() && !folder.isEmpty()) {
    services.journal = folder.toStdString() + "/" +
                       QCoreApplication::applicationName().toStdString() + ".halvora-lights";
  }
  return services;
}

}  // namespace
#endif

struct SystemPhone::Parts {
  Parts(const QtPlatformOptions& options, [[maybe_unused]] const QtLinuxOptions& itsServices)
      : qt(options, {.json = json,
                     .files = files,
                     .images = images,
                     .videoAssets = videoAssets,
                     .codes = codes})
#ifdef HALVORA_HAS_BLUETOOTH
        ,
        services(qt.runLoop(), withGivingBack(options, itsServices)) {
    qt.use(services.services());
    giveBackAtTheEnd();
  }
#else
  {
    giveBackAtTheEnd();
  }
#endif

  // The process's phone is never destroyed, and a process that ends runs no loop any more.
  void giveBackAtTheEnd() {
    QObject::connect(qGuiApp, &QCoreApplication::aboutToQuit, &context, [this] {
      qt.setSuspended(true);
#ifdef HALVORA_HAS_BLUETOOTH
      services.giveBack();
#endif
    });
  }

  const ExactJsonReader json;
  LinuxFiles files;
  const PictureDecoder images;
  const FfmpegVideoAssets videoAssets;
#ifdef HALVORA_HAS_CIPHER
  const NettleCodes codes;
#else
  const MessageCodes& codes = absent::codes();
#endif
  QtPlatform qt;
#ifdef HALVORA_HAS_BLUETOOTH
  QtLinuxServices services;
#else
  SystemWishes wishes;
#endif
  /// Ends the connection.
  QObject context;
};

SystemPhone& SystemPhone::sharedInstance(const QtPlatformOptions& options,
                                         const QtLinuxOptions& services) {
  // Never destroyed, as the process's engine stands on it.
  static auto* const kInstance = new SystemPhone(options, services);
  return *kInstance;
}

SystemPhone::SystemPhone(const QtPlatformOptions& options, const QtLinuxOptions& services)
    : parts_(std::make_unique<Parts>(options, services)) {}

SystemPhone::~SystemPhone() = default;

RunLoop& SystemPhone::runLoop() { return parts_->qt.runLoop(); }

const Platform& SystemPhone::platform() const { return parts_->qt.platform(); }

const EngineOptions& SystemPhone::engineOptions() const { return parts_->qt.engineOptions(); }

BluetoothDiagnostics SystemPhone::bluetoothDiagnostics() const {
#ifdef HALVORA_HAS_BLUETOOTH
  return parts_->services.bluetoothDiagnostics();
#else
  return {};
#endif
}

SystemWishes& SystemPhone::wishes() {
#ifdef HALVORA_HAS_BLUETOOTH
  return parts_->services.wishes();
#else
  return parts_->wishes;
#endif
}

// Where a host installs nothing in a QML engine, its views show the process's engine on this
// machine.
void HalvoraHost::installSystem(QQmlEngine& qml) {
  SystemPhone& phone = SystemPhone::sharedInstance();
  static HalvoraViewController& engine = [&phone]() -> HalvoraViewController& {
    auto& made = HalvoraViewController::sharedInstance(phone.platform(), phone.engineOptions());
    made.viewDidLoad();
    return made;
  }();
  install(qml, phone.platform(), engine, &phone.wishes());
}

}  // namespace halvora
