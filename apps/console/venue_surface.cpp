// SPDX-License-Identifier: Apache-2.0
#include "apps/console/venue_surface.h"

#include <QAbstractAnimation>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QStyleHints>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>

#include "seats/standing_plan.h"

namespace halvora {

namespace {

constexpr Duration kFlight = milliseconds(350);
/// Of a wheel's notch, which is 120 of its units.
constexpr double kNotch = 1.25;
constexpr double kKeyZoom = 1.5;
/// A press of a key moves over so much of what is seen.
constexpr double kKeyMove = 0.2;
/// A phone that is looked at is drawn this large, in points, and no closer than so many times.
constexpr double kCloseRadius = 22;
constexpr double kClosest = 24;
/// A seat is hit from so many points beside it.
constexpr double kNearby = 6;
/// A section that is drawn narrower, in points, goes without its name, and so do those beyond so
/// many.
constexpr double kLeastNamed = 36;
constexpr qsizetype kMostNamed = 200;

// Slow at both ends, like the light's own fades.
double eased(double share) { return share * share * (3 - 2 * share); }

}  // namespace

// Ticks as often as Qt animates: with the screen where frames wait for it, else some 60 times a
// second.
class VenueSurface::Rhythm final : public QAbstractAnimation {
 public:
  explicit Rhythm(VenueSurface& surface) : surface_(surface) {}
  int duration() const override { return -1; }

 protected:
  void updateCurrentTime(int /*time*/) override { surface_.frameIsDue(); }

 private:
  VenueSurface& surface_;
};

VenueSurface::VenueSurface(QQuickItem* parent)
    : QQuickItem(parent), rhythm_(std::make_unique<Rhythm>(*this)) {
  setFlag(ItemHasContents);
  setAcceptedMouseButtons(Qt::LeftButton);
  setActiveFocusOnTab(true);
}

VenueSurface::~VenueSurface() = default;

bool VenueSurface::isMoving() const { return rhythm_->state() != Rhythm::Stopped; }

void VenueSurface::setVenue(VenueShow* venue) {
  if (venue == venue_) return;
  if (venue_ != nullptr) disconnect(venue_, nullptr, this, nullptr);
  venue_ = venue;
  if (venue_ != nullptr) {
    connect(venue_, &VenueShow::stateChanged, this, &VenueSurface::crowdChanged);
    connect(venue_, &VenueShow::chosenChanged, this, &VenueSurface::chosenChanged);
    // Queued: one change comes with many others.
    connect(venue_, &VenueShow::lightsMayHaveChanged, this, &VenueSurface::lookSoon,
            Qt::QueuedConnection);
    connect(venue_, &QObject::destroyed, this, &VenueSurface::crowdChanged);
  }
  emit venueChanged();
  crowdChanged();
}

// A crowd is there, or gone, or another one.
void VenueSurface::crowdChanged() {
  flight_.reset();
  before_.reset();
  sight_ = {};
  cursor_ = -1;
  changed_.clear();
  layOut();
  look();
  emit sightChanged();
  emit cursorChanged();
}

void VenueSurface::chosenChanged() {
  const int chosen = venue_->chosen();
  if (chosen < 0) {
    if (before_) flyTo(*std::exchange(before_, std::nullopt));
  } else if (static_cast<std::size_t>(chosen) < discs_.size()) {
    setCursor(chosen);
    if (staysWhole_) return emit sightChanged();
    if (!before_) before_ = aim();
    const CrowdDisc& disc = discs_[static_cast<std::size_t>(chosen)];
    const double zoom = std::clamp(kCloseRadius / disc.radius, 1.0, kClosest);
    flyTo(sightOf(disc, zoom, std::max(width() - covered_, 0.0) / 2, height() / 2));
  }
  emit sightChanged();
}

void VenueSurface::layOut() {
  const auto seats = venue_ != nullptr ? venue_->crowdSeats() : std::span<const CrowdSeat>();
  discs_ = discsOf(seats, static_cast<int>(width()), static_cast<int>(height()));
  points_.clear();
  for (std::size_t at = 0; at < discs_.size(); ++at) {
    points_.push_back({0, static_cast<std::int64_t>(at), discs_[at].x, discs_[at].y});
  }
  layOutSections();
  isPictureOld_ = true;
  update();
}

// A crowd's seats come section by section.
void VenueSurface::layOutSections() {
  sections_.clear();
  const auto seats = venue_ != nullptr ? venue_->crowdSeats() : std::span<const CrowdSeat>();
  for (std::size_t at = 0; at < std::min(seats.size(), discs_.size()); ++at) {
    const CrowdDisc& disc = discs_[at];
    const QRectF place(disc.x - disc.radius, disc.y - disc.radius, 2 * disc.radius,
                       2 * disc.radius);
    if (at == 0 || seats[at].section != seats[at - 1].section) {
      const auto name = seats[at].section;
      sections_.push_back(
          {QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())), place});
    } else {
      sections_.back().place |= place;
    }
  }
  emit sightChanged();
}

