// SPDX-License-Identifier: Apache-2.0
// The observers of an application, told in the order in which they came. Whoever is told may add
// and remove observers, itself too, and destroy them: one that is removed before its turn is not
// told, one that is added is told from the next time on. Owned by an application; main thread.
#pragma once

#include <algorithm>
#include <vector>

#include "halvora/platform/application.h"

namespace halvora {

class ApplicationObservers {
 public:
  void add(ApplicationObserver& observer) { observers_.push_back(&observer); }
  void remove(ApplicationObserver& observer) { std::erase(observers_, &observer); }

  void tell(void (ApplicationObserver::*what)()) const {
    const std::vector<ApplicationObserver*> told = observers_;
    for (ApplicationObserver* observer : told) {
      if (std::ranges::find(observers_, observer) != observers_.end()) (observer->*what)();
    }
  }

 private:
  std::vector<ApplicationObserver*> observers_;
};

}  // namespace halvora
