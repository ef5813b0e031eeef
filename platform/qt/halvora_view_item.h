// SPDX-License-Identifier: Apache-2.0
// The QML type `HalvoraView`: the light of the engine that its QML engine is wired to, over the
// item's whole size, and what a host asks of that engine. A face of the host view of the same name.
// Main thread.
#pragma once

#include <QPointer>
#include <QStringList>
#include <memory>

#include <qqmlregistration.h>

#include "host/halvora_view.h"
#include "platform/qt/halvora_host.h"
#include "platform/qt/light_surface.h"
#include "platform/run_loop.h"

namespace halvora {

// The base is named in full for the generator of the module's types, which looks no names up.
class HalvoraViewItem : public halvora::LightSurface {
  Q_OBJECT
  QML_NAMED_ELEMENT(HalvoraView)
  /// The transmitter keys ("application:number") to obey; none means all.
  Q_PROPERTY(QStringList allowedTransmitterIds READ allowedTransmitterIds WRITE
                 setAllowedTransmitterIds NOTIFY allowedTransmitterIdsChanged)
  Q_PROPERTY(bool isPermissionGranted READ isPermissionGranted NOTIFY isPermissionGrantedChanged)
  Q_PROPERTY(bool isInsideVenue READ isInsideVenue NOTIFY isInsideVenueChanged)

 public:
  explicit HalvoraViewItem(QQuickItem* parent = nullptr) : LightSurface(parent) {}
  ~HalvoraViewItem() override;

  /// Begins to listen if the user has allowed Bluetooth.
  Q_INVOKABLE void start();
  /// Begins to listen, asking the user for permission where that is open.
  Q_INVOKABLE void initBluetoothPermission();

  QStringList allowedTransmitterIds() const { return allowedTransmitterIds_; }
  void setAllowedTransmitterIds(const QStringList& ids);
  bool isPermissionGranted();
  bool isInsideVenue();

  // For the host alone: it knows whose turn it is, and says when it goes itself.
  void setShown(bool shown);
  void forgetHost() { watch_.invalidate(); }

 signals:
  void lightShowStarted();
  void lightShowStopped();
  void allowedTransmitterIdsChanged();
  void isPermissionGrantedChanged();
  void isInsideVenueChanged();

 protected:
  void classBegin() override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

 private:
  /// Null for none, or none any more.
  HalvoraViewController* controller() const;
  HalvoraView view();
  void layOut();
  void watch();
  void look();

  QPointer<HalvoraHost> host_;
  QStringList allowedTransmitterIds_;
  /// While the engine's view is here.
  std::unique_ptr<HalvoraView::Coordinator> coordinator_;
  bool wasPermissionGranted_ = false;
  bool wasInsideVenue_ = false;
  Timer watch_;
};

}  // namespace halvora
