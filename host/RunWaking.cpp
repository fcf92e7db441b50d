#include "host/RunWaking.h"

#include "reference/base/ThreadPools.h"
#include "reference/kpx/PlatformRecord.h"

RunWaking::RunWaking(StopSignal& stop) {
  SetStartObserver([&stop] { stop.Wake(); });
  SetIdleObserver([&stop] { stop.Wake(); });
}

RunWaking::~RunWaking() {
  SetIdleObserver({});
  SetStartObserver({});
}
