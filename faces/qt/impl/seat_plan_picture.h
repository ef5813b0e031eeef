// SPDX-License-Identifier: Apache-2.0
// The QML item that shows the plan of a wizard's venue: whole, in its own shape, in the middle of
// the item. It is scaled once for each size and not at each frame. Main thread; drawn as Qt draws.
#pragma once

#include <QImage>
#include <QPointer>
#include <QQuickItem>

#include <qqmlregistration.h>

#include "faces/qt/impl/seat_wizard.h"

namespace halvora {

class SeatPlanPicture : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(halvora::SeatWizard* wizard READ wizard WRITE setWizard NOTIFY wizardChanged)

 public:
  explicit SeatPlanPicture(QQuickItem* parent = nullptr);

  SeatWizard* wizard() const { return wizard_; }
  void setWizard(SeatWizard* wizard);

 signals:
  void wizardChanged();

 protected:
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

 private:
  void takePicture();

  QPointer<SeatWizard> wizard_;
  QImage picture_;
};

}  // namespace halvora
