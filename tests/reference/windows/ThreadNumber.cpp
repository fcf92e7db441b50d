#include "tests/reference/ThreadNumber.h"

#include <windows.h>

std::string ThreadNumber() {
  return std::to_string(GetCurrentThreadId());
}
