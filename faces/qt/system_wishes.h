// SPDX-License-Identifier: Apache-2.0
// What the user has asked this system for, as the views follow it. Whoever watches the system sets
// it. Owned by the host, and outlives what it is installed in; main thread.
#pragma once

#include <QObject>
#include <utility>

#include "halvora/user_wishes.h"

namespace halvora {

class SystemWishes : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  const UserWishes& wishes() const { return wishes_; }
  void set(const UserWishes& wishes) {
    if (std::exchange(wishes_, wishes) != wishes) emit changed();
  }

 signals:
  void changed();

 private:
  UserWishes wishes_;
};

}  // namespace halvora
