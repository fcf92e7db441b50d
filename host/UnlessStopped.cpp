#include "host/UnlessStopped.h"

#include <chrono>
#include <cstdlib>
#include <exception>
#include <string>

#include "host/CrashReport.h"
#include "host/FrameDriver.h"

namespace {

constexpr std::chrono::milliseconds kTick{50};

}  // namespace

void ReadUnlessStopped(HostContext& context, const std::function<void()>& read,
                       const std::function<void()>& beforeEnd) {
  std::exception_ptr thrown;
  FrameDriver driver;
  driver.Begin([&] {
    try {
      read();
    } catch (...) {
      thrown = std::current_exception();
    }
  });
  while (!driver.WaitForEnd(kTick)) {
    if (const auto request = context.stop.WaitFor(std::chrono::milliseconds(0))) {
      context.output.WriteError("stopped by " + std::string(Name(*request)) +
                                " before the product was read");
      context.output.Flush();
      beforeEnd();
      AnnounceExit();
      std::_Exit(kCutShort);
    }
  }
  if (thrown) std::rethrow_exception(thrown);
}
