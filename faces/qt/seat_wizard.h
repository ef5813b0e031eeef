// SPDX-License-Identifier: Apache-2.0
// What QML sees of the seat selector that the status panel presents: its look, its picker's rows
// and its actions. One lives as long as the panel's face; which wizard is behind it changes. It
// keeps a dismissed one until its sheet has left the screen. Any of its signals may destroy it.
// Owned by StatusPanel; main thread.
#pragma once

#include <QImage>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QSizeF>
#include <QString>
#include <cstdint>
#include <memory>

#include <qqmlregistration.h>

#include "faces/qt/picker_rows.h"
#include "faces/qt/seat_wizard_look.h"
#include "halvora/wizard.h"

namespace halvora {

class SeatWizard : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("the status panel has one")
  Q_PROPERTY(bool isPresented READ isPresented NOTIFY presentedChanged)
  Q_PROPERTY(halvora::SeatWizardLook look READ look NOTIFY changed)
  Q_PROPERTY(halvora::PickerRows* rows READ rows CONSTANT)

 public:
  using Selector = std::shared_ptr<HalvoraSeatSelectorViewController>;

  explicit SeatWizard(QObject* parent = nullptr) : QObject(parent), rows_(this) {}

  /// The one that is on screen now; null for none.
  void present(const Selector& selector);
  /// Lets go of the one that is there at once, whatever is on screen.
  void forget();
  void setReading(const Reading& reading);

  bool isPresented() const { return isPresented_; }
  /// From when it is presented until `leftScreen`.
  bool isLoaded() const { return selector_ != nullptr; }
  const SeatWizardLook& look() const { return look_; }
  /// Null for none.
  QImage planPicture() const { return planPicture_; }
  PickerRows* rows() { return &rows_; }
  const Selector& selector() const { return selector_; }

  Q_INVOKABLE halvora::SeatWizardLayout layoutIn(qreal width, qreal height) const;

  Q_INVOKABLE void close();
  Q_INVOKABLE void back();
  Q_INVOKABLE void next();
  Q_INVOKABLE void dismissAlert();
  /// The user has brought that row of `rows` to the picker's middle.
  Q_INVOKABLE void pick(int index);
  Q_INVOKABLE void filter(const QString& text);
  /// The plan has that size now, which takes effect in a turn of its own: sizes change in the
  /// middle of what is shown.
  Q_INVOKABLE void layOutPlan(qreal width, qreal height);
  Q_INVOKABLE void tapPlan(qreal x, qreal y);
  Q_INVOKABLE void dragPlan(qreal x, qreal y);
  /// To the next place in a direction, or some way across the plan.
  Q_INVOKABLE void stepOnPlan(int right, int down, bool far);
  Q_INVOKABLE void leftScreen();

 signals:
  void presentedChanged();
  void changed();
  void planPictureChanged();
  /// The picker is to show that row at once, without turning to it.
  void pickerMoved(int index);

 private:
  /// Hands the action to the wizard, if there is one, and shows what came of it.
  template <class Action>
  void act(Action action) {
    const Selector selector = selector_;
    if (!selector) return;
    const QPointer<SeatWizard> self(this);
    action(*selector);
    if (self) refresh();
  }
  void refresh();
  void takePlanPicture();
  void setPresented(bool presented);

  Selector selector_;
  bool isPresented_ = false;
  Reading reading_;
  std::uint64_t reloads_ = 0;
  PickerRows rows_;
  SeatWizardLook look_;
  std::shared_ptr<const Image> plan_;
  QImage planPicture_;
  Size planSize_;
  bool isLayoutDue_ = false;
};

}  // namespace halvora
