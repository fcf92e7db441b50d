#include "tests/system/StopProcess.h"

#include <signal.h>

void StopProcess(boost::process::child& process, StopWish wish) {
  kill(process.id(), wish == StopWish::kInterrupt ? SIGINT : SIGTERM);
}
