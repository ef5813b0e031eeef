// SPDX-License-Identifier: Apache-2.0
// Draws display lists with Qt's painter: whole, for pictures that need no window, and single labels
// and pictures for the scene graph. Stateless; any thread with an application object.
#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRectF>

#include "halvora/light.h"
#include "halvora/pictures.h"

namespace halvora {

QRectF rectOf(const Rect& rect);
/// Opaque.
QColor colourOf(const Colour& colour);

/// What an image item names, as the engine reads it, or decoded by Qt where the phone has no
/// decoder for it; null for what cannot be read, and for any other item.
QImage pictureOf(const DisplayItem& item, const Pictures& pictures);

/// Draws in the container's coordinates. A picture that cannot be read is left out, and so are
/// clips.
void paintDisplayList(QPainter& painter, const DisplayList& list, const Pictures& pictures);

/// A label or a picture as it looks when it is not translucent; the image is null where there is
/// nothing to be seen.
struct Raster {
  QImage image;
  QRectF frame;
};
Raster rasterOf(const DisplayItem& item, const QImage& picture, qreal pixelsPerPoint);
/// The same for a clip whose player shows that picture: whole, in the middle of its view.
Raster rasterOfClip(const DisplayItem& item, const QImage& picture);

}  // namespace halvora
