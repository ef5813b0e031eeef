// SPDX-License-Identifier: Apache-2.0
#include "adapters/qt/qt_descriptors.h"

#include <utility>

namespace halvora {

WatchId QtDescriptors::watch(int descriptor, DescriptorEvents events, Task&& task) {
  const WatchId id = ++lastWatch_;
  Watched& watched = watched_[id];
  watched.task = std::move(task);
  if (includes(events, DescriptorEvents::readable)) {
    watched.reading = notify(descriptor, QSocketNotifier::Read, id);
  }
  if (includes(events, DescriptorEvents::writable)) {
    watched.writing = notify(descriptor, QSocketNotifier::Write, id);
  }
  return id;
}

QtDescriptors::Notifier QtDescriptors::notify(int descriptor, QSocketNotifier::Type type,
                                              WatchId watch) {
  Notifier notifier(new QSocketNotifier(descriptor, type));
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                   [this, watch] { run(watch); });
  return notifier;
}

// The task is taken out for its run: it may forget its own watch.
void QtDescriptors::run(WatchId watch) {
  auto watched = watched_.find(watch);
  if (watched == watched_.end()) return;
  Task task = std::move(watched->second.task);
  try {
    task();
  } catch (...) {
    ++failures_;
  }
  watched = watched_.find(watch);
  if (watched != watched_.end()) watched->second.task = std::move(task);
}

}  // namespace halvora