QVariantList VenueSurface::sections() const {
  const QRectF window(0, 0, width(), height());
  QVariantList names;
  for (const SectionPlace& section : sections_) {
    const CrowdDisc first = seen({section.place.left(), section.place.top(), 0}, sight_);
    const CrowdDisc last = seen({section.place.right(), section.place.bottom(), 0}, sight_);
    const QRectF place(QPointF(first.x, first.y), QPointF(last.x, last.y));
    if (place.width() < kLeastNamed || !window.intersects(place)) continue;
    names.append(
        QVariantMap{{QStringLiteral("name"), section.name}, {QStringLiteral("place"), place}});
    if (names.size() == kMostNamed) break;
  }
  return names;
}

double VenueSurface::stageEdge() const {
  double edge = height();
  for (const SectionPlace& section : sections_) {
    const CrowdDisc first = seen({section.place.left(), section.place.top(), 0}, sight_);
    edge = std::min(edge, static_cast<double>(first.y));
  }
  return edge;
}

void VenueSurface::lookSoon() {
  if (isVisible()) look();
}

void VenueSurface::look() {
  LiveCrowd* crowd = venue_ != nullptr ? venue_->crowd() : nullptr;
  if (crowd != nullptr && window() != nullptr) {
    const std::size_t before = changed_.size();
    crowd->look(changed_);
    if (changed_.size() > before) update();
  }
  keepRhythm();
}

// Nobody sees what a hidden window would draw; when it is shown again, its first frame goes on.
void VenueSurface::keepRhythm() {
  const LiveCrowd* crowd = venue_ != nullptr ? std::as_const(*venue_).crowd() : nullptr;
  const bool mayMove = flight_ || (crowd != nullptr && crowd->isAnimating());
  const bool moves = mayMove && isVisible() && window() != nullptr && window()->isExposed();
  if (moves == isMoving()) return;
  if (moves) {
    rhythm_->start();
  } else {
    rhythm_->stop();
  }
}

void VenueSurface::frameIsDue() {
  if (flight_) update();
  look();
}

// An update asked for here is drawn in this very frame.
void VenueSurface::frameBegins() {
  if (!isVisible() || venue_ == nullptr) return;
  if (flight_) {
    const double share = toSeconds(venue_->now() - flight_->begin) / toSeconds(kFlight);
    const VenueSight sight = between(flight_->from, flight_->to, eased(std::min(share, 1.0)));
    if (share >= 1) flight_.reset();
    setSight(sight);
  }
  look();
}

void VenueSurface::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemSceneChange) {
    disconnect(beginnings_);
    if (data.window != nullptr) {
      beginnings_ =
          connect(data.window, &QQuickWindow::afterAnimating, this, &VenueSurface::frameBegins);
    }
  }
  if (change == ItemVisibleHasChanged) look();
  QQuickItem::itemChange(change, data);
}

void VenueSurface::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
  QQuickItem::geometryChange(newGeometry, oldGeometry);
  if (newGeometry.size() == oldGeometry.size()) return;
  flight_.reset();
  layOut();
  setSight(sight_);
}

