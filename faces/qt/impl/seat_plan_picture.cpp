// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/seat_plan_picture.h"

#include <QQuickWindow>
#include <QSGImageNode>

namespace halvora {

SeatPlanPicture::SeatPlanPicture(QQuickItem* parent) : QQuickItem(parent) {
  setFlag(ItemHasContents);
}

void SeatPlanPicture::setWizard(SeatWizard* wizard) {
  if (wizard == wizard_) return;
  if (wizard_ != nullptr) disconnect(wizard_, nullptr, this, nullptr);
  wizard_ = wizard;
  if (wizard_ != nullptr) {
    connect(wizard_, &SeatWizard::planPictureChanged, this, &SeatPlanPicture::takePicture);
  }
  emit wizardChanged();
  takePicture();
}

void SeatPlanPicture::takePicture() {
  picture_ = wizard_ != nullptr ? wizard_->planPicture() : QImage();
  update();
}

void SeatPlanPicture::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  QQuickItem::geometryChange(newGeometry, oldGeometry);
  if (newGeometry.size() != oldGeometry.size()) update();
}

QSGNode* SeatPlanPicture::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/) {
  const QRectF area(0, 0, width(), height());
  if (picture_.isNull() || area.isEmpty()) {
    delete node;
    return nullptr;
  }
  QRectF shown({}, QSizeF(picture_.size()).scaled(area.size(), Qt::KeepAspectRatio));
  shown.moveCenter(area.center());
  const QSize pixels = (shown.size() * window()->effectiveDevicePixelRatio()).toSize();
  if (pixels.isEmpty()) {
    delete node;
    return nullptr;
  }
  auto* image = static_cast<QSGImageNode*>(node);
  if (image == nullptr) {
    image = window()->createImageNode();
    image->setOwnsTexture(true);
    image->setFiltering(QSGTexture::Linear);
  }
  image->setTexture(window()->createTextureFromImage(
      picture_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)));
  image->setRect(shown);
  return image;
}

}  // namespace halvora
