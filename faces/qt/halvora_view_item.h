// SPDX-License-Identifier: Apache-2.0
// The QML type `HalvoraView`: the light of the engine that its QML engine is wired to, over the
// item's whole size, and what a host asks of that engine. A face of the host view of the same name.
// Main thread.
#pragma once

#include <QPointer>
#include <QStringList>
#include <memory>
#include <optional>

#include <qqmlregistration.h>

#include "faces/qt/halvora_host.h"
#include "faces/qt/light_surface.h"
#include "halvora/host.h"

namespace halvora {

// The base is named in full for the generator of the module's types, which looks no names up.
class HalvoraViewItem : public halvora::LightSurface {
  Q_OBJECT
  QML_NAMED_ELEMENT(HalvoraView)
  /// The transmitter keys ("application:number") to obey; none means all.
  Q_PROPERTY(QStringList allowedTransmitterIds READ allowedTransmitterIds WRITE
                 setAllowedTransmitterIds NOTIFY allowedTransmitterIdsChanged)
  /// Whether usage counters are sent; unless it is set, whatever the engine was made with.
  Q_PROPERTY(bool usageReports READ usageReports WRITE setUsageReports NOTIFY usageReportsChanged)
  /// Whether the user has allowed Bluetooth.
  Q_PROPERTY(bool isPermissionGranted READ isPermissionGranted NOTIFY isPermissionGrantedChanged)
  /// Whether a transmitter of the venue has been heard lately.
  Q_PROPERTY(bool isInsideVenue READ isInsideVenue NOTIFY isInsideVenueChanged)
  /// Whether the show wants the whole screen, without the system's bars: a host whose window can
  /// have it makes it full screen for as long.
  Q_PROPERTY(bool statusBarHidden READ statusBarHidden NOTIFY statusBarHiddenChanged)

 public:
  explicit HalvoraViewItem(QQuickItem* parent = nullptr) : LightSurface(parent) {}
  ~HalvoraViewItem() override;

  /// Begins to listen if the user has allowed Bluetooth.
  Q_INVOKABLE void start();
  /// Begins to listen, asking the user for permission where that is open.
  Q_INVOKABLE void initBluetoothPermission();

  QStringList allowedTransmitterIds() const { return allowedTransmitterIds_; }
  void setAllowedTransmitterIds(const QStringList& ids);
  bool usageReports() const;
  void setUsageReports(bool isOn);
  bool isPermissionGranted() const;
  bool isInsideVenue() const;
  bool statusBarHidden() const { return isStatusBarHidden_; }

  // For the host alone: it knows whose turn it is, and says when it goes itself.
  void setShown(bool shown);
  void forgetHost();

 signals:
  /// A look has come with another mode or speed than the one before, and its mode is not 0.
  void lightShowStarted();
  /// The show is over: a look has come with mode 0.
  void lightShowStopped();
  void allowedTransmitterIdsChanged();
  void usageReportsChanged();
  void isPermissionGrantedChanged();
  void isInsideVenueChanged();
  void statusBarHiddenChanged();

 protected:
  void classBegin() override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

 private:
  /// Null for none, or none any more.
  HalvoraViewController* controller() const;
  HalvoraView view();
  void layOut();
  void lightEnds() override;
  /// A show has started or stopped, whichever signal says so.
  void tellShow(void (HalvoraViewItem::*signal)());
  void lookAtStatusBar();
  void lookAtPresence();

  QPointer<HalvoraHost> host_;
  QStringList allowedTransmitterIds_;
  /// None until it is set.
  std::optional<bool> usageReports_;
  /// While the engine's view is here.
  std::unique_ptr<HalvoraView::Coordinator> coordinator_;
  bool wasPermissionGranted_ = false;
  bool wasInsideVenue_ = false;
  bool isStatusBarHidden_ = false;
  std::shared_ptr<const void> presenceWatch_;
};

}  // namespace halvora
