// The reference libraries, with sleeps that end early.

#include "reference/xrt/SleepWaker.h"

namespace {

[[maybe_unused]] const bool g_isEarly = [] {
  EndSleepsEarly(true);
  return true;
}();

}  // namespace
