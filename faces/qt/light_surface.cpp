// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/light_surface.h"

#include <QAbstractAnimation>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGNode>
#include <QSGRectangleNode>
#include <utility>
#include <vector>

#include "faces/qt/display_painter.h"

namespace halvora {

namespace {

// One when the rhythm begins, and one of a frame that is late.
constexpr int kMostTicksWithoutFrame = 2;

// Has one child an item of the list that it drew last. It transforms nothing; but below a node
// without any such role the software renderer draws children that come later in the wrong place.
class ListNode final : public QSGTransformNode {
 public:
  DisplayList drawn;
  /// Which pictures the clips among them showed.
  std::vector<qint64> pictures;
};

// Whether the node of one item can show the other: a rectangle takes every colour, a label or a
// picture is a texture that only its opacity leaves as it is.
bool isSameNode(DisplayItem drawn, const DisplayItem& item) {
  if (drawn.content == ViewContent::fill) return item.content == ViewContent::fill;
  drawn.opacity = item.opacity;
  return drawn == item;
}

void show(const DisplayItem& item, QSGNode& node) {
  if (item.content != ViewContent::fill) {
    static_cast<QSGOpacityNode&>(node).setOpacity(item.opacity);
    return;
  }
  QColor colour = colourOf(item.colour);
  colour.setAlphaF(static_cast<float>(item.opacity));
  auto& rectangle = static_cast<QSGRectangleNode&>(node);
  rectangle.setRect(rectOf(item.frame));
  rectangle.setColor(colour);
}

}  // namespace

// Ticks as often as Qt animates: with the screen where frames wait for it, else some 60 times a
// second. Asking for the next frame in each one would draw thousands where nothing waits.
class LightSurface::Rhythm final : public QAbstractAnimation {
 public:
  explicit Rhythm(LightSurface& surface) : surface_(surface) {}
  int duration() const override { return -1; }

 protected:
  void updateCurrentTime(int /*time*/) override { surface_.frameIsDue(); }

 private:
  LightSurface& surface_;
};

LightSurface::LightSurface(QQuickItem* parent)
    : QQuickItem(parent), rhythm_(std::make_unique<Rhythm>(*this)) {
  setFlag(ItemHasContents);
}

LightSurface::~LightSurface() {
  if (light_) light_->setObserver(nullptr);
}

void LightSurface::lightEnds() {
  light_.reset();
  pictures_.reset();
  changed();
}

void LightSurface::setLight(const std::optional<Light>& light,
                            const std::optional<Pictures>& pictures) {
  if (light_) light_->setObserver(nullptr);
  light_ = light;
  pictures_ = pictures;
  pictureName_.clear();
  picture_ = QImage();
  if (light_) light_->setObserver(this);
  changed();
}

// Looked at when the next frame is made ready, so that many changes cost one look.
void LightSurface::changed() {
  isListOld_ = true;
  polish();
  update();
}

void LightSurface::look() {
  isListOld_ = false;
  list_ = light_ ? light_->displayList({width(), height()}) : DisplayList();
}

void LightSurface::setClips(QtClipPicture* a, QtClipPicture* b) {
  const std::array sources{a, b};
  for (std::size_t at = 0; at < clips_.size(); ++at) {
    Clip& clip = clips_[at];
    disconnect(clip.changes);
    clip.source = sources[at];
    if (clip.source != nullptr) {
      clip.changes = connect(clip.source, &QtClipPicture::changed, this, &LightSurface::polish);
    }
  }
  polish();
}

bool LightSurface::isMoving() const { return rhythm_->state() != Rhythm::Stopped; }

void LightSurface::updatePolish() {
  for (Clip& clip : clips_) {
    const QImage picture = clip.source != nullptr ? clip.source->picture() : QImage();
    if (picture.cacheKey() != clip.picture.cacheKey()) update();
    clip.picture = picture;
  }
  if (isListOld_) look();
}

void LightSurface::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemSceneChange) {
    disconnect(beginnings_);
    if (data.window != nullptr) {
      beginnings_ =
          connect(data.window, &QQuickWindow::afterAnimating, this, &LightSurface::frameBegins);
    }
  }
  QQuickItem::itemChange(change, data);
}

void LightSurface::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  QQuickItem::geometryChange(newGeometry, oldGeometry);
  changed();
}

// The last that the main thread does before the frame is drawn. Where an animation begins, or the
// window is drawn again after it was hidden.
void LightSurface::frameBegins() {
  ticksSinceFrame_ = 0;
  const bool isAnimating = light_ && light_->isAnimating();
  if (isListOld_ || isAnimating || isMoving()) {
    look();
    update();
  }
  if (isAnimating && !isMoving()) rhythm_->start();
}

// One frame more than the animations last: the values they end on have no change of their own. A
// window that nobody sees draws none, and asks for none either.
void LightSurface::frameIsDue() {
  changed();
  const bool isAnimating = light_ && light_->isAnimating();
  if (++ticksSinceFrame_ > kMostTicksWithoutFrame || !isAnimating) rhythm_->stop();
}

QSGNode* LightSurface::updatePaintNode(QSGNode* node, UpdatePaintNodeData*) {
  auto* root = static_cast<ListNode*>(node);
  if (root == nullptr) root = new ListNode;
  const DisplayList& list = list_;
  std::vector<qint64> pictures;
  for (const DisplayItem& item : list) pictures.push_back(clipOf(item).cacheKey());

  QSGNode* child = root->firstChild();
  for (std::size_t at = 0; at < list.size(); ++at) {
    if (child == nullptr) {
      child = makeNode(list[at]);
      root->appendChildNode(child);
    } else if (!isSameNode(root->drawn[at], list[at]) || root->pictures[at] != pictures[at]) {
      QSGNode* fresh = makeNode(list[at]);
      root->insertChildNodeAfter(fresh, child);
      delete child;
      child = fresh;
    }
    show(list[at], *child);
    child = child->nextSibling();
  }
  while (child != nullptr) delete std::exchange(child, child->nextSibling());
  root->drawn = list;
  root->pictures = std::move(pictures);
  return root;
}

// Null for what is no clip.
QImage LightSurface::clipOf(const DisplayItem& item) const {
  if (item.content != ViewContent::video) return {};
  return clips_[item.text == kClipA ? 0 : 1].picture;
}

// Null for what is no picture. The main thread waits while nodes are made.
QImage LightSurface::stillOf(const DisplayItem& item) {
  if (item.content != ViewContent::image || !pictures_) return {};
  if (pictureName_ != item.text) {
    picture_ = pictureOf(item, *pictures_);
    pictureName_ = item.text;
  }
  return picture_;
}

QSGNode* LightSurface::makeNode(const DisplayItem& item) {
  if (item.content == ViewContent::fill) return window()->createRectangleNode();
  auto* node = new QSGOpacityNode;
  const Raster raster = item.content == ViewContent::video
                            ? rasterOfClip(item, clipOf(item))
                            : rasterOf(item, stillOf(item), window()->effectiveDevicePixelRatio());
  if (raster.image.isNull()) return node;
  QSGImageNode* image = window()->createImageNode();
  image->setTexture(window()->createTextureFromImage(raster.image));
  image->setOwnsTexture(true);
  image->setFiltering(QSGTexture::Linear);
  image->setRect(raster.frame);
  node->appendChildNode(image);
  return node;
}

}  // namespace halvora
