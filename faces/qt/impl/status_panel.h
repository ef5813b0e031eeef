// SPDX-License-Identifier: Apache-2.0
// What stands behind the QML type HalvoraStatusView: it makes the status panel on the phone that
// the QML engine's host has, hands it the host's values, measures the layout for it, and shows QML
// what is to be seen, with one signal for all of it. With another host it is empty from then on.
// Any of its signals may destroy it, or bring another host. Owned by the item; main thread.
#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <memory>
#include <optional>

#include <qqmlregistration.h>

#include "faces/qt/impl/seat_looks.h"
#include "faces/qt/impl/seat_wizard.h"
#include "faces/qt/system_wishes.h"
#include "halvora/host.h"

namespace halvora {

class StatusPanel : public QObject, public QQmlParserStatus {
  Q_OBJECT
  Q_INTERFACES(QQmlParserStatus)
  QML_ELEMENT
  // What the host decides.
  Q_PROPERTY(QColor statusTextColour MEMBER statusTextColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(QString statusTextFontName MEMBER statusTextFontName_ NOTIFY fieldsChanged)
  Q_PROPERTY(qreal statusTextFontSize MEMBER statusTextFontSize_ NOTIFY fieldsChanged)
  /// As of QML's Text; 0 for the side where lines begin.
  Q_PROPERTY(Qt::Alignment statusTextAlignment MEMBER statusTextAlignment_ NOTIFY fieldsChanged)
  Q_PROPERTY(QColor actionButtonColour MEMBER actionButtonColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(QColor actionButtonTitleColour MEMBER actionButtonTitleColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(
      QString actionButtonTitleFontName MEMBER actionButtonTitleFontName_ NOTIFY fieldsChanged)
  Q_PROPERTY(qreal actionButtonTitleFontSize MEMBER actionButtonTitleFontSize_ NOTIFY fieldsChanged)
  Q_PROPERTY(qreal actionButtonHeight MEMBER actionButtonHeight_ NOTIFY fieldsChanged)
  Q_PROPERTY(int defaultVenueId MEMBER defaultVenueId_ NOTIFY fieldsChanged)
  Q_PROPERTY(bool offersSettingsWhenOff MEMBER offersSettingsWhenOff_ NOTIFY fieldsChanged)
  Q_PROPERTY(bool explainsStates MEMBER explainsStates_ NOTIFY fieldsChanged)
  Q_PROPERTY(bool asksOnAnotherDay MEMBER asksOnAnotherDay_ NOTIFY fieldsChanged)
  /// All texts are so many times their size; at first what the system asks for.
  Q_PROPERTY(qreal textScale MEMBER textScale_ NOTIFY textScaleChanged)
  /// One ink on one ground, instead of the host's colours.
  Q_PROPERTY(bool highContrast MEMBER highContrast_ NOTIFY highContrastChanged)
  /// What the user has asked the system for, as far as that is known.
  Q_PROPERTY(bool wantsHighContrast READ wantsHighContrast NOTIFY wishesChanged)
  Q_PROPERTY(bool wantsReducedMotion READ wantsReducedMotion NOTIFY wishesChanged)

  // What QML tells of the layout.
  Q_PROPERTY(qreal viewWidth MEMBER viewWidth_ NOTIFY viewWidthChanged)
  Q_PROPERTY(qreal contentHeight MEMBER contentHeight_ NOTIFY contentHeightChanged)

  // What is to be seen.
  Q_PROPERTY(halvora::LabelLook onboardingLabel READ onboardingLabel NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook joinButton READ joinButton NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook statusTextLabel READ statusTextLabel NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook explanationLabel READ explanationLabel NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook retryButton READ retryButton NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook sameSeatLabel READ sameSeatLabel NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook sameSeatButton READ sameSeatButton NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook settingsButton READ settingsButton NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook seatSelectionButton READ seatSelectionButton NOTIFY changed)
  Q_PROPERTY(bool summaryShown READ summaryShown NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook summaryLabel READ summaryLabel NOTIFY changed)
  /// Frames in the summary row, from the side where lines begin.
  Q_PROPERTY(QRectF summaryTextFrame READ summaryTextFrame NOTIFY changed)
  /// Where one line is too short for the user's size of text.
  Q_PROPERTY(bool summaryWraps READ summaryWraps NOTIFY changed)
  Q_PROPERTY(bool dotShown READ dotShown NOTIFY changed)
  Q_PROPERTY(QColor dotColour READ dotColour NOTIFY changed)
  Q_PROPERTY(QRectF dotFrame READ dotFrame NOTIFY changed)
  Q_PROPERTY(QString spokenDot READ spokenDot NOTIFY changed)
  /// The dot in a word, to stand beside it.
  Q_PROPERTY(QString dotWord READ dotWord NOTIFY changed)
  /// The summary as it is read out: without bars.
  Q_PROPERTY(QString spokenSummary READ spokenSummary NOTIFY changed)
  Q_PROPERTY(bool spinnerShown READ spinnerShown NOTIFY changed)
  Q_PROPERTY(QRectF spinnerFrame READ spinnerFrame NOTIFY changed)
  Q_PROPERTY(halvora::AlertLook alert READ alert NOTIFY changed)
  /// What the item would like to have, which only its owner knows.
  Q_PROPERTY(QSizeF preferredSize READ preferredSize NOTIFY changed)
  Q_PROPERTY(bool isRightToLeft READ isRightToLeft NOTIFY changed)
  Q_PROPERTY(halvora::SeatColours colours READ colours NOTIFY changed)
  /// The width to lay the content out in: the view's, or as long as it has none, the screen's.
  Q_PROPERTY(qreal layoutWidth READ layoutWidth NOTIFY layoutWidthChanged)
  Q_PROPERTY(halvora::SeatWizard* wizard READ wizard CONSTANT)

 public:
  explicit StatusPanel(QObject* parent = nullptr);
  ~StatusPanel() override;

  LabelLook onboardingLabel() const;
  ButtonLook joinButton() const;
  LabelLook statusTextLabel() const { return {views().statusTextLabel, reading_}; }
  LabelLook explanationLabel() const { return {views().explanationLabel, reading_}; }
  ButtonLook retryButton() const { return {views().retryButton, reading_}; }
  LabelLook sameSeatLabel() const { return {views().sameSeatLabel, reading_}; }
  ButtonLook sameSeatButton() const { return {views().sameSeatButton, reading_}; }
  ButtonLook settingsButton() const { return {views().settingsButton, reading_}; }
  ButtonLook seatSelectionButton() const { return {views().seatSelectionButton, reading_}; }
  bool summaryShown() const { return controller_ != nullptr && !row().hidden; }
  LabelLook summaryLabel() const { return {row().seatSelectionSummaryLabel, reading_}; }
  QRectF summaryTextFrame() const;
  bool summaryWraps() const;
  bool dotShown() const { return !row().seatLUTStatusDot.hidden; }
  QColor dotColour() const { return colourWithAlpha(row().seatLUTStatusDot.colour); }
  QRectF dotFrame() const { return rectFrom(row().seatLUTStatusDot.frame); }
  QString spokenDot() const { return textFrom(row().seatLUTStatusDot.spoken); }
  QString dotWord() const;
  QString spokenSummary() const;
  bool spinnerShown() const { return row().seatSelectionLoadingIndicator.isAnimating; }
  QRectF spinnerFrame() const { return rectFrom(row().seatSelectionLoadingIndicator.frame); }
  AlertLook alert() const;
  QSizeF preferredSize() const;
  bool isRightToLeft() const { return reading_.isRightToLeft; }
  SeatColours colours() const { return SeatColours(reading_.palette); }
  bool wantsHighContrast() const { return wishes().highContrast; }
  bool wantsReducedMotion() const { return wishes().reducedMotion; }
  qreal layoutWidth() const { return viewWidth_ > 0 ? viewWidth_ : measuredWidth_; }
  SeatWizard* wizard() { return &wizard_; }
  /// Null before the item is complete, and without a host.
  HalvoraStatusViewController* controller() const { return controller_; }

  void classBegin() override {}
  void componentComplete() override;

  Q_INVOKABLE void initBluetoothPermission();
  Q_INVOKABLE void openAppSettings();
  Q_INVOKABLE void retry();
  Q_INVOKABLE void keepSeat();
  Q_INVOKABLE void openSeatSelector();
  Q_INVOKABLE void dismissAlert();
  Q_INVOKABLE void setSeat(const QString& section, const QString& row, const QString& seat);
  Q_INVOKABLE bool openLink(const QString& link);

 signals:
  void fieldsChanged();
  void textScaleChanged();
  void highContrastChanged();
  void wishesChanged();
  void viewWidthChanged();
  void contentHeightChanged();
  void layoutWidthChanged();
  void changed();
  /// The dot's pulse begins, anew if it is under way.
  void pulsed();
  /// To be said aloud, and not seen otherwise.
  void told(const QString& words);

 private:
  StatusPanelFields fields() const;
  HalvoraStatusView view() const { return HalvoraStatusView(*engine_, fields()); }
  StatusPanelFace face();
  void unload();
  void applyFields();
  void applyTextScale();
  void applyContrast();
  void followWishes(const SystemWishes* wishes);
  UserWishes wishes() const { return wishes_ ? wishes_->wishes() : UserWishes{}; }
  double measure(double width);
  void layOutSoon();
  void layOut();
  void refresh();
  void tellPulse();
  void tellShow(bool hasBegun);
  /// As they are before there is a panel, where there is none.
  const StatusPanelViews& views() const;
  const SeatSelectionSummaryRow& row() const { return views().seatSelectionSummaryRow; }
  double widthOfSummary(const LabelLook& look) const;
  double roomForSummary() const;
  Rect frameOfSummaryText(const StatusText& label) const;

  QColor statusTextColour_;
  QString statusTextFontName_;
  qreal statusTextFontSize_ = 0;
  Qt::Alignment statusTextAlignment_;
  QColor actionButtonColour_;
  QColor actionButtonTitleColour_;
  QString actionButtonTitleFontName_;
  qreal actionButtonTitleFontSize_ = 0;
  qreal actionButtonHeight_ = 0;
  int defaultVenueId_ = 0;
  bool offersSettingsWhenOff_ = false;
  bool explainsStates_ = false;
  bool asksOnAnotherDay_ = false;
  qreal textScale_ = 1;
  bool highContrast_ = false;
  QPointer<const SystemWishes> wishes_;

  qreal viewWidth_ = 0;
  qreal contentHeight_ = 0;
  qreal measuredWidth_ = 0;
  bool isMeasuring_ = false;
  bool isLayoutDue_ = false;

  Reading reading_;
  /// When the pulse began that QML was told of last.
  std::optional<Duration> pulse_;
  SeatWizard wizard_;
  std::optional<EmbeddedEngine> engine_;
  std::unique_ptr<HalvoraStatusView::Coordinator> coordinator_;
  /// The coordinator's.
  HalvoraStatusViewController* controller_ = nullptr;
};

}  // namespace halvora
