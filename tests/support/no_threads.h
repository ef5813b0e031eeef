// SPDX-License-Identifier: Apache-2.0
// A system that has no more threads to give, for as long as one lives: every new one would need a
// stack that no machine has room for. For all of the process; threads that there are go on.
#pragma once

#include <cstddef>
#include <cstdint>

#include <pthread.h>

namespace halvora {

class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&usual_);
    pthread_attr_t impossible;
    pthread_attr_init(&impossible);
    pthread_attr_setstacksize(&impossible, std::size_t{SIZE_MAX} / 4);
    pthread_setattr_default_np(&impossible);
    pthread_attr_destroy(&impossible);
  }
  ~NoThreads() {
    pthread_setattr_default_np(&usual_);
    pthread_attr_destroy(&usual_);
  }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t usual_;
};

}  // namespace halvora
