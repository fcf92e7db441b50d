#include "tests/reference/ThreadNumber.h"

#include <sys/syscall.h>
#include <unistd.h>

std::string ThreadNumber() {
  return std::to_string(syscall(SYS_gettid));
}
