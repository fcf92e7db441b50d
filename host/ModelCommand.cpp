#include <CLI/CLI.hpp>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

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

/// What the frame made of the product.
struct Reading {
  std::int32_t result = -1;
  std::string model;                   // as JSON
  std::vector<std::string> sentences;  // what is wrong with the product
};

/// Initialises the frame, copies the models that it passed to the platform, and un-initialises it.
/// Nothing was started, so Frame_Stop is not called.
Reading Read(const FrameLibrary& frame, const RunMonitor& monitor) {
  Reading reading;
  reading.result = InitialiseFrame(frame);
  const PlatformRecord platform = SnapshotPlatform();
  const Json model = {{"Frame_Init", reading.result},
                      {"ProductModel", OrNull(platform.productModel)},
                      {"Addons", OrNull(platform.addons)},
                      {"Tools", OrNull(platform.tools)},
                      {"PluginsInfo", OrNull(platform.plugins)},
                      {"PlatformInfo", OrNull(SnapshotLpc().info)}};
  reading.model = model.dump(2, ' ', false, Json::error_handler_t::replace);
  if (reading.result != 0) {
    reading.sentences = FirstSentences(FailureSentences(monitor.Notes()));
    return reading;
  }
  frame.UnInit();
  if (!platform.productModel) return reading;
  for (const Finding& finding : ProductFindings(*platform.productModel, monitor.Notes())) {
    reading.sentences.push_back(finding.text);
  }
  return reading;
}

/// Reads on a driver's thread. A stop request ends the process, since reading a file may block for
/// ever and cannot be interrupted.
Reading ReadUnlessStopped(const FrameLibrary& frame, const RunMonitor& monitor,
                          HostContext& context) {
  FrameDriver driver;
  Reading reading;
  driver.Begin([&] { reading = Read(frame, monitor); });
  while (!driver.WaitForEnd(kTick)) {
    if (const auto request = context.stop.WaitFor(std::chrono::milliseconds(0))) {
      context.output.WriteError("stopped by " + std::string(Name(*request)) +
                                " before the product was read");
      context.output.Flush();
      AnnounceExit();
      std::_Exit(kCutShort);
    }
  }
  return reading;
}

ExitStatus Run(const Options&, HostContext& context) {
  const RunMonitor monitor({});
  const FrameLibrary frame(FrameLibrary::PathBesideProgram());
  const Reading reading = ReadUnlessStopped(frame, monitor, context);
  context.output.Write(reading.model + "\n");
  for (const std::string& sentence : reading.sentences) {
    context.output.WriteError(Escaped(sentence));
  }
  context.output.Flush();
  if (!context.output.Error().empty()) {
    context.output.WriteError("standard output cannot be written: " + context.output.Error());
    return kFrameFailed;
  }
  return reading.result == 0 ? kOk : kFrameFailed;
}

}  // namespace

Command ModelCommand() {
  return {"model", "Print what the frame hands over, as one JSON object", &AddProductOptions, &Run};
}
