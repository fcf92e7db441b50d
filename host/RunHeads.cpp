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

/// The argument in double quotes when it contains blanks or quotes or is empty.
std::string Quoted(const std::string& argument) {
  const bool plain = !argument.empty() && argument.find_first_of(" \t\"'") == std::string::npos;
  return plain ? argument : "\"" + argument + "\"";
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

std::string HeadLine(const RunHead& head) {
  std::string command;
  for (const std::string& argument : head.commandLine) {
    command += (command.empty() ? "" : " ") + Quoted(argument);
  }
  std::string product = head.product.empty() ? "(without a name)" : head.product;
  if (!head.productVersion.empty()) product += " " + head.productVersion;
  return fmt::format("HUB {}, frame {}, platform {}, pid {} on {}, product {} in {}: {}",
                     head.hubVersion, head.frameVersion, head.platformVersion, head.pid, head.host,
                     product, head.path, command);
}
