// SPDX-License-Identifier: Apache-2.0
// What QML sees of the seat selector that the status panel presents: its views, its picker's rows
// and its actions. One lives as long as the panel's face; which wizard is behind it changes. It
// keeps a dismissed one until its sheet has left the screen. Any of its signals may destroy it.
// Owned by StatusPanel; main thread.
#pragma once

#include <QColor>
#include <QImage>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <string>

#include <qqmlregistration.h>

#include "faces/qt/impl/picker_rows.h"
#include "faces/qt/impl/seat_looks.h"
#include "halvora/wizard.h"

namespace halvora {

/// Where the views go in a sheet of some size.
class SeatWizardLayout {
  Q_GADGET
  QML_VALUE_TYPE(seatWizardLayout)
  Q_PROPERTY(qreal sideMargin READ sideMargin)
  Q_PROPERTY(qreal topMargin READ topMargin)
  Q_PROPERTY(qreal spacing READ spacing)
  Q_PROPERTY(qreal pickerHeight READ pickerHeight)
  Q_PROPERTY(qreal backWidth READ backWidth)
  Q_PROPERTY(qreal nextWidth READ nextWidth)

 public:
  SeatWizardLayout() = default;
  explicit SeatWizardLayout(const SeatSelectorLayout& layout) : layout_(layout) {}

  qreal sideMargin() const { return seat_selector::kSideMargin; }
  qreal topMargin() const { return seat_selector::kTopMargin; }
  qreal spacing() const { return seat_selector::kSpacing; }
  qreal pickerHeight() const { return layout_.pickerHeight; }
  qreal backWidth() const { return layout_.backWidth; }
  qreal nextWidth() const { return layout_.nextWidth; }

