#include <CLI/CLI.hpp>
#include <cstdlib>

#include "host/CommandLine.h"
#include "host/Commands.h"
#include "host/CrashReport.h"
#include "host/FrameDriver.h"
#include "host/FrameLibrary.h"
#include "host/ProductReading.h"
#include "host/RecordJson.h"
#include "host/RunMonitor.h"
#include "reference/kpx/PlatformRecord.h"
#include "reference/lpc/LpcRecord.h"
#include "workbench/output/Text.h"

namespace {

constexpr std::chrono::milliseconds kTick{50};

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json();
}

/// Initialises the frame on the driver's thread. A stop request ends the process: a file that is
/// read for ever has no other end.
std::int32_t Initialise(const FrameLibrary& frame, HostContext& context) {
  FrameDriver driver;
  std::int32_t result = -1;
  driver.Begin([&] { result = InitialiseFrame(frame); });
  while (!driver.WaitForEnd(kTick)) {
    if (const auto request = context.stop.WaitFor(std::chrono::milliseconds(0))) {
      context.output.WriteError("stopped by " + std::string(Name(*request)) +
                                " before the product was read");
      context.output.Flush();
      AnnounceExit();
      std::_Exit(kCutShort);
    }
  }
  return result;
}

ExitStatus Run(const Options&, HostContext& context) {
  RunMonitor monitor({});
  const FrameLibrary frame(FrameLibrary::PathBesideProgram());
  const std::int32_t result = Initialise(frame, context);
  const PlatformRecord platform = SnapshotPlatform();
  const Json model = {{"Frame_Init", result},
                      {"ProductModel", OrNull(platform.productModel)},
                      {"Addons", OrNull(platform.addons)},
                      {"Tools", OrNull(platform.tools)},
                      {"PluginsInfo", OrNull(platform.plugins)},
                      {"PlatformInfo", OrNull(SnapshotLpc().info)}};
  context.output.Write(model.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  if (result == 0) frame.UnInit();  // nothing was started, so there is nothing to stop
  if (result != 0) {
    for (const std::string& sentence : FailureSentences(monitor.Notes())) {
      context.output.WriteError(Escaped(sentence));
    }
  } else if (platform.productModel) {
    for (const Finding& finding : ProductFindings(*platform.productModel, monitor.Notes())) {
      context.output.WriteError(Escaped(finding.text));
    }
  }
  context.output.Flush();
  if (!context.output.Error().empty()) {
    context.output.WriteError("standard output cannot be written: " + context.output.Error());
    return kFrameFailed;
  }
  return result == 0 ? kOk : kFrameFailed;
}

}  // namespace

Command ModelCommand() {
  return {"model", "Print what the frame hands over, as one JSON object", &AddProductOptions, &Run};
}
