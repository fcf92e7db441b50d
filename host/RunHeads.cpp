#include "host/RunHeads.h"

#include <fmt/format.h>

#include "reference/os/ProcessInfo.h"
#include "sdk/kpx/platform.h"

namespace {

std::string PlatformVersion() {
  char text[128] = {};
  KPX_GetVersion(text, sizeof(text));
  return text;
}

}  // namespace

RunHead MakeRunHead(const RunClock& clock, const std::string& bin,
                    const std::vector<std::string>& commandLine, const ProductName& product,
                    bool fullSleep) {
  RunHead head;
  head.time = clock.UtcText(clock.nanoseconds);
  head.zone = clock.ZoneText();
  head.nanoseconds = clock.nanoseconds;
  head.pid = static_cast<std::int64_t>(ProcessNumber());
  head.run = fmt::format("{}-{}", head.time, head.pid);
  head.host = HostName();
  head.hubVersion = TEV_VERSION;
  head.frameVersion = TEV_VERSION;  // both come from one build
  head.platformVersion = PlatformVersion();
  head.commandLine = commandLine;
  head.product = product.name;
  head.productVersion = product.version;
  head.path = bin;
  head.cores = UsableCores();
  head.sleep = fullSleep ? RunHead::kFullSleep : RunHead::kEarlySleep;
  return head;
}
