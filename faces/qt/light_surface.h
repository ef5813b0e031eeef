// SPDX-License-Identifier: Apache-2.0
// The QML item that shows a show: it draws the light that a host hands it, over its whole
// size. It asks for a frame at once when the light changes, and in Qt's rhythm while an animation
// runs; what a frame shows follows from its time alone. Main thread, but for the drawing itself,
// which Qt does on its render thread while the main thread waits: there nothing but what the main
// thread has made ready is looked at, as a light with limits may set timers, write to the phone's
// devices and read a picture when it is asked what it shows.
#pragma once

#include <QImage>
#include <QMetaObject>
#include <QPointer>
#include <QQuickItem>
#include <array>
#include <memory>
#include <optional>

#include <qqmlregistration.h>

#include "faces/qt/qt_clip_picture.h"
#include "halvora/light.h"
#include "halvora/pictures.h"

namespace halvora {

class LightSurface : public QQuickItem, private LightObserver {
  Q_OBJECT
  // What a host names is the view that is built on it.
  QML_ANONYMOUS

 public:
  explicit LightSurface(QQuickItem* parent = nullptr);
  ~LightSurface() override;

  /// Shows that light from now on and takes the place of its observer; none, or one that has ended,
  /// shows nothing. Its pictures are read with `pictures`; without those none are drawn.
  void setLight(const std::optional<Light>& light,
                const std::optional<Pictures>& pictures = std::nullopt);
  /// What the light's two players of clips show; null for a player that has no picture.
  void setClips(QtClipPicture* a, QtClipPicture* b);
  /// Asks for frames by itself, as something may move.
  bool isMoving() const;

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
  void updatePolish() override;
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
  void lightEnds() override;

 private:
  struct Clip {
    QPointer<QtClipPicture> source;
    QMetaObject::Connection changes;
    /// Fetched on the main thread, as players are not for the render thread.
    QImage picture;
  };

  void lightChanged() override { changed(); }

  class Rhythm;

  void changed();
  void look();
  void frameBegins();
  void frameIsDue();
  QImage clipOf(const DisplayItem& item) const;
  QImage stillOf(const DisplayItem& item);
  QSGNode* makeNode(const DisplayItem& item);

  std::optional<Light> light_;
  std::optional<Pictures> pictures_;
  /// The one that was drawn last: a dimmer that moves makes its node anew in every frame.
  std::string pictureName_;
  QImage picture_;
  /// What the next frame shows.
  DisplayList list_;
  /// Something may be seen that is not in it yet.
  bool isListOld_ = false;
  std::array<Clip, 2> clips_;
  QMetaObject::Connection beginnings_;
  std::unique_ptr<Rhythm> rhythm_;
  int ticksSinceFrame_ = 0;
};

}  // namespace halvora
