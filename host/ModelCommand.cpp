#include <iostream>

#include "host/Commands.h"
#include "host/FailureReason.h"
#include "host/FrameLibrary.h"
#include "host/RecordJson.h"
#include "reference/base/Log.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/lpc/LpcRecord.h"

namespace {

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

}  // namespace

ExitStatus ModelCommand(const Options&) {
  FailureReason reason;
  SetLogObserver([&](int level, const std::string& module, const std::string& text) {
    reason.OnLogLine(level, module, text);
  });
  const FrameLibrary frame(FrameLibrary::PathBesideProgram());
  const std::int32_t result = frame.Init();
  const PlatformRecord platform = SnapshotPlatform();
  const Json model = {{"Frame_Init", result},
                      {"ProductModel", OrNull(platform.productModel)},
                      {"Addons", OrNull(platform.addons)},
                      {"Tools", OrNull(platform.tools)},
                      {"PluginsInfo", OrNull(platform.plugins)},
                      {"PlatformInfo", OrNull(SnapshotLpc().info)}};
  std::cout << model.dump(2, ' ', false, Json::error_handler_t::replace) << std::endl;
  if (result == 0) {
    frame.UnInit();  // nothing was started, so there is nothing to stop
  } else {
    std::cerr << "HUB: " << reason.Sentence() << std::endl;
  }
  SetLogObserver({});
  return result == 0 ? kOk : kFrameFailed;
}
