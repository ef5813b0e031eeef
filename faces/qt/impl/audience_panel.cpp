// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/audience_panel.h"

#include <QQmlEngine>
#include <utility>

#include "faces/qt/halvora_host.h"
#include "faces/qt/impl/status_fonts.h"

namespace halvora {

AudiencePanel::AudiencePanel(QObject* parent) : QObject(parent), textScale_(systemTextScale()) {
  const AudienceFields usual;
  textColour_ = colourWithAlpha(usual.textColour);
  actionButtonColour_ = colourWithAlpha(usual.actionButtonColour);
  actionButtonTitleColour_ = colourWithAlpha(usual.actionButtonTitleColour);
  connect(this, &AudiencePanel::fieldsChanged, this, &AudiencePanel::applyFields);
  connect(this, &AudiencePanel::textScaleChanged, this, &AudiencePanel::applyTextScale);
  connect(this, &AudiencePanel::highContrastChanged, this, &AudiencePanel::applyContrast);
  connect(this, &AudiencePanel::wishesChanged, this, &AudiencePanel::applyContrast);
}

AudiencePanel::~AudiencePanel() = default;

AudienceFields AudiencePanel::fields() const {
  return {.asksBeforeJoining = asksBeforeJoining_,
          .reducesFlashing = reducesFlashing_,
          .textColour = colourFrom(textColour_),
          .actionButtonColour = colourFrom(actionButtonColour_),
          .actionButtonTitleColour = colourFrom(actionButtonTitleColour_)};
}

void AudiencePanel::componentComplete() {
  QQmlEngine* engine = qmlEngine(this);
  if (engine == nullptr || choice_) return;
  const HalvoraHost& host = HalvoraHost::of(*engine);
  if (!host.hasController()) return;
  connect(&host, &QObject::destroyed, this, &AudiencePanel::unload);
  choice_ = std::make_unique<HalvoraAudienceController>(host.controller(), host.platform(),
                                                        fields(), [this] { emit changed(); });
  reading_.isRightToLeft = choice_->isRightToLeft();
  followWishes(host.wishes());
  applyTextScale();
}

void AudiencePanel::unload() {
  choice_.reset();
  if (wishes_) wishes_->disconnect(this);
  emit changed();
}

void AudiencePanel::applyFields() {
  if (choice_) choice_->setFields(fields());
}

void AudiencePanel::applyTextScale() {
  reading_.textScale = boundedTextScale(textScale_);
  emit changed();
}

// A scheme alone changes nothing.
void AudiencePanel::applyContrast() {
  const SeatPalette palette = paletteFor(highContrast_, wishes().scheme);
  if (std::exchange(reading_.palette, palette) != palette) emit changed();
}

void AudiencePanel::followWishes(const SystemWishes* wishes) {
  if (wishes == nullptr) return;
  wishes_ = wishes;
  connect(wishes, &SystemWishes::changed, this, &AudiencePanel::wishesChanged);
  emit wishesChanged();
}

void AudiencePanel::join() {
  if (choice_) choice_->join();
}

void AudiencePanel::leave() {
  if (choice_) choice_->leave();
}

void AudiencePanel::stayOut() {
  if (choice_) choice_->stayOut();
}

void AudiencePanel::setGentleLight(bool isGentle) {
  if (choice_) choice_->setGentle(isGentle);
}

AudiencePanel::Stage AudiencePanel::stage() const {
  if (!choice_) return Joined;
  switch (choice_->stage()) {
    case AudienceStage::asked:
      return Asked;
    case AudienceStage::joined:
      return Joined;
    case AudienceStage::left:
      return Left;
    case AudienceStage::out:
      return Out;
  }
  return Joined;
}

LabelLook AudiencePanel::look(StatusText AudienceViews::*label) const {
  return choice_ ? LabelLook(choice_->views().*label, reading_) : LabelLook();
}

ButtonLook AudiencePanel::look(Button AudienceViews::*button) const {
  return choice_ ? ButtonLook(choice_->views().*button, reading_) : ButtonLook();
}

}  // namespace halvora
