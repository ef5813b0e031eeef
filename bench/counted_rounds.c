/* SPDX-License-Identifier: Apache-2.0
   For scripts/count_instructions.py, which loads it before a benchmark program: processor clocks
   that stand still until 10 to the power of COUNTED_ROUNDS rounds have been run in one go, and then
   say that it took long enough. The number of rounds no longer follows from how fast they are. */
#include <dlfcn.h>
#include <stdlib.h>
#include <time.h>

typedef int (*clock_function)(clockid_t, struct timespec*);

int clock_gettime(clockid_t clock, struct timespec* time) {
  static long calls;
  static long long seconds;
  if (clock != CLOCK_THREAD_CPUTIME_ID && clock != CLOCK_PROCESS_CPUTIME_ID) {
    return ((clock_function)dlsym(RTLD_NEXT, "clock_gettime"))(clock, time);
  }
  /* Asked before and after each go, of which the first has one round and each has ten times more. */
  calls++;
  if (calls % 2 == 0 && calls / 2 > atol(getenv("COUNTED_ROUNDS"))) seconds += 1000;
  time->tv_sec = seconds;
  time->tv_nsec = calls;
  return 0;
}
