// SPDX-License-Identifier: Apache-2.0
// What a video player of Qt's shows at present, for whoever draws it. A player that has a picture
// is one of these besides being a VideoPlayer. Main thread.
#pragma once

#include <QImage>
#include <QObject>

namespace halvora {

class QtClipPicture : public QObject {
  Q_OBJECT

 public:
  /// Null where there is nothing to be seen. The same image, by its cache key, until it changes.
  virtual QImage picture() = 0;

 signals:
  /// Another picture is due.
  void changed();
};

}  // namespace halvora
