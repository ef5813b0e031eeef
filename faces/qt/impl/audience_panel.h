// SPDX-License-Identifier: Apache-2.0
// What stands behind the QML type HalvoraAudienceView: the audience's choice on the phone that the
// QML engine's host has, and what is to be seen of it, with one signal for all. With another host
// it is empty from then on. Any of its signals may destroy it. Owned by the item; main thread.
#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QString>
#include <memory>

#include <qqmlregistration.h>

#include "faces/qt/impl/seat_looks.h"
#include "faces/qt/system_wishes.h"
#include "halvora/audience.h"

namespace halvora {

class AudiencePanel : public QObject, public QQmlParserStatus {
  Q_OBJECT
  Q_INTERFACES(QQmlParserStatus)
  QML_ELEMENT
  // What the host decides.
  Q_PROPERTY(bool asksBeforeJoining MEMBER asksBeforeJoining_ NOTIFY fieldsChanged)
  Q_PROPERTY(bool reducesFlashing MEMBER reducesFlashing_ NOTIFY fieldsChanged)
  Q_PROPERTY(QColor textColour MEMBER textColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(QColor actionButtonColour MEMBER actionButtonColour_ NOTIFY fieldsChanged)
  Q_PROPERTY(QColor actionButtonTitleColour MEMBER actionButtonTitleColour_ NOTIFY fieldsChanged)
  /// All texts are so many times their size; at first what the system asks for.
  Q_PROPERTY(qreal textScale MEMBER textScale_ NOTIFY textScaleChanged)
  /// One ink on one ground takes the place of the host's colours.
  Q_PROPERTY(bool highContrast MEMBER highContrast_ NOTIFY highContrastChanged)
  /// What the user has asked the system for, as far as that is known.
  Q_PROPERTY(bool wantsHighContrast READ wantsHighContrast NOTIFY wishesChanged)

  // What they decide.
  Q_PROPERTY(bool gentleLight READ gentleLight WRITE setGentleLight NOTIFY changed)
  Q_PROPERTY(Stage stage READ stage NOTIFY changed)

  // What is to be seen.
  /// The question stands over everything.
  Q_PROPERTY(bool asks READ asks NOTIFY changed)
  Q_PROPERTY(bool isInShow READ isInShow NOTIFY changed)
  Q_PROPERTY(bool batteryIsLow READ batteryIsLow NOTIFY changed)
  Q_PROPERTY(bool isRightToLeft READ isRightToLeft NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook title READ title NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook message READ message NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook batteryLabel READ batteryLabel NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook gentleLabel READ gentleLabel NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook gentleNote READ gentleNote NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook joinButton READ joinButton NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook stayOutButton READ stayOutButton NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook leaveButton READ leaveButton NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook comeBackButton READ comeBackButton NOTIFY changed)

 public:
  /// As the core's.
  enum Stage { Asked, Joined, Left, Out };
  Q_ENUM(Stage)

  explicit AudiencePanel(QObject* parent = nullptr);
  ~AudiencePanel() override;

  void classBegin() override {}
  void componentComplete() override;

  Q_INVOKABLE void join();
  Q_INVOKABLE void leave();
  Q_INVOKABLE void stayOut();

  bool wantsHighContrast() const { return wishes().highContrast; }
  bool gentleLight() const { return choice_ && choice_->isGentle(); }
  void setGentleLight(bool isGentle);
  Stage stage() const;
  bool asks() const { return choice_ && (stage() == Asked || stage() == Left); }
  bool isInShow() const { return choice_ && choice_->isInShow(); }
  bool batteryIsLow() const { return choice_ && choice_->isBatteryLow(); }
  bool isRightToLeft() const { return reading_.isRightToLeft; }
  LabelLook title() const { return look(&AudienceViews::title); }
  LabelLook message() const { return look(&AudienceViews::message); }
  LabelLook batteryLabel() const { return look(&AudienceViews::batteryLabel); }
  LabelLook gentleLabel() const { return look(&AudienceViews::gentleLabel); }
  LabelLook gentleNote() const { return look(&AudienceViews::gentleNote); }
  ButtonLook joinButton() const { return look(&AudienceViews::joinButton); }
  ButtonLook stayOutButton() const { return look(&AudienceViews::stayOutButton); }
  ButtonLook leaveButton() const { return look(&AudienceViews::leaveButton); }
  ButtonLook comeBackButton() const { return look(&AudienceViews::comeBackButton); }

 signals:
  void fieldsChanged();
  void textScaleChanged();
  void highContrastChanged();
  void wishesChanged();
  void changed();

 private:
  LabelLook look(StatusText AudienceViews::*label) const;
  ButtonLook look(Button AudienceViews::*button) const;
  AudienceFields fields() const;
  void applyFields();
  void applyTextScale();
  void applyContrast();
  void followWishes(const SystemWishes* wishes);
  UserWishes wishes() const { return wishes_ ? wishes_->wishes() : UserWishes{}; }
  void unload();

  bool asksBeforeJoining_ = true;
  bool reducesFlashing_ = false;
  QColor textColour_;
  QColor actionButtonColour_;
  QColor actionButtonTitleColour_;
  qreal textScale_ = 1;
  bool highContrast_ = false;
  QPointer<const SystemWishes> wishes_;
  Reading reading_;
  /// Null without a host.
  std::unique_ptr<HalvoraAudienceController> choice_;
};

}  // namespace halvora