void VenueSurface::setSight(const VenueSight& sight) {
  sight_ = fitted(sight, {width(), height()});
  isPictureOld_ = true;
  update();
  emit sightChanged();
}

void VenueSurface::flyTo(const VenueSight& sight) {
  flight_ = Flight{sight_, fitted(sight, {width(), height()}), venue_->now()};
  update();
  keepRhythm();
}

void VenueSurface::zoomAt(const QPointF& place, double factor) {
  flight_.reset();
  setSight(zoomedAt(sight_, place.x(), place.y(), factor));
}

void VenueSurface::moveBy(double right, double down) {
  flight_.reset();
  setSight({sight_.left - right / sight_.zoom, sight_.top - down / sight_.zoom, sight_.zoom});
}

void VenueSurface::showAll() {
  if (venue_ != nullptr) flyTo({});
}

QRectF VenueSurface::placeOf(int seat) const {
  if (seat < 0 || static_cast<std::size_t>(seat) >= discs_.size()) return {};
  const CrowdDisc disc = seen(discs_[static_cast<std::size_t>(seat)], sight_);
  return {disc.x - disc.radius, disc.y - disc.radius, 2 * disc.radius, 2 * disc.radius};
}

int VenueSurface::seatAt(const QPointF& place) const {
  int nearest = -1;
  double least = kNearby;
  for (std::size_t at = 0; at < discs_.size(); ++at) {
    const CrowdDisc disc = seen(discs_[at], sight_);
    const double beside = std::hypot(disc.x - place.x(), disc.y - place.y()) - disc.radius;
    if (beside >= least) continue;
    least = beside;
    nearest = static_cast<int>(at);
  }
  return nearest;
}

void VenueSurface::setCursor(int seat) {
  if (seat == cursor_) return;
  cursor_ = seat;
  emit cursorChanged();
  emit sightChanged();
}

// To the next seat in that direction; from none to the one in the middle.
void VenueSurface::step(int right, int down) {
  if (discs_.empty()) return;
  const VenueSight& sight = aim();
  if (cursor_ < 0) {
    int middle = 0;
    double least = HUGE_VAL;
    for (std::size_t at = 0; at < discs_.size(); ++at) {
      const CrowdDisc disc = seen(discs_[at], sight);
      const double distance = std::hypot(disc.x - width() / 2, disc.y - height() / 2);
      if (distance >= least) continue;
      least = distance;
      middle = static_cast<int>(at);
    }
    setCursor(middle);
    return;
  }
  const auto* next = standingSeatTowards(points_, points_[static_cast<std::size_t>(cursor_)],
                                         {right, down}, 0, {1, 1});
  if (next == nullptr) return;
  setCursor(static_cast<int>(next->seatIndex));
  const CrowdDisc disc = seen(discs_[static_cast<std::size_t>(cursor_)], sight);
  const bool isSeen = disc.x >= disc.radius && disc.x <= width() - covered_ - disc.radius &&
                      disc.y >= disc.radius && disc.y <= height() - disc.radius;
  if (!isSeen) {
    flyTo(
        sightOf(discs_[static_cast<std::size_t>(cursor_)], sight.zoom, width() / 2, height() / 2));
  }
}

void VenueSurface::mousePressEvent(QMouseEvent* event) {
  forceActiveFocus(Qt::MouseFocusReason);
  pressed_ = event->position();
  isMoving_ = false;
}

void VenueSurface::mouseMoveEvent(QMouseEvent* event) {
  if (!pressed_) return;
  const QPointF moved = event->position() - *pressed_;
  const int least = QGuiApplication::styleHints()->startDragDistance();
  if (!isMoving_ && moved.manhattanLength() < least) return;
  isMoving_ = true;
  pressed_ = event->position();
  moveBy(moved.x(), moved.y());
}

void VenueSurface::mouseReleaseEvent(QMouseEvent* event) {
  if (!pressed_) return;
  pressed_.reset();
  if (isMoving_ || venue_ == nullptr) return;
  const int seat = seatAt(event->position());
  if (seat >= 0) venue_->choose(seat);
}

