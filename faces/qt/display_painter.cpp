// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/display_painter.h"

#include <QByteArray>
#include <QFont>
#include <QFontMetricsF>
#include <QString>

namespace halvora {

namespace {

constexpr int kTextFlags = Qt::AlignCenter | Qt::TextWordWrap;

QFont fontOf(const DisplayItem& item) {
  QFont font;
  font.setPixelSize(static_cast<int>(item.fontSize));
  return font;
}

QString textOf(const DisplayItem& item) { return QString::fromStdString(item.text); }

// The kit's pixels in a form of Qt's own, as its reader of files makes them.
QImage pictureOf(const Image& image) {
  const auto width = static_cast<int>(image.width);
  return QImage(image.rgba.data(), width, static_cast<int>(image.height), qsizetype{4} * width,
                QImage::Format_RGBA8888)
      .convertToFormat(QImage::Format_ARGB32);
}

// The part of a picture that covers a frame of that shape without distortion.
QRectF coveringPart(const QImage& picture, const QRectF& frame) {
  QRectF part({}, frame.size().scaled(picture.size(), Qt::KeepAspectRatio));
  part.moveCenter(QRectF(picture.rect()).center());
  return part;
}

// Only the dimmer scales a picture, all channels alike: that is a veil of black on what there is.
QImage dimmed(QImage picture, const DisplayItem& item) {
  if (item.colour.red < 1) {
    picture.convertTo(QImage::Format_ARGB32_Premultiplied);
    QPainter veil(&picture);
    veil.setCompositionMode(QPainter::CompositionMode_SourceAtop);
    veil.fillRect(picture.rect(), QColor::fromRgbF(0, 0, 0, 1 - item.colour.red));
  }
  return picture;
}

void paintPicture(QPainter& painter, const DisplayItem& item, const QImage& picture) {
  if (picture.isNull()) return;
  const QRectF frame = rectOf(item.frame);
  painter.setRenderHint(QPainter::SmoothPixmapTransform);
  painter.drawImage(frame, dimmed(picture, item), coveringPart(picture, frame));
}

void paintItem(QPainter& painter, const DisplayItem& item, const QImage& picture) {
  switch (item.content) {
    case ViewContent::fill:
      painter.fillRect(rectOf(item.frame), colourOf(item.colour));
      break;
    case ViewContent::text:
      painter.setFont(fontOf(item));
      painter.setPen(colourOf(item.colour));
      painter.drawText(rectOf(item.frame), kTextFlags, textOf(item));
      break;
    case ViewContent::image:
      paintPicture(painter, item, picture);
      break;
    case ViewContent::video:
      break;
  }
}

// The part of its frame that an item can draw on.
QRectF boundsOf(const DisplayItem& item, const QImage& picture) {
  const QRectF frame = rectOf(item.frame);
  if (item.content == ViewContent::image) return picture.isNull() ? QRectF() : frame;
  const QRectF text = QFontMetricsF(fontOf(item)).boundingRect(frame, kTextFlags, textOf(item));
  return QRectF(text.toAlignedRect().adjusted(-1, -1, 1, 1)).intersected(frame);
}

}  // namespace

QRectF rectOf(const Rect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

QColor colourOf(const Colour& colour) {
  return QColor::fromRgbF(colour.red, colour.green, colour.blue);
}

QImage pictureOf(const DisplayItem& item, const Pictures& pictures) {
  if (item.content != ViewContent::image) return {};
  try {
    if (const auto image = pictures.read(item.text)) return pictureOf(*image);
    const auto encoded = pictures.bytes(item.text);
    return encoded ? QImage::fromData(QByteArray::fromStdString(*encoded)) : QImage();
  } catch (...) {
    // Memory is short, or a host's own bundle, files or decoder throw.
    return {};
  }
}

void paintDisplayList(QPainter& painter, const DisplayList& list, const Pictures& pictures) {
  painter.save();
  const qreal opacity = painter.opacity();
  for (const DisplayItem& item : list) {
    painter.setOpacity(opacity * item.opacity);
    paintItem(painter, item, pictureOf(item, pictures));
  }
  painter.restore();
}

Raster rasterOf(const DisplayItem& item, const QImage& picture, qreal pixelsPerPoint) {
  const QRectF bounds = boundsOf(item, picture);
  const QSize pixels = (bounds.size() * pixelsPerPoint).toSize();
  if (pixels.isEmpty()) return {};
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.setDevicePixelRatio(pixelsPerPoint);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.translate(-bounds.topLeft());
  paintItem(painter, item, picture);
  return {image, bounds};
}

Raster rasterOfClip(const DisplayItem& item, const QImage& picture) {
  if (picture.isNull()) return {};
  const QRectF frame = rectOf(item.frame);
  QRectF shown({}, QSizeF(picture.size()).scaled(frame.size(), Qt::KeepAspectRatio));
  shown.moveCenter(frame.center());
  return {dimmed(picture, item), shown};
}

}  // namespace halvora
