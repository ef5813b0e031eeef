// SPDX-License-Identifier: Apache-2.0
// The QML item that shows a venue's phones from above, all of them as one picture in the scene
// graph. It draws again only the seats whose light has changed, at most once a frame, and asks for
// no frame while all lights stay as they are. Pointer, wheel and keyboard move over the venue and
// choose a phone. Main thread, but for the drawing, which Qt does on its render thread while the
// main thread waits.
#pragma once

#include <QImage>
#include <QMetaObject>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QRectF>
#include <QString>
#include <QVariantList>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <qqmlregistration.h>

#include "apps/console/venue_show.h"
#include "apps/console/venue_sight.h"
#include "seats/standing_plan.h"
#include "venue/crowd/crowd_picture.h"

namespace halvora {

class VenueSurface : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(halvora::VenueShow* venue READ venue WRITE setVenue NOTIFY venueChanged)
  /// What covers the item's right side while a phone is looked at closely, in points.
  Q_PROPERTY(double covered MEMBER covered_ NOTIFY coveredChanged)
  /// A phone that is looked at brings nobody closer: the hall stays as it is seen.
  Q_PROPERTY(bool staysWhole MEMBER staysWhole_ NOTIFY staysWholeChanged)
  Q_PROPERTY(double zoom READ zoom NOTIFY sightChanged)
  /// The seat that the keyboard is at, -1 for none; and its name.
  Q_PROPERTY(int cursor READ cursor NOTIFY cursorChanged)
  Q_PROPERTY(QString cursorSeat READ cursorSeat NOTIFY cursorChanged)
  /// Where it is, and where the chosen one is; empty for none.
  Q_PROPERTY(QRectF cursorPlace READ cursorPlace NOTIFY sightChanged)
  Q_PROPERTY(QRectF chosenPlace READ chosenPlace NOTIFY sightChanged)
  /// The sections that are in sight and wide enough for a name: `name`, and in `place` where their
  /// seats are drawn.
  Q_PROPERTY(QVariantList sections READ sections NOTIFY sightChanged)
  /// Where the seats are that are nearest to the stage.
  Q_PROPERTY(double stageEdge READ stageEdge NOTIFY sightChanged)

 public:
  explicit VenueSurface(QQuickItem* parent = nullptr);
  ~VenueSurface() override;

  VenueShow* venue() const { return venue_; }
  void setVenue(VenueShow* venue);

  double zoom() const { return sight_.zoom; }
  int cursor() const { return cursor_; }
  QString cursorSeat() const { return venue_ ? venue_->nameOf(cursor_) : QString(); }
  QRectF cursorPlace() const { return placeOf(cursor_); }
  QRectF chosenPlace() const { return placeOf(venue_ ? venue_->chosen() : -1); }

  QVariantList sections() const;
  double stageEdge() const;

  /// The seat that is drawn there, or very near; -1 for none.
  Q_INVOKABLE int seatAt(const QPointF& place) const;
  /// Where a seat is drawn; empty for none.
  Q_INVOKABLE QRectF placeOf(int seat) const;
  /// What is at that place stays there.
  Q_INVOKABLE void zoomAt(const QPointF& place, double factor);
  Q_INVOKABLE void moveBy(double right, double down);
  Q_INVOKABLE void showAll();

  /// Asks for frames by itself, as something may move.
  bool isMoving() const;
  /// How many pictures were drawn, and how many seats in them.
  std::uint64_t picturesDrawn() const { return picturesDrawn_; }
  std::uint64_t seatsDrawn() const { return seatsDrawn_; }

 signals:
  void venueChanged();
  void coveredChanged();
  void staysWholeChanged();
  void sightChanged();
  void cursorChanged();

 protected:
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  class Rhythm;
  /// On the way from one sight to another.
  struct Flight {
    VenueSight from;
    VenueSight to;
    Duration begin;
  };

  void crowdChanged();
  void chosenChanged();
  void layOut();
  void layOutSections();
  void look();
  void lookSoon();
  void frameBegins();
  void frameIsDue();
  void keepRhythm();
  const VenueSight& aim() const { return flight_ ? flight_->to : sight_; }
  void setSight(const VenueSight& sight);
  void flyTo(const VenueSight& sight);
  void setCursor(int seat);
  void step(int right, int down);
  bool press(int key, bool isShifted);
  void drawPicture(QSize size, double ratio);

  QPointer<VenueShow> venue_;
  double covered_ = 0;
  bool staysWhole_ = false;
  /// Of the whole venue, in points.
  std::vector<CrowdDisc> discs_;
  std::vector<StandingSeatPoint> points_;
  /// Over all seats of a section, before it is looked at closely.
  struct SectionPlace {
    QString name;
    QRectF place;
  };
  std::vector<SectionPlace> sections_;
  VenueSight sight_;
  std::optional<Flight> flight_;
  /// Where to go back to from a phone.
  std::optional<VenueSight> before_;
  int cursor_ = -1;
  std::optional<QPointF> pressed_;
  bool isMoving_ = false;

  std::vector<std::uint32_t> changed_;
  std::optional<CrowdPicture> picture_;
  QImage image_;
  bool isPictureOld_ = true;
  std::uint64_t picturesDrawn_ = 0;
  std::uint64_t seatsDrawn_ = 0;
  QMetaObject::Connection beginnings_;
  std::unique_ptr<Rhythm> rhythm_;
};

}  // namespace halvora
