// SPDX-License-Identifier: Apache-2.0
// The QML type `HalvoraView`: the light of the engine that its QML engine is wired to, over the
// item's whole size, and what a host asks of that engine. A face of the host view of the same name.
// Main thread.
#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QUrl>
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
  // "HalvoraView.AirPolicy.Exact": an exact what, is to be read where it is written.
  Q_CLASSINFO("RegisterEnumClassesUnscoped", "false")
  /// The transmitter keys ("application:number") to obey; none means all.
  Q_PROPERTY(QStringList allowedTransmitterIds READ allowedTransmitterIds WRITE
                 setAllowedTransmitterIds NOTIFY allowedTransmitterIdsChanged)
  /// Whether usage counters are sent; unless it is set, whatever the engine was made with.
  Q_PROPERTY(bool usageReports READ usageReports WRITE setUsageReports NOTIFY usageReportsChanged)
  /// What is believed of the air. As long as none of these three is set, whatever the engine was
  /// made with. They are given to the engine once the item is complete, before `start` in a
  /// `Component.onCompleted`; a later change makes it forget what it had learnt.
  Q_PROPERTY(AirPolicy airPolicy READ airPolicy WRITE setAirPolicy NOTIFY airChanged)
  /// What the key is for; with a `showKeyFile` it is `Prefer` unless it is set.
  Q_PROPERTY(
      Authentication authentication READ authentication WRITE setAuthentication NOTIFY airChanged)
  /// A local file with the show's key, 32 hexadecimal digits that only its owner may read. There is
  /// no property for the key itself: texts of QML are in the program, in its cache and in a
  /// debugger. Where it cannot be read no tag is good, and `Require` obeys nothing.
  Q_PROPERTY(QUrl showKeyFile READ showKeyFile WRITE setShowKeyFile NOTIFY airChanged)
  /// Why there is no key, in a line; empty where there is one, or none is wanted.
  Q_PROPERTY(QString showKeyError READ showKeyError NOTIFY showKeyErrorChanged)
  /// How far what is obeyed can be believed.
  Q_PROPERTY(AirTrust airTrust READ airTrust NOTIFY airTrustChanged)
  /// Whether the user has allowed Bluetooth.
  Q_PROPERTY(bool isPermissionGranted READ isPermissionGranted NOTIFY isPermissionGrantedChanged)
  /// Whether a transmitter of the venue has been heard lately.
  Q_PROPERTY(bool isInsideVenue READ isInsideVenue NOTIFY isInsideVenueChanged)
  /// Whether the show wants the whole screen, without the system's bars: a host whose window can
  /// have it makes it full screen for as long.
  Q_PROPERTY(bool statusBarHidden READ statusBarHidden NOTIFY statusBarHiddenChanged)

 public:
  /// As the engine's own of these names.
  enum class AirPolicy { Exact, Guarded };
  Q_ENUM(AirPolicy)
  enum class Authentication { Off, Prefer, Require };
  Q_ENUM(Authentication)
  enum class AirTrust { Unproven, Trusted, Contested };
  Q_ENUM(AirTrust)

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
  AirPolicy airPolicy() const { return airPolicy_; }
  void setAirPolicy(AirPolicy policy) { setAir(airPolicy_, policy); }
  Authentication authentication() const;
  void setAuthentication(Authentication authentication) {
    setAir(authentication_, std::optional(authentication));
  }
  QUrl showKeyFile() const { return showKeyFile_; }
  void setShowKeyFile(const QUrl& file) { setAir(showKeyFile_, file); }
  QString showKeyError() const { return showKeyError_; }
  AirTrust airTrust() const { return airTrust_; }
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
  void airChanged();
  void showKeyErrorChanged();
  void airTrustChanged();
  void isPermissionGrantedChanged();
  void isInsideVenueChanged();
  void statusBarHiddenChanged();

 protected:
  void classBegin() override;
  void componentComplete() override;
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
  void lookAtEngine();
  void lookAtStatusBar();
  void lookAtPresence();
  template <class Value>
  void setAir(Value& value, const Value& wanted) {
    const bool isSame = hasAir_ && value == wanted;
    if (isSame) return;
    value = wanted;
    hasAir_ = true;
    // Whoever hears of its trust or its key may have destroyed the item.
    const QPointer<HalvoraViewItem> self(this);
    if (isComponentComplete()) applyAir();
    if (self) emit airChanged();
  }
  void applyAir();
  void lookAtTrust();

  QPointer<HalvoraHost> host_;
  QStringList allowedTransmitterIds_;
  /// None until it is set.
  std::optional<bool> usageReports_;
  /// While the engine's view is here.
  std::unique_ptr<HalvoraView::Coordinator> coordinator_;
  /// Whether any of these was set.
  bool hasAir_ = false;
  AirPolicy airPolicy_ = AirPolicy::Exact;
  /// None until it is set.
  std::optional<Authentication> authentication_;
  QUrl showKeyFile_;
  QString showKeyError_;
  AirTrust airTrust_ = AirTrust::Unproven;
  bool wasPermissionGranted_ = false;
  bool wasInsideVenue_ = false;
  bool isStatusBarHidden_ = false;
  std::shared_ptr<const void> presenceWatch_;
};

}  // namespace halvora