void VenueSurface::wheelEvent(QWheelEvent* event) {
  zoomAt(event->position(), std::pow(kNotch, event->angleDelta().y() / 120.0));
}

void VenueSurface::focusInEvent(QFocusEvent* event) {
  QQuickItem::focusInEvent(event);
  const bool isByKey =
      event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
  if (isByKey && cursor_ < 0) step(0, 0);
}

void VenueSurface::keyPressEvent(QKeyEvent* event) {
  event->setAccepted(press(event->key(), event->modifiers().testFlag(Qt::ShiftModifier)));
}

bool VenueSurface::press(int key, bool isShifted) {
  if (venue_ == nullptr || discs_.empty()) return false;
  const auto arrow = [&](int right, int down) {
    if (isShifted) {
      moveBy(-right * kKeyMove * width(), -down * kKeyMove * height());
    } else {
      step(right, down);
    }
    return true;
  };
  const auto zoomBy = [&](double factor) {
    CrowdDisc place{width() / 2, height() / 2};
    if (cursor_ >= 0) place = seen(discs_[static_cast<std::size_t>(cursor_)], aim());
    flyTo(zoomedAt(aim(), place.x, place.y, factor));
    return true;
  };
  switch (key) {
    case Qt::Key_Left:
      return arrow(-1, 0);
    case Qt::Key_Right:
      return arrow(1, 0);
    case Qt::Key_Up:
      return arrow(0, -1);
    case Qt::Key_Down:
      return arrow(0, 1);
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      return zoomBy(kKeyZoom);
    case Qt::Key_Minus:
      return zoomBy(1 / kKeyZoom);
    case Qt::Key_0:
    case Qt::Key_Home:
      showAll();
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
      if (cursor_ >= 0) venue_->choose(cursor_);
      return true;
    default:
      return false;
  }
}

void VenueSurface::drawPicture(QSize size, double ratio) {
  const bool isNew = isPictureOld_ || image_.size() != size;
  const LiveCrowd* crowd = std::as_const(*venue_).crowd();
  if (isNew) {
    isPictureOld_ = false;
    if (image_.size() != size) image_ = QImage(size, QImage::Format_RGB32);
    std::vector<CrowdDisc> discs;
    discs.reserve(discs_.size());
    for (const CrowdDisc& disc : discs_) {
      const CrowdDisc shown = seen(disc, sight_);
      discs.push_back({shown.x * ratio, shown.y * ratio, shown.radius * ratio, shown.isSquare});
    }
    picture_.emplace(std::span<const CrowdDisc>(discs), size.width(), size.height());
    changed_.resize(discs.size());
    std::iota(changed_.begin(), changed_.end(), 0U);
  }
  const std::span words(
      reinterpret_cast<std::uint32_t*>(image_.bits()),
      static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()));
  if (isNew) picture_->drawHall(words);
  picture_->drawSeats(crowd->lights(), changed_, words);
  seatsDrawn_ += changed_.size();
  ++picturesDrawn_;
  changed_.clear();
}

QSGNode* VenueSurface::updatePaintNode(QSGNode* node, UpdatePaintNodeData* /*data*/) {
  const double ratio = window()->effectiveDevicePixelRatio();
  const QSize size(static_cast<int>(std::ceil(width() * ratio)),
                   static_cast<int>(std::ceil(height() * ratio)));
  if (discs_.empty() || size.isEmpty() || venue_ == nullptr || venue_->crowd() == nullptr) {
    delete node;
    return nullptr;
  }
  auto* image = static_cast<QSGImageNode*>(node);
  if (image != nullptr && !isPictureOld_ && changed_.empty()) return image;
  drawPicture(size, ratio);
  if (image == nullptr) {
    image = window()->createImageNode();
    image->setOwnsTexture(true);
    image->setFiltering(QSGTexture::Nearest);
  }
  image->setTexture(window()->createTextureFromImage(image_, QQuickWindow::TextureIsOpaque));
  image->setRect(QRectF(0, 0, size.width() / ratio, size.height() / ratio));
  return image;
}

}  // namespace halvora
