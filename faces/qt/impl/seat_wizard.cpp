// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/seat_wizard.h"

namespace halvora {

namespace {

/// A picker with fewer rows is seen as a whole, or nearly so.
constexpr std::size_t kLongList = 12;

using PlanPixels = std::shared_ptr<const Image>;

void dropPixels(void* pixels) { delete static_cast<PlanPixels*>(pixels); }

// The same pixels, not a copy: they live as long as either has them.
QImage pictureOf(const PlanPixels& plan) {
  if (!plan || plan->width == 0 || plan->height == 0) return {};
  const auto width = static_cast<int>(plan->width);
  return QImage(plan->rgba.data(), width, static_cast<int>(plan->height), width * 4,
                QImage::Format_RGBA8888, dropPixels, new PlanPixels(plan));
}

}  // namespace

// One that is dismissed is shown once more: an alert over it goes with it.
void SeatWizard::present(const Selector& selector) {
  if (selector && selector != selector_) {
    selector_ = selector;
    reloads_ = 0;
  }
  const QPointer<SeatWizard> self(this);
  refresh();
  // Unless whoever heard of it has brought another host.
  if (self) setPresented(selector && selector == selector_ && !selector->isDismissed());
}

void SeatWizard::forget() {
  selector_.reset();
  plan_.reset();
  planPicture_ = {};
  rows_.reload(nullptr);
  const QPointer<SeatWizard> self(this);
  emit planPictureChanged();
  if (self) emit changed();
  if (self) setPresented(false);
}

void SeatWizard::setPresented(bool presented) {
  if (presented == isPresented_) return;
  isPresented_ = presented;
  emit presentedChanged();
}

void SeatWizard::setReading(const Reading& reading) {
  reading_ = reading;
  refresh();
}

// These three follow from the size alone, so QML need not ask again when the wizard changes.
SeatWizardLayout SeatWizard::layoutIn(qreal width, qreal height) const {
  return SeatWizardLayout(layoutOf(SeatSelectorViews(), {width, height}));
}

const SeatSelectorViews& SeatWizard::views() const {
  static const SeatSelectorViews kNone = [] {
    SeatSelectorViews none;
    none.pickerView.hidden = true;
    return none;
  }();
  return selector_ ? selector_->views() : kNone;
}

QColor SeatWizard::background() const {
  return colours().high() ? colours().ground() : colourWithAlpha(views().background);
}

QColor SeatWizard::dotColour() const {
  return colours().high() ? colours().ink() : colourWithAlpha(dot().background);
}

QColor SeatWizard::dotBorderColour() const {
  return colours().high() ? colours().ground() : colourWithAlpha(dot().border.colour);
}

std::string SeatWizard::text(const char* key, const char* fallback) const {
  return selector_ ? selector_->localizedStringForKey(key, fallback) : std::string();
}

AlertLook SeatWizard::alert() const {
  return selector_ ? AlertLook(selector_->presentedAlert(), reading_) : AlertLook();
}

QString SeatWizard::stepText() const {
  if (!selector_) return {};
  return textFrom(formatted(text("hv_seat_picker_step_format", "Step %ld of %ld"),
                            {std::to_string(views().step), std::to_string(views().steps)}));
}

QStringList SeatWizard::planWays() const {
  return {textFrom(text("hv_seat_picker_plan_left", "To the left")),
          textFrom(text("hv_seat_picker_plan_right", "To the right")),
          textFrom(text("hv_seat_picker_plan_nearer", "Nearer to the stage")),
          textFrom(text("hv_seat_picker_plan_farther", "Farther from the stage"))};
}

QString SeatWizard::spokenRow() const {
  const int index = pickerIndex();
  return index < 1 ? rows_.titleOf(picker().selectedRow) : spokenRowAt(index);
}

QString SeatWizard::spokenRowAt(int index) const {
  const std::int64_t row = rows_.rowAt(index);
  const QString detail = rows_.detailOf(row);
  const QString title = detail.isEmpty() ? rows_.titleOf(row) : detail;
  if (index < 1) return title;
  return textFrom(
      formatted(text("hv_seat_picker_spoken_row_format", "%@, %ld of %ld"),
                {title.toStdString(), std::to_string(index), std::to_string(rowsToChooseFrom())}));
}

bool SeatWizard::filterShown() const {
  return selector_ && (selector_->numberOfPickerRows() > kLongList || !rows_.filter().isEmpty());
}

QString SeatWizard::filterHint() const {
  return textFrom(text("hv_seat_picker_filter", "Type to narrow the list"));
}

QString SeatWizard::filterClear() const {
  return textFrom(text("hv_seat_picker_filter_clear", "Clear"));
}

QString SeatWizard::filterMatches() const {
  if (rows_.filter().isEmpty()) return {};
  return textFrom(formatted(text("hv_seat_picker_filter_matches_format", "%ld found"),
                            {std::to_string(rowsToChooseFrom())}));
}

void SeatWizard::refresh() {
  const Selector selector = selector_;
  if (!selector) return;
  const SeatSelectorViews& views = selector->views();
  const bool isReloaded = views.pickerView.reloads != reloads_;
  if (isReloaded) {
    reloads_ = views.pickerView.reloads;
    rows_.reload(selector);
  }
  const QPointer<SeatWizard> self(this);
  takePlanPicture();
  if (self) emit changed();
  if (self && isReloaded) emit pickerMoved(pickerIndex());
  if (self && selector->isDismissed()) setPresented(false);
}

void SeatWizard::takePlanPicture() {
  const PlanPixels& plan = selector_->views().standingOverlayImage;
  if (plan == plan_) return;
  plan_ = plan;
  planPicture_ = pictureOf(plan);
  emit planPictureChanged();
}

void SeatWizard::close() {
  act([](auto& selector) { selector.cancelTapped(); });
}

void SeatWizard::back() {
  if (!backButton().shown() || !backButton().enabled()) return;
  act([](auto& selector) { selector.backTapped(); });
}

void SeatWizard::leave() {
  act([](auto& selector) { selector.leaveTapped(); });
}

void SeatWizard::next() {
  const bool isChosen = nextButton().enabled();
  act([isChosen](auto& selector) {
    isChosen ? selector.nextTapped() : selector.sayWhatIsMissing();
  });
}

void SeatWizard::enterFilter() {
  if (rows_.filter().isEmpty() || pickerIndex() > 0) return next();
  if (rows_.bestMatch() == 0) {
    const std::string line = rows_.filter().toStdString();
    return act([&line](auto& selector) { selector.findSeat(line); });
  }
  const bool isSure = rowsToChooseFrom() == 1 || rows_.bestRank() >= 3;
  const int best = rows_.indexOf(rows_.bestMatch());
  const QPointer<SeatWizard> self(this);
  pick(best);
  if (!self) return;
  if (isSure) return next();
  emit pickerMoved(pickerIndex());
}

void SeatWizard::dismissAlert() {
  act([](auto& selector) { selector.alertButtonTapped(); });
}

void SeatWizard::pick(int index) {
  const std::int64_t row = rows_.rowAt(index);
  if (row < 0 || index == pickerIndex() || !pickerShown()) return;
  act([row](auto& selector) { selector.pickerDidSelectRow(row); });
}

// Only the user chooses: where the chosen row is filtered away, nothing is chosen any more.
void SeatWizard::filter(const QString& text) {
  const QString wanted = text.trimmed();
  if (!selector_ || !pickerShown() || wanted == rows_.filter()) return;
  const std::int64_t row = rows_.rowAt(pickerIndex());
  rows_.setFilter(wanted);
  const bool isKept = row > 0 && rows_.indexOf(row) >= 0;
  if (row > 0 && !isKept && !wanted.isEmpty()) selector_->pickerDidSelectRow(0);
  const QPointer<SeatWizard> self(this);
  refresh();
  if (self) emit pickerMoved(pickerIndex());
}

void SeatWizard::layOutPlan(qreal width, qreal height) {
  planSize_ = {width, height};
  if (isLayoutDue_) return;
  isLayoutDue_ = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        isLayoutDue_ = false;
        act([this](auto& selector) { selector.viewDidLayoutSubviews(planSize_); });
      },
      Qt::QueuedConnection);
}

void SeatWizard::tapPlan(qreal x, qreal y) {
  act([x, y](auto& selector) { selector.handleStandingTap({x, y}); });
}

void SeatWizard::dragPlan(qreal x, qreal y) {
  act([x, y](auto& selector) { selector.handleStandingDrag({x, y}); });
}

void SeatWizard::stepOnPlan(int right, int down, bool far) {
  act([&](auto& selector) { selector.moveStandingDot({right, down}, far); });
}

// Later: the sheet says so within a handler of its own, which Qt does not let a host delete in.
void SeatWizard::leftScreen() {
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (!isPresented_) forget();
      },
      Qt::QueuedConnection);
}

}  // namespace halvora
