#include <time.h>

#include "sdk/plugin/TevPlugin.h"

namespace {

double Milliseconds() {
  timespec time = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return 1e3 * static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_nsec);
}

/// Uses that much processor time.
void Work() {
  const double end = Milliseconds() + TEV_MILLISECONDS;
  while (Milliseconds() < end) {
  }
}

}  // namespace

bool Init() {
  Work();
  return true;
}

bool UnInit() {
  Work();
  return true;
}