 private:
  SeatSelectorLayout layout_;
};

class SeatWizard : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("the status panel has one")
  Q_PROPERTY(bool isPresented READ isPresented NOTIFY presentedChanged)
  Q_PROPERTY(QColor background READ background NOTIFY changed)
  Q_PROPERTY(halvora::SeatColours colours READ colours NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook closeButton READ closeButton NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook titleLabel READ titleLabel NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook stepLabel READ stepLabel NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook selectionSummaryLabel READ selectionSummaryLabel NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook backButton READ backButton NOTIFY changed)
  Q_PROPERTY(halvora::ButtonLook nextButton READ nextButton NOTIFY changed)
  Q_PROPERTY(halvora::AlertLook alert READ alert NOTIFY changed)
  /// "Step 2 of 3", and which is that: they move with each step.
  Q_PROPERTY(QString stepText READ stepText NOTIFY changed)
  Q_PROPERTY(int step READ step NOTIFY changed)
  /// Why what was asked for last was not done; empty for nothing.
  Q_PROPERTY(QString message READ message NOTIFY changed)
  /// The picker: the style of its titles, the row in its middle, the line that filters it.
  Q_PROPERTY(bool pickerShown READ pickerShown NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook pickerTitle READ pickerTitle NOTIFY changed)
  Q_PROPERTY(int pickerIndex READ pickerIndex NOTIFY changed)
  Q_PROPERTY(QString spokenRow READ spokenRow NOTIFY changed)
  Q_PROPERTY(bool filterShown READ filterShown NOTIFY changed)
  Q_PROPERTY(halvora::LabelLook filterLabel READ filterLabel NOTIFY changed)
  /// As it is in force, which is empty again after each step.
  Q_PROPERTY(QString filterText READ filterText NOTIFY changed)
  Q_PROPERTY(QString filterHint READ filterHint NOTIFY changed)
  Q_PROPERTY(QString filterClear READ filterClear NOTIFY changed)
  Q_PROPERTY(QString filterMatches READ filterMatches NOTIFY changed)
  /// The plan: its stage, its picture, the dot in it.
  Q_PROPERTY(halvora::LabelLook stageLabel READ stageLabel NOTIFY changed)
  Q_PROPERTY(qreal stageHeight READ stageHeight NOTIFY changed)
  Q_PROPERTY(qreal dragAreaTop READ dragAreaTop NOTIFY changed)
  Q_PROPERTY(bool dotShown READ dotShown NOTIFY changed)
  Q_PROPERTY(QPointF dotCentre READ dotCentre NOTIFY changed)
  Q_PROPERTY(qreal dotWidth READ dotWidth NOTIFY changed)
  Q_PROPERTY(qreal dotCornerRadius READ dotCornerRadius NOTIFY changed)
  Q_PROPERTY(QColor dotColour READ dotColour NOTIFY changed)
  Q_PROPERTY(qreal dotBorderWidth READ dotBorderWidth NOTIFY changed)
  Q_PROPERTY(QColor dotBorderColour READ dotBorderColour NOTIFY changed)
  Q_PROPERTY(QString spokenPlan READ spokenPlan NOTIFY changed)
  Q_PROPERTY(QString spokenPlace READ spokenPlace NOTIFY changed)
  /// Of the picture, in its own pixels; nothing for none.
  Q_PROPERTY(QSizeF planPictureSize READ planPictureSize NOTIFY planPictureChanged)
  /// How the four ways across the plan are called: left, right, nearer to the stage, farther off.
  Q_PROPERTY(QStringList planWays READ planWays NOTIFY changed)
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
  QColor background() const;
  SeatColours colours() const { return SeatColours(reading_.palette); }
  ButtonLook closeButton() const { return {views().closeButton, reading_}; }
  LabelLook titleLabel() const { return {views().titleLabel, reading_}; }
  LabelLook stepLabel() const { return {views().stepLabel, reading_}; }
  LabelLook selectionSummaryLabel() const { return {views().selectionSummaryLabel, reading_}; }
  ButtonLook backButton() const { return {views().backButton, reading_}; }
  ButtonLook nextButton() const { return {views().nextButton, reading_}; }
  AlertLook alert() const;
  QString stepText() const;
  int step() const { return views().step; }
  QString message() const { return textFrom(views().message); }
  bool pickerShown() const { return !picker().hidden; }
  LabelLook pickerTitle() const { return {picker().title, reading_}; }
  int pickerIndex() const { return rows_.indexOf(picker().selectedRow); }
  QString spokenRow() const;
  bool filterShown() const;
  LabelLook filterLabel() const { return {picker().filter, reading_}; }
  QString filterText() const { return rows_.filter(); }
  QString filterHint() const;
  QString filterClear() const;
  QString filterMatches() const;
  LabelLook stageLabel() const { return {views().standingStageLabel, reading_}; }
  qreal stageHeight() const { return views().standingStageHeightConstraint; }
  qreal dragAreaTop() const { return stageHeight() + views().standingDragAreaTopConstraint; }
  bool dotShown() const { return !dot().hidden; }
  QPointF dotCentre() const { return {dot().center.x, dot().center.y}; }
  qreal dotWidth() const { return dot().width; }
  qreal dotCornerRadius() const { return dot().cornerRadius; }
  QColor dotColour() const;
  qreal dotBorderWidth() const { return dot().border.width; }
  QColor dotBorderColour() const;
  QString spokenPlan() const { return textFrom(views().spokenPlan); }
  QString spokenPlace() const { return textFrom(views().spokenPlace); }
  QSizeF planPictureSize() const { return planPicture_.size(); }
  QStringList planWays() const;
  /// Null for none.
  QImage planPicture() const { return planPicture_; }
  PickerRows* rows() { return &rows_; }
  const Selector& selector() const { return selector_; }

  Q_INVOKABLE halvora::SeatWizardLayout layoutIn(qreal width, qreal height) const;

  /// A row of `rows` and its place among them: "Row 8, 8 of 20".
  Q_INVOKABLE QString spokenRowAt(int index) const;

  Q_INVOKABLE void close();
  /// Asks first where a choice would be lost.
  Q_INVOKABLE void leave();
  Q_INVOKABLE void back();
  /// Says what is missing where nothing is chosen.
  Q_INVOKABLE void next();
  /// The filter line was entered: what it means surely is chosen, and the next step shown; what it
  /// means most likely is chosen. A line that no row contains may name a whole seat.
  Q_INVOKABLE void enterFilter();
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
  /// Nothing is shown of those that stand in while there is no wizard.
  const SeatSelectorViews& views() const;
  const PickerView& picker() const { return views().pickerView; }
  const StandingDotView& dot() const { return views().standingDotView; }
  /// Empty while there is no wizard.
  std::string text(const char* key, const char* fallback) const;
  /// The placeholder is not one of what can be chosen.
  int rowsToChooseFrom() const { return rows_.rowCount() - 1; }
  void takePlanPicture();
  void setPresented(bool presented);

  Selector selector_;
  bool isPresented_ = false;
  Reading reading_;
  std::uint64_t reloads_ = 0;
  PickerRows rows_;
  std::shared_ptr<const Image> plan_;
  QImage planPicture_;
  Size planSize_;
  bool isLayoutDue_ = false;
};

}  // namespace halvora
