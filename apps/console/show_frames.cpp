// SPDX-License-Identifier: Apache-2.0
#include "apps/console/show_frames.h"

#include <QDir>
#include <QPixmap>
#include <QScreen>
#include <utility>

namespace halvora {

ShowFrames::ShowFrames(VirtualRunLoop& loop, Duration step, QQuickWindow& window,
                       const std::string& folder, std::function<void(std::string)> failed)
    : loop_(loop),
      pause_(step),
      window_(window),
      folder_(QString::fromStdString(folder)),
      failed_(std::move(failed)) {
  QDir().mkpath(folder_);
  // While a frame takes over what it draws, the main thread is here or waits.
  QObject::connect(
      &window_, &QQuickWindow::afterSynchronizing, &context_, [this] { drawn_ = step_; },
      Qt::DirectConnection);
  QObject::connect(
      &window_, &QQuickWindow::frameSwapped, &context_,
      [this] {
        QMetaObject::invokeMethod(
            &context_, [this, drawn = drawn_] { painted(drawn); }, Qt::QueuedConnection);
      },
      Qt::DirectConnection);
  window_.update();
}

// A window may paint the same step twice.
void ShowFrames::painted(int step) {
  if (step != step_) return;
  const QString file = save();
  if (!file.isEmpty()) return fail(file.toStdString() + ": cannot be written");
  ++step_;
  if (!loop_.runUntil(begin_ + step_ * pause_)) return fail("the phone never comes to rest");
  window_.update();
}

// The name of the file that cannot be written; none if all is well.
QString ShowFrames::save() const {
  const QString file =
      QDir(folder_).filePath(QStringLiteral("frame-%1.png").arg(step_, 5, 10, QLatin1Char('0')));
  const QPixmap shown = window_.screen()->grabWindow(window_.winId());
  return shown.save(file, "PNG") ? QString() : file;
}

void ShowFrames::fail(std::string why) {
  context_.disconnect();
  failed_(std::move(why));
}

}  // namespace halvora
