// SPDX-License-Identifier: Apache-2.0
// What stands behind the QML type HalvoraStatusView: it makes the status panel on the phone that
// the QML engine's host has, hands it the host's values, measures the layout for it, and shows QML
// what is to be seen as one value with one signal. With another host it is empty from then on. Any
// of its signals may destroy it, or bring another host. Owned by the item; main thread.
#pragma once

#include <QColor>
#include <QObject>
#include <QSizeF>
#include <QString>
#include <memory>
#include <optional>

#include <qqmlregistration.h>

#include "faces/qt/seat_wizard.h"
#include "faces/qt/status_panel_look.h"
#include "halvora/host.h"

namespace halvora {

class StatusPanel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  // What the host decides.
  Q_PROPERTY(QColor statusTextColour MEMBER statusTextColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(QString statusTextFontName MEMBER statusTextFontName_ NOTIFY fieldsChanged)
  Q_PROPERTY(qreal statusTextFontSize MEMBER statusTextFontSize_ NOTIFY fieldsChanged)
  /// As of QML's Text; 0 for the side where lines begin.
  Q_PROPERTY(int statusTextAlignment MEMBER statusTextAlignment_ NOTIFY fieldsChanged)
  Q_PROPERTY(QColor actionButtonColour MEMBER actionButtonColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(QColor actionButtonTitleColour MEMBER actionButtonTitleColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(
      QString actionButtonTitleFontName MEMBER actionButtonTitleFontName_ NOTIFY fieldsChanged)
  Q_PROPERTY(qreal actionButtonTitleFontSize MEMBER actionButtonTitleFontSize_ NOTIFY fieldsChanged)
  Q_PROPERTY(qreal actionButtonHeight MEMBER actionButtonHeight_ NOTIFY fieldsChanged)
  Q_PROPERTY(int defaultVenueId MEMBER defaultVenueId_ NOTIFY fieldsChanged)
  Q_PROPERTY(bool offersSettingsWhenOff MEMBER offersSettingsWhenOff_ NOTIFY fieldsChanged)
  /// All texts are so many times their size; at first what the system asks for.
  Q_PROPERTY(qreal textScale MEMBER textScale_ NOTIFY textScaleChanged)

  // What QML tells of the layout.
  Q_PROPERTY(qreal viewWidth MEMBER viewWidth_ NOTIFY viewWidthChanged)
  Q_PROPERTY(qreal contentHeight MEMBER contentHeight_ NOTIFY contentHeightChanged)

  // What is to be seen.
  Q_PROPERTY(halvora::StatusPanelLook look READ look NOTIFY changed)
  Q_PROPERTY(bool isRightToLeft READ isRightToLeft NOTIFY changed)
  /// The width to lay the content out in: the view's, or as long as it has none, the screen's.
  Q_PROPERTY(qreal layoutWidth READ layoutWidth NOTIFY layoutWidthChanged)
  Q_PROPERTY(halvora::SeatWizard* wizard READ wizard CONSTANT)
  /// While this is so, each frame samples the dot and the spinner.
  Q_PROPERTY(bool isMoving READ isMoving NOTIFY moved)
  Q_PROPERTY(qreal dotScale READ dotScale NOTIFY moved)
  Q_PROPERTY(qreal dotAlpha READ dotAlpha NOTIFY moved)
  Q_PROPERTY(qreal spinnerTurn READ spinnerTurn NOTIFY moved)

 public:
  explicit StatusPanel(QObject* parent = nullptr);
  ~StatusPanel() override;

  const StatusPanelLook& look() const { return look_; }
  bool isRightToLeft() const { return reading_.isRightToLeft; }
  qreal layoutWidth() const { return viewWidth_ > 0 ? viewWidth_ : measuredWidth_; }
  SeatWizard* wizard() { return &wizard_; }
  bool isMoving() const { return isMoving_; }
  qreal dotScale() const { return dot_.scale; }
  qreal dotAlpha() const { return dot_.alpha; }
  qreal spinnerTurn() const { return spinnerTurn_; }
  /// Null before `load`.
  HalvoraStatusViewController* controller() const { return controller_; }

  /// Once, when the item is complete.
  Q_INVOKABLE void load();
  Q_INVOKABLE void sample();
  Q_INVOKABLE void initBluetoothPermission();
  Q_INVOKABLE void openAppSettings();
  Q_INVOKABLE void openSeatSelector();
  Q_INVOKABLE void dismissAlert();

 signals:
  void fieldsChanged();
  void textScaleChanged();
  void viewWidthChanged();
  void contentHeightChanged();
  void layoutWidthChanged();
  void changed();
  void moved();

 private:
  StatusPanelFields fields() const;
  HalvoraStatusView view() const { return HalvoraStatusView(*engine_, fields()); }
  StatusPanelFace face();
  void unload();
  void applyFields();
  void applyTextScale();
  double measure(double width);
  void layOutSoon();
  void layOut();
  void refresh();
  QSizeF fittingSize() const;

  QColor statusTextColour_;
  QString statusTextFontName_;
  qreal statusTextFontSize_ = 0;
  int statusTextAlignment_ = 0;
  QColor actionButtonColour_;
  QColor actionButtonTitleColour_;
  QString actionButtonTitleFontName_;
  qreal actionButtonTitleFontSize_ = 0;
  qreal actionButtonHeight_ = 0;
  int defaultVenueId_ = 0;
  bool offersSettingsWhenOff_ = false;
  qreal textScale_ = 1;

  qreal viewWidth_ = 0;
  qreal contentHeight_ = 0;
  qreal measuredWidth_ = 0;
  bool isMeasuring_ = false;
  bool isLayoutDue_ = false;

  Reading reading_;
  StatusPanelLook look_;
  bool isMoving_ = false;
  DotPose dot_;
  qreal spinnerTurn_ = 0;
  SeatWizard wizard_;
  std::optional<EmbeddedEngine> engine_;
  std::unique_ptr<HalvoraStatusView::Coordinator> coordinator_;
  /// The coordinator's.
  HalvoraStatusViewController* controller_ = nullptr;
};

}  // namespace halvora
