#include "tests/system/StopProcess.h"

#include <signal.h>
#include <sys/wait.h>

void StopProcess(boost::process::child& process, StopKind how) {
  kill(process.id(), how == StopKind::kInterrupt   ? SIGINT
                     : how == StopKind::kTerminate ? SIGTERM
                                                   : SIGHUP);
}

int EndingSignal(const boost::process::child& process) {
  const int status = process.native_exit_code();
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}
