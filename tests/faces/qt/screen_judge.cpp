// SPDX-License-Identifier: Apache-2.0
#include "tests/faces/qt/screen_judge.h"

#include <QFontMetricsF>
#include <algorithm>
#include <utility>

#include <gtest/gtest.h>

#include "tests/faces/qt/contrast.h"

namespace halvora {

namespace {

constexpr double kLeastTarget = 44;
/// Of a text that is cut off by an edge, so much has to be in sight to say how it stands out.
constexpr double kLeastInSight = 0.9;

bool isSeen(const QQuickItem& item) {
  if (!item.isVisible() || item.width() <= 0 || item.height() <= 0) return false;
  for (const QQuickItem* at = &item; at != nullptr; at = at->parentItem()) {
    if (at->opacity() == 0) return false;
  }
  return true;
}

bool isUnder(const QQuickItem& item, const char* name) {
  for (const QQuickItem* at = &item; at != nullptr; at = at->parentItem()) {
    if (at->objectName() == QLatin1String(name)) return true;
  }
  return false;
}

bool isDisabled(const QQuickItem& item) {
  for (const QQuickItem* at = &item; at != nullptr; at = at->parentItem()) {
    if (!at->isEnabled()) return true;
  }
  return false;
}

void collect(QQuickItem& item, std::vector<QQuickItem*>& items) {
  if (!item.isVisible()) return;
  items.push_back(&item);
  for (QQuickItem* child : item.childItems()) collect(*child, items);
}

QRectF frameOf(const QQuickItem& item) {
  return item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
}

QImage pictureOf(StatusBench& bench) {
  bench.settle();
  return bench.picture();
}

const char* frontOf(StatusBench& bench) {
  if (bench.isShown("alertContent")) return "alertContent";
  return bench.isShown("seatSheetContent") ? "seatSheetContent" : "halvoraStatusView";
}

}  // namespace

ScreenJudge::ScreenJudge(QQuickWindow& window, QImage picture, const char* front, std::string what)
    : window_(window), what_(std::move(what)), front_(front), picture_(std::move(picture)) {
  collect(*window_.contentItem(), items_);
}

ScreenJudge::ScreenJudge(StatusBench& bench, std::string what)
    : ScreenJudge(bench.window(), pictureOf(bench), frontOf(bench), std::move(what)) {}

const QQuickItem* ScreenJudge::item(const char* name) const {
  const auto found = std::ranges::find_if(
      items_, [name](const QQuickItem* item) { return item->objectName() == QLatin1String(name); });
  return found != items_.end() ? *found : nullptr;
}

void ScreenJudge::judge() {
  for (QQuickItem* item : items_) {
    if (!isSeen(*item)) continue;
    if (item->inherits("QQuickText")) judgeText(*item);
    if (item->inherits("QQuickAbstractButton")) judgeButton(*item);
  }
  judgeOverlaps();
  judgeSight();
}

std::string ScreenJudge::where(const QQuickItem& item) const {
  return what_ + ": " + item.objectName().toStdString() + " \"" +
         item.property("text").toString().toStdString() + "\"";
}

bool ScreenJudge::isInFront(const QQuickItem& item) const { return isUnder(item, front_); }

// What of an item is in sight, in pixels.
QRect ScreenJudge::partOf(const QQuickItem& item) const {
  QRectF part = frameOf(item);
  for (const QQuickItem* at = item.parentItem(); at != nullptr; at = at->parentItem()) {
    if (at->clip()) part = part.intersected(frameOf(*at));
  }
  return part.toAlignedRect().intersected(picture_.rect());
}

void ScreenJudge::judgeText(const QQuickItem& text) {
  const QString words = text.property("text").toString();
  if (words.isEmpty()) return;
  EXPECT_FALSE(text.property("truncated").toBool()) << where(text);
  EXPECT_LE(text.property("contentWidth").toReal(), text.width() + 1) << where(text);
  judgeInk(text);
  // The picker's rows beyond its edge are cut off by it.
  if (isUnder(text, "pickerRow")) return;
  EXPECT_LE(text.property("contentHeight").toReal(), text.height() + 1) << where(text);
  const QRectF frame = frameOf(text);
  EXPECT_GE(frame.left(), -0.5) << where(text);
  EXPECT_LE(frame.right(), window_.width() + 0.5) << where(text);
  if (isUnder(text, "seatSheetTop") || isUnder(text, "seatButtons")) {
    EXPECT_GE(frame.top(), -0.5) << where(text);
    EXPECT_LE(frame.bottom(), window_.height() + 0.5) << where(text);
  }
  const bool isOneWord = !words.contains(QLatin1Char(' ')) && words.at(0).unicode() < 0x3000;
  if (isOneWord) {
    EXPECT_LE(text.property("lineCount").toInt(), 1) << where(text);
  }
  const QFontMetricsF metrics(text.property("font").value<QFont>());
  const bool isFitted = text.property("fontSizeMode").toInt() != 0;
  for (const QString& word : words.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
    if (isFitted || word.at(0).unicode() >= 0x3000) continue;
    EXPECT_LE(metrics.horizontalAdvance(word), text.width() + 1) << where(text);
  }
}

// What cannot be used, and what lies behind a shade, need not be read. The empty boxes of a font
// that has no such letters are thinner than letters.
void ScreenJudge::judgeInk(const QQuickItem& text) {
  if (!isInFront(text) || isDisabled(text)) return;
  const QFontMetricsF metrics(text.property("font").value<QFont>());
  if (!metrics.inFont(text.property("text").toString().trimmed().at(0))) return;
  const QRect part = partOf(text);
  if (part.height() < kLeastInSight * text.height() || part.isEmpty()) return;
  EXPECT_GE(inkContrast(picture_, part), kTextContrast) << where(text);
}

// Within the window, or within what can be scrolled to.
void ScreenJudge::judgeButton(const QQuickItem& button) {
  const QRectF frame = frameOf(button);
  EXPECT_GE(frame.width(), kLeastTarget) << where(button);
  EXPECT_GE(frame.height(), kLeastTarget) << where(button);
  EXPECT_GE(frame.left(), -0.5) << where(button);
  EXPECT_LE(frame.right(), window_.width() + 0.5) << where(button);
  judgeEdge(button);
  for (const char* scrolls : {"seatSheetScroller", "halvoraStatusView", "audienceScroller"}) {
    if (isUnder(button, scrolls)) return;
  }
  EXPECT_GE(frame.top(), -0.5) << where(button);
  EXPECT_LE(frame.bottom(), window_.height() + 0.5) << where(button);
}

// A button that has a ground of its own is seen by it, from beside and a third of the way down,
// where no corner is round; the others by their words.
void ScreenJudge::judgeEdge(const QQuickItem& button) {
  const auto* const ground = button.findChild<QQuickItem*>(QStringLiteral("buttonBackground"));
  if (ground == nullptr || ground->property("color").value<QColor>().alpha() == 0) return;
  if (!isInFront(button) || isDisabled(button)) return;
  const QRectF frame = frameOf(button);
  const QPoint inside(qRound(frame.left()) + 3, qRound(frame.top() + frame.height() / 3));
  const QPoint outside(qRound(frame.left()) - 4, inside.y());
  if (!picture_.rect().contains(inside) || !picture_.rect().contains(outside)) return;
  EXPECT_GE(contrast(picture_.pixelColor(inside), picture_.pixelColor(outside)), kControlContrast)
      << where(button);
}

// Where the user answers is in sight as a whole, or can be scrolled there.
void ScreenJudge::judgeSight() {
  const QQuickItem* const scroller = item("seatSheetScroller");
  if (scroller == nullptr || !isSeen(*scroller)) return;
  for (const char* name : {"pickerBand", "standingDragArea", "seatFilter"}) {
    const QQuickItem* const place = item(name);
    if (place == nullptr || !isSeen(*place)) continue;
    EXPECT_LE(place->height(), scroller->height() + 0.5) << where(*place);
  }
}

// What is read or pressed lies beside one another within one surface.
void ScreenJudge::judgeOverlaps() {
  for (const char* surface : {"contentStackView", "seatHeading", "seatSheetTop", "seatButtons",
                              "seatFilter", "alertWords", "audienceWords"}) {
    std::vector<const QQuickItem*> apart;
    for (const QQuickItem* item : items_) {
      const bool isButton = item->inherits("QQuickAbstractButton");
      const bool isText = item->inherits("QQuickText") &&
                          item->objectName() != QLatin1String("buttonTitle") &&
                          item->objectName() != QLatin1String("filterClearSign");
      if (!isSeen(*item) || !isUnder(*item, surface) || !(isButton || isText)) continue;
      if (isUnder(*item, "gentleContent")) continue;
      if (isText && item->property("text").toString().isEmpty()) continue;
      for (const QQuickItem* other : apart) {
        const QRectF shared = frameOf(*item).intersected(frameOf(*other));
        EXPECT_FALSE(shared.width() > 1 && shared.height() > 1)
            << where(*item) << " lies on " << where(*other);
      }
      apart.push_back(item);
    }
  }
}

}  // namespace halvora
